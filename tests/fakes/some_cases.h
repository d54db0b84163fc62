// For tests with many like cases.
#pragma once

#include <cstddef>
#include <vector>

namespace trelvin::test {

// All of the cases, or every fourth where each costs ten times as much, as on an emulator.
template <typename Case>
std::vector<Case> someOf(const std::vector<Case>& cases) {
  std::vector<Case> chosen;
  for (std::size_t i = 0; i < cases.size(); i += TRELVIN_EVERY_NTH_CASE) chosen.push_back(cases[i]);
  return chosen;
}

}  // namespace trelvin::test
