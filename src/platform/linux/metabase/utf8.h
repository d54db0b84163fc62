// Whether bytes are UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace trelvin {

// Bytes of the character at the front of a text that isn't empty; 0 when they are none.
std::size_t utf8Length(std::string_view text);

// Position of the first byte that belongs to no character; npos for a text that is UTF-8 throughout.
std::size_t findNoUtf8(std::string_view text);

}  // namespace trelvin
