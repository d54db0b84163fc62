// A server WEB1 with two sites, and a job that stores the first of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "program_run.h"
#include "stores/connections.h"

namespace trelvin::test {

class UnattendedRun : public ScenarioTest {
 protected:
  UnattendedRun() {
    addServer("WEB1",
              metabaseFile(webService(
                  webSite(1, "Bob's shop", {{"ServerBindings", ":80:"}, {"MaxConnections", "2000"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\WINNT\\site"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}}) +
                  virtualDir(1, "/ROOT/images", {{"Path", "D:\\images"}}) + plainSite(2, "Wiki"))));
    addJobText(jobText());
  }
  // The run went through to its unload, whatever came of it.
  void expectUnloaded(const ProcessResult& result) const {
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(log(), ::testing::Contains("Closing complete"));
  }
  // A listing that failed, in the output list and in the log.
  void expectTold(const ProcessResult& result, const std::string& failure) const {
    EXPECT_THAT(linesOf(result.standardOutput), ::testing::Contains(tells("Error - ", failure)));
    EXPECT_THAT(log(), ::testing::Contains(tells("frmMain_populateFromServer Error AL ", failure)));
  }
  void expectNothingStored() const {
    for (const std::string& database : perRunDatabases())
      EXPECT_THAT(storedNames(database), ::testing::IsEmpty());
    EXPECT_THAT(storedNames("TrelvinData.mdb"), ::testing::IsEmpty());
  }
  // A run of the job with the program's folder under another name.
  void expectToRunIn(const char* name) {
    const std::filesystem::path odd = folder / name;
    std::filesystem::rename(programFolder(), odd);
    RunningProcess::Options options = this->options({"-RUNBACKUP", "-B", jobArgument()});
    options.executable = odd / kProgramFile;
    const ProcessResult result = RunningProcess(options).wait();
    std::filesystem::rename(odd, programFolder());
    EXPECT_EQ(result.exitCode, 0);
    ASSERT_THAT(perRunDatabases(), ::testing::SizeIs(1)) << folder.read("work/Trelvin.log");
    EXPECT_THAT(storedNames(perRunDatabases()[0]), ::testing::ElementsAre("Bob's shop"));
  }
  // The line that tells of a failure, such as failureOfBind() gives, in the log or the output list.
  static ::testing::Matcher<std::string> tells(const std::string& beginning, const std::string& failure) {
    const std::size_t blank = failure.find(' ');
    return ::testing::AllOf(::testing::StartsWith(beginning + failure.substr(0, blank)),
                            ::testing::EndsWith(failure.substr(blank)));
  }
  [[nodiscard]] std::string connectionTo(const std::string& database) const {
    return fileConnectionString(programPath() + "\\" + database);
  }
  [[nodiscard]] std::string addOtherDatabase() const {
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / "TrelvinData.mdb",
                               programFolder() / "Other.mdb");
    return connectionTo("Other.mdb");
  }
};

}  // namespace trelvin::test
