// Opens nothing, keeps what it was asked for, and answers what a test wants.
#pragma once

#include <functional>
#include <vector>

#include "platform/shell.h"

namespace trelvin::test {

class RecordedOpener : public Opener {
 public:
  std::int32_t open(const OpenOperation& operation) override {
    opened.push_back(operation);
    if (onOpen) onOpen(operation);
    return result;
  }

  std::vector<OpenOperation> opened;
  std::function<void(const OpenOperation&)> onOpen;  // what happens meanwhile
  std::int32_t result = 42;
};

}  // namespace trelvin::test
