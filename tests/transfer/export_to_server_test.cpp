#include "transfer/export_to_server.h"

#include <algorithm>
#include <filesystem>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "platform/platform.h"
#include "server_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

// A site whose root has the wrong class.
std::string corruptRoot(int number) {
  return ServerToServer::below(number, "IIsWebDirectory", "/ROOT") +
         ServerToServer::below(number, "IIsWebVirtualDir", "/ROOT/docs", {{"Path", "C:\\docs"}});
}

// The target's own sites and what stands beside them.
std::string serviceOf(const std::string& elements) {
  return "<IIsWebService\tLocation =\"/LM/W3SVC\"\r\n\t>\r\n</IIsWebService>\r\n" + elements;
}

class ServerToServerRun : public ServerToServer {
 protected:
  void openTwo() { open(webService(plainSite(1, "Shop") + plainSite(2, "Wiki"))); }
  // The path of a server's metabase on this machine.
  [[nodiscard]] std::string sourceFile() const { return metabaseOf("WEB1"); }
  void rewriteSource(const std::string& elements) { addServer("WEB1", metabaseFile(elements)); }
  [[nodiscard]] fs::path targetFolder() const { return folder / "network/NEW1/C$/WINDOWS/system32/inetsrv"; }
};

// The button, and the checks before a run.

TEST_F(ServerToServerRun, TakesAServerForItsTargetBeforeAnythingElse) {
  openTwo();
  frmMain.optExportFile.setValue(true);
  press();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
}

TEST_F(ServerToServerRun, DoesNothingForAnotherSourceOfSites) {
  openTwo();
  select({0});
  frmMain.sImportType = "Elsewhere";
  const auto before = logLines();
  press();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(shownOutput(), IsEmpty());
}

TEST_F(ServerToServerRun, LogsAFailureBeforeTheFirstSiteUnderTheButtonsName) {
  openTwo();
  select({0});
  watchFiles().refuses = [](const std::string& bytes) {
    return bytes.find("Exporting to server from server") != std::string::npos;
  };
  press();
  EXPECT_TRUE(hasLogged("frmMain_cmdExportServer_Click Error 75 Path/File access error"));
  EXPECT_FALSE(exists("/W3SVC/1"));
}

TEST_F(ServerToServerRun, AsksForASiteWhenNoneIsSelectedAndIsDoneAllTheSame) {
  openTwo();
  frmMain.txtExportServer.text.clear();
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
}

TEST_F(ServerToServerRun, AsksForAServerWhenNoneIsNamedAndIsDoneAllTheSame) {
  openTwo();
  select({0});
  frmMain.txtExportServer.text.clear();
  frmMain.cmdPopulate.enabled = false;
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please enter a server name to export to", "Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(timesLogged("Exporting to server from server"), 0);
}

TEST_F(ServerToServerRun, AsksForAServerInTheOutputOfASilentRun) {
  openTwo();
  frmMain.txtExportServer.text.clear();
  exportSilently({0});
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(shownOutput(), ElementsAre("Please enter a server name to export to", "Done!"));
}

TEST_F(ServerToServerRun, EndsWithoutAWordWhenTheLongWarningIsAnsweredWithCancel) {
  openTwo();
  select({0});
  const auto before = logLines();
  dialogs->answers = {Answer::kCancel};
  frmMain.cmdExportServer.onClick();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_THAT(dialogs->shown[0].text, StartsWith("You are about to export web sites"));
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOkCancel);
  EXPECT_EQ(logLines(), before);
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_THAT(callsOf({"GetObject"}), IsEmpty());
  EXPECT_EQ(events->beeps, 0);
}

TEST_F(ServerToServerRun, RefusesWithoutAWordInASilentRunThatFollowsACancelledOne) {
  openTwo();
  run.bExportCancelled = true;
  exportSilently({0});
  EXPECT_THAT(shownOutput(), IsEmpty());
  EXPECT_EQ(timesLogged("Exporting to server from server"), 0);
  EXPECT_FALSE(exists("/W3SVC/1"));
}

TEST_F(ServerToServerRun, SuggestsAPairForTheWindowsFolderAndUsesItAtOnce) {
  open(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\WINNT\\shop"}})), webService(""),
       5, 6);
  select({0});
  dialogs->answers = {Answer::kOk, Answer::kYes};
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(dialogs->shown[1].text, StartsWith("Starting with Windows Server 2003"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\Windows\\shop");
}

TEST_F(ServerToServerRun, EndsBeforeItReachesTheTargetWhenTheSuggestionIsAnsweredWithCancel) {
  open(webService(plainSite(1, "Shop")), webService(""), 5, 6);
  select({0});
  metabase->calls.clear();
  dialogs->answers = {Answer::kOk, Answer::kCancel};
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(callsOf({"GetObject"}), IsEmpty());
  EXPECT_EQ(timesLogged("Exporting to server from server"), 0);
}

// The connection to the target.

TEST_F(ServerToServerRun, BindsThisMachineBeforeTheTarget) {
  openTwo();
  select({0});
  metabase->calls.clear();
  press();
  ASSERT_GE(metabase->calls.size(), 2U);
  EXPECT_EQ(metabase->calls[0].operation, "GetObject");
  EXPECT_EQ(metabase->calls[0].path, "IIS://Localhost/W3SVC");
  EXPECT_EQ(metabase->calls[1].operation, "GetObject");
  EXPECT_EQ(metabase->calls[1].path, "IIS://NEW1/W3SVC");
  EXPECT_EQ(timesLogged("Error connecting to target server"), 0) << "this machine has no server";
}

TEST_F(ServerToServerRun, LogsBothVersionsOnceTheTargetIsReached) {
  open(webService(plainSite(1, "Shop")), webService(""), 4, 5);
  exportSites({0});
  ASSERT_FALSE(runLog().empty());
  EXPECT_EQ(runLog().front(), "Exporting from IIS4 to IIS5");
}

TEST_F(ServerToServerRun, EndsWithItsOwnBoxWhenTheTargetCannotBeReached) {
  openTwo();
  frmMain.txtExportServer.text = "NOWHERE";
  frmMain.cmdPopulate.enabled = false;
  exportSites({0});
  ASSERT_EQ(dialogs->shown.size(), 2U);
  const std::string failure = failureOfBind("IIS://NOWHERE/W3SVC");
  EXPECT_EQ(dialogs->shown[1].text,
            "Could not connect to the target server 800706BA" + failure.substr(failure.find(' ')));
  EXPECT_EQ(dialogs->shown[1].buttons, Buttons::kOk);
  EXPECT_EQ(dialogs->shown[1].title, "");
  EXPECT_THAT(runLog(), ElementsAre("Error connecting to target server"));
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_FALSE(run.bCancelPerms);
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(events->beeps, 0);
  EXPECT_THAT(shownOutput(), testing::SizeIs(6)) << "the lines of the start, neither Done! nor anything else";
}

TEST_F(ServerToServerRun, TellsTheNumberOfEveryFailureToReachTheTarget) {
  openTwo();
  metabase->failOn("GetObject", "NEW1/W3SVC", "", error_number::kAccessDenied);
  exportSites({0});
  ASSERT_EQ(dialogs->shown.size(), 2U);
  EXPECT_THAT(dialogs->shown[1].text, StartsWith("Could not connect to the target server 80070005 "));
  EXPECT_FALSE(exists("/W3SVC/1"));
}

TEST_F(ServerToServerRun, CountsATargetWithoutTheServiceAsUnreachable) {
  openFtp(ftpService(ftpSite(1, "Files") + ftpDir(1, "/ROOT", {{"Path", "C:\\f"}})), webService(""));
  exportSites({0});
  EXPECT_THAT(runLog(), ElementsAre("Error connecting to target server"));
}

TEST_F(ServerToServerRun, GoesOnAgainstNoTargetInASilentRun) {
  openTwo();
  transferOnly({"ServerComment"});
  const std::string source = sourceFile();
  frmMain.txtExportServer.text = "NOWHERE";
  exportSilently({0, 1});
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(timesLogged("Error connecting to target server"), 1);
  EXPECT_EQ(timesLogged("Exporting from IIS6 to IIS6"), 1);
  EXPECT_EQ(timesLogged("Exporting site (1 of 2) Shop..."), 1);
  EXPECT_EQ(timesLogged("Creating Web Site W3SVC1"), 1) << "nothing is found, so that the first number is 1";
  EXPECT_EQ(timesLogged("Creating Web Site W3SVC2"), 1);
  EXPECT_EQ(timesLogged("Completed"), 2);
  EXPECT_THAT(logStartingWith("Error transfering Property ServerCommentError "), testing::SizeIs(2))
      << "each site fails statement by statement";
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(sourceFile(), source);
}

// A whole run.

TEST_F(ServerToServerRun, LogsItsStepsInTheirOrder) {
  open(webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}) +
                  virtualDir(7, "/ROOT", {{"Path", "C:\\shop"}})));
  exportSites({0});
  EXPECT_THAT(runLog(), ElementsAre("Exporting from IIS6 to IIS6", "Exporting site (1 of 1) Shop...",
                                    "Checking to see if W3SVC1 exists..", "Creating Web Site W3SVC1",
                                    "Setting up metabase structure...", "Creating virtual directory 1/ROOT",
                                    "Transferring properties...", "Transferring IP addresses...",
                                    "Transferring SSL IP addresses...", "Completed"));
}

TEST_F(ServerToServerRun, ReportsItsStepsInTheirOrder) {
  open(webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}) +
                  virtualDir(7, "/ROOT", {{"Path", "C:\\shop"}})));
  exportSites({0});
  EXPECT_THAT(shownOutput(),
              ElementsAre("Begining the export", "This may take some time", "This program may appear to ",
                          "have stopped responding", "Watch this list for", "progress reports", "Shop",
                          "Checking to see if W3SVC1 exists..", "Creating Web Site W3SVC1",
                          "Creating virtual directory 1/ROOT", "Building property transfer list",
                          "Transferring properties...", "Setting New IP addresses",
                          "Setting New SSL IP addresses", "Done!"));
  EXPECT_EQ(frmMain.lstOutput.text(), "Done!");
}

TEST_F(ServerToServerRun, WorksOnTheTargetInAFixedOrder) {
  open(webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}}) +
                  virtualDir(7, "/ROOT", {{"Path", "C:\\shop"}})));
  transferOnly({"ServerComment"});
  frmMain.chkStartWebs.setValue(true);
  exportSites({0});
  EXPECT_THAT(
      callsOf({"GetObject", "enumerate", "Create", "Delete", "SetInfo", "Put", "Start"}),
      ElementsAre("GetObject /W3SVC", "enumerate /W3SVC",  // the connection and the first number
                  "GetObject /W3SVC/1",                    // whether it is there
                  "GetObject /W3SVC", "Create /W3SVC 1", "SetInfo /W3SVC/1", "GetObject /W3SVC/1",
                  "GetObject /W3SVC/1/ROOT",  // the tree
                  "Create /W3SVC/1 ROOT", "SetInfo /W3SVC/1/ROOT", "Put /W3SVC/1/ROOT Path",
                  "SetInfo /W3SVC/1/ROOT", "GetObject /W3SVC/1", "Put /W3SVC/1 ServerComment",
                  "SetInfo /W3SVC/1", "GetObject /W3SVC/1", "Put /W3SVC/1 ServerBindings", "SetInfo /W3SVC/1",
                  "GetObject /W3SVC/1/ROOT", "Put /W3SVC/1/ROOT HttpCustomHeaders", "SetInfo /W3SVC/1/ROOT",
                  "GetObject /W3SVC/1", "Start /W3SVC/1"));
}

TEST_F(ServerToServerRun, SaysInADebugLogWhatGoesWhere) {
  openForDebug(webService(plainSite(7, "Shop")));
  exportSites({0});
  const std::vector<std::string> lines = runLog();
  const auto status = std::find(lines.begin(), lines.end(), "Exporting site (1 of 1) Shop...");
  ASSERT_GE(lines.end() - status, 4);
  EXPECT_THAT(std::vector<std::string>(status + 1, status + 4),
              ElementsAre("Site Name Shop", "From WEB1", "To NEW1"));
}

TEST_F(ServerToServerRun, KeepsDebugLinesOutOfAnOrdinaryLog) {
  openTwo();
  exportSites({0});
  for (const char* line :
       {"Site Name ", "From ", "To ", "Existing W3SVCNum", "Adding ", "Propname", "Reading "})
    EXPECT_THAT(logStartingWith(line), IsEmpty()) << line;
}

TEST_F(ServerToServerRun, DumpsNoDirectoriesInADebugLog) {
  openForDebug(webService(plainSite(1, "Shop")));
  exportSites({0});
  EXPECT_THAT(runLog(), Not(Contains("Site 0 directories")));
}

TEST_F(ServerToServerRun, TurnsItsOwnButtonIntoAbortForTheLengthOfARun) {
  openTwo();
  std::string own;
  std::string other;
  atYieldBehind("Transferring properties...", [&] {
    own = frmMain.cmdExportServer.caption;
    other = frmMain.cmdExportFile.caption;
  });
  exportSites({0});
  EXPECT_EQ(own, "Abort");
  EXPECT_EQ(other, "Export");
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ServerToServerRun, SendsEverySelectedSiteAndNoOther) {
  open(webService(plainSite(1, "Shop") + plainSite(2, "Wiki") + plainSite(3, "Mail")));
  exportSites({0, 2});
  EXPECT_TRUE(hasLogged("Exporting site (1 of 2) Shop..."));
  EXPECT_TRUE(hasLogged("Exporting site (2 of 2) Mail..."));
  EXPECT_EQ(timesLogged("Completed"), 2);
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Mail");
  EXPECT_FALSE(exists("/W3SVC/3"));
}

TEST_F(ServerToServerRun, ShowsTheStatusAgainWhenTheConfigurationBegins) {
  openTwo();
  std::string panel;
  watchFiles().refuses = [&](const std::string& bytes) {
    if (bytes.find("Checking to see") != std::string::npos) panel = frmMain.StatusBar1.panel;
    return false;
  };
  frmMain.chkCopyFiles.setValue(true);
  folder.makeFolder("network/WEB1/C$/site1");
  exportSites({0});
  EXPECT_EQ(panel, "Exporting site (1 of 1) Shop...") << "the copy of the content had a status of its own";
}

TEST_F(ServerToServerRun, EndsWithABeepABoxAndItsLastLine) {
  openTwo();
  exportSites({0});
  EXPECT_EQ(dialogs->shown.back().text, "Done!");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(ServerToServerRun, CountsProgressInSitesOnceASiteIsDone) {
  openTwo();
  double max = 0;
  double value = -1;
  atYieldBehind("Completed", [&] {
    max = frmMain.ProgressBar1.max();
    value = frmMain.ProgressBar1.value();
  });
  exportSites({0, 1});
  EXPECT_EQ(max, 2);
  EXPECT_EQ(value, 1);
}

TEST_F(ServerToServerRun, EndsProgressOnTheNumberThatTheNextSiteWouldGet) {
  // The provider lists 1, 10, 2, so that the last one done is 2 and the next number is 3.
  open(webService(plainSite(1, "Shop") + plainSite(10, "Mail") + plainSite(2, "Wiki")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1, 2});
  EXPECT_EQ(frmMain.ProgressBar1.max(), 3);
  EXPECT_EQ(frmMain.ProgressBar1.value(), 3);
}

TEST_F(ServerToServerRun, IgnoresANumberBeyondTheProgressBar) {
  open(webService(plainSite(7, "Shop")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  EXPECT_EQ(frmMain.ProgressBar1.max(), 1);
  EXPECT_LE(frmMain.ProgressBar1.value(), 1);
  EXPECT_EQ(shownOutput().back(), "Done!");
}

// The existing site goes, the new one comes.

TEST_F(ServerToServerRun, DeletesTheSiteThatHasTheNumber) {
  open(webService(plainSite(1, "Shop")),
       serviceOf(webSite(1, "Old") + virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}) +
                 virtualDir(1, "/ROOT/old", {{"Path", "C:\\old\\too"}})));
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  EXPECT_EQ(childrenOf("/W3SVC/1/ROOT"), std::vector<std::string>{}) << "nothing of the former site is kept";
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_THAT(callsOf({"Delete"}), ElementsAre("Delete /W3SVC 1"));
}

TEST_F(ServerToServerRun, ReportsAndLogsTheDeletion) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old")));
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  for (const std::vector<std::string>& lines : {runLog(), shownOutput()}) {
    const auto check = std::find(lines.begin(), lines.end(), "Checking to see if W3SVC1 exists..");
    ASSERT_GE(lines.end() - check, 3);
    EXPECT_EQ(check[1], "Deleteing existing web W3SVC1");
    EXPECT_EQ(check[2], "Creating Web Site W3SVC1");
  }
}

TEST_F(ServerToServerRun, LogsADeletionThatFailedAndGoesOn) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old")));
  frmMain.optOverwriteWebs.setValue(true);
  metabase->failOn("Delete", "NEW1/W3SVC", "1", error_number::kAccessDenied);
  exportSites({0});
  const std::vector<std::string> lines = runLog();
  const auto deletion = std::find(lines.begin(), lines.end(), "Deleteing existing web W3SVC1");
  ASSERT_GE(lines.end() - deletion, 3);
  EXPECT_EQ(deletion[1], "-2147024891 " + describeError(error_number::kAccessDenied));
  EXPECT_EQ(deletion[2], "Creating Web Site W3SVC1");
  EXPECT_EQ(lines.back(), "Completed");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop") << "what follows lands on the site that stayed";
}

TEST_F(ServerToServerRun, TakesASiteThatItMayNotReadForAnAbsentOne) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old") + virtualDir(1, "/ROOT/keep", {})));
  frmMain.optOverwriteWebs.setValue(true);
  bool isFirst = true;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation != "GetObject" || call.path != "IIS://NEW1/W3SVC/1" || !isFirst) return std::nullopt;
    isFirst = false;
    return error_number::kAccessDenied;
  };
  exportSites({0});
  EXPECT_THAT(callsOf({"Delete"}), Not(Contains("Delete /W3SVC 1")));
  EXPECT_THAT(runLog(), Not(Contains("Deleteing existing web W3SVC1")));
}

TEST_F(ServerToServerRun, TellsNothingOfACreationThatFailedButOfTheWritesThatFollow) {
  openTwo();
  transferOnly({"ServerComment"});
  metabase->failOn("Create", "NEW1/W3SVC", "1", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_THAT(runLog(), Not(Contains(HasSubstr("-2147024891"))));
  EXPECT_THAT(logStartingWith("Error transfering Property ServerCommentError "), testing::SizeIs(1));
  EXPECT_EQ(runLog().back(), "Completed");
  EXPECT_FALSE(exists("/W3SVC/1"));
}

TEST_F(ServerToServerRun, LetsTheWritesOfASiteThatWasNotCreatedLandOnTheNodeBefore) {
  openTwo();
  transferOnly({"ServerComment"});
  metabase->failOn("Create", "NEW1/W3SVC", "2", error_number::kAccessDenied);
  exportSites({0, 1});
  EXPECT_FALSE(exists("/W3SVC/2"));
  // The node before is the root that was marked last, whose class has no comment.
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_THAT(logStartingWith("Error transfering Property ServerCommentError -2147463162 "),
              testing::SizeIs(1));
}

TEST_F(ServerToServerRun, SurvivesACommitOfTheNewSiteThatFails) {
  openTwo();
  transferOnly({"ServerComment"});
  metabase->failOn("SetInfo", "NEW1/W3SVC/1", "", error_number::kAccessDenied);
  exportSites({0, 1});
  EXPECT_FALSE(exists("/W3SVC/1"));
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Wiki");
}

// Preferences.

TEST_F(ServerToServerRun, LeavesTheTargetAloneWithoutTheConfiguration) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old")));
  const std::string before = metabaseOf("NEW1");
  frmMain.chkCopyIIS.setValue(false);
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  EXPECT_THAT(callsOf({"Create", "Delete", "Put", "SetInfo", "Start"}), IsEmpty());
  EXPECT_THAT(runLog(),
              ElementsAre("Exporting from IIS6 to IIS6", "Exporting site (1 of 1) Shop...", "Completed"));
  EXPECT_EQ(closedTargetFile(), before);
}

TEST_F(ServerToServerRun, StartsWhateverHasTheNumberWithoutTheConfiguration) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old")));
  frmMain.chkCopyIIS.setValue(false);
  frmMain.chkStartWebs.setValue(true);
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0});
  EXPECT_THAT(callsOf({"Start"}), ElementsAre("Start /W3SVC/1"));
  EXPECT_THAT(runLog(), ElementsAre("Exporting from IIS6 to IIS6", "Exporting site (1 of 1) Shop...",
                                    "Starting site...", "Completed"));
}

TEST_F(ServerToServerRun, StartsNoSiteUnlessAsked) {
  openTwo();
  exportSites({0});
  EXPECT_THAT(callsOf({"Start"}), IsEmpty());
  EXPECT_EQ(timesLogged("Starting site..."), 0);
}

TEST_F(ServerToServerRun, TellsNothingOfASiteThatDoesNotStart) {
  openTwo();
  frmMain.chkStartWebs.setValue(true);
  metabase->failOn("Start", "", "", error_number::kAccessDenied);
  exportSites({0, 1});
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_EQ(timesLogged("Starting site..."), 2);
  EXPECT_TRUE(exists("/W3SVC/2"));
}

// Abort.

TEST_F(ServerToServerRun, StopsBeforeTheNextSiteWhenAborted) {
  openTwo();
  atYieldBehind("Completed", [] { frmMain.cmdExportServer.onClick(); });
  exportSites({0, 1});
  EXPECT_TRUE(exists("/W3SVC/1"));
  EXPECT_FALSE(exists("/W3SVC/2"));
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
  EXPECT_EQ(frmMain.lstOutput.text(), "Transfer aborted");
  EXPECT_EQ(events->beeps, 0);
  EXPECT_EQ(dialogs->shown.size(), 1U) << "no box but the long warning";
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ServerToServerRun, TouchesNothingWhenAbortedWhileItsListsLoad) {
  open(webService(plainSite(1, "Shop")), serviceOf(plainSite(1, "Old")));
  const std::string before = metabaseOf("NEW1");
  frmMain.chkCopyFiles.setValue(true);
  frmMain.optOverwriteWebs.setValue(true);
  atYieldBehind("Exporting site (1 of 1) Shop...", [] { frmMain.cmdExportServer.onClick(); });
  exportSites({0});
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
  EXPECT_THAT(shell.operations, IsEmpty());
  EXPECT_EQ(closedTargetFile(), before);
}

TEST_F(ServerToServerRun, FinishesTheSiteInHandWhenAbortedDuringItsConfiguration) {
  openTwo();
  frmMain.chkStartWebs.setValue(true);
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportServer.onClick(); });
  exportSites({0, 1});
  EXPECT_THAT(callsOf({"Start"}), ElementsAre("Start /W3SVC/1"));
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_THAT(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), StartsWith("Trelvin: "));
  EXPECT_EQ(timesLogged("Completed"), 1);
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
}

TEST_F(ServerToServerRun, IsDoneWhenAbortedDuringTheLastLine) {
  open(webService(plainSite(1, "Shop")));
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportServer.onClick(); });
  exportSites({0});
  EXPECT_EQ(shownOutput().back(), "Done!") << "nothing looks at the flag any more";
}

TEST_F(ServerToServerRun, SeesAnAbortAtALineThatIsNotSelectedToo) {
  openTwo();
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportServer.onClick(); });
  exportSites({0});
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
}

// A source that is not as it should be.

TEST_F(ServerToServerRun, StopsAtACorruptRootWhenThePersonWantsTo) {
  open(webService(webSite(1, "Shop") + corruptRoot(1)), serviceOf(plainSite(1, "Old")));
  const std::string before = metabaseOf("NEW1");
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0}, {Answer::kYes});
  ASSERT_EQ(dialogs->shown.size(), 2U);
  EXPECT_EQ(dialogs->shown[1].title, "WARNING - Corrupt source metabase detected");
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
  EXPECT_EQ(closedTargetFile(), before);
}

TEST_F(ServerToServerRun, GoesOnWithACorruptRootWhenThePersonWantsTo) {
  open(webService(webSite(1, "Shop") + corruptRoot(1)));
  exportSites({0}, {Answer::kNo});
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
}

TEST_F(ServerToServerRun, WarnsOfACorruptRootInASilentRunAndGoesOn) {
  open(webService(webSite(1, "Shop") + corruptRoot(1)));
  exportSilently({0});
  constexpr const char* kWarning =
      "WARNING - The site  has an incorrectly configured metabase on the source server. The export may fail "
      "to "
      "run on your target server. Silent mode on so export continues...";
  EXPECT_TRUE(hasLogged(kWarning));
  EXPECT_TRUE(hasOutput(kWarning));
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
}

TEST_F(ServerToServerRun, NamesInTheWarningTheCounterThatTheBindingsLeft) {
  open(webService(webSite(1, "Shop", {{"ServerBindings", std::string(":80:") + kNextEntry + ":81:"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}}) + webSite(2, "Wiki") + corruptRoot(2)));
  exportSilently({0, 1});
  EXPECT_THAT(runLog(), Contains(StartsWith("WARNING - The site 2 has an incorrectly")));
}

TEST_F(ServerToServerRun, GoesOnWhenASourceSiteHasVanishedSinceItWasListed) {
  open(webService(plainSite(1, "Gone") + plainSite(2, "Wiki")), serviceOf(plainSite(5, "Bystander")));
  const std::string bystander = elementAt(metabaseOf("NEW1"), "/LM/W3SVC/5");
  select({0, 1});
  rewriteSource(webService(plainSite(2, "Wiki")));
  press({Answer::kNo});
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(timesLogged("Completed"), 2);
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "Wiki");
  const std::string target = closedTargetFile();
  EXPECT_EQ(elementAt(target, "/LM/W3SVC/5"), bystander);
  EXPECT_EQ(elementAt(target, "/LM/W3SVC/5/ROOT"),
            elementAt(metabaseFile(plainSite(5, "")), "/LM/W3SVC/5/ROOT"));
}

TEST_F(ServerToServerRun, TellsOfAVanishedSourceSiteInADebugLog) {
  openForDebug(webService(plainSite(1, "Gone")));
  select({0});
  rewriteSource(webService(plainSite(2, "Wiki")));
  press({Answer::kNo});
  const std::vector<std::string> lines = logStartingWith("Failed to connect to the web site-2147024893 ");
  EXPECT_EQ(lines.size(), 2U) << "before the content, and before the structure";
}

// What the run has no business with.

TEST_F(ServerToServerRun, LeavesTheSourceByteForByte) {
  open(webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}}) +
                  virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}) +
                  directory(7, "/ROOT/bin", {{"AccessFlags", "513"}})));
  const std::string before = sourceFile();
  exportSites({0});
  closedTargetFile();
  EXPECT_EQ(sourceFile(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder / "network/WEB1/C$/WINDOWS/system32/inetsrv"),
                          fs::directory_iterator()),
            1)
      << "not even a journal";
}

TEST_F(ServerToServerRun, LeavesWhatElseTheTargetHoldsByteForByte) {
  const Properties rich{{"ServerBindings", std::string("10.0.0.1:80:a") + kNextEntry + "10.0.0.2:80:b"},
                        {"AdminACL", "4963446250000000060000004000000f"},
                        {"NotKnownToAnybody", "as it was"}};
  const std::string target =
      infoOf(6) +
      serviceOf(webSite(3, "Neighbour", rich) + virtualDir(3, "/ROOT", {{"Path", "E:\\n"}}) +
                element("IIsApplicationPools", "/LM/W3SVC/AppPools") +
                element("IIsApplicationPool", "/LM/W3SVC/AppPools/P", {{"PeriodicRestartTime", "9"}}));
  open(webService(
           webSite(1, "Shop") +
           virtualDir(1, "/ROOT", {{"Path", "C:\\s"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}, {"AppPoolId", "P"}})),
       target);
  const std::string before = metabaseOf("NEW1");
  exportSites({0});
  const std::string after = closedTargetFile();
  for (const char* location : {"/", "/LM", "/LM/W3SVC", "/LM/W3SVC/Info", "/LM/W3SVC/3", "/LM/W3SVC/3/ROOT",
                               "/LM/W3SVC/AppPools", "/LM/W3SVC/AppPools/P"}) {
    ASSERT_NE(elementAt(before, location), "") << location;
    EXPECT_EQ(elementAt(after, location), elementAt(before, location)) << location;
  }
  EXPECT_NE(elementAt(after, "/LM/W3SVC/4"), "");
}

TEST_F(ServerToServerRun, LeavesAReadOnlyTargetByteForByteAndSaysSo) {
  openTwo();
  transferOnly({"ServerComment"});
  const std::string before = metabaseOf("NEW1");
  const fs::path file = targetFolder() / "MetaBase.xml";
  fs::permissions(file, fs::perms::owner_read);
  exportSites({0, 1});
  EXPECT_THAT(logStartingWith("Error transfering Property ServerCommentError "), testing::SizeIs(2));
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(closedTargetFile(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(targetFolder()), fs::directory_iterator()), 1);
  fs::permissions(file, fs::perms::owner_all);
}

}  // namespace
}  // namespace trelvin::test
