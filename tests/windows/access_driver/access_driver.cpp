// What answers to the Access driver's name in the tests under Wine, whose driver manager is this machine's
// own: SQLite's driver, which knows no DBQ and none of Access' words for a table. Both are seen to here, all
// else by that driver, which this library is linked to, so that the driver manager finds its routines.
#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <string_view>

#include "windows/access_driver/access_words.h"

namespace {

// SQLite's own; null when it isn't there.
template <typename Routine>
Routine realRoutine(const char* name) {
  void* const driver = ::dlopen(SQLITE_ODBC_DRIVER, RTLD_NOW);
  return driver == nullptr ? nullptr : reinterpret_cast<Routine>(::dlsym(driver, name));
}

std::string textOf(const SQLCHAR* text, SQLINTEGER length) {
  const auto* const begin = reinterpret_cast<const char*>(text);
  return length == SQL_NTS ? std::string(begin) : std::string(begin, static_cast<std::size_t>(length));
}

std::string databaseOf(std::string_view connectionString) {
  constexpr std::string_view kName = "DBQ=";
  const std::size_t begin = connectionString.find(kName);
  if (begin == std::string_view::npos) return {};
  const std::string_view rest = connectionString.substr(begin + kName.size());
  return std::string(rest.substr(0, rest.find(';')));
}

// A path of the emulated machine: its drives are links in the folder of the emulator.
std::string nativePath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  const char* const prefix = std::getenv("WINEPREFIX");
  if (prefix == nullptr || path.size() < 2 || path[1] != ':') return path;
  path[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(path[0])));
  return std::string(prefix) + "/dosdevices/" + path;
}

}  // namespace

extern "C" SQLRETURN SQL_API SQLDriverConnect(SQLHDBC connection, SQLHWND window, SQLCHAR* in,
                                              SQLSMALLINT inLength, SQLCHAR* out, SQLSMALLINT outSize,
                                              SQLSMALLINT* outLength, SQLUSMALLINT completion) {
  const auto connect = realRoutine<decltype(&SQLDriverConnect)>("SQLDriverConnect");
  if (connect == nullptr) return SQL_ERROR;
  std::string own =
      "Database=" + nativePath(databaseOf(textOf(in, inLength))) + ";NoCreat=1;Timeout=2500;SyncPragma=OFF;";
  return connect(connection, window, reinterpret_cast<SQLCHAR*>(own.data()), SQL_NTS, out, outSize, outLength,
                 completion);
}

extern "C" SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length) {
  const auto execute = realRoutine<decltype(&SQLExecDirect)>("SQLExecDirect");
  if (execute == nullptr) return SQL_ERROR;
  std::string own = trelvin::test::sqliteStatement(textOf(text, length));
  return execute(statement, reinterpret_cast<SQLCHAR*>(own.data()), static_cast<SQLINTEGER>(own.size()));
}
