// One file of a tree that is copied.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/tree_folder.h"

namespace trelvin {

struct FileItem {
  std::shared_ptr<FolderPair> folder;
  std::string name;
  std::string targetName;
  bool isLink = false;
};

// Copies the file under a temporary name and gives it its own when it is whole. A link is followed when it
// leads to a file below treeRoot, the tree's native path without any link in it. Throws std::system_error or
// Failure, and then leaves nothing behind.
void copyFile(const FileItem& item, const std::string& treeRoot);

// Whether a name is one that copyFile uses before a file is whole.
bool isTemporaryName(std::string_view name);

// Removes a temporary file that no running copy holds any more. It stays where the right to is missing.
void removeAbandoned(const Descriptor& folder, const std::string& name);

// The native path of an open file, free of links; empty when it is too long for the system to tell.
std::string nativePathOf(const Descriptor& file);

}  // namespace trelvin
