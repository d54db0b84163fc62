// The program with its windows, drawn by the view of the system that it is built for.
#pragma once

namespace trelvin::desktop {

// Whether there is a screen to open a window on.
bool hasDisplay();

// Puts dialogs and events with a screen over those of the platform, opens what the command line asks for, and
// stays until the last window is closed. Returns the process's status. A screen that can't be reached ends
// the process with status 1 and a line on standard error.
int runDesktop(char** argv);

}  // namespace trelvin::desktop
