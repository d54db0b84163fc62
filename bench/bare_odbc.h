// What the database layer is measured against.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/shared/odbc/handles.h"

namespace trelvin {

// The driver manager with nothing around it.
class Bare {
 public:
  explicit Bare(std::string driverString) {
    const bool ready =
        environment_.allocate(SQL_NULL_HANDLE) &&
        SQL_SUCCEEDED(SQLSetEnvAttr(environment_.get(), SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3), 0)) &&
        connection_.allocate(environment_.get()) &&
        SQL_SUCCEEDED(SQLDriverConnect(connection_.get(), nullptr,
                                       reinterpret_cast<SQLCHAR*>(driverString.data()), SQL_NTS, nullptr, 0,
                                       nullptr, SQL_DRIVER_NOPROMPT)) &&
        statement_.allocate(connection_.get());
    if (!ready) std::abort();
  }
  Bare(const Bare&) = delete;
  Bare& operator=(const Bare&) = delete;
  ~Bare() {
    statement_.reset();
    SQLDisconnect(connection_.get());
  }

  void execute(std::string_view sql) {
    auto* text = reinterpret_cast<SQLCHAR*>(const_cast<char*>(sql.data()));
    if (!SQL_SUCCEEDED(SQLExecDirect(statement_.get(), text, static_cast<SQLINTEGER>(sql.size()))))
      std::abort();
  }
  [[nodiscard]] SQLHANDLE statement() const { return statement_.get(); }

 private:
  OdbcHandle<SQL_HANDLE_ENV> environment_;
  OdbcHandle<SQL_HANDLE_DBC> connection_;
  OdbcHandle<SQL_HANDLE_STMT> statement_;
};

}  // namespace trelvin
