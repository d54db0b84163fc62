#include "fold.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "core/text.h"

namespace trelvin {

namespace {

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

constexpr std::uint64_t kSeed = 0xCBF29CE484222325U;
constexpr std::uint64_t kFactor = 0x100000001B3U;

std::uint64_t mixed(std::uint64_t hash, char byte) {
  return (hash ^ static_cast<unsigned char>(byte)) * kFactor;
}

// The letters of a hash table's lower bits must depend on all bytes.
std::size_t finished(std::uint64_t hash) {
  return static_cast<std::size_t>(hash ^ (hash >> 32U));
}

}  // namespace

std::size_t foldedHash(std::string_view text) {
  std::uint64_t hash = kSeed;
  for (const char byte : text) {
    if (!isAscii(byte)) {
      hash = kSeed;
      for (const char upper : upperCase(text)) hash = mixed(hash, upper);
      return finished(hash);
    }
    hash = mixed(hash, foldedAscii(byte));
  }
  return finished(hash);
}

bool foldedEqual(std::string_view left, std::string_view right) {
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (!isAscii(left[i]) || !isAscii(right[i])) return equalsIgnoringCase(left, right);
    if (foldedAscii(left[i]) != foldedAscii(right[i])) return false;
  }
  return left.size() == right.size();
}

bool foldedLess(std::string_view left, std::string_view right) {
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (!isAscii(left[i]) || !isAscii(right[i])) return sortsBefore(left, right);
    const char l = foldedAscii(left[i]);
    const char r = foldedAscii(right[i]);
    if (l != r) return l < r;
  }
  return left.size() != right.size() ? left.size() < right.size() : left < right;
}

}  // namespace trelvin
