// The way through a tree that is copied: from folder to folder, with the files left to the workers.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/tree_folder.h"
#include "platform/linux/tree_ledger.h"
#include "platform/linux/tree_workers.h"

namespace trelvin {

// Keeps a bounded number of folders open, however deep the tree is, and comes back by their "..".
class TreeWalk {
 public:
  // Attend is called again and again while the copy runs, on the caller's thread; it must not throw.
  TreeWalk(TreeLedger& ledger, TreeWorkers& workers, std::function<void()> attend)
      : ledger_(ledger), workers_(workers), attend_(std::move(attend)) {}

  // Copies what is in the folder and returns when all is done. What does not travel is in the ledger.
  void run(Descriptor source, TargetFolder target, const std::string& path);

 private:
  struct Subfolder {
    std::string name;
    std::string targetName;
    EntryKind inPlace = EntryKind::kFolder;
    bool isThere = false;
  };
  struct Level {
    std::shared_ptr<FolderPair> folder;    // none when it was closed
    std::weak_ptr<FolderPair> lastOpened;  // files may still hold it
    FolderPair::Nature nature;
    Identity source;
    Identity target;
    std::vector<Subfolder> subfolders;  // still to be copied
    std::size_t pathLength = 0;
  };

  void enter(Descriptor source, TargetFolder target);
  void descend(const Subfolder& subfolder);
  void leave();
  void comeBack(const std::shared_ptr<FolderPair>& child);
  [[nodiscard]] std::shared_ptr<FolderPair> reopened(const Level& level,
                                                     const std::shared_ptr<FolderPair>& child) const;
  void closeFarLevel();

  [[nodiscard]] std::vector<Entry> sourceEntries(const FolderPair& folder);
  [[nodiscard]] TargetNames targetNames(const FolderPair& folder);
  void spread(Level& level);
  void spreadEntry(Level& level, Entry& entry, const Entry* existing);
  void addFile(FileItem item);

  TreeLedger& ledger_;
  TreeWorkers& workers_;
  std::function<void()> attend_;
  std::vector<Level> levels_;
  std::string path_;  // of the last level
  Identity sourceRoot_;
  Identity targetRoot_;
};

}  // namespace trelvin
