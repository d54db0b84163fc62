// Filling the list of sites from a server and from the data database.
#include "metabase/site_listing.h"

#include <gtest/gtest.h>

#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

constexpr const char* kNoDirectories =
    "Could not retreive directory information from the DB for this site - this export will fail";

class ServerListingTest : public SitesTest {
 protected:
  void addThreeSites() {
    addWebServer(webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "d:\\one") +
                 webSite("2", {{"ServerComment", "Two"}}) + webSite("3", {{"ServerComment", "Three"}}) +
                 element("IIsFilters", "/LM/W3SVC/Filters") + element("IIsWebInfo", "/LM/W3SVC/Info"));
  }
};

TEST_F(ServerListingTest, ListsTheSitesInTheServersOrderWithTheirPaths) {
  addThreeSites();
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One", "Two", "Three"}));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes),
            (Texts{"IIS://web1/W3SVC/1", "IIS://web1/W3SVC/2", "IIS://web1/W3SVC/3"}));
  EXPECT_EQ(frmMain.iSiteCount, 3);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false, false, false}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from host...", "Done"}));
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ServerListingTest, NeverSortsTheSites) {
  addWebServer(webSite("1", {{"ServerComment", "Zebra"}}) + webSite("2", {{"ServerComment", "Ant"}}));
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"Zebra", "Ant"}));
}

TEST_F(ServerListingTest, FtpSitesAreListedWhenTheyAreChosen) {
  addServer("web1", metabaseFile(webService() + webSite("1", {{"ServerComment", "Web"}}) + ftpService() +
                                 ftpSite("1", {{"ServerComment", "Files"}})));
  frmMain.optExportFTP.setValue(true);
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"Files"}));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes), (Texts{"IIS://web1/MSFTPSVC/1"}));
}

TEST_F(ServerListingTest, AfterAChangeOfTheKindTheListHasToBeMadeAgain) {
  addThreeSites();
  pressPopulate();
  frmMain.optExportFTP.setValue(true);
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  frmMain.optExportWeb.setValue(true);
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 3);
}

TEST_F(ServerListingTest, TheLocalProviderIsWarmedUpBeforeTheServerIsBound) {
  addThreeSites();
  pressPopulate();
  EXPECT_EQ(boundPaths(), (Texts{"IIS://Localhost/W3SVC", "IIS://web1/W3SVC"}));
}

TEST_F(ServerListingTest, AFailureOfTheWarmUpIsForgottenWhateverItWas) {
  addThreeSites();
  metabase->failOn("GetObject", "Localhost/W3SVC", "", error_number::kCannotCreateObject);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 3);
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ServerListingTest, WithoutAServersNameItSaysSoAndEndsAsUsual) {
  addThreeSites();
  pressPopulate();
  frmMain.txtImportServer.text = "";
  metabase->calls.clear();
  pressPopulate();
  EXPECT_EQ(boxes(), (Texts{"You must enter a server to import from first!"}));
  EXPECT_TRUE(metabase->calls.empty());
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 0);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(logLines().back(), "Done");
}

TEST_F(ServerListingTest, WithoutAServersNameTheFormerWorkingRowsStay) {
  executeOnSettings(statements::addBindingRow(0, 0, ":80:"));
  frmMain.iSiteCount = 2;
  frmMain.txtImportServer.text = "";
  pressPopulate();
  EXPECT_EQ(bindingRows().size(), 1U);
  EXPECT_EQ(frmMain.iSiteCount, 2);
}

TEST_F(ServerListingTest, AMissingProviderIsToldInPlainWordsAndLoggedInOthers) {
  addThreeSites();
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kCannotCreateObject);
  pressPopulate();
  EXPECT_EQ(boxes(),
            (Texts{"Sorry, could not connect to that server. Ensure you can see it on the local network."}));
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from host...",
                                  "Import server not found while trying to list sites"}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Getting list of web sites from host...");
}

TEST_F(ServerListingTest, InASilentRunAFailedConnectionIsALineOfTheOutputListAndStillLogged) {
  run.bRunSilent = true;
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kCannotCreateObject);
  pressPopulate();
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(output,
            (Texts{"Sorry, could not connect to that server. Ensure you can see it on the local network."}));
  EXPECT_TRUE(hasLogged("Import server not found while trying to list sites"));
}

TEST_F(ServerListingTest, AnyOtherFailureToConnectIsToldWithItsNumberInBothForms) {
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(boxes(), (Texts{"Error - -2147024891 80070005 Access is denied. "}));
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from host...",
                   "frmMain_populateFromServer Error AL -2147024891 80070005 Access is denied. "}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Getting list of web sites from host...");
}

TEST_F(ServerListingTest, AServerThatIsNotThereIsToldOnceAndNotTriedAgain) {
  frmMain.txtImportServer.text = "nowhere";
  pressPopulate();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_TRUE(dialogs->shown[0].text.starts_with("Error - -2147023174 800706BA ")) << dialogs->shown[0].text;
  EXPECT_EQ(boundPaths(), (Texts{"IIS://Localhost/W3SVC", "IIS://nowhere/W3SVC"}));
}

TEST_F(ServerListingTest, AServerThatKnowsOnlyTheLowerCaseServiceIsTriedAgain) {
  addThreeSites();
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kMetabasePathNotFound);
  pressPopulate();
  EXPECT_EQ(boundPaths(), (Texts{"IIS://Localhost/W3SVC", "IIS://web1/W3SVC", "IIS://web1/w3svc"}));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes),
            (Texts{"IIS://web1/w3svc/1", "IIS://web1/w3svc/2", "IIS://web1/w3svc/3"}));
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
}

TEST_F(ServerListingTest, AServiceThatIsThereInNeitherCaseIsReported) {
  addServer("web1", metabaseFile(ftpService()));
  pressPopulate();
  EXPECT_EQ(boundPaths(), (Texts{"IIS://Localhost/W3SVC", "IIS://web1/W3SVC", "IIS://web1/w3svc"}));
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_TRUE(dialogs->shown[0].text.starts_with("Error - -2147024893 80070003 ")) << dialogs->shown[0].text;
  EXPECT_TRUE(logLines().back().starts_with("frmMain_populateFromServer Error AL -2147024893 80070003 "));
}

TEST_F(ServerListingTest, OnlyTheOneNumberIsTriedAgainAndTheSecondTryIsReportedByItsOwn) {
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kMetabasePathNotFound);
  metabase->failOn("GetObject", "web1/w3svc", "", error_number::kCannotCreateObject);
  pressPopulate();
  EXPECT_EQ(boxes(), (Texts{"Error - 429 1AD ActiveX component can't create object"}));
  EXPECT_FALSE(hasLogged("Import server not found while trying to list sites"));
}

TEST_F(ServerListingTest, AFailedConnectionEmptiesTheListsAndLeavesTheWorkingRows) {
  addThreeSites();
  pressPopulate();
  executeOnSettings(statements::addBindingRow(0, 0, ":80:"));
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 0);
  EXPECT_EQ(bindingRows().size(), 1U);
  EXPECT_EQ(frmMain.iSiteCount, 3);
}

TEST_F(ServerListingTest, BothExportButtonsAreOffMeanwhileAndOnAgainWhateverHappened) {
  addThreeSites();
  int looks = 0;
  events->onYield = [&](int) {
    ++looks;
    EXPECT_FALSE(frmMain.cmdExportServer.enabled);
    EXPECT_FALSE(frmMain.cmdExportFile.enabled);
  };
  frmMain.cmdExportFile.enabled = false;
  pressPopulate();
  EXPECT_GT(looks, 0);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
}

TEST_F(ServerListingTest, TheButtonsComeOnEvenWhenTheListingItselfFails) {
  watchFiles().refuses = [](const std::string& line) {
    return line.find("Getting list") != std::string::npos;
  };
  EXPECT_EQ(numberOfFailure([] { pressPopulate(); }), 75);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
}

TEST_F(ServerListingTest, WithoutItsButtonAFailedListingLeavesTheExportButtonsOff) {
  metabase->failOn("GetObject", "web1/W3SVC", "", error_number::kAccessDenied);
  populateFromServer();
  EXPECT_FALSE(frmMain.cmdExportServer.enabled);
  EXPECT_FALSE(frmMain.cmdExportFile.enabled);
}

TEST_F(ServerListingTest, WithoutItsButtonACompleteListingTurnsThemOn) {
  addThreeSites();
  frmMain.cmdExportFile.enabled = frmMain.cmdExportServer.enabled = false;
  populateFromServer();
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
}

TEST_F(ServerListingTest, GivesWayToTheWindowSystemForEachChildOfTheService) {
  addThreeSites();
  pressPopulate();
  EXPECT_EQ(events->yields, 5);
  EXPECT_EQ(events->beeps, 0);
}

TEST_F(ServerListingTest, TheListIsRefreshedAfterEachSite) {
  addThreeSites();
  std::vector<std::int32_t> counts;
  frmMain.lstSites.onRefresh = [&] { counts.push_back(frmMain.lstSites.listCount()); };
  pressPopulate();
  EXPECT_EQ(counts, (std::vector<std::int32_t>{1, 2, 3}));
}

TEST_F(ServerListingTest, AServerWithoutSitesOfTheKindGivesEmptyListsAndNoMessage) {
  addServer("web1", metabaseFile(webService() + element("IIsWebInfo", "/LM/W3SVC/Info")));
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 0);
  EXPECT_EQ(frmMain.iSiteCount, 0);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from host...", "Done"}));
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ServerListingTest, AnEmptyNameGivesAnEmptyLineThatCanBeSelected) {
  addWebServer(webSite("1", {}) + webSite("2", {{"ServerComment", "Two"}}));
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"", "Two"}));
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 2);
  frmMain.sImportType = "";  // nothing is read
  select(0);
  EXPECT_TRUE(frmMain.lstSites.selected(0));
}

TEST_F(ServerListingTest, OtherChildrenAreNotCounted) {
  addWebServer(element("IIsFilters", "/LM/W3SVC/0Filters") + webSite("1", {{"ServerComment", "One"}}) +
               element("IIsWebInfo", "/LM/W3SVC/1Info") + webSite("2", {{"ServerComment", "Two"}}));
  run.bDebug = true;
  pressPopulate();
  EXPECT_EQ(frmMain.iSiteCount, 2);
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from host...", "DELETE FROM tmpSettings",
                   "DELETE FROM tmpFilesToCopy", "Found IIsFilters - 0", "Found IIsWebServer - 0",
                   "Adding IIsWebServer - 0", "One", "Found IIsWebInfo - 1", "Found IIsWebServer - 1",
                   "Adding IIsWebServer - 1", "Two", "Done"}));
}

TEST_F(ServerListingTest, AListingThrowsTheFormerOneAwayWithAllItsEdits) {
  addThreeSites();
  pressPopulate();
  select(0);
  ASSERT_FALSE(directoryRows().empty());
  ASSERT_FALSE(filesToCopy().empty());
  pressPopulate();
  EXPECT_TRUE(allSettings().empty());
  EXPECT_TRUE(filesToCopy().empty());
  EXPECT_EQ(frmMain.iSiteCount, 3);
  EXPECT_EQ(frmMain.lstSites.listCount(), 3);
  EXPECT_EQ(frmMain.lstSites.selCount(), 0);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false, false, false}));
}

TEST_F(ServerListingTest, NoSiteCountsAsReadInANewListing) {
  addWebServer("");
  frmMain.abDetailsRead = {true, true};
  pressPopulate();
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
  addWebServer(webSite("1", {}));
  frmMain.abDetailsRead = {true, true};
  pressPopulate();
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
}

TEST_F(ServerListingTest, TheWorkingRowsGoInTheirOrder) {
  addThreeSites();
  pressPopulate();
  EXPECT_EQ(databases.textsOf("Execute"), (Texts{"DELETE FROM tmpSettings", "DELETE FROM tmpFilesToCopy"}));
}

TEST_F(ServerListingTest, TakingDownAListingOfOneSiteReadsItsRowsOnceMore) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}));
  pressPopulate();
  EXPECT_TRUE(dialogs->shown.empty());
  pressPopulate();
  EXPECT_EQ(boxes(), (Texts{kNoDirectories})) << "the site was never selected, so that it has no rows";
}

TEST_F(ServerListingTest, ASiteWhoseNameCannotBeReadShiftsTheTwoListsAndIsNamedByTheNextTest) {
  addThreeSites();
  metabase->failOn("Get", "W3SVC/2", "ServerComment", error_number::kAdsPropertyNotSupported);
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One", "Three"}));
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 3);
  EXPECT_EQ(frmMain.iSiteCount, 3);
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from host...",
                   "Error during populateFromServer -2147463162 - The directory property cannot be "
                   "found in the cache.",
                   "Done"}));
}

TEST_F(ServerListingTest, TheFirstSiteIsNotTestedAndItsFailureIsReportedWithTheSecond) {
  addThreeSites();
  metabase->failOn("Get", "W3SVC/1", "ServerComment", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(timesLogged("Error during populateFromServer -2147024891 - Access is denied. "), 1);
  EXPECT_EQ(frmMain.lstSites.listCount(), 2);
  EXPECT_FALSE(Err.isSet()) << "reported and cleared";
}

TEST_F(ServerListingTest, TheOnlySitesFailureStaysSet) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}));
  metabase->failOn("Get", "W3SVC/1", "ServerComment", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from host...", "Done"}));
  EXPECT_EQ(Err.number, error_number::kAccessDenied);
}

TEST_F(ServerListingTest, AWorkingTableThatIsMissingIsReportedWithTheSecondSite) {
  addThreeSites();
  executeOn("Trelvin.mdb", "DROP TABLE tmpFilesToCopy");
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 3);
  const Texts lines = newLogLines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_TRUE(lines[1].starts_with("Error during populateFromServer -2147217865 - ")) << lines[1];
}

TEST_F(ServerListingTest, AChildWhoseClassCannotBeReadIsTakenForASite) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webSite("2", {{"ServerComment", "Two"}}));
  metabase->failOn("Class", "W3SVC/2", "", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One", "Two"}));
  EXPECT_EQ(timesLogged("Error during populateFromServer -2147024891 - Access is denied. "), 1);
}

TEST_F(ServerListingTest, AServiceThatCannotBeEnumeratedGivesAnEmptyList) {
  addThreeSites();
  metabase->failOn("enumerate", "W3SVC", "", error_number::kAccessDenied);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(logLines().back(), "Done");
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ServerListingTest, ALogThatFailsDuringTheListingDoesNotStopIt) {
  addThreeSites();
  watchFiles().refuses = [](const std::string& line) { return line.find("Done") != std::string::npos; };
  populateFromServer();
  EXPECT_EQ(frmMain.lstSites.listCount(), 3);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

TEST_F(ServerListingTest, SitesAreCountedAnewEvenWhenTheFormerOnesCannotBeTakenDown) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}));
  pressPopulate();
  databases.failOn("OpenRows", "tmpSettings", error_number::kUnspecified);
  watchFiles().refuses = [](const std::string& line) {
    return line.find("CloseDownLists") != std::string::npos;
  };
  pressPopulate();
  EXPECT_EQ(frmMain.iSiteCount, 1);
}

TEST_F(ServerListingTest, ASecondPressDuringAListingListsWithinTheFirst) {
  addThreeSites();
  events->onYield = [&](int yield) {
    if (yield == 2) pressPopulate();
  };
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One", "Two", "Three", "Two", "Three"}));
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 5);
  EXPECT_EQ(frmMain.iSiteCount, 5);
  EXPECT_EQ(timesLogged("Done"), 2);
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
}

TEST_F(ServerListingTest, AnUnknownSourceListsNothing) {
  addThreeSites();
  frmMain.sImportType = "Tape";
  pressPopulate();
  EXPECT_TRUE(newLogLines().empty());
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

class DatabaseListingTest : public SitesTest {
 protected:
  DatabaseListingTest() { frmMain.TabImportType.select(2); }

  void store(const std::string& name, const std::string& type, const std::string& moment) const {
    executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type, DateTime) VALUES ('" + name + "', '" +
                                     type + "', '" + moment + "')");
  }
};

TEST_F(DatabaseListingTest, ListsNameDateAndTimeWithTheNumbersOfTheSites) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("News", "Web", "2004-12-24 08:00:00");
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"Shop 07.03.2004 14:05", "News 24.12.2004 08:00"}));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes), (Texts{"1", "2"}));
  EXPECT_EQ(frmMain.iSiteCount, 2);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false, false}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from database...", "Done"}));
  EXPECT_EQ(events->beeps, 1);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(DatabaseListingTest, TwoExportsOfOneSiteAreToldApartByDateAndTime) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("Shop", "Web", "2004-03-08 14:05:09");
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"Shop 07.03.2004 14:05", "Shop 08.03.2004 14:05"}));
}

TEST_F(DatabaseListingTest, ListsTheKindOfSiteThatIsChosen) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("Files", "Ftp", "2004-03-07 14:05:09");
  frmMain.optExportFTP.setValue(true);
  pressPopulate();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"Files 07.03.2004 14:05"}));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes), (Texts{"2"}));
}

TEST_F(DatabaseListingTest, ASiteNameWithAQuoteIsListedWhole) {
  executeOnData(statements::addSite("O'Hara's", "Web"));
  pressPopulate();
  ASSERT_EQ(frmMain.lstSites.listCount(), 1);
  EXPECT_TRUE(frmMain.lstSites.list(0).starts_with("O'Hara's "));
}

TEST_F(DatabaseListingTest, AnEmptyDatabaseIsToldAndLoggedAndLeftAtOnce) {
  pressPopulate();
  EXPECT_EQ(boxes(), (Texts{"No sites were found in the database"}));
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from database...", "No sites were found in the database"}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Getting list of web sites from database...");
  EXPECT_EQ(events->beeps, 0);
  EXPECT_FALSE(frmMain.rsData->isOpen());
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
}

TEST_F(DatabaseListingTest, WithoutItsButtonAnEmptyDatabaseLeavesTheExportButtonsOff) {
  frmMain.cmdExportServer.enabled = frmMain.cmdExportFile.enabled = true;
  populateFromDatabase();
  EXPECT_FALSE(frmMain.cmdExportServer.enabled);
  EXPECT_FALSE(frmMain.cmdExportFile.enabled);
}

TEST_F(DatabaseListingTest, AnEmptyDatabaseLeavesTheWorkingRowsAndForgetsTheSiteCount) {
  executeOnSettings(statements::addBindingRow(0, 0, ":80:"));
  frmMain.iSiteCount = 2;
  pressPopulate();
  EXPECT_EQ(bindingRows().size(), 1U);
  EXPECT_EQ(frmMain.iSiteCount, 0);
}

TEST_F(DatabaseListingTest, EmptiesTheSettingsAndNotTheFilesToCopy) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  executeOnSettings(statements::addBindingRow(0, 0, ":80:"));
  executeOnSettings(statements::addFileToCopy(0, 0, "d:\\web", "True"));
  pressPopulate();
  EXPECT_TRUE(allSettings().empty());
  EXPECT_EQ(filesToCopy().size(), 1U);
}

TEST_F(DatabaseListingTest, ReplacesTheFormerListing) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  pressPopulate();
  frmMain.abDetailsRead[0] = true;
  store("News", "Web", "2004-03-07 14:05:09");
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 2);
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 2);
  EXPECT_EQ(frmMain.iSiteCount, 2);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false, false}));
}

TEST_F(DatabaseListingTest, NoSiteCountsAsReadInANewListing) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  frmMain.abDetailsRead = {true, true};
  pressPopulate();
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
}

TEST_F(DatabaseListingTest, StartsWithTheFirstRow) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  databases.calls.clear();
  pressPopulate();
  EXPECT_EQ(databases.textsOf("MoveFirst").size(), 1U);
  EXPECT_EQ(databases.textsOf("MoveNext").size(), 1U);
}

TEST_F(DatabaseListingTest, TheListIsRefreshedAfterEachSite) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("News", "Web", "2004-03-07 14:05:09");
  std::vector<std::int32_t> counts;
  frmMain.lstSites.onRefresh = [&] { counts.push_back(frmMain.lstSites.listCount()); };
  pressPopulate();
  EXPECT_EQ(counts, (std::vector<std::int32_t>{1, 2}));
}

TEST_F(DatabaseListingTest, DebugLinesShowTheStatements) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  run.bDebug = true;
  pressPopulate();
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from database...", "SELECT * FROM SITES WHERE (Type = 'Web') ",
                   "DELETE FROM tmpSettings", "Done"}));
}

TEST_F(DatabaseListingTest, WithAnErrorLeftOverTheDebugMarkersTellHowFarItCame) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("News", "Web", "2004-03-07 14:05:09");
  run.bDebug = true;
  Err.set(Failure(6));
  pressPopulate();
  EXPECT_EQ(newLogLines(),
            (Texts{"Getting list of web sites from database...", "SELECT * FROM SITES WHERE (Type = 'Web') ",
                   "After initial", "After movefirst", "DELETE FROM tmpSettings", "during loop",
                   "during loop", "at end", "Done"}));
}

TEST_F(DatabaseListingTest, OnlyTheLastMarkerGoesWithoutTheDebugFlag) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  Err.set(Failure(6));
  pressPopulate();
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from database...", "at end", "Done"}));
}

TEST_F(DatabaseListingTest, AFieldThatFailsIsLoggedAndTheNextStatementRuns) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("News", "Web", "2004-03-07 14:05:09");
  databases.failOn("Field", "SiteName", error_number::kItemNotFound);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 2);
  EXPECT_EQ(frmMain.iSiteCount, 2);
  EXPECT_EQ(
      timesLogged(
          "frmMain_populateFromDatabase Error 3265 Item cannot be found in the collection corresponding "
          "to the requested name or ordinal."),
      2);
  EXPECT_EQ(logLines().back(), "Done");
}

TEST_F(DatabaseListingTest, AFailingDatabaseGivesAnEmptyListAndALogLineForEachStatementThatFailed) {
  databases.failOn("OpenRows", "SITES", error_number::kUnspecified);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  const std::string closed =
      "frmMain_populateFromDatabase Error 3704 Operation is not allowed when the object is closed.";
  EXPECT_EQ(newLogLines(), (Texts{"Getting list of web sites from database...",
                                  "frmMain_populateFromDatabase Error -2147467259 Unspecified error", closed,
                                  "No sites were found in the database", closed}));
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

TEST_F(DatabaseListingTest, ASetThatCannotMoveOnEndsWithAPartialListAndALogLine) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  store("News", "Web", "2004-03-07 14:05:09");
  databases.failOn("MoveNext", "", error_number::kUnspecified);
  pressPopulate();
  EXPECT_EQ(frmMain.lstSites.listCount(), 1);
  EXPECT_EQ(timesLogged("frmMain_populateFromDatabase Error -2147467259 Unspecified error"), 1);
  EXPECT_EQ(logLines().back(), "Done");
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(DatabaseListingTest, ALogThatFailsAtTheStartIsLoggedAsFarAsPossibleAndTheListingGoesOn) {
  store("Shop", "Web", "2004-03-07 14:05:09");
  watchFiles().refuses = [](const std::string& line) {
    return line.find("Getting list") != std::string::npos;
  };
  pressPopulate();
  EXPECT_EQ(newLogLines().front(), "frmMain_populateFromDatabase Error 75 Path/File access error");
  EXPECT_EQ(frmMain.lstSites.listCount(), 1);
}

}  // namespace
}  // namespace trelvin::test
