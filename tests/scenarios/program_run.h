// The built program as a process of its own, in a scratch copy of its folder.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "fakes/export_test.h"
#include "fakes/lines_of.h"
#include "running_process.h"

namespace trelvin::test {

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
};

}  // namespace trelvin::test
