#include "transfer/export_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/export_test.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kLongWarning =
    "You are about to export web sites, this may take a long time\r\n"
    "The program may appear to have locked up, but will\r\n"
    "probably just be busy. During this procedure you will\r\n"
    "not be able to use any of the other functions of this\r\n"
    "program. You can abort the process, but may have to\r\n"
    "wait until the program comes to a convenient place to\r\n"
    "stop. Please do not CTRL-ALT-DEL the program\r\n"
    "unless you are sure it has actually stopped responding.\r\n"
    "\r\n"
    "NOTE ON REPLICATING FILE PERMISSIONS\r\n"
    "This feature is very slow and is not the recommended\r\n"
    "way of replicating files with their NTFS permissions\r\n"
    "and is only included for convenience. Consult the\r\n"
    "documentation for better ways.";

constexpr const char* kSuggestion =
    "Starting with Windows Server 2003, the default directory for WINNT is not Windows. We suggest you add "
    "this as a "
    "find and replace option, would you like to do that?";

class ExportFrame : public ExportTest {
 protected:
  void open() { openOn(webService(plainSite(1, "Shop") + plainSite(2, "Wiki") + plainSite(3, "Mail"))); }

  // Runs a step at the first yield behind a line of the log, as a click of a person who reads along.
  void atYieldBehind(const std::string& line, std::function<void()> step) {
    events->onYield = [this, line, step = std::move(step)](int) {
      if (!hasLogged(line)) return;
      // The step outlives the function that holds it.
      const std::function<void()> now = step;
      events->onYield = nullptr;
      now();
    };
  }
  [[nodiscard]] std::size_t storedSites() const {
    return query("TrelvinData.mdb", "SELECT ID AS a FROM Sites").size();
  }
  static void setVersions(std::int32_t from, std::int32_t to) {
    frmMain.lstIMIISVer.setListIndex(from - 4);
    frmMain.lstEXIISVer.setListIndex(to - 4);
  }
};

// The button and the selection.

TEST_F(ExportFrame, TakesTheDatabaseForItsTargetBeforeAnythingElse) {
  open();
  frmMain.optExportServer.setValue(true);
  exportToDatabase();
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.optExportServer.value());
}

TEST_F(ExportFrame, TakesTheDatabaseForItsTargetEvenOnAnAbortClick) {
  open();
  frmMain.optExportServer.setValue(true);
  frmMain.cmdExportFile.caption = "Abort";
  frmMain.cmdExportFile.onClick();
  EXPECT_TRUE(frmMain.optExportFile.value());
}

TEST_F(ExportFrame, AsksForASiteWhenNoneIsSelectedAndIsDoneAllTheSame) {
  open();
  frmMain.cmdExportFile.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
  EXPECT_EQ(frmMain.lstOutput.text(), "Done!");
  EXPECT_EQ(storedSites(), 0U);
}

TEST_F(ExportFrame, OffersNothingButOkWithItsMessages) {
  open();
  frmMain.cmdExportFile.onClick();
  ASSERT_EQ(dialogs->shown.size(), 2U);
  for (const Message& message : dialogs->shown) {
    EXPECT_EQ(message.buttons, Buttons::kOk);
    EXPECT_EQ(message.title, "");
  }
}

TEST_F(ExportFrame, AsksForASiteInTheOutputOfASilentRun) {
  open();
  exportSilently();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(shownOutput(), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
}

TEST_F(ExportFrame, LogsNothingAndKeepsTheOutputWhenNoSiteIsSelected) {
  open();
  frmMain.lstOutput.addItem("from before");
  const auto before = logLines();
  exportSilently();
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(shownOutput(), ElementsAre("from before", "Please select a site to export", "Done!"));
}

TEST_F(ExportFrame, PutsTheProgressBarBackWhenNoSiteIsSelected) {
  open();
  frmMain.ProgressBar1.setValue(50);
  frmMain.cmdExportFile.onClick();
  EXPECT_EQ(frmMain.ProgressBar1.value(), 0);
}

TEST_F(ExportFrame, TurnsTheSettingsOnWhenNoSiteIsSelected) {
  open();
  frmMain.cmdPopulate.enabled = false;
  frmMain.cmdExportFile.onClick();
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
}

// The long warning.

TEST_F(ExportFrame, WarnsOfALongRun) {
  open();
  select({0});
  exportToDatabase();
  ASSERT_FALSE(dialogs->shown.empty());
  EXPECT_EQ(dialogs->shown[0].text, kLongWarning);
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOkCancel);
  EXPECT_EQ(dialogs->shown[0].title, "");
}

TEST_F(ExportFrame, EndsWithoutAWordWhenTheWarningIsAnsweredWithCancel) {
  open();
  select({0});
  frmMain.cmdPopulate.enabled = false;
  frmMain.lstOutput.addItem("from before");
  frmMain.StatusBar1.panel = "as it was";
  const auto before = logLines();
  dialogs->answers = {Answer::kCancel};
  frmMain.cmdExportFile.onClick();
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning));
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(shownOutput(), ElementsAre("from before"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "as it was");
  EXPECT_EQ(events->beeps, 0);
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_EQ(storedSites(), 0U);
}

TEST_F(ExportFrame, PutsBothCaptionsBackWhenTheWarningIsAnsweredWithCancel) {
  open();
  select({0});
  frmMain.cmdExportServer.caption = "Abort";
  dialogs->answers = {Answer::kCancel};
  frmMain.cmdExportFile.onClick();
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ExportFrame, ForgetsAnEarlierCancelWhenTheWarningIsAnsweredWithOk) {
  open();
  select({0});
  run.bExportCancelled = true;
  exportToDatabase();
  EXPECT_EQ(storedSites(), 1U);
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ExportFrame, RefusesWithoutAWordInASilentRunThatFollowsACancelledOne) {
  open();
  select({0});
  run.bExportCancelled = true;
  const auto before = logLines();
  exportSilently();
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(shownOutput(), IsEmpty());
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_EQ(storedSites(), 0U);
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
}

TEST_F(ExportFrame, RunsSilentlyAgainOnceARunThatAskedHasClearedTheFlag) {
  open();
  select({0});
  run.bExportCancelled = true;
  exportSilently();
  frmMain.chkRunSilent.setValue(false);
  exportToDatabase();
  exportSilently();
  EXPECT_EQ(storedSites(), 2U);
}

TEST_F(ExportFrame, AsksNothingInASilentRun) {
  open();
  setVersions(5, 6);
  select({0});
  exportSilently();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(storedSites(), 1U);
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 0);
}

// The Windows folder.

TEST_F(ExportFrame, SuggestsAPairForTheWindowsFolderTowardsIis6) {
  open();
  setVersions(5, 6);
  select({0});
  exportToDatabase({Answer::kYes});
  ASSERT_GE(dialogs->shown.size(), 2U);
  EXPECT_EQ(dialogs->shown[1].text, kSuggestion);
  EXPECT_EQ(dialogs->shown[1].buttons, Buttons::kYesNoCancel);
  EXPECT_EQ(dialogs->shown[1].title, "");
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("WINNT"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("Windows"));
  EXPECT_EQ(storedSites(), 1U);
}

TEST_F(ExportFrame, UsesTheSuggestedPairInTheSameRun) {
  openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\winnt\\site"}})));
  setVersions(5, 6);
  select({0});
  exportToDatabase({Answer::kYes});
  EXPECT_EQ(data("StringValue AS a", "Name = 'Path'"), (Rows{{"C:\\Windows\\site"}}));
}

TEST_F(ExportFrame, GoesOnWithoutThePairWhenTheSuggestionIsDeclined) {
  open();
  setVersions(5, 6);
  select({0});
  exportToDatabase({Answer::kNo});
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 0);
  EXPECT_EQ(frmMain.lstNewValues.listCount(), 0);
  EXPECT_EQ(storedSites(), 1U);
}

TEST_F(ExportFrame, EndsWithoutAWordWhenTheSuggestionIsAnsweredWithCancel) {
  open();
  setVersions(5, 6);
  select({0});
  frmMain.cmdPopulate.enabled = false;
  const auto before = logLines();
  exportToDatabase({Answer::kCancel});
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, kSuggestion));
  EXPECT_EQ(logLines(), before);
  EXPECT_THAT(shownOutput(), IsEmpty());
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(storedSites(), 0U);
}

TEST_F(ExportFrame, SuggestsNothingBetweenServersOfIis6) {
  open();
  setVersions(6, 6);
  select({0});
  exportToDatabase();
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, "Done!"));
}

TEST_F(ExportFrame, SuggestsNothingTowardsOlderServers) {
  open();
  setVersions(6, 5);
  select({0});
  exportToDatabase();
  setVersions(5, 4);
  exportToDatabase();
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, "Done!", kLongWarning, "Done!"));
}

TEST_F(ExportFrame, SuggestsThePairFromIis4Too) {
  open();
  setVersions(4, 6);
  select({0});
  exportToDatabase({Answer::kNo});
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, kSuggestion, "Done!"));
}

TEST_F(ExportFrame, SuggestsNothingWhenTheUserHasDealtWithTheFolder) {
  open();
  setVersions(5, 6);
  select({0});
  for (const char* entry : {"c:\\winnt", "WinNT", "WINNT", "C:\\WINNT"}) {
    frmMain.lstOldValues.clear();
    frmMain.lstOldValues.addItem("something else");
    frmMain.lstOldValues.addItem(entry);
    dialogs->shown.clear();
    exportToDatabase();
    EXPECT_THAT(boxes(), ElementsAre(kLongWarning, "Done!")) << entry;
  }
}

TEST_F(ExportFrame, SuggestsThePairInSpiteOfOtherEntries) {
  open();
  setVersions(5, 6);
  select({0});
  for (const char* entry : {"D:\\WINNT", "WINNT\\system32", " WINNT", "C:\\WINNT\\"}) {
    frmMain.lstOldValues.addItem(entry);
  }
  exportToDatabase({Answer::kNo});
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, kSuggestion, "Done!"));
}

// The start of a run.

TEST_F(ExportFrame, BeginsARunWithItsSixLines) {
  open();
  select({0});
  frmMain.lstOutput.addItem("from before");
  exportToDatabase();
  std::vector<std::string> lines = shownOutput();
  ASSERT_GE(lines.size(), 6U);
  lines.resize(6);
  EXPECT_THAT(lines,
              ElementsAre("Begining the export", "This may take some time", "This program may appear to ",
                          "have stopped responding", "Watch this list for", "progress reports"));
}

TEST_F(ExportFrame, LogsItsStartBehindTheFirstLines) {
  open();
  select({0});
  std::string lastLine;
  watchFiles().refuses = [&](const std::string& bytes) {
    if (bytes.find("Exporting to file") != std::string::npos) lastLine = frmMain.lstOutput.text();
    return false;
  };
  exportToDatabase();
  EXPECT_EQ(timesLogged("Exporting to file"), 1);
  EXPECT_EQ(lastLine, "progress reports") << "the newest line is in view before the run is logged";
}

TEST_F(ExportFrame, TurnsItsOwnButtonIntoAbortForTheLengthOfARun) {
  open();
  select({0});
  std::string ownCaption;
  std::string otherCaption;
  atYieldBehind("Exporting to file", [&] {
    ownCaption = frmMain.cmdExportFile.caption;
    otherCaption = frmMain.cmdExportServer.caption;
  });
  exportToDatabase();
  EXPECT_EQ(ownCaption, "Abort");
  EXPECT_EQ(otherCaption, "Export");
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
}

TEST_F(ExportFrame, LeavesTheSettingsUsableDuringARun) {
  open();
  select({0});
  bool enabled = false;
  atYieldBehind("Exporting to file", [&] {
    enabled = frmMain.lstSites.enabled && frmMain.txtImportServer.enabled && frmMain.lstExclude.enabled;
  });
  exportToDatabase();
  EXPECT_TRUE(enabled);
}

TEST_F(ExportFrame, ClearsBothFlagsAtTheStart) {
  open();
  select({0});
  run.bCancelPerms = true;
  exportToDatabase();
  EXPECT_FALSE(run.bCancelPerms);
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ExportFrame, BeginsProgressAtZeroOfTheSelectedSites) {
  open();
  select({0, 2});
  frmMain.ProgressBar1.setMax(77);
  frmMain.ProgressBar1.setValue(70);
  double max = 0;
  double value = -1;
  atYieldBehind("Exporting to file", [&] {
    max = frmMain.ProgressBar1.max();
    value = frmMain.ProgressBar1.value();
  });
  exportToDatabase();
  EXPECT_EQ(max, 2);
  EXPECT_EQ(value, 0);
}

TEST_F(ExportFrame, ForgetsAnErrorFromBeforeTheRun) {
  open();
  select({0});
  Err.set(Failure(error_number::kOverflow));
  exportToDatabase();
  EXPECT_THAT(logStartingWith("Error"), ::testing::Each(testing::Not(HasSubstr("Error 6 "))));
}

TEST_F(ExportFrame, LeavesAFailureBeforeTheFirstSiteToItsCaller) {
  open();
  select({0});
  watchFiles().refuses = [](const std::string& bytes) {
    return bytes.find("Exporting to file") != std::string::npos;
  };
  dialogs->answers = {Answer::kOk};
  EXPECT_EQ(numberOfFailure([] {
              frmMain.cmdExportFile.onClick();
              return 0;
            }),
            error_number::kPathFileAccess);
  EXPECT_EQ(storedSites(), 0U);
}

TEST_F(ExportFrame, GoesOnWithoutALogFromTheFirstSiteOn) {
  open();
  select({0, 1});
  bool full = false;
  watchFiles().refuses = [&](const std::string& bytes) {
    const bool refused = full;
    full = full || bytes.find("Exporting to file") != std::string::npos;
    return refused;
  };
  exportToDatabase();
  EXPECT_EQ(storedSites(), 2U);
  EXPECT_TRUE(hasOutput("Done!"));
}

// The loop over the sites.

TEST_F(ExportFrame, TellsWhichSiteOfHowManyIsInHand) {
  open();
  select({0, 2});
  exportToDatabase();
  EXPECT_THAT(logStartingWith("Exporting site"),
              ElementsAre("Exporting site (1 of 2) Shop...", "Exporting site (2 of 2) Mail..."));
}

TEST_F(ExportFrame, ShowsTheSiteInHandInTheStatusBar) {
  open();
  select({0, 1});
  std::vector<std::string> panels;
  frmMain.lstOutput.onAddItem = [&](const std::string&) {
    if (panels.empty() || panels.back() != frmMain.StatusBar1.panel)
      panels.push_back(frmMain.StatusBar1.panel);
  };
  exportToDatabase();
  EXPECT_THAT(panels, ElementsAre("Ready", "Exporting site (1 of 2) Shop...",
                                  "Exporting site (2 of 2) Wiki...", "Ready"));
}

TEST_F(ExportFrame, PassesOverSitesThatAreNotSelected) {
  open();
  select({1});
  exportToDatabase();
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT SiteName AS a FROM Sites"), (Rows{{"Wiki"}}));
  EXPECT_EQ(frmMain.iCurrentSite, 1);
}

TEST_F(ExportFrame, GivesWayToEventsForEveryLineOfTheList) {
  open();
  transferOnly({});
  select({1});
  events->yields = 0;
  exportToDatabase();
  // One for each of three lines, and for the site: behind its lists, behind its property list, at its end.
  EXPECT_EQ(events->yields, 3 + 3);
}

TEST_F(ExportFrame, LoadsTheListsOfTheSiteInHand) {
  open();
  select({0, 1});
  frmMain.tabNewValues.select(2);
  std::vector<std::string> folders;
  std::string currentSite;
  atYieldBehind("Exporting site (1 of 2) Shop...", [&] {
    folders = entriesOf(frmMain.lstDirectories(0));
    currentSite = std::to_string(frmMain.iCurrentSite);
  });
  exportToDatabase();
  EXPECT_THAT(folders, ElementsAre("C:\\site1"));
  EXPECT_EQ(currentSite, "0");
  EXPECT_TRUE(frmMain.fraNewIPs.visible);
  EXPECT_FALSE(frmMain.fraFolders.visible) << "the group of the tab in use is what shows";
}

TEST_F(ExportFrame, StoresTheDirectoriesThatThePersonHasGivenEachSite) {
  open();
  select({0, 1});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'E:\\first' WHERE SiteID = 0");
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'F:\\second' WHERE SiteID = 1");
  exportToDatabase();
  EXPECT_EQ(data("SiteNumber AS a, StringValue AS b", "Name = 'Path'"),
            (Rows{{"1", "E:\\first"}, {"2", "F:\\second"}}));
}

TEST_F(ExportFrame, LogsTheEndOfEachSite) {
  open();
  select({0, 1, 2});
  exportToDatabase();
  EXPECT_EQ(timesLogged("Completed"), 3);
}

TEST_F(ExportFrame, KeepsToTheLinesThatWereThereWhenTheLoopBegan) {
  open();
  select({0});
  atYieldBehind("Exporting site (1 of 1) Shop...", [] {
    frmMain.lstSites.addItem("Late");
    frmMain.lstSiteIndexes.addItem("IIS://WEB1/W3SVC/2");
    frmMain.lstSites.onClick = nullptr;
    frmMain.lstSites.setSelected(3, true);
  });
  exportToDatabase();
  EXPECT_EQ(storedSites(), 1U);
}

TEST_F(ExportFrame, ExportsALineThatIsSelectedDuringTheRun) {
  open();
  select({0});
  atYieldBehind("Exporting site (1 of 1) Shop...", [] { frmMain.lstSites.setSelected(2, true); });
  exportToDatabase();
  EXPECT_EQ(storedSites(), 2U);
  EXPECT_TRUE(hasLogged("Exporting site (2 of 2) Mail..."));
}

// The ends of a run.

TEST_F(ExportFrame, EndsWithDone) {
  open();
  select({0});
  std::string captionAtTheBox;
  std::string lastLineAtTheBox;
  dialogs->onMessage = [&](const Message& message) {
    if (message.text != "Done!") return;
    captionAtTheBox = frmMain.cmdExportFile.caption;
    lastLineAtTheBox = frmMain.lstOutput.list(frmMain.lstOutput.listCount() - 1);
  };
  frmMain.cmdExportServer.caption = "Abort";
  exportToDatabase();
  EXPECT_EQ(captionAtTheBox, "Export");
  EXPECT_NE(lastLineAtTheBox, "Done!") << "the line follows the box";
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(frmMain.lstOutput.text(), "Done!");
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ExportFrame, EndsWithALineAloneInASilentRun) {
  open();
  select({0});
  exportSilently();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_EQ(events->beeps, 1);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
}

TEST_F(ExportFrame, EndsProgressOnTheLastSitesNumber) {
  open();
  select({0, 1});
  exportToDatabase();
  EXPECT_EQ(frmMain.ProgressBar1.value(), 2);
}

TEST_F(ExportFrame, LeavesProgressWhereItIsWhenTheLastNumberIsBeyondTheMaximum) {
  open();
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (50, 'old', 'Web')");
  select({0, 1});
  exportToDatabase();
  EXPECT_EQ(frmMain.ProgressBar1.max(), 2);
  EXPECT_EQ(frmMain.ProgressBar1.value(), 2) << "the counter of the last site";
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(ExportFrame, TurnsTheSettingsOnAtItsEnd) {
  open();
  select({0});
  atYieldBehind("Exporting to file", [] { frmMain.cmdPopulate.enabled = false; });
  exportToDatabase();
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
}

// Abort.

TEST_F(ExportFrame, TakesAClickOnAbortForNoMoreThanAWish) {
  open();
  select({0});
  frmMain.cmdExportFile.caption = "Abort";
  frmMain.cmdExportServer.caption = "Abort";
  frmMain.cmdPopulate.enabled = false;
  const auto before = logLines();
  frmMain.cmdExportFile.onClick();
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_TRUE(run.bCancelPerms);
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(shownOutput(), IsEmpty());
  EXPECT_EQ(logLines(), before);
  EXPECT_EQ(events->beeps, 0);
}

TEST_F(ExportFrame, FinishesTheSiteInHandAndAbortsAtTheNextOne) {
  open();
  transferOnly({"ServerComment"});
  select({0, 1, 2});
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportFile.onClick(); });
  exportToDatabase();
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT SiteName AS a FROM Sites"), (Rows{{"Shop"}}));
  EXPECT_THAT(namesOfRows(), ElementsAre("Path", "ServerComment")) << "all rows of the site in hand";
  EXPECT_TRUE(hasLogged("Completed"));
  EXPECT_THAT(logStartingWith("Exporting site"),
              ElementsAre("Exporting site (1 of 3) Shop...", "Exporting site (2 of 3) Wiki..."));
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
  EXPECT_EQ(frmMain.lstOutput.text(), "Transfer aborted");
  EXPECT_FALSE(hasOutput("Done!"));
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning));
  EXPECT_EQ(events->beeps, 0);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Exporting site (2 of 3) Wiki...");
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
}

TEST_F(ExportFrame, AbortsBeforeTheFirstSiteBehindItsTest) {
  open();
  select({0});
  metabase->calls.clear();
  atYieldBehind("Exporting to file", [] { frmMain.cmdExportFile.onClick(); });
  exportToDatabase();
  EXPECT_EQ(storedSites(), 0U);
  EXPECT_TRUE(hasOutput("Transfer aborted"));
  EXPECT_EQ(metabase->calls.back().operation, "Get");
  EXPECT_EQ(metabase->calls.back().argument, "KeyType");
}

TEST_F(ExportFrame, EndsNormallyWhenNoSiteFollowsTheAbortedOne) {
  open();
  select({0});
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportFile.onClick(); });
  exportToDatabase();
  EXPECT_TRUE(hasOutput("Done!"));
  EXPECT_FALSE(hasOutput("Transfer aborted"));
  EXPECT_EQ(events->beeps, 1);
  EXPECT_TRUE(run.bExportCancelled) << "nothing looks at the flag any more";
}

TEST_F(ExportFrame, TurnsTheSettingsOnWhenItIsAborted) {
  open();
  select({0, 1});
  atYieldBehind("Transferring properties...", [] {
    frmMain.cmdExportFile.onClick();
    frmMain.cmdPopulate.enabled = false;
    frmMain.cmdExportServer.caption = "Abort";
  });
  exportToDatabase();
  EXPECT_TRUE(hasOutput("Transfer aborted"));
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ExportFrame, KeepsTheRowsOfAnAbortedRun) {
  open();
  select({0, 1});
  atYieldBehind("Transferring properties...", [] { frmMain.cmdExportFile.onClick(); });
  exportToDatabase();
  EXPECT_GT(data("ID AS a", "SiteNumber = 1").size(), 1U);
}

TEST_F(ExportFrame, RunsASecondTimeInsideItselfOnceAbortHasGivenTheButtonBack) {
  open();
  select({0});
  transferOnly({});
  atYieldBehind("Transferring properties...", [this] {
    frmMain.cmdExportFile.onClick();  // reads "Abort"
    dialogs->answers = {Answer::kOk};
    frmMain.cmdExportFile.onClick();  // reads "Export" again
  });
  exportToDatabase();
  EXPECT_EQ(storedSites(), 2U);
  EXPECT_EQ(timesLogged("Exporting to file"), 2);
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, kLongWarning, "Done!", "Done!"));
}

TEST_F(ExportFrame, LeavesTheOtherButtonWorkingDuringARun) {
  open();
  select({0});
  atYieldBehind("Exporting to file", [] { frmMain.cmdExportServer.onClick(); });
  exportToDatabase();
  EXPECT_THAT(boxes(),
              ElementsAre(kLongWarning, "Please enter a server name to export to", "Done!", "Done!"));
  EXPECT_EQ(storedSites(), 1U);
}

// The test for a corrupt source.

class CorruptSource : public ExportFrame {
 protected:
  // A site whose root is of another class than a root's.
  static std::string corruptSite(int number, const std::string& comment, const Properties& properties = {}) {
    return webSite(number, comment, properties) +
           directory(number, "/ROOT", {{"AccessFlags", "AccessRead"}}) +
           virtualDir(number, "/ROOT/v", {{"Path", "C:\\v"}});
  }
  static std::string silentWarning(const std::string& site) {
    return "WARNING - The site " + site +
           " has an incorrectly configured metabase on the source server. The export may fail to run on your "
           "target "
           "server. Silent mode on so export continues...";
  }
  static std::string warning(const std::string& site) {
    return "WARNING - The site " + site +
           " has an incorrectly configured metabase on the source server. Proceeding with the export may "
           "damage your "
           "target server. You should take a backup of the metabase and then run the fix option from the "
           "tools menu "
           "of Trelvin. \r\n\r\nDo you want to abort transfer?";
  }
  [[nodiscard]] int warnings() const { return static_cast<int>(logStartingWith("WARNING").size()); }
};

TEST_F(CorruptSource, BindsTheSiteAndThenItsRoot) {
  open();
  select({0});
  metabase->calls.clear();
  exportToDatabase();
  ASSERT_GE(metabase->calls.size(), 4U);
  EXPECT_EQ(metabase->calls[0].operation, "GetObject");
  EXPECT_EQ(metabase->calls[0].path, "IIS://WEB1/W3SVC/1");
  EXPECT_EQ(metabase->calls[1].operation, "ADsPath");
  EXPECT_EQ(metabase->calls[2].operation, "GetObject");
  EXPECT_EQ(metabase->calls[2].path, "IIS://WEB1/W3SVC/1/Root");
  EXPECT_EQ(metabase->calls[3].operation, "Get");
  EXPECT_EQ(metabase->calls[3].argument, "KeyType");
}

TEST_F(CorruptSource, IsNotSeenInASoundOne) {
  open();
  select({0, 1});
  exportToDatabase();
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, "Done!"));
}

TEST_F(CorruptSource, IsNotSeenWhereTheClassWordDiffersInCaseOnly) {
  openOn(webService(webSite(1, "Shop") +
                    element("IISWEBVIRTUALDIR", "/LM/W3SVC/1/ROOT", {{"Path", "C:\\shop"}})));
  select({0});
  exportSilently();
  EXPECT_EQ(warnings(), 0);
}

TEST_F(CorruptSource, IsAskedAboutWithYesAndNo) {
  openOn(webService(corruptSite(1, "Shop")));
  select({0});
  exportToDatabase({Answer::kNo});
  ASSERT_EQ(dialogs->shown.size(), 3U);
  EXPECT_EQ(dialogs->shown[1].text, warning(""));
  EXPECT_EQ(dialogs->shown[1].buttons, Buttons::kYesNo);
  EXPECT_EQ(dialogs->shown[1].title, "WARNING - Corrupt source metabase detected");
  EXPECT_EQ(warnings(), 0) << "the box is not logged";
}

TEST_F(CorruptSource, IsExportedAllTheSameAfterNo) {
  openOn(webService(corruptSite(1, "Shop")));
  select({0});
  exportToDatabase({Answer::kNo});
  EXPECT_EQ(storedSites(), 1U);
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(CorruptSource, EndsTheRunAfterYes) {
  openOn(webService(corruptSite(1, "Shop") + plainSite(2, "Wiki")));
  select({0, 1});
  exportToDatabase({Answer::kYes});
  EXPECT_EQ(storedSites(), 0U);
  EXPECT_EQ(shownOutput().back(), "Transfer aborted");
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
}

TEST_F(CorruptSource, IsWarnedAboutInASilentRunThatGoesOn) {
  openOn(webService(corruptSite(1, "Shop")));
  select({0});
  exportSilently();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(hasOutput(silentWarning("")));
  EXPECT_EQ(timesLogged(silentWarning("")), 1);
  EXPECT_EQ(storedSites(), 1U);
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(CorruptSource, ShowsItsWarningAsTheLastLineInASilentRun) {
  openOn(webService(corruptSite(1, "Shop")));
  select({0});
  std::string shown;
  frmMain.lstOutput.onRefresh = [&] {
    if (frmMain.lstOutput.text().starts_with("WARNING")) shown = frmMain.lstOutput.text();
  };
  exportSilently();
  EXPECT_EQ(shown, silentWarning(""));
}

TEST_F(CorruptSource, ShowsTheCounterOfTheLatestBindingsInThePlaceOfAName) {
  const std::string bindings = std::string(":80:") + kNextEntry + ":81:" + kNextEntry + ":82:";
  openOn(webService(corruptSite(1, "Shop", {{"ServerBindings", bindings}}) + corruptSite(2, "Wiki") +
                    corruptSite(3, "Mail",
                                {{"ServerBindings", ":80:"},
                                 {"SecureBindings", std::string(":443:") + kNextEntry + ":444:"}}) +
                    corruptSite(4, "Last")));
  select({0, 1, 2, 3});
  exportSilently();
  EXPECT_THAT(logStartingWith("WARNING"),
              ElementsAre(silentWarning(""), silentWarning("3"), silentWarning("3"), silentWarning("2")));
}

TEST_F(CorruptSource, ShowsNothingInThePlaceOfANameAtTheStartOfEachRun) {
  openOn(webService(corruptSite(1, "Shop", {{"ServerBindings", ":80:"}})));
  select({0});
  exportSilently();
  exportSilently();
  EXPECT_THAT(logStartingWith("WARNING"), ElementsAre(silentWarning(""), silentWarning("")));
}

TEST_F(CorruptSource, ShowsTheCounterInTheBoxToo) {
  openOn(webService(webSite(1, "Shop", {{"ServerBindings", ":80:"}}) +
                    virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}}) + corruptSite(2, "Wiki")));
  select({0, 1});
  exportToDatabase({Answer::kNo});
  EXPECT_THAT(boxes(), ElementsAre(kLongWarning, warning("1"), "Done!"));
}

TEST_F(CorruptSource, IsWhatASiteWithoutARootCountsAs) {
  openOn(webService(webSite(1, "Shop") + directory(1, "/other")));
  select({0});
  exportSilently();
  EXPECT_TRUE(hasLogged(silentWarning("")));
  EXPECT_EQ(storedSites(), 1U);
}

TEST_F(CorruptSource, IsWhatASiteCountsAsWhoseRootCantBeRead) {
  open();
  select({0});
  metabase->failOn("Get", "/Root", "KeyType", error_number::kAccessDenied);
  exportSilently();
  EXPECT_TRUE(hasLogged(silentWarning("")));
}

TEST_F(CorruptSource, IsWhatASiteCountsAsThatCantBeBound) {
  open();
  select({0});
  metabase->failOn("GetObject", "/W3SVC/1", "", error_number::kServerUnavailable);
  exportSilently();
  EXPECT_TRUE(hasLogged(silentWarning("")));
}

TEST_F(CorruptSource, IsNeverSeenInAnFtpSite) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}}) +
                              element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}) +
                              element("IIsFtpServer", "/LM/MSFTPSVC/2", {{"ServerComment", "Rootless"}}) +
                              element("IIsFtpVirtualDir", "/LM/MSFTPSVC/2/other", {{"Path", "C:\\other"}}))));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listSites();
  select({0, 1});
  exportSilently();
  EXPECT_EQ(warnings(), 0);
  EXPECT_EQ(storedSites(), 2U);
}

TEST_F(CorruptSource, IsTestedByTheServiceWordInAnyCase) {
  openOn(webService(corruptSite(1, "Shop")));
  select({0});
  frmMain.sService = "w3svc";
  exportSilently();
  EXPECT_EQ(warnings(), 1);
}

// Debug lines.

class DirectoryDump : public ExportFrame {
 protected:
  void openDebug() {
    openForDebugOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}}) +
                              virtualDir(1, "/ROOT/images", {{"Path", "D:\\images"}}) +
                              plainSite(2, "Wiki")));
  }
  // The lines up to the first site, without the statements.
  [[nodiscard]] std::vector<std::string> dump() const {
    std::vector<std::string> lines;
    for (const std::string& line : logBehind("Exporting to file")) {
      if (line.starts_with("Exporting site")) break;
      if (!line.starts_with("SELECT")) lines.push_back(line);
    }
    return lines;
  }
};

TEST_F(DirectoryDump, ListsTheDirectoriesOfEveryLineInADebugRun) {
  openDebug();
  select({0, 1});
  exportToDatabase();
  EXPECT_THAT(dump(), ElementsAre("Site 0 directories", "Dir 0 - /ROOT - C:\\shop",
                                  "Dir 1 - /ROOT/images - D:\\images", "Site 1 directories",
                                  "Dir 0 - /ROOT - C:\\site2"));
}

TEST_F(DirectoryDump, MissesTheDirectoriesOfLinesThatWereNeverSelected) {
  openDebug();
  select({0});
  exportToDatabase();
  EXPECT_THAT(
      dump(),
      ElementsAre(
          "Site 0 directories", "Dir 0 - /ROOT - C:\\shop", "Dir 1 - /ROOT/images - D:\\images",
          "Site 1 directories",
          "Could not retreive directory information from the DB for this site - this export will fail"));
  EXPECT_EQ(storedSites(), 1U);
}

TEST_F(DirectoryDump, GivesWayToEventsForEachLine) {
  openDebug();
  select({0, 1});
  int yields = 0;
  events->onYield = [&](int) {
    if (hasLogged("Exporting to file") && logStartingWith("Exporting site").empty()) ++yields;
  };
  exportToDatabase();
  EXPECT_EQ(yields, 2 + 1) << "and one of the loop over the sites";
}

TEST_F(DirectoryDump, ReportsItsFailuresOnceAndForgetsThem) {
  openDebug();
  select({0, 1});
  databases.failOn("OpenRows", "FROM tmpSettings WHERE (SiteID = 1 AND Folder", error_number::kNoSuchTable);
  exportToDatabase();
  databases.rule = nullptr;
  EXPECT_THAT(logStartingWith("Error enuming"),
              ElementsAre("Error enuming directories - " + std::to_string(error_number::kNoSuchTable) +
                          " - " + describeError(error_number::kNoSuchTable)));
}

TEST_F(DirectoryDump, ReportsNoErrorFromBeforeTheRun) {
  openDebug();
  select({0, 1});
  Err.set(Failure(error_number::kOverflow));
  exportToDatabase();
  EXPECT_THAT(logStartingWith("Error enuming"), IsEmpty());
}

TEST_F(DirectoryDump, StaysAwayWithoutDebug) {
  open();
  select({0, 1});
  exportToDatabase();
  EXPECT_THAT(logStartingWith("Site "), IsEmpty());
  EXPECT_THAT(logStartingWith("Dir "), IsEmpty());
}

// Towards a server.

class ExportToServer : public ExportFrame {};

TEST_F(ExportToServer, TakesTheServerForItsTarget) {
  open();
  frmMain.optExportFile.setValue(true);
  frmMain.cmdExportServer.onClick();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
}

TEST_F(ExportToServer, AsksForASiteFirst) {
  open();
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please select a site to export", "Done!"));
}

TEST_F(ExportToServer, AsksForAServerNextAndIsDoneAllTheSame) {
  open();
  select({0});
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), ElementsAre("Please enter a server name to export to", "Done!"));
  EXPECT_THAT(shownOutput(), ElementsAre("Done!"));
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
  EXPECT_EQ(events->beeps, 1);
}

TEST_F(ExportToServer, AsksForAServerInTheOutputOfASilentRun) {
  open();
  select({0});
  frmMain.chkRunSilent.setValue(true);
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(shownOutput(), ElementsAre("Please enter a server name to export to", "Done!"));
}

TEST_F(ExportToServer, DoesNothingForASourceOfAnotherKind) {
  open();
  select({0});
  frmMain.sImportType = "Elsewhere";
  frmMain.cmdExportServer.onClick();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(shownOutput(), IsEmpty());
}

TEST_F(ExportToServer, LogsAFailureOfItsOwnUnderItsName) {
  open();
  dialogs->onMessage = [](const Message&) { throw Failure(error_number::kOutOfMemory); };
  frmMain.cmdExportServer.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_cmdExportServer_Click Error 7 " + describeError(7));
}

}  // namespace
}  // namespace trelvin::test
