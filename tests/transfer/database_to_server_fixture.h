// Stored sites in the data database of the scratch machine, and the server NEW1 that gets them.
#pragma once

#include <string>
#include <vector>

#include "server_to_server_fixture.h"

namespace trelvin::test {

// A row of the data database; columns are SQL as they stand, Null unless they are given.
struct StoredRow {
  std::string location = "";
  std::string name = "DefaultDoc";
  std::string nodeClass = "";  // Null when it is empty
  int type = 8;
  std::string value = "'x.htm'";
  int columnType = 0;  // the type whose column holds the value, when it isn't that of the row
  std::string localPath = "Null";
  std::string appPath = "''";
  std::string inProcess = "Null";
  std::string pool = "Null";
};

class DatabaseToServer : public ServerToServer {
 public:
  // What a row's value is in SQL.
  static std::string text(const std::string& content);
  static std::string list(const std::vector<std::string>& items);

  // Rows as the ways into the database store them: of the site's own node, of a directory, and of a property.
  static StoredRow ofSite(const std::string& name, const std::string& content,
                          const std::string& number = "7");
  static StoredRow ofDirectory(const std::string& location, const std::string& path);
  static StoredRow ofVirtualDirectory(const std::string& location, const std::string& path);
  static StoredRow withApplication(StoredRow row, const std::string& inProcess,
                                   const std::string& pool = "''");
  static StoredRow ofNode(const std::string& location, const std::string& name, int type,
                          const std::string& value);

 protected:
  DatabaseToServer() { beginningOfRun = "Exporting to server from file"; }

  // Whatever a run does, the database is the same behind it.
  void TearDown() override;

  // Stores a site and gives its number in the database.
  int storeSite(const std::string& name, const std::vector<StoredRow>& rows, const std::string& type = "Web");
  void storeRow(int site, const StoredRow& row) const;
  // A site with one row for its own node and one for its root at C:\ and its name.
  int storePlainSite(const std::string& name, const std::string& number);

  // Makes the target and opens the window on the stored sites, the database in force as the source.
  void openStored(const std::string& target = webService(""), int from = 6, int to = 6);
  void openStoredForDebug(const std::string& target = webService(""), int from = 6, int to = 6);
  void openStoredFtp(const std::string& target = ftpService(""));

  // For a test that goes on to store a site: the rows from before must all be there still.
  void expectStoredRowsToHaveGrown();

  // The rows of both tables of the data database as they are now.
  [[nodiscard]] Rows everyStoredRow() const;

 private:
  void listStored(int from, int to);
  Rows before_;
  int sites_ = 0;
};

}  // namespace trelvin::test
