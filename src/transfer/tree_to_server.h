// The directories of a site, on the target.
#pragma once

#include <string>

#include "platform/metabase.h"
#include "transfer/property_list.h"

namespace trelvin {

// Recreates the virtual directories and directories below a source node, with their new directories and
// applications, and collects the property names of every class in lstPropsToExport. sPath is the target path
// of the node below the service, sBase that of the site: its number. Failures are ignored.
void copyTreeToServer(const NodeHandle& oNode, const std::string& sPath, const std::string& sBase,
                      TreeNames& names);

}  // namespace trelvin
