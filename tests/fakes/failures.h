// Looking at failures.
#pragma once

#include <cstdint>
#include <utility>

#include "core/err.h"

namespace trelvin::test {

// The number that a statement fails with, 0 when it goes through.
template <typename Statement>
std::int32_t numberOfFailure(Statement&& statement) {
  try {
    static_cast<void>(std::forward<Statement>(statement)());
  } catch (const Failure& failure) {
    return failure.number();
  }
  return 0;
}

}  // namespace trelvin::test
