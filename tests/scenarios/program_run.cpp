#include "program_run.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/linux/paths.h"

namespace trelvin::test {

namespace fs = std::filesystem;

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

}  // namespace

RunningProcess::RunningProcess(const Options& options)
    : endSignal_(options.endSignal),
      output_(options.outputDescriptor < 0 ? nameless() : ::dup(options.outputDescriptor)),
      error_(nameless()) {
  ::setenv("TRELVIN_NETWORK", options.network.c_str(), 1);
  ::setenv("LC_ALL", "C", 1);
  // Whoever runs the tests may sit at a screen of his own.
  for (const char* screen : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) ::unsetenv(screen);
  for (const auto& [name, value] : options.environment) ::setenv(name.c_str(), value.c_str(), 1);
  std::vector<const char*> argv{options.executable.c_str()};
  for (const std::string& argument : options.arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  process_ = ::fork();
  if (process_ < 0) fail("fork");
  if (process_ == 0) become(argv.data(), options, output_, error_);
  // A pipe has to end with the process, so that its reader sees the end.
  if (options.outputDescriptor >= 0) ::close(std::exchange(output_, -1));
}

RunningProcess::~RunningProcess() {
  if (process_ > 0) {
    ::kill(process_, endSignal_);
    ::waitpid(process_, nullptr, 0);
  }
  if (output_ >= 0) ::close(output_);
  ::close(error_);
}

void RunningProcess::kill() {
  ::kill(process_, SIGKILL);
}

ProcessResult RunningProcess::wait() {
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0) {
    if (errno != EINTR) fail("waitpid");
  }
  process_ = -1;
  ProcessResult result;
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  if (output_ >= 0) result.standardOutput = wholeOf(output_);
  result.standardError = wholeOf(error_);
  return result;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

ScenarioTest::ScenarioTest() {
  fs::copy_file(fs::path(TRELVIN_PROGRAM_FOLDER) / "trelvin", programFolder() / "trelvin");
}

RunningProcess::Options ScenarioTest::options(const std::vector<std::string>& arguments) const {
  return {.executable = programFolder() / "trelvin",
          .arguments = arguments,
          .currentFolder = workFolder(),
          .network = folder / "network"};
}

ProcessResult ScenarioTest::runProgram(const std::vector<std::string>& arguments) {
  return RunningProcess(options(arguments)).wait();
}

ProcessResult ScenarioTest::runJob(const std::vector<std::string>& furtherArguments) {
  std::vector<std::string> arguments{"-RUNBACKUP", "-B", jobArgument()};
  arguments.insert(arguments.end(), furtherArguments.begin(), furtherArguments.end());
  return runProgram(arguments);
}

std::vector<std::string> ScenarioTest::words(const std::string& connection) {
  std::vector<std::string> arguments{"-C"};
  std::string word;
  for (const char letter : connection + " ") {
    if (letter != ' ') {
      word += letter;
    } else {
      arguments.push_back(word);
      word.clear();
    }
  }
  return arguments;
}

std::string ScenarioTest::addJobText(const std::string& text) {
  folder.write("j.job", text);
  return jobArgument();
}

std::string ScenarioTest::jobText(const std::map<std::string, std::string>& details,
                                  const std::string& sections) {
  std::map<std::string, std::string> all{{"Sites", "1"},
                                         {"ImportServer", "WEB1"},
                                         {"ExportServer", "Database"},
                                         {"ImportVersion", "IIS6"},
                                         {"ExportVersion", "IIS6"},
                                         {"Type", "W3SVC"},
                                         {"AutoStartSites", "False"},
                                         {"SiteCreationMode", "Create New"},
                                         {"FindReplaceCount", "0"},
                                         {"BackupAllSites", "False"}};
  for (const auto& [key, value] : details) all[key] = value;
  std::string text = "[Job Details]\r\n";
  for (const auto& [key, value] : all) text += key + "=" + value + "\r\n";
  return text + (sections.empty() ? "[1Site]\r\nSiteName=IIS://WEB1/W3SVC/1\r\n" : sections);
}

std::string ScenarioTest::jobArgument() const {
  return windowsPath((folder / "j.job").string());
}

std::vector<std::string> ScenarioTest::log() const {
  static const std::regex kDate("\"\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d ");
  static const std::string kEnd = "\"\r\n";
  std::vector<std::string> messages;
  std::string rest = folder.read("work/Trelvin.log");
  while (!rest.empty()) {
    std::smatch date;
    const std::size_t end = rest.find(kEnd);
    if (end == std::string::npos ||
        !std::regex_search(rest, date, kDate, std::regex_constants::match_continuous)) {
      throw std::runtime_error("a line of the log has another form: " + rest.substr(0, 100));
    }
    const auto begin = static_cast<std::size_t>(date.length());
    messages.push_back(rest.substr(begin, end - begin));
    rest.erase(0, end + kEnd.size());
  }
  return messages;
}

std::vector<std::string> ScenarioTest::perRunDatabases() const {
  static const std::regex kName("\\d{8}-\\d{4}\\.mdb");
  std::vector<std::string> names;
  if (!folder.has("program/BackupJobs")) return names;
  for (const auto& entry : fs::directory_iterator(programFolder() / "BackupJobs")) {
    const std::string name = entry.path().filename().string();
    if (std::regex_match(name, kName)) names.push_back("BackupJobs\\" + name);
  }
  return names;
}

std::vector<std::string> ScenarioTest::storedNames(const std::string& database) const {
  std::vector<std::string> names;
  for (const auto& row : query(database, "SELECT SiteName AS a FROM Sites ORDER BY ID"))
    names.push_back(row[0]);
  return names;
}

std::map<std::string, std::string> ScenarioTest::bytesBelow(const std::string& relative) const {
  std::map<std::string, std::string> bytes;
  for (const auto& entry : fs::recursive_directory_iterator(folder / relative)) {
    const std::string name = fs::relative(entry.path(), folder.path()).string();
    bytes[name] = entry.is_regular_file() ? folder.read(name) : "a folder";
  }
  return bytes;
}

void ScenarioTest::giveAway(const std::string& relative) const {
  if (::geteuid() != 0) return;
  const fs::path top = folder / relative;
  std::vector<fs::path> all{top};
  if (fs::is_directory(top)) {
    for (const auto& entry : fs::recursive_directory_iterator(top)) all.push_back(entry.path());
  }
  for (const fs::path& path : all) {
    if (::chown(path.c_str(), kNobody, static_cast<gid_t>(kNobody)) != 0) fail("chown");
  }
}

}  // namespace trelvin::test
