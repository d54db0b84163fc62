#include "platform/linux/tree_copy.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "core/err.h"
#include "platform/linux/native_file.h"
#include "platform/linux/tree_file.h"
#include "platform/linux/tree_folder.h"
#include "platform/linux/tree_ledger.h"
#include "platform/linux/tree_walk.h"
#include "platform/linux/tree_workers.h"

namespace trelvin {

namespace {

// A short copy shows nothing, a longer one is told of in steps that a person can follow.
constexpr std::chrono::milliseconds kShortCopy{500};
constexpr std::chrono::milliseconds kProgressStep{100};

// What the folder is called at the target: the last name of its path.
std::string lastName(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  std::string name = path.substr(path.rfind('/') + 1);
  if (name.empty() || name == "." || name == "..") {
    throw Failure(shell_number::kInvalidPaths, "a source without a name of its own");
  }
  return name;
}

std::string nativePath(const PathMapping& toNative, std::string_view path, std::int32_t numberWhenBad) {
  try {
    return toNative(path);
  } catch (const Failure& failure) {
    throw Failure(numberWhenBad, failure.description());
  }
}

// Opens a folder that the program names. Links that lead to it are the administrator's own.
Descriptor openRoot(const std::string& nativePath, std::int32_t numberWhenMissing) {
  try {
    return openFile(nativePath, O_RDONLY | O_DIRECTORY);
  } catch (const std::system_error& failed) {
    const int number = failed.code().value();
    if (number != ENOENT && number != ENOTDIR) throw;
    throw Failure(numberWhenMissing, number == ENOENT ? "there is no such folder" : "not a folder");
  }
}

// Whether a folder is the other one or lies in it, by the way up to the root. Where the way is barred it
// counts as outside; the walk knows the target when it comes by it.
bool isWithin(const Descriptor& folder, const Identity& other) {
  try {
    Descriptor here = openAt(folder, ".", O_PATH | O_DIRECTORY);
    Identity identity = identityOf(here);
    while (identity != other) {
      here = openAt(here, "..", O_PATH | O_DIRECTORY);
      const Identity parent = identityOf(here);
      if (parent == identity) return false;
      identity = parent;
    }
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

TargetFolder openTargetRoot(const Descriptor& to, const std::string& name, const Descriptor& source) {
  std::vector<Entry> entries;
  listFolder(to, entries);
  const TargetNames names(std::move(entries));
  const Entry* const existing = names.find(name);
  if (existing != nullptr && existing->kind == EntryKind::kLink) {
    return {openAt(to, existing->name, O_RDONLY | O_DIRECTORY), false};
  }
  return openOrMake(to, existing, name, source, statusOf(source));
}

std::string withoutEnd(std::string path) {
  while (path.size() > 1 && (path.ends_with('\\') || path.ends_with('/'))) path.pop_back();
  return path;
}

// One copy, from the point of view of the thread that asked for it.
class TreeCopy {
 public:
  TreeCopy(const FileOperation& operation, const CopyReport& report, const CopyProgress& progress,
           const CopyClock& clock)
      : operation_(operation),
        from_(withoutEnd(operation.from)),
        report_(report),
        progress_(progress),
        clock_(clock),
        nextProgress_(clock() + kShortCopy) {}

  std::int32_t run(const PathMapping& toNative) {
    ledger_.tryItem(from_, "", [&] { copy(toNative); });
    if (ledger_.isDiskFull())
      ledger_.add(from_, shell_number::kDiskFull, "the copy ends here: the disk is full");
    handOver();
    return ledger_.firstNumber();
  }

 private:
  void copy(const PathMapping& toNative) {
    const std::string sourcePath = nativePath(toNative, operation_.from, shell_number::kNoSource);
    Descriptor source = openRoot(sourcePath, shell_number::kNoSource);
    const std::string name = lastName(sourcePath);
    std::optional<TargetFolder> target;
    const bool isReady =
        ledger_.tryItem(operation_.to, "", [&] { target = openTarget(toNative, name, source); });
    if (!isReady) return;

    const std::string treeRoot = nativePathOf(source);
    TreeWorkers workers([&](const FileItem& item) { copyOne(item, treeRoot); });
    TreeWalk(ledger_, workers, [this] { attend(); }).run(std::move(source), std::move(*target), from_);
  }

  TargetFolder openTarget(const PathMapping& toNative, const std::string& name, const Descriptor& source) {
    const std::string path = nativePath(toNative, operation_.to, shell_number::kInvalidPaths);
    const Descriptor to = openRoot(path, shell_number::kInvalidPaths);
    if (isWithin(to, identityOf(source))) {
      throw Failure(shell_number::kTargetInSource, "lies in the folder that is to be copied");
    }
    TargetFolder target = openTargetRoot(to, name, source);
    if (identityOf(target.folder) == identityOf(source)) {
      throw Failure(shell_number::kSameFolder, "is where the folder that is to be copied lies");
    }
    return target;
  }

  void copyOne(const FileItem& item, const std::string& treeRoot) {
    if (ledger_.isDiskFull()) return;
    ledger_.tryItem(item.folder->path(), item.name, [&] { copyFile(item, treeRoot); });
    ++ledger_.filesDone;
  }

  void attend() {
    handOver();
    if (!progress_) return;
    const auto now = clock_();
    if (now < nextProgress_) return;
    nextProgress_ = now + kProgressStep;
    dropFailures([&] { progress_(operation_.progressTitle, ledger_.filesDone, ledger_.filesFound); });
  }

  void handOver() {
    for (const std::string& line : ledger_.takeLines()) {
      if (report_) dropFailures([&] { report_(line); });
    }
  }

  // A log that can't be written must not end a copy.
  template <typename Call>
  static void dropFailures(Call&& call) {
    try {
      call();
    } catch (...) {
    }
  }

  const FileOperation& operation_;
  std::string from_;
  const CopyReport& report_;
  const CopyProgress& progress_;
  const CopyClock& clock_;
  std::chrono::steady_clock::time_point nextProgress_;
  TreeLedger ledger_;
};

class NativeShell final : public Shell {
 public:
  NativeShell(PathMapping toNative, CopyReport report, CopyProgress progress, CopyClock clock)
      : toNative_(std::move(toNative)),
        report_(std::move(report)),
        progress_(std::move(progress)),
        clock_(std::move(clock)) {}

  std::int32_t copy(const FileOperation& operation) override {
    try {
      return TreeCopy(operation, report_, progress_, clock_).run(toNative_);
    } catch (const std::exception&) {
      return shell_number::kOutOfMemory;
    }
  }

 private:
  PathMapping toNative_;
  CopyReport report_;
  CopyProgress progress_;
  CopyClock clock_;
};

}  // namespace

std::unique_ptr<Shell> makeTreeCopy(PathMapping toNative, CopyReport report, CopyProgress progress,
                                    CopyClock clock) {
  return std::make_unique<NativeShell>(std::move(toNative), std::move(report), std::move(progress),
                                       std::move(clock));
}

}  // namespace trelvin
