// Keys of hash tables that don't tell the cases of letters apart, for names and locations in the metabase.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/text.h"

namespace trelvin {

// Equal for texts that differ in case only. It stands in the path of every bind and every look-up of a
// property, so that it doesn't allocate for ASCII, which almost all of them are.
std::size_t foldedHash(std::string_view text);

struct FoldedHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return foldedHash(text); }
};
struct FoldedEqual {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const {
    return equalsIgnoringCase(left, right);
  }
};

}  // namespace trelvin
