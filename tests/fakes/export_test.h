// A server with sites on the scratch machine, and the touches by which a person exports them to the database.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "fakes/failing_databases.h"
#include "fakes/program_test.h"

namespace trelvin::test {

using Properties = std::vector<std::pair<std::string, std::string>>;

class ExportTest : public ProgramTest {
 protected:
  ExportTest() : databases(watchDatabases()) {}

  // Elements of a metabase. A site's node and its root; bindings and further entries are separated by
  // kNextEntry.
  static constexpr const char* kNextEntry = "\r\n\t\t\t";
  static std::string webService(const std::string& elements);
  static std::string ftpService(const std::string& elements);
  static std::string webSite(int number, const std::string& comment, const Properties& properties = {});
  // A web site with nothing but a root at C:\site and the number.
  static std::string plainSite(int number, const std::string& comment);
  // A node below the root, by its path from the site on.
  static std::string virtualDir(int site, const std::string& path, const Properties& properties);
  static std::string directory(int site, const std::string& path, const Properties& properties = {});

  // Makes the server WEB1 of those elements and opens the window on it, its sites listed, with the export tab
  // for the database in front.
  void openOn(const std::string& elements);
  // The same with every debug line in the log.
  void openForDebugOn(const std::string& elements);
  static void listSites();
  static void select(std::initializer_list<int> lines);
  // Excludes every name but these.
  static void transferOnly(const std::vector<std::string>& names);

  // Presses the button, as a person who answers the long warning with OK and then what is given.
  void exportToDatabase(std::initializer_list<Answer> furtherAnswers = {});
  // Presses it with bRunSilent set.
  static void exportSilently();

  // Rows of the data database, in the order in which they were stored. Columns are named a, b, c ... in the
  // list.
  [[nodiscard]] Rows data(const std::string& columns, const std::string& condition = "1 = 1") const;
  [[nodiscard]] Rows propertyRows(const std::string& name) const;  // Location and whichever value is set
  [[nodiscard]] std::vector<std::string> namesOfRows() const;

  // Lines of the log behind the last one of that text.
  [[nodiscard]] std::vector<std::string> logBehind(const std::string& line) const;
  [[nodiscard]] std::vector<std::string> logStartingWith(const std::string& beginning) const;
  // The lines of lstOutput now.
  [[nodiscard]] static std::vector<std::string> shownOutput();
  [[nodiscard]] std::vector<std::string> boxes() const;

  FailingDatabases& databases;
};

}  // namespace trelvin::test
