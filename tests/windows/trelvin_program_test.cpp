// The built program as a process of its own, as a scheduler starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "windows/installed_program_test.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class TrelvinProgramTest : public InstalledProgramTest {};

TEST_F(TrelvinProgramTest, AJobFromServerToServerMakesItsSiteThere) {
  const Outcome outcome = runJob(jobText("WEB1", "WEB2"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.error, "");
  EXPECT_THAT(outcome.output, Contains("Done!"));
  EXPECT_THAT(log(), HasSubstr("Closing complete"));
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "MaxConnections"), "2000");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT/images", "Path"), "D:\\images");
}

TEST_F(TrelvinProgramTest, AJobIntoTheDatabaseStoresItsSiteInOneOfItsOwn) {
  const Outcome outcome = runJob(jobText("WEB1", "Database"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, Contains("Exporting virtual directory /ROOT/images"));
  EXPECT_THAT(column(databaseOfRun(), "SELECT SiteName AS a FROM Sites"), ElementsAre("Bob's shop"));
  EXPECT_THAT(column(databaseOfRun(), "SELECT StringValue AS a FROM Data WHERE Name = 'Path' ORDER BY ID"),
              ElementsAre("C:\\site", "D:\\images"));
  EXPECT_THAT(column(folder_ / "program/TrelvinData.mdb", "SELECT SiteName AS a FROM Sites"), IsEmpty());
}

TEST_F(TrelvinProgramTest, AJobOutOfADatabaseRebuildsItsSiteOnAServer) {
  ASSERT_EQ(runJob(jobText("WEB1", "Database")).status, 0U);
  const Outcome outcome = runJob(jobText("Database", "WEB2"), " -C " + connectionTo(databaseOfRun()));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT", "Path"), "C:\\site");
}

TEST_F(TrelvinProgramTest, AServerThatIsNotThereIsReportedLineByLine) {
  const Outcome outcome = runJob(jobText("WEB9", "WEB2"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, Contains(StartsWith("Error - ")));
  EXPECT_THAT(outcome.output, Each(Not(HasSubstr("\r"))));
  EXPECT_THAT(log(), HasSubstr("Closing complete"));
}

TEST_F(TrelvinProgramTest, WithoutASettingsDatabaseNoJobRunsAndTheStatusTellsSo) {
  fs::remove(folder_ / "program/Trelvin.mdb");
  const Outcome outcome = runJob(jobText("WEB1", "WEB2"));
  EXPECT_EQ(outcome.status, 1U);
  EXPECT_THAT(outcome.error, HasSubstr("Trelvin.log"));
  EXPECT_THAT(log(), HasSubstr("frmSplash_Load Error "));
  EXPECT_FALSE(folder_.has("program/BackupJobs"));
}

TEST_F(TrelvinProgramTest, TheProgramOpensNoConsole) {
  const std::string bytes = folder_.read("program/Trelvin.exe");
  IMAGE_DOS_HEADER start{};
  IMAGE_NT_HEADERS headers{};
  std::memcpy(&start, bytes.data(), sizeof(start));
  std::memcpy(&headers, bytes.data() + start.e_lfanew, sizeof(headers));
  EXPECT_EQ(headers.OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
}

}  // namespace
}  // namespace trelvin::test
