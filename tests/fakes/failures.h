// Looking at failures.
#pragma once

#include <cstdint>
#include <utility>

#include "core/err.h"

namespace trelvin::test {

// How a statement fails; a number of 0 tells that it goes through.
template <typename Statement>
Failure failureOf(Statement&& statement) {
  try {
    static_cast<void>(std::forward<Statement>(statement)());
  } catch (const Failure& failure) {
    return failure;
  }
  return {0, "no failure"};
}

// The number that a statement fails with, 0 when it goes through.
template <typename Statement>
std::int32_t numberOfFailure(Statement&& statement) {
  return failureOf(std::forward<Statement>(statement)).number();
}

}  // namespace trelvin::test
