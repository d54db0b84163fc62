// Text on its way to the driver manager and back: UTF-8 on the program's side, SQLTCHAR on the other.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/shared/odbc/odbc_api.h"

namespace trelvin {

// What strings are made of for text of SQLTCHAR.
using DriverChar = std::conditional_t<std::is_same_v<SQLTCHAR, SQLCHAR>, char, wchar_t>;
using DriverString = std::basic_string<DriverChar>;
using DriverView = std::basic_string_view<DriverChar>;
static_assert(sizeof(DriverChar) == sizeof(SQLTCHAR));

// Whether the calls carry characters, so that no character set has to be agreed upon.
inline constexpr bool kWideCalls = sizeof(SQLTCHAR) > 1;

DriverString driverText(std::string_view text);
// Half of a wide character alone, as a foreign database may have it, becomes U+FFFD.
std::string programText(DriverView text);

// Text for a call that wants to be able to write into it.
inline SQLTCHAR* mutableText(DriverString& text) {
  return reinterpret_cast<SQLTCHAR*>(text.data());
}

// The text in a buffer of so many characters: up to its NUL, or all of it.
inline DriverView textWithin(const DriverChar* buffer, std::size_t size) {
  const DriverChar* const end = std::char_traits<DriverChar>::find(buffer, size, DriverChar());
  return {buffer, end == nullptr ? size : static_cast<std::size_t>(end - buffer)};
}

// The text that a call has left in a buffer.
template <std::size_t kSize>
std::string textIn(const std::array<SQLTCHAR, kSize>& filled) {
  return programText(textWithin(reinterpret_cast<const DriverChar*>(filled.data()), kSize));
}

}  // namespace trelvin
