// The unattended run: a job file is put into the window's state, and the export button is pressed.
#pragma once

namespace trelvin {

// Runs the job in sBackupJob and unloads the main window. When it fails itself, for instance because the data
// database of the command line can't be opened, it logs that and the window stays.
void RunBackup();

// Puts the job file into the window's state and selects its sites. The caller has no way to learn whether it
// succeeded: a failure is logged and leaves the window as far as it got.
void SelectSitesFromBackup();

}  // namespace trelvin
