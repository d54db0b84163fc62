#include "odbc/store_fixture.h"

namespace trelvin::test {

std::string StoreTest::connectionString(const std::filesystem::path& file) {
  return "Driver=SQLite3;Database=" + file.string() + ";NoCreat=1;Timeout=50;";
}

}  // namespace trelvin::test
