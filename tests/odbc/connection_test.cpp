#include <gtest/gtest.h>

#include <string>

#include "fakes/data_sources.h"
#include "odbc/store_fixture.h"

namespace trelvin {
namespace {

using test::dataSources;
using test::failureOf;
using test::sqliteSource;

class OdbcConnectionTest : public test::StoreTest {};

TEST_F(OdbcConnectionTest, IsClosedAtFirstAndOpenAfterOpen) {
  auto connection = databases_->createConnection();
  EXPECT_FALSE(connection->isOpen());
  connection->open(connectionString(installed("Trelvin.mdb")));
  EXPECT_TRUE(connection->isOpen());
  connection->close();
  EXPECT_FALSE(connection->isOpen());
}

TEST_F(OdbcConnectionTest, CanBeOpenedAgainOnAnotherDatabase) {
  auto connection = opened(installed("Trelvin.mdb"));
  connection->close();
  connection->open(connectionString(installed("TrelvinData.mdb")));
  connection->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
}

TEST_F(OdbcConnectionTest, OpeningAnOpenOneFailsAndLeavesItOpen) {
  const auto file = installed("Trelvin.mdb");
  auto connection = opened(file);
  EXPECT_EQ(failureOf([&] { connection->open(connectionString(file)); }).number(),
            error_number::kObjectIsOpen);
  connection->execute("DELETE FROM tmpSettings");
}

TEST_F(OdbcConnectionTest, AClosedOneCanNeitherRunNorCloseNorServeARecordSet) {
  auto connection = databases_->createConnection();
  auto rows = databases_->createRecordSet();
  EXPECT_EQ(failureOf([&] { connection->execute("DELETE FROM tmpSettings"); }).number(),
            error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { connection->close(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { rows->open("SELECT 1", *connection, kStaticCursor); }).number(),
            error_number::kObjectIsClosed);
  EXPECT_FALSE(rows->isOpen());
}

TEST_F(OdbcConnectionTest, AnUnknownDriverIsToldOfByName) {
  auto connection = databases_->createConnection();
  const Failure failure = failureOf([&] { connection->open("Driver=NoSuchDriver;Database=x"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("NoSuchDriver"), std::string::npos) << failure.description();
  EXPECT_FALSE(connection->isOpen());
}

TEST_F(OdbcConnectionTest, AnUnknownDataSourceFailsWithTheManagersTextWithoutItsNames) {
  auto connection = databases_->createConnection();
  const Failure failure = failureOf([&] { connection->open("DSN=nosuchsource;"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("Data source name not found"), std::string::npos)
      << failure.description();
  EXPECT_EQ(failure.description().find('['), std::string::npos) << failure.description();
}

TEST_F(OdbcConnectionTest, ADataSourceIsReachedByItsNameWithBlanksBehindIt) {
  dataSources.clear();
  dataSources.setUser(sqliteSource("store", installed("TrelvinData.mdb")));
  auto connection = databases_->createConnection();
  for (const char* text :
       {"DSN=store", "DSN=store ", "DSN=store;  ", "DSN=store;User Id=me;PASSWORD=secret;"}) {
    SCOPED_TRACE(text);
    connection->open(text);
    connection->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
    connection->close();
  }
  connection->open("DSN=store");
  EXPECT_EQ(rowsOf("SELECT * FROM Sites", *connection)->recordCount(), 4);
}

TEST_F(OdbcConnectionTest, AProbeThatFailsLeavesTheConnectionClosedAndNamesTheSubject) {
  const auto file = installed("Trelvin.mdb");
  auto databases = makeOdbcDatabases([](std::string_view text) {
    DriverConnection target{std::string(text)};
    target.probe = "SELECT * FROM NoSuchTable";
    target.subject = "the store";
    return target;
  });
  auto connection = databases->createConnection();
  const Failure failure = failureOf([&] { connection->open(connectionString(file)); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_EQ(failure.description(), "the store: no such table: NoSuchTable");
  EXPECT_FALSE(connection->isOpen());
}

TEST_F(OdbcConnectionTest, AFailureOfTheMappingIsOpensOwn) {
  auto databases = makeOdbcDatabases(
      [](std::string_view) -> DriverConnection { throw Failure(error_number::kUnspecified, "no way"); });
  auto connection = databases->createConnection();
  EXPECT_EQ(failureOf([&] { connection->open("x"); }).description(), "no way");
  EXPECT_FALSE(connection->isOpen());
}

TEST_F(OdbcConnectionTest, UpdatesAndDeletesThatTouchNoRowSucceed) {
  auto connection = opened(installed("Trelvin.mdb"));
  connection->execute("DELETE FROM tmpSettings WHERE SiteID = 7");
  connection->execute("UPDATE tmpSettings SET Directory = 'x' WHERE SiteID = 7");
}

TEST_F(OdbcConnectionTest, AMissingTableHasANumberOfItsOwn) {
  auto connection = opened(installed("Trelvin.mdb"));
  for (const char* sql : {"SELECT * FROM Nix", "DELETE FROM Nix", "INSERT INTO Nix (A) Values(1)"}) {
    const Failure failure = failureOf([&] { connection->execute(sql); });
    EXPECT_EQ(failure.number(), error_number::kNoSuchTable) << sql;
    EXPECT_EQ(failure.description(), "no such table: Nix");
  }
}

TEST_F(OdbcConnectionTest, AStatementThatTheDatabaseDoesNotUnderstandHasANumberOfItsOwn) {
  auto connection = opened(installed("TrelvinData.mdb"));
  for (const char* sql :
       {"nonsense", "SELECT Nix FROM Sites", "INSERT INTO Sites (SiteName, Type) Values('a')",
        "INSERT INTO Sites (SiteName) Values('a", "INSERT INTO Sites () Values ()"}) {
    const Failure failure = failureOf([&] { connection->execute(sql); });
    EXPECT_EQ(failure.number(), error_number::kSqlError) << sql;
    EXPECT_FALSE(failure.description().empty());
  }
}

TEST_F(OdbcConnectionTest, AnEmptyStatementFails) {
  auto connection = opened(installed("TrelvinData.mdb"));
  EXPECT_EQ(failureOf([&] { connection->execute(""); }).number(), error_number::kUnspecified);
}

TEST_F(OdbcConnectionTest, ADuplicateKeyIsNoFaultOfTheStatement) {
  auto connection = opened(installed("TrelvinData.mdb"));
  connection->execute("INSERT INTO Sites (ID, SiteName) Values(1, 'a')");
  const Failure failure =
      failureOf([&] { connection->execute("INSERT INTO Sites (ID, SiteName) Values(1, 'b')"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("UNIQUE"), std::string::npos) << failure.description();
}

TEST_F(OdbcConnectionTest, RunsOnAfterAStatementThatFailed) {
  auto connection = opened(installed("TrelvinData.mdb"));
  EXPECT_NE(failureOf([&] { connection->execute("nonsense"); }).number(), 0);
  connection->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  EXPECT_EQ(rowsOf("SELECT * FROM Sites", *connection)->recordCount(), 1);
}

TEST_F(OdbcConnectionTest, ASelectThatIsExecutedKeepsNothingLocked) {
  const auto file = installed("TrelvinData.mdb");
  auto first = opened(file);
  auto second = opened(file);
  first->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  first->execute("SELECT * FROM Sites");
  second->execute("INSERT INTO Sites (SiteName, Type) Values('b','Web')");
}

TEST_F(OdbcConnectionTest, WhatOneConnectionWritesAnotherReadsAtOnce) {
  const auto file = installed("TrelvinData.mdb");
  auto first = opened(file);
  auto second = opened(file);
  first->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  EXPECT_EQ(rowsOf("SELECT * FROM Sites", *second)->recordCount(), 1);
}

TEST_F(OdbcConnectionTest, ALockedDatabaseFailsWithAClearTextAfterItsTimeout) {
  const auto file = installed("TrelvinData.mdb");
  auto first = opened(file);
  auto second = opened(file);
  first->execute("BEGIN EXCLUSIVE");
  const Failure failure = failureOf([&] { second->execute("DELETE FROM Sites"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("locked"), std::string::npos) << failure.description();
  first->execute("COMMIT");
  second->execute("DELETE FROM Sites");
}

TEST_F(OdbcConnectionTest, AFullDiskFailsWithAClearTextAndKeepsWhatWasThere) {
  const auto file = installed("TrelvinData.mdb");
  auto connection = opened(file);
  connection->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  // The file is full when it may grow no more: the same number of the database engine as for a full disk.
  connection->execute("PRAGMA max_page_count = 8");
  const std::string large(200000, 'x');
  const Failure failure =
      failureOf([&] { connection->execute("INSERT INTO Data (ObjectValue) Values('" + large + "')"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("full"), std::string::npos) << failure.description();
  EXPECT_EQ(rowsOf("SELECT * FROM Sites", *connection)->recordCount(), 1);
}

}  // namespace
}  // namespace trelvin
