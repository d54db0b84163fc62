#include "platform/shared/odbc/odbc_record_set.h"

#include <algorithm>
#include <array>

#include "core/err.h"
#include "core/text.h"
#include "platform/shared/odbc/cell.h"
#include "platform/shared/odbc/driver_text.h"
#include "platform/shared/odbc/odbc_connection.h"

namespace trelvin {

void OdbcRecordSet::requireOpen() const {
  if (!isOpen()) throw Failure(error_number::kObjectIsClosed);
}

// A statement that outlived its connection went with it and must not be freed a second time.
void OdbcRecordSet::release() {
  if (session_.expired()) statement_.forget();
  statement_.reset();
  session_.reset();
  columns_.clear();
  row_.clear();
}

void OdbcRecordSet::open(std::string_view sql, Connection& connection, int /*cursorType*/) {
  if (isOpen()) throw Failure(error_number::kObjectIsOpen);
  auto* odbc = dynamic_cast<OdbcConnection*>(&connection);
  if (odbc == nullptr) throw Failure(error_number::kTypeMismatch);
  const std::shared_ptr<OdbcSession>& session = odbc->session();
  release();
  if (!statement_.allocate(session->handle())) throw connectionFailure(SQL_HANDLE_DBC, session->handle());
  session_ = session;
  driver_ = session->driver();
  try {
    if (!runSelect(sql)) release();
  } catch (const Failure&) {
    release();
    throw;
  }
}

// Returns whether the statement gives rows at all.
bool OdbcRecordSet::runSelect(std::string_view sql) {
  checkStatement(SQLSetStmtAttr(statement_.get(), SQL_ATTR_CURSOR_TYPE, asPointer(SQL_CURSOR_STATIC), 0),
                 statement_.get(), driver_);
  executeOn(statement_.get(), sql, driver_);
  describeColumns();
  if (columns_.empty()) return false;
  countRows();
  moveTo(SQL_FETCH_FIRST);
  return true;
}

void OdbcRecordSet::describeColumns() {
  SQLSMALLINT count = 0;
  checkStatement(SQLNumResultCols(statement_.get(), &count), statement_.get(), driver_);
  for (SQLSMALLINT number = 1; number <= count; ++number) {
    std::array<SQLTCHAR, 256> name{};
    SQLSMALLINT length = 0;
    Column column;
    SQLULEN size = 0;
    SQLSMALLINT decimals = 0;
    SQLSMALLINT nullable = 0;
    checkStatement(SQLDescribeCol(statement_.get(), static_cast<SQLUSMALLINT>(number), name.data(),
                                  static_cast<SQLSMALLINT>(name.size()), &length, &column.type, &size,
                                  &decimals, &nullable),
                   statement_.get(), driver_);
    column.name = textIn(name);
    columns_.push_back(std::move(column));
  }
}

// Drivers tell the number of a static cursor's rows in one of two places and leave the other at nought; where
// both are, the rows are counted by walking them, which an empty set makes short.
void OdbcRecordSet::countRows() {
  SQLLEN count = 0;
  SQLRowCount(statement_.get(), &count);
  if (count <= 0)
    SQLGetDiagField(SQL_HANDLE_STMT, statement_.get(), 0, SQL_DIAG_CURSOR_ROW_COUNT, &count, 0, nullptr);
  if (count <= 0) {
    count = 0;
    for (bool row = fetch(SQL_FETCH_FIRST); row; row = fetch(SQL_FETCH_NEXT)) ++count;
  }
  count_ = static_cast<std::int32_t>(count);
}

bool OdbcRecordSet::fetch(SQLSMALLINT orientation) {
  return checkStatement(SQLFetchScroll(statement_.get(), orientation, 0), statement_.get(), driver_);
}

// A set whose rows can't be had any more, because the server went away, is at its end: else a loop that
// ignores failures would never leave it.
void OdbcRecordSet::moveTo(SQLSMALLINT orientation) {
  row_.clear();
  position_ = Position::kBehindLast;
  if (fetch(orientation)) position_ = Position::kOnRow;
}

void OdbcRecordSet::close() {
  requireOpen();
  release();
}

bool OdbcRecordSet::eof() const {
  requireOpen();
  return position_ == Position::kBehindLast;
}

// Nothing moves backwards, so that only an empty set stands before its first row.
bool OdbcRecordSet::bof() const {
  requireOpen();
  return count_ == 0;
}

void OdbcRecordSet::moveFirst() {
  if (bof()) throw Failure(error_number::kNoCurrentRecord);
  moveTo(SQL_FETCH_FIRST);
}

void OdbcRecordSet::moveLast() {
  if (bof()) throw Failure(error_number::kNoCurrentRecord);
  moveTo(SQL_FETCH_LAST);
}

void OdbcRecordSet::moveNext() {
  if (eof()) throw Failure(error_number::kNoCurrentRecord);
  moveTo(SQL_FETCH_NEXT);
}

std::int32_t OdbcRecordSet::recordCount() const {
  requireOpen();
  return count_;
}

Value OdbcRecordSet::field(std::string_view name) const {
  requireOpen();
  const std::size_t column = columnOf(name);
  if (eof()) throw Failure(error_number::kNoCurrentRecord);
  if (row_.empty()) readRow();
  return row_[column];
}

void OdbcRecordSet::readRow() const {
  std::vector<Value> row;
  row.reserve(columns_.size());
  for (const Column& column : columns_) {
    const auto number = static_cast<SQLUSMALLINT>(row.size() + 1);
    row.push_back(
        readCell({.statement = statement_.get(), .column = number, .type = column.type, .driver = driver_}));
  }
  row_ = std::move(row);
}

// Most callers spell a name as the table does; comparing bytes first spares them the folding.
std::size_t OdbcRecordSet::columnOf(std::string_view name) const {
  auto found = std::find_if(columns_.begin(), columns_.end(),
                            [&](const Column& column) { return column.name == name; });
  if (found == columns_.end()) {
    found = std::find_if(columns_.begin(), columns_.end(),
                         [&](const Column& column) { return equalsIgnoringCase(column.name, name); });
  }
  if (found == columns_.end()) throw Failure(error_number::kItemNotFound);
  return static_cast<std::size_t>(found - columns_.begin());
}

}  // namespace trelvin
