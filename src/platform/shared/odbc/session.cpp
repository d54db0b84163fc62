#include "platform/shared/odbc/session.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "core/text.h"
#include "platform/shared/odbc/connection_string.h"

namespace trelvin {

namespace {

// ADO's own time-out. A server that does not answer must not hold an unattended run for good.
constexpr std::uintptr_t kLoginSeconds = 15;

SQLCHAR* mutableText(std::string& text) {
  return reinterpret_cast<SQLCHAR*>(text.data());
}

DriverKind kindOf(SQLHANDLE connection) {
  std::array<SQLCHAR, 64> name{};
  SQLSMALLINT length = 0;
  const auto size = static_cast<SQLSMALLINT>(name.size());
  if (!SQL_SUCCEEDED(SQLGetInfo(connection, SQL_DBMS_NAME, name.data(), size, &length))) {
    return DriverKind::kTellsStates;
  }
  return containsIgnoringCase(reinterpret_cast<const char*>(name.data()), "SQLite")
             ? DriverKind::kSqlite
             : DriverKind::kTellsStates;
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
    driver_ = kindOf(connection_.get());
    if (!statement_.allocate(connection_.get())) throw connectionFailure(SQL_HANDLE_DBC, connection_.get());
    probe(target);
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
  std::string text = driverManagerString(target.connectionString);
  const SQLRETURN result = SQLDriverConnect(connection_.get(), nullptr, mutableText(text), SQL_NTS, nullptr,
                                            0, nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(result)) {
    throw openFailure(target, connectionFailure(SQL_HANDLE_DBC, connection_.get()).description());
  }
}

void OdbcSession::probe(const DriverConnection& target) {
  if (target.probe.empty()) return;
  try {
    execute(target.probe);
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
  std::string text(sql);
  return checkStatement(SQLExecDirect(statement, mutableText(text), static_cast<SQLINTEGER>(text.size())),
                        statement, driver);
}

}  // namespace trelvin
