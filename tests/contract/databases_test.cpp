#include <gtest/gtest.h>

#include <filesystem>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"
#include "platform/database.h"

namespace trelvin::test {
namespace {

// A database as the program is installed with, reached by the program's own connection string.
class DatabasesContract : public testing::Test {
 protected:
  DatabasesContract() {
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / "TrelvinData.mdb",
                               folder_ / "TrelvinData.mdb");
    connection_->open(connectionString("TrelvinData.mdb"));
  }

  [[nodiscard]] std::string connectionString(const char* file) const {
    return "Driver={Microsoft Access Driver (*.mdb)}; DBQ=" + programForm(folder_ / file) + ";";
  }
  // The numbers that a statement of the connection fails with, 0 for none.
  std::int32_t failureOf(const std::string& sql) {
    return numberOfFailure([&] {
      connection_->execute(sql);
      return 0;
    });
  }
  std::unique_ptr<RecordSet> select(const std::string& sql) {
    auto rows = databases_->createRecordSet();
    rows->open(sql, *connection_, kStaticCursor);
    return rows;
  }

  TempFolder folder_;
  std::unique_ptr<Databases> databases_ = systemDatabases();
  std::unique_ptr<Connection> connection_ = databases_->createConnection();
};

TEST_F(DatabasesContract, ATextComesBackAsItWasStored) {
  const std::string longText = std::string(5000, 'x') + "Grüße";
  for (const std::string& text :
       {std::string("plain"), std::string("Grüße 日本 😀"), std::string(), longText}) {
    connection_->execute("DELETE FROM Sites");
    connection_->execute("INSERT INTO Sites (SiteName) VALUES ('" + text + "')");
    const auto rows = select("SELECT SiteName FROM Sites");
    ASSERT_FALSE(rows->eof());
    EXPECT_EQ(rows->field("SiteName"), Value(text));
  }
}

TEST_F(DatabasesContract, RowsAreVisitedInTheirOrder) {
  for (const char* name : {"b", "a", "c"}) {
    connection_->execute(std::string("INSERT INTO Sites (SiteName) VALUES ('") + name + "')");
  }
  const auto rows = select("SELECT SiteName, ID FROM Sites ORDER BY ID");
  EXPECT_EQ(rows->recordCount(), 3);
  std::string names;
  for (; !rows->eof(); rows->moveNext()) names += rows->field("sitename").toText();
  EXPECT_EQ(names, "bac");
  rows->moveLast();
  EXPECT_EQ(rows->field("SiteName"), Value("c"));
}

TEST_F(DatabasesContract, WhatIsNotSetIsNull) {
  connection_->execute("INSERT INTO Data (Name) VALUES ('x')");
  EXPECT_TRUE(select("SELECT StringValue FROM Data")->field("StringValue").isNull());
}

TEST_F(DatabasesContract, FailuresTellWhatIsWrong) {
  EXPECT_EQ(failureOf("SELEKT"), error_number::kSqlError);
  EXPECT_EQ(failureOf("DELETE FROM NoSuchTable"), error_number::kNoSuchTable);
  EXPECT_EQ(numberOfFailure([&] { return select("SELECT ID FROM Sites")->field("ID"); }),
            error_number::kNoCurrentRecord);
}

TEST_F(DatabasesContract, AFileThatIsMissingIsNotMade) {
  const auto other = databases_->createConnection();
  EXPECT_EQ(numberOfFailure([&] {
              other->open(connectionString("Missing.mdb"));
              return 0;
            }),
            error_number::kUnspecified);
  EXPECT_FALSE(folder_.has("Missing.mdb"));
}

}  // namespace
}  // namespace trelvin::test
