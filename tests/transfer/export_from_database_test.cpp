// Stored sites onto a server: the checks and ends of a run, the numbers, and the order of a site's work.
#include "transfer/export_from_database.h"

#include "core/err.h"
#include "core/run_state.h"
#include "database_to_server_fixture.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "transfer/export_frame.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kNoNumber = "Could not retreive a W3SVCNumber for the web site with DB ID ";
const std::string kStamp = "Trelvin: This web site was exported using Trelvin v4.1";

class DatabaseToServerRun : public DatabaseToServer {
 protected:
  void openOne() {
    storePlainSite("Shop", "7");
    openStored();
  }
  void openTwo(const std::string& target = webService("")) {
    storePlainSite("Shop", "7");
    storePlainSite("Wiki", "9");
    openStored(target);
  }
  // What the run shows is over and the buttons are back, without "Done!".
  static void expectEndWithoutAWord() {
    EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
    EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
    EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  }
  // How a site is shown in the list of stored sites: its name, then date and time.
  [[nodiscard]] static std::string lineOf(int index) { return frmMain.lstSites.list(index); }
};

// The button, and the checks before a run.

TEST_F(DatabaseToServerRun, TakesAServerForItsTargetBeforeAnythingElse) {
  openOne();
  frmMain.optExportFile.setValue(true);
  press();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
}

TEST_F(DatabaseToServerRun, AsksForASiteWhenNoneIsSelectedAndIsDoneAllTheSame) {
  openOne();
  frmMain.txtExportServer.text.clear();
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
  EXPECT_EQ(timesLogged("Exporting to server from file"), 0);
}

TEST_F(DatabaseToServerRun, AsksForAServerWhenNoneIsNamedAndIsDoneAllTheSame) {
  openOne();
  select({0});
  frmMain.txtExportServer.text.clear();
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please enter a server name to export to", "Done!"));
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
}

TEST_F(DatabaseToServerRun, EndsWithoutAWordWhenTheLongWarningIsAnsweredWithCancel) {
  openOne();
  select({0});
  const auto before = logLines();
  dialogs->answers = {Answer::kCancel};
  frmMain.cmdExportServer.onClick();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_THAT(dialogs->shown[0].text, StartsWith("You are about to export web sites"));
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(output, IsEmpty());
  EXPECT_THAT(callsOf({"GetObject"}), IsEmpty());
}

TEST_F(DatabaseToServerRun, EndsWithoutAWordWhenTheQuestionForTheWindowsFolderIsAnsweredWithCancel) {
  storePlainSite("Shop", "7");
  openStored(webService(""), 5, 6);
  select({0});
  dialogs->answers = {Answer::kOk, Answer::kCancel};
  frmMain.cmdExportServer.onClick();
  EXPECT_EQ(dialogs->shown.size(), 2U);
  EXPECT_EQ(timesLogged("Exporting to server from file"), 0);
  expectEndWithoutAWord();
}

TEST_F(DatabaseToServerRun, AddsThePairForTheWindowsFolderBeforeTheRowsAreRead) {
  storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\WINNT\\shop")});
  openStored(webService(""), 5, 6);
  select({0});
  dialogs->answers = {Answer::kOk, Answer::kYes};
  frmMain.cmdExportServer.onClick();
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\Windows\\shop");
}

TEST_F(DatabaseToServerRun, GoesOnWhenItsFirstLineCantBeLogged) {
  openOne();
  watchFiles().refuses = [](const std::string& bytes) {
    return bytes.find("Exporting to server from file") != std::string::npos;
  };
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_THAT(logStartingWith("frmMain_cmdExportServer_Click Error"), IsEmpty());
  EXPECT_THAT(logStartingWith("Error"), IsEmpty());
}

TEST_F(DatabaseToServerRun, GoesOnWhenNothingAtAllCanBeLogged) {
  openOne();
  FailingFiles& files = watchFiles();
  files.refuses = [](const std::string&) { return true; };
  exportSites({0});
  files.refuses = nullptr;
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\Shop");
  EXPECT_EQ(shownOutput().back(), "Done!");
}

// The order of a run.

TEST_F(DatabaseToServerRun, RebuildsASiteFromItsRowsAlone) {
  StoredRow bindings = ofSite("ServerBindings", "");
  bindings.type = kVarList;
  bindings.value = list({":80:", ":81:"});
  StoredRow flag = ofSite("ServerAutoStart", "");
  flag.type = kVarBoolean;
  flag.value = "1";
  StoredRow number = ofSite("ConnectionTimeout", "");
  number.type = kVarLong;
  number.value = "90";
  storeSite("Shop", {ofSite("ServerComment", "Shop"), bindings, flag, number,
                     ofVirtualDirectory("/ROOT", "C:\\shop"), ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"),
                     ofDirectory("/ROOT/images", ""), ofVirtualDirectory("/ROOT/images/big", "D:\\big")});
  openStored();
  exportSites({0});
  EXPECT_EQ(classOf("/W3SVC/1"), "IIsWebServer");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:|:81:");
  EXPECT_EQ(stored("/W3SVC/1", "ServerAutoStart"), "True");
  EXPECT_EQ(stored("/W3SVC/1", "ConnectionTimeout"), "90");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "x.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), kStamp);
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebDirectory");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images/big"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/images/big", "Path"), "D:\\big");
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(DatabaseToServerRun, SaysWhatItDoesInThisOrder) {
  openOne();
  exportSites({0});
  EXPECT_THAT(runLog(),
              ElementsAre("Exporting from IIS6 to IIS6", "False", "Checking to see if W3SVC1 exists..",
                          "Creating Web Site W3SVC1", "Transferring Properties...",
                          "Creating virtual directory /ROOT", "ExpObj = IIS://NEW1/W3SVC/1",
                          "Creating IIsWebVirtualDir, ROOT", "Setting New IP Addresses...",
                          "Setting New SSL IP Addresses...", "Completed"));
  EXPECT_THAT(shownOutput(),
              ElementsAre("Begining the export", "This may take some time", "This program may appear to ",
                          "have stopped responding", "Watch this list for", "progress reports",
                          "Checking to see if W3SVC1 exists..", "Creating Web Site W3SVC1", lineOf(0),
                          "Transferring properties...", "Creating virtual directory /ROOT", "Done!"));
  EXPECT_THAT(lineOf(0), StartsWith("Shop "));
  EXPECT_EQ(boxes().back(), "Done!");
  EXPECT_EQ(events->beeps, 1);
}

TEST_F(DatabaseToServerRun, SaysInADebugLogWhatItReads) {
  storePlainSite("Shop", "7");
  openStoredForDebug();
  exportSites({0});
  const std::vector<std::string> lines = logBehind("Transferring Properties...");
  EXPECT_THAT(
      lines, ElementsAre(statements::siteRows("1"), "PropName = ServerComment", "New value Shop",
                         "PropName = Path", "Creating virtual directory /ROOT", "ExpObj = IIS://NEW1/W3SVC/1",
                         "Creating IIsWebVirtualDir, ROOT", "GetNewDir /ROOT", "GetNewDir /ROOT",
                         "New value C:\\Shop", "Setting New IP Addresses...",
                         "Setting New SSL IP Addresses...", "Completed"));
}

TEST_F(DatabaseToServerRun, ReadsTheRowsByThisStatement) {
  openOne();
  exportSites({0});
  EXPECT_EQ(databases.textsOf("OpenRows").back(),
            "SELECT * FROM DATA WHERE (SiteNumber = 1 AND ((Class <> 'IIsCertMapper' AND Class <> "
            "'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null)) ORDER BY Location, LocalPath DESC, "
            "ID ");
  for (const DatabaseCall& call : databases.calls) {
    EXPECT_EQ(call.cursorType, call.operation == "OpenRows" ? kStaticCursor : 0) << call.text;
  }
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(DatabaseToServerRun, LoadsTheListsOfTheSiteInHandAndThenTellsWhichItIs) {
  openTwo();
  std::vector<std::string> seen;
  events->onYield = [&](int) {
    seen.push_back(frmMain.StatusBar1.panel + "|" +
                   (frmMain.lstFolders(0).listCount() > 0 ? frmMain.lstDirectories(0).list(0) : "") + "|" +
                   std::to_string(frmMain.iCurrentSite));
  };
  exportSites({0, 1});
  const std::string first = "Exporting site (1 of 2) " + lineOf(0) + "...";
  const std::string second = "Exporting site (2 of 2) " + lineOf(1) + "...";
  // At the top of each site, when its lists are loaded, and behind its work.
  EXPECT_THAT(seen, ElementsAre("Ready|C:\\Wiki|1", "Ready|C:\\Shop|1", first + "|C:\\Shop|0",
                                first + "|C:\\Shop|0", first + "|C:\\Wiki|0", second + "|C:\\Wiki|1"));
  EXPECT_EQ(timesLogged(first), 0) << "the status of this direction is not logged";
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
}

TEST_F(DatabaseToServerRun, PassesOverSitesThatAreNotSelected) {
  openTwo();
  exportSites({1});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Wiki");
  EXPECT_FALSE(exists("/W3SVC/2"));
  EXPECT_EQ(timesLogged("Completed"), 1);
}

TEST_F(DatabaseToServerRun, NeverLooksWhetherConfigurationOrContentIsWanted) {
  openOne();
  frmMain.chkCopyIIS.setValue(false);
  frmMain.chkCopyFiles.setValue(true);
  run.bCopyIIS = false;
  run.bCopyFiles = true;
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_THAT(logStartingWith("Copying from"), IsEmpty());
}

TEST_F(DatabaseToServerRun, StartsTheSiteWhenThatIsWanted) {
  openOne();
  frmMain.chkStartWebs.setValue(true);
  exportSites({0});
  EXPECT_THAT(callsOf({"Start"}), ElementsAre("Start /W3SVC/1"));
  EXPECT_THAT(logBehind("Setting New SSL IP Addresses..."), ElementsAre("Starting site...", "Completed"));
}

TEST_F(DatabaseToServerRun, RebuildsFtpSites) {
  storeSite("Files",
            {{.name = "ServerComment", .nodeClass = "IIsFtpServer", .value = "'Files'", .localPath = "'3'"},
             {.location = "/ROOT",
              .name = "Path",
              .nodeClass = "IIsFtpVirtualDir",
              .value = "'D:\\ftp'",
              .localPath = "'ROOT'"}},
            "Ftp");
  openStoredFtp();
  exportSites({0});
  EXPECT_EQ(classOf("/MSFTPSVC/1"), "IIsFtpServer");
  EXPECT_EQ(stored("/MSFTPSVC/1", "ServerComment"), "Files");
  EXPECT_EQ(classOf("/MSFTPSVC/1/ROOT"), "IIsFtpVirtualDir");
  EXPECT_EQ(stored("/MSFTPSVC/1/ROOT", "Path"), "D:\\ftp");
  EXPECT_TRUE(hasLogged("Creating IIsFtpVirtualDir, ROOT"));
}

// The target.

TEST_F(DatabaseToServerRun, EndsWithABoxWhenTheTargetCantBeReached) {
  openOne();
  frmMain.txtExportServer.text = "GONE";
  exportSites({0});
  ASSERT_EQ(boxes().size(), 2U);
  EXPECT_THAT(boxes().back(), StartsWith("Could not connect to the target server 800706BA "));
  EXPECT_THAT(runLog(), ElementsAre("Error connecting to target server"));
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
  expectEndWithoutAWord();
}

TEST_F(DatabaseToServerRun, GoesOnAgainstNoTargetInASilentRun) {
  openOne();
  frmMain.txtExportServer.text = "GONE";
  exportSilently({0});
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(hasLogged("Error connecting to target server"));
  EXPECT_TRUE(hasLogged("Completed"));
  EXPECT_EQ(shownOutput().back(), "Done!");
}

// Numbers.

TEST_F(DatabaseToServerRun, CreatesNewSitesBehindTheHighestNumber) {
  openTwo(webService(plainSite(4, "Kept") + plainSite(2, "Kept too")));
  exportSites({0, 1});
  EXPECT_EQ(stored("/W3SVC/5", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/6", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/4", "ServerComment"), "Kept");
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Kept too");
  EXPECT_THAT(callsOf({"Delete"}), IsEmpty());
}

TEST_F(DatabaseToServerRun, OverwritesFromOneUpwardsWhateverStandsThere) {
  openTwo(webService(plainSite(1, "Old one") + virtualDir(1, "/ROOT/old", {{"Path", "C:\\old"}}) +
                     plainSite(2, "Old two") + plainSite(3, "Kept")));
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0, 1});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_FALSE(exists("/W3SVC/1/ROOT/old"));
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/3", "ServerComment"), "Kept");
  EXPECT_THAT(callsOf({"Delete"}), ElementsAre("Delete /W3SVC 1", "Delete /W3SVC 2"));
  EXPECT_TRUE(hasLogged("Deleteing existing web W3SVC1"));
  EXPECT_TRUE(hasOutput("Deleteing existing web W3SVC2"));
}

TEST_F(DatabaseToServerRun, KeepsTheNumbersOfTheStoredSites) {
  openTwo(webService(plainSite(7, "Old seven") + plainSite(1, "Kept")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1});
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/9", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Kept");
  const std::vector<std::string> lines = runLog();
  EXPECT_THAT(
      std::vector<std::string>(lines.begin(), lines.begin() + 4),
      ElementsAre("Exporting from IIS6 to IIS6", "Overwrite", "True", "Checking to see if W3SVC7 exists.."));
}

TEST_F(DatabaseToServerRun, LooksTheNumberUpByThisStatement) {
  openOne();
  frmMain.optOverwritePreserve.setValue(true);
  databases.calls.clear();
  exportSites({0});
  EXPECT_THAT(databases.textsOf("OpenRows"),
              Contains("SELECT * FROM DATA WHERE Location = '' AND LocalPath IS NOT NULL AND ((Class <> "
                       "'IIsCertMapper' AND Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS "
                       "Null) AND SiteNumber = 1"));
}

TEST_F(DatabaseToServerRun, GivesASiteWithAnEmptyNumberTheNextOne) {
  // A site with a two-digit number is stored like this.
  storeSite("Shop", {ofSite("ServerComment", "Shop", ""), ofVirtualDirectory("/ROOT", "C:\\shop")});
  openStored(webService(plainSite(4, "Kept")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/5", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/4", "ServerComment"), "Kept");
}

TEST_F(DatabaseToServerRun, TakesAFurtherSiteWithoutANumberBehindTheOneBefore) {
  storePlainSite("Shop", "7");
  storePlainSite("Wiki", "no number");
  storePlainSite("Mail", "40000");
  openStored();
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1, 2});
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/8", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/9", "ServerComment"), "Mail");
}

TEST_F(DatabaseToServerRun, EndsWhenNoRowCanTellTheNumberAndKeepsWhatIsDone) {
  storePlainSite("Shop", "7");
  storeSite("Wiki", {ofVirtualDirectory("/ROOT", "C:\\wiki")});
  storePlainSite("Mail", "9");
  openStored(webService(plainSite(8, "Kept")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1, 2});
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "Shop");
  EXPECT_THAT(childrenOf("/W3SVC"), ::testing::UnorderedElementsAre("7", "8"));
  EXPECT_EQ(boxes().back(), kNoNumber + std::string("2"));
  EXPECT_EQ(runLog().back(), kNoNumber + std::string("2"));
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
  expectEndWithoutAWord();
}

TEST_F(DatabaseToServerRun, TellsAMissingNumberInTheLogAloneWhenItIsSilent) {
  storeSite("Wiki", {ofVirtualDirectory("/ROOT", "C:\\wiki")});
  openStored();
  frmMain.optOverwritePreserve.setValue(true);
  frmMain.chkRunSilent.setValue(true);
  dialogs->shown.clear();
  exportSilently({0});
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(runLog().back(), kNoNumber + std::string("1"));
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
}

TEST_F(DatabaseToServerRun, EndsWhenTheNumberCantBeLookedUp) {
  openOne();
  frmMain.optOverwritePreserve.setValue(true);
  select({0});
  databases.failOn("OpenRows", "LocalPath IS NOT NULL", error_number::kUnspecified);
  press();
  const std::vector<std::string> lines = runLog();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2],
            "Error reading the stored rows of the site Error -2147467259Unspecified error");
  EXPECT_EQ(lines.back(), kNoNumber + std::string("1"));
  EXPECT_THAT(callsOf({"Create", "Delete"}), IsEmpty());
}

TEST_F(DatabaseToServerRun, WorksAgainBehindARunThatFoundNoNumber) {
  storeSite("Wiki", {ofVirtualDirectory("/ROOT", "C:\\wiki")});
  storePlainSite("Shop", "7");
  openStored();
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  frmMain.lstSites.setSelected(0, false);
  exportSites({1});
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "Shop");
}

TEST_F(DatabaseToServerRun, NeedsNoNumberOfOriginInTheOtherModes) {
  storeSite("Wiki", {ofVirtualDirectory("/ROOT", "C:\\wiki")});
  openStored();
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\wiki");
  EXPECT_EQ(shownOutput().back(), "Done!");
}

// A site's own failures.

TEST_F(DatabaseToServerRun, CreatesASiteWithoutRowsEmpty) {
  storeSite("Empty", {});
  openStored(webService(plainSite(1, "Old one")));
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), kUnset);
  EXPECT_THAT(childrenOf("/W3SVC/1"), IsEmpty());
  EXPECT_EQ(callsOf({"Put"}), std::vector<std::string>{}) << "no stamp without a root";
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(DatabaseToServerRun, TellsASiteThatCantBeCreatedAndGoesOn) {
  openOne();
  metabase->failOn("SetInfo", "/W3SVC/1", "", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_TRUE(hasLogged("Error creating web site IIsWebServer1 Error " +
                        std::to_string(error_number::kAccessDenied) +
                        describeError(error_number::kAccessDenied)));
  EXPECT_TRUE(hasLogged("Error getting expobj"));
  EXPECT_THAT(logStartingWith("Error transfering Prop "), SizeIs(1));
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(DatabaseToServerRun, TellsTheLastFailureOfACreation) {
  openOne();
  metabase->failOn("Create", "/W3SVC", "1", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_TRUE(hasLogged("Error creating web site IIsWebServer1 Error 91" +
                        describeError(error_number::kObjectNotSet)))
      << "the commit of a site that isn't there";
}

TEST_F(DatabaseToServerRun, GoesOnWhenTheOldSiteCantBeDeletedAndSaysThatTheNewOneCantBeCreated) {
  openTwo(webService(plainSite(1, "Old one")));
  frmMain.optOverwriteWebs.setValue(true);
  metabase->failOn("Delete", "/W3SVC", "1", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_THAT(logStartingWith("Error creating web site IIsWebServer1 Error "), SizeIs(1));
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop") << "its properties land on the site that stayed";
}

TEST_F(DatabaseToServerRun, DoesNotKeepAFailureOfTheExistenceTestForTheCreation) {
  openOne();
  exportSites({0});
  EXPECT_THAT(failureLines(), IsEmpty());
}

// Abort.

TEST_F(DatabaseToServerRun, LeavesBeforeTheNextSiteWithoutAWordOnAnAbort) {
  openTwo();
  select({0, 1});
  atYieldBehind("Completed", [] { frmMain.cmdExportServer.onClick(); });
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_FALSE(exists("/W3SVC/2"));
  EXPECT_EQ(runLog().back(), "Completed");
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
  EXPECT_THAT(shownOutput(), Not(Contains("Transfer aborted")));
  EXPECT_EQ(dialogs->shown.size(), 1U);
  expectEndWithoutAWord();
}

TEST_F(DatabaseToServerRun, LeavesAtTheFirstRowOnAnAbortWhileTheListsLoad) {
  openOne();
  select({0});
  atYieldBehind("False", [] { frmMain.cmdExportServer.onClick(); });
  press();
  EXPECT_TRUE(exists("/W3SVC/1")) << "there is no way back for what has been done";
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), kUnset);
  EXPECT_EQ(runLog().back(), "Transferring Properties...");
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
  EXPECT_TRUE(frmMain.rsData->isOpen());
  expectEndWithoutAWord();
}

class BehindAnAbort : public DatabaseToServerRun {
 protected:
  // Leaves at the first row of the first site; the details of the second one are read or not.
  void abort(bool secondIsRead) {
    openTwo();
    if (secondIsRead) select({1});
    frmMain.lstSites.setSelected(1, false);
    select({0});
    atYieldBehind("False", [] { frmMain.cmdExportServer.onClick(); });
    press();
    ASSERT_TRUE(frmMain.rsData->isOpen());
    frmMain.lstSites.setSelected(0, false);
  }
};

TEST_F(BehindAnAbort, TheNextRunReadsTheRowsOfItsOwnSite) {
  abort(true);
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({1});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Wiki");
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(BehindAnAbort, TheNextRunTakesTheNumberOfItsOwnSite) {
  abort(true);
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({1});
  EXPECT_EQ(stored("/W3SVC/9", "ServerComment"), "Wiki");
}

TEST_F(BehindAnAbort, TheDetailsOfAnotherSiteCanBeRead) {
  abort(false);
  select({1});
  EXPECT_THAT(entriesOf(frmMain.lstDirectories(0)), ElementsAre("C:\\Wiki"));
}

TEST_F(BehindAnAbort, ARunIntoTheDatabaseStoresUnderTheNumberOfItsOwnSite) {
  abort(true);
  addServer("WEB1", metabaseFile(webService(plainSite(1, "Late"))));
  frmMain.TabImportType.select(1);
  frmMain.txtImportServer.text = "WEB1";
  frmMain.cmdPopulate.onClick();
  select({0});
  dialogs->answers.assign(1, Answer::kOk);
  frmMain.cmdExportFile.onClick();
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT SiteName AS a FROM Sites WHERE ID = 3"), (Rows{{"Late"}}));
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT DISTINCT SiteNumber AS a FROM Data WHERE StringValue = 'Late'"),
            (Rows{{"3"}}));
  expectStoredRowsToHaveGrown();
}

TEST_F(BehindAnAbort, AListingShowsTheStoredSites) {
  abort(false);
  frmMain.cmdPopulate.onClick();
  EXPECT_THAT(entriesOf(frmMain.lstSiteIndexes), ElementsAre("1", "2"));
  EXPECT_THAT(logStartingWith("frmMain_populateFromDatabase Error"), IsEmpty());
}

TEST_F(DatabaseToServerRun, KeepsItsRowsFromASelectionInTheMiddle) {
  std::vector<StoredRow> rows{ofSite("ServerComment", "Shop"), ofVirtualDirectory("/ROOT", "C:\\shop")};
  for (int i = 2; i < 60; ++i) rows.push_back(ofNode("/ROOT", "DefaultDoc", 8, text(std::to_string(i))));
  storeSite("Shop", rows);
  storePlainSite("Wiki", "9");
  openStored();
  select({0});
  // A click on a site that was not read yet fails, since the rows that it needs are in use.
  std::int32_t failure = 0;
  atYieldBehind("Transferring Properties...",
                [&] { failure = numberOfFailure([] { frmMain.lstSites.setSelected(1, true); }); });
  press();
  EXPECT_EQ(failure, error_number::kObjectIsOpen);
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "59");
}

TEST_F(DatabaseToServerRun, EndsAsUsualOnAnAbortBehindTheLastSite) {
  openOne();
  select({0});
  atYieldBehind("Completed", [] { frmMain.cmdExportServer.onClick(); });
  press();
  EXPECT_EQ(shownOutput().back(), "Done!");
}

// Bindings, marker header and progress.

TEST_F(DatabaseToServerRun, WritesTheNewBindingsOfTheMappingLists) {
  StoredRow row = ofSite("ServerBindings", "");
  row.type = kVarList;
  row.value = list({"10.0.0.1:80:", ":81:"});
  StoredRow secure = row;
  secure.name = "SecureBindings";
  secure.value = list({"10.0.0.1:443:"});
  storeSite("Shop", {row, secure, ofVirtualDirectory("/ROOT", "C:\\shop")});
  openStored();
  map("10.0.0.1", "10.0.0.2");
  select({0});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET NewIP = ':8080:' WHERE OldIP = ':81:'");
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), "10.0.0.2:80:|:8080:");
  EXPECT_EQ(stored("/W3SVC/1", "SecureBindings"), "10.0.0.2:443:");
  EXPECT_THAT(logBehind("Creating IIsWebVirtualDir, ROOT"),
              ElementsAre("Setting New IP Addresses...", "Setting New SSL IP Addresses...", "Completed"));
  EXPECT_TRUE(hasOutput("Setting New IP addresses"));
  EXPECT_TRUE(hasOutput("Setting New SSL IP addresses"));
}

TEST_F(DatabaseToServerRun, KeepsTheBindingsOfTheRowsWithoutNewOnes) {
  StoredRow row = ofSite("ServerBindings", "");
  row.type = kVarList;
  row.value = list({":80:"});
  storeSite("Shop", {row});
  openStored();
  select({0});
  executeOn("Trelvin.mdb", "DELETE FROM tmpSettings WHERE OldIP IS NOT NULL");
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:");
  EXPECT_FALSE(hasOutput("Setting New IP addresses"));
  EXPECT_TRUE(hasLogged("Setting New IP Addresses..."));
}

TEST_F(DatabaseToServerRun, TellsBindingsThatCantBeSetWithoutBlanks) {
  StoredRow row = ofSite("ServerBindings", "");
  row.type = kVarList;
  row.value = list({":80:"});
  StoredRow secure = row;
  secure.name = "SecureBindings";
  secure.value = list({":443:"});
  storeSite("Shop", {row, secure});
  openStored();
  frmMain.lstExclude.addItem("ServerBindings");
  frmMain.lstExclude.addItem("SecureBindings");
  metabase->failOn("Put", "/W3SVC/1", "ServerBindings", error_number::kAccessDenied);
  metabase->failOn("Put", "/W3SVC/1", "SecureBindings", error_number::kUnspecified);
  exportSites({0});
  EXPECT_THAT(failureLines(),
              ElementsAre("Error setting IP'sError " + std::to_string(error_number::kAccessDenied) +
                              describeError(error_number::kAccessDenied),
                          "Error setting SSL IP'sError " + std::to_string(error_number::kUnspecified) +
                              describeError(error_number::kUnspecified)));
}

TEST_F(DatabaseToServerRun, LetsTheProgressBarSpeakForTheBindings) {
  // A number above the count of sites has no place on the bar; nothing clears that failure before the test
  // behind the bindings.
  StoredRow row = ofSite("ServerBindings", "");
  row.type = kVarList;
  row.value = list({":80:"});
  storeSite("Shop", {row});
  openStored(webService(plainSite(4, "Kept")));
  exportSites({0});
  EXPECT_THAT(failureLines(), ElementsAre("Error setting IP'sError 380Invalid property value"));
  EXPECT_EQ(stored("/W3SVC/5", "ServerBindings"), ":80:");
}

TEST_F(DatabaseToServerRun, LetsTheProgressBarSpeakForTheSslBindingsWithoutOthers) {
  StoredRow row = ofSite("SecureBindings", "");
  row.type = kVarList;
  row.value = list({":443:"});
  storeSite("Shop", {row});
  openStored(webService(plainSite(4, "Kept")));
  exportSites({0});
  EXPECT_THAT(failureLines(), ElementsAre("Error setting SSL IP'sError 380Invalid property value"));
  EXPECT_EQ(stored("/W3SVC/5", "SecureBindings"), ":443:");
}

TEST_F(DatabaseToServerRun, AddsTheMarkToTheHeadersThatTheRowsWrote) {
  storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\shop"),
                     ofNode("/ROOT", "HttpCustomHeaders", kVarList, list({"X-One: 1", "X-Two: 2"}))});
  openStored();
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), "X-One: 1|X-Two: 2|" + kStamp);
}

TEST_F(DatabaseToServerRun, LeavesTheBarOnTheNumberBehindTheLast) {
  openTwo();
  std::vector<std::pair<double, double>> seen;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Put") seen.emplace_back(frmMain.ProgressBar1.value(), frmMain.ProgressBar1.max());
    return std::nullopt;
  };
  exportSites({0});
  // The row of the site, the path of the root, the mark.
  EXPECT_THAT(seen, ElementsAre(std::pair(0.0, 2.0), std::pair(1.0, 2.0), std::pair(1.0, 1.0)));
  EXPECT_EQ(frmMain.ProgressBar1.value(), 1) << "2 has no place on a bar of one site";
}

// Faults of the database.

TEST_F(DatabaseToServerRun, TellsRowsThatCantBeReadAndGoesOn) {
  openTwo();
  select({0, 1});
  databases.failOn("OpenRows", "SiteNumber = 1 AND", error_number::kUnspecified);
  press();
  EXPECT_THAT(failureLines(),
              ElementsAre("Error reading the stored rows of the site Error -2147467259Unspecified error"))
      << "the reason itself, and not that the set is closed";
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Wiki");
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(DatabaseToServerRun, EndsTheRowsOfASetThatCantMoveOn) {
  openOne();
  select({0});
  int moves = 0;
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    const bool inRows = call.operation == "MoveNext" && hasLogged("Transferring Properties...");
    return inRows && ++moves == 1 ? std::optional(error_number::kUnspecified) : std::nullopt;
  };
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_FALSE(exists("/W3SVC/1/ROOT"));
  EXPECT_EQ(moves, 1);
  EXPECT_THAT(failureLines(),
              ElementsAre("Error reading the stored rows of the site Error -2147467259Unspecified error"));
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(DatabaseToServerRun, WritesNothingFromARowThatCantBeRead) {
  openOne();
  select({0});
  int reads = 0;
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    const bool isSecondRow = call.operation == "Field" && call.text == "Location" &&
                             hasLogged("Transferring Properties...") && ++reads == 2;
    return isSecondRow ? std::optional(error_number::kUnspecified) : std::nullopt;
  };
  press();
  EXPECT_EQ(reads, 2);
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_FALSE(exists("/W3SVC/1/ROOT"));
  EXPECT_THAT(logStartingWith("Error transfering"), IsEmpty());
}

}  // namespace
}  // namespace trelvin::test
