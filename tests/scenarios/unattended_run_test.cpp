// What a scheduler starts: the program as a process, with a job.
#include "unattended_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "core/registry_strings.h"
#include "fakes/data_sources.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// A sound job.

TEST_F(UnattendedRun, StoresTheSitesOfItsJobInADatabaseOfItsOwn) {
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_EQ(result.standardError, "");
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  const std::string database = perRunDatabases()[0];
  EXPECT_THAT(storedNames(database), ElementsAre("Bob's shop"));
  EXPECT_EQ(
      query(database, "SELECT Location AS a, StringValue AS b FROM Data WHERE Name = 'Path' ORDER BY ID"),
      (Rows{{"/ROOT", "C:\\WINNT\\site"}, {"/ROOT/images", "D:\\images"}}));
  EXPECT_EQ(query(database, "SELECT NumberValue AS a FROM Data WHERE Name = 'MaxConnections'"),
            (Rows{{"2000"}}));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
}

TEST_F(UnattendedRun, WritesEveryLineOfTheOutputListToStandardOutput) {
  const ProcessResult result = runJob();
  EXPECT_THAT(linesOf(result.standardOutput),
              ElementsAre("Begining the export", "This may take some time", "This program may appear to ",
                          "have stopped responding", "Watch this list for", "progress reports",
                          "Exporting virtual directory /ROOT", "Exporting virtual directory /ROOT/images",
                          "Building property transfer list", "Transferring properties...",
                          "Storing New IP addresses", "Done!"));
}

TEST_F(UnattendedRun, LogsItsPhasesInTheCurrentFolder) {
  runJob();
  EXPECT_THAT(log(), ElementsAre("Loading...", "Loading complete", "Running backup job", "Got file",
                                 "Getting list of web sites from host...", "Done", "About to run",
                                 "ExportFile", "Exporting to file", "Exporting site (1 of 1) Bob's shop...",
                                 "Exporting virtual directory /ROOT", "Searching for path for /ROOT",
                                 "2 directories to look through", "Exporting virtual directory /ROOT/images",
                                 "Searching for path for /ROOT/images", "2 directories to look through",
                                 "Transferring properties...", "Saving IPs...", "Saving SSL IPs...",
                                 "Completed", "Closing...", "Closing complete"));
  EXPECT_FALSE(folder.has("program/Trelvin.log"));
}

TEST_F(UnattendedRun, LeavesSourceJobAndTemplateByteForByte) {
  const auto network = bytesBelow("network");
  const std::string job = folder.read("j.job");
  const std::string forBackups = folder.read("program/ForBackups.mdb");
  runJob();
  EXPECT_EQ(bytesBelow("network"), network);
  EXPECT_EQ(folder.read("j.job"), job);
  EXPECT_EQ(folder.read("program/ForBackups.mdb"), forBackups);
}

TEST_F(UnattendedRun, LogsStatementsInADebugRunOnly) {
  runJob();
  EXPECT_THAT(log(), Each(Not(AnyOf(StartsWith("INSERT"), StartsWith("SELECT"), StartsWith("Opening")))));
  runJob({"-D"});
  EXPECT_THAT(log(), AllOf(Contains("INSERT INTO Sites (SiteName, Type) Values('Bob''s shop','Web')"),
                           Contains("SELECT * FROM Sites"), Contains("W3SVCNUM = 1"),
                           Contains("Propname = MaxConnections"),
                           Contains("Settings Connection String = " + connectionTo("Trelvin.mdb"))));
}

TEST_F(UnattendedRun, TakesSwitchesInAnyFormAndCase) {
  const ProcessResult result = runProgram({"/runbackup", "/b", jobArgument()});
  expectUnloaded(result);
  EXPECT_THAT(perRunDatabases(), SizeIs(1));
}

TEST_F(UnattendedRun, RunsTheJobBesideTheProgramByDefault) {
  folder.write("program/Backup.job", jobText());
  expectUnloaded(runProgram({"-RUNBACKUP"}));
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(storedNames(perRunDatabases()[0]), ElementsAre("Bob's shop"));
}

TEST_F(UnattendedRun, FindsARelativeJobBesideTheProgramAndNotInTheCurrentFolder) {
  folder.write("program/nightly.job", jobText());
  folder.write("work/nightly.job", "[Job Details]\r\n");
  expectUnloaded(runProgram({"-RUNBACKUP", "-B", "nightly.job"}));
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(storedNames(perRunDatabases()[0]), ElementsAre("Bob's shop"));
}

TEST_F(UnattendedRun, TakesSitesThatCameLaterToo) {
  addJobText(jobText({{"BackupAllSites", "True"}}));
  runJob();
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(storedNames(perRunDatabases()[0]), ElementsAre("Bob's shop", "Wiki"));
}

TEST_F(UnattendedRun, AppliesThePairsOfItsJob) {
  addJobText(jobText(
      {{"FindReplaceCount", "1"}},
      "[0FindReplace]\r\nFind=winnt\r\nReplace=Windows\r\n[1Site]\r\nSiteName=IIS://WEB1/W3SVC/1\r\n"));
  runJob();
  EXPECT_EQ(query(perRunDatabases().at(0),
                  "SELECT StringValue AS a FROM Data WHERE Location = '/ROOT' AND Name = 'Path'"),
            (Rows{{"C:\\Windows\\site"}}));
}

TEST_F(UnattendedRun, RunsFtpJobs) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}}) +
                              element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}))));
  addJobText(jobText({{"Type", "MSFTPSVC"}}, "[1Site]\r\nSiteName=IIS://WEB1/MSFTPSVC/1\r\n"));
  expectUnloaded(runJob());
  EXPECT_EQ(query(perRunDatabases().at(0), "SELECT SiteName AS a, Type AS b FROM Sites"),
            (Rows{{"Files", "Ftp"}}));
}

TEST_F(UnattendedRun, AddsToTheDatabaseOfTheCommandLine) {
  const std::string other = addOtherDatabase();
  runJob(words(other));
  runJob(words(other));
  EXPECT_THAT(storedNames("Other.mdb"), ElementsAre("Bob's shop", "Bob's shop"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(UnattendedRun, RebuildsTheSitesOfARunsDatabaseOnAServer) {
  addServer("NEW1", metabaseFile(webService(plainSite(1, "Kept"))));
  runJob();
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  addJobText(jobText({{"ImportServer", "Database"}, {"ExportServer", "NEW1"}}, "[1Site]\r\nSiteName=1\r\n"));
  const ProcessResult result = runJob(words(connectionTo(perRunDatabases()[0])));
  expectUnloaded(result);
  EXPECT_THAT(linesOf(result.standardOutput),
              AllOf(Contains("Creating Web Site W3SVC2"), Contains("Creating virtual directory /ROOT/images"),
                    Contains("Done!")));
  const std::string target = metabaseOf("NEW1");
  EXPECT_THAT(target, HasSubstr("/LM/W3SVC/2/ROOT/images"));
  EXPECT_THAT(target, HasSubstr("ServerComment=\"Bob's shop\""));
  EXPECT_THAT(target, HasSubstr("ServerComment=\"Kept\""));
  EXPECT_THAT(perRunDatabases(), SizeIs(1)) << "a run that only reads makes none";
}

TEST_F(UnattendedRun, RebuildsTheSitesOfTheDataSourceThatWasChosen) {
  addServer("NEW1", metabaseFile(webService("")));
  const std::string other = addOtherDatabase();
  runJob(words(other));
  dataSources.setUser(sqliteSource("Own sites", programFolder() / "Other.mdb"));
  writeProgramValue("ODBCDSN", "Own sites");
  addJobText(jobText({{"ImportServer", "Database"}, {"ExportServer", "NEW1"}}, "[1Site]\r\nSiteName=1\r\n"));
  expectUnloaded(runJob());
  EXPECT_THAT(metabaseOf("NEW1"), HasSubstr("ServerComment=\"Bob's shop\""));
  dataSources.clear();
}

TEST_F(UnattendedRun, WorksInAFolderWithBlanksAndUmlauts) {
  expectToRunIn("Bob's \xC3\x9C & co");
}

// Starts that are none.

TEST_F(UnattendedRun, StopsBeforeItsJobWithoutASettingsDatabase) {
  fs::remove(programFolder() / "Trelvin.mdb");
  const ProcessResult result = runJob();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("Trelvin.log"));
  EXPECT_THAT(log(), Contains(tells("frmSplash_Load Error ", failureOfOpening(connectionTo("Trelvin.mdb")))));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

// Bad jobs.

TEST_F(UnattendedRun, ExportsNothingWithoutItsJob) {
  const ProcessResult result = runProgram({"-RUNBACKUP", "-B", "Z:\\no\\such.job"});
  expectUnloaded(result);
  EXPECT_THAT(linesOf(result.standardOutput), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_THAT(log(), Contains("Error - Z:\\no\\such.job not found"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

struct BadJob {
  const char* what;
  std::string text;
};

class BadJobFile : public UnattendedRun, public ::testing::WithParamInterface<BadJob> {};

TEST_P(BadJobFile, IsReadAsFarAsItGoesAndExportsNothing) {
  const auto network = bytesBelow("network");
  addJobText(GetParam().text);
  const ProcessResult result = runJob();
  expectUnloaded(result);
  expectNothingStored();
  EXPECT_THAT(linesOf(result.standardOutput), Contains("Please select a site to export"));
  EXPECT_EQ(folder.read("j.job"), GetParam().text);
  EXPECT_EQ(bytesBelow("network"), network);
}

std::string utf16(const std::string& text) {
  std::string wide = "\xFF\xFE";
  for (const char letter : text) wide += std::string(1, letter) + '\0';
  return wide;
}

INSTANTIATE_TEST_SUITE_P(
    Files, BadJobFile,
    ::testing::Values(BadJob{"Empty", ""},
                      BadJob{"BinaryBytes", std::string("\0\xFF\x01[\x7F]\n=\r\r\n", 11)},
                      BadJob{"NoSection", "Sites=1\r\nImportServer=WEB1\r\n"},
                      BadJob{"OpenSection", "[Job Details\r\nSites=1\r\nImportServer=WEB1\r\n"},
                      BadJob{"Utf16", utf16("[Job Details]\r\nSites=1\r\n")},
                      BadJob{"OneLongLine", "[Job Details]\r\nImportServer=" + std::string(1 << 20, 'x')},
                      BadJob{"NoFinalKeys", "[Job Details]\r\nImportServer=WEB1"}),
    [](const auto& instance) { return std::string(instance.param.what); });

TEST_F(UnattendedRun, ExportsNothingForAJobThatIsAFolder) {
  fs::remove(folder / "j.job");
  folder.makeFolder("j.job");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  expectNothingStored();
}

struct BadKey {
  const char* key;
  std::string value;
  bool stores;  // whether the job's site is stored all the same
};

class BadJobKey : public UnattendedRun, public ::testing::WithParamInterface<BadKey> {};

TEST_P(BadJobKey, NeitherCrashesTheRunNorHarmsTheSource) {
  const auto network = bytesBelow("network");
  addJobText(jobText({{GetParam().key, GetParam().value}}));
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_EQ(bytesBelow("network"), network);
  std::vector<std::string> stored;
  for (const std::string& database : perRunDatabases()) stored = storedNames(database);
  EXPECT_EQ(stored.size(), GetParam().stores ? 1U : 0U);
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Keys, BadJobKey,
    ::testing::Values(
        BadKey{"Sites", "abc", false}, BadKey{"Sites", "99999", false}, BadKey{"Sites", "-1", false},
        BadKey{"Sites", "", false}, BadKey{"Sites", "32767", true}, BadKey{"ImportServer", "", false},
        BadKey{"ImportServer", "..", false}, BadKey{"ImportServer", "../WEB1", false},
        BadKey{"ImportServer", "WEB1/C$", false}, BadKey{"ImportServer", "\\\\WEB1", false},
        BadKey{"ImportServer", std::string(300, 'W'), false}, BadKey{"ImportServer", "web2", false},
        BadKey{"ImportServer", "\xC3\x9C\xFF", false}, BadKey{"ExportServer", "", false},
        BadKey{"ExportServer", "..", false}, BadKey{"ExportServer", "NOSUCH", false},
        BadKey{"ExportServer", "Database ", true}, BadKey{"ImportVersion", "IIS7", true},
        BadKey{"ImportVersion", "", true}, BadKey{"ExportVersion", "6", true}, BadKey{"Type", "w3svc", false},
        BadKey{"Type", "", false}, BadKey{"Type", "'; DROP", false}, BadKey{"AutoStartSites", "maybe", true},
        BadKey{"SiteCreationMode", "explode", true}, BadKey{"FindReplaceCount", "", false},
        BadKey{"FindReplaceCount", "many", false}, BadKey{"FindReplaceCount", "40000", false},
        BadKey{"FindReplaceCount", "3", true}, BadKey{"BackupAllSites", "perhaps", true}),
    [](const auto& instance) { return std::string(instance.param.key) + std::to_string(instance.index); });

TEST_F(UnattendedRun, PassesOverSitesThatNoLongerExist) {
  addJobText(
      jobText({{"Sites", "2"}},
              "[1Site]\r\nSiteName=IIS://WEB1/W3SVC/77\r\n[2Site]\r\nSiteName=IIS://WEB1/W3SVC/2\r\n"));
  expectUnloaded(runJob());
  EXPECT_THAT(storedNames(perRunDatabases().at(0)), ElementsAre("Wiki"));
}

TEST_F(UnattendedRun, StopsItsJobWithoutATemplate) {
  fs::remove(programFolder() / "ForBackups.mdb");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_THAT(log(), Contains(programPath() + "\\ForBackups.mdb could not be found. Backup job failed."));
  EXPECT_THAT(linesOf(result.standardOutput), ElementsAre("Please select a site to export", "Done!"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(UnattendedRun, LogsATemplateThatIsNoDatabase) {
  folder.write("program/ForBackups.mdb", "an empty promise of a database");
  expectUnloaded(runJob());
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(log(), Contains(tells("frmMain SelectSitesFromBackup Error ",
                                    failureOfOpening(connectionTo(perRunDatabases()[0])))));
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
}

// Bad sources.

TEST_F(UnattendedRun, ReportsAServerWithoutAMetabase) {
  fs::remove(folder / "network/WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  expectTold(result, failureOfBind("IIS://WEB1/W3SVC"));
  expectNothingStored();
}

TEST_F(UnattendedRun, ReportsAServerThatIsNotThere) {
  fs::remove_all(folder / "network");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_THAT(linesOf(result.standardOutput), Contains(StartsWith("Error - ")));
  expectNothingStored();
}

class BadMetabase : public UnattendedRun, public ::testing::WithParamInterface<BadJob> {};

TEST_P(BadMetabase, IsRefusedWithTheReasonAndLeftAsItIs) {
  addServer("WEB1", GetParam().text);
  const auto network = bytesBelow("network");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  expectTold(result, failureOfBind("IIS://WEB1/W3SVC"));
  EXPECT_EQ(bytesBelow("network"), network);
  expectNothingStored();
}

INSTANTIATE_TEST_SUITE_P(
    Files, BadMetabase,
    ::testing::Values(
        BadJob{"Empty", ""}, BadJob{"NoXml", "this is a text\r\n"},
        BadJob{"CutOff",
               "<?xml version =\"1.0\"?>\r\n<configuration>\r\n<MBProperty>\r\n<IIsWebServer\tLocation "
               "=\"/LM/W3"},
        BadJob{"OtherXml", "<?xml version =\"1.0\"?>\r\n<html><body/></html>\r\n"},
        BadJob{"NoUtf8",
               "<?xml version =\"1.0\"?>\r\n<configuration>\r\n<MBProperty>\r\n<IIsComputer\tLocation "
               "=\"/LM/\xFF\xFE\"></IIsComputer>\r\n</MBProperty></configuration>\r\n"},
        BadJob{"BinaryBytes", std::string("\0\1\2\3\xFF", 5)}),
    [](const auto& instance) { return std::string(instance.param.what); });

TEST_F(UnattendedRun, ReportsAMetabaseThatIsAFolder) {
  fs::remove(folder / "network/WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml");
  folder.makeFolder("network/WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml");
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_THAT(linesOf(result.standardOutput), Contains(StartsWith("Error - ")));
  expectNothingStored();
}

TEST_F(UnattendedRun, StoresASiteWithACorruptRootAndWarns) {
  addServer("WEB1", metabaseFile(webService(webSite(1, "Shop") + directory(1, "/ROOT") +
                                            virtualDir(1, "/ROOT/v", {{"Path", "C:\\v"}}))));
  const ProcessResult result = runJob();
  expectUnloaded(result);
  EXPECT_THAT(linesOf(result.standardOutput), Contains(StartsWith("WARNING - The site  has an incorrectly")));
  EXPECT_THAT(storedNames(perRunDatabases().at(0)), ElementsAre("Shop"));
}

// Bad databases.

TEST_F(UnattendedRun, StopsWhereTheDatabaseOfTheCommandLineIsMissing) {
  const ProcessResult result = runJob(words(connectionTo("Missing.mdb")));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(log(),
              Contains(tells("frmMain RunBackup Error ", failureOfOpening(connectionTo("Missing.mdb")))));
  EXPECT_THAT(log(), Not(Contains("About to run")));
  EXPECT_THAT(result.standardError, HasSubstr("Trelvin.log"));
  EXPECT_FALSE(folder.has("program/Missing.mdb"));
}

TEST_F(UnattendedRun, StopsWhereTheDatabaseOfTheCommandLineIsNone) {
  folder.write("program/Other.mdb", "no database, but a text of some length");
  const ProcessResult result = runJob(words(connectionTo("Other.mdb")));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(log(),
              Contains(tells("frmMain RunBackup Error ", failureOfOpening(connectionTo("Other.mdb")))));
  EXPECT_EQ(folder.read("program/Other.mdb"), "no database, but a text of some length");
}

TEST_F(UnattendedRun, StopsForAConnectionStringThatSaysNothing) {
  const ProcessResult result = runJob({"-C", "nonsense"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(log(), Contains(StartsWith("frmMain RunBackup Error ")));
  EXPECT_THAT(log(), Not(Contains("About to run")));
}

// Bad logs.

TEST_F(UnattendedRun, SaysOnStandardErrorThatItsLogCantBeWritten) {
  folder.makeFolder("work/Trelvin.log");
  const ProcessResult result = runJob();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, AllOf(HasSubstr("75"), HasSubstr("Trelvin.log")));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

// A run that is held, so that something can happen to it.

class HeldRun : public UnattendedRun {
 protected:
  HeldRun() {
    std::string directories;
    for (int i = 0; i < 100; ++i) {
      directories += virtualDir(1, "/ROOT/a directory with a rather long name " + std::to_string(1000 + i),
                                {{"Path", "D:\\x"}});
    }
    addServer("WEB1", metabaseFile(webService(webSite(1, "Shop") +
                                              virtualDir(1, "/ROOT", {{"Path", "C:\\s"}}) + directories)));
  }

  // Starts a run whose output nobody reads, and waits until it stands in the middle of its directories.
  std::unique_ptr<RunningProcess> holdRun() {
    RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
    options.output = &pipe;
    auto process = std::make_unique<RunningProcess>(options);
    // The pipe takes no more than a page; the log stands still from then on.
    std::string before;
    for (int looks = 0; looks < 150; ++looks) {
      const std::string now = logBytes();
      if (now == before && now.find("Exporting virtual") != std::string::npos) return process;
      before = now;
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    throw std::runtime_error("the run never came to a standstill");
  }
  [[nodiscard]] std::string logBytes() const {
    return folder.has("work/Trelvin.log") ? folder.read("work/Trelvin.log") : std::string();
  }

  OutputPipe pipe;
};

TEST_F(HeldRun, KeepsASecondInstanceOut) {
  const auto first = holdRun();
  const auto databasesBefore = perRunDatabases();
  folder.makeFolder("work2");
  RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
  options.currentFolder = folder / "work2";
  const ProcessResult second = RunningProcess(options).wait();
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_THAT(second.standardError, HasSubstr("This program is already running!"));
  EXPECT_EQ(second.standardOutput, "");
  EXPECT_THAT(folder.read("work2/Trelvin.log"),
              HasSubstr("The user attempted to run the program while another copy was still running"));
  EXPECT_THAT(folder.read("work2/Trelvin.log"), Not(HasSubstr("Running backup job")));
  EXPECT_EQ(perRunDatabases(), databasesBefore);

  pipe.readOn();
  EXPECT_EQ(first->wait().exitCode, 0);
  EXPECT_EQ(log().back(), "Closing complete");
  EXPECT_EQ(query(perRunDatabases().at(0), "SELECT COUNT(*) AS a FROM Data WHERE Name = 'Path'"),
            (Rows{{"101"}}));
}

TEST_F(HeldRun, LeavesTheProgramFreeOnceItIsKilled) {
  const auto first = holdRun();
  first->kill();
  EXPECT_EQ(first->wait().exitCode, kKilledStatus);
  const ProcessResult second = runJob();
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_THAT(linesOf(second.standardOutput), Contains("Done!"));
}

TEST_F(HeldRun, KeepsWhatItHasStoredWhenItIsKilled) {
  const auto first = holdRun();
  first->kill();
  first->wait();
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(storedNames(perRunDatabases()[0]), ElementsAre("Shop"));
  EXPECT_GT(query(perRunDatabases()[0], "SELECT ID AS a FROM Data").size(), 10U);
}

TEST_F(HeldRun, SpoilsNoLaterRunInTheSameMinuteWhenItIsKilled) {
  const auto first = holdRun();
  first->kill();
  first->wait();
  runJob();
  for (const std::string& database : perRunDatabases()) {
    EXPECT_THAT(storedNames(database), ElementsAre("Shop"));
    EXPECT_EQ(query(database, "SELECT integrity_check AS a FROM pragma_integrity_check"), (Rows{{"ok"}}));
  }
  EXPECT_EQ(query(perRunDatabases().back(), "SELECT MIN(ID) AS a FROM Data"), (Rows{{"1"}}));
}

TEST_F(HeldRun, GoesOnWhenNobodyReadsItsOutputAnyMore) {
  const auto first = holdRun();
  pipe.closeReader();
  const ProcessResult result = first->wait();
  EXPECT_EQ(result.exitCode, 0) << "a scheduler that goes away must not cut an export in two";
  EXPECT_EQ(log().back(), "Closing complete");
  EXPECT_EQ(query(perRunDatabases().at(0), "SELECT COUNT(*) AS a FROM Data WHERE Name = 'Path'"),
            (Rows{{"101"}}));
}

}  // namespace
}  // namespace trelvin::test
