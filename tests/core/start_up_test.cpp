// From the command line to the main window.
#include "core/start_up.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

class StartUpTest : public ProgramTest {
 protected:
  // The first line of the log that begins with a text; empty when there is none.
  [[nodiscard]] std::string lineThatBegins(const std::string& begin) const {
    for (const std::string& line : logLines()) {
      if (line.starts_with(begin)) return line;
    }
    return {};
  }
};

TEST(RunStateTest, IsAllFalseNoughtOrEmptyUntilItIsSet) {
  const RunState fresh;
  EXPECT_FALSE(fresh.bCopyFiles || fresh.bSetFilePerms || fresh.bCopyIIS || fresh.bRunSilent ||
               fresh.bStartWebs);
  EXPECT_FALSE(fresh.bFastPerms || fresh.bExportCancelled || fresh.bCancelPerms || fresh.bRunBackup);
  EXPECT_FALSE(fresh.bDebug || fresh.bSkipFilters || fresh.bAddHeaders);
  EXPECT_EQ(fresh.dblEXIISVer, 0);
  EXPECT_EQ(fresh.dblIMIISVer, 0);
  for (const std::string& verb : fresh.asHttpVerbs) EXPECT_EQ(verb, "");
  EXPECT_EQ(fresh.sBackupJob, "");
  EXPECT_EQ(fresh.sCmdConnection, "");
  EXPECT_EQ(fresh.sProxyServer, "");
}

TEST(CommandLineTest, AsksForAJobWithTheSwitchInAnyOfItsFormsAndAnywhere) {
  for (const char* line :
       {"-RUNBACKUP", "/runbackup", "RunBackup", "-D -B x.job -RunBackup", "-C a -RUNBACKUP b"})
    EXPECT_TRUE(asksForJob(line)) << line;
  for (const char* line : {"", " ", "-D", "-B runbackup.job", "--RUNBACKUP", "-RUNBACKUPS"})
    EXPECT_FALSE(asksForJob(line)) << line;
}

TEST_F(StartUpTest, AnEmptyCommandLineShowsTheWelcomeFormAndWaits) {
  start("");
  EXPECT_TRUE(frmSplash.loaded);
  EXPECT_TRUE(frmSplash.visible);
  EXPECT_FALSE(frmMain.loaded);
  EXPECT_FALSE(frmMain.visible);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(StartUpTest, TheWelcomeFormShowsNameAndVersion) {
  start("");
  EXPECT_EQ(frmSplash.caption, "Welcome to the Trelvin Utility");
  EXPECT_EQ(frmSplash.lblAbout.caption, "Trelvin Utility v4.1");
  EXPECT_EQ(frmSplash.cmdContinue.caption, "Continue ->");
  EXPECT_EQ(frmSplash.cmdExit.caption, "Exit");
}

TEST_F(StartUpTest, FiltersAreLeftOutFromTheWelcomeFormOnWithOrWithoutACommandLine) {
  start("");
  EXPECT_TRUE(run.bSkipFilters);
  run.bSkipFilters = false;
  start("word");
  EXPECT_TRUE(run.bSkipFilters);
}

TEST_F(StartUpTest, AnEmptyCommandLineLeavesJobAndConnectionAlone) {
  run.bRunBackup = true;
  run.sCmdConnection = "kept";
  start("");
  EXPECT_TRUE(run.bRunBackup);
  EXPECT_EQ(run.sCmdConnection, "kept");
}

TEST_F(StartUpTest, ContinueOpensTheMainWindowInPlaceOfTheWelcomeForm) {
  start("");
  frmSplash.cmdContinue.onClick();
  EXPECT_TRUE(frmMain.loaded);
  EXPECT_TRUE(frmMain.visible);
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_FALSE(frmSplash.visible);
  EXPECT_TRUE(hasLogged("Loading complete"));
}

TEST_F(StartUpTest, ExitLeavesNoFormUp) {
  start("");
  frmSplash.cmdExit.onClick();
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_FALSE(frmSplash.visible);
  EXPECT_FALSE(frmMain.loaded);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(StartUpTest, ASingleBlankOpensTheMainWindowDirectly) {
  start(" ");
  EXPECT_TRUE(frmMain.visible);
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_FALSE(frmSplash.visible);
}

TEST_F(StartUpTest, AnUnknownWordOpensTheMainWindowDirectly) {
  start("nonsense");
  EXPECT_TRUE(frmMain.visible);
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_FALSE(run.bRunBackup);
  EXPECT_EQ(run.sCmdConnection, "");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
}

TEST_F(StartUpTest, ACommandLineForgetsAnEarlierJobRequestAndConnection) {
  run.bRunBackup = true;
  run.sCmdConnection = "old";
  start("word");
  EXPECT_FALSE(run.bRunBackup);
  EXPECT_EQ(run.sCmdConnection, "");
}

class JobSwitchTest : public StartUpTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(JobSwitchTest, RunsTheJobBeforeTheWindowIsSeen) {
  bool wasSeen = false;
  int yields = 0;
  events->onYield = [&](int) {
    ++yields;
    wasSeen = wasSeen || frmMain.visible;
  };
  start(GetParam());
  EXPECT_TRUE(run.bRunBackup);
  EXPECT_EQ(timesLogged("Running backup job"), 1);
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
  EXPECT_GT(yields, 0);
  EXPECT_FALSE(wasSeen);
  EXPECT_FALSE(frmMain.visible);
  EXPECT_FALSE(frmSplash.loaded);
}

INSTANTIATE_TEST_SUITE_P(AllForms, JobSwitchTest,
                         ::testing::Values("-RUNBACKUP", "/RUNBACKUP", "RUNBACKUP", "-runbackup",
                                           "/RunBackup", "runBackup", "word -RUNBACKUP", " -RUNBACKUP "));

TEST_F(StartUpTest, AWordThatOnlyBeginsLikeASwitchIsNone) {
  start("-RUNBACKUPS -DD -FF -");
  EXPECT_FALSE(run.bRunBackup);
  EXPECT_FALSE(run.bDebug);
  EXPECT_TRUE(run.bSkipFilters);
  EXPECT_TRUE(frmMain.visible);
}

TEST_F(StartUpTest, OnlyTheJobSwitchGoesWithoutItsDash) {
  start("C value D F B name");
  EXPECT_EQ(run.sCmdConnection, "");
  EXPECT_FALSE(run.bDebug);
  EXPECT_TRUE(run.bSkipFilters);
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
}

TEST_F(StartUpTest, AConnectionStringIsRebuiltWordByWordAndEndsInABlank) {
  start("-C DSN=Sites;User Id=Me;");
  EXPECT_EQ(run.sCmdConnection, "DSN=Sites;User Id=Me; ");
}

TEST_F(StartUpTest, ADoubledBlankWithinAConnectionStringSurvives) {
  start("-C DSN=My  Sites;");
  EXPECT_EQ(run.sCmdConnection, "DSN=My  Sites; ");
}

TEST_F(StartUpTest, ATrailingBlankAddsAnotherOneToAConnectionString) {
  start("-C DSN=Sites; ");
  EXPECT_EQ(run.sCmdConnection, "DSN=Sites;  ");
}

TEST_F(StartUpTest, EveryFormOfTheConnectionSwitchKeepsTheCaseOfItsValue) {
  for (const char* form : {"-C", "/C", "-c", "/c"}) {
    start(std::string(form) + " DsN=Sites;");
    EXPECT_EQ(run.sCmdConnection, "DsN=Sites; ") << form;
  }
}

TEST_F(StartUpTest, OtherSwitchesMayStandBetweenTheWordsOfAConnectionString) {
  start("-C DSN=My -D Sites; /f UID=x;");
  EXPECT_EQ(run.sCmdConnection, "DSN=My Sites; UID=x; ");
  EXPECT_TRUE(run.bDebug);
  EXPECT_FALSE(run.bSkipFilters);
}

TEST_F(StartUpTest, ASwitchNeverCountsAsAValue) {
  start("-C -D -B /F");
  EXPECT_EQ(run.sCmdConnection, "");
  EXPECT_TRUE(run.bDebug);
  EXPECT_FALSE(run.bSkipFilters);
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
}

TEST_F(StartUpTest, TheModeStaysUntilAnotherOneTakesOver) {
  start("-C one -B first.job -C two -B second.job");
  EXPECT_EQ(run.sCmdConnection, "one two ");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\second.job");
}

TEST_F(StartUpTest, AJobNameLiesInTheProgramFolder) {
  start("-B Nightly.Job");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Nightly.Job");
}

TEST_F(StartUpTest, EveryFormOfTheJobNameSwitchIsTaken) {
  for (const char* form : {"-B", "/B", "-b", "/b"}) {
    start(std::string(form) + " " + form[1] + "1.job");
    EXPECT_EQ(run.sBackupJob, programPath() + "\\" + form[1] + "1.job") << form;
  }
}

TEST_F(StartUpTest, AJobNameWithADriveIsTakenAsItStands) {
  start("-B D:\\Jobs\\Nightly.job");
  EXPECT_EQ(run.sBackupJob, "D:\\Jobs\\Nightly.job");
}

TEST_F(StartUpTest, TheSecondCharacterDecidesAndNotTheSecondByte) {
  start("-B \xC3\x84:\\Nightly.job");
  EXPECT_EQ(run.sBackupJob, "\xC3\x84:\\Nightly.job");
}

TEST_F(StartUpTest, ANameOfOneCharacterIsRelative) {
  start("-B :");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\:");
}

TEST_F(StartUpTest, AJobNameOnAShareIsPutBehindTheProgramFolderToo) {
  start("-B \\\\server\\jobs\\Nightly.job");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\\\\\server\\jobs\\Nightly.job");
}

TEST_F(StartUpTest, TheLastWordBehindTheJobNameSwitchWins) {
  start("-B My Nightly.job");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Nightly.job");
}

TEST_F(StartUpTest, AJobNameSwitchWithNothingBehindItMeansTheDefaultJob) {
  start("-B");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
}

TEST_F(StartUpTest, ATrailingBlankBehindTheJobNameSwitchNamesTheProgramFolder) {
  start("-B ");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\");
}

TEST_F(StartUpTest, DebugLinesComeOnByEveryFormOfTheirSwitch) {
  for (const char* form : {"-D", "/D", "-d", "/d"}) {
    run.bDebug = false;
    start(form);
    EXPECT_TRUE(run.bDebug) << form;
  }
}

TEST_F(StartUpTest, FiltersAreTakenAlongByEveryFormOfTheirSwitch) {
  for (const char* form : {"-F", "/F", "-f", "/f"}) {
    start(form);
    EXPECT_FALSE(run.bSkipFilters) << form;
  }
}

TEST_F(StartUpTest, TheHeaderSwitchIsAcceptedAndHasNoEffect) {
  for (const char* form : {"-SKIPHEADERS", "/SKIPHEADERS", "-SkipHeaders"}) {
    run.bAddHeaders = true;
    start(std::string("-C one ") + form + " two");
    EXPECT_FALSE(run.bAddHeaders) << form;
    EXPECT_EQ(run.sCmdConnection, "one two ") << form;
  }
}

TEST_F(StartUpTest, NoCommandLineAsksAnything) {
  start("-C DATABASE DATABASE -D -F -B x.job -SKIPHEADERS");
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_TRUE(frmMain.visible);
}

TEST_F(StartUpTest, AFailingLoadOfTheMainWindowIsLoggedAndTheWelcomeFormGoes) {
  std::filesystem::remove(programFolder() / "Trelvin.mdb");
  start("word");
  EXPECT_TRUE(lineThatBegins("frmSplash_Load Error -2147467259 ").size() > 33)
      << "number, blank and description";
  EXPECT_FALSE(frmMain.visible);
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_FALSE(hasLogged("Loading complete"));
}

TEST_F(StartUpTest, AFailingLoadBehindContinueIsLoggedAndTheWelcomeFormStays) {
  std::filesystem::remove(programFolder() / "TrelvinData.mdb");
  start("");
  frmSplash.cmdContinue.onClick();
  EXPECT_NE(lineThatBegins("frmSplash_cmdContinue Error -2147467259 "), "");
  EXPECT_FALSE(frmMain.visible);
  EXPECT_TRUE(frmSplash.loaded);
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(StartUpTest, AnUnwritableLogLineEndsInTheHandlerOfWhoeverShowedTheWindow) {
  watchFiles().refuses = [](const std::string& line) { return line.find("Loading...") != std::string::npos; };
  start("word");
  EXPECT_EQ(logLines(), (std::vector<std::string>{"frmSplash_Load Error 75 Path/File access error"}));
  EXPECT_FALSE(frmMain.visible);
}

TEST_F(StartUpTest, ALogThatCannotBeWrittenAtAllEndsTheProgram) {
  watchFiles().refuses = [](const std::string&) { return true; };
  EXPECT_EQ(numberOfFailure([&] { start("word"); }), 75);
}

}  // namespace
}  // namespace trelvin::test
