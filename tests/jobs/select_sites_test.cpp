// A job file into the window's state.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/registry_strings.h"
#include "core/run_state.h"
#include "core/text.h"
#include "job_test.h"
#include "jobs/run_backup.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "window/frm_main.h"

namespace trelvin::test {
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

constexpr const char* kLabel = "frmMain SelectSitesFromBackup Error ";

class SelectSites : public JobTest {
 protected:
  SelectSites() { addSites(); }
  // Reads the job into a window that has just been opened, as a silent run does.
  void read() {
    writeJob();
    if (!frmMain.loaded) openWindow();
    run.bRunSilent = true;
    SelectSitesFromBackup();
  }
  void readForDebug() {
    writeJob();
    start("-D -B " + jobPath());
    run.bRunSilent = true;
    run.bRunBackup = true;
    SelectSitesFromBackup();
  }
};

// The file.

TEST_F(SelectSites, LogsAJobThatIsNotThereAndTouchesNothing) {
  openWindow();
  run.sBackupJob = "Z:\\nowhere\\at all.job";
  frmMain.lstOldValues.addItem("kept");
  run.bCopyFiles = true;
  SelectSitesFromBackup();
  EXPECT_EQ(logLines().back(), "Error - Z:\\nowhere\\at all.job not found");
  EXPECT_FALSE(hasLogged("Got file"));
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("kept"));
  EXPECT_TRUE(run.bCopyFiles);
  EXPECT_THAT(entriesOf(frmMain.lstSites), IsEmpty());
}

TEST_F(SelectSites, LogsAJobThatIsThere) {
  read();
  EXPECT_EQ(timesLogged("Got file"), 1);
}

TEST_F(SelectSites, LeavesTheFileAsItIs) {
  writeJob();
  const std::string before = folder.read("j.job");
  read();
  EXPECT_EQ(folder.read("j.job"), before);
}

TEST_F(SelectSites, ReadsEachKeyAtTheMomentOfItsStep) {
  writeJob();
  openWindow();
  events->onYield = [this](int) {
    set("BackupAllSites", "True");
    writeJob();
  };
  SelectSitesFromBackup();
  EXPECT_THAT(selectedSites(), ElementsAre("Shop", "Wiki", "Mail"))
      << "a change during the listing still counts";
}

TEST_F(SelectSites, ReadsSectionsAndKeysInAnyCase) {
  folder.write("j.job",
               "[JOB DETAILS]\r\nSITES=1\r\nimportserver=WEB1\r\nexportserver=Database\r\ntype=W3SVC\r\n"
               "findreplacecount=0\r\n[1SITE]\r\nsitename=IIS://WEB1/W3SVC/2\r\n");
  openWindow();
  run.sBackupJob = jobPath();
  SelectSitesFromBackup();
  EXPECT_THAT(selectedSites(), ElementsAre("Wiki"));
}

// The run's own database.

class PerRunDatabase : public SelectSites {
 protected:
  void openForRun() {
    writeJob();
    openWindow();
    run.bRunBackup = true;
    run.bRunSilent = true;
  }
  [[nodiscard]] std::string templatePath() const { return programPath() + "\\ForBackups.mdb"; }
  [[nodiscard]] std::string perRunPath() const { return programPath() + "\\" + kPerRun; }
};

TEST_F(PerRunDatabase, IsADatedCopyOfTheTemplate) {
  openForRun();
  executeOn("ForBackups.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('from the template', 'Web')");
  SelectSitesFromBackup();
  ASSERT_TRUE(hasPerRun());
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("from the template"));
}

TEST_F(PerRunDatabase, IsWhatTheRunWritesTo) {
  openForRun();
  SelectSitesFromBackup();
  EXPECT_EQ(frmMain.sDataConnection, "DBQ=" + perRunPath() + ";Driver={Microsoft Access Driver (*.mdb)};");
  frmMain.DBData->execute("INSERT INTO Sites (SiteName, Type) VALUES ('new', 'Web')");
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("new"));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
  EXPECT_THAT(storedNames("ForBackups.mdb"), IsEmpty());
}

TEST_F(PerRunDatabase, ClosesTheFormerOneFirst) {
  openForRun();
  databases.calls.clear();
  SelectSitesFromBackup();
  ASSERT_GE(databases.calls.size(), 2U);
  EXPECT_EQ(databases.calls[0].operation, "Close");
  EXPECT_EQ(databases.calls[1].operation, "Open");
  EXPECT_EQ(databases.calls[1].text, frmMain.sDataConnection);
}

TEST_F(PerRunDatabase, PadsNoNumberThatHasTwoDigits) {
  openForRun();
  clock->moment.parts.tm_year = 2011 - 1900;
  clock->moment.parts.tm_mon = 11;
  clock->moment.parts.tm_mday = 31;
  clock->moment.parts.tm_hour = 23;
  clock->moment.parts.tm_min = 59;
  SelectSitesFromBackup();
  EXPECT_TRUE(folder.has("program/BackupJobs/20111231-2359.mdb"));
}

TEST_F(PerRunDatabase, ReplacesTheOneOfARunInTheSameMinute) {
  openForRun();
  SelectSitesFromBackup();
  frmMain.DBData->execute("INSERT INTO Sites (SiteName, Type) VALUES ('first run', 'Web')");
  SelectSitesFromBackup();
  EXPECT_THAT(storedNames(kPerRun), IsEmpty());
}

TEST_F(PerRunDatabase, LiesBesideThoseOfEarlierRuns) {
  openForRun();
  SelectSitesFromBackup();
  clock->moment.parts.tm_min = 31;
  SelectSitesFromBackup();
  EXPECT_TRUE(hasPerRun());
  EXPECT_TRUE(folder.has("program/BackupJobs/20040307-0231.mdb"));
}

TEST_F(PerRunDatabase, CanBeWrittenWhenTheTemplateCant) {
  openForRun();
  std::filesystem::permissions(programFolder() / "ForBackups.mdb", std::filesystem::perms(0444));
  SelectSitesFromBackup();
  const auto mode = std::filesystem::status(programFolder() / "BackupJobs/20040307-0230.mdb").permissions();
  EXPECT_NE(mode & std::filesystem::perms::owner_write, std::filesystem::perms::none);
  frmMain.DBData->execute("INSERT INTO Sites (SiteName, Type) VALUES ('new', 'Web')");
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("new"));
}

TEST_F(PerRunDatabase, IsNotMadeForATargetServer) {
  set("ExportServer", "NEW6");
  openForRun();
  SelectSitesFromBackup();
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(PerRunDatabase, IsMadeForTheWordDatabaseInAnyCase) {
  set("ExportServer", "dataBASE");
  openForRun();
  SelectSitesFromBackup();
  EXPECT_TRUE(hasPerRun());
}

TEST_F(PerRunDatabase, IsNotMadeWhereTheCommandLineNamesADatabase) {
  openForRun();
  run.sCmdConnection = "DSN=elsewhere ";
  SelectSitesFromBackup();
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(PerRunDatabase, IsMadeWhereTheCommandLineNamesBlanks) {
  openForRun();
  run.sCmdConnection = "  ";
  SelectSitesFromBackup();
  EXPECT_TRUE(hasPerRun());
}

TEST_F(PerRunDatabase, IsNotMadeWhereADataSourceIsConfigured) {
  openForRun();
  writeProgramValue("ODBCDSN", "Sites");
  SelectSitesFromBackup();
  EXPECT_FALSE(folder.has("program/BackupJobs"));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
}

TEST_F(PerRunDatabase, IsMadeWhereTheDataSourceIsBlank) {
  openForRun();
  writeProgramValue("ODBCDSN", "  ");
  SelectSitesFromBackup();
  EXPECT_TRUE(hasPerRun());
}

TEST_F(PerRunDatabase, IsNotMadeOutsideAJobRun) {
  openForRun();
  run.bRunBackup = false;
  SelectSitesFromBackup();
  EXPECT_FALSE(folder.has("program/BackupJobs"));
  EXPECT_THAT(selectedSites(), ElementsAre("Shop")) << "the rest of the job is read all the same";
}

TEST_F(PerRunDatabase, StopsTheJobWithoutATemplate) {
  openForRun();
  std::filesystem::remove(programFolder() / "ForBackups.mdb");
  SelectSitesFromBackup();
  EXPECT_EQ(logLines().back(), templatePath() + " could not be found. Backup job failed.");
  EXPECT_FALSE(folder.has("program/BackupJobs"));
  EXPECT_EQ(frmMain.txtImportServer.text, "Localhost") << "nothing more was read";
  EXPECT_FALSE(frmMain.optExportFile.value());
}

TEST_F(PerRunDatabase, LogsACopyThatFails) {
  openForRun();
  std::filesystem::create_directories(programFolder() / "BackupJobs/20040307-0230.mdb");
  SelectSitesFromBackup();
  EXPECT_THAT(logLines().back(), StartsWith(kLabel));
  EXPECT_EQ(frmMain.txtImportServer.text, "Localhost");
}

TEST_F(PerRunDatabase, LogsATemplateThatIsNoDatabase) {
  openForRun();
  folder.write("program/ForBackups.mdb", "this is no database, only a few words");
  SelectSitesFromBackup();
  EXPECT_THAT(logLines().back(), StartsWith(kLabel + std::to_string(error_number::kUnspecified) + " "));
  EXPECT_EQ(
      logLines().back(),
      kLabel + failureOfOpening(fileConnectionString(programPath() + "\\BackupJobs\\20040307-0230.mdb")));
}

TEST_F(PerRunDatabase, LogsAFolderThatCantBeMade) {
  openForRun();
  folder.write("program/BackupJobs", "a file in its place");
  SelectSitesFromBackup();
  EXPECT_THAT(logLines().back(), StartsWith(kLabel));
}

TEST_F(PerRunDatabase, LogsEachStepInADebugRun) {
  readForDebug();
  std::vector<std::string> lines = logBehind("Got file");
  ASSERT_GE(lines.size(), 9U);
  lines.resize(9);
  EXPECT_THAT(
      lines, ElementsAre("Past registry settings", "Looking for file " + templatePath(),
                         "Creating BackupJobs directory", "Copying forbackups",
                         "Copying " + templatePath() + " to " + perRunPath(), "Copied", "Removing attributes",
                         "Opening Data database " + frmMain.sDataConnection, "Reading more settings"));
}

TEST_F(PerRunDatabase, MakesItsFolderOnce) {
  folder.makeFolder("program/BackupJobs");
  readForDebug();
  EXPECT_FALSE(hasLogged("Creating BackupJobs directory"));
  EXPECT_TRUE(hasPerRun());
}

// Preferences.

TEST_F(SelectSites, ForcesThePreferencesOfAJob) {
  set("ExportServer", "NEW6");
  writeJob();
  openWindow();
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkCopyIIS.setValue(false);
  frmMain.chkStartWebs.setValue(true);
  read();
  EXPECT_FALSE(run.bCopyFiles);
  EXPECT_FALSE(frmMain.chkCopyFiles.value());
  EXPECT_TRUE(run.bCopyIIS);
  EXPECT_TRUE(frmMain.chkCopyIIS.value());
  EXPECT_TRUE(run.bFastPerms);
  EXPECT_TRUE(frmMain.chkFastPermissions.value());
  EXPECT_FALSE(run.bStartWebs);
  EXPECT_FALSE(frmMain.chkStartWebs.value());
}

TEST_F(SelectSites, LeavesThePermissionsPreferenceAlone) {
  set("ExportServer", "NEW6");
  writeJob();
  openWindow();
  run.bSetFilePerms = true;
  read();
  EXPECT_TRUE(run.bSetFilePerms);
}

TEST_F(SelectSites, LosesFastPermissionsTowardsADatabaseByTheOptionsOwnClick) {
  read();
  EXPECT_FALSE(run.bFastPerms);
  EXPECT_FALSE(frmMain.chkFastPermissions.value());
}

// Import.

TEST_F(SelectSites, ImportsFromTheServerThatTheJobNames) {
  read();
  EXPECT_EQ(frmMain.sImportType, "Server");
  EXPECT_EQ(frmMain.TabImportType.selectedTab(), 1);
  EXPECT_EQ(frmMain.txtImportServer.text, "WEB1");
}

TEST_F(SelectSites, ImportsFromTheDatabaseForThatWordInAnyCase) {
  for (const char* word : {"Database", "DATABASE", "dataBase"}) {
    set("ImportServer", word);
    set("ExportServer", "NEW6");
    writeJob();
    read();
    EXPECT_EQ(frmMain.sImportType, "Database") << word;
    EXPECT_EQ(frmMain.TabImportType.selectedTab(), 2) << word;
    EXPECT_EQ(frmMain.txtImportServer.text, "Localhost") << "the name of the server stays";
    EXPECT_FALSE(frmMain.txtImportServer.visible) << "the tab's own click";
    EXPECT_EQ(frmMain.TabExportType.tabCount(), 1) << "the tab's own click";
  }
}

TEST_F(SelectSites, GoesBackToAServerFromTheDatabasesTab) {
  openWindow();
  frmMain.TabImportType.select(2);
  read();
  EXPECT_EQ(frmMain.TabImportType.selectedTab(), 1);
  EXPECT_EQ(frmMain.TabExportType.tabCount(), 2);
  EXPECT_TRUE(frmMain.txtImportServer.visible);
  EXPECT_EQ(frmMain.sImportType, "Server");
}

TEST_F(SelectSites, AsksForAServerWhenTheJobNamesNone) {
  drop("ImportServer");
  read();
  EXPECT_EQ(frmMain.txtImportServer.text, "");
  EXPECT_TRUE(hasOutput("You must enter a server to import from first!"));
  EXPECT_THAT(selectedSites(), IsEmpty());
}

TEST_F(SelectSites, CutsTheNameOfAServerTo49Characters) {
  set("ImportServer", std::string(60, 'x'));
  read();
  EXPECT_EQ(frmMain.txtImportServer.text, std::string(49, 'x'));
}

// Kind of site.

TEST_F(SelectSites, TakesW3svcForWebSites) {
  read();
  EXPECT_EQ(frmMain.sService, "W3SVC");
  EXPECT_EQ(frmMain.sExportSiteType, "Web");
  EXPECT_TRUE(frmMain.optExportWeb.value());
  EXPECT_FALSE(frmMain.optExportFTP.value());
}

TEST_F(SelectSites, TakesEveryOtherTypeForFtpSites) {
  for (const char* type : {"MSFTPSVC", "w3svc", "nonsense", "W3SVC1"}) {
    frmMain.optExportWeb.setValue(true);
    set("Type", type);
    read();
    EXPECT_EQ(frmMain.sService, "MSFTPSVC") << type;
    EXPECT_EQ(frmMain.sExportSiteType, "Ftp") << type;
    EXPECT_TRUE(frmMain.optExportFTP.value()) << type;
    EXPECT_FALSE(frmMain.optExportWeb.value()) << type;
  }
}

TEST_F(SelectSites, TakesAMissingTypeForFtpSites) {
  drop("Type");
  read();
  EXPECT_EQ(frmMain.sService, "MSFTPSVC");
  EXPECT_EQ(frmMain.sExportSiteType, "Ftp");
}

TEST_F(SelectSites, KeepsTheWordsOfAnFtpJobWhereTheOptionWasSetAlready) {
  openWindow();
  frmMain.optExportFTP.setValue(true);
  set("Type", "ftp");
  read();
  EXPECT_EQ(frmMain.sExportSiteType, "FTP") << "no click of the option puts the words right";
  EXPECT_EQ(frmMain.sService, "ftp");
}

TEST_F(SelectSites, GoesBackToWebSites) {
  openWindow();
  frmMain.optExportFTP.setValue(true);
  read();
  EXPECT_EQ(frmMain.sService, "W3SVC");
  EXPECT_EQ(frmMain.sExportSiteType, "Web");
  EXPECT_TRUE(frmMain.optExportWeb.value());
  EXPECT_THAT(selectedSites(), ElementsAre("Shop"));
}

TEST_F(SelectSites, SelectsFtpSites) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}}) +
                              element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}))));
  set("Type", "MSFTPSVC");
  set("1Site/SiteName", "IIS://WEB1/MSFTPSVC/1");
  read();
  EXPECT_THAT(selectedSites(), ElementsAre("Files"));
}

// Auto start and creation mode.

TEST_F(SelectSites, StartsSitesForTheWordTrueInAnyCase) {
  for (const char* word : {"True", "TRUE", "true"}) {
    set("AutoStartSites", word);
    read();
    EXPECT_TRUE(run.bStartWebs) << word;
    EXPECT_TRUE(frmMain.chkStartWebs.value()) << word;
    set("AutoStartSites", "False");
    read();
    EXPECT_FALSE(run.bStartWebs) << word;
    EXPECT_FALSE(frmMain.chkStartWebs.value()) << word;
  }
}

TEST_F(SelectSites, StartsNoSitesForAnyOtherWord) {
  for (const char* word : {"1", "-1", "yes", "truee"}) {
    set("AutoStartSites", word);
    read();
    EXPECT_FALSE(run.bStartWebs) << word;
  }
  drop("AutoStartSites");
  read();
  EXPECT_FALSE(run.bStartWebs);
}

struct Mode {
  const char* word;
  bool overwrite;
  bool preserve;
  bool create;
};

class CreationMode : public SelectSites, public ::testing::WithParamInterface<Mode> {};

TEST_P(CreationMode, SetsOneOfTheThreeOptions) {
  for (OptionButton* before :
       {&frmMain.optCreateWebs, &frmMain.optOverwriteWebs, &frmMain.optOverwritePreserve}) {
    before->setValue(true);
    set("SiteCreationMode", GetParam().word);
    read();
    EXPECT_EQ(frmMain.optOverwriteWebs.value(), GetParam().overwrite);
    EXPECT_EQ(frmMain.optOverwritePreserve.value(), GetParam().preserve);
    EXPECT_EQ(frmMain.optCreateWebs.value(), GetParam().create);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Words, CreationMode,
    ::testing::Values(Mode{"Overwrite", true, false, false}, Mode{"OVERWRITE", true, false, false},
                      Mode{"Overwrite Preserve", false, true, false},
                      Mode{"overwrite preserve", false, true, false}, Mode{"Create New", false, false, true},
                      Mode{"nonsense", false, false, true}, Mode{"OverwritePreserve", false, false, true}));

TEST_F(SelectSites, CreatesSitesWithoutAMode) {
  drop("SiteCreationMode");
  read();
  EXPECT_TRUE(frmMain.optCreateWebs.value());
}

// Find and replace.

TEST_F(SelectSites, ReplacesThePairsOfTheWindow) {
  openWindow();
  frmMain.lstOldValues.addItem("former");
  frmMain.lstNewValues.addItem("former");
  set("FindReplaceCount", "2");
  addPair(0, "d:\\inetpub", "e:\\sites");
  addPair(1, "old", "new");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("d:\\inetpub", "old"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("e:\\sites", "new"));
}

TEST_F(SelectSites, ReadsNoPairsForACountBelowOne) {
  for (const char* count : {"0", "-3"}) {
    frmMain.lstOldValues.addItem("former");
    set("FindReplaceCount", count);
    addPair(0, "a", "b");
    read();
    EXPECT_EQ(frmMain.lstOldValues.listCount(), 0) << count;
    EXPECT_THAT(selectedSites(), ElementsAre("Shop")) << count;
  }
}

TEST_F(SelectSites, ReadsNoPairsBeyondTheCount) {
  set("FindReplaceCount", "1");
  addPair(0, "a", "b");
  addPair(1, "c", "d");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a"));
}

TEST_F(SelectSites, ReadsAMissingReplacementAsTheEmptyText) {
  set("FindReplaceCount", "1");
  addPair(0, "a", "");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre(""));
}

TEST_F(SelectSites, ReadsAMissingPairAsTwoEmptyTexts) {
  set("FindReplaceCount", "2");
  addPair(1, "a", "b");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("", "a"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("", "b"));
}

TEST_F(SelectSites, ReadsTheFirst49CharactersOfALongFind) {
  set("FindReplaceCount", "1");
  addPair(0, std::string(48, 'a') + "bcdefghijklm", "x");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre(std::string(48, 'a') + "b"));
}

struct BadNumber {
  const char* text;
  std::int32_t number;
};

class BadPairCount : public SelectSites, public ::testing::WithParamInterface<BadNumber> {};

TEST_P(BadPairCount, EndsTheReadingWithALine) {
  set("FindReplaceCount", GetParam().text);
  set("SiteCreationMode", "Overwrite");
  read();
  EXPECT_EQ(logLines().back(),
            kLabel + std::to_string(GetParam().number) + " " + describeError(GetParam().number));
  EXPECT_TRUE(frmMain.optOverwriteWebs.value()) << "what was read before stays";
  EXPECT_FALSE(frmMain.optExportFile.value()) << "and nothing behind it is read";
  EXPECT_THAT(entriesOf(frmMain.lstSites), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Texts, BadPairCount,
                         ::testing::Values(BadNumber{"", 13}, BadNumber{"two", 13}, BadNumber{"1x", 13},
                                           BadNumber{"40000", 6}, BadNumber{"-40000", 6}));

TEST_F(SelectSites, EndsTheReadingWithoutAPairCount) {
  drop("FindReplaceCount");
  read();
  EXPECT_THAT(logLines().back(), StartsWith(std::string(kLabel) + "13 "));
}

// Export.

TEST_F(SelectSites, ExportsToTheDatabaseForThatWord) {
  read();
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 2);
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.optExportServer.value());
  EXPECT_EQ(frmMain.txtExportServer.text, "");
  EXPECT_TRUE(frmMain.fraExportFile.visible);
}

TEST_F(SelectSites, ExportsToTheServerThatTheJobNames) {
  openWindow();
  frmMain.TabExportType.select(2);
  set("ExportServer", "NEW6");
  read();
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 1);
  EXPECT_FALSE(frmMain.optExportFile.value());
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_EQ(frmMain.txtExportServer.text, "NEW6");
  EXPECT_TRUE(frmMain.fraExportServer.visible);
}

TEST_F(SelectSites, ExportsToNoServerWhenTheJobNamesNone) {
  drop("ExportServer");
  read();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_EQ(frmMain.txtExportServer.text, "");
}

TEST_F(SelectSites, PutsTheExportTabBackThatADatabaseAsSourceTakesAway) {
  set("ImportServer", "Database");
  read();
  EXPECT_EQ(frmMain.sImportType, "Database");
  EXPECT_EQ(frmMain.TabExportType.tabCount(), 2);
  EXPECT_EQ(frmMain.TabExportType.tab(2).caption, "Database");
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 2);
  EXPECT_TRUE(frmMain.optExportFile.value());
}

// Versions.

TEST_F(SelectSites, SelectsTheVersionsOfBothSides) {
  read();
  EXPECT_EQ(frmMain.lstIMIISVer.text(), "IIS5");
  EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS6");
  EXPECT_EQ(run.dblIMIISVer, 5);
  EXPECT_EQ(run.dblEXIISVer, 6);
}

TEST_F(SelectSites, LeavesAVersionWithoutAnEqualEntryAsItWas) {
  openWindow();
  frmMain.lstIMIISVer.setListIndex(2);
  set("ExportServer", "NEW6");
  for (const char* version : {"iis5", "IIS7", "IIS"}) {
    frmMain.lstEXIISVer.setListIndex(1);
    set("ImportVersion", version);
    set("ExportVersion", version);
    read();
    EXPECT_EQ(frmMain.lstIMIISVer.text(), "IIS6") << version;
    EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS5") << version;
  }
}

TEST_F(SelectSites, TakesTheSourcesVersionTowardsADatabaseWithoutOneOfItsOwn) {
  openWindow();
  frmMain.lstIMIISVer.setListIndex(1);
  set("ImportVersion", "IIS6");
  drop("ExportVersion");
  read();
  EXPECT_EQ(frmMain.lstIMIISVer.text(), "IIS6");
  EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS5") << "the one in force when the export tab was selected";
}

// Sites.

TEST_F(SelectSites, ListsAndSelectsTheSitesOfTheJob) {
  set("Sites", "2");
  addSiteOfJob(1, "IIS://WEB1/W3SVC/1");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/3");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstSites), ElementsAre("Shop", "Wiki", "Mail"));
  EXPECT_THAT(selectedSites(), ElementsAre("Shop", "Mail"));
}

TEST_F(SelectSites, ReadsTheDetailsOfTheSitesThatItSelects) {
  set("Sites", "2");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/3");
  read();
  EXPECT_EQ(query("Trelvin.mdb", "SELECT SiteID AS a, Directory AS b FROM tmpSettings ORDER BY SiteID"),
            (Rows{{"0", "C:\\site1"}, {"2", "C:\\site3"}}));
}

TEST_F(SelectSites, ComparesIdentifiersExactly) {
  for (const char* name : {"IIS://web1/W3SVC/1", "IIS://WEB1/W3SVC/1/", "IIS://WEB1/W3SVC/", "Shop"}) {
    set("1Site/SiteName", name);
    read();
    EXPECT_THAT(selectedSites(), IsEmpty()) << name;
  }
}

TEST_F(SelectSites, SkipsASiteThatIsGoneWithoutAWord) {
  set("Sites", "2");
  addSiteOfJob(1, "IIS://WEB1/W3SVC/99");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/2");
  read();
  EXPECT_THAT(selectedSites(), ElementsAre("Wiki"));
  EXPECT_THAT(logLines(), Each(Not(HasSubstr("99"))));
  EXPECT_THAT(logStartingWith(kLabel), IsEmpty());
}

TEST_F(SelectSites, LooksAtNoSiteBeyondTheCount) {
  addSiteOfJob(2, "IIS://WEB1/W3SVC/2");
  read();
  EXPECT_THAT(selectedSites(), ElementsAre("Shop"));
}

TEST_F(SelectSites, CountsSitesFromOne) {
  addSiteOfJob(0, "IIS://WEB1/W3SVC/2");
  read();
  EXPECT_THAT(selectedSites(), ElementsAre("Shop"));
}

TEST_F(SelectSites, TakesAllSitesWhenTheJobSaysSo) {
  for (const char* word : {"True", "TRUE", "true"}) {
    set("BackupAllSites", word);
    read();
    EXPECT_THAT(selectedSites(), ElementsAre("Shop", "Wiki", "Mail")) << word;
  }
}

TEST_F(SelectSites, TakesTheSavedSitesForAnyOtherWord) {
  for (const char* word : {"False", "yes", "1"}) {
    set("BackupAllSites", word);
    read();
    EXPECT_THAT(selectedSites(), ElementsAre("Shop")) << word;
  }
}

TEST_F(SelectSites, SelectsNothingForAllSitesOfNone) {
  set("BackupAllSites", "True");
  for (const char* count : {"0", "-1"}) {
    set("Sites", count);
    read();
    EXPECT_THAT(selectedSites(), IsEmpty()) << count;
    EXPECT_THAT(logStartingWith(kLabel), IsEmpty()) << count;
  }
}

class BadSiteCount : public SelectSites, public ::testing::WithParamInterface<BadNumber> {};

TEST_P(BadSiteCount, EndsTheReadingWithALineAndNothingSelected) {
  set("Sites", GetParam().text);
  read();
  EXPECT_EQ(logLines().back(),
            kLabel + std::to_string(GetParam().number) + " " + describeError(GetParam().number));
  EXPECT_THAT(selectedSites(), IsEmpty());
  EXPECT_THAT(entriesOf(frmMain.lstSites), SizeIs(3)) << "the sites are listed by then";
}

INSTANTIATE_TEST_SUITE_P(Texts, BadSiteCount,
                         ::testing::Values(BadNumber{"", 13}, BadNumber{"one", 13}, BadNumber{"32768", 6}));

TEST_F(SelectSites, DoesNotLookAtTheCountWithoutSites) {
  addServer("EMPTY", metabaseFile(webService("")));
  set("ImportServer", "EMPTY");
  set("Sites", "one");
  read();
  EXPECT_THAT(logStartingWith(kLabel), IsEmpty());
}

TEST_F(SelectSites, NeverSelectsASiteOfALongServerNameByItsIdentifier) {
  const std::string server(36, 'S');
  addServer(server, metabaseFile(webService(plainSite(1, "Shop"))));
  set("ImportServer", server);
  set("1Site/SiteName", "IIS://" + server + "/W3SVC/1");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstSiteIndexes), ElementsAre("IIS://" + server + "/W3SVC/1"));
  EXPECT_THAT(selectedSites(), IsEmpty()) << "51 characters come back as 49";
  set("BackupAllSites", "True");
  read();
  EXPECT_THAT(selectedSites(), ElementsAre("Shop"));
}

TEST_F(SelectSites, SelectsStoredSitesByTheirNumber) {
  for (const char* name : {"one", "two", "three"}) {
    executeOn("TrelvinData.mdb",
              std::string("INSERT INTO Sites (SiteName, Type) VALUES ('") + name + "', 'Web')");
  }
  set("ImportServer", "Database");
  set("ExportServer", "NEW6");
  set("1Site/SiteName", "2");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstSiteIndexes), ElementsAre("1", "2", "3"));
  ASSERT_THAT(selectedSites(), SizeIs(1));
  EXPECT_THAT(selectedSites()[0], StartsWith("two "));
}

TEST_F(SelectSites, SelectsNothingOfAServerThatCantBeReached) {
  set("ImportServer", "GONE");
  read();
  EXPECT_THAT(entriesOf(frmMain.lstSites), IsEmpty());
  EXPECT_THAT(logStartingWith("frmMain_populateFromServer Error AL " +
                              std::to_string(error_number::kServerUnavailable) + " "),
              SizeIs(1));
  EXPECT_THAT(output,
              Contains(StartsWith("Error - " + std::to_string(error_number::kServerUnavailable) + " ")));
  EXPECT_THAT(logStartingWith(kLabel), IsEmpty());
}

TEST_F(SelectSites, LogsASiteWhoseDetailsCantBeRead) {
  metabase->failOn("GetObject", "/W3SVC/1", "", error_number::kMetabasePathNotFound);
  set("Sites", "2");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/2");
  read();
  EXPECT_EQ(logLines().back(), kLabel + std::to_string(error_number::kMetabasePathNotFound) + " " +
                                   describeError(error_number::kMetabasePathNotFound));
  EXPECT_THAT(selectedSites(), ElementsAre("Shop"))
      << "the routine leaves at once, with the window as far as it got";
}

TEST_F(SelectSites, GivesWayToEventsBehindListingAndSelection) {
  writeJob();
  openWindow();
  frmMain.TabImportType.select(1);
  events->yields = 0;
  SelectSitesFromBackup();
  // Each child of the service node is one more.
  EXPECT_EQ(events->yields, 3 + 2);
}

TEST_F(SelectSites, ReadsAFileThatWasWrittenByHandInAnotherOrderAndCase) {
  openWindow();
  folder.write("j.job",
               "; the week's job\n\n[1SITE]\nsitename = IIS://WEB1/W3SVC/2\n\n[0findreplace]\n"
               "REPLACE=new\n  find =old\n[job details]\nbackupallsites=false\nfindreplacecount=1\n"
               "sitecreationmode=overwrite preserve\nautostartsites=true\ntype=W3SVC\n"
               "exportversion=IIS6\nimportversion=IIS5\nexportserver=database\nIMPORTSERVER=web1\n"
               "sites= 1 \nNobodysKey=1\n[Nobody]\nSites=9\n");
  addServer("web1", metabaseOf("WEB1"));
  run.sBackupJob = jobPath();
  run.bRunSilent = true;
  SelectSitesFromBackup();
  EXPECT_EQ(frmMain.txtImportServer.text, "web1");
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_TRUE(frmMain.optOverwritePreserve.value());
  EXPECT_TRUE(run.bStartWebs);
  EXPECT_EQ(frmMain.lstIMIISVer.text() + frmMain.lstEXIISVer.text(), "IIS5IIS6");
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("old"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("new"));
  EXPECT_THAT(entriesOf(frmMain.lstSites), ElementsAre("Shop", "Wiki", "Mail"));
  EXPECT_THAT(selectedSites(), IsEmpty()) << "the server's name is part of a site's identifier, as written";
  folder.write("j.job", replaceAll(folder.read("j.job"), "IIS://WEB1", "IIS://web1"));
  SelectSitesFromBackup();
  EXPECT_THAT(selectedSites(), ElementsAre("Wiki"));
}

TEST_F(SelectSites, TakesAPieceOfADeepPathForAMissingKey) {
  openWindow();
  const std::string deep = "a-folder-of-a-name-that-is-long-enough/j.job";
  folder.write(deep, "[Job Details]\r\nSites=1\r\nImportServer=WEB1\r\nType=W3SVC\r\nFindReplaceCount=0\r\n");
  run.sBackupJob = programForm(folder / deep);
  SelectSitesFromBackup();
  ASSERT_GE(run.sBackupJob.size(), 50U);
  EXPECT_EQ(frmMain.txtExportServer.text, run.sBackupJob.substr(0, 49));
}

// Debug lines.

TEST_F(SelectSites, LogsEveryStepInADebugRun) {
  set("ExportServer", "NEW6");
  addServer("WEB1", metabaseFile(webService("")));
  readForDebug();
  EXPECT_THAT(logBehind("Got file"),
              ElementsAre("Reading more settings", "About to setup server settings", "Getting import server",
                          "W3SVC", "auto start", "setting types", "creation mode", "Find and replace",
                          "export server", "Setting IIS Versions", "About to populate list of sites",
                          "Getting list of web sites from host...", "DELETE FROM tmpSettings",
                          "DELETE FROM tmpFilesToCopy", "Done", "Finished populating sites",
                          "Finished selecting sites"));
}

TEST_F(SelectSites, LogsLessForADatabaseAsSource) {
  set("ImportServer", "Database");
  set("ExportServer", "NEW6");
  set("Type", "MSFTPSVC");
  readForDebug();
  std::vector<std::string> lines = logBehind("Got file");
  ASSERT_GE(lines.size(), 3U);
  lines.resize(3);
  EXPECT_THAT(lines, ElementsAre("Reading more settings", "MSFTPSVC", "auto start"));
}

TEST_F(SelectSites, LogsTheFileAloneOtherwise) {
  set("ExportServer", "NEW6");
  read();
  EXPECT_THAT(logBehind("Got file"), ElementsAre("Getting list of web sites from host...", "Done"));
}

}  // namespace
}  // namespace trelvin::test
