// Names and locations in the metabase, told apart without regard to case. Almost all of them are ASCII, and
// these stand in the path of every bind and every look-up of a property, so that they must not allocate for
// such.
#pragma once

#include <cstddef>
#include <string_view>

namespace trelvin {

inline char foldedAscii(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

// Equal for texts that differ in case only.
std::size_t foldedHash(std::string_view text);
bool foldedEqual(std::string_view left, std::string_view right);
// The order of siblings: by text, so that "10" stands before "2", and names that differ in case are
// neighbours.
bool foldedLess(std::string_view left, std::string_view right);

struct FoldedHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return foldedHash(text); }
};
struct FoldedEqual {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const { return foldedEqual(left, right); }
};

}  // namespace trelvin
