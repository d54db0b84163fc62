#include "platform/shared/odbc/diagnostics.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "core/text.h"
#include "platform/shared/odbc/driver_text.h"

namespace trelvin {

namespace {

struct Diagnostic {
  std::string state;
  SQLINTEGER native = 0;
  std::string text;
};

// The text behind the names of those who passed it on, which stand before it in brackets.
std::string_view withoutOrigin(std::string_view text) {
  while (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  return text;
}

// One line, since it goes into a log of lines.
std::string readable(std::string_view text, SQLINTEGER native) {
  text = withoutOrigin(text);
  const std::string number = " (" + std::to_string(native) + ")";
  if (text.ends_with(number)) text.remove_suffix(number.size());
  std::string line(text);
  std::replace(line.begin(), line.end(), '\r', ' ');
  std::replace(line.begin(), line.end(), '\n', ' ');
  return std::string(trimmedRight(line));
}

// The first record: the one that drivers put the cause into.
Diagnostic diagnosticOf(SQLSMALLINT handleType, SQLHANDLE handle) {
  std::array<SQLTCHAR, SQL_SQLSTATE_SIZE + 1> state{};
  SQLINTEGER native = 0;
  std::array<SQLTCHAR, SQL_MAX_MESSAGE_LENGTH> text{};
  SQLSMALLINT length = 0;
  const SQLRETURN result = SQLGetDiagRec(handleType, handle, 1, state.data(), &native, text.data(),
                                         static_cast<SQLSMALLINT>(text.size()), &length);
  if (!SQL_SUCCEEDED(result))
    return {.state = "", .native = 0, .text = "The database driver gave no reason."};
  return {.state = textIn(state), .native = native, .text = readable(textIn(text), native)};
}

std::int32_t numberOfState(std::string_view state) {
  // ODBC 3, ODBC 2, and PostgreSQL's own.
  for (const std::string_view missing : {"42S02", "S0002", "42P01"}) {
    if (state == missing) return error_number::kNoSuchTable;
  }
  // Syntax and names; ODBC 2's form of it; counts that don't match; a name that was taken for a parameter.
  for (const std::string_view misunderstood : {"42", "37", "21", "S00", "07001", "07002"}) {
    if (state.starts_with(misunderstood)) return error_number::kSqlError;
  }
  return error_number::kUnspecified;
}

std::int32_t numberOfSqlite(const Diagnostic& diagnostic) {
  constexpr SQLINTEGER kGenericError = 1;
  if (diagnostic.native != kGenericError) return error_number::kUnspecified;
  return diagnostic.text.starts_with("no such table") ? error_number::kNoSuchTable : error_number::kSqlError;
}

}  // namespace

Failure connectionFailure(SQLSMALLINT handleType, SQLHANDLE handle) {
  return {error_number::kUnspecified, diagnosticOf(handleType, handle).text};
}

Failure statementFailure(SQLHANDLE statement, DriverKind driver) {
  const Diagnostic diagnostic = diagnosticOf(SQL_HANDLE_STMT, statement);
  const std::int32_t number =
      driver == DriverKind::kSqlite ? numberOfSqlite(diagnostic) : numberOfState(diagnostic.state);
  return {number, diagnostic.text};
}

bool checkStatement(SQLRETURN result, SQLHANDLE statement, DriverKind driver) {
  if (result == SQL_NO_DATA) return false;
  if (!SQL_SUCCEEDED(result)) throw statementFailure(statement, driver);
  return true;
}

}  // namespace trelvin
