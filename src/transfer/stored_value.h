// What a row of the data database holds, on its way to a server.
#pragma once

#include <string>

#include "core/value.h"
#include "platform/database.h"

namespace trelvin {

// The text of a field; Null gives the empty text. A failure goes to the caller.
std::string textOfField(const RecordSet& row, const char* column);

// The value of the row in hand for the property of that name, texts rewritten, script maps by the versions of
// both servers. A type that can't be stored gives the empty text. Failures are ignored: what can't be read
// or rewritten leaves the value as it was before.
Value storedValue(const RecordSet& row, const std::string& name);

}  // namespace trelvin
