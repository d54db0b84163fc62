// The program in a folder of its own, between servers of the tests.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/temp_folder.h"
#include "platform/metabase.h"
#include "windows/program_process.h"

namespace trelvin::test {

class InstalledProgramTest : public testing::Test {
 protected:
  // A copy of the program folder, and two servers: WEB1 has Bob's shop with two directories, WEB2 nothing.
  explicit InstalledProgramTest(std::wstring_view programFolder = L"program");

  // The sites are elements of a metabase file.
  void addServer(const std::string& name, const std::string& sites) const;
  // A web site as such elements.
  static std::string webSite(int number, const std::string& name);

  // A program of the program folder, in a current folder of its own. The servers are those of servers().
  [[nodiscard]] std::unique_ptr<ProgramProcess> start(std::string_view arguments,
                                                      const char* name = "Trelvin.exe");
  // The directory service that the servers answer through. It has to be there as long as the program runs.
  [[nodiscard]] std::unique_ptr<Metabase> servers() const;
  Outcome runProgram(std::string_view arguments, const char* name = "Trelvin.exe");
  Outcome runJob(const std::string& text, const std::string& furtherArguments = {});
  // A job of WEB1's first site or, for the source "Database", of the first one that is stored.
  static std::string jobText(const std::string& from, const std::string& to);

  [[nodiscard]] const std::filesystem::path& programFolder() const { return program_; }
  [[nodiscard]] std::filesystem::path inProgram(std::string_view name) const { return program_ / name; }
  // What the program has logged so far; nothing while there is no log.
  [[nodiscard]] std::string log() const;

  // The database that a job has made for itself. Throws when there is none.
  [[nodiscard]] std::filesystem::path databaseOfRun() const;
  static std::string connectionTo(const std::filesystem::path& database);
  // The column that a query calls a.
  static std::vector<std::string> column(const std::filesystem::path& database, const std::string& sql);
  // A property of a node of the servers, as it is now.
  [[nodiscard]] std::string propertyOf(const std::string& path, const std::string& name) const;

  TempFolder folder_;

 private:
  std::filesystem::path program_;
  int started_ = 0;
};

}  // namespace trelvin::test
