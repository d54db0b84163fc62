// ADO's Connection over an ODBC session.
#pragma once

#include <memory>
#include <string_view>

#include "platform/database.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/shared/odbc/session.h"

namespace trelvin {

class OdbcConnection final : public Connection {
 public:
  OdbcConnection(std::shared_ptr<OdbcEnvironment> environment, ToDriver toDriver);

  void open(std::string_view connectionString) override;
  void close() override;
  [[nodiscard]] bool isOpen() const override { return session_ != nullptr; }
  void execute(std::string_view sql) override;

  // What record sets hold on to, weakly: they close with the connection. 3704 when it isn't open.
  [[nodiscard]] const std::shared_ptr<OdbcSession>& session() const;

 private:
  std::shared_ptr<OdbcEnvironment> environment_;
  ToDriver toDriver_;
  std::shared_ptr<OdbcSession> session_;
};

}  // namespace trelvin
