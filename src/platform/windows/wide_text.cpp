#include "platform/windows/wide_text.h"

#include <array>

#include "platform/windows/windows_api.h"

namespace trelvin {

std::wstring wideText(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int length = static_cast<int>(utf8.size());
  const int needed = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), needed);
  return wide;
}

std::string utf8Text(std::wstring_view wide) {
  if (wide.empty()) return {};
  const int length = static_cast<int>(wide.size());
  const int needed = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(needed), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), needed, nullptr, nullptr);
  return utf8;
}

std::string systemMessage(std::uint32_t number) {
  std::array<wchar_t, 512> buffer{};
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD length =
      ::FormatMessageW(kFlags, nullptr, number, 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
  std::wstring_view text(buffer.data(), length);
  while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n' || text.back() == L' ')) {
    text.remove_suffix(1);
  }
  return utf8Text(text);
}

std::string systemText(std::uint32_t number) {
  std::string text = systemMessage(number);
  return text.empty() ? "system error " + std::to_string(number) : text;
}

}  // namespace trelvin
