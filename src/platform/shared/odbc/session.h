// One open connection of the driver manager.
#pragma once

#include <memory>
#include <string_view>

#include "platform/shared/odbc/diagnostics.h"
#include "platform/shared/odbc/handles.h"
#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin {

class OdbcEnvironment {
 public:
  OdbcEnvironment();  // 0x80004005 when the driver manager can't be used
  [[nodiscard]] SQLHANDLE handle() const { return handle_.get(); }

 private:
  OdbcHandle<SQL_HANDLE_ENV> handle_;
};

// Open from construction to destruction. Statements below it go with it.
class OdbcSession {
 public:
  OdbcSession(std::shared_ptr<OdbcEnvironment> environment, const DriverConnection& target);
  OdbcSession(const OdbcSession&) = delete;
  OdbcSession& operator=(const OdbcSession&) = delete;
  ~OdbcSession();

  void execute(std::string_view sql);
  [[nodiscard]] SQLHANDLE handle() const { return connection_.get(); }
  [[nodiscard]] DriverKind driver() const { return driver_; }

 private:
  void connect(const DriverConnection& target);
  // Runs a statement, if there is one, that the opening depends on.
  void executeFirst(std::string_view sql, const DriverConnection& target);

  std::shared_ptr<OdbcEnvironment> environment_;
  OdbcHandle<SQL_HANDLE_DBC> connection_;
  DriverKind driver_ = DriverKind::kTellsStates;
  // One for all that is executed: a fresh one for each statement costs more than many a statement does.
  OdbcHandle<SQL_HANDLE_STMT> statement_;
};

// Runs one statement on a handle. Returns whether it touched anything, as far as the driver tells.
bool executeOn(SQLHANDLE statement, std::string_view sql, DriverKind driver);

}  // namespace trelvin
