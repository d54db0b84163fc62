// Text on its way to Windows' wide calls and back: UTF-8 on the program's side.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trelvin {

// Bytes that are no UTF-8, and lone surrogates, come out as the replacement character.
std::wstring wideText(std::string_view utf8);
std::string utf8Text(std::wstring_view wide);

// Windows' own text for one of its numbers, without the line end; empty when it has none.
std::string systemMessage(std::uint32_t number);
// The same; the number itself when there is no text.
std::string systemText(std::uint32_t number);

}  // namespace trelvin
