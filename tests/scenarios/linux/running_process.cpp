#include "scenarios/running_process.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace trelvin::test {

namespace fs = std::filesystem;

const char* const kProgramFile = "trelvin";
const char* const kLogDate = "\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d";

namespace {

constexpr uid_t kNobody = 65534;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A file without a name, which goes with its descriptor.
int nameless() {
  std::string name = (fs::temp_directory_path() / "trelvin-output-XXXXXX").string();
  const int file = ::mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) fail("mkostemp");
  ::unlink(name.c_str());
  return file;
}

std::string wholeOf(int file) {
  std::string text;
  if (::lseek(file, 0, SEEK_SET) < 0) fail("lseek");
  std::array<char, 4096> piece{};
  for (ssize_t count = 0; (count = ::read(file, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(count));
  }
  return text;
}

void closeEnd(std::intptr_t& end) {
  if (end >= 0) ::close(static_cast<int>(end));
  end = -1;
}

// In the child: nothing but calls of the system from here on.
[[noreturn]] void become(const char* const* argv, const RunningProcess::Options& options, int output,
                         int error) {
  const bool ready = ::dup2(output, STDOUT_FILENO) >= 0 && ::dup2(error, STDERR_FILENO) >= 0 &&
                     ::chdir(options.currentFolder.c_str()) == 0;
  const bool lessRights = !options.asOrdinaryUser || ::geteuid() != 0 ||
                          (::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
  ::prctl(PR_SET_PDEATHSIG, options.endSignal);  // after the change of user, which takes it back
  ::signal(SIGPIPE, SIG_DFL);                    // whoever runs the tests may ignore it
  if (ready && lessRights) ::execv(argv[0], const_cast<char* const*>(argv));
  ::_exit(127);
}

void setEnvironment(const RunningProcess::Options& options) {
  ::setenv("TRELVIN_NETWORK", options.network.c_str(), 1);
  ::setenv("LC_ALL", "C", 1);
  // Whoever runs the tests may sit at a screen of his own.
  for (const char* screen : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) ::unsetenv(screen);
  for (const auto& [name, value] : options.environment) ::setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace

OutputPipe::OutputPipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
  ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
  reader_ = ends[0];
  writer_ = ends[1];
}

OutputPipe::~OutputPipe() {
  closeReader();
  closeWriter();
}

void OutputPipe::readOn() {
  std::array<char, 4096> piece{};
  while (::read(static_cast<int>(reader_), piece.data(), piece.size()) > 0) {
  }
}

void OutputPipe::closeReader() {
  closeEnd(reader_);
}

void OutputPipe::closeWriter() {
  closeEnd(writer_);
}

struct RunningProcess::Process {
  explicit Process(const Options& options)
      : endSignal(options.endSignal),
        output(options.output == nullptr ? nameless() : -1),
        error(nameless()) {}
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (id > 0) {
      ::kill(id, endSignal);
      ::waitpid(id, nullptr, 0);
    }
    if (output >= 0) ::close(output);
    ::close(error);
  }

  pid_t id = -1;
  int endSignal;
  int output;  // -1 where a pipe gets it
  int error;
};

RunningProcess::RunningProcess(const Options& options) : process_(std::make_unique<Process>(options)) {
  setEnvironment(options);
  std::vector<const char*> argv{options.executable.c_str()};
  for (const std::string& argument : options.arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  const int output =
      options.output == nullptr ? process_->output : static_cast<int>(options.output->writer());
  process_->id = ::fork();
  if (process_->id < 0) fail("fork");
  if (process_->id == 0) become(argv.data(), options, output, process_->error);
  // A pipe has to end with the process, so that its reader sees the end.
  if (options.output != nullptr) options.output->closeWriter();
}

RunningProcess::~RunningProcess() = default;

void RunningProcess::kill() {
  ::kill(process_->id, SIGKILL);
}

ProcessResult RunningProcess::wait() {
  int status = 0;
  while (::waitpid(process_->id, &status, 0) < 0) {
    if (errno != EINTR) fail("waitpid");
  }
  process_->id = -1;
  ProcessResult result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  if (process_->output >= 0) result.standardOutput = wholeOf(process_->output);
  result.standardError = wholeOf(process_->error);
  return result;
}

}  // namespace trelvin::test
