#include "platform/linux/native_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <system_error>
#include <utility>

namespace trelvin {

namespace {

constexpr off_t kLargestTextFile = off_t{64} * 1024 * 1024;
constexpr std::size_t kReadSize = std::size_t{64} * 1024;
constexpr mode_t kPermissionBits = 0777;

[[noreturn]] void fail(int errorNumber, const std::string& path) {
  throw std::system_error(errorNumber, std::generic_category(), path);
}

// What stands at the end of symbolic links; the path itself when nothing does.
std::string behindLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? real.get() : path;
}

std::string temporaryNameIn(const std::string& folder) {
  static std::random_device random;
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "/.trelvin-%08x.tmp", static_cast<unsigned>(random()));
  return folder + name.data();
}

void flush(const Descriptor& file, const std::string& path) {
  if (::fsync(file.get()) != 0) fail(errno, path);
}

// Without this a power cut could take the new name away again. Some network file systems know no such call.
void flushFolder(const std::string& folder) {
  const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.get() >= 0) ::fsync(opened.get());
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (number_ >= 0) ::close(number_);
}

void Descriptor::close() {
  if (number_ < 0) return;
  // An interrupted close has closed all the same.
  const bool isClosed = ::close(std::exchange(number_, -1)) == 0 || errno == EINTR;
  if (!isClosed) fail(errno, "close");
}

std::string systemText(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

Descriptor openFile(const std::string& path, int flags, mode_t mode) {
  for (;;) {
    Descriptor file(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode));
    if (file.get() >= 0) return file;
    if (errno != EINTR) fail(errno, path);
  }
}

void writeAll(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    if (written == 0) fail(ENOSPC, "write");
    if (written < 0 && errno != EINTR) fail(errno, "write");
  }
}

bool isReadOnly(const struct stat& status) {
  return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

std::string readFile(const std::string& path) {
  // Without O_NONBLOCK the open itself would wait for the other end of a pipe.
  const Descriptor file = openFile(path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) fail(errno, path);
  if (!S_ISREG(status.st_mode)) fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path);
  if (status.st_size > kLargestTextFile) fail(EFBIG, path);

  // One byte more than expected, so that the end is seen without growing.
  std::string content(static_cast<std::size_t>(status.st_size) + 1, '\0');
  std::size_t filled = 0;
  for (;;) {
    // The file may grow while it is read.
    if (filled == content.size()) content.resize(filled + kReadSize);
    const ssize_t count = ::read(file.get(), content.data() + filled, content.size() - filled);
    if (count < 0 && errno != EINTR) fail(errno, path);
    if (count == 0) break;
    if (count > 0) filled += static_cast<std::size_t>(count);
    if (filled > static_cast<std::size_t>(kLargestTextFile)) fail(EFBIG, path);
  }
  content.resize(filled);
  return content;
}

Replacement::Replacement(const std::string& path, mode_t newMode) : target_(behindLinks(path)) {
  struct stat status {};
  const bool isThere = ::stat(target_.c_str(), &status) == 0;
  if (isThere && S_ISDIR(status.st_mode)) fail(EISDIR, path);
  if (isThere && !S_ISREG(status.st_mode)) fail(EINVAL, path);
  if (isThere && (isReadOnly(status) || ::access(target_.c_str(), W_OK) != 0)) fail(EACCES, path);
  createBeside(isThere ? S_IRUSR | S_IWUSR : newMode);
  if (!isThere) return;
  // The owner first: a change of owner may take mode bits away. Who may not give files away becomes their
  // owner.
  if (::fchown(file_.get(), status.st_uid, status.st_gid) != 0) errno = 0;
  ::fchmod(file_.get(), status.st_mode & kPermissionBits);
}

void Replacement::createBeside(mode_t mode) {
  for (;;) {
    temporary_ = temporaryNameIn(folderOf(target_));
    file_ = Descriptor(::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (file_.get() >= 0) return;
    if (errno != EEXIST && errno != EINTR) fail(errno, target_);
  }
}

Replacement::~Replacement() {
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void Replacement::setMode(mode_t mode) {
  if (::fchmod(file_.get(), mode & kPermissionBits) != 0) fail(errno, target_);
}

void Replacement::commit() {
  flush(file_, target_);
  commitWithoutFlush();
  flushFolder(folderOf(target_));
}

void Replacement::commitWithoutFlush() {
  file_.close();
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno, target_);
  temporary_.clear();
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace trelvin
