// What a start without a window depends on here: the screen, and the folder that stands for the network.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scenarios/unattended_run.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

// On Windows a semicolon in the path would end the name of a database in the connection string.
TEST_F(UnattendedRun, WorksInAFolderWithASemicolon) {
  expectToRunIn("Bob's; & co");
}

TEST_F(UnattendedRun, FindsItsNetworkBesideTheProgramWithoutTheVariable) {
  fs::rename(folder / "network", programFolder() / "Network");
  RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
  options.network.clear();
  EXPECT_EQ(RunningProcess(options).wait().exitCode, 0);
  ASSERT_THAT(perRunDatabases(), SizeIs(1));
  EXPECT_THAT(storedNames(perRunDatabases()[0]), ElementsAre("Bob's shop"));
}

TEST_F(UnattendedRun, IsNotStartedByAnEmptyCommandLine) {
  const ProcessResult result = runProgram({});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("no display"));
  EXPECT_EQ(result.standardOutput, "");
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(UnattendedRun, IsNotStoppedByAScreenThatCantBeReached) {
  RunningProcess::Options withScreen = options({"-RUNBACKUP", "-B", "Z:\\no\\such.job"});
  withScreen.environment = {{"DISPLAY", ":4095"}, {"QT_QPA_PLATFORM", "no such platform"}};
  expectUnloaded(RunningProcess(withScreen).wait());
}

TEST_F(UnattendedRun, EndsInOrderWhereTheWindowIsWantedAndTheScreenCantBeReached) {
  RunningProcess::Options withScreen = options({});
  withScreen.environment = {{"DISPLAY", ":4095"}, {"QT_QPA_PLATFORM", "xcb"}};
  const ProcessResult result = RunningProcess(withScreen).wait();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("the window could not be opened"));
}

TEST_F(UnattendedRun, IsNotStartedByUnknownWords) {
  const ProcessResult result = runProgram({"--help"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("-RUNBACKUP"));
}

}  // namespace
}  // namespace trelvin::test
