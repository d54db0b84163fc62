// Reading what can change on a stored site's way.
#include <gtest/gtest.h>

#include "fakes/failures.h"
#include "metabase/site_details.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

class StoredSiteDetailsTest : public SitesTest {
 protected:
  StoredSiteDetailsTest() { frmMain.TabImportType.select(2); }

  void storeSite(const std::string& name) const {
    executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('" + name + "', 'Web')");
  }
  void storePath(const std::string& site, const std::string& location, const std::string& directory,
                 const std::string& nodeClass = "IIsWebVirtualDir") const {
    executeOn("TrelvinData.mdb",
              "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, StringValue) VALUES (" + site +
                  ", '" + location + "', 'Path', '" + nodeClass + "', 8, '" + directory + "')");
  }
  void storeBindings(const std::string& site, const std::string& property, const std::string& list,
                     const std::string& nodeClass = "Null") const {
    executeOn("TrelvinData.mdb",
              "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, ObjectValue) VALUES (" + site +
                  ", '', '" + property + "', " + nodeClass + ", 8204, " + list + ")");
  }
  void listOneSite() {
    storeSite("One");
    storePath("1", "/ROOT", "d:\\one");
    storeBindings("1", "ServerBindings", "':80:' || char(13, 10) || ':81:' || char(13, 10)");
    storeBindings("1", "SecureBindings", "':443:' || char(13, 10)");
    pressPopulate();
  }
};

TEST_F(StoredSiteDetailsTest, ASelectionWritesTheStoredDirectoriesAndBindings) {
  listOneSite();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\one"}}));
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":80:", ":80:"}, {"0", "1", ":81:", ":81:"}}));
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:", ":443:"}}));
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(StoredSiteDetailsTest, TheListsShowTheSelectedSite) {
  listOneSite();
  select(0);
  EXPECT_EQ(entriesOf(frmMain.lstFolders(0)), (Texts{"/ROOT"}));
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"d:\\one"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewIPs(0)), (Texts{":80:", ":81:"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewSSLIPs(0)), (Texts{":443:"}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(frmMain.ProgressBar1.value(), 0);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{true}));
}

TEST_F(StoredSiteDetailsTest, AStoredSiteHasNoContentToCopy) {
  executeOnSettings(statements::addFileToCopy(5, 0, "d:\\kept", "True"));
  frmMain.lstFilesToCopy(0).addItem("kept");
  listOneSite();
  select(0);
  EXPECT_EQ(filesToCopy(), (Rows{{"5", "0", "d:\\kept", "copy"}}));
  EXPECT_EQ(entriesOf(frmMain.lstFilesToCopy(0)), (Texts{"kept"}));
}

TEST_F(StoredSiteDetailsTest, RowsAreThoseOfTheStoredNumberUnderTheLineOfTheList) {
  storeSite("One");
  storeSite("Two");
  storePath("1", "/ROOT", "d:\\one");
  storePath("2", "/ROOT", "d:\\two");
  pressPopulate();
  select(1);
  EXPECT_EQ(directoryRows(), (Rows{{"1", "0", "/ROOT", "d:\\two"}}));
  EXPECT_EQ(frmMain.iCurrentSite, 1);
}

TEST_F(StoredSiteDetailsTest, SeveralDirectoriesAreNumberedInReadingOrder) {
  storeSite("One");
  storePath("1", "/ROOT", "d:\\one");
  storePath("1", "/ROOT/images", "e:\\o''hara");
  storePath("1", "/ROOT/empty", "");
  storePath("1", "/ROOT/filters", "e:\\f", "IIsFilters");
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(),
            (Rows{{"0", "0", "/ROOT", "d:\\one"}, {"0", "1", "/ROOT/images", "e:\\o'hara"}}));
}

TEST_F(StoredSiteDetailsTest, SeveralRowsOfBindingsAreAllReadAndTheirNumbersRunOn) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:' || char(13, 10)", "'IIsWebServer'");
  storeBindings("1", "ServerBindings", "':81:' || char(13, 10) || ':82:' || char(13, 10)");
  storeBindings("1", "SecureBindings", "':443:' || char(13, 10)", "'IIsWebServer'");
  storeBindings("1", "SecureBindings", "':444:' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_EQ(bindingRows(),
            (Rows{{"0", "0", ":80:", ":80:"}, {"0", "1", ":81:", ":81:"}, {"0", "2", ":82:", ":82:"}}));
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:", ":443:"}, {"0", "1", ":444:", ":444:"}}));
}

TEST_F(StoredSiteDetailsTest, BindingsOfFiltersAndCertificateMappersAreNotRead) {
  storeSite("One");
  for (const char* nodeClass : {"'IIsFilter'", "'IIsFilters'", "'IIsCertMapper'"}) {
    storeBindings("1", "ServerBindings", "':80:' || char(13, 10)", nodeClass);
    storeBindings("1", "SecureBindings", "':443:' || char(13, 10)", nodeClass);
  }
  pressPopulate();
  select(0);
  EXPECT_TRUE(bindingRows().empty());
  EXPECT_TRUE(sslRows().empty());
}

TEST_F(StoredSiteDetailsTest, BindingsUnderAnotherSpellingOfTheNameAreNotRead) {
  storeSite("One");
  storeBindings("1", "serverbindings", "':80:' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_TRUE(bindingRows().empty());
}

TEST_F(StoredSiteDetailsTest, NumbersOfSecureBindingsBeginAnew) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:' || char(13, 10) || ':81:' || char(13, 10)");
  storeBindings("1", "SecureBindings", "':443:' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:", ":443:"}}));
}

TEST_F(StoredSiteDetailsTest, AListWithoutALineEndGivesNoBindings) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:'");
  pressPopulate();
  select(0);
  EXPECT_TRUE(bindingRows().empty());
}

TEST_F(StoredSiteDetailsTest, TextBehindTheLastLineEndIsDropped) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:' || char(13, 10) || ':81:'");
  pressPopulate();
  select(0);
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":80:", ":80:"}}));
}

TEST_F(StoredSiteDetailsTest, AnEmptyListGivesNoBindings) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "''");
  storeBindings("1", "SecureBindings", "Null");
  pressPopulate();
  select(0);
  EXPECT_TRUE(bindingRows().empty());
  EXPECT_TRUE(sslRows().empty());
}

TEST_F(StoredSiteDetailsTest, OnlyAWholeLineEndSeparatesBindings) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:' || char(10) || ':81:' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":80:\n:81:", ":80:\n:81:"}}));
}

TEST_F(StoredSiteDetailsTest, AnEmptyEntryOfAListIsABindingToo) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "char(13, 10) || ':80:' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", "", ""}, {"0", "1", ":80:", ":80:"}}));
}

TEST_F(StoredSiteDetailsTest, AQuoteInABindingIsKept) {
  storeSite("One");
  storeBindings("1", "ServerBindings", "':80:o''hara' || char(13, 10)");
  pressPopulate();
  select(0);
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":80:o'hara", ":80:o'hara"}}));
}

TEST_F(StoredSiteDetailsTest, AStoredSiteIsReadOncePerListing) {
  listOneSite();
  select(0);
  const Rows before = allSettings();
  databases.calls.clear();
  unselect(0);
  select(0);
  EXPECT_EQ(allSettings(), before);
  for (const std::string& sql : databases.textsOf("OpenRows"))
    EXPECT_EQ(sql.find("FROM DATA"), std::string::npos);
}

TEST_F(StoredSiteDetailsTest, UnselectingEveryLineShowsReadyAndReadsNothing) {
  listOneSite();
  select(0);
  frmMain.StatusBar1.panel = "busy";
  databases.calls.clear();
  unselect(0);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_TRUE(databases.calls.empty());
}

TEST_F(StoredSiteDetailsTest, StatusAndProgressShowTheReading) {
  storeSite("One");
  storeSite("Two");
  pressPopulate();
  Texts panels;
  std::vector<double> values;
  frmMain.sImportType = "";
  select(0);
  frmMain.sImportType = "Database";
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "OpenRows" && call.text.find("FROM DATA") != std::string::npos) {
      panels.push_back(frmMain.StatusBar1.panel);
      values.push_back(frmMain.ProgressBar1.value());
      EXPECT_EQ(frmMain.ProgressBar1.max(), 2);
    }
    return std::nullopt;
  };
  select(1);
  EXPECT_EQ(panels, Texts(6, "Retrieving current settings for web site"));
  EXPECT_EQ(values, (std::vector<double>{1, 1, 1, 2, 2, 2}));
  EXPECT_EQ(frmMain.ProgressBar1.value(), 0);
}

TEST_F(StoredSiteDetailsTest, TheExportButtonsAreLeftAlone) {
  listOneSite();
  databases.rule = [](const DatabaseCall&) -> std::optional<std::int32_t> {
    EXPECT_TRUE(frmMain.cmdExportServer.enabled);
    return std::nullopt;
  };
  select(0);
}

TEST_F(StoredSiteDetailsTest, DebugLinesShowTheStatementsInTheirOrder) {
  listOneSite();
  run.bDebug = true;
  const std::size_t before = logLines().size();
  select(0);
  const Texts lines = logLines();
  EXPECT_EQ(
      Texts(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
      (Texts{statements::pathRows("1"), statements::addDirectoryRow(0, 0, "/ROOT", "d:\\one"),
             statements::storedBindingRows("1", "ServerBindings"),
             statements::addStoredBindingRow(0, 0, ":80:"), statements::addStoredBindingRow(0, 1, ":81:"),
             statements::storedBindingRows("1", "SecureBindings"),
             statements::addStoredSslBindingRow(0, 0, ":443:"), statements::directoryRows(0),
             statements::bindingRows(0), statements::sslBindingRows(0)}));
}

TEST_F(StoredSiteDetailsTest, ARowThatCannotBeWrittenKeepsItsNumberAndIsADebugLine) {
  listOneSite();
  databases.failOn("Execute", "':80:'", error_number::kUnspecified);
  run.bDebug = true;
  select(0);
  EXPECT_EQ(bindingRows(), (Rows{{"0", "1", ":81:", ":81:"}}));
  EXPECT_EQ(timesLogged("POP Err -2147467259 - Unspecified error"), 1);
}

TEST_F(StoredSiteDetailsTest, ADirectoryRowThatCannotBeWrittenIsADebugLineToo) {
  listOneSite();
  databases.failOn("Execute", "'/ROOT'", error_number::kUnspecified);
  run.bDebug = true;
  select(0);
  EXPECT_TRUE(directoryRows().empty());
  EXPECT_EQ(timesLogged("POP Err -2147467259 - Unspecified error"), 1);
  EXPECT_EQ(bindingRows().size(), 2U);
}

TEST_F(StoredSiteDetailsTest, ADatabaseThatCannotBeReadGoesToTheCaller) {
  listOneSite();
  databases.failOn("OpenRows", "FROM DATA", error_number::kUnspecified);
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kUnspecified);
  EXPECT_FALSE(frmMain.abDetailsRead[0]);
}

struct BrokenReading {
  const char* name;
  const char* operation;
  const char* text;
};

class BrokenStoredSiteDetails : public StoredSiteDetailsTest,
                                public ::testing::WithParamInterface<BrokenReading> {};

TEST_P(BrokenStoredSiteDetails, GoToTheCallerAndCanBeReadLater) {
  listOneSite();
  databases.rule = [](const DatabaseCall& call) -> std::optional<std::int32_t> {
    const bool fails = call.operation == GetParam().operation && call.text == GetParam().text &&
                       frmMain.StatusBar1.panel == "Retrieving current settings for web site";
    return fails ? std::optional(error_number::kUnspecified) : std::nullopt;
  };
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kUnspecified);
  EXPECT_FALSE(frmMain.abDetailsRead[0]);
  EXPECT_TRUE(frmMain.rsData->isOpen()) << "the rows are in the middle";
  databases.rule = nullptr;
  unselect(0);
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\one"}}));
  EXPECT_EQ(bindingRows().size(), 2U);
  EXPECT_EQ(sslRows().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Statements, BrokenStoredSiteDetails,
                         ::testing::Values(BrokenReading{"Directory", "Field", "StringValue"},
                                           BrokenReading{"Bindings", "Field", "ObjectValue"},
                                           BrokenReading{"NextRow", "MoveNext", ""}),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(StoredSiteDetailsTest, AStoredSiteWithoutDirectoriesIsTold) {
  storeSite("One");
  pressPopulate();
  select(0);
  EXPECT_EQ(
      boxes(),
      (Texts{"Could not retreive directory information from the DB for this site - this export will fail"}));
}

}  // namespace
}  // namespace trelvin::test
