#include "platform/linux/tree_walk.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "core/err.h"

namespace trelvin {

namespace {

// Two descriptors for each; a process has 1024 of them at least.
constexpr std::size_t kOpenLevels = 32;
constexpr std::chrono::milliseconds kPatience{50};

}  // namespace

void TreeWalk::run(Descriptor source, TargetFolder target, const std::string& path) {
  path_ = path;
  sourceRoot_ = identityOf(source);
  targetRoot_ = identityOf(target.folder);
  enter(std::move(source), std::move(target));
  while (!levels_.empty() && !ledger_.isDiskFull()) {
    std::vector<Subfolder>& subfolders = levels_.back().subfolders;
    if (subfolders.empty()) {
      leave();
      continue;
    }
    const Subfolder next = std::move(subfolders.back());
    subfolders.pop_back();
    ledger_.tryItem(path_, next.name, [&] { descend(next); });
  }
  levels_.clear();
  while (!workers_.isIdle(kPatience)) attend_();
}

void TreeWalk::enter(Descriptor source, TargetFolder target) {
  Level level;
  level.nature = {statusOf(source), target.isNew};
  level.source = identityOf(source);
  level.target = identityOf(target.folder);
  level.pathLength = path_.size();
  level.folder =
      std::make_shared<FolderPair>(std::move(source), std::move(target.folder), level.nature, path_);
  levels_.push_back(std::move(level));
  closeFarLevel();
  ledger_.tryItem(path_, "", [&] { spread(levels_.back()); });
}

void TreeWalk::descend(const Subfolder& subfolder) {
  attend_();
  const FolderPair& parent = *levels_.back().folder;
  Descriptor source = openAt(parent.source(), subfolder.name, kOpenFolder);
  if (identityOf(source) == targetRoot_) {
    throw Failure(shell_number::kTargetInSource, "the folder that the copy goes to");
  }
  const Entry existing{subfolder.targetName, 0, subfolder.inPlace};
  TargetFolder target = openOrMake(parent.target(), subfolder.isThere ? &existing : nullptr,
                                   subfolder.targetName, source, statusOf(source));
  if (identityOf(target.folder) == sourceRoot_) {
    throw Failure(shell_number::kTargetInSource, "the source of the copy stands in its place");
  }
  path_.append("\\").append(subfolder.name);
  enter(std::move(source), std::move(target));
}

void TreeWalk::leave() {
  const std::shared_ptr<FolderPair> left = std::move(levels_.back().folder);
  levels_.pop_back();
  if (!levels_.empty()) comeBack(left);
  if (left) left->complete();
}

void TreeWalk::comeBack(const std::shared_ptr<FolderPair>& child) {
  Level& level = levels_.back();
  path_.resize(level.pathLength);
  if (level.folder) return;
  const bool isOpen = ledger_.tryItem(path_, "", [&] { level.folder = reopened(level, child); });
  if (!isOpen) level.subfolders.clear();
}

// A folder that was moved away meanwhile has another parent, which is none of the copy's.
std::shared_ptr<FolderPair> TreeWalk::reopened(const Level& level,
                                               const std::shared_ptr<FolderPair>& child) const {
  if (std::shared_ptr<FolderPair> open = level.lastOpened.lock()) return open;
  const Failure moved(shell_number::kPathNotFound,
                      "a folder was moved during the copy; not all of it is there");
  if (!child) throw moved;
  Descriptor source = openAt(child->source(), "..", kOpenFolder);
  Descriptor target = openAt(child->target(), "..", kOpenFolder);
  if (identityOf(source) != level.source || identityOf(target) != level.target) throw moved;
  return std::make_shared<FolderPair>(std::move(source), std::move(target), level.nature, path_);
}

// The first one stays open: even when a way back is lost, what is there is still completed.
void TreeWalk::closeFarLevel() {
  if (levels_.size() <= kOpenLevels + 1) return;
  Level& far = levels_[levels_.size() - 1 - kOpenLevels];
  far.lastOpened = far.folder;
  far.folder.reset();
}

// Whatever is left out here is left out before names are compared, so that it never takes a file's place.
std::vector<Entry> TreeWalk::sourceEntries(const FolderPair& folder) {
  std::vector<Entry> entries;
  ledger_.tryItem(path_, "", [&] { listFolder(folder.source(), entries); });
  std::erase_if(entries, [&](const Entry& entry) {
    if (isTemporaryName(entry.name)) return true;
    if (entry.kind != EntryKind::kSpecial) return false;
    attend_();
    ledger_.tryItem(path_, entry.name,
                    [] { throw Failure(shell_number::kNotSupported, "neither a file nor a folder"); });
    return true;
  });
  leaveOutDoubles(entries, [&](const Entry& left, const Entry& kept) {
    attend_();
    ledger_.tryItem(path_, left.name, [&] {
      throw Failure(shell_number::kAlreadyExists, "differs from '" + kept.name + "' in case only");
    });
  });
  // The order in which a disk is likely to hold them.
  std::sort(entries.begin(), entries.end(),
            [](const Entry& left, const Entry& right) { return left.inode < right.inode; });
  return entries;
}

TargetNames TreeWalk::targetNames(const FolderPair& folder) {
  std::vector<Entry> entries;
  listFolder(folder.target(), entries);
  std::erase_if(entries, [&](const Entry& entry) {
    if (!isTemporaryName(entry.name) || entry.kind != EntryKind::kFile) return false;
    removeAbandoned(folder.target(), entry.name);
    return true;
  });
  return TargetNames(std::move(entries));
}

void TreeWalk::spread(Level& level) {
  const TargetNames names = level.nature.isNew ? TargetNames() : targetNames(*level.folder);
  std::vector<Entry> entries = sourceEntries(*level.folder);
  for (Entry& entry : entries) {
    if (ledger_.isDiskFull()) return;
    spreadEntry(level, entry, names.find(entry.name));
  }
}

void TreeWalk::spreadEntry(Level& level, Entry& entry, const Entry* existing) {
  const std::string targetName = existing != nullptr ? existing->name : entry.name;
  if (entry.kind == EntryKind::kFolder) {
    const EntryKind inPlace = existing != nullptr ? existing->kind : EntryKind::kFolder;
    level.subfolders.push_back({std::move(entry.name), targetName, inPlace, existing != nullptr});
    return;
  }
  if (existing != nullptr && existing->kind == EntryKind::kFolder) {
    ledger_.tryItem(path_, entry.name,
                    [] { throw Failure(shell_number::kFolderInPlace, "a folder stands in its place"); });
    return;
  }
  addFile({level.folder, std::move(entry.name), targetName, entry.kind == EntryKind::kLink});
}

void TreeWalk::addFile(FileItem item) {
  ++ledger_.filesFound;
  do {
    attend_();
  } while (!workers_.add(item, kPatience));
}

}  // namespace trelvin
