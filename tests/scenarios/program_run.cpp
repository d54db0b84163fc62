#include "program_run.h"

#include <regex>
#include <stdexcept>

#include "fakes/scratch_machine.h"

namespace trelvin::test {

namespace fs = std::filesystem;

ScenarioTest::ScenarioTest() {
  fs::copy_file(fs::path(TRELVIN_PROGRAM_FOLDER) / kProgramFile, programFolder() / kProgramFile);
}

RunningProcess::Options ScenarioTest::options(const std::vector<std::string>& arguments) const {
  return {.executable = programFolder() / kProgramFile,
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
  return programForm(folder / "j.job");
}

std::vector<std::string> ScenarioTest::log() const {
  static const std::regex kDate(std::string("\"") + kLogDate + " ");
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
    const std::u8string utf8 = fs::relative(entry.path(), folder.path()).generic_u8string();
    const std::string name(utf8.begin(), utf8.end());
    bytes[name] = entry.is_regular_file() ? folder.read(name) : "a folder";
  }
  return bytes;
}

}  // namespace trelvin::test
