// MBSchema.xml, the schema that a server keeps beside its metabase.
#pragma once

#include <memory>
#include <string>

#include "schema.h"

namespace trelvin {

// The built-in schema of that version, with what an MBSchema.xml beside the metabase file adds or says
// differently. Without that file the built-in one itself. 0x800CC819 with file, line and column when it is
// broken.
std::shared_ptr<const Schema> schemaFor(int version, const std::string& metabasePath);

}  // namespace trelvin
