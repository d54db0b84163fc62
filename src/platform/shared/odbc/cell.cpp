#include "platform/shared/odbc/cell.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "platform/shared/odbc/driver_text.h"

namespace trelvin {

namespace {

// Reads into a buffer of the caller's of so many bytes. Returns what the driver says about the length, in
// bytes too, with SQL_NULL_DATA for Null; `more` tells whether the buffer was too small.
SQLLEN getData(const CellSource& source, SQLSMALLINT form, SQLPOINTER buffer, std::size_t size, bool* more) {
  SQLLEN length = 0;
  const SQLRETURN result =
      SQLGetData(source.statement, source.column, form, buffer, static_cast<SQLLEN>(size), &length);
  checkStatement(result, source.statement, source.driver);
  *more = result == SQL_SUCCESS_WITH_INFO && (length == SQL_NO_TOTAL || length >= static_cast<SQLLEN>(size));
  return length;
}

// What did not fit at first. The driver ends each piece with a NUL. A character may begin in one piece and
// end in the next.
void appendRest(const CellSource& source, SQLLEN total, DriverString& text) {
  constexpr std::size_t kPiece = 65536;
  const std::size_t whole = total == SQL_NO_TOTAL ? 0 : static_cast<std::size_t>(total) / sizeof(SQLTCHAR);
  bool more = true;
  while (more) {
    const std::size_t start = text.size();
    const std::size_t size = (whole > start ? whole - start : kPiece) + 1;
    text.resize(start + size);
    getData(source, SQL_C_TCHAR, text.data() + start, size * sizeof(SQLTCHAR), &more);
    text.resize(start + textWithin(text.data() + start, size).size());
  }
}

std::optional<std::string> readText(const CellSource& source) {
  // Long enough for nearly all of what the metabase holds, so that most fields cost one call.
  std::array<DriverChar, 1024> first;
  bool more = false;
  const SQLLEN length = getData(source, SQL_C_TCHAR, first.data(), sizeof first, &more);
  if (length == SQL_NULL_DATA) return std::nullopt;
  const DriverView start = textWithin(first.data(), first.size());
  if (!more) return programText(start);
  DriverString text(start);
  appendRest(source, length, text);
  return programText(text);
}

Value wholeNumber(std::int64_t number) {
  if (number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max()) {
    return static_cast<double>(number);
  }
  return static_cast<std::int32_t>(number);
}

template <typename Number>
std::optional<Number> parsed(const std::string& text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end || text.empty()) return std::nullopt;
  return number;
}

// Read as text, because a column may hold more than its type says: SQLite stores whatever it is given.
Value readWholeNumber(const CellSource& source) {
  std::optional<std::string> text = readText(source);
  if (!text) return Null();
  if (const auto number = parsed<std::int64_t>(*text)) return wholeNumber(*number);
  if (const auto number = parsed<double>(*text)) return *number;
  return std::move(*text);
}

// By way of a number, because drivers differ in what they make of a truth value that isn't 0 or 1.
Value readTruthValue(const CellSource& source) {
  Value value = readWholeNumber(source);
  if (value.varType() == kVarLong) return value.toLong() != 0;
  return value;
}

Value readRealNumber(const CellSource& source) {
  double number = 0;
  bool more = false;
  if (getData(source, SQL_C_DOUBLE, &number, sizeof number, &more) == SQL_NULL_DATA) return Null();
  return number;
}

Value readDate(const CellSource& source) {
  SQL_TIMESTAMP_STRUCT moment{};
  bool more = false;
  if (getData(source, SQL_C_TYPE_TIMESTAMP, &moment, sizeof moment, &more) == SQL_NULL_DATA) return Null();
  Date date;
  date.parts.tm_year = moment.year - 1900;
  date.parts.tm_mon = moment.month - 1;
  date.parts.tm_mday = moment.day;
  date.parts.tm_hour = moment.hour;
  date.parts.tm_min = moment.minute;
  date.parts.tm_sec = moment.second;
  date.parts.tm_isdst = -1;
  return date;
}

Value readAsText(const CellSource& source) {
  std::optional<std::string> text = readText(source);
  if (!text) return Null();
  return std::move(*text);
}

}  // namespace

Value readCell(const CellSource& source) {
  switch (source.type) {
    case SQL_INTEGER:
    case SQL_SMALLINT:
    case SQL_TINYINT:
    case SQL_BIGINT:
      return readWholeNumber(source);
    case SQL_BIT:
      return readTruthValue(source);
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return readRealNumber(source);
    case SQL_TYPE_TIMESTAMP:
    case SQL_TYPE_DATE:
      return readDate(source);
    default:
      return readAsText(source);
  }
}

}  // namespace trelvin
