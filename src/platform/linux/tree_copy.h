// The shell's file operation: a folder with all that is in it goes to another place.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/linux/paths.h"
#include "platform/shell.h"

namespace trelvin {

// Gets a line for each item that did not travel: its path in the program's form, ": " and the cause. What a
// line is about keeps back only that item and, for a folder, what is in it.
using CopyReport = std::function<void(std::string_view line)>;

// The title of the operation, the files dealt with and the files found so far. Comes first when a copy has
// taken half a second, then at most ten times a second.
using CopyProgress = std::function<void(std::string_view title, std::uint64_t done, std::uint64_t found)>;

// A clock that never goes back; tests put their own.
using CopyClock = std::function<std::chrono::steady_clock::time_point()>;

// Items that can't be copied are left out and the rest still travels. A file has its name at the target only
// when it is whole.
//
// Report and progress are called on the thread that copies; what they throw is dropped. Two threads of its
// own do the work. Memory grows with the names of one folder, not with the tree.
//
// Names match in any case, as on Windows: a file or folder that is there in another case is the same one and
// keeps its name. Of names of one source folder that differ in case only, the first in byte order travels.
//
// A file keeps its time, its mode without set-user-ID and set-group-ID, its owner where the system lets it,
// and its attributes of the user.* kind, but for the access lists (user.trelvin.*): the copy gets the rights
// of its new place. So does a folder that wasn't there before; one that was keeps all but its time. What the
// target's file system has no room for is left out without a word.
//
// A link to a file within the tree travels as that file. Every other link is reported and left out: one that
// leads out of the tree would carry off what isn't the site's, and one to a folder could lead in circles. So
// is what is neither file nor folder; it is never opened. A link at the target is replaced by a file, but
// never followed below the folder itself.
//
// When the disk is full the copy ends there, because what still fits would be left to chance. A killed copy
// may leave .trelvin-copy-*.tmp files at the target; the next copy into the same folders takes them away.
//
// Numbers: 0x402 no source folder, 0x71 the source itself, 0x76 a target in the source, 0x7C no target folder
// or a source without a name; for the first item that did not travel 0x7E or 0x80 when a file or a folder is
// in its place, else the system's own, such as 5 without the right and 112 for a full disk.
std::unique_ptr<Shell> makeTreeCopy(PathMapping toNative, CopyReport report, CopyProgress progress,
                                    CopyClock clock = std::chrono::steady_clock::now);

}  // namespace trelvin
