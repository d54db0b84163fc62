#include "platform/shared/odbc/session.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "core/text.h"
#include "platform/shared/odbc/connection_string.h"
#include "platform/shared/odbc/driver_text.h"

namespace trelvin {

namespace {

// ADO's own time-out. A server that does not answer must not hold an unattended run for good.
constexpr std::uintptr_t kLoginSeconds = 15;

// The product's name of itself; empty when it gives none.
std::string productOf(SQLHANDLE connection) {
  std::array<SQLTCHAR, 64> name{};
  SQLSMALLINT length = 0;
  const auto size = static_cast<SQLSMALLINT>(sizeof name);  // in bytes, whatever a character has
  if (!SQL_SUCCEEDED(SQLGetInfo(connection, SQL_DBMS_NAME, name.data(), size, &length))) return {};
  return textIn(name);
}

// What has to be said to a server first, so that it takes statements as the others do.
std::string_view settingsFor(std::string_view product) {
  // MariaDB takes a backslash within a literal for the beginning of an escape, which would spoil every path
  // without a word, and orders texts by the first kilobyte of their sort keys, which is less than a path may
  // have. Longer keys take a larger buffer than a server may have been given.
  if (containsIgnoringCase(product, "MariaDB") || containsIgnoringCase(product, "MySQL")) {
    return "SET SESSION sql_mode = CONCAT(@@SESSION.sql_mode, ',NO_BACKSLASH_ESCAPES'), "
           "SESSION max_sort_length = 65536, SESSION sort_buffer_size = 16777216";
  }
  // Its driver takes texts of one byte a character to be in the character set of the locale. For wide ones it
  // agrees with the server by itself, and to say another thing would spoil them.
  if (!kWideCalls && containsIgnoringCase(product, "PostgreSQL")) return "SET client_encoding = 'UTF8'";
  return {};
}

Failure openFailure(const DriverConnection& target, const std::string& description) {
  return {error_number::kUnspecified,
          target.subject.empty() ? description : target.subject + ": " + description};
}

}  // namespace

OdbcEnvironment::OdbcEnvironment() {
  if (!handle_.allocate(SQL_NULL_HANDLE)) {
    throw Failure(error_number::kUnspecified, "The ODBC driver manager can't be used.");
  }
  if (!SQL_SUCCEEDED(SQLSetEnvAttr(handle_.get(), SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3), 0))) {
    throw connectionFailure(SQL_HANDLE_ENV, handle_.get());
  }
}

OdbcSession::OdbcSession(std::shared_ptr<OdbcEnvironment> environment, const DriverConnection& target)
    : environment_(std::move(environment)) {
  if (!connection_.allocate(environment_->handle())) {
    throw connectionFailure(SQL_HANDLE_ENV, environment_->handle());
  }
  connect(target);
  try {
    const std::string product = productOf(connection_.get());
    if (containsIgnoringCase(product, "SQLite")) driver_ = DriverKind::kSqlite;
    if (!statement_.allocate(connection_.get())) throw connectionFailure(SQL_HANDLE_DBC, connection_.get());
    executeFirst(settingsFor(product), target);
    executeFirst(target.probe, target);
  } catch (...) {
    // The destructor does not run for an object that was never finished.
    statement_.reset();
    SQLDisconnect(connection_.get());
    throw;
  }
}

OdbcSession::~OdbcSession() {
  statement_.reset();
  SQLDisconnect(connection_.get());
}

void OdbcSession::connect(const DriverConnection& target) {
  // A driver without this time-out has its own.
  SQLSetConnectAttr(connection_.get(), SQL_ATTR_LOGIN_TIMEOUT, asPointer(kLoginSeconds), 0);
  DriverString text = driverText(driverManagerString(target.connectionString));
  const SQLRETURN result = SQLDriverConnect(connection_.get(), nullptr, mutableText(text), SQL_NTS, nullptr,
                                            0, nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(result)) {
    throw openFailure(target, connectionFailure(SQL_HANDLE_DBC, connection_.get()).description());
  }
}

void OdbcSession::executeFirst(std::string_view sql, const DriverConnection& target) {
  if (sql.empty()) return;
  try {
    execute(sql);
  } catch (const Failure& failure) {
    throw openFailure(target, failure.description());
  }
}

void OdbcSession::execute(std::string_view sql) {
  executeOn(statement_.get(), sql, driver_);
  // What a SELECT left open would keep the database from being changed.
  SQLFreeStmt(statement_.get(), SQL_CLOSE);
}

bool executeOn(SQLHANDLE statement, std::string_view sql, DriverKind driver) {
  DriverString text = driverText(sql);
  return checkStatement(SQLExecDirect(statement, mutableText(text), static_cast<SQLINTEGER>(text.size())),
                        statement, driver);
}

}  // namespace trelvin
