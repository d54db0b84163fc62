// Which application call serves two servers, by the texts of the version lists.
#pragma once

#include <string>

#include "core/value.h"
#include "platform/metabase.h"

namespace trelvin {

// IIS 6 on both sides has pools, IIS 5 and 6 know an isolation by number, and anything else is in process or
// not. A word that is none of the three versions makes the last one the choice.
enum class ApplicationCall { kAppCreate3, kAppCreate2, kAppCreate };
ApplicationCall applicationCall();

// Makes the node an application root by that call, from the values that it wants: a value that another call
// would want may be anything. A failure, that of a conversion too, goes to the caller.
void createApplication(const NodeHandle& node, const Value& isolation, const Value& pool,
                       const Value& inProcess);

// Whether a node of that name is taken for an application's root: its AppRoot ends in the name, in any case.
// That is the whole test, so that a node whose name happens to end the AppRoot that it inherits counts too.
bool isApplicationRoot(const Value& appRoot, const std::string& name);

}  // namespace trelvin
