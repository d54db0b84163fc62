#include "disk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "core/err.h"

namespace trelvin {

namespace {

std::int64_t nanoseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileIdentity identityFrom(const struct stat& status) {
  return {status.st_dev,
          status.st_ino,
          static_cast<std::uint64_t>(status.st_size),
          nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim),
          status.st_mode};
}

constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

}  // namespace

void failFromSystem(std::string_view action, const std::string& path) {
  const int code = errno;
  std::int32_t number = error_number::kMetabaseUnreadable;
  if (code == EACCES || code == EPERM || code == EROFS) number = error_number::kAccessDenied;
  if (code == ENOSPC || code == EDQUOT || code == EFBIG) number = kDiskFullResult;
  throw Failure(
      number, path + " can't be " + std::string(action) + ": " + std::generic_category().message(code) + ".");
}

std::optional<FileIdentity> identityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    failFromSystem("reached", path);
  }
  return identityFrom(status);
}

FileIdentity identityOfOpen(const Descriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) failFromSystem("examined", "An open file");
  return identityFrom(status);
}

namespace {

// Runs an operation of the system and gives its failure the form of the metabase's own.
template <typename Operation>
auto onFile(std::string_view action, const std::string& path, Operation&& operation) {
  try {
    return operation();
  } catch (const std::system_error& failed) {
    errno = failed.code().value();
    failFromSystem(action, path);
  }
}

}  // namespace

Descriptor openMetabaseFile(const std::string& path, int flags, mode_t mode) {
  return onFile("opened", path, [&] { return openFile(path, flags, mode); });
}

void writeWhole(const Descriptor& file, std::string_view bytes, const std::string& path) {
  onFile("written", path, [&] { writeAll(file, bytes); });
}

std::vector<char> readWhole(const Descriptor& file, const std::string& path) {
  std::vector<char> content(identityOfOpen(file).size);
  std::size_t length = 0;
  while (length < content.size()) {
    const ssize_t count =
        ::pread(file.get(), content.data() + length, content.size() - length, static_cast<off_t>(length));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) failFromSystem("read", path);
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  content.resize(length);
  return content;
}

std::vector<char> readWhole(const std::string& path) {
  return readWhole(openMetabaseFile(path, O_RDONLY), path);
}

// The mode is asked besides the right, because an administrator has every right and still means the mark.
void requireWritableFile(const std::string& path, const FileIdentity& identity) {
  errno = EACCES;
  if ((identity.mode & kAnyWrite) == 0 || ::access(path.c_str(), W_OK) != 0) failFromSystem("written", path);
  const std::string folder = folderOf(path);
  const std::optional<FileIdentity> ofFolder = identityOf(folder);
  errno = EACCES;
  if (!ofFolder || (ofFolder->mode & kAnyWrite) == 0 || ::access(folder.c_str(), W_OK) != 0) {
    failFromSystem("written", folder);
  }
}

void Fingerprint::mix(std::uint64_t word) {
  constexpr std::uint64_t kFactor = 0xFF51AFD7ED558CCDU;
  state_ = (state_ ^ word) * kFactor;
  state_ ^= state_ >> 29U;
}

void Fingerprint::add(std::string_view bytes) {
  length_ += bytes.size();
  while (!bytes.empty()) {
    if (filled_ == 0 && bytes.size() >= sizeof(std::uint64_t)) {
      std::uint64_t word = 0;
      std::memcpy(&word, bytes.data(), sizeof word);
      mix(word);
      bytes.remove_prefix(sizeof word);
      continue;
    }
    partial_ |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes.front())) << (8U * filled_);
    bytes.remove_prefix(1);
    if (++filled_ < sizeof partial_) continue;
    mix(partial_);
    partial_ = 0;
    filled_ = 0;
  }
}

std::uint64_t Fingerprint::value() const {
  Fingerprint last = *this;
  last.mix(partial_);
  last.mix(length_);
  return last.state_;
}

std::uint64_t fingerprintOf(std::string_view bytes) {
  Fingerprint fingerprint;
  fingerprint.add(bytes);
  return fingerprint.value();
}

MetabaseRewrite::MetabaseRewrite(std::string path)
    : path_(std::move(path)),
      temporary_(path_ + ".new"),
      file_(openMetabaseFile(temporary_, O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR)) {}

MetabaseRewrite::~MetabaseRewrite() {
  if (!done_) ::unlink(temporary_.c_str());
}

void MetabaseRewrite::write(std::string_view bytes) {
  constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
  fingerprint_.add(bytes);
  size_ += bytes.size();
  if (buffer_.size() + bytes.size() > kBufferSize) flush();
  if (bytes.size() >= kBufferSize) {
    writeWhole(file_, bytes, temporary_);
  } else {
    buffer_ += bytes;
  }
}

void MetabaseRewrite::flush() {
  writeWhole(file_, buffer_, temporary_);
  buffer_.clear();
}

// Who might read or write the old file may do so with the new one. An attribute that the new file can't take
// is not worth losing the change for.
void MetabaseRewrite::takeOver() {
  struct stat status {};
  if (::stat(path_.c_str(), &status) != 0) failFromSystem("reached", path_);
  if (::fchown(file_.get(), status.st_uid, status.st_gid) != 0 && errno != EPERM)
    failFromSystem("written", temporary_);
  if (::fchmod(file_.get(), status.st_mode & 07777U) != 0) failFromSystem("written", temporary_);
  const ssize_t length = ::listxattr(path_.c_str(), nullptr, 0);
  if (length <= 0) return;
  std::string names(static_cast<std::size_t>(length), '\0');
  const ssize_t listed = ::listxattr(path_.c_str(), names.data(), names.size());
  names.resize(listed < 0 ? 0 : static_cast<std::size_t>(listed));
  for (std::size_t at = 0; at < names.size(); at += std::strlen(names.c_str() + at) + 1) {
    const char* name = names.c_str() + at;
    const ssize_t size = ::getxattr(path_.c_str(), name, nullptr, 0);
    if (size < 0) continue;
    std::string value(static_cast<std::size_t>(size), '\0');
    if (::getxattr(path_.c_str(), name, value.data(), value.size()) != size) continue;
    if (::fsetxattr(file_.get(), name, value.data(), value.size(), 0) != 0) continue;
  }
}

void MetabaseRewrite::finish() {
  flush();
  takeOver();
  if (::fsync(file_.get()) != 0) failFromSystem("written", temporary_);
}

void MetabaseRewrite::commit() {
  if (::rename(temporary_.c_str(), path_.c_str()) != 0) failFromSystem("replaced", path_);
  done_ = true;
  syncFolderOf(path_);
}

void removeFile(const std::string& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) failFromSystem("removed", path);
}

void syncFolderOf(const std::string& path) {
  const Descriptor folder(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A file system that can't do it has nothing to lose by it.
  if (folder.get() >= 0) static_cast<void>(::fsync(folder.get()));
}

}  // namespace trelvin
