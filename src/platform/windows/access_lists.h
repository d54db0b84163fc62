// The control for access lists, on Windows' own lists.
#pragma once

#include <memory>

#include "platform/ntfs.h"
#include "platform/windows/security.h"

namespace trelvin {

// A list holds the entries that the path has itself. firstApplyFlag has folders, secondApplyFlag has files
// inherit anew; Windows hands down to both at once, so either flag does the whole.
std::unique_ptr<NtfsControl> makeAccessLists(std::shared_ptr<SecurityStore> store);

}  // namespace trelvin
