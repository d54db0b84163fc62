#include "fakes/data_sources.h"

#include <cstdlib>
#include <stdexcept>

#include "platform/windows/wide_text.h"
#include "windows/provider/native_path.h"

namespace trelvin::test {

namespace fs = std::filesystem;

// The manager is that of the machine that Windows is emulated on: it was told by whoever started the tests,
// and a change of a variable here would not reach it.
fs::path placeDataSources(const TempFolder& /*own*/) {
  const char* told = std::getenv("ODBCSYSINI");
  if (told == nullptr) throw std::runtime_error("nobody has told the driver manager where its files are");
  return "Z:" + std::string(told);
}

std::string sqliteSource(const std::string& name, const fs::path& file) {
  return "[" + name +
         "]\nDriver=Microsoft Access Driver (*.mdb)\nDatabase=" + nativePath(utf8Text(file.wstring())) + "\n";
}

}  // namespace trelvin::test
