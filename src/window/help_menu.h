// The entries of the Help menu that the program answers by itself.
#pragma once

namespace trelvin {

// Loads the welcome form again, with the same command line, and shows it beside the main window. One that
// isn't empty takes the form down again within its load, as it did at the start.
void mnuAbout_Click();
// Has no handler.
void mnuCredits_Click();

}  // namespace trelvin
