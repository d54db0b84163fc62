#include "platform/windows/program_process.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

#include "core/text.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

// Grows until the path fits; long paths are longer than MAX_PATH.
std::string executablePath() {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length < buffer.size()) return utf8Text({buffer.data(), length});
    buffer.resize(buffer.size() * 2);
  }
}

// A name of a mutex can't hold a backslash and is told apart by case.
std::wstring mutexName(const std::string& executable) {
  std::string name = lowerCase(executable);
  std::replace(name.begin(), name.end(), '\\', '/');
  return wideText("Global\\Trelvin:" + std::string(lastCharacters(name, MAX_PATH - 32)));
}

// Whether somebody else has claimed the name. If not it is claimed for this process, as the handle is never
// closed. A claim of another user, or of one with more rights, can't be opened.
bool isClaimed(const std::wstring& name) {
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, name.c_str());
  const DWORD error = ::GetLastError();
  return error == ERROR_ALREADY_EXISTS || (mutex == nullptr && error == ERROR_ACCESS_DENIED);
}

class ProgramProcess final : public Application {
 public:
  [[nodiscard]] std::string path() const override {
    return executable_.substr(0, executable_.find_last_of('\\'));
  }

  [[nodiscard]] std::string commandLine() const override { return argumentsOf(::GetCommandLineW()); }

  bool prevInstance() override {
    if (!taken_) taken_ = isClaimed(mutexName(executable_));
    return *taken_;
  }

  [[noreturn]] void end(int exitCode) override {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    std::_Exit(exitCode);
  }

 private:
  const std::string executable_ = executablePath();
  std::optional<bool> taken_;
};

}  // namespace

std::string argumentsOf(std::wstring_view line) {
  const bool quoted = line.starts_with(L'"');
  const std::size_t end = quoted ? line.find(L'"', 1) + 1 : line.find(L' ');
  const std::size_t begin = line.find(L' ', end);
  return begin == std::wstring_view::npos ? std::string() : utf8Text(line.substr(begin + 1));
}

std::unique_ptr<Application> makeApplication() {
  return std::make_unique<ProgramProcess>();
}

}  // namespace trelvin
