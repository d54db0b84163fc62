// A server's metabase: its file, the journal beside it, and the tree that both amount to.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "change.h"
#include "journal.h"
#include "load.h"
#include "tree.h"

namespace trelvin {

// A metabase that is only read is never written, and no file appears beside it: a journal that is found is
// replayed in memory. The first commit begins the journal, or goes on with the one that a dead process left
// behind.
class MetabaseStore {
 public:
  // Nothing is read before refresh. A look at the disk is good for as long as the patience.
  MetabaseStore(std::string path, std::chrono::microseconds patience)
      : path_(std::move(path)), journalPath_(journalPathOf(path_)), patience_(patience) {}
  MetabaseStore(const MetabaseStore&) = delete;
  MetabaseStore& operator=(const MetabaseStore&) = delete;
  ~MetabaseStore() { close(); }

  [[nodiscard]] const std::string& path() const { return path_; }

  // Reads the file if it was never read or is another on disk, and gives the tree. 0x800706BA when it is
  // gone, 0x800CC819 when it can't be read, or was changed by others while changes of ours wait in the
  // journal.
  const std::shared_ptr<Tree>& refresh();
  // The same, but false when the file is gone.
  bool refreshIfThere();
  // The same, whenever the last look was.
  void look();
  // The tree as it was read last.
  [[nodiscard]] const std::shared_ptr<Tree>& tree() const { return tree_; }

  // Refreshes, and makes sure that a commit can be written at all. 0x80070005 for a read-only file or folder.
  const std::shared_ptr<Tree>& prepareCommit();
  // Writes the changes to the journal, then makes them in the tree. The commit must fit the tree that
  // prepareCommit gave. What is volatile goes into the tree alone.
  void commit(const Commit& commit);

  // Writes a new file with everything and removes the journal. Nothing to do without an open journal.
  void checkpoint();
  // The last checkpoint. One that fails leaves the journal to the next program run, which replays it.
  void close() noexcept;

 private:
  bool lookIfThere();
  [[nodiscard]] bool hasLookedLately() const;
  void load();
  void append(const Commit& durable);
  void writeNewFile();
  [[nodiscard]] bool isUnchanged(const FileIdentity& now);
  [[nodiscard]] bool journalIsUnchanged() const;

  std::string path_;
  std::string journalPath_;
  std::shared_ptr<Tree> tree_;
  std::chrono::microseconds patience_;
  std::chrono::steady_clock::time_point lookedAt_;
  FileIdentity identity_;
  FileState state_;
  JournalContent found_;              // the journal as it was when the tree was read
  std::unique_ptr<Journal> journal_;  // while we write
  std::uint64_t checkpointAt_ = 0;    // length of the journal that is worth a new file
};

}  // namespace trelvin
