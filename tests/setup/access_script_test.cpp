#include "setup/access_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/scripts.h"

namespace trelvin::setup {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

TEST(AccessScriptTest, StatementsStandOnALineEachWithoutComments) {
  EXPECT_THAT(
      accessStatements("-- One; of them\nCREATE INDEX a\n  ON b (c);  -- why\n\nCREATE INDEX d ON e (f);"),
      ElementsAre("CREATE INDEX a ON b (c)", "CREATE INDEX d ON e (f)"));
  EXPECT_THAT(accessStatements("-- nothing but words"), IsEmpty());
}

TEST(AccessScriptTest, TypesAndNamesAreThoseOfAccess) {
  EXPECT_THAT(accessStatements("CREATE TABLE T (\n  ID INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                               "  Name VARCHAR(50) COLLATE NOCASE,  -- a word of Access\n"
                               "  Text TEXT COLLATE NOCASE,\n  Copy BOOLEAN,\n"
                               "  DateTime TIMESTAMP DEFAULT (datetime('now', 'localtime'))\n);"),
              ElementsAre("CREATE TABLE T ([ID] COUNTER PRIMARY KEY, [Name] VARCHAR(50), [Text] LONGTEXT, "
                          "[Copy] BIT, [DateTime] DATETIME DEFAULT Now())"));
}

TEST(AccessScriptTest, EachRowIsInsertedByItself) {
  EXPECT_THAT(accessStatements("INSERT INTO T (a) VALUES\n -- first\n ('x'),\n ('y, (z); --');"),
              ElementsAre("INSERT INTO T (a) VALUES ('x')", "INSERT INTO T (a) VALUES ('y, (z); --')"));
}

TEST(AccessScriptTest, NothingOfTheProgramsScriptsIsForeignToAccess) {
  for (const char* script : {embedded::kSettings, embedded::kExcludedProperties, embedded::kSites}) {
    const std::vector<std::string> statements = accessStatements(script);
    EXPECT_THAT(statements, Not(IsEmpty()));
    for (const char* word :
         {"COLLATE", "AUTOINCREMENT", " TEXT", "BOOLEAN", "TIMESTAMP", "datetime(", "--", "\n"}) {
      EXPECT_THAT(statements, Each(Not(HasSubstr(word))));
    }
  }
}

TEST(AccessScriptTest, AllTablesAndExclusionsAreThere) {
  EXPECT_THAT(accessStatements(embedded::kSettings),
              AllOf(Contains(StartsWith("CREATE TABLE ExcludedExportParameters ([PName] VARCHAR(255))")),
                    Contains(StartsWith("CREATE TABLE tmpSettings ([SiteID] INTEGER, ")),
                    Contains(StartsWith("CREATE TABLE tmpFilesToCopy (")), SizeIs(5)));
  EXPECT_THAT(accessStatements(embedded::kSites),
              AllOf(Contains(StartsWith("CREATE TABLE Sites ([ID] COUNTER PRIMARY KEY, ")),
                    Contains(StartsWith("CREATE TABLE Data ([ID] COUNTER PRIMARY KEY, ")), SizeIs(3)));
  EXPECT_THAT(
      accessStatements(embedded::kExcludedProperties),
      AllOf(Contains("INSERT INTO ExcludedExportParameters (PName) VALUES ('KeyType')"),
            Contains("INSERT INTO ExcludedExportParameters (PName) VALUES ('ADConnectionsPassword')")));
}

}  // namespace
}  // namespace trelvin::setup
