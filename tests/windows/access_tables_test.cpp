// What the Access driver asks of a statement that makes a table. SQLite, which stands behind the tests'
// driver, would take more.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "fakes/failures.h"
#include "fakes/temp_folder.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/wide_text.h"

namespace trelvin::test {
namespace {

class AccessTablesTest : public testing::Test {
 protected:
  // A connection to a database that was just made.
  std::unique_ptr<Connection> connected(const std::string& keywords) {
    std::unique_ptr<Connection> connection = databases_->createConnection();
    connection->open("DBQ=" + utf8Text(folder_.write("new.mdb", "").wstring()) +
                     ";Driver={Microsoft Access Driver (*.mdb)};" + keywords);
    return connection;
  }
  // What a statement fails with; nothing when it goes through.
  static std::string refusal(Connection& connection, const std::string& statement) {
    const Failure failure = failureOf([&] { return connection.execute(statement), true; });
    return failure.number() == 0 ? "" : failure.description();
  }
  std::string refusal(const std::string& keywords, const std::string& statement) {
    return refusal(*connected(keywords), statement);
  }

  TempFolder folder_;
  std::unique_ptr<Databases> databases_ =
      makeOdbcDatabases([](std::string_view text) { return std::string(text); });
};

constexpr const char* kExtended = "ExtendedAnsiSQL=1;";
constexpr const char* kWithDefault =
    "CREATE TABLE T ([ID] COUNTER PRIMARY KEY, [Made] DATETIME DEFAULT Now())";
constexpr const char* kNotUnderstood = "Syntax error in CREATE TABLE statement.";

TEST_F(AccessTablesTest, ADefaultIsOneOfTheWordsOfTheExtendedSql) {
  EXPECT_EQ(refusal(kExtended, kWithDefault), "");
  EXPECT_EQ(refusal("", kWithDefault), kNotUnderstood);
  EXPECT_EQ(refusal("ExtendedAnsiSQL=0;", kWithDefault), kNotUnderstood);
}

TEST_F(AccessTablesTest, ATableWithoutADefaultNeedsNoneOfThem) {
  EXPECT_EQ(refusal("", "CREATE TABLE T ([ID] COUNTER PRIMARY KEY, [Default] LONGTEXT)"), "");
  EXPECT_EQ(refusal("", "CREATE TABLE T ([Collate] BIT, [DateTime] DATETIME, [Name] VARCHAR(50))"), "");
}

TEST_F(AccessTablesTest, TheWordsOfSqliteAreNoneOfAccess) {
  for (const char* statement : {"CREATE TABLE T ([ID] INTEGER PRIMARY KEY AUTOINCREMENT)",
                                "CREATE TABLE T ([Name] VARCHAR(50) COLLATE NOCASE)",
                                "CREATE TABLE T ([Made] TIMESTAMP DEFAULT (datetime('now', 'localtime')))"}) {
    EXPECT_EQ(refusal(kExtended, statement), kNotUnderstood) << statement;
  }
}

TEST_F(AccessTablesTest, EachConnectionHasWordsOfItsOwn) {
  const std::unique_ptr<Connection> extended = connected(kExtended);
  const std::unique_ptr<Connection> plain = connected("");
  EXPECT_EQ(refusal(*plain, kWithDefault), kNotUnderstood);
  EXPECT_EQ(refusal(*extended, kWithDefault), "");
}

}  // namespace
}  // namespace trelvin::test
