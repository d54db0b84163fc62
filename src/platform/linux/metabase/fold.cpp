#include "fold.h"

#include <cstdint>
#include <cstring>

namespace trelvin {

namespace {

constexpr std::uint64_t kSeed = 0xCBF29CE484222325U;
constexpr std::uint64_t kFactor = 0x9FB21C651E98DF25U;
constexpr std::uint64_t kEachByte = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = 0x80 * kEachByte;

// Goes through a text eight characters at once; the last ones are filled up with zeros.
template <typename Take>
void forEachWord(std::string_view text, Take&& take) {
  std::uint64_t word = 0;
  for (; text.size() > sizeof word; text.remove_prefix(sizeof word)) {
    std::memcpy(&word, text.data(), sizeof word);
    take(word);
  }
  word = 0;
  for (std::size_t i = text.size(); i > 0; --i) word = (word << 8U) | static_cast<unsigned char>(text[i - 1]);
  take(word);
}

// Of eight ASCII characters: takes 0x20 off each that lies between 'a' and 'z'. A sum sets the high bit of
// its byte where the character is at or past the bound.
std::uint64_t upperAscii(std::uint64_t word) {
  const std::uint64_t fromA = word + (0x80 - 'a') * kEachByte;
  const std::uint64_t pastZ = word + (0x80 - 'z' - 1) * kEachByte;
  return word - (((fromA & ~pastZ) & kHighBits) >> 2U);
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * kFactor;
  return hash ^ (hash >> 29U);
}

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = kSeed ^ text.size();
  forEachWord(text, [&](std::uint64_t word) { hash = mixed(hash, upperAscii(word)); });
  return hash;
}

bool isAscii(std::string_view text) {
  std::uint64_t all = 0;
  forEachWord(text, [&](std::uint64_t word) { all |= word; });
  return (all & kHighBits) == 0;
}

}  // namespace

std::size_t foldedHash(std::string_view text) {
  // What other letters become may be ASCII, or of another length; so they are folded as text first.
  const std::uint64_t hash = isAscii(text) ? hashOf(text) : hashOf(upperCase(text));
  return static_cast<std::size_t>(hash ^ (hash >> 32U));
}

}  // namespace trelvin
