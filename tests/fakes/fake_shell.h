// A shell that copies nothing, keeps what it was asked for, and answers what a test wants.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/platform.h"

namespace trelvin::test {

class FakeShell : public Shell {
 public:
  std::int32_t copy(const FileOperation& operation) override {
    operations.push_back(operation);
    if (onCopy) onCopy(operation);
    return result;
  }
  [[nodiscard]] std::int32_t lastSystemError() const override { return systemError; }

  std::vector<FileOperation> operations;
  std::function<void(const FileOperation&)> onCopy;  // what happens meanwhile
  std::int32_t result = 0;
  std::int32_t systemError = 0;
};

// Puts such a shell into the platform; it stays for the rest of the test.
inline FakeShell& useFakeShell() {
  auto made = std::make_unique<FakeShell>();
  FakeShell& shell = *made;
  platform().shell = std::move(made);
  return shell;
}

}  // namespace trelvin::test
