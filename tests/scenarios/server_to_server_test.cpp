// Sites from server to server by a job, as a scheduler starts it: the sample servers, the program as a
// process.
#include <fcntl.h>
#include <gmock/gmock.h>
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

#include "core/err.h"
#include "core/run_state.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "program_run.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using State = std::map<std::string, std::string>;  // each property that a node holds, by path and name

constexpr const char* kTargetFile = "network/NEW6/C$/WINDOWS/system32/inetsrv/MetaBase.xml";
constexpr const char* kTargetFolder = "network/NEW6/C$/WINDOWS/system32/inetsrv";
constexpr const char* kStamp = "Trelvin: This web site was exported using Trelvin v4.1";

std::string sectionsOf(std::initializer_list<const char*> sites) {
  std::string text;
  int number = 0;
  for (const char* site : sites) {
    text += "[" + std::to_string(++number) + "Site]\r\nSiteName=IIS://" + site + "\r\n";
  }
  return text;
}

std::string textOf(const Value& value) {
  if (value.varType() == kVarObject || value.varType() == kVarBytes) return "(not looked into)";
  if (value.varType() != kVarList) return value.toText();
  std::string text;
  for (const Value& entry : value.list()) {
    if (entry.varType() == kVarObject) return "(not looked into)";
    text += (text.empty() ? "" : "|") + entry.toText();
  }
  return text;
}

// A node may hold what its class doesn't know; that it does is all there is to see then. The error state of a
// run in this process is not touched.
std::string valueOf(const MetabaseNode& node, const std::string& name) {
  try {
    return textOf(node.get(name));
  } catch (const Failure& failure) {
    if (failure.number() != error_number::kAdsPropertyNotSupported) throw;
    return "(not known to the class)";
  }
}

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

class ServerToServerJob : public ScenarioTest {
 protected:
  ServerToServerJob() {
    fs::copy(fs::path(TRELVIN_SOURCE_DIR) / "samples/servers", folder / "network",
             fs::copy_options::recursive);
  }
  // Three sites of WEB5 to NEW6, with the pairs that such a move needs.
  void addWebJob(const std::map<std::string, std::string>& details = {}) {
    std::map<std::string, std::string> all{{"Sites", "2"},
                                           {"ImportServer", "WEB5"},
                                           {"ExportServer", "NEW6"},
                                           {"ImportVersion", "IIS5"},
                                           {"ExportVersion", "IIS6"},
                                           {"FindReplaceCount", "2"}};
    for (const auto& [key, value] : details) all[key] = value;
    addJobText(
        jobText(all,
                "[0FindReplace]\r\nFind=WINNT\r\nReplace=Windows\r\n[1FindReplace]\r\nFind=192.0.2.\r\n"
                "Replace=198.51.100.\r\n" +
                    sectionsOf({"WEB5/W3SVC/1", "WEB5/W3SVC/3"})));
  }
  void expectThrough(const ProcessResult& result) const {
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.standardError, "");
    EXPECT_THAT(log(), Contains("Closing complete"));
    const std::vector<std::string> lines = linesOf(result.standardOutput);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "Done!");
  }
  [[nodiscard]] std::unique_ptr<Metabase> reader() const {
    const Paths paths((folder / "network").string());
    return makeFileMetabase([paths](std::string_view server) { return paths.metabaseFileOf(server); });
  }
  // The value in force at a node of the target.
  [[nodiscard]] std::string valueAt(const std::string& path, const std::string& property) const {
    return textOf(reader()->getObject("IIS://NEW6" + path)->get(property));
  }
  [[nodiscard]] std::vector<std::string> sitesOf(const std::string& service) const {
    std::vector<std::string> names;
    reader()->getObject("IIS://NEW6/" + service)->forEachChild([&](const NodeHandle& child) {
      if (child->className().ends_with("Server")) names.push_back(child->name());
    });
    return names;
  }
  // Everything that the metabase of the target holds, as the program's own reader sees it.
  [[nodiscard]] State targetState() const {
    const std::unique_ptr<Metabase> disk = reader();
    const NodeHandle top = disk->getObject("IIS://NEW6");
    State state;
    for (const std::string& name : propertyNames(*disk)) {
      for (const std::string& path : top->getDataPaths(name, Value())) {
        state[path + " " + name] = valueOf(*disk->getObject(path), name);
      }
    }
    return state;
  }
  void restoreTarget() const {
    fs::remove_all(folder / "network/NEW6");
    fs::copy(fs::path(TRELVIN_SOURCE_DIR) / "samples/servers/NEW6", folder / "network/NEW6",
             fs::copy_options::recursive);
  }
  static std::string elementAt(const std::string& file, const std::string& location) {
    const std::size_t at = file.find("Location =\"" + location + "\"");
    if (at == std::string::npos) return {};
    const std::size_t begin = file.rfind('<', at);
    const std::string keyType = file.substr(begin + 1, file.find_first_of(" \t\r\n", begin) - begin - 1);
    return file.substr(begin, file.find("</" + keyType + ">", at) - begin);
  }

 private:
  // Names that the classes of a web server's nodes know and that can be set at a node.
  static std::set<std::string> propertyNames(Metabase& disk) {
    std::set<std::string> names;
    for (const char* word :
         {"IIsWebService", "IIsWebServer", "IIsWebVirtualDir", "IIsWebDirectory", "IIsApplicationPool",
          "IIsFtpServer", "IIsFtpVirtualDir", "IIsFilters", "IIsFilter"}) {
      const NodeHandle schemaClass = disk.getObject(std::string("IIS://NEW6/schema/") + word);
      for (const std::string& name : schemaClass->mandatoryProperties()) names.insert(name);
      for (const std::string& name : schemaClass->optionalProperties()) names.insert(name);
    }
    names.insert("KeyType");
    return names;
  }
};

TEST_F(ServerToServerJob, MovesItsSitesBesideThoseOfTheTarget) {
  addWebJob();
  const auto source = bytesBelow("network/WEB5");
  const std::string before = folder.read(kTargetFile);
  expectThrough(runJob());

  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2", "3"));
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerBindings"),
            "198.51.100.51:80:shop.example.com|198.51.100.51:80:www.shop.example.com|:8081:");
  EXPECT_EQ(valueAt("/W3SVC/3", "SecureBindings"), "198.51.100.51:443:");
  EXPECT_EQ(valueAt("/W3SVC/3/ROOT", "AppRoot"), "/LM/W3SVC/3/ROOT");
  EXPECT_THAT(valueAt("/W3SVC/3/ROOT", "HttpCustomHeaders"), ::testing::EndsWith(kStamp));
  EXPECT_THAT(valueAt("/W3SVC/3/ROOT", "HttpCustomHeaders"), Not(StartsWith(kStamp)))
      << "behind those that the root has from its site";

  const std::string after = folder.read(kTargetFile);
  for (const char* location :
       {"/", "/LM", "/LM/W3SVC", "/LM/W3SVC/1", "/LM/W3SVC/1/ROOT", "/LM/W3SVC/AppPools", "/LM/W3SVC/Filters",
        "/LM/W3SVC/Info", "/LM/MSFTPSVC/1"}) {
    ASSERT_NE(elementAt(before, location), "") << location;
    EXPECT_EQ(elementAt(after, location), elementAt(before, location)) << location;
  }
  EXPECT_EQ(bytesBelow("network/WEB5"), source) << "the source, content and metabase, byte for byte";
}

TEST_F(ServerToServerJob, MovesTheConfigurationOnly) {
  addWebJob();
  auto before = bytesBelow("network/NEW6");
  expectThrough(runJob());
  auto after = bytesBelow("network/NEW6");
  EXPECT_NE(after[kTargetFile], before[kTargetFile]);
  before.erase(kTargetFile);
  after.erase(kTargetFile);
  EXPECT_EQ(after, before) << "no content, and no journal beside the metabase";
}

TEST_F(ServerToServerJob, TellsOnStandardOutputWhatItDoes) {
  addWebJob();
  const std::vector<std::string> lines = linesOf(runJob().standardOutput);
  for (const char* line :
       {"Begining the export", "Checking to see if W3SVC2 exists..", "Creating Web Site W3SVC2",
        "Creating virtual directory 2/ROOT", "Creating Web Site W3SVC3", "Done!"})
    EXPECT_THAT(lines, Contains(line));
}

TEST_F(ServerToServerJob, OverwritesTheSitesOfTheTarget) {
  addWebJob({{"SiteCreationMode", "Overwrite"}});
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2"));
  EXPECT_EQ(valueAt("/W3SVC/2", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
  EXPECT_THAT(log(), Contains("Deleteing existing web W3SVC1"));
}

TEST_F(ServerToServerJob, KeepsTheNumbersOfTheSource) {
  addWebJob({{"SiteCreationMode", "Overwrite Preserve"}});
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "3"));
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
}

TEST_F(ServerToServerJob, MovesEverySiteWithItsPools) {
  addJobText(jobText({{"ImportServer", "WEB6"}, {"ExportServer", "NEW6"}, {"BackupAllSites", "True"}},
                     sectionsOf({"WEB6/W3SVC/1"})));
  const auto source = bytesBelow("network/WEB6");
  expectThrough(runJob());
  EXPECT_EQ(sitesOf("W3SVC").size(), 5U);
  std::set<std::string> pools;
  std::set<std::string> sourcePools;
  const auto collect = [](std::set<std::string>& names) {
    return [&names](const NodeHandle& child) { names.insert(child->name()); };
  };
  reader()->getObject("IIS://NEW6/W3SVC/AppPools")->forEachChild(collect(pools));
  for (const char* path : {"IIS://WEB6/W3SVC"}) {
    const auto disk = reader();
    for (const std::string& holder : disk->getObject(path)->getDataPaths("AppPoolId", Value())) {
      if (!holder.ends_with("/W3SVC")) sourcePools.insert(textOf(disk->getObject(holder)->get("AppPoolId")));
    }
  }
  EXPECT_FALSE(sourcePools.empty());
  EXPECT_TRUE(std::includes(pools.begin(), pools.end(), sourcePools.begin(), sourcePools.end()));
  EXPECT_EQ(bytesBelow("network/WEB6"), source);
}

TEST_F(ServerToServerJob, MovesFtpSites) {
  addJobText(jobText(
      {{"ImportServer", "WEB6"}, {"ExportServer", "NEW6"}, {"Type", "MSFTPSVC"}, {"BackupAllSites", "True"}},
      sectionsOf({"WEB6/MSFTPSVC/1"})));
  const std::string before = folder.read(kTargetFile);
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("MSFTPSVC"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1"));
  const std::string after = folder.read(kTargetFile);
  EXPECT_EQ(elementAt(after, "/LM/MSFTPSVC/1"), elementAt(before, "/LM/MSFTPSVC/1"));
  EXPECT_EQ(after.find(kStamp), std::string::npos);
}

TEST_F(ServerToServerJob, AddsItsSitesAgainInTheNextRun) {
  addWebJob();
  expectThrough(runJob());
  const State first = targetState();
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2", "3", "4", "5"));
  const State second = targetState();
  EXPECT_TRUE(std::includes(second.begin(), second.end(), first.begin(), first.end()))
      << "the sites of the first run stay as they are";
}

TEST_F(ServerToServerJob, EndsInOrderWhenItsTargetCannotBeReached) {
  addWebJob({{"ExportServer", "NOWHERE"}});
  const auto source = bytesBelow("network");
  expectThrough(runJob());
  EXPECT_EQ(std::ranges::count(log(), "Error connecting to target server"), 1);
  EXPECT_EQ(std::ranges::count(log(), "Completed"), 2);
  EXPECT_EQ(bytesBelow("network"), source);
}

TEST_F(ServerToServerJob, LeavesATargetThatIsReadOnlyAsItIs) {
  addWebJob();
  fs::permissions(folder / kTargetFile, fs::perms::owner_read | fs::perms::group_read);
  const auto before = bytesBelow("network");
  expectThrough(runJob());
  EXPECT_EQ(bytesBelow("network"), before);
  EXPECT_THAT(log(), Contains(StartsWith("Error transfering Property ")));
}

TEST_F(ServerToServerJob, LeavesABrokenTargetAsItIsAndSaysWhatIsWrong) {
  addWebJob();
  std::string text = folder.read(kTargetFile);
  text.erase(text.size() / 2);
  folder.write(kTargetFile, text);
  expectThrough(runJob());
  EXPECT_EQ(folder.read(kTargetFile), text);
  EXPECT_THAT(log(), Contains("Error connecting to target server"));
}

// A process that is killed.

class KilledServerToServerJob : public ServerToServerJob {
 protected:
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
