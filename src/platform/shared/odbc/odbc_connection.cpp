#include "platform/shared/odbc/odbc_connection.h"

#include <utility>

#include "core/err.h"

namespace trelvin {

OdbcConnection::OdbcConnection(std::shared_ptr<OdbcEnvironment> environment, ToDriver toDriver)
    : environment_(std::move(environment)), toDriver_(std::move(toDriver)) {}

void OdbcConnection::open(std::string_view connectionString) {
  if (isOpen()) throw Failure(error_number::kObjectIsOpen);
  session_ = std::make_shared<OdbcSession>(environment_, toDriver_(connectionString));
}

void OdbcConnection::close() {
  if (!isOpen()) throw Failure(error_number::kObjectIsClosed);
  session_.reset();
}

void OdbcConnection::execute(std::string_view sql) {
  session()->execute(sql);
}

const std::shared_ptr<OdbcSession>& OdbcConnection::session() const {
  if (!isOpen()) throw Failure(error_number::kObjectIsClosed);
  return session_;
}

}  // namespace trelvin
