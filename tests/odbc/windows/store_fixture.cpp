#include "odbc/store_fixture.h"

#include "platform/windows/wide_text.h"

namespace trelvin::test {

std::string StoreTest::connectionString(const std::filesystem::path& file) {
  return "Driver={Microsoft Access Driver (*.mdb)};DBQ=" + utf8Text(file.wstring()) + ";";
}

}  // namespace trelvin::test
