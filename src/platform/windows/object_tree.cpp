#include "platform/windows/object_tree.h"

#include <algorithm>
#include <array>

#include "core/err.h"
#include "platform/windows/file_system.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

// An account that may read a list but not write it still has a use for the object.
template <typename Open>
DWORD openForLists(Open&& open) {
  const DWORD result = open(DWORD{READ_CONTROL | WRITE_DAC});
  return result == ERROR_ACCESS_DENIED ? open(DWORD{READ_CONTROL}) : result;
}

std::string withoutLastName(const std::string& path) {
  const std::size_t end = path.find_last_not_of("\\/");
  const std::size_t last = path.find_last_of("\\/", end);
  return end == std::string::npos || last == std::string::npos ? std::string() : path.substr(0, last);
}

class FileTree final : public ObjectTree {
 public:
  DWORD open(const std::string& path, OpenObject& object) const override {
    return openForLists([&](DWORD rights) { return openFile(wideText(path), rights, object); });
  }

  // With a backslash at its end, without which a drive's root would be the current folder on the drive.
  [[nodiscard]] std::string parentOf(const std::string& path) const override {
    const std::string parent = withoutLastName(path);
    return parent.empty() || isServer(parent) ? std::string() : parent + "\\";
  }

  [[nodiscard]] std::vector<std::string> heirsOf(const std::string& path) const override {
    std::vector<std::string> heirs = files_->fileNames(path);
    for (std::string& heir : heirs) heir = path + "\\" + heir;
    return heirs;
  }

  [[nodiscard]] GENERIC_MAPPING rights() const override {
    return {FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE, FILE_ALL_ACCESS};
  }

 private:
  // Folders too; no other program is kept from the file.
  static DWORD openFile(const std::wstring& path, DWORD rights, OpenObject& object) {
    const HANDLE opened =
        ::CreateFileW(path.c_str(), rights, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return ::GetLastError();
    object.handle = {opened, ::CloseHandle};
    BY_HANDLE_FILE_INFORMATION facts{};
    if (!::GetFileInformationByHandle(opened, &facts)) return ::GetLastError();
    object.isContainer = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return ERROR_SUCCESS;
  }

  // \\server is no folder.
  static bool isServer(const std::string& path) {
    return path.starts_with("\\\\") && std::ranges::count(path, '\\') == 2;
  }

  std::unique_ptr<FileSystem> files_ = makeFileSystem();
};

class KeyTree final : public ObjectTree {
 public:
  DWORD open(const std::string& path, OpenObject& object) const override {
    // The call would open the root.
    if (path.empty()) return ERROR_FILE_NOT_FOUND;
    object.isContainer = true;
    return openForLists([&](DWORD rights) { return openKey(path, rights, object.handle); });
  }

  [[nodiscard]] std::string parentOf(const std::string& path) const override { return withoutLastName(path); }

  [[nodiscard]] std::vector<std::string> heirsOf(const std::string& path) const override {
    std::shared_ptr<void> key;
    require(openKey(path, KEY_ENUMERATE_SUB_KEYS, key));
    std::vector<std::string> heirs;
    std::array<wchar_t, 256> name{};
    for (DWORD i = 0;; ++i) {
      auto size = static_cast<DWORD>(name.size());
      const LSTATUS result = ::RegEnumKeyExW(static_cast<HKEY>(key.get()), i, name.data(), &size, nullptr,
                                             nullptr, nullptr, nullptr);
      if (result == ERROR_NO_MORE_ITEMS) return heirs;
      require(static_cast<DWORD>(result));
      heirs.push_back(path + "\\" + utf8Text({name.data(), size}));
    }
  }

  [[nodiscard]] GENERIC_MAPPING rights() const override {
    return {KEY_READ, KEY_WRITE, KEY_EXECUTE, KEY_ALL_ACCESS};
  }

 private:
  static void require(DWORD result) {
    if (result != ERROR_SUCCESS) throw Failure(error_number::kPermissionDenied, systemText(result));
  }

  static DWORD openKey(const std::string& path, DWORD rights, std::shared_ptr<void>& handle) {
    HKEY key = nullptr;
    const LSTATUS result =
        ::RegOpenKeyExW(HKEY_CURRENT_USER, wideText(path).c_str(), 0, static_cast<REGSAM>(rights), &key);
    if (result == ERROR_SUCCESS) handle = {key, ::RegCloseKey};
    return static_cast<DWORD>(result);
  }
};

}  // namespace

std::unique_ptr<ObjectTree> makeFileTree() {
  return std::make_unique<FileTree>();
}

std::unique_ptr<ObjectTree> makeKeyTree() {
  return std::make_unique<KeyTree>();
}

}  // namespace trelvin
