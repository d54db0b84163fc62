// The driver manager's data sources, from files of the test program's own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "fakes/temp_folder.h"

namespace trelvin::test {

// Where the driver manager looks for drivers and data sources from now on: odbcinst.ini, odbc.ini for those
// of the system and user.ini for those of the user. The drivers that the machine knows stay known. It may be
// the folder given, or one that the manager was told of before the program began.
std::filesystem::path placeDataSources(const TempFolder& own);

// The manager looks up where its files are once only, and then for the whole process. So there is one of
// this, made before the first test: including the header in a test file is what does it.
class DataSources {
 public:
  DataSources() : folder_(placeDataSources(own_)) { clear(); }

  void setSystem(std::string_view odbcIni) const { write("odbc.ini", odbcIni); }
  void setUser(std::string_view odbcIni) const { write("user.ini", odbcIni); }
  void clear() const {
    setSystem("");
    setUser("");
  }

 private:
  void write(const char* name, std::string_view text) const { std::ofstream(folder_ / name) << text; }

  TempFolder own_;
  std::filesystem::path folder_;
};

inline const DataSources dataSources;

// A source of the SQLite driver, as a section of such a file.
std::string sqliteSource(const std::string& name, const std::filesystem::path& file = "/none");

}  // namespace trelvin::test
