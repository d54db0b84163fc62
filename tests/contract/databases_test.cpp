#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"
#include "platform/database.h"

namespace trelvin::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  for (; times > 0; --times) result += text;
  return result;
}

// A database as the program is installed with, reached by the program's own connection string.
class DatabasesContract : public testing::Test {
 protected:
  DatabasesContract() {
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / "TrelvinData.mdb",
                               folder_ / "TrelvinData.mdb");
    connection_->open(connectionString("TrelvinData.mdb"));
  }

  [[nodiscard]] std::string connectionString(std::string_view file) const {
    return "Driver={Microsoft Access Driver (*.mdb)}; DBQ=" + programForm(folder_ / file) + ";";
  }
  Failure failureOfStatement(const std::string& sql) {
    return failureOf([&] { connection_->execute(sql); });
  }
  std::int32_t numberOfStatement(const std::string& sql) { return failureOfStatement(sql).number(); }
  std::unique_ptr<RecordSet> select(const std::string& sql) {
    auto rows = databases_->createRecordSet();
    rows->open(sql, *connection_, kStaticCursor);
    return rows;
  }

  Value fieldOf(const std::string& sql, std::string_view name) { return select(sql)->field(name); }
  // What a column that holds long texts gives back of a text that is stored as the program does it.
  Value storedAndRead(const std::string& text) {
    connection_->execute("DELETE FROM Data");
    connection_->execute("INSERT INTO Data (ObjectValue) VALUES ('" + text + "')");
    return fieldOf("SELECT ObjectValue FROM Data", "ObjectValue");
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

// Drivers hand out long texts in pieces. With up to three characters before it, a character of several bytes
// or halves gets to lie across the end of a piece in every way.
TEST_F(DatabasesContract, ALongTextComesWholeWhereverItsPiecesEnd) {
  for (const std::string_view character : {"x", "é", "日", "😀"}) {
    for (const std::size_t count : {300U, 1100U, 70'000U}) {
      for (std::size_t before = 0; before < 4; ++before) {
        const std::string text = std::string(before, 'a') + repeated(character, count);
        // Not EXPECT_EQ, which would print them.
        EXPECT_TRUE(storedAndRead(text) == Value(text)) << before << " and " << count << " " << character;
      }
    }
  }
}

TEST_F(DatabasesContract, ATextThatJustFitsOrJustDoesNotComesWhole) {
  for (std::size_t size = 1018; size <= 1030; ++size) {
    for (const std::string_view end : {"", "é", "😀"}) {
      const std::string text = std::string(size, 'x') + std::string(end);
      EXPECT_EQ(storedAndRead(text), Value(text));
    }
  }
}

TEST_F(DatabasesContract, AnEmptyTextIsNotNull) {
  connection_->execute("INSERT INTO Data (StringValue, ObjectValue, Name) VALUES ('', '', 'é')");
  const auto rows = select("SELECT * FROM Data");
  EXPECT_EQ(rows->field("StringValue"), Value(std::string()));
  EXPECT_EQ(rows->field("ObjectValue"), Value(std::string()));
  EXPECT_EQ(rows->field("Name"), Value(std::string("é")));
  EXPECT_TRUE(rows->field("AppPath").isNull());
}

// Other programs read the databases too.
TEST_F(DatabasesContract, ADatabaseHoldsTheCharactersThemselves) {
  connection_->execute("INSERT INTO Sites (SiteName) VALUES ('é日😀')");
  EXPECT_EQ(fieldOf("SELECT hex(SiteName) AS Bytes FROM Sites", "Bytes"),
            Value(std::string("C3A9E697A5F09F9880")));
  EXPECT_EQ(fieldOf("SELECT length(SiteName) AS Characters FROM Sites", "Characters"),
            Value(std::int32_t{3}));
  connection_->close();
  EXPECT_THAT(folder_.read("TrelvinData.mdb"), HasSubstr("é日😀"));
}

TEST_F(DatabasesContract, AStatementMayHoldAnyCharacters) {
  connection_->execute("INSERT INTO Sites (SiteName, Type) VALUES ('Grüße 😀', 'Web')");
  connection_->execute("INSERT INTO Sites (SiteName, Type) VALUES ('Gruesse', 'Ftp')");
  EXPECT_EQ(fieldOf("SELECT Type FROM Sites WHERE SiteName = 'Grüße 😀'", "Type"), Value(std::string("Web")));
  connection_->execute("UPDATE Sites SET SiteName = '日本' WHERE SiteName = 'Grüße 😀'");
  EXPECT_EQ(select("SELECT * FROM Sites WHERE SiteName = '日本'")->recordCount(), 1);
}

TEST_F(DatabasesContract, AColumnIsFoundByAnyName) {
  connection_->execute("INSERT INTO Sites (SiteName) VALUES ('x')");
  EXPECT_EQ(fieldOf("SELECT SiteName AS \"Größe 😀\" FROM Sites", "Größe 😀"), Value(std::string("x")));
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
  EXPECT_EQ(numberOfStatement("SELEKT"), error_number::kSqlError);
  EXPECT_EQ(numberOfStatement("DELETE FROM NoSuchTable"), error_number::kNoSuchTable);
  EXPECT_EQ(numberOfFailure([&] { return select("SELECT ID FROM Sites")->field("ID"); }),
            error_number::kNoCurrentRecord);
}

TEST_F(DatabasesContract, FailuresAreToldInAnyCharacters) {
  const Failure failure = failureOfStatement("DELETE FROM Größe日😀");
  EXPECT_EQ(failure.number(), error_number::kNoSuchTable);
  EXPECT_THAT(failure.description(), HasSubstr("no such table: Größe日😀"));
}

TEST_F(DatabasesContract, AFailureThatIsToldAtLengthIsUnderstood) {
  const Failure failure = failureOfStatement("DELETE FROM " + repeated("😀", 600));
  EXPECT_EQ(failure.number(), error_number::kNoSuchTable);
  EXPECT_THAT(failure.description(), StartsWith("no such table: 😀😀"));
}

TEST_F(DatabasesContract, ADatabaseMayLieInAFolderOfAnyName) {
  const std::filesystem::path folder = folder_.makeFolder("Sites");
  const std::filesystem::path renamed = folder_.path() / std::u8string(u8"Größe 日本");
  std::filesystem::rename(folder, renamed);
  std::filesystem::copy_file(folder_ / "TrelvinData.mdb", renamed / "TrelvinData.mdb");
  const auto other = databases_->createConnection();
  other->open("Driver={Microsoft Access Driver (*.mdb)}; DBQ=" + programForm(renamed / "TrelvinData.mdb") +
              ";");
  other->execute("INSERT INTO Sites (SiteName) VALUES ('there')");
  auto rows = databases_->createRecordSet();
  rows->open("SELECT * FROM Sites", *other, kStaticCursor);
  EXPECT_EQ(rows->recordCount(), 1);
  EXPECT_EQ(select("SELECT * FROM Sites")->recordCount(), 0);
}

TEST_F(DatabasesContract, AFileThatIsMissingIsNotMade) {
  const auto other = databases_->createConnection();
  EXPECT_EQ(numberOfFailure([&] { other->open(connectionString("Missing.mdb")); }),
            error_number::kUnspecified);
  EXPECT_FALSE(folder_.has("Missing.mdb"));
}

}  // namespace
}  // namespace trelvin::test
