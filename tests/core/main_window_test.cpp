// The main window comes up and goes down.
#include "core/main_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/err.h"
#include "core/registry_strings.h"
#include "core/run_state.h"
#include "fakes/failing_databases.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

class MainWindowTest : public ProgramTest {
 protected:
  [[nodiscard]] std::string fileString(const std::string& name) const {
    return "DBQ=" + programPath() + "\\" + name + ";Driver={Microsoft Access Driver (*.mdb)};";
  }
};

TEST_F(MainWindowTest, TheLogShowsBeginAndEndOfTheLoad) {
  openWindow();
  EXPECT_EQ(logLines(), (Texts{"Loading...", "Loading complete"}));
  EXPECT_TRUE(frmMain.loaded);
  EXPECT_TRUE(frmMain.visible);
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(MainWindowTest, DebugLinesTellJobConnectionsAndStatementsInTheOrderOfTheLoad) {
  start("-D");
  const std::string data = fileString("TrelvinData.mdb");
  const std::string settings = fileString("Trelvin.mdb");
  EXPECT_EQ(logLines(), (Texts{"Loading...", "Backup job name " + programPath() + "\\Backup.job",
                               "Data Connection String = " + data, "Settings Connection String = " + settings,
                               "Opening Settings database " + settings, "Opening Data database " + data,
                               "Select * FROM ExcludedExportParameters", "Loading complete"}));
}

TEST_F(MainWindowTest, ASecondInstanceSaysSoAndEndsWithoutTouchingADatabase) {
  const FailingDatabases& databases = watchDatabases();
  application->isSecond = true;
  EXPECT_THROW(start("word"), ProcessEnded);
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "This program is already running!");
  EXPECT_EQ(dialogs->shown[0].icon, Icon::kExclamation);
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_EQ(
      logLines(),
      (Texts{"Loading...", "The user attempted to run the program while another copy was still running"}));
  EXPECT_TRUE(databases.calls.empty());
}

TEST_F(MainWindowTest, ASecondInstanceShowsItsBoxForAJobToo) {
  application->isSecond = true;
  EXPECT_THROW(start("-RUNBACKUP"), ProcessEnded);
  EXPECT_EQ(dialogs->shown.size(), 1U);
  EXPECT_FALSE(hasLogged("Running backup job"));
}

TEST_F(MainWindowTest, ASilentSecondInstanceOnlyLogs) {
  application->isSecond = true;
  run.bRunSilent = true;
  EXPECT_THROW(openWindow(), ProcessEnded);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_TRUE(hasLogged("The user attempted to run the program while another copy was still running"));
}

TEST_F(MainWindowTest, PreferencesStartWithTheirDefaultsWhateverTheyWere) {
  run.bCopyFiles = run.bRunSilent = run.bStartWebs = run.bFastPerms = run.bSetFilePerms = true;
  run.bCopyIIS = false;
  for (CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkRunSilent, &frmMain.chkStartWebs,
                        &frmMain.chkFastPermissions, &frmMain.chkSetFilePerms}) {
    box->setValue(true);
  }
  openWindow();
  EXPECT_FALSE(run.bCopyFiles || run.bRunSilent || run.bStartWebs || run.bFastPerms || run.bSetFilePerms);
  EXPECT_TRUE(run.bCopyIIS);
  EXPECT_TRUE(frmMain.chkCopyIIS.value());
  for (const CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkRunSilent, &frmMain.chkStartWebs,
                              &frmMain.chkFastPermissions, &frmMain.chkSetFilePerms}) {
    EXPECT_FALSE(box->value()) << box->name;
  }
  EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
  EXPECT_FALSE(frmMain.chkSetFilePerms.enabled);
}

TEST_F(MainWindowTest, BothVersionsStartWithTheFirst) {
  run.dblIMIISVer = run.dblEXIISVer = 6;
  openWindow();
  EXPECT_EQ(run.dblIMIISVer, 4);
  EXPECT_EQ(run.dblEXIISVer, 4);
  EXPECT_EQ(frmMain.lstIMIISVer.text(), "IIS4");
  EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS4");
}

TEST_F(MainWindowTest, TheVerbsAreThereInTheirOrder) {
  openWindow();
  EXPECT_EQ(Texts(run.asHttpVerbs.begin(), run.asHttpVerbs.end()),
            (Texts{"GET", "POST", "HEAD", "TRACE", "PUT", "DELETE", "OPTIONS"}));
}

TEST_F(MainWindowTest, AJobNameOfBlanksGivesWayToTheDefault) {
  run.sBackupJob = "   ";
  openWindow();
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
}

TEST_F(MainWindowTest, AJobNameThatIsSetStays) {
  run.sBackupJob = " D:\\my.job";
  openWindow();
  EXPECT_EQ(run.sBackupJob, " D:\\my.job");
}

TEST_F(MainWindowTest, TheProxySettingComesFromTheRegistry) {
  writeProgramValue("ProxyServer", "proxy:8080");
  openWindow();
  EXPECT_EQ(run.sProxyServer, "proxy:8080");
}

TEST_F(MainWindowTest, StoresAreMadeInOrderAndTheSettingsAreOpenedFirst) {
  const FailingDatabases& databases = watchDatabases();
  openWindow();
  Texts order;
  for (const DatabaseCall& call : databases.calls) {
    if (call.operation != "Field" && call.operation != "MoveNext")
      order.push_back(call.operation + " " + call.text);
  }
  EXPECT_EQ(order, (Texts{"CreateConnection ", "CreateRecordSet ", "CreateConnection ", "CreateRecordSet ",
                          "Open " + fileString("Trelvin.mdb"), "Open " + fileString("TrelvinData.mdb"),
                          "OpenRows Select * FROM ExcludedExportParameters", "CloseRows "}));
}

TEST_F(MainWindowTest, AfterTheLoadBothDatabasesAreOpenAndBothSetsClosed) {
  openWindow();
  EXPECT_TRUE(frmMain.DBSettings->isOpen());
  EXPECT_TRUE(frmMain.DBData->isOpen());
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
  EXPECT_FALSE(frmMain.rsData->isOpen());
  EXPECT_EQ(frmMain.sSettingsConnection, fileString("Trelvin.mdb"));
  EXPECT_EQ(frmMain.sDataConnection, fileString("TrelvinData.mdb"));
}

TEST_F(MainWindowTest, AnErrorLeftOverFromEarlierIsShownOnceTheSettingsAreOpen) {
  Err.set(Failure(6));
  openWindow();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "6 - Overflow");
  EXPECT_EQ(logLines(),
            (Texts{"Loading...", "Error after DBSettings.open 6 - Overflow", "Loading complete"}));
}

TEST_F(MainWindowTest, TheDebugLineOfTheSettingsComesBeforeTheErrorLeftOver) {
  Err.set(Failure(6));
  start("-D");
  const Texts lines = logLines();
  const auto opening =
      std::find(lines.begin(), lines.end(), "Opening Settings database " + fileString("Trelvin.mdb"));
  ASSERT_LT(opening + 1, lines.end());
  EXPECT_EQ(*(opening + 1), "Error after DBSettings.open 6 - Overflow");
}

TEST_F(MainWindowTest, AMissingSettingsDatabaseLeavesTheLoadAtOnceWithoutAMessage) {
  std::filesystem::remove(programFolder() / "Trelvin.mdb");
  EXPECT_EQ(numberOfFailure([&] { openWindow(); }), error_number::kUnspecified);
  EXPECT_EQ(logLines(), (Texts{"Loading..."}));
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_FALSE(frmMain.DBData->isOpen());
  EXPECT_FALSE(folder.has("program/Trelvin.mdb")) << "a database is never made";
}

TEST_F(MainWindowTest, AMissingDataDatabaseLeavesTheLoadBeforeTheExclusionsAreRead) {
  std::filesystem::remove(programFolder() / "TrelvinData.mdb");
  EXPECT_EQ(numberOfFailure([&] { openWindow(); }), error_number::kUnspecified);
  EXPECT_TRUE(frmMain.DBSettings->isOpen());
  EXPECT_EQ(frmMain.lstExclude.listCount(), 0);
  EXPECT_FALSE(frmMain.visible);
}

TEST_F(MainWindowTest, AMissingTableOfExclusionsLeavesTheLoad) {
  executeOn("Trelvin.mdb", "DROP TABLE ExcludedExportParameters");
  EXPECT_EQ(numberOfFailure([&] { openWindow(); }), error_number::kNoSuchTable);
  EXPECT_FALSE(hasLogged("Loading complete"));
}

TEST_F(MainWindowTest, ExclusionsComeFromTheirTableWithoutTheNullRows) {
  executeOn("Trelvin.mdb", "DELETE FROM ExcludedExportParameters");
  executeOn(
      "Trelvin.mdb",
      "INSERT INTO ExcludedExportParameters (PName) VALUES ('Zulu'), (NULL), ('alpha'), ('Zulu'), ('')");
  openWindow();
  EXPECT_EQ(entriesOf(frmMain.lstExclude), (Texts{"Zulu", "alpha", "Zulu", ""}));
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

TEST_F(MainWindowTest, ExclusionsAreReadWithAStaticCursor) {
  const FailingDatabases& databases = watchDatabases();
  openWindow();
  const auto opened = std::find_if(databases.calls.begin(), databases.calls.end(),
                                   [](const DatabaseCall& call) { return call.operation == "OpenRows"; });
  ASSERT_NE(opened, databases.calls.end());
  EXPECT_EQ(opened->cursorType, 3);
  EXPECT_EQ(frmMain.sSql, "Select * FROM ExcludedExportParameters");
}

TEST_F(MainWindowTest, AnEmptyTableOfExclusionsIsNoFailure) {
  executeOn("Trelvin.mdb", "DELETE FROM ExcludedExportParameters");
  openWindow();
  EXPECT_EQ(frmMain.lstExclude.listCount(), 0);
  EXPECT_TRUE(hasLogged("Loading complete"));
}

TEST_F(MainWindowTest, TheWindowStartsWithWebSitesOfAServer) {
  frmMain.sImportType = "Database";
  frmMain.sExportSiteType = "Ftp";
  frmMain.sService = "MSFTPSVC";
  frmMain.iSiteCount = 7;
  frmMain.optExportFTP.setValue(true);
  openWindow();
  EXPECT_EQ(frmMain.sImportType, "Server");
  EXPECT_EQ(frmMain.sExportSiteType, "Web");
  EXPECT_EQ(frmMain.sService, "W3SVC");
  EXPECT_EQ(frmMain.iSiteCount, 0);
  EXPECT_TRUE(frmMain.optExportWeb.value());
  EXPECT_FALSE(frmMain.optExportFTP.value());
}

TEST_F(MainWindowTest, TheWindowStartsWithAServerAsItsTargetOnTheFirstTabs) {
  frmMain.optExportFile.setValue(true);
  frmMain.TabImportType.select(2);
  frmMain.TabExportType.select(2);
  openWindow();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
  EXPECT_EQ(frmMain.TabImportType.selectedTab(), 1);
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 1);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Ready");
}

TEST_F(MainWindowTest, EverythingButPermissionsIsAvailableAfterTheLoad) {
  openWindow();
  for (const Control* control : frmMain.controls()) {
    const bool expected = control != &frmMain.chkSetFilePerms && control != &frmMain.chkFastPermissions &&
                          control != &frmMain.cmdExportFile && control != &frmMain.timExit &&
                          control != &frmMain.syncPermTimer && control != &frmMain.timAd1;
    EXPECT_EQ(control->enabled, expected) << control->name;
  }
}

TEST_F(MainWindowTest, WhatCouldStartOrChangeSomethingIsOffDuringTheLoad) {
  int looks = 0;
  watchDatabases().rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Open") {
      ++looks;
      for (const Control* control : std::initializer_list<Control*>{
               &frmMain.cmdPopulate, &frmMain.lstSites, &frmMain.chkCopyIIS, &frmMain.TabImportType,
               &frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions,
               &frmMain.txtExportServer}) {
        EXPECT_FALSE(control->enabled) << control->name;
      }
    }
    return std::nullopt;
  };
  openWindow();
  EXPECT_EQ(looks, 2);
}

TEST_F(MainWindowTest, TheWindowGetsItsSizeAndTheProgressBarItsCorner) {
  openWindow();
  EXPECT_EQ(frmMain.width, 11040);
  EXPECT_EQ(frmMain.height, 7500);
  EXPECT_EQ(frmMain.ProgressBar1.left, 11040 - 2940);
  EXPECT_EQ(frmMain.ProgressBar1.top, 7500 - 856);
}

TEST_F(MainWindowTest, TheProgressBarKeepsItsCornerWhenTheSizeChanges) {
  openWindow();
  frmMain.setSize(20000, 10000);
  EXPECT_EQ(frmMain.ProgressBar1.left, 17060);
  EXPECT_EQ(frmMain.ProgressBar1.top, 9144);
}

TEST_F(MainWindowTest, AJobRunsAtTheEndOfTheLoadAndTakesTheWindowDown) {
  start("-RUNBACKUP");
  const Texts lines = logLines();
  const auto complete = std::find(lines.begin(), lines.end(), "Loading complete");
  ASSERT_LT(complete + 1, lines.end());
  EXPECT_EQ(*(complete + 1), "Running backup job");
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "Closing...");
  EXPECT_EQ(lines.back(), "Closing complete");
  EXPECT_TRUE(run.bRunSilent);
  EXPECT_TRUE(frmMain.chkRunSilent.value());
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(MainWindowTest, WithoutAJobNoneRuns) {
  start("word");
  EXPECT_FALSE(hasLogged("Running backup job"));
  EXPECT_FALSE(run.bRunSilent);
}

TEST_F(MainWindowTest, UnloadingTheMainWindowUnloadsEveryForm) {
  openWindow();
  frmSplash.loaded = true;
  frmSplash.visible = true;
  unloadForm(frmMain);
  EXPECT_EQ(logLines(), (Texts{"Loading...", "Loading complete", "Closing...", "Closing complete"}));
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_FALSE(frmMain.visible);
  EXPECT_FALSE(frmSplash.visible);
}

TEST_F(MainWindowTest, TheConnectionsDieWithTheFormAndAreNotClosedBefore) {
  const FailingDatabases& databases = watchDatabases();
  openWindow();
  unloadForm(frmMain);
  EXPECT_TRUE(databases.textsOf("Close").empty());
  EXPECT_EQ(frmMain.DBSettings, nullptr);
  EXPECT_EQ(frmMain.DBData, nullptr);
}

TEST_F(MainWindowTest, UnloadingAFormThatIsNotLoadedDoesNothing) {
  unloadForm(frmMain);
  unloadForm(frmSplash);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(MainWindowTest, TheExitCommandUnloadsEveryLoadedForm) {
  openWindow();
  frmSplash.loaded = true;
  frmMain.mnuExit.onClick();
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_EQ(timesLogged("Closing..."), 1);
  EXPECT_EQ(timesLogged("Closing complete"), 1);
}

TEST_F(MainWindowTest, TheExitTimerIsOffAndLeavesAsTheExitCommandDoes) {
  openWindow();
  EXPECT_FALSE(frmMain.timExit.enabled);
  frmMain.timExit.onTimer();
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_TRUE(hasLogged("Closing complete"));
}

TEST_F(MainWindowTest, AFailureWhileUnloadingIsLoggedAndLeavesTheRoutine) {
  openWindow();
  watchFiles().refuses = [](const std::string& line) { return line.find("Closing...") != std::string::npos; };
  unloadForm(frmMain);
  EXPECT_EQ(logLines().back(), "frmMain_Unload Error 75 Path/File access error");
  EXPECT_FALSE(hasLogged("Closing complete"));
}

TEST_F(MainWindowTest, AFailureOfTheExitCommandIsLogged) {
  openWindow();
  watchFiles().refuses = [](const std::string& line) {
    return line.find("Closing...") != std::string::npos ||
           line.find("frmMain_Unload Error") != std::string::npos;
  };
  frmMain.mnuExit.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_mnuExit Error 75 Path/File access error");
}

TEST_F(MainWindowTest, AFailureThatNoHandlerMeetsIsShownAndEndsTheProcess) {
  try {
    endWithRunTimeError(Failure(91));
    FAIL() << "the process went on";
  } catch (const ProcessEnded& end) {
    EXPECT_EQ(end.exitCode, 1);
  }
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text,
            "Run-time error '91':\r\n\r\nObject variable or With block variable not set");
  EXPECT_EQ(dialogs->shown[0].icon, Icon::kExclamation);
}

TEST_F(MainWindowTest, AWindowThatIsLoadedIsOnlyShownAgain) {
  openWindow();
  frmMain.visible = false;
  showMainWindow();
  EXPECT_TRUE(frmMain.visible);
  EXPECT_EQ(timesLogged("Loading..."), 1);
}

}  // namespace
}  // namespace trelvin::test
