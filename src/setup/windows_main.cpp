// TrelvinSetup.exe: makes the databases through the Access driver, once the program is unpacked.
#include <iostream>
#include <string>

#include "core/err.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/file_system.h"
#include "platform/windows/program_process.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "setup/set_up.h"

// It needs what windows.h brings.
#include <odbcinst.h>

namespace {

using namespace trelvin;

constexpr const wchar_t* kDriver = L"Microsoft Access Driver (*.mdb)";

// Why the installer of data sources has refused.
std::string installerText() {
  DWORD number = 0;
  std::wstring text(SQL_MAX_MESSAGE_LENGTH, L'\0');
  WORD length = 0;
  const RETCODE result =
      ::SQLInstallerErrorW(1, &number, text.data(), static_cast<WORD>(text.size()), &length);
  if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) return "no reason was given";
  return utf8Text(std::wstring_view(text).substr(0, length));
}

void createDatabase(const std::string& path) {
  const std::wstring attributes = wideText("CREATE_DB=\"" + path + "\" General") + L'\0';
  if (::SQLConfigDataSourceW(nullptr, ODBC_ADD_DSN, kDriver, attributes.c_str())) return;
  throw Failure(error_number::kUnspecified,
                "the driver \"" + utf8Text(kDriver) + "\" does not make it (" + installerText() +
                    "). Is the 32-bit driver there, and may you write into the folder?");
}

// The words of data/ for a default are among those that the driver takes only when it is asked to.
std::string connectionString(const std::string& path) {
  return "DBQ=" + path + ";Driver={" + utf8Text(kDriver) + "};ExtendedAnsiSQL=1;";
}

// What is told is UTF-8. The console stays with whoever has started the program from it.
class ConsoleInUtf8 {
 public:
  ConsoleInUtf8() { ::SetConsoleOutputCP(CP_UTF8); }
  ConsoleInUtf8(const ConsoleInUtf8&) = delete;
  ConsoleInUtf8& operator=(const ConsoleInUtf8&) = delete;
  ~ConsoleInUtf8() { ::SetConsoleOutputCP(former_); }

 private:
  UINT former_ = ::GetConsoleOutputCP();
};

// A console that was opened for this program alone, as by a double-click, goes with it, and so would all that
// was told. One that nobody sees is never waited at.
void waitForReader() {
  DWORD process = 0;
  DWORD mode = 0;
  const bool isOurs =
      ::GetConsoleProcessList(&process, 1) == 1 && ::IsWindowVisible(::GetConsoleWindow()) != FALSE;
  if (!isOurs || ::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) == FALSE) return;
  std::cout << "Press Enter to close this window." << std::endl;
  std::cin.get();
}

}  // namespace

int main() {
  const ConsoleInUtf8 console;
  const std::unique_ptr<FileSystem> files = makeFileSystem();
  const std::unique_ptr<Databases> databases =
      makeOdbcDatabases([](std::string_view text) { return std::string(text); });
  const bool done = setup::setUp(makeApplication()->path(), setup::programDatabases(),
                                 {.files = *files,
                                  .databases = *databases,
                                  .create = createDatabase,
                                  .connectionString = connectionString},
                                 std::cout);
  std::cout << (done ? "Trelvin is ready." : "Trelvin can't run yet.") << std::endl;
  waitForReader();
  return done ? 0 : 1;
}
