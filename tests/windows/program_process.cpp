#include "windows/program_process.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "platform/windows/wide_text.h"

namespace trelvin::test {

namespace {

constexpr const char* kOutput = "output";
constexpr const char* kError = "error";

[[noreturn]] void failWithLastError(const std::string& what) {
  const DWORD number = ::GetLastError();
  throw std::runtime_error(what + ": " + std::to_string(number) + " " + systemText(number));
}

// A file for a stream of the program, which gets the handle.
Handle fileForProgram(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) failWithLastError("can't write " + path.string());
  return Handle(file);
}

std::string textOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("can't read " + path.string());
  std::ostringstream text;
  if (stream.peek() != std::ifstream::traits_type::eof()) text << stream.rdbuf();
  return text.str();
}

}  // namespace

ProgramProcess::ProgramProcess(const std::filesystem::path& program, std::string_view arguments,
                               const std::filesystem::path& currentFolder, std::filesystem::path streams,
                               HANDLE output)
    : streams_(std::move(streams)) {
  std::filesystem::create_directories(streams_);
  if (output == nullptr) output_ = fileForProgram(streams_ / kOutput);
  error_ = fileForProgram(streams_ / kError);
  std::wstring line = L"\"" + program.wstring() + L"\" " + wideText(arguments);
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = output == nullptr ? output_.get() : output;
  start.hStdError = error_.get();
  PROCESS_INFORMATION process{};
  if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        currentFolder.c_str(), &start, &process)) {
    failWithLastError("the program can't be started");
  }
  ::CloseHandle(process.hThread);
  process_.reset(process.hProcess);
  number_ = process.dwProcessId;
}

ProgramProcess::~ProgramProcess() {
  if (hasEnded()) return;
  kill(~UINT{0});
  ::WaitForSingleObject(process_.get(), kPatience);
}

void ProgramProcess::kill(UINT status) {
  ::TerminateProcess(process_.get(), status);
}

bool ProgramProcess::hasEnded() const {
  return ::WaitForSingleObject(process_.get(), 0) == WAIT_OBJECT_0;
}

Outcome ProgramProcess::outcome() {
  if (::WaitForSingleObject(process_.get(), kPatience) != WAIT_OBJECT_0) {
    throw std::runtime_error("the program does not end");
  }
  Outcome outcome;
  ::GetExitCodeProcess(process_.get(), &outcome.status);
  error_.reset();
  if (output_) {
    output_.reset();
    outcome.output = linesOf(textOf(streams_ / kOutput));
  }
  outcome.error = textOf(streams_ / kError);
  return outcome;
}

}  // namespace trelvin::test
