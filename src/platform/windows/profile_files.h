// Job files by Windows' own profile calls.
#pragma once

#include <memory>

#include "platform/profile.h"

namespace trelvin {

// Files are in the system's code page, unless a file in UTF-16 behind its mark is there already.
std::unique_ptr<ProfileFiles> makeProfileFiles();

}  // namespace trelvin
