#include "setup/set_up.h"

#include <ostream>

#include "core/err.h"
#include "setup/access_script.h"
#include "setup/scripts.h"

namespace trelvin::setup {

namespace {

void fill(const std::string& path, const Database& database, const Machine& machine) {
  const std::unique_ptr<Connection> connection = machine.databases.createConnection();
  connection->open(machine.connectionString(path));
  for (const std::string& script : database.scripts) {
    for (const std::string& statement : accessStatements(script)) connection->execute(statement);
  }
  connection->close();
}

// Whether it is there and whole when this ends.
bool make(const std::string& path, const Database& database, const Machine& machine, std::ostream& told) {
  const bool made = handledBy(
      [&](const Failure& failure) {
        told << database.name << " can't be made: " << failure.description() << '\n';
      },
      [&] {
        machine.create(path);
        fill(path, database, machine);
      });
  if (made) told << database.name << " is made.\n";
  if (!made && machine.files.fileExists(path)) {
    handledBy([](const Failure&) {}, [&] { machine.files.deleteFile(path); });
  }
  return made;
}

}  // namespace

std::vector<Database> programDatabases() {
  return {{"Trelvin.mdb", {embedded::kSettings, embedded::kExcludedProperties}},
          {"TrelvinData.mdb", {embedded::kSites}},
          {"ForBackups.mdb", {embedded::kSites}}};
}

bool setUp(const std::string& folder, const std::vector<Database>& wanted, const Machine& machine,
           std::ostream& told) {
  bool all = true;
  for (const Database& each : wanted) {
    const std::string path = folder + "\\" + each.name;
    if (machine.files.fileExists(path)) {
      told << each.name << " is there already and stays as it is.\n";
    } else {
      all = make(path, each, machine, told) && all;
    }
  }
  return all;
}

}  // namespace trelvin::setup
