// Real databases, as they are installed, each test's own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/temp_folder.h"
#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin::test {

class StoreTest : public ::testing::Test {
 protected:
  // A copy of an installed database. Returns its native path.
  std::filesystem::path installed(std::string_view name) const {
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / name, folder_ / name);
    return folder_ / name;
  }
  // How the system's driver manager is asked for a database file.
  static std::string connectionString(const std::filesystem::path& file);
  std::unique_ptr<Connection> opened(const std::filesystem::path& file) {
    auto connection = databases_->createConnection();
    connection->open(connectionString(file));
    return connection;
  }
  std::unique_ptr<RecordSet> rowsOf(std::string_view sql, Connection& connection) {
    auto rows = databases_->createRecordSet();
    rows->open(sql, connection, kStaticCursor);
    return rows;
  }
  // The first row's field of that name.
  Value fieldOf(std::string_view sql, std::string_view name, Connection& connection) {
    return rowsOf(sql, connection)->field(name);
  }

  TempFolder folder_;
  std::unique_ptr<Databases> databases_ =
      makeOdbcDatabases([](std::string_view text) { return std::string(text); });
};

}  // namespace trelvin::test
