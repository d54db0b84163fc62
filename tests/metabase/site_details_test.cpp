// Reading what can change on a site's way from a server.
#include "metabase/site_details.h"

#include <gtest/gtest.h>

#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

constexpr const char* kNoPath =
    "Could not retreive directory information from IIS for this site - this export will fail";

class SiteDetailsTest : public SitesTest {
 protected:
  void addTwoSites() {
    addWebServer(webSite("1", {{"ServerComment", "One"},
                               {"ServerBindings", asList({":80:", "10.0.0.1:8080:www.example.com"})},
                               {"SecureBindings", ":443:"}}) +
                 webDirectory("1/ROOT", "d:\\one") + webDirectory("1/ROOT/images", "e:\\images") +
                 webSite("2", {{"ServerComment", "Two"}, {"ServerBindings", ":81:"}}) +
                 webDirectory("2/ROOT", "d:\\two"));
    pressPopulate();
  }
  // One site with the root and these virtual directories below it, listed and selected.
  void selectSiteWith(const std::vector<std::pair<std::string, std::string>>& directories) {
    std::string elements = webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "d:\\root");
    for (const auto& [name, path] : directories) elements += webDirectory("1/ROOT/" + name, path);
    addWebServer(elements);
    pressPopulate();
    select(0);
  }
  // File and flag of each row, in their order.
  [[nodiscard]] Texts copyFlags() const {
    Texts flags;
    for (const std::vector<std::string>& row : filesToCopy()) flags.push_back(row[2] + " " + row[3]);
    return flags;
  }
};

TEST_F(SiteDetailsTest, ASelectionWritesTheSitesDirectoriesAndBindings) {
  addTwoSites();
  select(0);
  EXPECT_EQ(directoryRows(),
            (Rows{{"0", "0", "/ROOT", "d:\\one"}, {"0", "1", "/ROOT/images", "e:\\images"}}));
  EXPECT_EQ(bindingRows(),
            (Rows{{"0", "0", ":80:", ":80:"},
                  {"0", "1", "10.0.0.1:8080:www.example.com", "10.0.0.1:8080:www.example.com"}}));
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:", ":443:"}}));
  EXPECT_EQ(filesToCopy(), (Rows{{"0", "0", "d:\\one", "copy"}, {"0", "1", "e:\\images", "copy"}}));
}

TEST_F(SiteDetailsTest, DirectoriesAreWrittenBeforeBindingsAndBindingsBeforeSecureOnes) {
  addTwoSites();
  select(0);
  Texts kinds;
  for (const std::string& sql : databases.textsOf("Execute")) {
    if (sql.starts_with("INSERT")) kinds.push_back(sql.substr(0, sql.find(") VALUES")));
  }
  EXPECT_EQ(kinds, (Texts{"INSERT INTO tmpSettings (SiteID, ListIndex, Folder, Directory",
                          "INSERT INTO tmpSettings (SiteID, ListIndex, Folder, Directory",
                          "INSERT INTO tmpFilesToCopy (ListNum, DirNum, FileName, Copy",
                          "INSERT INTO tmpFilesToCopy (ListNum, DirNum, FileName, Copy",
                          "INSERT INTO tmpSettings (SiteID, ListIndex, OldIP, NewIP",
                          "INSERT INTO tmpSettings (SiteID, ListIndex, OldIP, NewIP",
                          "INSERT INTO tmpSettings (SiteID, ListIndex, OldSSLIP, NewSSLIP"}));
}

TEST_F(SiteDetailsTest, TheListsShowTheSelectedSite) {
  addTwoSites();
  select(0);
  EXPECT_EQ(entriesOf(frmMain.lstFolders(0)), (Texts{"/ROOT", "/ROOT/images"}));
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"d:\\one", "e:\\images"}));
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{":80:", "10.0.0.1:8080:www.example.com"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewIPs(0)), entriesOf(frmMain.lstOldIPs(0)));
  EXPECT_EQ(entriesOf(frmMain.lstOldSSLIPs(0)), (Texts{":443:"}));
  EXPECT_EQ(entriesOf(frmMain.lstFilesToCopy(0)), (Texts{"d:\\one", "e:\\images"}));
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (Texts{"True", "True"}));
  EXPECT_EQ(frmMain.iCurrentSite, 0);
}

TEST_F(SiteDetailsTest, WithSeveralLinesSelectedTheListsEndUpShowingTheLast) {
  addTwoSites();
  select(1);
  select(0);
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"d:\\two"}));
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{":81:"}));
  EXPECT_EQ(frmMain.lstOldSSLIPs(0).listCount(), 0);
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (Texts{"True", "True"})) << "of the site that was read last";
  EXPECT_EQ(frmMain.iCurrentSite, 1);
  unselect(1);
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"d:\\one", "e:\\images"}));
  EXPECT_EQ(frmMain.iCurrentSite, 0);
}

TEST_F(SiteDetailsTest, EachSitesRowsCarryItsLineAndCountFromNought) {
  addTwoSites();
  select(0);
  select(1);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\one"},
                                   {"0", "1", "/ROOT/images", "e:\\images"},
                                   {"1", "0", "/ROOT", "d:\\two"}}));
  EXPECT_EQ(bindingRows().back(), (std::vector<std::string>{"1", "0", ":81:", ":81:"}));
  EXPECT_EQ(filesToCopy().back(), (std::vector<std::string>{"1", "0", "d:\\two", "copy"}));
}

TEST_F(SiteDetailsTest, ASiteIsReadOncePerListing) {
  addTwoSites();
  select(0);
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{true, false}));
  executeOnSettings(
      "UPDATE tmpSettings SET Directory = 'x:\\edited' WHERE ListIndex = 0 AND Folder IS NOT NULL");
  const Rows before = allSettings();
  metabase->calls.clear();
  unselect(0);
  select(0);
  EXPECT_EQ(allSettings(), before);
  EXPECT_TRUE(metabase->calls.empty());
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"x:\\edited", "e:\\images"})) << "edits survive";
}

TEST_F(SiteDetailsTest, ANewListingReadsTheServerAnew) {
  addTwoSites();
  select(0);
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "f:\\moved"));
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "f:\\moved"}}));
}

TEST_F(SiteDetailsTest, UnselectingEveryLineChangesNoRowsAndShowsReady) {
  addTwoSites();
  select(0);
  const Rows settings = allSettings();
  const Rows files = filesToCopy();
  frmMain.StatusBar1.panel = "busy";
  frmMain.ProgressBar1.setValue(1);
  unselect(0);
  EXPECT_EQ(allSettings(), settings);
  EXPECT_EQ(filesToCopy(), files);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(frmMain.ProgressBar1.value(), 1) << "nothing was gone through";
}

TEST_F(SiteDetailsTest, BothExportButtonsAreOffWhileTheSitesAreRead) {
  addTwoSites();
  int looks = 0;
  metabase->rule = [&](const MetabaseCall&) -> std::optional<std::int32_t> {
    ++looks;
    EXPECT_FALSE(frmMain.cmdExportServer.enabled);
    EXPECT_FALSE(frmMain.cmdExportFile.enabled);
    EXPECT_EQ(frmMain.StatusBar1.panel, "Retrieving current settings for selected web sites...");
    return std::nullopt;
  };
  frmMain.cmdExportFile.enabled = false;
  select(0);
  EXPECT_GT(looks, 0);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
}

TEST_F(SiteDetailsTest, TheProgressBarCountsTheSelectedLines) {
  addTwoSites();
  select(0);
  std::vector<double> values;
  metabase->rule = [&](const MetabaseCall&) -> std::optional<std::int32_t> {
    EXPECT_EQ(frmMain.ProgressBar1.max(), 2);
    values.push_back(frmMain.ProgressBar1.value());
    return std::nullopt;
  };
  frmMain.ProgressBar1.setMax(50);
  frmMain.ProgressBar1.setValue(40);
  select(1);
  ASSERT_FALSE(values.empty());
  EXPECT_EQ(values.front(), 2) << "the second of two";
  EXPECT_EQ(frmMain.ProgressBar1.value(), 0);
}

TEST_F(SiteDetailsTest, ASiteWithItsRootAloneHasOneDirectory) {
  selectSiteWith({});
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\root"}}));
}

TEST_F(SiteDetailsTest, VirtualDirectoriesBelowPlainOnesAreFoundAndPlainOnesGiveNoRow) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "d:\\root") +
               element("IIsWebDirectory", "/LM/W3SVC/1/ROOT/plain") +
               webDirectory("1/ROOT/plain/virtual", "e:\\v") +
               element("IIsConfigObject", "/LM/W3SVC/1/ROOT/x") + webDirectory("1/ROOT/x/y", "e:\\y"));
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\root"},
                                   {"0", "1", "/ROOT/plain/virtual", "e:\\v"},
                                   {"0", "2", "/ROOT/x/y", "e:\\y"}}));
}

TEST_F(SiteDetailsTest, TheWalkGoesDepthFirst) {
  selectSiteWith({{"a", "e:\\a"}, {"a/deep", "e:\\deep"}, {"b", "e:\\b"}});
  Texts folders;
  for (const std::vector<std::string>& row : directoryRows()) folders.push_back(row[2]);
  EXPECT_EQ(folders, (Texts{"/ROOT", "/ROOT/a", "/ROOT/a/deep", "/ROOT/b"}));
}

TEST_F(SiteDetailsTest, AFolderBeginsBehindTheSitesPathWhateverItsLength) {
  addWebServer(webSite("1876", {{"ServerComment", "\xC3\x84"}}) + webDirectory("1876/ROOT", "d:\\root") +
               webDirectory("1876/ROOT/Stra\xC3\x9F"
                            "e",
                            "d:\\s"));
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\root"},
                                   {"0", "1",
                                    "/ROOT/Stra\xC3\x9F"
                                    "e",
                                    "d:\\s"}}));
}

TEST_F(SiteDetailsTest, QuotesInNamesPathsAndBindingsAreKept) {
  addWebServer(webSite("1", {{"ServerComment", "One"},
                             {"ServerBindings", ":80:o'hara"},
                             {"SecureBindings", ":443:o'hara"}}) +
               webDirectory("1/ROOT", "d:\\o'hara") + webDirectory("1/ROOT/it's", "e:\\''"));
  pressPopulate();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\o'hara"}, {"0", "1", "/ROOT/it's", "e:\\''"}}));
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":80:o'hara", ":80:o'hara"}}));
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:o'hara", ":443:o'hara"}}));
  EXPECT_EQ(filesToCopy(), (Rows{{"0", "0", "d:\\o'hara", "copy"}, {"0", "1", "e:\\''", "copy"}}));
}

TEST_F(SiteDetailsTest, ADirectoryBelowAnotherOfTheSiteIsNotCopiedByItself) {
  selectSiteWith({{"a", "d:\\root\\a"}, {"b", "e:\\b"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "d:\\root\\a not", "e:\\b copy"}));
}

TEST_F(SiteDetailsTest, TheOrderOfTheDirectoriesMakesNoDifference) {
  selectSiteWith({{"a", "e:\\x\\deep"}, {"b", "e:\\x"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "e:\\x\\deep not", "e:\\x copy"}));
}

TEST_F(SiteDetailsTest, CaseIsIgnoredWhenDirectoriesAreCompared) {
  selectSiteWith({{"a", "D:\\ROOT\\A"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "D:\\ROOT\\A not"}));
}

TEST_F(SiteDetailsTest, APartOfTheTextIsEnoughToCancelADirectory) {
  selectSiteWith({{"a", "c:\\web\\a"}, {"b", "c:\\web\\ab"}, {"c", "x:\\c:\\web\\a"}});
  EXPECT_EQ(copyFlags(),
            (Texts{"d:\\root copy", "c:\\web\\a copy", "c:\\web\\ab not", "x:\\c:\\web\\a not"}));
}

TEST_F(SiteDetailsTest, EqualDirectoriesCancelEachOther) {
  selectSiteWith({{"a", "e:\\same"}, {"b", "E:\\Same"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "e:\\same not", "E:\\Same not"}));
}

TEST_F(SiteDetailsTest, ACancelledDirectoryStillCancelsOthers) {
  selectSiteWith({{"a", "e:\\x"}, {"b", "e:\\x"}, {"c", "e:\\x\\y"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "e:\\x not", "e:\\x not", "e:\\x\\y not"}));
}

TEST_F(SiteDetailsTest, ADirectoryNamedFalseCancelsNoOther) {
  selectSiteWith({{"a", "False"}, {"b", "d:\\False"}, {"c", "x\\false\\y"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "False copy", "d:\\False copy", "x\\false\\y copy"}));
}

TEST_F(SiteDetailsTest, ADirectoryNamedFalseCanBeCancelled) {
  selectSiteWith({{"a", "als"}, {"b", "False"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root copy", "als copy", "False not"}));
}

TEST_F(SiteDetailsTest, AVirtualDirectoryWithoutAPathGetsNoFileRowAndOneLogLine) {
  selectSiteWith({{"a", ""}});
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\root"}, {"0", "1", "/ROOT/a", ""}}));
  EXPECT_EQ(filesToCopy().size(), 1U);
  EXPECT_EQ(timesLogged("Error, a virtual directory was found without a path set"), 1);
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(SiteDetailsTest, APathOfBlanksCountsAsNone) {
  selectSiteWith({{"a", "  "}});
  EXPECT_EQ(filesToCopy().size(), 1U);
  EXPECT_EQ(timesLogged("Error, a virtual directory was found without a path set"), 1);
}

TEST_F(SiteDetailsTest, AnEmptyPathOccursInEveryOtherAndCancelsThemAll) {
  selectSiteWith({{"a", ""}, {"b", "e:\\b"}});
  EXPECT_EQ(copyFlags(), (Texts{"d:\\root not", "e:\\b not"}));
}

TEST_F(SiteDetailsTest, AnEntryOfBlanksIsNotCancelled) {
  selectSiteWith({{"a", ""}, {"b", "  "}});
  EXPECT_EQ(entriesOf(frmMain.lstFilesToCopy(0)), (Texts{"d:\\root", "", "  "}));
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (Texts{"False", "True", "True"}));
}

TEST_F(SiteDetailsTest, RowsOfFilesKeepTheNumbersOfTheirEntries) {
  selectSiteWith({{"a", ""}, {"b", "e:\\b"}});
  EXPECT_EQ(filesToCopy(), (Rows{{"0", "0", "d:\\root", "not"}, {"0", "2", "e:\\b", "not"}}));
}

TEST_F(SiteDetailsTest, AnFtpSiteHasNoSecureBindings) {
  addServer("web1", metabaseFile(ftpService() +
                                 ftpSite("1", {{"ServerComment", "Files"}, {"ServerBindings", ":21:"}}) +
                                 element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "d:\\ftp"}})));
  frmMain.optExportFTP.setValue(true);
  pressPopulate();
  frmMain.lstOldSSLIPs(0).addItem("left over");
  metabase->calls.clear();
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\ftp"}}));
  EXPECT_EQ(bindingRows(), (Rows{{"0", "0", ":21:", ":21:"}}));
  EXPECT_TRUE(sslRows().empty());
  EXPECT_EQ(frmMain.lstOldSSLIPs(0).listCount(), 0);
  for (const MetabaseCall& call : metabase->calls) EXPECT_NE(call.argument, "SecureBindings");
}

TEST_F(SiteDetailsTest, ASiteIsBoundOnceForItsDirectoriesAndOnceForItsBindings) {
  addTwoSites();
  metabase->calls.clear();
  select(0);
  EXPECT_EQ(boundPaths(), (Texts{"IIS://web1/W3SVC/1", "IIS://web1/W3SVC/1"}));
}

TEST_F(SiteDetailsTest, BindingsThatCannotBeReadGiveNoRows) {
  addTwoSites();
  metabase->failOn("Get", "W3SVC/1", "ServerBindings", error_number::kAccessDenied);
  select(0);
  EXPECT_TRUE(bindingRows().empty());
  EXPECT_EQ(frmMain.lstOldIPs(0).listCount(), 0);
  EXPECT_EQ(sslRows().size(), 1U);
  EXPECT_EQ(directoryRows().size(), 2U);
}

TEST_F(SiteDetailsTest, ASiteWithoutBindingsHasNoRowsOfThem) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "d:\\root"));
  pressPopulate();
  select(0);
  EXPECT_TRUE(bindingRows().empty());
  EXPECT_TRUE(sslRows().empty());
}

TEST_F(SiteDetailsTest, APathThatCannotBeReadIsToldAndLoggedAndTheWalkGoesOn) {
  addTwoSites();
  metabase->failOn("Get", "1/ROOT", "Path", error_number::kAdsPropertyNotSupported);
  select(0);
  EXPECT_EQ(boxes(), (Texts{kNoPath}));
  EXPECT_EQ(
      timesLogged("Error during popdir -2147463162 The directory property cannot be found in the cache. "
                  "IIS://web1/W3SVC/1/ROOT"),
      1);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT/images", "e:\\images"}}));
}

TEST_F(SiteDetailsTest, InASilentRunAnUnreadablePathIsALineOfTheOutputList) {
  addTwoSites();
  run.bRunSilent = true;
  metabase->failOn("Get", "ROOT/images", "Path", error_number::kAccessDenied);
  select(0);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(output, (Texts{kNoPath}));
}

TEST_F(SiteDetailsTest, AFailureInOneChildIsForgottenBeforeTheNext) {
  addTwoSites();
  metabase->failOn("Get", "1/ROOT", "Path", error_number::kAccessDenied);
  run.bDebug = true;
  select(0);
  for (const std::string& line : logLines()) EXPECT_FALSE(line.starts_with("POP Err")) << line;
}

TEST_F(SiteDetailsTest, AFailureInOneChildIsForgottenAtTheNextWhateverItsClass) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webDirectory("1/ROOT", "d:\\one") +
               element("IIsWebDirectory", "/LM/W3SVC/1/ROOT/plain"));
  pressPopulate();
  metabase->failOn("Get", "1/ROOT", "Path", error_number::kAccessDenied);
  select(0);
  EXPECT_EQ(boxes().front(), kNoPath);
  EXPECT_FALSE(Err.isSet());
}

TEST_F(SiteDetailsTest, TheListsAreEmptiedBeforeASiteIsRead) {
  addTwoSites();
  const std::vector<ListControl*> lists{&frmMain.lstFolders(0),   &frmMain.lstDirectories(0),
                                        &frmMain.lstOldIPs(0),    &frmMain.lstNewIPs(0),
                                        &frmMain.lstOldSSLIPs(0), &frmMain.lstNewSSLIPs(0)};
  for (ListControl* list : lists) list->addItem("stale");
  frmMain.DBSettings->close();  // so that nothing is displayed behind the reading
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kObjectIsClosed);
  EXPECT_EQ(frmMain.lstFolders(0).listCount(), 0);
  EXPECT_EQ(frmMain.lstDirectories(0).listCount(), 0);
  frmMain.DBSettings->open(frmMain.sSettingsConnection);
  databases.failOn("OpenRows", "tmpSettings", error_number::kUnspecified);
  unselect(0);
  select(0);
  EXPECT_EQ(logLines().back(), "frmMain_ShowList Error -2147467259 Unspecified error");
  for (const ListControl* list : lists) EXPECT_EQ(list->listCount(), 0) << list->name;
}

TEST_F(SiteDetailsTest, AChildWhoseClassCannotBeReadIsTakenForAVirtualDirectory) {
  addTwoSites();
  metabase->failOn("Class", "ROOT/images", "", error_number::kAccessDenied);
  select(0);
  EXPECT_EQ(directoryRows().size(), 2U);
}

TEST_F(SiteDetailsTest, ANodeThatCannotBeEnumeratedIsPassedOver) {
  addTwoSites();
  metabase->failOn("enumerate", "1/ROOT", "", error_number::kAccessDenied);
  select(0);
  EXPECT_EQ(directoryRows(), (Rows{{"0", "0", "/ROOT", "d:\\one"}}));
  EXPECT_EQ(bindingRows().size(), 2U);
}

TEST_F(SiteDetailsTest, ADirectoryRowThatCannotBeWrittenIsADebugLineAndItsFileIsCopiedAllTheSame) {
  addTwoSites();
  databases.failOn("Execute", "'/ROOT/images'", error_number::kUnspecified);
  run.bDebug = true;
  select(0);
  EXPECT_EQ(timesLogged("POP Err -2147467259 - Unspecified error"), 1);
  EXPECT_EQ(directoryRows().size(), 1U);
  EXPECT_EQ(filesToCopy().size(), 2U);
  EXPECT_EQ(frmMain.abDetailsRead[0], true);
}

TEST_F(SiteDetailsTest, WithoutTheDebugFlagARowThatCannotBeWrittenLeavesNoTrace) {
  addTwoSites();
  databases.failOn("Execute", "'/ROOT/images'", error_number::kUnspecified);
  const std::size_t before = logLines().size();
  select(0);
  EXPECT_EQ(logLines().size(), before);
}

TEST_F(SiteDetailsTest, ASiteThatHasGoneFromTheServerGoesToTheCaller) {
  addTwoSites();
  addWebServer(webSite("2", {{"ServerComment", "Two"}}));
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kMetabasePathNotFound);
  EXPECT_FALSE(frmMain.abDetailsRead[0]);
}

TEST_F(SiteDetailsTest, AFileRowThatCannotBeWrittenGoesToTheCaller) {
  addTwoSites();
  databases.failOn("Execute", "INSERT INTO tmpFilesToCopy", error_number::kUnspecified);
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kUnspecified);
}

TEST_F(SiteDetailsTest, ABindingRowThatCannotBeWrittenGoesToTheCaller) {
  addTwoSites();
  databases.failOn("Execute", "NewIP", error_number::kUnspecified);
  EXPECT_EQ(numberOfFailure([] { select(0); }), error_number::kUnspecified);
}

TEST_F(SiteDetailsTest, DebugLinesFollowTheWholeOfTheReading) {
  addWebServer(
      webSite("1", {{"ServerComment", "One"}, {"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}) +
      webDirectory("1/ROOT", "d:\\one"));
  pressPopulate();
  run.bDebug = true;
  const std::size_t before = logLines().size();
  select(0);
  const Texts lines = logLines();
  EXPECT_EQ(Texts(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
            (Texts{"Retrieving current settings for selected web sites... 1", "Site 0 selected",
                   "Initialisting 0 selected",
                   "Detecting path - dirObj ADSPath = IIS://web1/W3SVC/1/ROOT, IIS://web1/W3SVC/1 - 18",
                   statements::addDirectoryRow(0, 0, "/ROOT", "d:\\one"),
                   statements::addFileToCopy(0, 0, "d:\\one", "True"),
                   statements::addBindingRow(0, 0, ":80:"), statements::addSslBindingRow(0, 0, ":443:"),
                   statements::directoryRows(0), statements::bindingRows(0), statements::sslBindingRows(0)}));
}

TEST_F(SiteDetailsTest, TheDebugLineOfTheStartCountsAllLinesAndNotTheSelectedOnes) {
  addTwoSites();
  run.bDebug = true;
  select(1);
  EXPECT_TRUE(hasLogged("Retrieving current settings for selected web sites... 2"));
  EXPECT_TRUE(hasLogged("Site 1 selected"));
  EXPECT_FALSE(hasLogged("Site 0 selected"));
}

TEST_F(SiteDetailsTest, AReadSiteIsAnnouncedAndNotReadAgain) {
  addTwoSites();
  select(0);
  run.bDebug = true;
  select(1);
  EXPECT_EQ(timesLogged("Site 0 selected"), 1);
  EXPECT_EQ(timesLogged("Initialisting 0 selected"), 0);
  EXPECT_EQ(timesLogged("Initialisting 1 selected"), 1);
  EXPECT_EQ(timesLogged(statements::directoryRows(0)), 1) << "a debug log shows every statement";
}

TEST_F(SiteDetailsTest, ASiteWithoutDirectoriesIsToldEachTimeItIsShown) {
  addWebServer(webSite("1", {{"ServerComment", "One"}}) + webSite("2", {{"ServerComment", "Two"}}));
  pressPopulate();
  select(0);
  EXPECT_EQ(dialogs->shown.size(), 1U);
  select(1);
  EXPECT_EQ(dialogs->shown.size(), 3U) << "both lines are shown again";
}

TEST_F(SiteDetailsTest, SelectingManySitesOneByOneReadsEachOnceAndShowsTheLast) {
  std::string elements;
  for (int i = 1; i <= 30; ++i) {
    const std::string number = std::to_string(i);
    elements += webSite(number, {{"ServerComment", "Site " + number}}) +
                webDirectory(number + "/ROOT", "d:\\" + number);
  }
  addWebServer(elements);
  pressPopulate();
  metabase->calls.clear();
  for (std::int32_t line = 0; line < frmMain.lstSites.listCount(); ++line) select(line);
  EXPECT_EQ(boundPaths().size(), 60U);
  EXPECT_EQ(directoryRows().size(), 30U);
  EXPECT_EQ(frmMain.iCurrentSite, 29);
  EXPECT_EQ(frmMain.lstDirectories(0).listCount(), 1);
  EXPECT_EQ(frmMain.lstDirectories(0).list(0), directoryRows().back()[3]);
}

TEST_F(SiteDetailsTest, WithAnUnknownSourceASelectionDoesNothing) {
  addTwoSites();
  frmMain.sImportType = "Tape";
  select(0);
  EXPECT_TRUE(allSettings().empty());
}

class NewDirectoryTest : public SiteDetailsTest {
 protected:
  static void addPair(const char* folder, const char* directory) {
    frmMain.lstFolders(0).addItem(folder);
    frmMain.lstDirectories(0).addItem(directory);
  }
};

TEST_F(NewDirectoryTest, IsTheOneBesideTheFolder) {
  addPair("/ROOT", "d:\\new");
  addPair("/ROOT/images", "e:\\new");
  EXPECT_EQ(getNewDir("/ROOT"), "d:\\new");
  EXPECT_EQ(getNewDir("/ROOT/images"), "e:\\new");
}

TEST_F(NewDirectoryTest, IsEmptyWithoutAMatch) {
  addPair("/ROOT", "d:\\new");
  EXPECT_EQ(getNewDir("/ROOT/other"), "");
  EXPECT_EQ(getNewDir(""), "");
}

TEST_F(NewDirectoryTest, TheFolderHasToBeEqualInCaseToo) {
  addPair("/ROOT", "d:\\new");
  EXPECT_EQ(getNewDir("/Root"), "");
  EXPECT_EQ(getNewDir("/ROOT/"), "");
}

TEST_F(NewDirectoryTest, TheLastMatchWinsEvenWhenItIsEmpty) {
  addPair("/ROOT", "d:\\first");
  addPair("/ROOT", "d:\\second");
  EXPECT_EQ(getNewDir("/ROOT"), "d:\\second");
  frmMain.lstFolders(0).addItem("/ROOT");
  EXPECT_EQ(getNewDir("/ROOT"), "") << "there is no directory beside the last one";
}

TEST_F(NewDirectoryTest, AFailureIsLoggedUnderItsLabelAndGivesAnEmptyText) {
  addPair("/ROOT", "d:\\new");
  run.bDebug = true;
  watchFiles().refuses = [](const std::string& line) { return line.find("GetNewDir") != std::string::npos; };
  EXPECT_EQ(getNewDir("/ROOT"), "");
  EXPECT_EQ(logLines().back(), "frmMain_getNewDir Error 75 Path/File access error");
}

TEST_F(NewDirectoryTest, HasADebugLine) {
  getNewDir("/ROOT");
  EXPECT_FALSE(hasLogged("GetNewDir /ROOT"));
  run.bDebug = true;
  getNewDir("/ROOT");
  EXPECT_TRUE(hasLogged("GetNewDir /ROOT"));
}

}  // namespace
}  // namespace trelvin::test
