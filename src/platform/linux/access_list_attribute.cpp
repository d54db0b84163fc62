#include "platform/linux/access_list_attribute.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace trelvin {

namespace {

// No system keeps a larger one.
constexpr std::size_t kLargestAttribute = 65536;

[[noreturn]] void fail(const std::string& nativePath) {
  throw std::system_error(errno, std::generic_category(), nativePath);
}

// -1 as the system's own call, but for a path without the attribute: that has 0 bytes of it.
ssize_t readInto(const std::string& nativePath, char* bytes, std::size_t size) {
  const ssize_t length = ::getxattr(nativePath.c_str(), kAccessListAttribute, bytes, size);
  return length < 0 && errno == ENODATA ? 0 : length;
}

// The system's number, 0 for success.
int write(const std::string& nativePath, const std::string& text) {
  const char* const path = nativePath.c_str();
  const int result = text.empty() ? ::removexattr(path, kAccessListAttribute)
                                  : ::setxattr(path, kAccessListAttribute, text.data(), text.size(), 0);
  const bool wasAwayAlready = text.empty() && result != 0 && errno == ENODATA;
  return result == 0 || wasAwayAlready ? 0 : errno;
}

// With the owner's write bit set for as long as it takes; only the owner can set it.
int writeAsOwner(const std::string& nativePath, const std::string& text) {
  struct stat status {};
  if (::stat(nativePath.c_str(), &status) != 0) return errno;
  const mode_t mode = status.st_mode & 07777U;
  if ((mode & S_IWUSR) != 0 || ::chmod(nativePath.c_str(), mode | S_IWUSR) != 0) return EACCES;
  const int failure = write(nativePath, text);
  return ::chmod(nativePath.c_str(), mode) != 0 && failure == 0 ? errno : failure;
}

}  // namespace

std::string readAccessListAttribute(const std::string& nativePath) {
  // Nearly every list fits in here, so that one call does.
  std::array<char, 1024> few;
  const ssize_t length = readInto(nativePath, few.data(), few.size());
  if (length >= 0) return {few.data(), static_cast<std::size_t>(length)};
  if (errno != ERANGE) fail(nativePath);

  std::string text(kLargestAttribute, '\0');
  const ssize_t wholeLength = readInto(nativePath, text.data(), text.size());
  if (wholeLength < 0) fail(nativePath);
  text.resize(static_cast<std::size_t>(wholeLength));
  return text;
}

void writeAccessListAttribute(const std::string& nativePath, const std::string& text) {
  int failure = write(nativePath, text);
  // The read-only mark guards the content, not the list; this system asks for the mark's bit before it looks
  // at who owns the file.
  if (failure == EACCES) failure = writeAsOwner(nativePath, text);
  if (failure != 0) throw std::system_error(failure, std::generic_category(), nativePath);
}

}  // namespace trelvin
