// A program of the build, run as a process of its own.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/lines_of.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

// Milliseconds for anything that is bound to end, on a machine that is busy with other things too.
constexpr DWORD kPatience = 240'000;

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// What comes of a program: its status and what it has written.
struct Outcome {
  DWORD status = ~DWORD{0};
  std::vector<std::string> output;  // empty where a handle got it
  std::string error;
};

// Ends with its object, whatever it does.
class ProgramProcess {
 public:
  // Its streams go to files in the folder, so that each process that runs at the same time needs one of its
  // own; standard output goes to a handle instead that can be inherited. Throws when it can't be started.
  ProgramProcess(const std::filesystem::path& program, std::string_view arguments,
                 const std::filesystem::path& currentFolder, std::filesystem::path streams,
                 HANDLE output = nullptr);
  ProgramProcess(const ProgramProcess&) = delete;
  ProgramProcess& operator=(const ProgramProcess&) = delete;
  ~ProgramProcess();

  [[nodiscard]] DWORD number() const { return number_; }
  [[nodiscard]] bool hasEnded() const;
  void kill(UINT status);
  // Waits for its end. Throws when it doesn't come.
  Outcome outcome();

 private:
  std::filesystem::path streams_;
  Handle output_;
  Handle error_;
  Handle process_;
  DWORD number_ = 0;
};

}  // namespace trelvin::test
