// Files and folders of this machine.
#pragma once

#include <memory>

#include "platform/files.h"
#include "platform/linux/paths.h"

namespace trelvin {

// A file without any write bit is read-only, whoever asks. A copy keeps the mode and the time of the source.
std::unique_ptr<FileSystem> makeFileSystem(PathMapping toNative);

}  // namespace trelvin
