// The set of facilities of the system that the program is built for.
#pragma once

#include <functional>
#include <string_view>

namespace trelvin {

// Gets a line about an item that a facility could not deal with while the rest went on.
using Log = std::function<void(std::string_view line)>;

// Fills platform() with the system's set, for a run without a window; a view puts its own dialogs and events
// over it. The program folder is the executable's.
void useSystemPlatform(int argc, char** argv, const Log& log);

// Dates and messages are in the user's language from now on; numbers stay as the program and its databases
// write them.
void useLanguageOfUser();

}  // namespace trelvin
