#include "platform/linux/tree_folder.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <tuple>
#include <utility>

#include "core/err.h"
#include "core/text.h"
#include "platform/linux/tree_attributes.h"
#include "platform/linux/tree_ledger.h"

namespace trelvin {

namespace {

// A folder's set-group-ID hands the group down to what is made in it, and harms nobody.
constexpr mode_t kFolderModeBits = 03777;

struct CloseListing {
  void operator()(DIR* listing) const { ::closedir(listing); }
};
using Listing = std::unique_ptr<DIR, CloseListing>;

[[noreturn]] void failNow() {
  throw std::system_error(errno, std::generic_category());
}

// Its end closes its descriptor, and the folder's own has to stay open.
Listing listingOf(const Descriptor& folder) {
  const int own = ::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0);
  if (own < 0) failNow();
  Listing listing(::fdopendir(own));
  if (listing) return listing;
  const int reason = errno;
  ::close(own);
  throw std::system_error(reason, std::generic_category());
}

EntryKind kindOfMode(mode_t mode) {
  if (S_ISREG(mode)) return EntryKind::kFile;
  if (S_ISDIR(mode)) return EntryKind::kFolder;
  return S_ISLNK(mode) ? EntryKind::kLink : EntryKind::kSpecial;
}

// Not every file system tells the kind along with the name.
EntryKind kindOf(const Descriptor& folder, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return kindOfMode(DTTOIF(entry.d_type));
  struct stat status {};
  if (::fstatat(folder.get(), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::kFile;
  return kindOfMode(status.st_mode);
}

bool isDotName(std::string_view name) {
  return name == "." || name == "..";
}

Failure inPlace(EntryKind kind) {
  const char* const what = kind == EntryKind::kFile   ? "a file stands in its place"
                           : kind == EntryKind::kLink ? "a link stands in its place"
                                                      : "something that is no folder stands in its place";
  return Failure(shell_number::kFileInPlace, what);
}

TargetFolder make(const Descriptor& parent, const std::string& name, const Descriptor& source,
                  const struct stat& status) {
  TargetFolder made;
  if (::mkdirat(parent.get(), name.c_str(), S_IRWXU) == 0) {
    made.isNew = true;
  } else if (errno != EEXIST) {
    failNow();
  }
  made.folder = openAt(parent, name, kOpenFolder);
  if (!made.isNew) return made;
  // At once and not at the end, so that a killed copy leaves no folder that its visitors can't enter.
  giveOwner(made.folder, status);
  ::fchmod(made.folder.get(), (status.st_mode & kFolderModeBits) | S_IRWXU);
  giveUserAttributes(source, made.folder);
  return made;
}

}  // namespace

Descriptor openAt(const Descriptor& folder, const std::string& name, int flags, mode_t mode) {
  for (;;) {
    Descriptor file(::openat(folder.get(), name.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode));
    if (file.get() >= 0) return file;
    if (errno != EINTR) failNow();
  }
}

struct stat statusOf(const Descriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) failNow();
  return status;
}

Identity identityOf(const Descriptor& file) {
  const struct stat status = statusOf(file);
  return {status.st_dev, status.st_ino};
}

void listFolder(const Descriptor& folder, std::vector<Entry>& entries) {
  const Listing listing = listingOf(folder);
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(listing.get());
    if (entry == nullptr && errno != 0) failNow();
    if (entry == nullptr) return;
    if (isDotName(entry->d_name)) continue;
    entries.push_back({entry->d_name, entry->d_ino, kindOf(folder, *entry)});
  }
}

void leaveOutDoubles(std::vector<Entry>& entries,
                     const std::function<void(const Entry& left, const Entry& kept)>& onDouble) {
  struct Folded {
    std::string key;
    bool isLink;
    Entry entry;
  };
  std::vector<Folded> names;
  names.reserve(entries.size());
  for (Entry& entry : entries) {
    names.push_back({upperCase(entry.name), entry.kind == EntryKind::kLink, std::move(entry)});
  }
  std::sort(names.begin(), names.end(), [](const Folded& left, const Folded& right) {
    return std::tie(left.key, left.isLink, left.entry.name) <
           std::tie(right.key, right.isLink, right.entry.name);
  });
  entries.clear();
  const std::string* lastKey = nullptr;
  for (Folded& name : names) {
    if (lastKey != nullptr && name.key == *lastKey) {
      onDouble(name.entry, entries.back());
      continue;
    }
    lastKey = &name.key;
    entries.push_back(std::move(name.entry));
  }
}

TargetNames::TargetNames(std::vector<Entry> entries) {
  names_.reserve(entries.size());
  for (Entry& entry : entries) names_.push_back({upperCase(entry.name), std::move(entry)});
  std::sort(names_.begin(), names_.end(), [](const Folded& left, const Folded& right) {
    return std::tie(left.key, left.entry.name) < std::tie(right.key, right.entry.name);
  });
}

const Entry* TargetNames::find(std::string_view name) const {
  if (names_.empty()) return nullptr;
  const std::string key = upperCase(name);
  const auto first =
      std::lower_bound(names_.begin(), names_.end(), key,
                       [](const Folded& folded, const std::string& wanted) { return folded.key < wanted; });
  if (first == names_.end() || first->key != key) return nullptr;
  for (auto candidate = first; candidate != names_.end() && candidate->key == key; ++candidate) {
    if (candidate->entry.name == name) return &candidate->entry;
  }
  return &first->entry;
}

FolderPair::FolderPair(Descriptor source, Descriptor target, const Nature& nature, std::string path)
    : source_(std::move(source)), target_(std::move(target)), nature_(nature), path_(std::move(path)) {}

FolderPair::~FolderPair() {
  if (!isComplete_) return;
  const mode_t mode = nature_.status.st_mode & kFolderModeBits;
  if (nature_.isNew && (mode & S_IRWXU) != S_IRWXU) ::fchmod(target_.get(), mode);
  giveTimes(target_, nature_.status);
}

TargetFolder openOrMake(const Descriptor& parent, const Entry* existing, const std::string& name,
                        const Descriptor& source, const struct stat& status) {
  if (existing == nullptr) return make(parent, name, source, status);
  if (existing->kind != EntryKind::kFolder) throw inPlace(existing->kind);
  return {openAt(parent, existing->name, kOpenFolder), false};
}

}  // namespace trelvin
