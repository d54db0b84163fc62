// A job run, from the command line to the unload.
#include "jobs/run_backup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "job_test.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kLabel = "frmMain RunBackup Error ";

class JobRun : public JobTest {
 protected:
  JobRun() { addSites(); }
  void runJob(const std::string& furtherSwitches = {}) {
    writeJob();
    run.sBackupJob.clear();
    start("-RUNBACKUP -B " + jobPath() + furtherSwitches);
  }
  // Lines that mark the run's phases, in their order.
  [[nodiscard]] std::vector<std::string> phases() const {
    std::vector<std::string> found;
    for (const std::string& line : logLines()) {
      for (const char* phase :
           {"Loading...", "Loading complete", "Running backup job", "Got file", "About to run", "ExportFile",
            "ExportServer", "Exporting to file", "Closing...", "Closing complete"}) {
        if (line == phase) found.push_back(line);
      }
    }
    return found;
  }
  [[nodiscard]] std::string otherDatabase() const {
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / "TrelvinData.mdb",
                               programFolder() / "Other.mdb", std::filesystem::copy_options::skip_existing);
    return fileConnectionString(programPath() + "\\Other.mdb");
  }
};

TEST_F(JobRun, GoesThroughItsPhasesInOrder) {
  runJob();
  EXPECT_THAT(phases(),
              ElementsAre("Loading...", "Loading complete", "Running backup job", "Got file", "About to run",
                          "ExportFile", "Exporting to file", "Closing...", "Closing complete"));
}

TEST_F(JobRun, StoresTheSitesOfTheJobInADatabaseOfItsOwn) {
  set("Sites", "2");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/3");
  runJob();
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop", "Mail"));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
  EXPECT_FALSE(query(kPerRun, "SELECT ID AS a FROM Data WHERE SiteNumber = 2").empty());
}

TEST_F(JobRun, LeavesTheServerAsItWas) {
  const std::string before = metabaseOf("WEB1");
  runJob();
  EXPECT_EQ(metabaseOf("WEB1"), before);
}

TEST_F(JobRun, UnloadsTheWindowAtItsEnd) {
  runJob();
  EXPECT_FALSE(frmMain.loaded);
  EXPECT_FALSE(anyFormLoaded());
}

TEST_F(JobRun, NeverShowsTheWindow) {
  bool wasVisible = false;
  events->onYield = [&](int) { wasVisible = wasVisible || frmMain.visible; };
  runJob();
  EXPECT_GT(events->yields, 0);
  EXPECT_FALSE(wasVisible);
  EXPECT_FALSE(frmMain.visible);
}

TEST_F(JobRun, AsksNothing) {
  set("ExportVersion", "IIS6");
  runJob();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(dialogs->asked, IsEmpty());
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 0) << "no pair for the Windows folder";
}

TEST_F(JobRun, IsSilentWhateverTheWindowSays) {
  runJob();
  EXPECT_TRUE(run.bRunSilent);
  EXPECT_TRUE(frmMain.chkRunSilent.value());
}

TEST_F(JobRun, IsSilentBeforeItLooksForTheJob) {
  start("-RUNBACKUP -B Z:\\no.job");
  EXPECT_TRUE(run.bRunSilent);
  EXPECT_TRUE(frmMain.chkRunSilent.value());
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(JobRun, EndsWithALineInTheOutputAlone) {
  runJob();
  EXPECT_EQ(output.back(), "Done!");
}

TEST_F(JobRun, AppliesThePairsOfTheJob) {
  set("FindReplaceCount", "1");
  addPair(0, "c:\\site", "E:\\sites\\");
  runJob();
  EXPECT_EQ(query(kPerRun, "SELECT StringValue AS a FROM Data WHERE Name = 'Path'"),
            (Rows{{"E:\\sites\\1"}}));
}

TEST_F(JobRun, GivesWayToEventsBetweenSelectingAndRunning) {
  bool wasBetween = false;
  events->onYield = [&](int) {
    const auto lines = logLines();
    wasBetween = wasBetween || (lines.back() == "Finished selecting sites");
  };
  runJob(" -D");
  EXPECT_TRUE(wasBetween);
}

TEST_F(JobRun, RunsTheJobBesideTheProgramWhenNoneIsNamed) {
  writeJob();
  folder.write("program/Backup.job", folder.read("j.job"));
  run.sBackupJob.clear();
  start("-RUNBACKUP");
  EXPECT_EQ(run.sBackupJob, programPath() + "\\Backup.job");
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop"));
}

TEST_F(JobRun, LooksForAJobWithoutADriveBesideTheProgram) {
  writeJob();
  folder.write("program/nightly.job", folder.read("j.job"));
  start("-RUNBACKUP -B nightly.job");
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop"));
}

TEST_F(JobRun, PutsANetworkPathBehindTheProgramFolder) {
  start("-RUNBACKUP -B \\\\server\\share\\a.job");
  EXPECT_TRUE(hasLogged("Error - " + programPath() + "\\\\\\server\\share\\a.job not found"));
}

TEST_F(JobRun, TakesTheLastWordOfAPathWithABlank) {
  start("-RUNBACKUP -B C:\\my jobs\\a.job");
  EXPECT_TRUE(hasLogged("Error - " + programPath() + "\\jobs\\a.job not found"));
}

// The database of the command line.

TEST_F(JobRun, WritesIntoTheDatabaseOfTheCommandLine) {
  const std::string other = otherDatabase();
  runJob(" -C " + other);
  EXPECT_THAT(storedNames("Other.mdb"), ElementsAre("Shop"));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(JobRun, AddsToTheDatabaseOfTheCommandLine) {
  const std::string other = otherDatabase();
  runJob(" -C " + other);
  renew(frmMain);
  renew(frmSplash);
  runJob(" -C " + other);
  EXPECT_THAT(storedNames("Other.mdb"), ElementsAre("Shop", "Shop"));
}

TEST_F(JobRun, ClosesTheFormerDatabaseAndOpensTheOneOfTheCommandLine) {
  const std::string other = otherDatabase();
  runJob(" -C " + other);
  std::vector<std::string> operations;
  for (const DatabaseCall& call : databases.calls) {
    if (call.operation == "Open" || call.operation == "Close")
      operations.push_back(call.operation + " " + call.text);
  }
  ASSERT_THAT(operations, SizeIs(4));
  EXPECT_EQ(operations[2], "Close ");
  EXPECT_EQ(operations[3], "Open " + other + " ");
}

TEST_F(JobRun, LogsTheDatabaseOfTheCommandLineInADebugRun) {
  const std::string other = otherDatabase();
  runJob(" -D -C " + other);
  std::vector<std::string> lines = logBehind("Running backup job");
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[0], "Opening Data database " + other + " ");
  EXPECT_EQ(lines[1], "Got file");
}

TEST_F(JobRun, KeepsItsDatabaseForASwitchWithoutAValue) {
  runJob(" -C  ");
  EXPECT_TRUE(hasPerRun());
  EXPECT_THAT(logStartingWith(kLabel), IsEmpty());
}

TEST_F(JobRun, StopsWhereTheDatabaseOfTheCommandLineCantBeOpened) {
  const std::string missing = fileConnectionString(programPath() + "\\Missing.mdb");
  runJob(" -C " + missing);
  EXPECT_THAT(logLines().back(), StartsWith(kLabel + std::to_string(error_number::kUnspecified) + " "));
  EXPECT_EQ(logLines().back(), kLabel + failureOfOpening(missing));
  EXPECT_THAT(phases(), ElementsAre("Loading...", "Loading complete", "Running backup job"));
  EXPECT_TRUE(frmMain.loaded) << "the window stays until someone closes it";
  EXPECT_TRUE(run.bRunSilent);
  EXPECT_FALSE(std::filesystem::exists(programFolder() / "Missing.mdb"));
}

TEST_F(JobRun, StopsWhereTheDatabaseOfTheCommandLineIsNone) {
  folder.write("program/Other.mdb", "not a database at all, but long enough to be looked at");
  runJob(" -C " + fileConnectionString(programPath() + "\\Other.mdb"));
  EXPECT_THAT(logLines().back(), StartsWith(kLabel));
  EXPECT_TRUE(frmMain.loaded);
  EXPECT_EQ(folder.read("program/Other.mdb"), "not a database at all, but long enough to be looked at");
}

// Jobs that can't be read.

TEST_F(JobRun, GoesOnWithoutItsJobAndExportsNothing) {
  start("-RUNBACKUP -B Z:\\no.job");
  EXPECT_THAT(logBehind("Running backup job"), ElementsAre("Error - Z:\\no.job not found", "About to run",
                                                           "ExportServer", "Closing...", "Closing complete"));
  EXPECT_THAT(output, ElementsAre("Please select a site to export", "Done!"));
  EXPECT_FALSE(frmMain.loaded);
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
}

TEST_F(JobRun, GoesOnWithoutATemplateAndExportsNothing) {
  std::filesystem::remove(programFolder() / "ForBackups.mdb");
  runJob();
  EXPECT_THAT(logBehind("Got file"),
              ElementsAre(programPath() + "\\ForBackups.mdb could not be found. Backup job failed.",
                          "About to run", "ExportServer", "Closing...", "Closing complete"));
  EXPECT_THAT(output, ElementsAre("Please select a site to export", "Done!"));
  EXPECT_FALSE(frmMain.loaded);
}

TEST_F(JobRun, GoesOnWithAJobThatFailsHalfway) {
  set("FindReplaceCount", "");
  runJob();
  EXPECT_THAT(logBehind("Got file"),
              ElementsAre("frmMain SelectSitesFromBackup Error 13 " + describeError(13), "About to run",
                          "ExportServer", "Closing...", "Closing complete"));
  EXPECT_THAT(output, ElementsAre("Please select a site to export", "Done!"));
}

TEST_F(JobRun, ExportsWhatWasSelectedWhenAJobFails) {
  set("Sites", "2");
  addSiteOfJob(2, "IIS://WEB1/W3SVC/2");
  int binds = 0;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    const bool second = call.operation == "GetObject" && call.path.ends_with("/W3SVC/2");
    return second && ++binds == 1 ? std::optional(error_number::kAccessDenied) : std::nullopt;
  };
  runJob();
  EXPECT_THAT(logStartingWith("frmMain SelectSitesFromBackup Error"), SizeIs(1));
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop", "Wiki")) << "both lines were selected by then";
}

TEST_F(JobRun, ExportsNothingFromAServerThatCantBeReached) {
  set("ImportServer", "GONE");
  runJob();
  EXPECT_THAT(storedNames(kPerRun), IsEmpty());
  EXPECT_THAT(output, Contains("Please select a site to export"));
  EXPECT_THAT(phases(), Contains("ExportFile"));
  EXPECT_FALSE(frmMain.loaded);
}

TEST_F(JobRun, ExportsNothingFromABrokenMetabase) {
  addServer("WEB1", "<?xml version =\"1.0\"?>\r\n<configuration><MBProperty><IIsWeb");
  runJob();
  EXPECT_THAT(storedNames(kPerRun), IsEmpty());
  EXPECT_THAT(logStartingWith("frmMain_populateFromServer Error AL"), SizeIs(1));
  EXPECT_FALSE(frmMain.loaded);
}

TEST_F(JobRun, UnloadsTheWindowWhateverTheExportDid) {
  metabase->rule = [this](const MetabaseCall&) -> std::optional<std::int32_t> {
    return hasLogged("Exporting to file") ? std::optional(error_number::kServerUnavailable) : std::nullopt;
  };
  runJob();
  metabase->rule = nullptr;
  EXPECT_THAT(phases(), Contains("Closing complete"));
  EXPECT_EQ(output.back(), "Done!");
}

TEST_F(JobRun, WarnsOfACorruptSourceAndGoesOn) {
  addServer("WEB1", metabaseFile(webService(webSite(1, "Shop") + directory(1, "/ROOT") +
                                            virtualDir(1, "/ROOT/v", {{"Path", "C:\\v"}}))));
  runJob();
  const std::string warning =
      "WARNING - The site  has an incorrectly configured metabase on the source server. The export may fail "
      "to run on "
      "your target server. Silent mode on so export continues...";
  EXPECT_TRUE(hasOutput(warning));
  EXPECT_TRUE(hasLogged(warning));
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop"));
}

TEST_F(JobRun, WarnsInTheOutputOfASiteWithoutDirectories) {
  addServer("WEB1", metabaseFile(webService(webSite(1, "Shop"))));
  runJob();
  EXPECT_TRUE(hasOutput(
      "Could not retreive directory information from the DB for this site - this export will fail"));
  EXPECT_THAT(boxes(), IsEmpty());
}

// Other directions.

TEST_F(JobRun, PressesTheOtherButtonForATargetServer) {
  set("ExportServer", "GONE");
  runJob();
  EXPECT_THAT(phases(), ElementsAre("Loading...", "Loading complete", "Running backup job", "Got file",
                                    "About to run", "ExportServer", "Closing...", "Closing complete"));
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(JobRun, IsNotStoppedBetweenTwoDatabases) {
  const std::string other = otherDatabase();
  executeOn("Other.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('stored', 'Web')");
  executeOn("Other.mdb",
            "INSERT INTO Data (SiteNumber, Location, Name, DataType, StringValue) VALUES (1, '/ROOT', "
            "'Path', 8, 'C:\\s')");
  set("ImportServer", "Database");
  set("1Site/SiteName", "1");
  runJob(" -C " + other);
  EXPECT_THAT(phases(), Contains("ExportFile"));
  EXPECT_THAT(phases(), Contains("Exporting to file"));
  EXPECT_THAT(storedNames("Other.mdb"), SizeIs(2)) << "the row of a site that no metabase knows";
}

TEST_F(JobRun, FindsNothingInADatabaseOfItsOwn) {
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('stored', 'Web')");
  set("ImportServer", "Database");
  set("1Site/SiteName", "1");
  runJob();
  EXPECT_TRUE(hasOutput("No sites were found in the database"));
  EXPECT_TRUE(hasOutput("Please select a site to export"));
  EXPECT_TRUE(hasPerRun());
}

TEST_F(JobRun, ReadsTheDatabaseOfTheProgramForATargetServer) {
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('stored', 'Web')");
  set("ImportServer", "Database");
  set("ExportServer", "GONE");
  runJob();
  EXPECT_THAT(entriesOf(frmMain.lstSiteIndexes), ElementsAre("1"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

// Out of a database onto a server.

class RestoringJob : public JobRun {
 protected:
  RestoringJob() {
    addServer("NEW1", metabaseFile(webService(plainSite(4, "Kept"))));
    set("ImportServer", "Database");
    set("ExportServer", "NEW1");
    set("ImportVersion", "IIS6");
    set("1Site/SiteName", "1");
  }
  void store(const std::string& database, const std::string& name, const std::string& number) const {
    executeOn(database, "INSERT INTO Sites (SiteName, Type) VALUES ('" + name + "', 'Web')");
    const std::string id = query(database, "SELECT MAX(ID) AS a FROM Sites")[0][0];
    executeOn(
        database,
        "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, StringValue) VALUES (" +
            id + ", '', 'ServerComment', 'IIsWebServer', 8, " + number + ", '" + name + "'), (" + id +
            ", '/ROOT', 'Path', 'IIsWebVirtualDir', 8, 'ROOT', 'C:\\" + name + "')");
  }
  [[nodiscard]] static std::string commentOf(int number) {
    std::string comment = "(no such site)";
    attempt([&] {
      comment = getObject("IIS://NEW1/W3SVC/" + std::to_string(number))->get("ServerComment").toText();
    });
    return comment;
  }
};

TEST_F(RestoringJob, RebuildsASiteOfTheProgramsOwnDatabaseAndShowsNoBox) {
  store("TrelvinData.mdb", "Shop", "'7'");
  store("TrelvinData.mdb", "Wiki", "'9'");
  runJob();
  EXPECT_EQ(commentOf(5), "Shop");
  EXPECT_EQ(commentOf(4), "Kept");
  EXPECT_EQ(commentOf(6), "(no such site)");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(output.back(), "Done!");
  EXPECT_THAT(logLines(), Contains("Exporting to server from file"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
  EXPECT_FALSE(frmMain.loaded);
}

TEST_F(RestoringJob, ReadsTheDatabaseOfTheCommandLine) {
  const std::string other = otherDatabase();
  store("TrelvinData.mdb", "Wrong", "'7'");
  store("Other.mdb", "Right", "'7'");
  const std::string before = folder.read("program/Other.mdb");
  runJob(" -C " + other);
  EXPECT_EQ(commentOf(5), "Right");
  EXPECT_EQ(folder.read("program/Other.mdb"), before);
}

TEST_F(RestoringJob, TakesTheNumbersByTheModeOfTheJob) {
  store("TrelvinData.mdb", "Shop", "'7'");
  store("TrelvinData.mdb", "Wiki", "'9'");
  set("BackupAllSites", "True");
  set("SiteCreationMode", "Overwrite Preserve");
  runJob();
  EXPECT_EQ(commentOf(7), "Shop");
  EXPECT_EQ(commentOf(9), "Wiki");
}

TEST_F(RestoringJob, RebuildsFtpSitesAndLeavesWebSitesOfTheSameNumberOut) {
  store("TrelvinData.mdb", "Shop", "'7'");
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('Files', 'Ftp')");
  executeOn("TrelvinData.mdb",
            "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, StringValue) VALUES "
            "(2, '', 'ServerComment', 'IIsFtpServer', 8, '3', 'Files'), "
            "(2, '/ROOT', 'Path', 'IIsFtpVirtualDir', 8, 'ROOT', 'D:\\ftp')");
  addServer("NEW1", metabaseFile(webService(plainSite(3, "Kept")) + ftpService("")));
  set("Type", "MSFTPSVC");
  set("BackupAllSites", "True");
  set("SiteCreationMode", "Overwrite Preserve");
  runJob();
  EXPECT_EQ(commentOf(3), "Kept");
  EXPECT_EQ(commentOf(7), "(no such site)");
  EXPECT_EQ(getObject("IIS://NEW1/MSFTPSVC/3")->get("ServerComment").toText(), "Files");
  EXPECT_EQ(getObject("IIS://NEW1/MSFTPSVC/3/ROOT")->get("Path").toText(), "D:\\ftp");
  EXPECT_THAT(logStartingWith("Error"), IsEmpty());
}

TEST_F(RestoringJob, AppliesItsPairsAndStartsTheSite) {
  store("TrelvinData.mdb", "Shop", "'7'");
  addPair(0, "shop", "Mall");
  set("FindReplaceCount", "1");
  set("AutoStartSites", "True");
  runJob();
  EXPECT_EQ(commentOf(5), "Mall");
  EXPECT_TRUE(hasLogged("Starting site..."));
}

TEST_F(RestoringJob, IsNotStoppedByASiteWithoutANumber) {
  store("TrelvinData.mdb", "Shop", "Null");
  set("SiteCreationMode", "Overwrite Preserve");
  runJob();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(hasLogged("Could not retreive a W3SVCNumber for the web site with DB ID 1"));
  EXPECT_THAT(phases(), Contains("Closing complete"));
}

TEST_F(RestoringJob, LogsWhatIsWrongWithADatabaseWithoutTheTables) {
  const std::string other = otherDatabase();
  executeOn("Other.mdb", "DROP TABLE Data");
  executeOn("Other.mdb", "DROP TABLE Sites");
  runJob(" -C " + other);
  const auto lines = logStartingWith("frmMain_populateFromDatabase Error ");
  ASSERT_FALSE(lines.empty());
  EXPECT_THAT(lines[0], StartsWith("frmMain_populateFromDatabase Error " +
                                   std::to_string(error_number::kNoSuchTable) + " "));
  EXPECT_TRUE(hasOutput("No sites were found in the database"));
  EXPECT_TRUE(hasOutput("Please select a site to export"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(phases(), Contains("Closing complete"));
}

TEST_F(RestoringJob, LogsWhatIsWrongWithADatabaseWithoutTheRowsOfItsSites) {
  const std::string other = otherDatabase();
  store("Other.mdb", "Shop", "'7'");
  executeOn("Other.mdb", "DROP TABLE Data");
  runJob(" -C " + other);
  const std::string reason = std::to_string(error_number::kNoSuchTable);
  EXPECT_THAT(logStartingWith("frmMain SelectSitesFromBackup Error " + reason + " "), SizeIs(1));
  EXPECT_THAT(logStartingWith("Error reading the stored rows of the site Error " + reason), SizeIs(1))
      << "the site was selected by then, and the run goes on with it";
  EXPECT_EQ(output.back(), "Done!");
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(commentOf(4), "Kept");
}

TEST_F(RestoringJob, GoesOnAgainstNoTargetAndEndsInDone) {
  store("TrelvinData.mdb", "Shop", "'7'");
  set("ExportServer", "GONE");
  runJob();
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_TRUE(hasLogged("Error connecting to target server"));
  EXPECT_EQ(output.back(), "Done!");
  EXPECT_THAT(phases(), Contains("Closing complete"));
}

TEST_F(JobRun, PicksUpASiteThatCameLater) {
  set("BackupAllSites", "True");
  runJob();
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop", "Wiki", "Mail"));
}

TEST_F(JobRun, IsNotReachedByASecondInstance) {
  application->isSecond = true;
  writeJob();
  EXPECT_THROW(start("-RUNBACKUP -B " + jobPath()), ProcessEnded);
  EXPECT_THAT(boxes(), ElementsAre("This program is already running!"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
  EXPECT_THAT(databases.textsOf("Open"), IsEmpty());
}

TEST_F(JobRun, IsNotReachedWithoutASettingsDatabase) {
  std::filesystem::remove(programFolder() / "Trelvin.mdb");
  runJob();
  EXPECT_THAT(logStartingWith("frmSplash_Load Error "), SizeIs(1));
  EXPECT_THAT(logLines(), Not(Contains("Running backup job")));
}

}  // namespace
}  // namespace trelvin::test
