#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "odbc/store_fixture.h"

namespace trelvin {
namespace {

using test::failureOf;

class RecordSetTest : public test::StoreTest {
 protected:
  void SetUp() override { data_ = opened(installed("TrelvinData.mdb")); }

  void addSites(int count) {
    for (int number = 1; number <= count; ++number) {
      data_->execute("INSERT INTO Sites (SiteName, Type) Values('site " + std::to_string(number) +
                     "','Web')");
    }
  }
  // Stores a text the way the program does and reads it back.
  std::string storedAndRead(const std::string& text, const std::string& column = "ObjectValue") {
    data_->execute("INSERT INTO Data (" + column + ") Values ('" + text + "') ");
    auto rows = rowsOf("SELECT * FROM Data", *data_);
    rows->moveLast();
    return rows->field(column).toText();
  }

  std::unique_ptr<Connection> data_;
};

TEST_F(RecordSetTest, AnEmptySetStandsOnBofAndEofAtOnce) {
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_TRUE(rows->isOpen());
  EXPECT_TRUE(rows->eof());
  EXPECT_TRUE(rows->bof());
  EXPECT_EQ(rows->recordCount(), 0);
}

TEST_F(RecordSetTest, AnEmptySetHasNoRowToMoveToOrToRead) {
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_EQ(failureOf([&] { rows->moveFirst(); }).number(), error_number::kNoCurrentRecord);
  EXPECT_EQ(failureOf([&] { rows->moveLast(); }).number(), error_number::kNoCurrentRecord);
  EXPECT_EQ(failureOf([&] { rows->moveNext(); }).number(), error_number::kNoCurrentRecord);
  EXPECT_EQ(failureOf([&] { return rows->field("ID"); }).number(), error_number::kNoCurrentRecord);
}

TEST_F(RecordSetTest, StandsOnTheFirstRowWhenItIsOpened) {
  addSites(3);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_FALSE(rows->eof());
  EXPECT_FALSE(rows->bof());
  EXPECT_EQ(rows->field("SiteName").toText(), "site 1");
}

TEST_F(RecordSetTest, WalksEveryRowOnceToEof) {
  addSites(3);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  std::vector<std::int32_t> ids;
  for (; !rows->eof(); rows->moveNext()) ids.push_back(rows->field("ID").toLong());
  EXPECT_EQ(ids, (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_FALSE(rows->bof());
  EXPECT_EQ(failureOf([&] { rows->moveNext(); }).number(), error_number::kNoCurrentRecord);
  EXPECT_EQ(failureOf([&] { return rows->field("ID"); }).number(), error_number::kNoCurrentRecord);
}

TEST_F(RecordSetTest, MovesToEitherEndFromAnywhere) {
  addSites(3);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  rows->moveLast();
  EXPECT_EQ(rows->field("ID").toLong(), 3);
  rows->moveNext();
  EXPECT_TRUE(rows->eof());
  rows->moveFirst();
  EXPECT_FALSE(rows->eof());
  EXPECT_EQ(rows->field("ID").toLong(), 1);
  rows->moveNext();
  EXPECT_EQ(rows->field("ID").toLong(), 2);
}

TEST_F(RecordSetTest, CountsItsRowsWhereverItStands) {
  addSites(3);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_EQ(rows->recordCount(), 3);
  rows->moveLast();
  rows->moveNext();
  EXPECT_EQ(rows->recordCount(), 3);
}

TEST_F(RecordSetTest, AClosedSetAnswersNothing) {
  auto rows = databases_->createRecordSet();
  EXPECT_FALSE(rows->isOpen());
  EXPECT_EQ(failureOf([&] { return rows->eof(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { return rows->bof(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { return rows->recordCount(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { return rows->field("ID"); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { rows->moveFirst(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { rows->moveLast(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { rows->moveNext(); }).number(), error_number::kObjectIsClosed);
  EXPECT_EQ(failureOf([&] { rows->close(); }).number(), error_number::kObjectIsClosed);
}

TEST_F(RecordSetTest, OpeningAnOpenSetFailsAndLeavesItWhereItStood) {
  addSites(2);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  rows->moveNext();
  EXPECT_EQ(failureOf([&] { rows->open("SELECT * FROM Data", *data_, kStaticCursor); }).number(),
            error_number::kObjectIsOpen);
  EXPECT_EQ(rows->field("ID").toLong(), 2);
}

TEST_F(RecordSetTest, CanBeClosedAndOpenedOnAnotherStatement) {
  addSites(1);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  rows->close();
  EXPECT_FALSE(rows->isOpen());
  rows->open("SELECT * FROM DATA", *data_, kStaticCursor);
  EXPECT_TRUE(rows->eof());
  EXPECT_EQ(failureOf([&] { return rows->field("SiteName"); }).number(), error_number::kItemNotFound);
}

TEST_F(RecordSetTest, AStatementThatFailsLeavesTheSetClosedAndReadyForAnother) {
  auto rows = databases_->createRecordSet();
  EXPECT_EQ(failureOf([&] { rows->open("SELECT * FROM Nix", *data_, kStaticCursor); }).number(),
            error_number::kNoSuchTable);
  EXPECT_FALSE(rows->isOpen());
  EXPECT_EQ(failureOf([&] { rows->open("SELEKT", *data_, kStaticCursor); }).number(),
            error_number::kSqlError);
  EXPECT_EQ(failureOf([&] { rows->open("SELECT Nix FROM Sites", *data_, kStaticCursor); }).number(),
            error_number::kSqlError);
  rows->open("SELECT * FROM Sites", *data_, kStaticCursor);
  EXPECT_TRUE(rows->isOpen());
}

TEST_F(RecordSetTest, AStatementThatGivesNoRowsRunsAndLeavesTheSetClosed) {
  auto rows = databases_->createRecordSet();
  rows->open("INSERT INTO Sites (SiteName, Type) Values('a','Web')", *data_, kStaticCursor);
  EXPECT_FALSE(rows->isOpen());
  EXPECT_EQ(rowsOf("SELECT * FROM Sites", *data_)->recordCount(), 1);
}

TEST_F(RecordSetTest, ClosingTheConnectionClosesTheSetsOnIt) {
  addSites(2);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  data_->close();
  EXPECT_FALSE(rows->isOpen());
  EXPECT_EQ(failureOf([&] { rows->moveNext(); }).number(), error_number::kObjectIsClosed);
  data_->open(connectionString(folder_ / "TrelvinData.mdb"));
  rows->open("SELECT * FROM Sites", *data_, kStaticCursor);
  EXPECT_EQ(rows->recordCount(), 2);
}

TEST_F(RecordSetTest, MayOutliveItsConnection) {
  addSites(1);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  data_.reset();
  EXPECT_FALSE(rows->isOpen());
}

TEST_F(RecordSetTest, AConnectionOfAnotherMakerIsRefused) {
  class Foreign final : public Connection {
   public:
    void open(std::string_view) override {}
    void close() override {}
    [[nodiscard]] bool isOpen() const override { return true; }
    void execute(std::string_view) override {}
  } foreign;
  auto rows = databases_->createRecordSet();
  EXPECT_EQ(failureOf([&] { rows->open("SELECT 1", foreign, kStaticCursor); }).number(),
            error_number::kTypeMismatch);
}

TEST_F(RecordSetTest, SeveralSetsMayBeOpenOnOneConnectionWhileItWrites) {
  addSites(3);
  auto first = rowsOf("SELECT * FROM Sites", *data_);
  auto second = rowsOf("SELECT * FROM SITES WHERE (Type = 'web') ", *data_);
  second->moveLast();
  addSites(1);
  first->moveNext();
  EXPECT_EQ(first->field("ID").toLong(), 2);
  EXPECT_EQ(second->field("ID").toLong(), 3);
  EXPECT_EQ(first->recordCount(), 3) << "a static cursor shows what was there when it was opened";
}

TEST_F(RecordSetTest, FieldsAreFoundByNameInAnyCaseInAnyOrderAndMoreThanOnce) {
  addSites(1);
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_EQ(rows->field("Type").toText(), "Web");
  EXPECT_EQ(rows->field("TYPE").toText(), "Web");
  EXPECT_EQ(rows->field("sitename").toText(), "site 1");
  EXPECT_EQ(rows->field("id").toLong(), 1);
  EXPECT_EQ(rows->field("Type").toText(), "Web");
  EXPECT_EQ(failureOf([&] { return rows->field("Nix"); }).number(), error_number::kItemNotFound);
  EXPECT_EQ(failureOf([&] { return rows->field(""); }).number(), error_number::kItemNotFound);
}

TEST_F(RecordSetTest, TablesAndColumnsAreFoundInAnyCase) {
  data_->execute("INSERT INTO DATA (sitenumber, LOCATION, class) VALUES (1, '/ROOT', 'IIsWebVirtualDir')");
  auto rows = rowsOf("SELECT * FROM data WHERE CLASS = 'iiswebvirtualdir'", *data_);
  EXPECT_EQ(rows->recordCount(), 1);
  EXPECT_EQ(rows->field("Location").toText(), "/ROOT");
}

TEST_F(RecordSetTest, WholeNumbersAreLongsToTheirLimits) {
  for (const char* number : {"0", "1", "-1", "2147483647", "-2147483648"}) {
    data_->execute(std::string("INSERT INTO Data (NumberValue) Values (") + number + ")");
    const Value value =
        fieldOf(std::string("SELECT * FROM Data WHERE NumberValue = ") + number, "NumberValue", *data_);
    EXPECT_EQ(value.varType(), kVarLong);
    EXPECT_EQ(value.toText(), number);
  }
}

TEST_F(RecordSetTest, ANumberBeyondALongIsADouble) {
  data_->execute("INSERT INTO Data (NumberValue) Values (4294967295)");
  const Value value = fieldOf("SELECT * FROM Data", "NumberValue", *data_);
  EXPECT_EQ(value.varType(), kVarDouble);
  EXPECT_EQ(value.toText(), "4294967295");
}

TEST_F(RecordSetTest, AnIdReadsAsPlainDigits) {
  addSites(1);
  EXPECT_EQ(fieldOf("SELECT * FROM Sites", "ID", *data_).toText(), "1");
}

TEST_F(RecordSetTest, AFractionInAColumnOfWholeNumbersIsKept) {
  data_->execute("INSERT INTO Data (NumberValue) Values (1.5)");
  EXPECT_EQ(fieldOf("SELECT * FROM Data", "NumberValue", *data_).toDouble(), 1.5);
}

TEST_F(RecordSetTest, ATextInAColumnOfNumbersIsKept) {
  data_->execute("INSERT INTO Data (NumberValue) Values ('many')");
  EXPECT_EQ(fieldOf("SELECT * FROM Data", "NumberValue", *data_), Value("many"));
}

TEST_F(RecordSetTest, RealNumbersAreDoubles) {
  data_->execute("CREATE TABLE Numbers (R DOUBLE, N DOUBLE)");
  data_->execute("INSERT INTO Numbers VALUES (0.25, NULL)");
  EXPECT_EQ(fieldOf("SELECT * FROM Numbers", "R", *data_), Value(0.25));
  EXPECT_TRUE(fieldOf("SELECT * FROM Numbers", "N", *data_).isNull());
}

TEST_F(RecordSetTest, NullIsNullInEveryColumnAndNotTheEmptyText) {
  data_->execute("INSERT INTO Data (Location) Values ('')");
  auto rows = rowsOf("SELECT * FROM Data", *data_);
  EXPECT_EQ(rows->field("Location"), Value(""));
  for (const char* column :
       {"SiteNumber", "Name", "Class", "DataType", "LocalPath", "AppPath", "AppInOutProc", "AppPoolName",
        "NumberValue", "StringValue", "BooleanValue", "ObjectValue"}) {
    EXPECT_TRUE(rows->field(column).isNull()) << column;
  }
}

TEST_F(RecordSetTest, TheMomentOfStoringIsADate) {
  addSites(1);
  const Value value = fieldOf("SELECT * FROM Sites", "DateTime", *data_);
  ASSERT_EQ(value.varType(), kVarDate);
  EXPECT_GE(value.date().parts.tm_year + 1900, 2024);
}

TEST_F(RecordSetTest, ADateReadsAsItWasStored) {
  data_->execute("INSERT INTO Sites (SiteName, DateTime) Values ('a', '2003-04-05 16:07:08')");
  data_->execute("INSERT INTO Sites (SiteName, DateTime) Values ('b', NULL)");
  auto rows = rowsOf("SELECT * FROM Sites", *data_);
  EXPECT_EQ(rows->field("DateTime").toText(), "2003-04-05 16:07:08");
  rows->moveNext();
  EXPECT_TRUE(rows->field("DateTime").isNull());
}

TEST_F(RecordSetTest, TextsComeBackByteForByte) {
  for (const char* text :
       {"plain", " blanks ", "a?b", "{d 'x'} {fn now()} {", "-- no comment /* none */",
        "100%; DROP TABLE Sites;", "back\\slash\\\\x", "first\r\nsecond\r\n", "tab\there", "Größe €",
        "網站 \xF0\x9F\x8C\x8D", "[x] \"y\" `z`", "2003-04-05 16:07:08", "007", "1E5", "-1"}) {
    std::string escaped;
    for (const char* at = text; *at != '\0'; ++at) escaped.append(*at == '\'' ? 2 : 1, *at);
    EXPECT_EQ(storedAndRead(escaped, "StringValue"), text);
    EXPECT_EQ(storedAndRead(escaped, "ObjectValue"), text);
  }
}

TEST_F(RecordSetTest, DoubledQuotesAreOneQuote) {
  EXPECT_EQ(storedAndRead("Bob''s ''best'' site"), "Bob's 'best' site");
  EXPECT_EQ(storedAndRead(""), "");
}

TEST_F(RecordSetTest, TextsOfEveryLengthAroundTheReadingBufferComeBackWhole) {
  for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 2047U, 4096U, 65535U, 65536U, 65537U}) {
    const std::string text(length, 'x');
    EXPECT_EQ(storedAndRead(text), text) << length;
    // Characters of two bytes, so that a cut at an odd place would show.
    std::string wide = length % 2 == 0 ? "" : "x";
    while (wide.size() < length) wide += "é";
    EXPECT_EQ(storedAndRead(wide), wide) << length;
  }
}

TEST_F(RecordSetTest, ATextOfAMegabyteComesBackWhole) {
  std::string text;
  while (text.size() < 1000000) text += "line " + std::to_string(text.size()) + " ü\r\n";
  EXPECT_EQ(storedAndRead(text), text);
}

TEST_F(RecordSetTest, AColumnBehindALongTextIsReadToo) {
  const std::string large(300000, 'y');
  data_->execute("INSERT INTO Data (StringValue, BooleanValue, ObjectValue) Values ('" + large +
                 "', 1, 'end')");
  auto rows = rowsOf("SELECT * FROM Data", *data_);
  EXPECT_EQ(rows->field("ObjectValue").toText(), "end");
  EXPECT_EQ(rows->field("BooleanValue").toLong(), 1);
  EXPECT_EQ(rows->field("StringValue").toText(), large);
}

TEST_F(RecordSetTest, ColumnsOfUnknownTypeAreTexts) {
  auto rows = rowsOf("SELECT COUNT(*) AS N, 'a' || 'b' AS T FROM Sites", *data_);
  EXPECT_EQ(rows->field("N").toLong(), 0);
  EXPECT_EQ(rows->field("T").toText(), "ab");
}

}  // namespace
}  // namespace trelvin
