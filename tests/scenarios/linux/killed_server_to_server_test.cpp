// Sites from server to server by a process that is killed on its way, at any of its calls of the system.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <set>
#include <thread>
#include <utility>

#include "scenarios/server_to_server_job.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

// The program under this process's eyes. It stands still ahead of each call of the system that changes files,
// or takes a file's name away or gives it another, and behind it. Most commits are no call of the system, but
// lie between two lines of the log. It dies with its owner.
class TracedProgram {
 public:
  explicit TracedProgram(const RunningProcess::Options& options) {
    ::setenv("TRELVIN_NETWORK", options.network.c_str(), 1);
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the leak check is a tracer itself
    std::vector<const char*> arguments{options.executable.c_str()};
    for (const std::string& argument : options.arguments) arguments.push_back(argument.c_str());
    arguments.push_back(nullptr);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(nowhere, STDOUT_FILENO);
      ::dup2(nowhere, STDERR_FILENO);
      if (::chdir(options.currentFolder.c_str()) == 0 && ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
        ::execv(arguments[0], const_cast<char* const*>(arguments.data()));
      }
      ::_exit(127);
    }
    ::close(nowhere);
    if (waitForStop()) {
      ::ptrace(PTRACE_SETOPTIONS, process_, nullptr,
               reinterpret_cast<void*>(PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL));
    }
  }
  TracedProgram(const TracedProgram&) = delete;
  TracedProgram& operator=(const TracedProgram&) = delete;
  ~TracedProgram() {
    ::unsetenv("ASAN_OPTIONS");
    if (hasEnded_) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }

  // Whether the system lets a process trace its child.
  static bool isPossible() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  // Runs on for a while from the point where it stands. It may end meanwhile.
  void runFor(std::chrono::microseconds time) {
    if (hasEnded_) return;
    ::ptrace(PTRACE_CONT, process_, nullptr, nullptr);
    std::this_thread::sleep_for(time);
  }

  // Runs on to the n-th such point from here. False when the program has ended before.
  bool runTo(int n) {
    while (n > 0) {
      ::ptrace(PTRACE_SYSCALL, process_, nullptr, reinterpret_cast<void*>(static_cast<long>(signal_)));
      if (!waitForStop()) return false;
      if (isPoint()) --n;
    }
    return true;
  }

 private:
  bool waitForStop() {
    int status = 0;
    if (::waitpid(process_, &status, 0) != process_ || !WIFSTOPPED(status)) {
      hasEnded_ = true;
      return false;
    }
    const int stop = WSTOPSIG(status);
    isSystemCall_ = stop == (SIGTRAP | 0x80);
    signal_ = isSystemCall_ || stop == SIGTRAP ? 0 : stop;
    return true;
  }

  // The exit of a call follows its entry, and says no more which call it was.
  bool isPoint() {
    if (!isSystemCall_) return false;
    __ptrace_syscall_info info{};
    ::ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info);
    if (info.op == PTRACE_SYSCALL_INFO_EXIT) return std::exchange(inChange_, false);
    inChange_ = info.op == PTRACE_SYSCALL_INFO_ENTRY && isChange(static_cast<long>(info.entry.nr));
    return inChange_;
  }

  static bool isChange(long call) {
    constexpr std::array kChanges{SYS_write,  SYS_pwrite64,  SYS_fsync,    SYS_fdatasync, SYS_ftruncate,
                                  SYS_fchmod, SYS_fallocate, SYS_renameat, SYS_renameat2, SYS_unlinkat,
#ifdef SYS_rename
                                  SYS_rename, SYS_unlink
#endif
    };
    return std::ranges::find(kChanges, call) != kChanges.end();
  }

  pid_t process_ = -1;
  bool hasEnded_ = false;
  bool isSystemCall_ = false;
  bool inChange_ = false;
  int signal_ = 0;
};

class KilledServerToServerJob : public ServerToServerJob {
 protected:
  void restoreTarget() const {
    fs::remove_all(folder / "network/NEW6");
    fs::copy(fs::path(TRELVIN_SOURCE_DIR) / "samples/servers/NEW6", folder / "network/NEW6",
             fs::copy_options::recursive);
  }
  // Every state that the target goes through, from commit to commit, as a run in this process shows them.
  std::set<State> statesOfARun() {
    std::set<State> states{targetState()};
    bool hasChanged = false;
    metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
      if (hasChanged) states.insert(targetState());
      const bool isChange = call.operation == "SetInfo" || call.operation == "Delete" ||
                            call.operation == "Start" || call.operation.starts_with("AppCreate");
      hasChanged = isChange && call.path.starts_with("IIS://NEW6");
      return std::nullopt;
    };
    start("-RUNBACKUP -B " + jobArgument());
    states.insert(targetState());
    return states;
  }

  // The traced program, or nothing where a process may not be traced.
  [[nodiscard]] std::unique_ptr<TracedProgram> traced() const {
    return std::make_unique<TracedProgram>(options({"-RUNBACKUP", "-B", jobArgument()}));
  }
  // The points of a run at which it can be killed while it changes the target, and one ahead of them.
  struct Points {
    int first = 0;
    int last = 0;
  };
  [[nodiscard]] Points pointsOfARun() const {
    const auto program = traced();
    Points points;
    for (int point = 1; program->runTo(1); ++point) {
      if (fs::exists(folder / kTargetFolder / "MetaBase.xml.journal")) points.last = point;
      if (points.last == 0) points.first = point;
    }
    return points;
  }
  void runAndKillAt(int point, std::chrono::microseconds later = {}) const {
    const auto program = traced();
    program->runTo(point);
    program->runFor(later);
  }
};

TEST_F(KilledServerToServerJob, LeavesATargetInWhichEveryCommitIsOldOrNew) {
  if (!TracedProgram::isPossible()) GTEST_SKIP() << "processes may not be traced here";
  addWebJob();
  const std::set<State> states = statesOfARun();
  ASSERT_GT(states.size(), 20U);
  restoreTarget();
  const Points points = pointsOfARun();
  const int count = points.last - points.first;
  ASSERT_GT(count, 50);
  const auto source = bytesBelow("network/WEB5");
  std::set<State> seen;
  for (int point = points.first; point <= points.last + 1; point += 1 + count / 60) {
    restoreTarget();
    // The values of a site are committed without a call in between, within some milliseconds.
    runAndKillAt(point, std::chrono::microseconds(point % 2 == 0 ? 0 : point * 97 % 5000));
    State state;
    ASSERT_NO_THROW(state = targetState()) << "killed at " << point << " of " << points.last;
    EXPECT_TRUE(states.contains(state)) << "killed at " << point << " of " << points.last;
    seen.insert(std::move(state));
    EXPECT_EQ(bytesBelow("network/WEB5"), source);
  }
  EXPECT_GT(seen.size(), 10U) << "the run was stopped in different states";
}

TEST_F(KilledServerToServerJob, IsFollowedByARunThatWorks) {
  if (!TracedProgram::isPossible()) GTEST_SKIP() << "processes may not be traced here";
  addWebJob({{"SiteCreationMode", "Overwrite"}});
  const Points points = pointsOfARun();
  restoreTarget();
  expectThrough(runJob());
  const State whole = targetState();
  for (int point = points.first; point <= points.last + 1; point += 1 + (points.last - points.first) / 12) {
    restoreTarget();
    runAndKillAt(point);
    expectThrough(runJob());
    EXPECT_EQ(targetState(), whole) << "killed at " << point << " of " << points.last;
    for (const auto& entry : fs::directory_iterator(folder / kTargetFolder)) {
      EXPECT_EQ(entry.path().filename(), "MetaBase.xml") << "killed at " << point << " of " << points.last;
    }
  }
}

}  // namespace
}  // namespace trelvin::test
