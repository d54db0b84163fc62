#include "platform/windows/program_opener.h"

#include <exception>
#include <utility>

#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <shellapi.h>

namespace trelvin {

namespace {

constexpr std::intptr_t kNoWindow = 1;

class ProgramOpener final : public Opener {
 public:
  explicit ProgramOpener(MainWindowHandle mainWindow) : mainWindow_(std::move(mainWindow)) {}

  std::int32_t open(const OpenOperation& operation) override {
    try {
      const std::intptr_t owner = operation.ownedByMainWindow ? mainWindow_() : kNoWindow;
      const HINSTANCE result =
          ::ShellExecuteW(reinterpret_cast<HWND>(owner), L"open", wideText(operation.file).c_str(), nullptr,
                          nullptr, operation.showCommand);
      return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(result));
    } catch (const std::exception&) {
      return SE_ERR_OOM;
    }
  }

 private:
  MainWindowHandle mainWindow_;
};

}  // namespace

std::unique_ptr<Opener> makeProgramOpener(MainWindowHandle mainWindow) {
  return std::make_unique<ProgramOpener>(std::move(mainWindow));
}

}  // namespace trelvin
