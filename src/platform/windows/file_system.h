// Files and folders of this machine and of its network.
#pragma once

#include <memory>

#include "platform/files.h"

namespace trelvin {

std::unique_ptr<FileSystem> makeFileSystem();

}  // namespace trelvin
