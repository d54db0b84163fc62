// The driver manager's data sources, from files of the test program's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "fakes/temp_folder.h"

namespace trelvin::test {

// The manager looks up where its files are once only, and then for the whole process. So there is one of
// this, made before the first test: including the header in a test file is what does it.
class DataSources {
 public:
  DataSources() {
    // The machine's drivers stay known.
    const char* machine = std::getenv("ODBCSYSINI");
    const std::filesystem::path drivers =
        std::filesystem::path(machine == nullptr ? "/etc" : machine) / "odbcinst.ini";
    if (std::filesystem::exists(drivers)) {
      std::filesystem::copy_file(drivers, folder_ / "odbcinst.ini");
    } else {
      folder_.write("odbcinst.ini", "");
    }
    clear();
    ::setenv("ODBCSYSINI", folder_.path().c_str(), 1);
    ::setenv("ODBCINI", (folder_ / "user.ini").c_str(), 1);
  }

  void setSystem(std::string_view odbcIni) const { folder_.write("odbc.ini", odbcIni); }
  void setUser(std::string_view odbcIni) const { folder_.write("user.ini", odbcIni); }
  void clear() const {
    setSystem("");
    setUser("");
  }

 private:
  TempFolder folder_;
};

inline const DataSources dataSources;

// A source of the SQLite driver, as a section of such a file.
inline std::string sqliteSource(const std::string& name, const std::filesystem::path& file = "/none") {
  return "[" + name + "]\nDriver=SQLite3\nDatabase=" + file.string() + "\n";
}

}  // namespace trelvin::test
