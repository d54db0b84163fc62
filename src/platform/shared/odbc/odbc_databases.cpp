#include "platform/shared/odbc/odbc_databases.h"

#include <array>
#include <utility>

#include "core/err.h"
#include "platform/shared/odbc/driver_text.h"
#include "platform/shared/odbc/odbc_connection.h"
#include "platform/shared/odbc/odbc_record_set.h"
#include "platform/shared/odbc/session.h"

namespace trelvin {

namespace {

// Longer than any name that a manager keeps.
using NameBuffer = std::array<SQLTCHAR, 1024>;

std::vector<std::string> dataSourcesOf(const OdbcEnvironment& environment) {
  std::vector<std::string> names;
  SQLUSMALLINT direction = SQL_FETCH_FIRST_SYSTEM;  // the first call decides whose sources the rest are
  for (;;) {
    NameBuffer name{};
    NameBuffer description{};
    SQLSMALLINT length = 0;
    SQLSMALLINT descriptionLength = 0;
    const SQLRETURN result = SQLDataSources(
        environment.handle(), direction, name.data(), static_cast<SQLSMALLINT>(name.size()), &length,
        description.data(), static_cast<SQLSMALLINT>(description.size()), &descriptionLength);
    if (!SQL_SUCCEEDED(result)) return names;
    names.push_back(textIn(name));
    direction = SQL_FETCH_NEXT;
  }
}

class OdbcDatabases final : public Databases {
 public:
  explicit OdbcDatabases(ToDriver toDriver) : toDriver_(std::move(toDriver)) {}

  std::unique_ptr<Connection> createConnection() override {
    return std::make_unique<OdbcConnection>(environment(), toDriver_);
  }
  std::unique_ptr<RecordSet> createRecordSet() override { return std::make_unique<OdbcRecordSet>(); }
  std::vector<std::string> systemDataSources() override {
    try {
      return dataSourcesOf(*environment());
    } catch (const Failure&) {
      return {};
    }
  }

 private:
  // The manager is first asked for when a database is used, and shared by all connections from then on.
  const std::shared_ptr<OdbcEnvironment>& environment() {
    if (!environment_) environment_ = std::make_shared<OdbcEnvironment>();
    return environment_;
  }

  ToDriver toDriver_;
  std::shared_ptr<OdbcEnvironment> environment_;
};

}  // namespace

std::unique_ptr<Databases> makeOdbcDatabases(ToDriver toDriver) {
  return std::make_unique<OdbcDatabases>(std::move(toDriver));
}

}  // namespace trelvin
