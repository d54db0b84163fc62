// What the provider gives out: nodes and those values that are objects.
#pragma once

#include <atomic>
#include <string_view>

#include "platform/windows/adsi/com.h"

namespace trelvin::test {

// How many names the objects of this library were asked for the numbers of.
inline std::atomic<long> nameLookups = 0;

// The object that a path leads to, with one reference.
ComPtr<IDispatch> boundObject(std::string_view path);

}  // namespace trelvin::test
