// The folders of a tree that is copied: what is in them, and which names of source and target are the same.
// Every failure throws std::system_error with the system's number, or Failure with one of shell_number.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/native_file.h"

namespace trelvin {

inline constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

// Opens a name of an open folder, with close-on-exec. A path may be far longer than the system takes in one
// call, so nothing of a tree is reached in any other way.
Descriptor openAt(const Descriptor& folder, const std::string& name, int flags, mode_t mode = 0);
struct stat statusOf(const Descriptor& file);

struct Identity {
  dev_t device = 0;
  ino_t inode = 0;
  bool operator==(const Identity&) const = default;
};
Identity identityOf(const Descriptor& file);

enum class EntryKind { kFile, kFolder, kLink, kSpecial };

struct Entry {
  std::string name;
  ino_t inode = 0;
  EntryKind kind = EntryKind::kFile;
};

// Appends what is in a folder, in no order. For a folder that was just opened. When it throws, what could be
// read has been appended.
void listFolder(const Descriptor& folder, std::vector<Entry>& entries);

// Leaves out the names that differ from another one in case only; a file or folder is kept rather than a
// link, else the first in byte order.
void leaveOutDoubles(std::vector<Entry>& entries,
                     const std::function<void(const Entry& left, const Entry& kept)>& onDouble);

// The names of a target folder, found in any case.
class TargetNames {
 public:
  TargetNames() = default;
  explicit TargetNames(std::vector<Entry> entries);
  // The name as written, else one that differs in case only: the first in byte order. Null without one.
  [[nodiscard]] const Entry* find(std::string_view name) const;

 private:
  struct Folded {
    std::string key;
    Entry entry;
  };
  std::vector<Folded> names_;  // ordered by key, then by name
};

// An open folder of the source and the one of the target that gets its content.
class FolderPair {
 public:
  struct Nature {
    struct stat status {};  // of the source
    bool isNew = false;     // made by this copy
  };
  FolderPair(Descriptor source, Descriptor target, const Nature& nature, std::string path);
  FolderPair(const FolderPair&) = delete;
  FolderPair& operator=(const FolderPair&) = delete;
  // Gives the target its final time and mode, if it is complete.
  ~FolderPair();

  [[nodiscard]] const Descriptor& source() const { return source_; }
  [[nodiscard]] const Descriptor& target() const { return target_; }
  [[nodiscard]] const std::string& path() const { return path_; }
  // Nothing is added but what holds this pair already.
  void complete() { isComplete_ = true; }

 private:
  Descriptor source_;
  Descriptor target_;
  Nature nature_;
  std::string path_;  // of the source, in the program's form
  bool isComplete_ = false;
};

struct TargetFolder {
  Descriptor folder;
  bool isNew = false;
};

// Opens the folder of a target that stands for one of the source, or makes it with the source's owner, mode
// and attributes; until the pair is complete its owner may write in it. existing is what stands at its place.
TargetFolder openOrMake(const Descriptor& parent, const Entry* existing, const std::string& name,
                        const Descriptor& source, const struct stat& status);

}  // namespace trelvin
