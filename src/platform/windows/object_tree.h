// The trees of objects that have access lists: folders with files, and keys with keys.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/windows/windows_api.h"

namespace trelvin {

struct OpenObject {
  std::shared_ptr<void> handle;
  bool isContainer = false;
};

class ObjectTree {
 public:
  ObjectTree() = default;
  ObjectTree(const ObjectTree&) = delete;
  ObjectTree& operator=(const ObjectTree&) = delete;
  virtual ~ObjectTree() = default;

  // Opens an object so that its list can be read and, where that is allowed, written: for as long as the
  // object is open, whatever its list says meanwhile. The system's number, 0 when it is open.
  virtual DWORD open(const std::string& path, OpenObject& object) const = 0;
  // Empty for the top of a tree, and of a share: what lies above it can't be seen.
  [[nodiscard]] virtual std::string parentOf(const std::string& path) const = 0;
  // The objects that inherit anew when an object hands down: the files right in a folder, the keys right in a
  // key. Fails as the system's files do.
  [[nodiscard]] virtual std::vector<std::string> heirsOf(const std::string& path) const = 0;
  // What the general rights are on objects of this kind.
  [[nodiscard]] virtual GENERIC_MAPPING rights() const = 0;
};

std::unique_ptr<ObjectTree> makeFileTree();
// Of the keys below HKEY_CURRENT_USER, named by their path there.
std::unique_ptr<ObjectTree> makeKeyTree();

}  // namespace trelvin
