// Puts the program's databases beside it, where they have to be made by the driver that reads them.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/files.h"

namespace trelvin::setup {

// A database by its file's name, with the scripts that make it.
struct Database {
  std::string name;
  std::vector<std::string> scripts;
};

// The three of the program.
std::vector<Database> programDatabases();

struct Machine {
  FileSystem& files;
  Databases& databases;
  // Makes an empty database, by its path. Fails with the reason when it can't.
  std::function<void(const std::string& path)> create;
  std::function<std::string(const std::string& path)> connectionString;
};

// Makes those that are not in the folder yet; one that is there stays as it is, and one that can't be made
// whole is not left behind. Tells each on a line. Whether all are there now.
bool setUp(const std::string& folder, const std::vector<Database>& wanted, const Machine& machine,
           std::ostream& told);

}  // namespace trelvin::setup
