#include "platform/windows/profile_files.h"

#include <string>

#include "core/text.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

class WindowsProfileFiles final : public ProfileFiles {
 public:
  std::uint32_t getString(std::string_view section, std::string_view key, std::string_view defaultValue,
                          std::string& buffer, std::uint32_t size, std::string_view file) override {
    if (size == 0) return 0;
    std::wstring value(size, L'\0');
    const DWORD length = ::GetPrivateProfileStringW(wideText(section).c_str(), wideText(key).c_str(),
                                                    wideText(defaultValue).c_str(), value.data(), size,
                                                    wideText(file).c_str());
    std::string filled = utf8Text({value.data(), length});
    const auto count = static_cast<std::uint32_t>(characterCount(filled));
    filled += '\0';
    buffer = filled + std::string(behindCharacters(buffer, count + 1));
    return count;
  }

  bool writeString(std::string_view section, std::string_view key, std::optional<std::string_view> value,
                   std::string_view file) override {
    const std::wstring text = wideText(value.value_or(""));
    return ::WritePrivateProfileStringW(wideText(section).c_str(), wideText(key).c_str(),
                                        value ? text.c_str() : nullptr, wideText(file).c_str()) != 0;
  }
};

}  // namespace

std::unique_ptr<ProfileFiles> makeProfileFiles() {
  return std::make_unique<WindowsProfileFiles>();
}

}  // namespace trelvin
