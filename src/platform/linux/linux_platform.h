// The set of facilities of a Linux machine.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>

namespace trelvin {

// Gets a line about an item that a facility could not deal with while the rest went on.
using Log = std::function<void(std::string_view line)>;

// For how long a metabase file is taken to be as it was last seen. A run binds three nodes for each value; a
// look at the disk for each would be a third of its time.
inline constexpr std::chrono::microseconds kMetabasePatience{1000};

// Fills platform() with the Linux set, for a run without a window; a view puts its own dialogs and events
// over it. The program folder is the executable's.
void useLinuxPlatform(int argc, char** argv, const Log& log);

}  // namespace trelvin
