#include "platform/linux/tree_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <random>
#include <system_error>

#include "core/err.h"
#include "platform/linux/tree_attributes.h"
#include "platform/linux/tree_ledger.h"

namespace trelvin {

namespace {

constexpr std::string_view kTemporaryPrefix = ".trelvin-copy-";
constexpr std::string_view kTemporarySuffix = ".tmp";
constexpr std::size_t kTemporaryDigits = 16;
// Whoever runs the program must not hand his own rights on with a file of somebody else's.
constexpr mode_t kFileModeBits = 0777;
constexpr off_t kMostAtOnce = off_t{1} << 30;
constexpr std::size_t kBufferSize = std::size_t{128} * 1024;
constexpr off_t kLarge = off_t{1} << 20;
constexpr off_t kSmallestWithHoles = off_t{64} * 1024;
constexpr off_t kBlockSize = 512;  // the unit of st_blocks

[[noreturn]] void failNow() {
  throw std::system_error(errno, std::generic_category());
}

std::string newTemporaryName() {
  static const unsigned ofThisProcess = std::random_device()();
  static std::atomic<unsigned> counter{0};
  std::array<char, kTemporaryDigits + 1> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x%08x", ofThisProcess, counter++);
  return std::string(kTemporaryPrefix).append(digits.data()).append(kTemporarySuffix);
}

// A file that hasn't got its name yet.
class Temporary {
 public:
  explicit Temporary(const Descriptor& folder) : folder_(folder), name_(newTemporaryName()) {
    file_ = openAt(folder, name_, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    // Tells other copies that this one is alive. Where files can't be locked, none of them removes any.
    ::flock(file_.get(), LOCK_EX | LOCK_NB);
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary() {
    if (!hasName_) ::unlinkat(folder_.get(), name_.c_str(), 0);
  }

  [[nodiscard]] const Descriptor& file() const { return file_; }

  void becomes(const std::string& name) {
    // Some file systems report a failed write only here.
    file_.close();
    if (::renameat(folder_.get(), name_.c_str(), folder_.get(), name.c_str()) != 0) failNow();
    hasName_ = true;
  }

 private:
  const Descriptor& folder_;
  std::string name_;
  Descriptor file_;
  bool hasName_ = false;
};

void writeAllAt(const Descriptor& file, std::string_view bytes, off_t position) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(file.get(), bytes.data(), bytes.size(), position);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) failNow();
    if (written == 0) throw std::system_error(ENOSPC, std::generic_category());
    bytes.remove_prefix(static_cast<std::size_t>(written));
    position += written;
  }
}

void copyByBuffer(const Descriptor& source, const Descriptor& target, off_t begin, off_t end) {
  std::string buffer(kBufferSize, '\0');
  for (off_t position = begin; position < end;) {
    const auto wanted = std::min(buffer.size(), static_cast<std::size_t>(end - position));
    const ssize_t count = ::pread(source.get(), buffer.data(), wanted, position);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failNow();
    if (count == 0) return;  // it became shorter meanwhile
    writeAllAt(target, {buffer.data(), static_cast<std::size_t>(count)}, position);
    position += count;
  }
}

void copyStretch(const Descriptor& source, const Descriptor& target, off_t begin, off_t end) {
  off_t from = begin;
  off_t to = begin;
  while (from < end) {
    const auto wanted = static_cast<std::size_t>(std::min(end - from, kMostAtOnce));
    const ssize_t count = ::copy_file_range(source.get(), &from, target.get(), &to, wanted, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
  }
  // Not between all file systems, and some report an end where there is none. What is really wrong will be
  // wrong with plain reading and writing too.
  if (from < end) copyByBuffer(source, target, from, end);
}

// Copies what is there of a file with holes, and leaves the holes.
void copyData(const Descriptor& source, const Descriptor& target, off_t size) {
  for (off_t position = 0; position < size;) {
    off_t data = ::lseek(source.get(), position, SEEK_DATA);
    if (data < 0 && errno == ENXIO) break;  // nothing but a hole
    off_t hole = data < 0 ? size : ::lseek(source.get(), data, SEEK_HOLE);
    if (data < 0) data = position;  // this file system knows no holes
    if (hole < 0 || hole > size) hole = size;
    copyStretch(source, target, data, hole);
    position = hole;
  }
  if (::ftruncate(target.get(), size) != 0) failNow();
}

void copyContent(const Descriptor& source, const Descriptor& target, const struct stat& status) {
  // Reads farther ahead, for a source that is not in memory yet.
  if (status.st_size >= kLarge) ::posix_fadvise(source.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  const bool hasHoles =
      status.st_size >= kSmallestWithHoles && status.st_blocks < status.st_size / kBlockSize;
  if (hasHoles) {
    copyData(source, target, status.st_size);
  } else {
    copyStretch(source, target, 0, status.st_size);
  }
}

std::string linkInProc(const Descriptor& file) {
  return "/proc/self/fd/" + std::to_string(file.get());
}

Failure leftOut(const char* why) {
  return Failure(shell_number::kNotSupported, why);
}

// The file is held before its place is looked at, so that nobody can put another one there in between.
Descriptor openLinked(const FileItem& item, const std::string& treeRoot) {
  const Descriptor held = openAt(item.folder->source(), item.name, O_PATH);
  if (!nativePathOf(held).starts_with(treeRoot + "/")) throw leftOut("a link that leads out of the folder");
  const mode_t mode = statusOf(held).st_mode;
  if (S_ISDIR(mode)) throw leftOut("a link to a folder");
  if (!S_ISREG(mode)) throw leftOut("a link to something that is no file");
  return openFile(linkInProc(held), O_RDONLY | O_NONBLOCK);
}

Descriptor openSource(const FileItem& item, const std::string& treeRoot) {
  if (item.isLink) return openLinked(item, treeRoot);
  return openAt(item.folder->source(), item.name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
}

}  // namespace

std::string nativePathOf(const Descriptor& file) {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = ::readlink(linkInProc(file).c_str(), path.data(), path.size());
  return length < 0 ? std::string() : std::string(path.data(), static_cast<std::size_t>(length));
}

void copyFile(const FileItem& item, const std::string& treeRoot) {
  const Descriptor source = openSource(item, treeRoot);
  const struct stat status = statusOf(source);
  if (!S_ISREG(status.st_mode)) throw leftOut("neither a file nor a folder");
  Temporary copy(item.folder->target());
  copyContent(source, copy.file(), status);
  giveOwner(copy.file(), status);
  // Before the mode, which may take the right to write away.
  giveUserAttributes(source, copy.file());
  ::fchmod(copy.file().get(), status.st_mode & kFileModeBits);
  giveTimes(copy.file(), status);
  copy.becomes(item.targetName);
}

bool isTemporaryName(std::string_view name) {
  if (name.size() != kTemporaryPrefix.size() + kTemporaryDigits + kTemporarySuffix.size()) return false;
  if (!name.starts_with(kTemporaryPrefix) || !name.ends_with(kTemporarySuffix)) return false;
  const std::string_view digits = name.substr(kTemporaryPrefix.size(), kTemporaryDigits);
  return digits.find_first_not_of("0123456789abcdef") == digits.npos;
}

void removeAbandoned(const Descriptor& folder, const std::string& name) {
  const Descriptor file(
      ::openat(folder.get(), name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
  if (file.get() < 0 || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
  ::unlinkat(folder.get(), name.c_str(), 0);
}

}  // namespace trelvin
