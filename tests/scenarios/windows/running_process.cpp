#include "scenarios/running_process.h"

#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "fakes/temp_folder.h"
#include "platform/windows/wide_text.h"
#include "windows/program_process.h"

namespace trelvin::test {

namespace fs = std::filesystem;

const char* const kProgramFile = "Trelvin.exe";
const char* const kLogDate = "\\d{1,2}/\\d{1,2}/\\d{4} \\d{1,2}:\\d\\d:\\d\\d [AP]M";

namespace {

HANDLE handleOf(std::intptr_t number) {
  return reinterpret_cast<HANDLE>(number);
}

void closeEnd(std::intptr_t& end) {
  if (end != -1) ::CloseHandle(handleOf(end));
  end = -1;
}

void setEnvironment(const RunningProcess::Options& options) {
  ::SetEnvironmentVariableW(L"TRELVIN_NETWORK", options.network.c_str());
  for (const auto& [name, value] : options.environment) {
    ::SetEnvironmentVariableW(wideText(name).c_str(), wideText(value).c_str());
  }
}

// No blank at the end, which would be an argument more.
std::string argumentsOf(const RunningProcess::Options& options) {
  std::string line;
  for (const std::string& argument : options.arguments) line += (line.empty() ? "" : " ") + argument;
  return line;
}

bool hasJournals(const fs::path& network) {
  if (!fs::exists(network)) return false;
  for (const auto& server : fs::directory_iterator(network)) {
    for (const char* system : {"WINDOWS", "WINNT"}) {
      std::error_code ignored;
      const fs::path metabases = server.path() / "C$" / system / "system32/inetsrv";
      if (fs::exists(metabases / "MetaBase.xml.journal", ignored)) return true;
    }
  }
  return false;
}

// The host of the metabase files sees the end of a process a moment later than its owner, and completes them
// then.
void waitForMetabases(const fs::path& network) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
  while (hasJournals(network)) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("a journal stays");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace

OutputPipe::OutputPipe() {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  if (!::CreatePipe(&reader, &writer, &inherited, 4096)) throw std::runtime_error("no pipe");
  ::SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
  reader_ = reinterpret_cast<std::intptr_t>(reader);
  writer_ = reinterpret_cast<std::intptr_t>(writer);
}

OutputPipe::~OutputPipe() {
  closeReader();
  closeWriter();
}

void OutputPipe::readOn() {
  std::string piece(4096, '\0');
  DWORD count = 0;
  while (::ReadFile(handleOf(reader_), piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) &&
         count > 0) {
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
      : network(options.network),
        program(options.executable, argumentsOf(options), options.currentFolder, streams.path() / "streams",
                options.output == nullptr ? nullptr : handleOf(options.output->writer())) {}

  fs::path network;
  TempFolder streams;
  ProgramProcess program;
};

RunningProcess::RunningProcess(const Options& options) {
  if (options.asOrdinaryUser) throw std::logic_error("nobody's rights can be given away here");
  setEnvironment(options);
  process_ = std::make_unique<Process>(options);
  // A pipe has to end with the process, so that its reader sees the end.
  if (options.output != nullptr) options.output->closeWriter();
}

RunningProcess::~RunningProcess() = default;

void RunningProcess::kill() {
  process_->program.kill(static_cast<UINT>(kKilledStatus));
}

ProcessResult RunningProcess::wait() {
  const Outcome outcome = process_->program.outcome();
  waitForMetabases(process_->network);
  std::string output;
  for (const std::string& line : outcome.output) output += line + "\n";
  return {
      .exitCode = static_cast<int>(outcome.status), .standardOutput = output, .standardError = outcome.error};
}

}  // namespace trelvin::test
