// The whole program on a scratch machine: real files, a real registry file, real databases and metabase files
// in a temporary folder, and a script in the place of people, clock and window system.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "fakes/failing_metabase.h"
#include "fakes/loopback_sockets.h"
#include "fakes/people.h"
#include "fakes/recorded_opener.h"
#include "fakes/temp_folder.h"
#include "window/controls.h"

namespace trelvin::test {

using Rows = std::vector<std::vector<std::string>>;

class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest();
  ~ProgramTest() override;
  ProgramTest(const ProgramTest&) = delete;
  ProgramTest& operator=(const ProgramTest&) = delete;

  // Runs the program as with that command line, from the welcome form on.
  void start(const std::string& commandLine);
  // Opens the main window without a command line's help.
  void openWindow();

  // A server with that metabase; the folder of its system is C$/WINDOWS, or C$/WINNT for one of IIS 4 or 5.
  void addServer(const std::string& name, const std::string& metabase, bool olderSystem = false);
  [[nodiscard]] std::string metabaseOf(const std::string& server) const;
  // A MetaBase.xml of the elements given, each made by element().
  static std::string metabaseFile(const std::string& elements);
  static std::string element(const std::string& keyType, const std::string& location,
                             const std::vector<std::pair<std::string, std::string>>& properties = {},
                             const std::string& children = {});
  // How a bind of that path fails on this system, which has its own words for it: "number description".
  static std::string failureOfBind(const std::string& path);
  // The same for a database that can't be opened.
  static std::string failureOfOpening(const std::string& connectionString);
  // A job in the program folder; keys in the order given, "Section/Key" with its value.
  void addJob(const std::string& name, const std::vector<std::pair<std::string, std::string>>& keys);

  // Messages of the log, without quotes and date.
  [[nodiscard]] std::vector<std::string> logLines() const;
  [[nodiscard]] bool hasLogged(const std::string& message) const;
  [[nodiscard]] int timesLogged(const std::string& message) const;
  // Every line that reached lstOutput, those that were cleared away too.
  std::vector<std::string> output;
  [[nodiscard]] bool hasOutput(const std::string& line) const;
  static std::vector<std::string> entriesOf(const ListControl& list);

  // All rows of a statement on a database of the program folder; Null reads as "<Null>".
  [[nodiscard]] Rows query(const std::string& database, const std::string& sql) const;
  void executeOn(const std::string& database, const std::string& sql) const;

  // Native paths.
  [[nodiscard]] std::filesystem::path programFolder() const { return folder / "program"; }
  [[nodiscard]] std::filesystem::path workFolder() const { return folder / "work"; }
  // The program's own form of the program folder.
  [[nodiscard]] std::string programPath() const;

  // What the tree copy could not copy.
  std::vector<std::string> copyReports;

  TempFolder folder;
  ScriptedDialogs* dialogs = nullptr;
  RecordedEvents* events = nullptr;
  StoppedClock* clock = nullptr;
  FakeApplication* application = nullptr;
  FailingMetabase* metabase = nullptr;
  RecordedOpener* opener = nullptr;
  LoopbackSockets* sockets = nullptr;

 private:
  std::filesystem::path formerFolder_;
};

}  // namespace trelvin::test
