#include "platform/linux/access_lists.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "core/err.h"
#include "platform/linux/access_list_attribute.h"
#include "platform/linux/access_list_text.h"
#include "platform/linux/native_file.h"

namespace trelvin {

namespace {

namespace text = access_list_text;
using Record = AccessRecord;

// A path as the program writes it, and where that lies.
struct Place {
  std::string path;
  std::string nativePath;
};

struct File {
  Place place;
  struct stat status {};
};

// A list that is to be written, and the one to go back to.
struct Change {
  Place place;
  std::string before;
  std::string after;
};

Failure failureAt(const Place& place, const char* undone, const std::string& cause) {
  return accessListFailure(place.path, undone, cause);
}

std::string causeOf(int errorNumber) {
  switch (errorNumber) {
    case ENOTSUP:
      return "the file system keeps no extended attributes";
    case ENOSPC:
    case E2BIG:
    case ERANGE:
      return "the file system has no room for a list of this size (" + systemText(errorNumber) + ")";
    default:
      return systemText(errorNumber);
  }
}

// Runs one operation on a path and gives whatever it fails with the form of the control's own failures.
template <typename Operation>
auto at(const Place& place, const char* undone, Operation&& operation) {
  try {
    return operation();
  } catch (const std::system_error& failed) {
    throw failureAt(place, undone, causeOf(failed.code().value()));
  } catch (const std::invalid_argument& broken) {
    throw failureAt(place, undone, std::string("attribute ") + kAccessListAttribute + ", " + broken.what());
  }
}

File find(const Place& place) {
  File file{place, {}};
  const bool isThere = ::stat(place.nativePath.c_str(), &file.status) == 0;
  if (!isThere) throw std::system_error(errno, std::generic_category());
  return file;
}

std::string formatAll(const std::vector<Record>& records) {
  std::string lines;
  for (const Record& record : records) lines += text::format(record);
  return lines;
}

// The entries that a folder's files inherit, as the files hold them.
std::vector<Record> inheritedByFiles(const std::vector<Record>& folder) {
  constexpr std::int32_t kKept = text::kAuditSuccess | text::kAuditFailure;
  std::vector<Record> inherited;
  for (const Record& record : folder) {
    const std::int32_t flags = record.values[text::kFlags];
    if ((flags & text::kObjectInherit) == 0) continue;
    inherited.push_back(record);
    inherited.back().values[text::kFlags] = (flags & kKept) | text::kInherited;
  }
  return inherited;
}

Change inheritance(Place file, const std::string& inherited) {
  std::string before = readAccessListAttribute(file.nativePath);
  std::vector<Record> own = text::parse(before);
  std::erase_if(own,
                [](const Record& record) { return (record.values[text::kFlags] & text::kInherited) != 0; });
  // Own entries count before inherited ones, so they stand in front.
  return {std::move(file), std::move(before), formatAll(own) + inherited};
}

// The files in a folder. A link counts as what it leads to; pipes and the like have no list.
std::vector<File> filesOf(const Place& folder) {
  std::vector<File> files;
  for (const auto& item : std::filesystem::directory_iterator(folder.nativePath)) {
    File file{{folder.path + "\\" + item.path().filename().string(), item.path().string()}, {}};
    const bool isThere = ::stat(item.path().c_str(), &file.status) == 0;
    if (isThere && S_ISREG(file.status.st_mode)) files.push_back(std::move(file));
  }
  return files;
}

// Adds what the files of a folder inherit. Looks at all of them before anything is written.
void addInheritances(const Place& folder, const std::vector<Record>& records, std::vector<Change>& changes) {
  const std::string inherited = formatAll(inheritedByFiles(records));
  for (const File& file : at(folder, "written", [&] { return filesOf(folder); })) {
    Change change = at(file.place, "read", [&] { return inheritance(file.place, inherited); });
    if (change.before == change.after) continue;
    changes.push_back(std::move(change));
  }
}

void undo(const std::vector<Change>& changes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    try {
      writeAccessListAttribute(changes[i].place.nativePath, changes[i].before);
    } catch (const std::system_error&) {
      // The failure that led here is the one to tell of.
    }
  }
}

void carryOut(const std::vector<Change>& changes) {
  std::size_t done = 0;
  try {
    for (const Change& change : changes) {
      at(change.place, "written", [&] { writeAccessListAttribute(change.place.nativePath, change.after); });
      ++done;
    }
  } catch (...) {
    undo(changes, done);
    throw;
  }
}

class AttributeList final : public RecordList {
 public:
  AttributeList(Place place, std::vector<Record> records, LastError lastError)
      : RecordList(place.path, std::move(records), std::move(lastError)), place_(std::move(place)) {}

 private:
  void write(const std::vector<Record>& wanted, bool handsDown) override {
    carryOut(changes(wanted, handsDown));
  }

  void check(const std::vector<Record>& records) const {
    for (const Record& record : records) {
      const std::string fault = text::faultOfAccount(record.account);
      if (!fault.empty()) throw failureAt(place_, "written", fault);
    }
  }

  [[nodiscard]] std::vector<Change> changes(const std::vector<Record>& wanted, bool handsDown) const {
    check(wanted);
    const File file = at(place_, "written", [this] { return find(place_); });
    std::vector<Change> changes{{place_, {}, formatAll(wanted)}};
    if (handsDown && S_ISDIR(file.status.st_mode)) {
      changes[0].before = at(place_, "read", [this] { return readAccessListAttribute(place_.nativePath); });
      addInheritances(place_, wanted, changes);
    }
    return changes;
  }

  Place place_;
};

class AttributeControl final : public NtfsControl {
 public:
  explicit AttributeControl(PathMapping toNative) : toNative_(std::move(toNative)) {}

  void setFileOrDirectory(std::string_view path) override {
    path_ = path;
    lastError_->clear();
  }

  std::unique_ptr<AccessList> getAccounts() override {
    return recorded(lastError_, [this]() -> std::unique_ptr<AccessList> {
      Place place = lookUp();
      auto records =
          at(place, "read", [&] { return text::parse(readAccessListAttribute(place.nativePath)); });
      return std::make_unique<AttributeList>(std::move(place), std::move(records), lastError_);
    });
  }

  [[nodiscard]] std::string lastError() const override { return *lastError_; }

 private:
  [[nodiscard]] Place lookUp() const {
    try {
      return {path_, toNative_(path_)};
    } catch (const Failure& failure) {
      throw failureAt({path_, {}}, "read", failure.description());
    }
  }

  PathMapping toNative_;
  std::string path_;
  LastError lastError_ = std::make_shared<std::string>();
};

}  // namespace

std::unique_ptr<NtfsControl> makeAccessLists(PathMapping toNative) {
  return std::make_unique<AttributeControl>(std::move(toNative));
}

}  // namespace trelvin
