#include "fakes/data_sources.h"

#include <cstdlib>

namespace trelvin::test {

namespace fs = std::filesystem;

fs::path placeDataSources(const TempFolder& own) {
  const char* machine = std::getenv("ODBCSYSINI");
  const fs::path drivers = fs::path(machine == nullptr ? "/etc" : machine) / "odbcinst.ini";
  if (fs::exists(drivers)) {
    fs::copy_file(drivers, own / "odbcinst.ini");
  } else {
    own.write("odbcinst.ini", "");
  }
  ::setenv("ODBCSYSINI", own.path().c_str(), 1);
  ::setenv("ODBCINI", (own / "user.ini").c_str(), 1);
  return own.path();
}

std::string sqliteSource(const std::string& name, const fs::path& file) {
  return "[" + name + "]\nDriver=SQLite3\nDatabase=" + file.string() + "\n";
}

}  // namespace trelvin::test
