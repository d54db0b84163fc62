// The directories of a site, as rows of the data database.
#pragma once

#include <string>

#include "platform/metabase.h"

namespace trelvin {

// Walks the nodes below a node, depth first: stores a row for each directory and virtual directory and
// collects the property names of every class in lstPropsToExport. Failures are ignored, and nothing looks at
// the error state.
void exportSiteTree(const NodeHandle& objParent, const std::string& sParentPath,
                    const std::string& sSiteNumber);

}  // namespace trelvin
