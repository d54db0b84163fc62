// The set of facilities of a Linux machine.
#pragma once

namespace trelvin {

// Fills platform() with the Linux set, for a run without a window; a view puts its own dialogs and events
// over it. The program folder is the executable's.
void useLinuxPlatform(int argc, char** argv);

}  // namespace trelvin
