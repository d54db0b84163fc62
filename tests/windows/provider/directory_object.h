// What the provider gives out: nodes and those values that are objects.
#pragma once

#include <string_view>

#include "platform/windows/adsi/com.h"

namespace trelvin::test {

// The object that a path leads to, with one reference.
ComPtr<IDispatch> boundObject(std::string_view path);

}  // namespace trelvin::test
