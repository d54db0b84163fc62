#include "platform/linux/program_process.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/linux/native_file.h"
#include "platform/linux/paths.h"

namespace trelvin {

namespace {

constexpr mode_t kLockFileMode = 0666;
constexpr const char* kLockFile = "/Trelvin.lock";

std::string joinedArguments(int argc, const char* const* argv) {
  std::string line;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) line += ' ';
    line += argv[i];
  }
  return line;
}

enum class Claim { kMine, kTaken, kImpossible };

// Tries to lock a file; the lock lives as long as the descriptor that is left in held.
Claim claim(const std::string& path, int flags, Descriptor& held) {
  try {
    held = openFile(path, flags, kLockFileMode);
  } catch (const std::system_error&) {
    return Claim::kImpossible;
  }
  if (::flock(held.get(), LOCK_EX | LOCK_NB) == 0) return Claim::kMine;
  return errno == EWOULDBLOCK ? Claim::kTaken : Claim::kImpossible;
}

class ProgramProcess final : public Application {
 public:
  ProgramProcess(ProgramPlace place, std::string commandLine)
      : place_(std::move(place)), commandLine_(std::move(commandLine)) {}

  [[nodiscard]] std::string path() const override {
    std::string path = windowsPath(place_.folder);
    if (path.ends_with('\\')) path.pop_back();
    return path;
  }

  [[nodiscard]] std::string commandLine() const override { return commandLine_; }

  bool prevInstance() override {
    if (!claim_) {
      claim_ = claim(place_.executable, O_RDONLY, lock_);
      if (claim_ == Claim::kImpossible) claim_ = claim(place_.folder + kLockFile, O_RDWR | O_CREAT, lock_);
    }
    return claim_ == Claim::kTaken;
  }

  [[noreturn]] void end(int exitCode) override {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    std::_Exit(exitCode);
  }

 private:
  ProgramPlace place_;
  std::string commandLine_;
  std::optional<Claim> claim_;
  Descriptor lock_;
};

}  // namespace

std::unique_ptr<Application> makeApplication(ProgramPlace place, int argc, const char* const* argv) {
  return std::make_unique<ProgramProcess>(std::move(place), joinedArguments(argc, argv));
}

}  // namespace trelvin
