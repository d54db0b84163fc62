#include "platform/windows/system_registry.h"

#include <string>
#include <vector>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

HKEY rootKey(RegistryRoot /*root*/) {
  return HKEY_LOCAL_MACHINE;
}

// A key that is closed when it goes out of sight.
class OpenKey {
 public:
  OpenKey() = default;
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() {
    if (key_ != nullptr) ::RegCloseKey(key_);
  }
  LSTATUS open(HKEY root, const std::wstring& subKey) {
    return ::RegOpenKeyExW(root, subKey.c_str(), 0, KEY_QUERY_VALUE, &key_);
  }
  LSTATUS create(HKEY root, const std::wstring& subKey) {
    return ::RegCreateKeyExW(root, subKey.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key_, nullptr);
  }
  [[nodiscard]] HKEY get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

bool isText(DWORD type) {
  return type == REG_SZ || type == REG_EXPAND_SZ;
}

// What is stored for a text may lack its NUL, and may be cut within a character.
std::string textOf(const std::vector<BYTE>& stored) {
  std::wstring wide(stored.size() / sizeof(wchar_t), L'\0');
  std::char_traits<char>::copy(reinterpret_cast<char*>(wide.data()),
                               reinterpret_cast<const char*>(stored.data()), wide.size() * sizeof(wchar_t));
  return utf8Text(wide.substr(0, wide.find(L'\0')));
}

class SystemRegistry final : public Registry {
 public:
  QueryResult queryValue(RegistryRoot root, std::string_view subKey, std::string_view valueName) override {
    QueryResult result;
    OpenKey key;
    result.code = key.open(rootKey(root), wideText(subKey));
    if (result.code != ERROR_SUCCESS) return result;
    const std::wstring name = wideText(valueName);
    DWORD type = 0;
    DWORD size = 0;
    std::vector<BYTE> stored;
    // The value may grow between the two questions.
    do {
      stored.resize(size);
      result.code = ::RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, stored.data(), &size);
    } while (result.code == ERROR_MORE_DATA || (result.code == ERROR_SUCCESS && size > stored.size()));
    if (result.code != ERROR_SUCCESS) return result;
    stored.resize(size);
    result.type = type;
    result.data = isText(type) ? textOf(stored) : std::string(stored.begin(), stored.end());
    return result;
  }

  std::int32_t setValue(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                        std::uint32_t type, std::string_view data) override {
    OpenKey key;
    const LSTATUS made = key.create(rootKey(root), wideText(subKey));
    if (made != ERROR_SUCCESS) return made;
    const std::wstring text = wideText(data.substr(0, data.find('\0')));
    const bool wide = isText(type);
    const void* bytes = wide ? static_cast<const void*>(text.c_str()) : data.data();
    const std::size_t size = wide ? (text.size() + 1) * sizeof(wchar_t) : data.size();
    return ::RegSetValueExW(key.get(), wideText(valueName).c_str(), 0, type, static_cast<const BYTE*>(bytes),
                            static_cast<DWORD>(size));
  }
};

}  // namespace

std::unique_ptr<Registry> makeSystemRegistry() {
  return std::make_unique<SystemRegistry>();
}

}  // namespace trelvin
