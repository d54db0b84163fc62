// What answers to the Access driver's name in the tests under Wine, whose driver manager is this machine's
// own: SQLite's driver, which knows no DBQ, none of Access' words for a table, and no wide text. The calls
// that carry any of these are done here, all else by that driver, which this library is linked to, so that
// the driver manager finds its routines.
//
// Like the Access driver it is a wide one. The manager makes wide text of all that comes in one-byte
// characters, by a code page and not by UTF-8, so that a program that calls the wrong way is found out.
#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "windows/access_driver/access_words.h"
#include "windows/access_driver/wide_buffer.h"

namespace {

using trelvin::test::give;
using trelvin::test::utf8Of;
using trelvin::test::WideText;

// A routine of SQLite's driver. Its name alone could also lead to the manager's, or to the one that is
// defined here.
template <typename Routine>
Routine real(const char* name) {
  static void* const driver = ::dlopen(SQLITE_ODBC_DRIVER, RTLD_NOW);
  if (driver == nullptr) std::abort();
  return reinterpret_cast<Routine>(::dlsym(driver, name));
}

// What that driver's text is read into.
using Narrow = std::array<SQLCHAR, 4096>;

std::string textIn(const Narrow& filled) {
  return reinterpret_cast<const char*>(filled.data());
}

std::string attributeOf(std::string_view connectionString, std::string_view keyword) {
  const std::size_t begin = connectionString.find(keyword);
  if (begin == std::string_view::npos) return {};
  const std::string_view rest = connectionString.substr(begin + keyword.size());
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

// SQLite would take any file and find out at the first statement that it is no database; the Access driver
// finds out at once. An empty file is a database that was just made.
bool isDatabase(const std::string& path) {
  constexpr std::string_view kBeginning = "SQLite format 3";
  std::string beginning(kBeginning.size(), ' ');
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
  return file.gcount() == 0 || beginning == kBeginning;
}

// A data source, which names no file, is told as it stands.
std::string sqliteConnection(const std::string& connectionString) {
  const std::string database = attributeOf(connectionString, "DBQ=");
  if (database.empty()) return connectionString;
  const std::string path = nativePath(database);
  return "Database=" + (isDatabase(path) ? path : path + " is no database") +
         ";NoCreat=1;Timeout=2500;SyncPragma=OFF;";
}

bool isText(SQLUSMALLINT information) {
  return information == SQL_DBMS_NAME || information == SQL_DBMS_VER || information == SQL_DRIVER_NAME ||
         information == SQL_DRIVER_VER || information == SQL_DRIVER_ODBC_VER;
}

SQLSMALLINT wideType(SQLSMALLINT type) {
  switch (type) {
    case SQL_CHAR:
      return SQL_WCHAR;
    case SQL_VARCHAR:
      return SQL_WVARCHAR;
    case SQL_LONGVARCHAR:
      return SQL_WLONGVARCHAR;
    default:
      return type;
  }
}

// A field that is read in pieces.
struct Reading {
  SQLUSMALLINT column = 0;         // counted from 1
  std::optional<WideText> text{};  // nothing for Null
  std::size_t given = 0;           // characters so far
  bool done = false;
};

// The field that each statement's row is read in.
std::map<SQLHSTMT, Reading> readings;

// Reads all of a field at once. False when it can't be read.
bool readWhole(SQLHSTMT statement, Reading& reading) {
  const auto getData = real<decltype(&SQLGetData)>("SQLGetData");
  std::string text;
  for (bool more = true; more;) {
    Narrow piece{};
    SQLLEN length = 0;
    const auto size = static_cast<SQLLEN>(piece.size());
    const SQLRETURN result = getData(statement, reading.column, SQL_C_CHAR, piece.data(), size, &length);
    if (!SQL_SUCCEEDED(result)) return false;
    if (length == SQL_NULL_DATA) return true;
    text += textIn(piece);
    more = result == SQL_SUCCESS_WITH_INFO && length >= size;
  }
  reading.text.emplace(text);
  return true;
}

// The next piece. The length of what is very long is not told, as it may be with columns for long texts.
SQLRETURN givePiece(Reading& reading, SQLPOINTER buffer, SQLLEN size, SQLLEN* length) {
  constexpr std::size_t kLongestTold = 65536;
  if (reading.done) return SQL_NO_DATA;
  if (!reading.text) {
    reading.done = true;
    *length = SQL_NULL_DATA;
    return SQL_SUCCESS;
  }
  const std::size_t rest = reading.text->size() - reading.given;
  const std::size_t capacity = static_cast<std::size_t>(size) / sizeof(SQLWCHAR);
  reading.done = reading.text->fill(buffer, capacity, reading.given);
  const bool told = reading.done || reading.text->size() <= kLongestTold;
  *length = told ? static_cast<SQLLEN>(rest * sizeof(SQLWCHAR)) : SQL_NO_TOTAL;
  reading.given += capacity - 1;
  return reading.done ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

// Connections that take the words of the extended SQL, and what each statement belongs to.
std::set<SQLHDBC> extendedConnections;
std::map<SQLHSTMT, SQLHDBC> connectionOf;

// Statements whose reason for a failure nobody has asked for yet.
std::set<SQLHSTMT> refused;

// A table that Access does not make fails like this, whatever it is that Access does not understand.
SQLRETURN tellRefusal(SQLWCHAR* state, SQLINTEGER* native, SQLWCHAR* text, SQLSMALLINT size,
                      SQLSMALLINT* length) {
  constexpr std::string_view kState = "42000";
  constexpr SQLINTEGER kSyntaxErrorInCreateTable = -3551;
  give(kState, state, kState.size() + 1, nullptr);
  *native = kSyntaxErrorInCreateTable;
  return give("[Microsoft][ODBC Microsoft Access Driver] Syntax error in CREATE TABLE statement.", text,
              static_cast<std::size_t>(size), length);
}

}  // namespace

extern "C" {

SQLRETURN SQL_API SQLDriverConnectW(SQLHDBC connection, SQLHWND window, SQLWCHAR* in, SQLSMALLINT inLength,
                                    SQLWCHAR* /*out*/, SQLSMALLINT /*outSize*/, SQLSMALLINT* /*outLength*/,
                                    SQLUSMALLINT completion) {
  const std::string asked = utf8Of(in, inLength);
  std::string own = sqliteConnection(asked);
  extendedConnections.erase(connection);
  if (attributeOf(asked, "ExtendedAnsiSQL=") == "1") extendedConnections.insert(connection);
  return real<decltype(&SQLDriverConnect)>("SQLDriverConnect")(
      connection, window, reinterpret_cast<SQLCHAR*>(own.data()), SQL_NTS, nullptr, 0, nullptr, completion);
}

// The way in which the manager makes a statement.
SQLRETURN SQL_API SQLAllocStmt(SQLHDBC connection, SQLHSTMT* made) {
  const SQLRETURN result = real<decltype(&SQLAllocStmt)>("SQLAllocStmt")(connection, made);
  if (SQL_SUCCEEDED(result)) connectionOf[*made] = connection;
  return result;
}

// Those that the program sets are numbers.
SQLRETURN SQL_API SQLSetConnectAttrW(SQLHDBC connection, SQLINTEGER attribute, SQLPOINTER value,
                                     SQLINTEGER length) {
  return real<decltype(&SQLSetConnectAttr)>("SQLSetConnectAttr")(connection, attribute, value, length);
}

SQLRETURN SQL_API SQLSetStmtAttrW(SQLHSTMT statement, SQLINTEGER attribute, SQLPOINTER value,
                                  SQLINTEGER length) {
  return real<decltype(&SQLSetStmtAttr)>("SQLSetStmtAttr")(statement, attribute, value, length);
}

SQLRETURN SQL_API SQLGetInfoW(SQLHDBC connection, SQLUSMALLINT information, SQLPOINTER value,
                              SQLSMALLINT size, SQLSMALLINT* length) {
  const auto getInfo = real<decltype(&SQLGetInfo)>("SQLGetInfo");
  if (!isText(information)) return getInfo(connection, information, value, size, length);
  Narrow text{};
  const SQLRETURN result =
      getInfo(connection, information, text.data(), static_cast<SQLSMALLINT>(text.size()), nullptr);
  if (!SQL_SUCCEEDED(result)) return result;
  // Both lengths are in bytes here.
  const std::size_t width = sizeof(SQLWCHAR);
  const SQLRETURN given = give(textIn(text), value, static_cast<std::size_t>(size) / width, length);
  if (length != nullptr) *length = static_cast<SQLSMALLINT>(static_cast<std::size_t>(*length) * width);
  return given;
}

SQLRETURN SQL_API SQLExecDirectW(SQLHSTMT statement, SQLWCHAR* text, SQLINTEGER length) {
  std::string own = utf8Of(text, length);
  if (!trelvin::test::isAccessStatement(own, extendedConnections.contains(connectionOf[statement]))) {
    refused.insert(statement);
    return SQL_ERROR;
  }
  own = trelvin::test::sqliteStatement(own);
  return real<decltype(&SQLExecDirect)>("SQLExecDirect")(statement, reinterpret_cast<SQLCHAR*>(own.data()),
                                                         static_cast<SQLINTEGER>(own.size()));
}

SQLRETURN SQL_API SQLDescribeColW(SQLHSTMT statement, SQLUSMALLINT column, SQLWCHAR* name, SQLSMALLINT size,
                                  SQLSMALLINT* length, SQLSMALLINT* type, SQLULEN* columnSize,
                                  SQLSMALLINT* decimals, SQLSMALLINT* nullable) {
  Narrow own{};
  const SQLRETURN result = real<decltype(&SQLDescribeCol)>("SQLDescribeCol")(
      statement, column, own.data(), static_cast<SQLSMALLINT>(own.size()), nullptr, type, columnSize,
      decimals, nullable);
  if (!SQL_SUCCEEDED(result)) return result;
  if (type != nullptr) *type = wideType(*type);
  return give(textIn(own), name, static_cast<std::size_t>(size), length);
}

// What the manager asks for the reason of a failure, and keeps: SQLite's driver tells it once only.
SQLRETURN SQL_API SQLErrorW(SQLHENV environment, SQLHDBC connection, SQLHSTMT statement, SQLWCHAR* state,
                            SQLINTEGER* native, SQLWCHAR* text, SQLSMALLINT size, SQLSMALLINT* length) {
  if (refused.erase(statement) != 0) return tellRefusal(state, native, text, size, length);
  std::array<SQLCHAR, SQL_SQLSTATE_SIZE + 1> ownState{};
  Narrow own{};
  const SQLRETURN result =
      real<decltype(&SQLError)>("SQLError")(environment, connection, statement, ownState.data(), native,
                                            own.data(), static_cast<SQLSMALLINT>(own.size()), nullptr);
  if (!SQL_SUCCEEDED(result)) return result;
  std::copy(ownState.begin(), ownState.end(), state);
  return give(textIn(own), text, static_cast<std::size_t>(size), length);
}

SQLRETURN SQL_API SQLFetchScroll(SQLHSTMT statement, SQLSMALLINT orientation, SQLLEN offset) {
  readings.erase(statement);
  return real<decltype(&SQLFetchScroll)>("SQLFetchScroll")(statement, orientation, offset);
}

// One-byte text is refused: on Windows it would be in the characters of a code page.
SQLRETURN SQL_API SQLGetData(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT form, SQLPOINTER buffer,
                             SQLLEN size, SQLLEN* length) {
  if (form == SQL_C_CHAR) return SQL_ERROR;
  if (form != SQL_C_WCHAR)
    return real<decltype(&SQLGetData)>("SQLGetData")(statement, column, form, buffer, size, length);
  const auto former = readings.find(statement);
  if (former != readings.end() && former->second.column != column) readings.erase(former);
  Reading& reading = readings[statement];
  if (reading.column == 0) {
    reading.column = column;
    if (!readWhole(statement, reading)) return SQL_ERROR;
  }
  return givePiece(reading, buffer, size, length);
}

}  // extern "C"
