#include "platform/linux/tree_ledger.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "core/err.h"
#include "platform/linux/native_file.h"

namespace trelvin {

namespace {

std::int32_t shellNumber(int systemNumber) {
  switch (systemNumber) {
    case ENOENT:
      return shell_number::kFileNotFound;
    case ENOTDIR:
      return shell_number::kPathNotFound;
    case EMFILE:
    case ENFILE:
      return shell_number::kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
      return shell_number::kAccessDenied;
    case ENOMEM:
      return shell_number::kOutOfMemory;
    case EBUSY:
    case ETXTBSY:
      return shell_number::kSharingViolation;
    case EOPNOTSUPP:
    case ELOOP:
      return shell_number::kNotSupported;
    case ENOSPC:
    case EDQUOT:
      return shell_number::kDiskFull;
    case EISDIR:
      return shell_number::kFolderInPlace;
    case ENAMETOOLONG:
      return shell_number::kNameTooLong;
    case EFBIG:
      return shell_number::kFileTooLarge;
    case EIO:
      return shell_number::kDeviceFailure;
    default:
      return shell_number::kGeneralFailure;
  }
}

// A name may hold whatever its owner chose; a line of the log must stay one line.
std::string onOneLine(std::string_view path) {
  std::string line(path);
  for (char& byte : line) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20 || code == 0x7F) byte = '?';
  }
  return line;
}

std::string joined(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!name.empty()) path.append("\\").append(name);
  return path;
}

}  // namespace

void TreeLedger::add(std::string_view path, std::int32_t number, std::string_view cause) noexcept {
  std::int32_t none = 0;
  firstNumber_.compare_exchange_strong(none, number);
  if (number == shell_number::kDiskFull) isDiskFull_ = true;
  try {
    std::string line = onOneLine(path).append(": ").append(cause);
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
  } catch (const std::bad_alloc&) {
    // Without memory for the line the number still tells that something is missing.
  }
}

void TreeLedger::addCurrent(std::string_view folder, std::string_view name) noexcept {
  try {
    const std::string path = joined(folder, name);
    try {
      throw;
    } catch (const Failure& failure) {
      add(path, failure.number(), failure.description());
    } catch (const std::system_error& failed) {
      add(path, shellNumber(failed.code().value()), systemText(failed.code().value()));
    } catch (const std::exception& failed) {
      add(path, shell_number::kGeneralFailure, failed.what());
    }
  } catch (...) {
    add(folder, shell_number::kOutOfMemory, "Out of memory");
  }
}

std::vector<std::string> TreeLedger::takeLines() {
  const std::lock_guard lock(mutex_);
  return std::exchange(lines_, {});
}

}  // namespace trelvin
