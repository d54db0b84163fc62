#include "platform/windows/file_system.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

namespace error = error_number;

// The runtime's number for a number of the system; notFound is the one for a name that isn't there.
std::int32_t runtimeNumber(DWORD systemNumber, std::int32_t notFound) {
  switch (systemNumber) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_NOT_READY:
      return notFound;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
      return error::kPermissionDenied;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return error::kFileExists;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return error::kDiskFull;
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_DIRECTORY:
      return error::kBadFileName;
    default:
      return error::kDeviceIo;
  }
}

// The runtime's own description, then the path as the program wrote it and what the system says.
Failure failureAt(std::string_view path, std::int32_t number, DWORD systemNumber) {
  return Failure(number,
                 describeError(number) + ": '" + std::string(path) + "' (" + systemText(systemNumber) + ")");
}

void check(BOOL done, std::string_view path, std::int32_t notFound) {
  if (done) return;
  const DWORD number = ::GetLastError();
  throw failureAt(path, runtimeNumber(number, notFound), number);
}

bool isFolder(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isFileAt(std::string_view path) {
  const DWORD attributes = ::GetFileAttributesW(wideText(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !isFolder(attributes);
}

// Of what there is no file at: a folder is none.
DWORD attributesOfFile(std::string_view path) {
  const DWORD attributes = ::GetFileAttributesW(wideText(path).c_str());
  check(attributes != INVALID_FILE_ATTRIBUTES, path, error::kFileNotFound);
  if (isFolder(attributes)) throw failureAt(path, error::kFileNotFound, ERROR_FILE_NOT_FOUND);
  return attributes;
}

template <BOOL(WINAPI* close)(HANDLE)>
struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { close(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser<CloseHandle>>;
using Search = std::unique_ptr<void, HandleCloser<FindClose>>;

// A name of its own beside the destination, where the new content grows until it is whole.
std::wstring nameBeside(const std::wstring& path) {
  return path + L"." + std::to_wstring(::GetCurrentProcessId()) + L".new";
}

// Gives the target a new content, which grow(name) makes; it is replaced whole or not at all. A read-only one
// is refused, as the runtime does. Returns the system's number, 0 when it is done.
template <typename Grow>
DWORD replace(const std::wstring& target, Grow&& grow) {
  const DWORD former = ::GetFileAttributesW(target.c_str());
  if (former != INVALID_FILE_ATTRIBUTES && (isFolder(former) || (former & FILE_ATTRIBUTE_READONLY) != 0)) {
    return ERROR_ACCESS_DENIED;
  }
  const std::wstring growing = nameBeside(target);
  if (grow(growing.c_str()) && ::MoveFileExW(growing.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    return ERROR_SUCCESS;
  }
  const DWORD number = ::GetLastError();
  ::SetFileAttributesW(growing.c_str(), FILE_ATTRIBUTE_NORMAL);
  ::DeleteFileW(growing.c_str());
  return number;
}

// The copy takes the time of its source along.
void copyWhole(std::string_view source, std::string_view destination) {
  const DWORD number = replace(wideText(destination), [&](const wchar_t* growing) {
    return ::CopyFileW(wideText(source).c_str(), growing, FALSE);
  });
  if (number != ERROR_SUCCESS) {
    throw failureAt(destination, runtimeNumber(number, error::kPathNotFound), number);
  }
}

// Writes all of the bytes at once; the last error tells why not.
BOOL writeAtOnce(HANDLE opened, std::string_view bytes) {
  if (opened == INVALID_HANDLE_VALUE) return FALSE;
  const Handle file(opened);
  DWORD written = 0;
  if (!::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
    return FALSE;
  }
  if (written == bytes.size()) return TRUE;
  ::SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

// Names of the items right in a folder, of folders or of the rest, in order.
std::vector<std::string> namesIn(std::string_view folder, bool folders) {
  std::vector<std::string> names;
  WIN32_FIND_DATAW item{};
  const HANDLE found = ::FindFirstFileW((wideText(folder) + L"\\*").c_str(), &item);
  if (found == INVALID_HANDLE_VALUE) {
    const DWORD number = ::GetLastError();
    // Systems differ in what they say of a file in the folder's place.
    const bool isFile = isFileAt(folder);
    throw failureAt(folder, isFile ? error::kPathNotFound : runtimeNumber(number, error::kPathNotFound),
                    number);
  }
  const Search search(found);
  do {
    const std::wstring_view name = item.cFileName;
    if (isFolder(item.dwFileAttributes) == folders && name != L"." && name != L"..") {
      names.push_back(utf8Text(name));
    }
  } while (::FindNextFileW(search.get(), &item));
  // A share that has gone in the middle must not pass for a shorter folder.
  check(::GetLastError() == ERROR_NO_MORE_FILES, folder, error::kPathNotFound);
  std::sort(names.begin(), names.end(), sortsBefore);
  return names;
}

class WindowsFileSystem final : public FileSystem {
 public:
  [[nodiscard]] bool fileExists(std::string_view path) const override { return isFileAt(path); }

  [[nodiscard]] bool folderExists(std::string_view path) const override {
    const DWORD attributes = ::GetFileAttributesW(wideText(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && isFolder(attributes);
  }

  void createFolder(std::string_view path) override {
    check(::CreateDirectoryW(wideText(path).c_str(), nullptr), path, error::kPathNotFound);
  }

  void copyFile(std::string_view source, std::string_view destination) override {
    attributesOfFile(source);
    copyWhole(source, destination);
  }

  void deleteFile(std::string_view path) override {
    attributesOfFile(path);
    check(::DeleteFileW(wideText(path).c_str()), path, error::kFileNotFound);
  }

  void setAttributes(std::string_view path, int attributes) override {
    attributesOfFile(path);
    const DWORD wanted = attributes == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : static_cast<DWORD>(attributes);
    check(::SetFileAttributesW(wideText(path).c_str(), wanted), path, error::kFileNotFound);
  }

  [[nodiscard]] std::vector<std::string> fileNames(std::string_view folder) const override {
    return namesIn(folder, false);
  }

  [[nodiscard]] std::vector<std::string> folderNames(std::string_view folder) const override {
    return namesIn(folder, true);
  }

  // In one write at the end of the file, so that the lines of two processes never mix.
  void appendText(std::string_view path, std::string_view bytes) override {
    const HANDLE opened =
        ::CreateFileW(wideText(path).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (!writeAtOnce(opened, bytes)) throw failureAt(path, error::kPathFileAccess, ::GetLastError());
  }

  void writeText(std::string_view path, std::string_view bytes) override {
    const DWORD number = replace(wideText(path), [&](const wchar_t* growing) {
      const HANDLE opened =
          ::CreateFileW(growing, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
      return writeAtOnce(opened, bytes);
    });
    if (number != ERROR_SUCCESS) throw failureAt(path, error::kPathFileAccess, number);
  }
};

}  // namespace

std::unique_ptr<FileSystem> makeFileSystem() {
  return std::make_unique<WindowsFileSystem>();
}

}  // namespace trelvin
