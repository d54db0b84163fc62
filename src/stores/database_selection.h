// Choosing where the data database is. Only the choice is stored here, in the registry; it takes effect at
// the next start.
#pragma once

#include "window/controls.h"

namespace trelvin {

// Loads the dialog and shows it; the main window waits until it is gone.
void mnuDBLoc_Click();

// Shows the choice in force.
void frmDatabaseSelect_Load();
// Adds the system's data sources and selects the one that is in force. A stored source that no longer exists
// leaves the list with no selection. Without a driver manager nothing is added, and nothing is said.
void fillDataSources(ListControl& list);
// Stores the choice and takes the dialog down. Has no handler: a data source that is wanted and not selected
// fails with 381, and nothing is stored.
void frmDatabaseSelect_cmdSave_Click();

}  // namespace trelvin
