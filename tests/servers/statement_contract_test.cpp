// Every statement of the program means the same on a server as on the program's own file.
#include <gtest/gtest.h>

#include <clocale>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "core/text.h"
#include "fakes/scoped_locale.h"
#include "odbc/store_fixture.h"
#include "servers/server_fixture.h"
#include "stores/statements.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

const Texts kSiteColumns{"ID", "SiteName", "Type"};
const Texts kDataColumns{"ID",          "SiteNumber",  "Location",     "Name",         "Class",
                         "DataType",    "LocalPath",   "AppPath",      "AppInOutProc", "AppPoolName",
                         "NumberValue", "StringValue", "BooleanValue", "ObjectValue"};

// A value with its type, so that a number never passes for the text of it.
std::string typed(const Value& value) {
  return value.isNull() ? "Null" : std::to_string(value.varType()) + ":" + value.toText();
}

statements::PropertyRow propertyRow(const std::string& location, const std::string& localPath,
                                    const std::string& name, const std::string& nodeClass,
                                    const std::string& text) {
  return {.site = 1,
          .location = location,
          .name = name,
          .nodeClass = nodeClass,
          .dataType = 8,
          .localPath = localPath,
          .appPath = "",
          .column = "StringValue",
          .value = statements::quotedLiteral(text)};
}

class StatementContract : public StoreTest, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    TRELVIN_SKIP_WITHOUT(subject_);
    server_ = databases_->createConnection();
    server_->open(subject_.server.connectionString(subject_.database));
    file_ = opened(installed("TrelvinData.mdb"));
  }

  void onBoth(const std::string& sql) {
    SCOPED_TRACE(sql.substr(0, 200));
    ASSERT_NO_THROW(file_->execute(sql));
    ASSERT_NO_THROW(server_->execute(sql));
  }
  Texts rows(const std::string& sql, const Texts& columns, Connection& connection) {
    Texts all;
    for (auto set = rowsOf(sql, connection); !set->eof(); set->moveNext()) {
      std::string row;
      for (const std::string& column : columns) row += column + "=" + typed(set->field(column)) + " ";
      all.push_back(row);
    }
    return all;
  }
  // The rows of a statement, which are those that the program's own file gives.
  Texts same(const std::string& sql, const Texts& columns) {
    Texts ofServer = rows(sql, columns, *server_);
    EXPECT_EQ(ofServer, rows(sql, columns, *file_)) << sql;
    return ofServer;
  }
  Texts sameTexts(const std::string& sql, const std::string& column) {
    Texts texts;
    for (const std::string& row : same(sql, {column})) {
      texts.push_back(row.substr(column.size() + 1, row.size() - column.size() - 2));
    }
    return texts;
  }
  // Stores a text the way the program does and reads it back from the server.
  std::string storedAndRead(const std::string& text, const std::string& column = "ObjectValue") {
    server_->execute("INSERT INTO Data (" + column + ") Values (" + statements::quotedLiteral(text) + ") ");
    auto set = rowsOf("SELECT * FROM DATA", *server_);
    set->moveLast();
    return set->field(column).toText();
  }
  // By the server's own client, as an administrator would.
  std::string ask(const std::string& sql) const { return subject_.server.ask(subject_.database, sql); }

  ServerUnderTest subject_{GetParam()};
  std::unique_ptr<Connection> server_;
  std::unique_ptr<Connection> file_;
};

INSTANTIATE_TEST_SUITE_P(Servers, StatementContract, ::testing::Values(kMariaDb, kPostgreSql),
                         [](const auto& instance) { return std::string(instance.param); });

// Sites.

TEST_P(StatementContract, SitesAreStoredAndListedByTypeInAnyCase) {
  onBoth(statements::addSite("O'Hara's shop", "Web"));
  onBoth(
      statements::addSite("Gr\xC3\xB6\xC3\x9F"
                          "e \xE7\xB6\xB2\xE7\xAB\x99",
                          "Ftp"));
  onBoth(statements::addSite("", "Web"));
  EXPECT_EQ(same(statements::allSites(), kSiteColumns).size(), 3U);
  EXPECT_EQ(sameTexts(statements::sitesOfType("Web"), "SiteName"), (Texts{"8:O'Hara's shop", "8:"}));
  EXPECT_EQ(sameTexts(statements::sitesOfType("FTP"), "ID"), (Texts{"3:2"}));
  EXPECT_TRUE(same(statements::sitesOfType("Mail"), kSiteColumns).empty());
}

TEST_P(StatementContract, TheNewestSiteIsTheLastRow) {
  for (int number = 1; number <= 40; ++number) {
    onBoth(statements::addSite(std::to_string(100 - number), "Ftp"));
    auto sites = rowsOf(statements::allSites(), *server_);
    sites->moveLast();
    ASSERT_EQ(sites->field("ID").toLong(), number);
  }
}

TEST_P(StatementContract, TheNewestSiteStaysTheLastRowWhenAnOlderOneIsRenamedByHand) {
  for (const char* name : {"a", "b", "c"}) onBoth(statements::addSite(name, "Web"));
  ask("UPDATE Sites SET SiteName = 'zz' WHERE ID = 1");
  file_->execute("UPDATE Sites SET SiteName = 'zz' WHERE ID = 1");
  EXPECT_EQ(sameTexts(statements::allSites(), "ID"), (Texts{"3:1", "3:2", "3:3"}));
}

TEST_P(StatementContract, TheNumberOfASiteIsNeverGivenTwice) {
  onBoth(statements::addSite("a", "Web"));
  onBoth(statements::addSite("b", "Web"));
  ask("DELETE FROM Sites WHERE ID = 2");
  file_->execute("DELETE FROM Sites WHERE ID = 2");
  onBoth(statements::addSite("c", "Web"));
  EXPECT_EQ(sameTexts(statements::allSites(), "ID"), (Texts{"3:1", "3:3"}));
}

TEST_P(StatementContract, ASiteIsDatedWithTheMomentOfItsStoring) {
  const std::time_t before = std::time(nullptr);
  onBoth(statements::addSite("a", "Web"));
  const std::time_t after = std::time(nullptr);
  const Value date = fieldOf(statements::allSites(), "DateTime", *server_);
  ASSERT_EQ(date.varType(), kVarDate);
  std::tm stored = date.date().parts;
  const std::time_t moment = std::mktime(&stored);
  EXPECT_GE(moment, before);
  EXPECT_LE(moment, after + 1) << "a server may round to the next second";
}

// Rows of a site, as they are stored.

TEST_P(StatementContract, PropertyRowsOfEveryTypeReadBackAsOnTheProgramsOwnFile) {
  statements::PropertyRow row =
      propertyRow("/ROOT", "ROOT", "DefaultDoc", "IIsWebVirtualDir", "it's \\ here");
  row.appPath = "/ROOT";
  onBoth(statements::addPropertyRow(row));
  row.dataType = 3;
  row.column = "NumberValue";
  for (const char* number : {"0", "-1", "2147483647", "-2147483648"}) {
    row.value = number;
    onBoth(statements::addPropertyRow(row));
  }
  row.dataType = 11;
  row.column = "BooleanValue";
  for (const char* truth : {"0", "1"}) {
    row.value = truth;
    onBoth(statements::addPropertyRow(row));
  }
  row.dataType = 8204;
  row.column = "ObjectValue";
  row.value = statements::quotedLiteral("first\r\n\r\nthird\r\n");
  onBoth(statements::addPropertyRow(row));
  EXPECT_EQ(same("SELECT * FROM Data", kDataColumns).size(), 8U);
}

TEST_P(StatementContract, ARowWithoutAValueColumnIsRefused) {
  statements::PropertyRow row = propertyRow("", "1", "AdminACL", "IIsWebServer", "");
  row.column = row.value = "";
  EXPECT_EQ(failureOf([&] { server_->execute(statements::addPropertyRow(row)); }).number(),
            error_number::kSqlError);
  EXPECT_TRUE(rowsOf("SELECT * FROM Data", *server_)->eof());
}

TEST_P(StatementContract, TreeRowsTakeTheIsolationAsANumberOrAsAWord) {
  statements::TreeRow row{.site = "1",
                          .location = "/ROOT",
                          .localPath = "ROOT",
                          .appPath = "/ROOT",
                          .inProcess = "0",
                          .nodeClass = "IIsWebVirtualDir",
                          .directory = "D:\\Web\\",
                          .pool = "Pool"};
  onBoth(statements::addDirectoryTreeRow(row));
  for (const char* value : {"0", "1", "2", "-1", "True", "False"}) {
    row.inProcess = value;
    onBoth(statements::addVirtualDirectoryTreeRow(row));
  }
  same("SELECT * FROM Data", kDataColumns);
  EXPECT_EQ(sameTexts(statements::siteRows("1"), "AppInOutProc"),
            (Texts{"Null", "3:0", "3:1", "3:2", "3:-1", "3:1", "3:0"}));
}

TEST_P(StatementContract, ATreeRowWithAValueTooFewIsRefused) {
  statements::TreeRow row{.site = "1",
                          .location = "/ROOT/late",
                          .localPath = "late",
                          .appPath = "",
                          .inProcess = "0",
                          .nodeClass = "IIsWebVirtualDir",
                          .directory = "D:\\late",
                          .pool = ""};
  EXPECT_EQ(failureOf([&] { server_->execute(statements::addLateVirtualDirectoryTreeRow(row)); }).number(),
            error_number::kSqlError);
  EXPECT_TRUE(rowsOf("SELECT * FROM Data", *server_)->eof());
}

// Rows of a site, as they are read.

TEST_P(StatementContract, PathsAndBindingsOfASiteAreReadInTheOrderOfTheirStoring) {
  for (const char* location : {"/ROOT/z", "/ROOT", "/ROOT/a", "/ROOT/m"}) {
    onBoth(statements::addPropertyRow(propertyRow(location, "x", "path", "IIsWebVirtualDir", location)));
  }
  onBoth(statements::addPropertyRow(propertyRow("/ROOT/none", "none", "Path", "IIsWebDirectory", "")));
  for (const char* property : {"ServerBindings", "SecureBindings", "SERVERBINDINGS"}) {
    onBoth(statements::addStoredBindings(1, "", property, std::string(property) + "\r\n"));
  }
  EXPECT_EQ(sameTexts(statements::pathRows("1"), "Location"),
            (Texts{"8:/ROOT/z", "8:/ROOT", "8:/ROOT/a", "8:/ROOT/m"}));
  EXPECT_EQ(sameTexts(statements::storedBindingRows("1", "ServerBindings"), "ObjectValue"),
            (Texts{"8:ServerBindings\r\n", "8:SERVERBINDINGS\r\n"}));
  EXPECT_EQ(sameTexts(statements::storedBindingRows("1", "SecureBindings"), "ID"), (Texts{"3:7"}));
  EXPECT_TRUE(same(statements::pathRows("2"), {"Location"}).empty());
}

TEST_P(StatementContract, ANullClassPassesTheClassFilterAndTheThreeClassesDoNot) {
  onBoth(statements::addStoredBindings(1, "", "ServerBindings", ":80:\r\n"));
  for (const char* name : {"IIsWebServer", "IIsCertMapper", "IIsFilters", "IIsFilter", "IISFILTER", ""}) {
    onBoth(statements::addPropertyRow(propertyRow("", "1", "Path", name, "x")));
  }
  EXPECT_EQ(sameTexts(statements::pathRows("1"), "Class"), (Texts{"8:IIsWebServer", "8:"}));
  EXPECT_EQ(sameTexts(statements::storedBindingRows("1", "ServerBindings"), "Class"), (Texts{"Null"}));
}

TEST_P(StatementContract, ASitesRowsComeParentFirstThenByNameDownwardsWithNullLastThenInOrderOfStoring) {
  const auto add = [&](const char* location, const char* localPath, const char* name) {
    onBoth(std::string("INSERT INTO Data (SiteNumber, Location, LocalPath, Name) Values (1, '") + location +
           "', " + localPath + ", '" + name + "')");
  };
  add("/ROOT/images/small", "'small'", "1");
  add("/ROOT/images", "'images'", "2");
  add("", "'12'", "3");
  add("/ROOT", "'ROOT'", "4");
  add("", "''", "5");
  add("", "NULL", "6");
  add("/ROOT/IMAGES", "''", "7");
  add("/ROOT", "'ROOT'", "8");
  add("", "NULL", "9");
  EXPECT_EQ(sameTexts(statements::siteRows("1"), "Name"),
            (Texts{"8:3", "8:5", "8:6", "8:9", "8:4", "8:8", "8:2", "8:7", "8:1"}));
}

TEST_P(StatementContract, LocationsAreOrderedAsOnTheProgramsOwnFile) {
  for (const char* location :
       {"/ROOT/_vti_bin", "/ROOT/A", "/ROOT/a/B", "/ROOT/A/_x", "/ROOT/A-1", "/ROOT/A 1", "/ROOT/A.1",
        "/ROOT/b", "/ROOT/Z", "/root/z/y", "/ROOT", "/ROOT/_private", "/ROOT/Aa", "", "/Filters"}) {
    onBoth(statements::addPropertyRow(propertyRow(location, "x", "Path", "IIsWebDirectory", location)));
  }
  same(statements::siteRows("1"), {"Location"});
}

TEST_P(StatementContract, ANodeComesBeforeThoseBelowItInWhateverCaseAndScript) {
  const Texts locations{"/ROOT/caf\xC3\xA9/x/y",
                        "/root/cafe/X",
                        "/ROOT/CAFE/x/Y",
                        "/ROOT/a b/_c",
                        "/ROOT/A B",
                        "/ROOT/caf\xC3\xA9/x",
                        "/ROOT/cafe",
                        "/ROOT/caf\xC3\xA9",
                        "/ROOT",
                        "",
                        "/ROOT/10",
                        "/ROOT/9/_x",
                        "/ROOT/9",
                        "/ROOT/a&b/c",
                        "/ROOT/a&b",
                        "/ROOT/\xE7\xB6\xB2/x",
                        "/ROOT/\xE7\xB6\xB2"};
  for (const std::string& location : locations) {
    server_->execute(statements::addPropertyRow(propertyRow(location, "x", "Path", "IIsWebDirectory", "x")));
  }
  Texts seen;
  for (auto set = rowsOf(statements::siteRows("1"), *server_); !set->eof(); set->moveNext()) {
    const std::string location = upperCase(set->field("Location").toText());
    for (const std::string& earlier : seen) EXPECT_FALSE(earlier.starts_with(location + "/")) << location;
    seen.push_back(location);
  }
  EXPECT_EQ(seen.size(), locations.size());
}

TEST_P(StatementContract, TheRowsOfNodesWithAlikeNamesStayApart) {
  const Texts names{"/ROOT/cafe", "/ROOT/caf\xC3\xA9", "/ROOT/a", "/ROOT/a ", "/ROOT/\xC3\xA4"};
  for (int round = 0; round < 3; ++round) {
    for (const std::string& name : names) {
      server_->execute(
          statements::addPropertyRow(propertyRow(name, name.substr(6), "Path", "IIsWebDirectory", "x")));
    }
  }
  int changes = 0;
  std::string current;
  for (const std::string& location : rows(statements::siteRows("1"), {"Location"}, *server_)) {
    if (location != current) ++changes;
    current = location;
  }
  EXPECT_EQ(changes, 5) << "a reader makes a node anew whenever the location changes";
}

TEST_P(StatementContract, LocationsAreOrderedToTheirEndsHoweverLongTheyAre) {
  std::string deep = "/ROOT";
  while (deep.size() < 1400) deep += "/a folder with a name of some length";
  for (const char* end : {"/c", "/a", "/b", "/a/b", ""}) {
    for (int round = 0; round < 2; ++round) {
      onBoth(statements::addPropertyRow(propertyRow(deep + end, "x", "Path", "IIsWebDirectory", end)));
    }
  }
  EXPECT_EQ(sameTexts(statements::siteRows("1"), "StringValue"),
            (Texts{"8:", "8:", "8:/a", "8:/a", "8:/a/b", "8:/a/b", "8:/b", "8:/b", "8:/c", "8:/c"}));
}

TEST_P(StatementContract, ASitesNumberOfOriginIsFoundInTheFirstRowOfItsOwnNode) {
  onBoth(statements::addPropertyRow(propertyRow("/ROOT", "ROOT", "Path", "IIsWebVirtualDir", "x")));
  onBoth(statements::addPropertyRow(propertyRow("", "7", "ServerComment", "IIsWebServer", "x")));
  onBoth(statements::addStoredBindings(1, "", "ServerBindings", ":80:\r\n"));
  auto set = rowsOf(statements::siteNodeRows("1"), *server_);
  ASSERT_FALSE(set->eof());
  EXPECT_EQ(set->field("LocalPath").toText(), "7");
  EXPECT_EQ(rowsOf(statements::siteNodeRows("1"), *file_)->field("LocalPath").toText(), "7");
}

TEST_P(StatementContract, ASiteWithNothingButBindingsHasNoNumberOfOrigin) {
  onBoth(statements::addStoredBindings(1, "", "ServerBindings", ":80:\r\n"));
  onBoth(statements::addStoredBindings(1, "", "SecureBindings", ":443:\r\n"));
  EXPECT_TRUE(same(statements::siteNodeRows("1"), kDataColumns).empty());
}

TEST_P(StatementContract, NewBindingsComeBehindThoseOfTheSource) {
  for (const char* site : {"1", ""}) {
    SCOPED_TRACE(site);
    const std::int16_t number = *site == '1' ? 1 : 2;
    statements::PropertyRow source = propertyRow("", site, "ServerBindings", "IIsWebServer", "");
    source.site = number;
    source.column = "ObjectValue";
    source.value = statements::quotedLiteral("old\r\n");
    onBoth(statements::addPropertyRow(source));
    onBoth(statements::addStoredBindings(number, "", "ServerBindings", "new\r\n"));
    EXPECT_EQ(sameTexts(statements::siteRows(std::to_string(number)), "ObjectValue"),
              (Texts{"8:old\r\n", "8:new\r\n"}));
  }
}

// Texts.

TEST_P(StatementContract, TextsComeBackByteForByte) {
  for (const char* text : {"plain",
                           " blanks ",
                           "a?b",
                           "{d 'x'} {fn now()} {",
                           "{?=call x}",
                           "-- no comment /* none */",
                           "# none",
                           "100%; DROP TABLE Sites;",
                           "back\\slash\\\\x",
                           "D:\\new\\table\\",
                           "\\\\server\\share\\",
                           "\\",
                           "\\'",
                           "first\r\nsecond\r\n",
                           "lone\nline",
                           "tab\there",
                           "Gr\xC3\xB6\xC3\x9F"
                           "e \xE2\x82\xAC",
                           "\xE7\xB6\xB2\xE7\xAB\x99 \xF0\x9F\x8C\x8D",
                           "[x] \"y\" `z` $1 $$ :name @var",
                           "2003-04-05 16:07:08",
                           "007",
                           "1E5",
                           "-1",
                           "it''s",
                           "%20%s%n",
                           "E'\\x41'",
                           "\x01\x7F"}) {
    for (const char* column : {"StringValue", "ObjectValue", "Location", "LocalPath", "AppPath", "Name"}) {
      EXPECT_EQ(storedAndRead(text, column), text) << column;
    }
  }
}

TEST_P(StatementContract, TextsAreTheSameToOthersWhateverTheLocale) {
  const ScopedLocale locale(LC_CTYPE, "fr_FR", "ISO-8859-1");
  if (!locale.isInForce()) GTEST_SKIP() << "localedef or its sources are not installed";
  const std::string text =
      "Gr\xC3\xB6\xC3\x9F"
      "e \xE7\xB6\xB2\xE7\xAB\x99";
  auto connection = databases_->createConnection();
  connection->open(subject_.server.connectionString(subject_.database));
  connection->execute(statements::addSite(text, "Web"));
  EXPECT_EQ(fieldOf(statements::allSites(), "SiteName", *connection).toText(), text);
  EXPECT_EQ(ask("SELECT SiteName FROM Sites"), text + "\n");
}

TEST_P(StatementContract, TextsOfEveryLengthAroundTheReadingBufferComeBackWhole) {
  for (const std::size_t length :
       {254U, 255U, 1022U, 1023U, 1024U, 1025U, 4096U, 8189U, 8190U, 8191U, 65536U}) {
    const std::string text(length, 'x');
    EXPECT_TRUE(storedAndRead(text) == text) << length;
    // Characters of two bytes, so that a cut at an odd place would show.
    std::string wide = length % 2 == 0 ? "" : "x";
    while (wide.size() < length) wide += "\xC3\xA9";
    EXPECT_TRUE(storedAndRead(wide) == wide) << length;
  }
}

TEST_P(StatementContract, ATextOfAMegabyteComesBackWholeAndSoDoTheColumnsBehindIt) {
  std::string text;
  while (text.size() < 1000000) text += "line " + std::to_string(text.size()) + " \xC3\xBC\r\n";
  server_->execute("INSERT INTO Data (StringValue, BooleanValue, ObjectValue) Values ('" + text +
                   "', 1, 'end')");
  auto set = rowsOf("SELECT * FROM Data", *server_);
  EXPECT_EQ(set->field("ObjectValue").toText(), "end");
  EXPECT_EQ(set->field("BooleanValue").toLong(), 1);
  EXPECT_TRUE(set->field("StringValue").toText() == text);
}

TEST_P(StatementContract, NullIsNullInEveryColumnAndNotTheEmptyText) {
  onBoth("INSERT INTO Data (Location) Values ('')");
  EXPECT_EQ(sameTexts("SELECT * FROM Data", "Location"), (Texts{"8:"}));
  same("SELECT * FROM Data", kDataColumns);
}

TEST_P(StatementContract, TextsCompareWithoutRegardToCaseAndBlanksAtTheirEndsCount) {
  for (const char* name : {"Path", "PATH", "Path ", " Path", "P\xC3\xA2th"}) {
    onBoth(statements::addPropertyRow(propertyRow("/ROOT", "ROOT", name, "IIsWebVirtualDir", name)));
  }
  onBoth(statements::addPropertyRow(propertyRow("/ROOT", "ROOT", "Path", "IIsWebVirtualDir", " ")));
  EXPECT_EQ(sameTexts(statements::pathRows("1"), "StringValue"), (Texts{"8:Path", "8:PATH", "8: "}));
}

// Sets and failures.

TEST_P(StatementContract, SetsMoveAndCountAsOnTheProgramsOwnFile) {
  auto none = rowsOf("SELECT * FROM Sites", *server_);
  EXPECT_TRUE(none->bof());
  EXPECT_TRUE(none->eof());
  EXPECT_EQ(none->recordCount(), 0);
  EXPECT_EQ(failureOf([&] { none->moveLast(); }).number(), error_number::kNoCurrentRecord);
  for (const char* name : {"a", "b", "c"}) server_->execute(statements::addSite(name, "Web"));
  auto set = rowsOf("SELECT * FROM SITES WHERE (Type = 'Web') ", *server_);
  EXPECT_EQ(set->recordCount(), 3);
  set->moveLast();
  EXPECT_EQ(set->field("sitename").toText(), "c");
  set->moveNext();
  EXPECT_TRUE(set->eof());
  set->moveFirst();
  EXPECT_EQ(set->field("SITENAME").toText(), "a");
  EXPECT_EQ(failureOf([&] { return set->field("Nix"); }).number(), error_number::kItemNotFound);
}

TEST_P(StatementContract, SeveralSetsMayBeOpenOnOneConnectionWhileItWrites) {
  for (const char* name : {"a", "b", "c"}) server_->execute(statements::addSite(name, "Web"));
  auto first = rowsOf("SELECT * FROM Sites", *server_);
  auto second = rowsOf("SELECT * FROM SITES WHERE (Type = 'web') ", *server_);
  second->moveLast();
  server_->execute(statements::addSite("d", "Web"));
  first->moveNext();
  EXPECT_EQ(first->field("ID").toLong(), 2);
  EXPECT_EQ(second->field("ID").toLong(), 3);
  EXPECT_EQ(first->recordCount(), 3);
}

TEST_P(StatementContract, FailuresHaveTheNumbersOfTheProgramsOwnFile) {
  for (const char* sql :
       {"SELECT * FROM Nix", "INSERT INTO Nix (A) Values(1)", "nonsense", "SELECT Nix FROM Sites",
        "INSERT INTO Sites (SiteName, Type) Values('a')", "INSERT INTO Sites (SiteName) Values('a",
        "INSERT INTO Sites () Values (", "INSERT INTO Sites (ID, SiteName) Values(1000, 'a')"}) {
    const std::int32_t expected = failureOf([&] { file_->execute(sql); }).number();
    const Failure failure = failureOf([&] { server_->execute(sql); });
    EXPECT_EQ(failure.number(), expected) << sql << ": " << failure.description();
    EXPECT_FALSE(failure.description().starts_with('[')) << failure.description();
  }
  const Failure twice =
      failureOf([&] { server_->execute("INSERT INTO Sites (ID, SiteName) Values(1000, 'b')"); });
  EXPECT_EQ(twice.number(), error_number::kUnspecified) << twice.description();
  server_->execute(statements::addSite("still open", "Web"));
}

TEST_P(StatementContract, TheProgramsUserCanNeitherChangeNorDeleteWhatIsStored) {
  server_->execute(statements::addSite("a", "Web"));
  for (const char* sql :
       {"DELETE FROM Sites", "UPDATE Sites SET SiteName = 'b'", "DELETE FROM StoredSites"}) {
    EXPECT_NE(failureOf([&] { server_->execute(sql); }).number(), 0) << sql;
  }
  EXPECT_EQ(fieldOf(statements::allSites(), "SiteName", *server_).toText(), "a");
}

TEST_P(StatementContract, AWrongPasswordIsToldOf) {
  std::string text;
  for (const std::string& attribute : subject_.server.attributesOf(subject_.database))
    text += attribute + ";";
  auto connection = databases_->createConnection();
  const Failure failure = failureOf([&] { connection->open(text + "User Id=trelvin;PASSWORD=wrong;"); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find(DatabaseServer::kUser), std::string::npos) << failure.description();
  EXPECT_FALSE(connection->isOpen());
}

TEST_P(StatementContract, AServerThatIsGoneIsToldOfAndTheNextConnectionWorksOnceItIsBack) {
  server_->execute(statements::addSite("a", "Web"));
  auto set = rowsOf(statements::allSites(), *server_);
  set->moveFirst();
  subject_.server.stop();
  const Failure written = failureOf([&] { server_->execute(statements::addSite("b", "Web")); });
  EXPECT_EQ(written.number(), error_number::kUnspecified);
  EXPECT_GT(written.description().size(), 10U) << written.description();
  EXPECT_EQ(failureOf([&] { return rowsOf(statements::allSites(), *server_); }).number(),
            error_number::kUnspecified);
  for (int move = 0; move < 2 && !set->eof(); ++move) static_cast<void>(failureOf([&] { set->moveNext(); }));
  EXPECT_TRUE(set->eof()) << "a loop over its rows ends, whether they can still be had or not";
  auto other = databases_->createConnection();
  const std::string text = subject_.server.connectionString(subject_.database);
  EXPECT_EQ(failureOf([&] { other->open(text); }).number(), error_number::kUnspecified);
  subject_.server.start();
  other->open(text);
  EXPECT_EQ(rows(statements::allSites(), {"SiteName"}, *other), (Texts{"SiteName=8:a "}));
  server_->close();
}

}  // namespace
}  // namespace trelvin::test
