// Two servers on the scratch machine, WEB1 with sites and NEW1 that gets them, and the touches by which a
// person sends sites from one to the other.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "fakes/export_test.h"
#include "fakes/fake_shell.h"

namespace trelvin::test {

inline constexpr const char* kUnset = "(not set)";
inline constexpr const char* kNoNode = "(no node)";

class ServerToServer : public ExportTest {
 public:
  // The element by which a server tells its version.
  static std::string infoOf(int version);
  // The FTP forms of a site and of a directory below it.
  static std::string ftpSite(int number, const std::string& comment, const Properties& properties = {});
  static std::string ftpDir(int site, const std::string& path, const Properties& properties);
  // An element below a site, by its path from the site on.
  static std::string below(int site, const std::string& keyType, const std::string& path,
                           const Properties& properties = {});

 protected:
  ServerToServer() : shell(useFakeShell()) {}

  // Makes both servers and opens the window on them, the sites of WEB1 listed. Versions are chosen in the
  // lists only; a server tells its own by infoOf.
  void open(const std::string& source, const std::string& target = webService(""), int from = 6, int to = 6);
  // The same with every debug line in the log.
  void openForDebug(const std::string& source, const std::string& target = webService(""), int from = 6,
                    int to = 6);
  // The same for FTP sites.
  void openFtp(const std::string& source, const std::string& target = ftpService(""));
  static void chooseVersions(int from, int to);
  static void map(const std::string& oldText, const std::string& newText);

  // Makes the schema of a server that is not in use yet give plain directories a path, too.
  void giveDirectoriesAPath(const std::string& server) const;

  // Selects lines and presses the button, as a person who answers the long warning with OK, declines the pair
  // for the Windows folder, and then answers what is given.
  void exportSites(std::initializer_list<int> lines, std::initializer_list<Answer> furtherAnswers = {});
  void press(std::initializer_list<Answer> furtherAnswers = {});
  // With bRunSilent set.
  void exportSilently(std::initializer_list<int> lines);

  // What a node of a server holds itself, as it is on the disk now: a list's entries with "|" between them,
  // or kUnset or kNoNode. Paths begin behind the server's name.
  [[nodiscard]] std::string stored(const std::string& path, const std::string& property,
                                   const std::string& server = "NEW1") const;
  [[nodiscard]] bool exists(const std::string& path) const;
  [[nodiscard]] std::string classOf(const std::string& path) const;
  [[nodiscard]] std::vector<std::string> childrenOf(const std::string& path) const;
  // The end of the program as far as metabases go: every change gets into its file. Gives the target's file.
  std::string closedTargetFile();
  // An element of a metabase file, from "<" to the end of its last line; empty when it isn't there.
  static std::string elementAt(const std::string& file, const std::string& location);

  // Lines of the log from the start of the run on, which begins with this one.
  std::string beginningOfRun = "Exporting to server from server";
  [[nodiscard]] std::vector<std::string> runLog() const;
  // Lines of the run that tell of a failure.
  [[nodiscard]] std::vector<std::string> failureLines() const;
  // Calls on a metabase as "operation path argument", the path without its server when it is the target's.
  [[nodiscard]] std::vector<std::string> callsOf(std::initializer_list<std::string> operations,
                                                 const std::string& server = "NEW1") const;

  // Runs a step at the first yield behind a line of the log, as a click of a person who reads along.
  void atYieldBehind(const std::string& line, std::function<void()> step);

  FakeShell& shell;

 private:
  void addServers(const std::string& source, const std::string& target);
  void list(int from, int to);
  [[nodiscard]] std::unique_ptr<Metabase> reader() const;
};

}  // namespace trelvin::test
