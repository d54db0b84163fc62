// Sites from server to server by a job, as a scheduler starts it: the sample servers, the program as a
// process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "server_to_server_job.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kStamp = "Trelvin: This web site was exported using Trelvin v4.1";

std::string elementAt(const std::string& file, const std::string& location) {
  const std::size_t at = file.find("Location =\"" + location + "\"");
  if (at == std::string::npos) return {};
  const std::size_t begin = file.rfind('<', at);
  const std::string keyType = file.substr(begin + 1, file.find_first_of(" \t\r\n", begin) - begin - 1);
  return file.substr(begin, file.find("</" + keyType + ">", at) - begin);
}

TEST_F(ServerToServerJob, MovesItsSitesBesideThoseOfTheTarget) {
  addWebJob();
  const auto source = bytesBelow("network/WEB5");
  const std::string before = folder.read(kTargetFile);
  expectThrough(runJob());

  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2", "3"));
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerBindings"),
            "198.51.100.51:80:shop.example.com|198.51.100.51:80:www.shop.example.com|:8081:");
  EXPECT_EQ(valueAt("/W3SVC/3", "SecureBindings"), "198.51.100.51:443:");
  EXPECT_EQ(valueAt("/W3SVC/3/ROOT", "AppRoot"), "/LM/W3SVC/3/ROOT");
  EXPECT_THAT(valueAt("/W3SVC/3/ROOT", "HttpCustomHeaders"), ::testing::EndsWith(kStamp));
  EXPECT_THAT(valueAt("/W3SVC/3/ROOT", "HttpCustomHeaders"), Not(StartsWith(kStamp)))
      << "behind those that the root has from its site";

  const std::string after = folder.read(kTargetFile);
  for (const char* location :
       {"/", "/LM", "/LM/W3SVC", "/LM/W3SVC/1", "/LM/W3SVC/1/ROOT", "/LM/W3SVC/AppPools", "/LM/W3SVC/Filters",
        "/LM/W3SVC/Info", "/LM/MSFTPSVC/1"}) {
    ASSERT_NE(elementAt(before, location), "") << location;
    EXPECT_EQ(elementAt(after, location), elementAt(before, location)) << location;
  }
  EXPECT_EQ(bytesBelow("network/WEB5"), source) << "the source, content and metabase, byte for byte";
}

TEST_F(ServerToServerJob, MovesTheConfigurationOnly) {
  addWebJob();
  auto before = bytesBelow("network/NEW6");
  expectThrough(runJob());
  auto after = bytesBelow("network/NEW6");
  EXPECT_NE(after[kTargetFile], before[kTargetFile]);
  before.erase(kTargetFile);
  after.erase(kTargetFile);
  EXPECT_EQ(after, before) << "no content, and no journal beside the metabase";
}

TEST_F(ServerToServerJob, TellsOnStandardOutputWhatItDoes) {
  addWebJob();
  const std::vector<std::string> lines = linesOf(runJob().standardOutput);
  for (const char* line :
       {"Begining the export", "Checking to see if W3SVC2 exists..", "Creating Web Site W3SVC2",
        "Creating virtual directory 2/ROOT", "Creating Web Site W3SVC3", "Done!"})
    EXPECT_THAT(lines, Contains(line));
}

TEST_F(ServerToServerJob, OverwritesTheSitesOfTheTarget) {
  addWebJob({{"SiteCreationMode", "Overwrite"}});
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2"));
  EXPECT_EQ(valueAt("/W3SVC/2", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
  EXPECT_THAT(log(), Contains("Deleteing existing web W3SVC1"));
}

TEST_F(ServerToServerJob, KeepsTheNumbersOfTheSource) {
  addWebJob({{"SiteCreationMode", "Overwrite Preserve"}});
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "3"));
  EXPECT_EQ(valueAt("/W3SVC/3", "ServerComment"), "Harbour & Sons \"Print Shop\" - customers' orders");
}

TEST_F(ServerToServerJob, MovesEverySiteWithItsPools) {
  addJobText(jobText({{"ImportServer", "WEB6"}, {"ExportServer", "NEW6"}, {"BackupAllSites", "True"}},
                     sectionsOf({"WEB6/W3SVC/1"})));
  const auto source = bytesBelow("network/WEB6");
  expectThrough(runJob());
  EXPECT_EQ(sitesOf("W3SVC").size(), 5U);
  std::set<std::string> pools;
  std::set<std::string> sourcePools;
  const auto collect = [](std::set<std::string>& names) {
    return [&names](const NodeHandle& child) { names.insert(child->name()); };
  };
  reader()->getObject("IIS://NEW6/W3SVC/AppPools")->forEachChild(collect(pools));
  for (const char* path : {"IIS://WEB6/W3SVC"}) {
    const auto disk = reader();
    for (const std::string& holder : disk->getObject(path)->getDataPaths("AppPoolId", Value())) {
      if (!holder.ends_with("/W3SVC")) sourcePools.insert(textOf(disk->getObject(holder)->get("AppPoolId")));
    }
  }
  EXPECT_FALSE(sourcePools.empty());
  EXPECT_TRUE(std::includes(pools.begin(), pools.end(), sourcePools.begin(), sourcePools.end()));
  EXPECT_EQ(bytesBelow("network/WEB6"), source);
}

TEST_F(ServerToServerJob, MovesFtpSites) {
  addJobText(jobText(
      {{"ImportServer", "WEB6"}, {"ExportServer", "NEW6"}, {"Type", "MSFTPSVC"}, {"BackupAllSites", "True"}},
      sectionsOf({"WEB6/MSFTPSVC/1"})));
  const std::string before = folder.read(kTargetFile);
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("MSFTPSVC"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1"));
  const std::string after = folder.read(kTargetFile);
  EXPECT_EQ(elementAt(after, "/LM/MSFTPSVC/1"), elementAt(before, "/LM/MSFTPSVC/1"));
  EXPECT_EQ(after.find(kStamp), std::string::npos);
}

TEST_F(ServerToServerJob, AddsItsSitesAgainInTheNextRun) {
  addWebJob();
  expectThrough(runJob());
  const State first = targetState();
  expectThrough(runJob());
  EXPECT_THAT(sitesOf("W3SVC"), ElementsAre("1", "2", "3", "4", "5"));
  const State second = targetState();
  EXPECT_TRUE(std::includes(second.begin(), second.end(), first.begin(), first.end()))
      << "the sites of the first run stay as they are";
}

TEST_F(ServerToServerJob, EndsInOrderWhenItsTargetCannotBeReached) {
  addWebJob({{"ExportServer", "NOWHERE"}});
  const auto source = bytesBelow("network");
  expectThrough(runJob());
  EXPECT_EQ(std::ranges::count(log(), "Error connecting to target server"), 1);
  EXPECT_EQ(std::ranges::count(log(), "Completed"), 2);
  EXPECT_EQ(bytesBelow("network"), source);
}

TEST_F(ServerToServerJob, LeavesATargetThatIsReadOnlyAsItIs) {
  addWebJob();
  fs::permissions(folder / kTargetFile, fs::perms::owner_read | fs::perms::group_read);
  const auto before = bytesBelow("network");
  expectThrough(runJob());
  EXPECT_EQ(bytesBelow("network"), before);
  EXPECT_THAT(log(), Contains(StartsWith("Error transfering Property ")));
}

TEST_F(ServerToServerJob, LeavesABrokenTargetAsItIsAndSaysWhatIsWrong) {
  addWebJob();
  std::string text = folder.read(kTargetFile);
  text.erase(text.size() / 2);
  folder.write(kTargetFile, text);
  expectThrough(runJob());
  EXPECT_EQ(folder.read(kTargetFile), text);
  EXPECT_THAT(log(), Contains("Error connecting to target server"));
}

}  // namespace
}  // namespace trelvin::test
