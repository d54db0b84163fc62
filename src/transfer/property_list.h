// Which properties travel: the names that the metabase's own schema gives, less the exclusions.
#pragma once

#include <string>

#include "platform/metabase.h"

namespace trelvin {

// Whether a name stands in lstExclude, in any case, as a whole.
bool isExcluded(const std::string& sName);

// Adds the names of a schema class object that are not excluded to lstPropsToExport, the mandatory ones
// first. Failures are ignored: what can't be read adds nothing.
void addSchemaNames(const NodeHandle& schemaClass);

// Completes the list of a site that goes to the database with the names of the site's own class.
void completePropertyList(const NodeHandle& site);

}  // namespace trelvin
