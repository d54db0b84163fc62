// Ties the event routines to the controls.
#pragma once

namespace trelvin {

void wireMainWindow();
void wireWelcomeForm();
void wireDatabaseSelect();

}  // namespace trelvin
