#include "platform/shared/odbc/odbc_databases.h"

#include <utility>

#include "core/err.h"
#include "platform/shared/odbc/odbc_connection.h"
#include "platform/shared/odbc/odbc_record_set.h"

namespace trelvin {

namespace {

class OdbcDatabases final : public Databases {
 public:
  explicit OdbcDatabases(ToDriver toDriver) : toDriver_(std::move(toDriver)) {}

  std::unique_ptr<Connection> createConnection() override {
    // The manager is first asked for when a database is used, and shared by all connections from then on.
    if (!environment_) environment_ = std::make_shared<OdbcEnvironment>();
    return std::make_unique<OdbcConnection>(environment_, toDriver_);
  }
  std::unique_ptr<RecordSet> createRecordSet() override { return std::make_unique<OdbcRecordSet>(); }

 private:
  ToDriver toDriver_;
  std::shared_ptr<OdbcEnvironment> environment_;
};

}  // namespace

std::unique_ptr<Databases> makeOdbcDatabases(ToDriver toDriver) {
  return std::make_unique<OdbcDatabases>(std::move(toDriver));
}

}  // namespace trelvin
