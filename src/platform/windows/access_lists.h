// The control for access lists, on Windows' own lists.
#pragma once

#include <memory>

#include "platform/ntfs.h"
#include "platform/windows/security.h"

namespace trelvin {

// A list holds the entries that the path has itself; what the path inherits comes from the folder above each
// time that the list is written. getAccounts opens the path, and the list keeps it open. A failure to hand
// down leaves the folder with its new list, and those of its files that came before with theirs.
std::unique_ptr<NtfsControl> makeAccessLists(std::shared_ptr<SecurityStore> store);

}  // namespace trelvin
