// Every statement by its text, and as the databases take it.
#include "stores/statements.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_databases.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

TEST(StatementTextTest, OfTheExclusions) {
  EXPECT_EQ(statements::excludedParameters(), "Select * FROM ExcludedExportParameters");
}

TEST(StatementTextTest, OfTheWorkingRows) {
  EXPECT_EQ(statements::clearSettings(), "DELETE FROM tmpSettings");
  EXPECT_EQ(statements::clearFilesToCopy(), "DELETE FROM tmpFilesToCopy");
  EXPECT_EQ(statements::directoryRows(3),
            "SELECT * FROM tmpSettings WHERE (SiteID = 3 AND Folder IS NOT NULL) ORDER BY ListIndex");
  EXPECT_EQ(statements::bindingRows(0),
            "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldIP IS NOT NULL) ORDER BY ListIndex");
  EXPECT_EQ(statements::sslBindingRows(12),
            "SELECT * FROM tmpSettings WHERE (SiteID = 12 AND OldSSLIP IS NOT NULL) ORDER BY ListIndex");
  EXPECT_EQ(statements::addDirectoryRow(1, 2, "/ROOT", "d:\\web"),
            "INSERT INTO tmpSettings (SiteID, ListIndex, Folder, Directory) VALUES (1,2,'/ROOT','d:\\web') ");
  EXPECT_EQ(statements::addBindingRow(1, 2, ":80:"),
            "INSERT INTO tmpSettings (SiteID, ListIndex, OldIP, NewIP) VALUES (1,2,':80:',':80:')");
  EXPECT_EQ(statements::addSslBindingRow(1, 2, ":443:"),
            "INSERT INTO tmpSettings (SiteID, ListIndex, OldSSLIP, NewSSLIP) VALUES (1,2,':443:',':443:')");
  EXPECT_EQ(statements::addFileToCopy(1, 2, "d:\\web", "True"),
            "INSERT INTO tmpFilesToCopy (ListNum, DirNum, FileName, Copy) VALUES (1,2,'d:\\web', True) ");
}

TEST(StatementTextTest, OfTheSites) {
  EXPECT_EQ(statements::addSite("My Site", "Web"),
            "INSERT INTO Sites (SiteName, Type) Values('My Site','Web')");
  EXPECT_EQ(statements::allSites(), "SELECT * FROM Sites");
  EXPECT_EQ(statements::sitesOfType("Ftp"), "SELECT * FROM SITES WHERE (Type = 'Ftp') ");
}

TEST(StatementTextTest, OfReadingStoredSites) {
  EXPECT_EQ(statements::pathRows("7"),
            "SELECT * FROM DATA WHERE (SiteNumber = 7 AND Name = 'Path' AND StringValue <> '' AND ((Class <> "
            "'IIsCertMapper' AND Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null))");
  EXPECT_EQ(statements::storedBindingRows("7", "ServerBindings"),
            "SELECT * FROM DATA WHERE (SiteNumber = 7 AND (Name = 'ServerBindings') AND ((Class <> "
            "'IIsCertMapper' AND "
            "Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null))");
  EXPECT_EQ(statements::storedBindingRows("7", "SecureBindings"),
            "SELECT * FROM DATA WHERE (SiteNumber = 7 AND (Name = 'SecureBindings') AND ((Class <> "
            "'IIsCertMapper' AND "
            "Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null))");
}

statements::PropertyRow propertyRow() {
  statements::PropertyRow row;
  row.site = 7;
  row.location = "/ROOT";
  row.name = "MaxConnections";
  row.nodeClass = "IIsWebVirtualDir";
  row.dataType = 3;
  row.localPath = "ROOT";
  row.appPath = "/ROOT";
  row.column = "NumberValue";
  row.value = "10";
  return row;
}

TEST(StatementTextTest, OfStoringAProperty) {
  EXPECT_EQ(statements::addPropertyRow(propertyRow()),
            "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, NumberValue) "
            "Values (7, "
            "'/ROOT', 'MaxConnections', 'IIsWebVirtualDir', 3, 'ROOT', '/ROOT', 10) ");
  statements::PropertyRow text = propertyRow();
  text.column = "StringValue";
  text.dataType = 8;
  text.value = statements::quotedLiteral("it's");
  EXPECT_EQ(statements::addPropertyRow(text),
            "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, StringValue) "
            "Values (7, "
            "'/ROOT', 'MaxConnections', 'IIsWebVirtualDir', 8, 'ROOT', '/ROOT', 'it''s') ");
}

TEST(StatementTextTest, OfStoringBindings) {
  EXPECT_EQ(statements::addStoredBindings(7, "", "ServerBindings", ":80:\r\n"),
            "INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (7, '', "
            "'ServerBindings', "
            "':80:\r\n', 8204)");
  EXPECT_EQ(statements::addStoredBindings(7, "", "SecureBindings", ""),
            "INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (7, '', "
            "'SecureBindings', "
            "'', 8204)");
}

TEST(StatementTextTest, EveryTextOfUsersAndMetabasesHasItsQuotesDoubled) {
  const std::string name = "O'Hara's";
  for (const std::string& statement :
       {statements::addDirectoryRow(0, 0, name, name), statements::addBindingRow(0, 0, name),
        statements::addSslBindingRow(0, 0, name), statements::addFileToCopy(0, 0, name, "True"),
        statements::addSite(name, name), statements::sitesOfType(name),
        statements::addStoredBindings(0, name, "ServerBindings", name)}) {
    EXPECT_NE(statement.find("O''Hara''s"), std::string::npos) << statement;
    EXPECT_EQ(statement.find("O'Hara's"), std::string::npos) << statement;
  }
  statements::PropertyRow row = propertyRow();
  row.location = row.name = row.localPath = row.appPath = name;
  row.nodeClass = name;
  const std::string statement = statements::addPropertyRow(row);
  EXPECT_EQ(statement.find("O'Hara"), std::string::npos) << statement;
}

class StatementsTest : public ProgramTest {
 protected:
  StatementsTest() : databases_(watchDatabases()) { openWindow(); }

  FailingDatabases& databases_;
};

TEST_F(StatementsTest, EveryStatementIsBuiltInTheOnePlaceAndLoggedWithTheDebugFlagOnly) {
  executeOnSettings(statements::clearSettings());
  EXPECT_EQ(frmMain.sSql, "DELETE FROM tmpSettings");
  EXPECT_FALSE(hasLogged("DELETE FROM tmpSettings"));
  run.bDebug = true;
  executeOnSettings(statements::clearSettings());
  executeOnData(statements::addSite("a", "Web"));
  openSettingsRows(statements::directoryRows(0));
  openDataRows(statements::allSites());
  const Texts lines = logLines();
  EXPECT_EQ(Texts(lines.end() - 4, lines.end()),
            (Texts{"DELETE FROM tmpSettings", statements::addSite("a", "Web"), statements::directoryRows(0),
                   "SELECT * FROM Sites"}));
  EXPECT_EQ(frmMain.sSql, "SELECT * FROM Sites");
}

TEST_F(StatementsTest, AStatementIsLoggedBeforeItFails) {
  run.bDebug = true;
  EXPECT_EQ(numberOfFailure([] { executeOnData("DELETE FROM NoSuchTable"); }), error_number::kNoSuchTable);
  EXPECT_EQ(logLines().back(), "DELETE FROM NoSuchTable");
}

TEST_F(StatementsTest, AStatementThatTheDatabaseDoesNotUnderstandGoesToTheCaller) {
  EXPECT_EQ(numberOfFailure([] { executeOnSettings("MAKE sense"); }), error_number::kSqlError);
}

TEST_F(StatementsTest, SetsAreOpenedWithAStaticCursor) {
  openSettingsRows(statements::directoryRows(0));
  openDataRows(statements::allSites());
  int opened = 0;
  for (const DatabaseCall& call : databases_.calls) {
    if (call.operation != "OpenRows") continue;
    ++opened;
    EXPECT_EQ(call.cursorType, 3) << call.text;
  }
  EXPECT_EQ(opened, 3);
}

TEST_F(StatementsTest, ASetThatIsOpenCannotBeOpenedAgain) {
  openSettingsRows(statements::directoryRows(0));
  EXPECT_EQ(numberOfFailure([] { openSettingsRows(statements::bindingRows(0)); }),
            error_number::kObjectIsOpen);
}

TEST_F(StatementsTest, AStatementThatCannotBeBuiltLeavesTheFormerOneWhichRunsAgain) {
  executeOnData(statements::addSite("a", "Web"));
  buildAndExecuteOnData([]() -> std::string { throw Failure(error_number::kTypeMismatch); });
  EXPECT_EQ(Err.number, 13);
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT SiteName AS a FROM Sites"), (Rows{{"a"}, {"a"}}));
}

TEST_F(StatementsTest, AStatementThatIsBuiltAndFailsOnlySetsTheError) {
  run.bDebug = true;
  buildAndExecuteOnData([] { return std::string("DELETE FROM NoSuchTable"); });
  EXPECT_EQ(Err.number, error_number::kNoSuchTable);
  EXPECT_EQ(logLines().back(), "DELETE FROM NoSuchTable");
}

TEST_F(StatementsTest, ASiteNameWithAQuoteIsStoredWholeWithTheMomentOfItsStorage) {
  executeOnData(statements::addSite("O'Hara's \"best\"", "Web"));
  const Rows rows =
      query("TrelvinData.mdb", "SELECT SiteName AS a, Type AS b, ID AS c, DateTime AS d FROM sites");
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0][0], "O'Hara's \"best\"");
  EXPECT_EQ(rows[0][1], "Web");
  EXPECT_EQ(rows[0][2], "1");
  EXPECT_NE(rows[0][3], "<Null>") << "the database dates the row itself";
}

TEST_F(StatementsTest, TheNewestSiteIsTheLastOfAllSites) {
  for (const char* name : {"b", "a", "c", "a"}) executeOnData(statements::addSite(name, "Web"));
  openDataRows(statements::allSites());
  frmMain.rsData->moveLast();
  EXPECT_EQ(frmMain.rsData->field("ID").toLong(), 4);
}

TEST_F(StatementsTest, SitesAreFoundByTheirTypeOnly) {
  executeOnData(statements::addSite("web", "Web"));
  executeOnData(statements::addSite("ftp", "Ftp"));
  openDataRows(statements::sitesOfType("Ftp"));
  ASSERT_FALSE(frmMain.rsData->eof());
  EXPECT_EQ(frmMain.rsData->field("SiteName").toText(), "ftp");
  frmMain.rsData->moveNext();
  EXPECT_TRUE(frmMain.rsData->eof());
}

TEST_F(StatementsTest, RowsOfACertificateMapperOrAFilterAreStoredAndNotReadAndANullClassPasses) {
  for (const char* nodeClass :
       {"'IIsCertMapper'", "'IIsFilters'", "'IIsFilter'", "'IIsWebVirtualDir'", "Null", "''"}) {
    executeOnData(
        "INSERT INTO Data (SiteNumber, Location, Name, Class, StringValue, ObjectValue) VALUES (7, '/" +
        std::string(nodeClass == std::string("Null") ? "none" : "x") + "', 'Path', " + nodeClass +
        ", 'd:\\a', '')");
  }
  openDataRows(statements::pathRows("7"));
  Texts read;
  for (; !frmMain.rsData->eof(); frmMain.rsData->moveNext()) {
    const Value nodeClass = frmMain.rsData->field("Class");
    read.push_back(nodeClass.isNull() ? "<Null>" : nodeClass.toText());
  }
  EXPECT_EQ(read, (Texts{"IIsWebVirtualDir", "<Null>", ""}));
}

TEST_F(StatementsTest, PathRowsWithoutADirectoryAndOfOtherSitesAreNotRead) {
  executeOnData("INSERT INTO Data (SiteNumber, Name, StringValue) VALUES (7, 'Path', '')");
  executeOnData("INSERT INTO Data (SiteNumber, Name, StringValue) VALUES (8, 'Path', 'd:\\a')");
  executeOnData("INSERT INTO Data (SiteNumber, Name, StringValue) VALUES (7, 'AppRoot', 'd:\\a')");
  openDataRows(statements::pathRows("7"));
  EXPECT_TRUE(frmMain.rsData->eof());
}

TEST_F(StatementsTest, ALongListOfSeveralLinesIsStoredWhole) {
  std::string list;
  for (int i = 0; i < 2000; ++i) list += "entry " + std::to_string(i) + "\r\n";
  executeOnData(statements::addStoredBindings(7, "", "ServerBindings", list));
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT ObjectValue AS a, DataType AS b FROM DATA"),
            (Rows{{list, "8204"}}));
}

TEST_F(StatementsTest, WorkingRowsComeBackInTheOrderOfTheirIndexByKind) {
  executeOnSettings(statements::addDirectoryRow(0, 1, "/ROOT/b", "d:\\b"));
  executeOnSettings(statements::addDirectoryRow(0, 0, "/ROOT/a", "d:\\a"));
  executeOnSettings(statements::addDirectoryRow(1, 0, "/ROOT/other", "d:\\c"));
  executeOnSettings(statements::addBindingRow(0, 0, ":80:"));
  executeOnSettings(statements::addSslBindingRow(0, 0, ":443:"));
  openSettingsRows(statements::directoryRows(0));
  Texts folders;
  for (; !frmMain.rsSettings->eof(); frmMain.rsSettings->moveNext()) {
    folders.push_back(frmMain.rsSettings->field("Folder").toText());
  }
  EXPECT_EQ(folders, (Texts{"/ROOT/a", "/ROOT/b"}));
}

TEST_F(StatementsTest, ABindingRowStartsWithItsNewValueEqualToTheOld) {
  executeOnSettings(statements::addBindingRow(0, 0, "10.0.0.1:80:www"));
  EXPECT_EQ(
      query("Trelvin.mdb", "SELECT OldIP AS a, NewIP AS b, Folder AS c, OldSSLIP AS d FROM tmpSettings"),
      (Rows{{"10.0.0.1:80:www", "10.0.0.1:80:www", "<Null>", "<Null>"}}));
}

TEST_F(StatementsTest, ADirectoryToCopyHoldsItsFlagAsATruthValue) {
  executeOnSettings(statements::addFileToCopy(2, 0, "d:\\web", "True"));
  executeOnSettings(statements::addFileToCopy(2, 1, "d:\\web\\a", "False"));
  EXPECT_EQ(query("Trelvin.mdb", "SELECT FileName AS a FROM tmpFilesToCopy WHERE Copy ORDER BY DirNum"),
            (Rows{{"d:\\web"}}));
}

}  // namespace
}  // namespace trelvin::test
