#include "utf8.h"

#include <cstdint>
#include <cstring>

namespace trelvin {

namespace {

// Whole words of ASCII, which is nearly all of a metabase.
std::size_t asciiLength(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::size_t length = 0;
  while (length + sizeof(std::uint64_t) <= text.size()) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + length, sizeof word);
    if ((word & kHighBits) != 0) break;
    length += sizeof word;
  }
  return length;
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : (lead >= 0xE0 ? 3 : 2);
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U) return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool beyond = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
  return overlong || beyond ? 0 : length;
}

std::size_t findNoUtf8(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t ascii = asciiLength(text.substr(at));
    at += ascii;
    if (ascii > 0) continue;
    const std::size_t length = utf8Length(text.substr(at));
    if (length == 0) return at;
    at += length;
  }
  return std::string_view::npos;
}

}  // namespace trelvin
