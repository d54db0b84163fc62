// What answers to the Access driver's name in the tests under Wine, whose driver manager is this machine's
// own: SQLite's driver, which knows no DBQ. Connecting is done here, all else by that driver, which this
// library is linked to, so that the driver manager finds its routines.
#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using DriverConnect = decltype(&SQLDriverConnect);

DriverConnect realDriverConnect() {
  void* const driver = ::dlopen(SQLITE_ODBC_DRIVER, RTLD_NOW);
  return driver == nullptr ? nullptr : reinterpret_cast<DriverConnect>(::dlsym(driver, "SQLDriverConnect"));
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
  const DriverConnect connect = realDriverConnect();
  if (connect == nullptr) return SQL_ERROR;
  const auto* text = reinterpret_cast<const char*>(in);
  const std::string given =
      inLength == SQL_NTS ? std::string(text) : std::string(text, static_cast<std::size_t>(inLength));
  std::string own = "Database=" + nativePath(databaseOf(given)) + ";NoCreat=1;Timeout=2500;SyncPragma=OFF;";
  return connect(connection, window, reinterpret_cast<SQLCHAR*>(own.data()), SQL_NTS, out, outSize, outLength,
                 completion);
}
