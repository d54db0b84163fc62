// What a run does that may not write, or has no room to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "platform/platform.h"
#include "scenarios/unattended_run.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class UnattendedRunWithFewRights : public UnattendedRun {
 protected:
  // Gives a folder, with all in it, to the user that a process with few rights runs as.
  void giveAway(const std::string& relative) const {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() != 0) return;
    const fs::path top = folder / relative;
    std::vector<fs::path> all{top};
    for (const auto& entry : fs::recursive_directory_iterator(top)) all.push_back(entry.path());
    for (const fs::path& path : all) {
      if (::chown(path.c_str(), kNobody, static_cast<gid_t>(kNobody)) != 0) {
        throw std::runtime_error("can't give away " + path.string());
      }
    }
  }
};

TEST_F(UnattendedRunWithFewRights, WritesNothingToASourceThatCanBeReadOnly) {
  for (const auto& entry : fs::recursive_directory_iterator(folder / "network")) {
    fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0555) : fs::perms(0444));
  }
  giveAway("program");
  giveAway("work");
  fs::permissions(folder.path(), fs::perms(0755));
  RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
  options.asOrdinaryUser = true;
  const ProcessResult result = RunningProcess(options).wait();
  for (const auto& entry : fs::recursive_directory_iterator(folder / "network")) {
    if (entry.is_directory()) fs::permissions(entry.path(), fs::perms(0755));
  }
  expectUnloaded(result);
  EXPECT_THAT(storedNames(perRunDatabases().at(0)), ElementsAre("Bob's shop"));
}

TEST_F(UnattendedRunWithFewRights, ReportsEveryRowThatAReadOnlyDatabaseRefuses) {
  const std::string other = addOtherDatabase();
  giveAway("program");
  giveAway("work");
  fs::permissions(folder.path(), fs::perms(0755));
  fs::permissions(programFolder() / "Other.mdb", fs::perms(0444));
  const std::string before = folder.read("program/Other.mdb");
  std::vector<std::string> arguments = words(other);
  arguments.insert(arguments.begin(), {"-RUNBACKUP", "-B", jobArgument()});
  RunningProcess::Options options = this->options(arguments);
  options.asOrdinaryUser = true;
  const ProcessResult result = RunningProcess(options).wait();
  expectUnloaded(result);
  EXPECT_EQ(folder.read("program/Other.mdb"), before);
  EXPECT_THAT(log(), Contains(AllOf(StartsWith("Error transfering Property MaxConnectionsError "),
                                    HasSubstr("readonly"))));
  EXPECT_THAT(log(), Contains(StartsWith("Error setting IP'sError ")));
  EXPECT_THAT(linesOf(result.standardOutput), Contains("Done!"));
}

TEST_F(UnattendedRunWithFewRights, SaysOnStandardErrorThatItsFolderCantBeWritten) {
  giveAway("program");
  fs::permissions(folder.path(), fs::perms(0755));
  fs::permissions(workFolder(), fs::perms(0555));
  RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
  options.asOrdinaryUser = true;
  const ProcessResult result = RunningProcess(options).wait();
  fs::permissions(workFolder(), fs::perms(0755));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("Trelvin.log"));
  EXPECT_FALSE(folder.has("program/BackupJobs"));
}

TEST_F(UnattendedRunWithFewRights, SaysOnStandardErrorThatTheDiskOfItsLogIsFull) {
  fs::create_symlink("/dev/full", workFolder() / "Trelvin.log");
  const ProcessResult result = runJob();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.standardError, HasSubstr("Trelvin.log"));
}

// The driver is asked for the tables at once; a driver that is asked for nothing finds out at the first
// statement.
TEST_F(UnattendedRun, StopsWhereTheDatabaseOfTheCommandLineIsLocked) {
  const std::string other = addOtherDatabase();
  const std::unique_ptr<Connection> holder = platform().databases->createConnection();
  holder->open("Driver=SQLite3;Database=" + (programFolder() / "Other.mdb").string() + ";NoCreat=1;");
  holder->execute("BEGIN EXCLUSIVE");
  const ProcessResult result = runJob(words(other));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(log(), Contains(AllOf(StartsWith("frmMain RunBackup Error "), HasSubstr("locked"))));
  holder->execute("ROLLBACK");
  holder->close();
  EXPECT_THAT(storedNames("Other.mdb"), IsEmpty());
}

}  // namespace
}  // namespace trelvin::test
