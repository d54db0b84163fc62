#include "platform/linux/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "platform/linux/native_file.h"

namespace trelvin {

namespace {

namespace error = error_number;

constexpr int kReadOnlyAttribute = 1;
constexpr mode_t kWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kNewFolderMode = 0777;
constexpr mode_t kPrivateMode = 0600;
constexpr std::size_t kCopySize = std::size_t{256} * 1024;

// The runtime's number for a number of the system; notFound is the one for a name that isn't there.
std::int32_t runtimeNumber(int systemNumber, std::int32_t notFound) {
  switch (systemNumber) {
    case ENOENT:
    case ENOTDIR:
      return notFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ETXTBSY:
    case EBUSY:
      return error::kPermissionDenied;
    case EEXIST:
      return error::kFileExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return error::kDiskFull;
    case ENAMETOOLONG:
    case EINVAL:
    case ELOOP:
      return error::kBadFileName;
    default:
      return error::kDeviceIo;
  }
}

// The runtime's own description, then the path as the program wrote it and what the system says.
Failure failureAt(std::string_view path, std::int32_t number, int systemNumber) {
  return Failure(number,
                 describeError(number) + ": '" + std::string(path) + "' (" + systemText(systemNumber) + ")");
}

// Runs one operation on a path of the program and gives a failure of the system the runtime's form.
template <typename Operation>
auto onPath(std::string_view path, std::int32_t notFound, Operation&& operation) {
  try {
    return operation();
  } catch (const std::system_error& failed) {
    const int number = failed.code().value();
    throw failureAt(path, runtimeNumber(number, notFound), number);
  }
}

void check(int result) {
  if (result != 0) throw std::system_error(errno, std::generic_category());
}

struct stat statusOf(const std::string& nativePath) {
  struct stat status {};
  check(::stat(nativePath.c_str(), &status));
  return status;
}

// Of what there is no file at: a folder is none.
struct stat statusOfFile(const std::string& nativePath) {
  const struct stat status = statusOf(nativePath);
  if (S_ISDIR(status.st_mode)) throw std::system_error(ENOENT, std::generic_category());
  return status;
}

std::size_t readSome(const Descriptor& file, std::vector<char>& buffer) {
  for (;;) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) check(-1);
  }
}

struct Source {
  Descriptor file;
  struct stat status {};
};

Source openSource(const std::string& nativePath) {
  statusOfFile(nativePath);
  Source source;
  source.file = openFile(nativePath, O_RDONLY | O_NONBLOCK);
  check(::fstat(source.file.get(), &source.status));
  // A pipe or a device has no content that could be copied to its end.
  if (!S_ISREG(source.status.st_mode)) throw std::system_error(EINVAL, std::generic_category());
  return source;
}

// Fills the destination. Failures of the source throw as they are; the caller knows which path is meant.
void fill(const Source& source, Replacement& destination, std::string_view sourcePath) {
  std::vector<char> buffer(kCopySize);
  for (;;) {
    const std::size_t count =
        onPath(sourcePath, error::kFileNotFound, [&] { return readSome(source.file, buffer); });
    if (count == 0) break;
    writeAll(destination.file(), {buffer.data(), count});
  }
  const std::array<timespec, 2> times{source.status.st_atim, source.status.st_mtim};
  check(::futimens(destination.file().get(), times.data()));
  destination.setMode(source.status.st_mode);
}

void removeFile(const std::string& nativePath) {
  if (isReadOnly(statusOfFile(nativePath))) throw std::system_error(EACCES, std::generic_category());
  check(::unlink(nativePath.c_str()));
}

// Takes back what a full disk let through of the text, unless something else was appended meanwhile.
void takeBack(const Descriptor& file, off_t written) {
  const off_t end = ::lseek(file.get(), 0, SEEK_CUR);
  struct stat status {};
  const bool isLast = end >= written && ::fstat(file.get(), &status) == 0 && status.st_size == end;
  if (isLast && ::ftruncate(file.get(), end - written) != 0) errno = 0;
}

// In one write, so that the lines of two processes never mix. What is left over goes in a second one, which
// also tells why the first fell short.
void appendWhole(const Descriptor& file, std::string_view bytes) {
  ssize_t written = 0;
  do {
    written = ::write(file.get(), bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  if (written < 0) check(-1);
  const std::string_view rest = bytes.substr(static_cast<std::size_t>(written));
  if (rest.empty()) return;
  const ssize_t more = ::write(file.get(), rest.data(), rest.size());
  if (more == static_cast<ssize_t>(rest.size())) return;
  const int reason = more < 0 ? errno : ENOSPC;
  takeBack(file, written + (more > 0 ? more : 0));
  throw std::system_error(reason, std::generic_category());
}

// Names of the items right in a folder, of folders or of the rest, in order.
std::vector<std::string> namesIn(const std::string& nativePath, bool folders) {
  std::vector<std::string> names;
  std::error_code failed;
  for (std::filesystem::directory_iterator item(nativePath, failed), end; !failed && item != end;
       item.increment(failed)) {
    std::error_code unreadable;
    if (item->is_directory(unreadable) == folders) names.push_back(item->path().filename().string());
  }
  if (failed) throw std::system_error(failed);
  std::sort(names.begin(), names.end(), sortsBefore);
  return names;
}

// What SQLite keeps beside a database belongs to the file that is replaced, and would spoil the one that
// takes its place: a run that was killed leaves such files.
void removeDatabaseJournals(const std::string& nativePath) {
  for (const char* ending : {"-wal", "-shm", "-journal"}) {
    if (::unlink((nativePath + ending).c_str()) != 0 && errno != ENOENT) check(-1);
  }
}

// Whoever may read the file may start it.
void makeStartable(Replacement& file) {
  struct stat status {};
  check(::fstat(file.file().get(), &status));
  constexpr mode_t kReadBits = S_IRUSR | S_IRGRP | S_IROTH;
  file.setMode(status.st_mode | ((status.st_mode & kReadBits) >> 2U));
}

class NativeFileSystem final : public FileSystem {
 public:
  explicit NativeFileSystem(PathMapping toNative) : toNative_(std::move(toNative)) {}

  [[nodiscard]] bool fileExists(std::string_view path) const override {
    const std::optional<struct stat> status = find(path);
    return status && !S_ISDIR(status->st_mode);
  }

  [[nodiscard]] bool folderExists(std::string_view path) const override {
    const std::optional<struct stat> status = find(path);
    return status && S_ISDIR(status->st_mode);
  }

  void createFolder(std::string_view path) override {
    onPath(path, error::kPathNotFound, [&] { check(::mkdir(toNative_(path).c_str(), kNewFolderMode)); });
  }

  void copyFile(std::string_view source, std::string_view destination) override {
    const Source opened = onPath(source, error::kFileNotFound, [&] { return openSource(toNative_(source)); });
    onPath(destination, error::kPathNotFound, [&] {
      Replacement replacement(toNative_(destination), kPrivateMode);
      fill(opened, replacement, source);
      removeDatabaseJournals(toNative_(destination));
      replacement.commit();
    });
  }

  void deleteFile(std::string_view path) override {
    onPath(path, error::kFileNotFound, [&] { removeFile(toNative_(path)); });
  }

  void setAttributes(std::string_view path, int attributes) override {
    onPath(path, error::kFileNotFound, [&] {
      const std::string native = toNative_(path);
      const mode_t mode = statusOfFile(native).st_mode & 07777U;
      const bool readOnly = (attributes & kReadOnlyAttribute) != 0;
      check(::chmod(native.c_str(), readOnly ? mode & ~kWriteBits : mode | S_IWUSR));
    });
  }

  [[nodiscard]] std::vector<std::string> fileNames(std::string_view folder) const override {
    return onPath(folder, error::kPathNotFound, [&] { return namesIn(toNative_(folder), false); });
  }

  [[nodiscard]] std::vector<std::string> folderNames(std::string_view folder) const override {
    return onPath(folder, error::kPathNotFound, [&] { return namesIn(toNative_(folder), true); });
  }

  void appendText(std::string_view path, std::string_view bytes) override {
    try {
      // A pipe that nobody reads must not hold the program up.
      Descriptor file = openFile(toNative_(path), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK, kNewFileMode);
      appendWhole(file, bytes);
      file.close();
    } catch (const std::system_error& failed) {
      throw failureAt(path, error::kPathFileAccess, failed.code().value());
    }
  }

  void writeText(std::string_view path, std::string_view bytes) override {
    try {
      Replacement replacement(toNative_(path), kNewFileMode);
      writeAll(replacement.file(), bytes);
      if (isProgramName(path)) makeStartable(replacement);
      replacement.commit();
    } catch (const std::system_error& failed) {
      throw failureAt(path, error::kPathFileAccess, failed.code().value());
    }
  }

 private:
  // A name that can't be one of this machine's is a name that isn't there.
  [[nodiscard]] std::optional<struct stat> find(std::string_view path) const {
    try {
      return statusOf(toNative_(path));
    } catch (const std::system_error&) {
    } catch (const Failure&) {
    }
    return std::nullopt;
  }

  PathMapping toNative_;
};

}  // namespace

std::unique_ptr<FileSystem> makeFileSystem(PathMapping toNative) {
  return std::make_unique<NativeFileSystem>(std::move(toNative));
}

}  // namespace trelvin
