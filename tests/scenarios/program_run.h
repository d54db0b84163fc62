// The built program as a process of its own, in a scratch copy of its folder.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "fakes/export_test.h"

namespace trelvin::test {

struct ProcessResult {
  int exitCode = -1;  // -1 for a process that a signal ended
  int signal = 0;
  std::string standardOutput;
  std::string standardError;
};

// A process that was started and is waited for, or killed, by its owner.
class RunningProcess {
 public:
  // Runs with its own current directory; TRELVIN_NETWORK names the network. As an ordinary user a process of
  // the machine's administrator gives his rights away, so that read-only files are read-only to it.
  struct Options {
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    std::filesystem::path currentFolder;
    std::filesystem::path network;
    bool asOrdinaryUser = false;
    std::map<std::string, std::string>
        environment{};  // beside what the tests run in; there is no screen in it
    // Standard output goes into this descriptor instead of a file that result() reads.
    int outputDescriptor = -1;
    // What the process gets when its owner goes, or the tests themselves do.
    int endSignal = SIGKILL;
  };
  explicit RunningProcess(const Options& options);
  RunningProcess(const RunningProcess&) = delete;
  RunningProcess& operator=(const RunningProcess&) = delete;
  ~RunningProcess();

  void kill();
  ProcessResult wait();

 private:
  pid_t process_ = -1;
  int endSignal_ = SIGKILL;
  int output_ = -1;
  int error_ = -1;
};

// A scratch machine with the program's folder and the executable in it. The fixture's own platform serves to
// look into the databases.
class ScenarioTest : public ExportTest {
 protected:
  ScenarioTest();

  // Runs a job, or whatever the arguments say, to its end.
  ProcessResult runProgram(const std::vector<std::string>& arguments);
  ProcessResult runJob(const std::vector<std::string>& furtherArguments = {});
  [[nodiscard]] RunningProcess::Options options(const std::vector<std::string>& arguments) const;
  // The switch -C with what it wants: the words of a connection string, split at blanks.
  static std::vector<std::string> words(const std::string& connection);

  // Writes a job of the text, with line ends as Windows has them, and gives the argument that names it.
  std::string addJobText(const std::string& text);
  // The usual job: all of WEB1's first site into the database, with keys of its details replaced or added.
  static std::string jobText(const std::map<std::string, std::string>& details = {},
                             const std::string& sections = {});
  [[nodiscard]] std::string jobArgument() const;

  // The messages of the log; every line has its date, its quotes and its line end.
  [[nodiscard]] std::vector<std::string> log() const;
  // Databases of runs, by their names in the program folder.
  [[nodiscard]] std::vector<std::string> perRunDatabases() const;
  [[nodiscard]] std::vector<std::string> storedNames(const std::string& database) const;

  // The bytes of every file below a folder of the scratch machine.
  [[nodiscard]] std::map<std::string, std::string> bytesBelow(const std::string& relative) const;

  // Gives a folder, with all in it, to the user that a process with few rights runs as.
  void giveAway(const std::string& relative) const;
};

std::vector<std::string> linesOf(const std::string& text);

}  // namespace trelvin::test
