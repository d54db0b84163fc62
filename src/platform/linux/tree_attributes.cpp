#include "platform/linux/tree_attributes.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <string_view>

namespace trelvin {

namespace {

constexpr std::string_view kUserKind = "user.";
constexpr std::string_view kAccessLists = "user.trelvin.";
constexpr std::size_t kMostAttributeBytes = 64 * 1024;  // the system's own limit, for a list and for a value

void giveUserAttribute(const Descriptor& source, const Descriptor& target, const std::string& name) {
  std::string value(kMostAttributeBytes, '\0');
  const ssize_t size = ::fgetxattr(source.get(), name.c_str(), value.data(), value.size());
  if (size < 0) return;
  if (::fsetxattr(target.get(), name.c_str(), value.data(), static_cast<std::size_t>(size), 0) != 0)
    errno = 0;
}

}  // namespace

void giveOwner(const Descriptor& target, const struct stat& status) {
  if (::fchown(target.get(), status.st_uid, status.st_gid) == 0) return;
  if (::fchown(target.get(), static_cast<uid_t>(-1), status.st_gid) != 0) errno = 0;
}

void giveUserAttributes(const Descriptor& source, const Descriptor& target) {
  // Nearly no file has any.
  const ssize_t needed = ::flistxattr(source.get(), nullptr, 0);
  if (needed <= 0) return;
  std::string names(kMostAttributeBytes, '\0');
  const ssize_t size = ::flistxattr(source.get(), names.data(), names.size());
  if (size <= 0) return;
  std::string_view rest(names.data(), static_cast<std::size_t>(size));
  while (!rest.empty()) {
    const std::string name(rest.substr(0, rest.find('\0')));
    rest.remove_prefix(name.size() + 1);
    if (name.starts_with(kUserKind) && !name.starts_with(kAccessLists))
      giveUserAttribute(source, target, name);
  }
}

void giveTimes(const Descriptor& target, const struct stat& status) {
  const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
  ::futimens(target.get(), times.data());
}

}  // namespace trelvin
