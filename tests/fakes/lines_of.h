#pragma once

#include <string>
#include <vector>

#include "core/text.h"

namespace trelvin::test {

// Without the ends of the lines, and without the empty line behind the last one.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines = split(replaceAll(text, "\r\n", "\n"), '\n');
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

}  // namespace trelvin::test
