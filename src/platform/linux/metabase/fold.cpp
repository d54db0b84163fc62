#include "fold.h"

#include <cstdint>

namespace trelvin {

namespace {

constexpr std::uint64_t kSeed = 0xCBF29CE484222325U;
constexpr std::uint64_t kFactor = 0x100000001B3U;

char upperAscii(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

std::uint64_t mixed(std::uint64_t hash, char byte) {
  return (hash ^ static_cast<unsigned char>(byte)) * kFactor;
}

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = kSeed;
  for (const char byte : text) hash = mixed(hash, upperAscii(byte));
  return hash;
}

bool isAscii(std::string_view text) {
  for (const char byte : text) {
    if (static_cast<unsigned char>(byte) >= 0x80) return false;
  }
  return true;
}

}  // namespace

std::size_t foldedHash(std::string_view text) {
  const std::uint64_t hash = isAscii(text) ? hashOf(text) : hashOf(upperCase(text));
  return static_cast<std::size_t>(hash ^ (hash >> 32U));
}

}  // namespace trelvin
