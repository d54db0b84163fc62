// A program as a process of its own, on the system that the tests run on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trelvin::test {

// What a process ends with that was killed.
inline constexpr int kKilledStatus = -9;

struct ProcessResult {
  int exitCode = -1;  // negative for a process that did not end by itself
  std::string standardOutput;
  std::string standardError;
};

// A pipe that takes no more than a page until somebody reads.
class OutputPipe {
 public:
  OutputPipe();
  OutputPipe(const OutputPipe&) = delete;
  OutputPipe& operator=(const OutputPipe&) = delete;
  ~OutputPipe();

  // Takes everything until the other side ends.
  void readOn();
  void closeReader();
  void closeWriter();
  // The system's own number for this end.
  [[nodiscard]] std::intptr_t writer() const { return writer_; }

 private:
  std::intptr_t reader_ = kClosed;
  std::intptr_t writer_ = kClosed;
  static constexpr std::intptr_t kClosed = -1;
};

// A process that was started and is waited for, or killed, by its owner.
class RunningProcess {
 public:
  // Runs with its own current directory; TRELVIN_NETWORK names the network.
  struct Options {
    std::filesystem::path executable;
    std::vector<std::string> arguments;  // on Windows nothing guards a blank in one
    std::filesystem::path currentFolder;
    std::filesystem::path network;
    std::map<std::string, std::string>
        environment{};  // beside what the tests run in; there is no screen in it
    // Gets standard output, instead of a file that wait() reads. The start closes this side's writing end.
    OutputPipe* output = nullptr;

    // Linux alone has these. As an ordinary user a process of the machine's administrator gives his rights
    // away, so that read-only files are read-only to it. The signal is what the process gets when its owner
    // goes, or the tests themselves do.
    bool asOrdinaryUser = false;
    int endSignal = 9;
  };
  explicit RunningProcess(const Options& options);
  RunningProcess(const RunningProcess&) = delete;
  RunningProcess& operator=(const RunningProcess&) = delete;
  ~RunningProcess();

  void kill();
  // Its end; the metabase files of the network are complete then.
  ProcessResult wait();

 private:
  struct Process;
  std::unique_ptr<Process> process_;
};

// How the program is called here, and how a date in its log looks as a regular expression.
extern const char* const kProgramFile;
extern const char* const kLogDate;

}  // namespace trelvin::test
