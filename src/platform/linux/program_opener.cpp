#include "platform/linux/program_opener.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/native_file.h"

namespace trelvin {

namespace {

// Results by the shell's numbers.
constexpr std::int32_t kOpened = 42;
constexpr std::int32_t kNoFile = 2;
constexpr std::int32_t kNoFolder = 3;
constexpr std::int32_t kNoRight = 5;
constexpr std::int32_t kNoMemory = 8;
constexpr std::int32_t kNoProgram = 11;
constexpr std::int32_t kNothingMeantForIt = 31;

std::int32_t resultOf(int systemNumber) {
  switch (systemNumber) {
    case 0:
      return kOpened;
    case ENOENT:
      return kNoFile;
    case ENOTDIR:
      return kNoFolder;
    case EACCES:
    case EPERM:
      return kNoRight;
    case ENOMEM:
    case EAGAIN:
      return kNoMemory;
    default:
      return kNoProgram;
  }
}

bool isAddress(std::string_view text) {
  const std::size_t end = text.find("://");
  // A single letter before the colon would be a drive.
  return end != std::string_view::npos && end > 1 &&
         text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+.-") == end;
}

// Why there is no file to open, 0 when there is one.
std::int32_t missing(const std::string& nativePath) {
  if (::access(nativePath.c_str(), F_OK) == 0) return 0;
  const int failure = errno;
  if (failure != ENOENT) return resultOf(failure);
  return ::access(folderOf(nativePath).c_str(), F_OK) == 0 ? kNoFile : kNoFolder;
}

// How a started program begins: in a session of its own, without streams, with the signals as they come.
class Beginning {
 public:
  Beginning() {
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);
    sigset_t ignored;
    ::sigemptyset(&ignored);
    ::sigaddset(&ignored, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes_, &ignored);
    ::posix_spawn_file_actions_init(&actions_);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0);
    }
  }
  Beginning(const Beginning&) = delete;
  Beginning& operator=(const Beginning&) = delete;
  ~Beginning() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  // Starts a program found by its path, or in PATH when its name has no slash. Returns 0 or the system's
  // number.
  int start(std::vector<std::string> command, pid_t& process) const {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    return ::posix_spawnp(&process, arguments[0], &actions_, &attributes_, arguments.data(), environ);
  }

 private:
  posix_spawnattr_t attributes_{};
  posix_spawn_file_actions_t actions_{};
};

class ProgramOpener final : public Opener {
 public:
  explicit ProgramOpener(PathMapping toNative) : toNative_(std::move(toNative)) {}

  std::int32_t open(const OpenOperation& operation) override {
    try {
      if (isAddress(operation.file)) return openByDesktop(operation.file);
      const std::string native = toNative_(operation.file);
      if (const std::int32_t reason = missing(native)) return reason;
      return isProgramName(operation.file) ? startProgram(native) : openByDesktop(native);
    } catch (const std::bad_alloc&) {
      return kNoMemory;
    } catch (const std::exception&) {
      return kNoFile;  // a name that can't be one of this machine's
    }
  }

 private:
  std::int32_t openByDesktop(const std::string& what) {
    const int failure = start({"xdg-open", what});
    return failure == ENOENT ? kNothingMeantForIt : resultOf(failure);
  }

  // A relative name lies in the current directory and is not looked for in PATH.
  std::int32_t startProgram(const std::string& native) {
    return resultOf(start({native.find('/') == std::string::npos ? "./" + native : native}));
  }

  int start(std::vector<std::string> command) {
    // Those that have ended since are let go of; nobody waits for one that runs.
    std::erase_if(started_, [](pid_t each) { return ::waitpid(each, nullptr, WNOHANG) != 0; });
    pid_t process = 0;
    const int failure = Beginning().start(std::move(command), process);
    if (failure == 0) started_.push_back(process);
    return failure;
  }

  PathMapping toNative_;
  std::vector<pid_t> started_;
};

}  // namespace

std::unique_ptr<Opener> makeProgramOpener(PathMapping toNative) {
  return std::make_unique<ProgramOpener>(std::move(toNative));
}

}  // namespace trelvin
