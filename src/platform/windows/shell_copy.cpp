#include "platform/windows/shell_copy.h"

#include <exception>
#include <string>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <shellapi.h>

namespace trelvin {

namespace {

// The shell reads a list of names, which a second NUL ends.
std::wstring nameList(const std::string& name) {
  return wideText(name) + L'\0';
}

class ShellCopy final : public Shell {
 public:
  std::int32_t copy(const FileOperation& operation) override {
    try {
      return copyTree(operation);
    } catch (const std::exception&) {
      return ERROR_NOT_ENOUGH_MEMORY;
    }
  }

  [[nodiscard]] std::int32_t lastSystemError() const override { return lastSystemError_; }

 private:
  std::int32_t copyTree(const FileOperation& operation) {
    const std::wstring from = nameList(operation.from);
    const std::wstring to = nameList(operation.to);
    const std::wstring title = wideText(operation.progressTitle);
    SHFILEOPSTRUCTW record{};
    record.wFunc = FO_COPY;
    record.pFrom = from.c_str();
    record.pTo = to.c_str();
    record.fFlags = FOF_NOCONFIRMATION;
    record.lpszProgressTitle = title.c_str();
    const int result = ::SHFileOperationW(&record);
    lastSystemError_ = static_cast<std::int32_t>(::GetLastError());
    return result;
  }

  std::int32_t lastSystemError_ = 0;
};

}  // namespace

std::unique_ptr<Shell> makeShellCopy() {
  return std::make_unique<ShellCopy>();
}

}  // namespace trelvin
