#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <filesystem>

#include "core/run_state.h"
#include "fakes/export_test.h"
#include "fakes/failures.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr std::int32_t kFilesAndFoldersInherit = 3;
constexpr std::int32_t kRead = 0x001200A9;

// Two servers with real files and real access lists; a run from one to the other as a person starts it.
class ContentWhole : public ExportTest {
 protected:
  void SetUp() override {
    const fs::path probe = folder.write("network/probe", "");
    if (::setxattr(probe.c_str(), "user.trelvin.try", "x", 1, 0) != 0) {
      GTEST_SKIP() << "the file system of " << folder.path() << " keeps no extended attributes";
    }
    openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "D:\\sites\\shop"}})));
    addServer("WEB2", metabaseFile(webService("")));
    folder.write("network/WEB1/D$/sites/shop/index.htm", "welcome");
    folder.write("network/WEB1/D$/sites/shop/img/logo.gif", "GIF89a");
    folder.makeFolder("network/WEB2/D$");
    frmMain.TabExportType.select(1);
    frmMain.txtExportServer.text = "WEB2";
    frmMain.chkCopyFiles.setValue(true);
    frmMain.chkSetFilePerms.setValue(true);
    transferOnly({"Path", "ServerComment", "KeyType"});
    select({0});
  }

  void transfer() {
    dialogs->answers.assign(1, Answer::kOk);
    frmMain.cmdExportServer.onClick();
  }
  static void setList(const std::string& path, const std::vector<std::string>& accounts) {
    const std::unique_ptr<NtfsControl> control = platform().createNtfsControl();
    control->setFileOrDirectory(path);
    const std::unique_ptr<AccessList> list = control->getAccounts();
    for (const std::string& account : accounts) {
      AccessEntry& entry = list->addAccount();
      entry.setAccountName(account);
      entry.setAccessValue(2, kFilesAndFoldersInherit);
      entry.setAccessValue(3, kRead);
    }
    list->writeAccounts();
  }
  // The accounts of a path, each with its mask in front.
  static std::vector<std::string> listOf(const std::string& path) {
    const std::unique_ptr<NtfsControl> control = platform().createNtfsControl();
    control->setFileOrDirectory(path);
    std::vector<std::string> entries;
    control->getAccounts()->forEachAccount([&](const AccessEntry& entry) {
      entries.push_back(std::to_string(entry.accessValue(3)) + " " + entry.accountName());
    });
    return entries;
  }
  static std::string entry(const std::string& account) { return std::to_string(kRead) + " " + account; }
};

TEST_F(ContentWhole, BringsFilesPermissionsAndConfigurationToTheTarget) {
  setList(R"(\\WEB1\D$\sites\shop)", {R"(WEB1\editors)", "Everyone"});
  setList(R"(\\WEB1\D$\sites\shop\index.htm)", {R"(web1\IUSR_WEB1)"});
  setList(R"(\\WEB1\D$\sites\shop\img\logo.gif)", {R"(CORP\anna)"});
  transfer();
  EXPECT_EQ(folder.read("network/WEB2/D$/sites/shop/index.htm"), "welcome");
  EXPECT_EQ(folder.read("network/WEB2/D$/sites/shop/img/logo.gif"), "GIF89a");
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop)"), ElementsAre(entry(R"(WEB2\editors)"), entry("Everyone")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\index.htm)"), ElementsAre(entry(R"(WEB2\IUSR_WEB2)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img\logo.gif)"), ElementsAre(entry(R"(CORP\anna)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img)"), IsEmpty());
  EXPECT_EQ(run.lPermsSet, 2 * 2 + 2);
  EXPECT_EQ(numberOfFailure([] { return getObject("IIS://WEB2/W3SVC/1"); }), 0);
  EXPECT_TRUE(hasOutput("Done!"));
  EXPECT_THAT(copyReports, IsEmpty());
}

TEST_F(ContentWhole, LeavesFilesAndListsOfTheSourceAsTheyAre) {
  setList(R"(\\WEB1\D$\sites\shop)", {R"(WEB1\editors)"});
  transfer();
  EXPECT_EQ(folder.read("network/WEB1/D$/sites/shop/index.htm"), "welcome");
  EXPECT_THAT(listOf(R"(\\WEB1\D$\sites\shop)"), ElementsAre(entry(R"(WEB1\editors)")));
}

TEST_F(ContentWhole, ReplacesTheListsAndOverwritesTheFilesThatTheTargetHad) {
  folder.write("network/WEB2/D$/sites/shop/index.htm", "an older page");
  folder.write("network/WEB2/D$/sites/shop/own.htm", "the target's own");
  setList(R"(\\WEB2\D$\sites\shop\index.htm)", {R"(WEB2\old)", R"(WEB2\older)"});
  setList(R"(\\WEB2\D$\sites\shop\own.htm)", {R"(WEB2\own)"});
  setList(R"(\\WEB1\D$\sites\shop\index.htm)", {R"(WEB1\new)"});
  transfer();
  EXPECT_EQ(folder.read("network/WEB2/D$/sites/shop/index.htm"), "welcome");
  EXPECT_EQ(folder.read("network/WEB2/D$/sites/shop/own.htm"), "the target's own");
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\index.htm)"), ElementsAre(entry(R"(WEB2\new)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\own.htm)"), ElementsAre(entry(R"(WEB2\own)")));
}

TEST_F(ContentWhole, SetsTheListsOfReadOnlyFilesAndGoesOn) {
  setList(R"(\\WEB1\D$\sites\shop\index.htm)", {R"(WEB1\anna)"});
  setList(R"(\\WEB1\D$\sites\shop\img)", {R"(WEB1\painters)"});
  fs::permissions(folder / "network/WEB1/D$/sites/shop/index.htm", fs::perms{0444});
  transfer();
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\index.htm)"), ElementsAre(entry(R"(WEB2\anna)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img)"), ElementsAre(entry(R"(WEB2\painters)")));
}

TEST_F(ContentWhole, LetsTheFilesInheritInTheFastMode) {
  setList(R"(\\WEB1\D$\sites\shop)", {R"(WEB1\editors)"});
  setList(R"(\\WEB1\D$\sites\shop\img)", {R"(WEB1\painters)"});
  frmMain.chkFastPermissions.setValue(true);
  transfer();
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop)"), ElementsAre(entry(R"(WEB2\editors)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\index.htm)"), ElementsAre(entry(R"(WEB2\editors)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img\logo.gif)"), ElementsAre(entry(R"(WEB2\painters)")));
  EXPECT_EQ(run.lPermsSet, 2 * 2);
}

TEST_F(ContentWhole, MakesNoShareThatIsMissing) {
  fs::remove_all(folder / "network/WEB2/D$");
  frmMain.chkRunSilent.setValue(true);
  transfer();
  EXPECT_EQ(timesLogged(R"(Could not find Target folder \\WEB2\D$\sites\shop)"), 1);
  EXPECT_FALSE(folder.has("network/WEB2/D$"));
  EXPECT_EQ(run.lPermsSet, 1);
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ContentWhole, PutsTheContentBesideATargetOfAnotherName) {
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'D:\\new\\store' WHERE Folder = '/ROOT'");
  transfer();
  EXPECT_EQ(folder.read("network/WEB2/D$/new/shop/index.htm"), "welcome");
  EXPECT_TRUE(fs::is_empty(folder / "network/WEB2/D$/new/store"));
}

TEST_F(ContentWhole, EndsTheWalkAtAListThatSomebodyBrokeAndSaysWhich) {
  const fs::path page = folder / "network/WEB1/D$/sites/shop/index.htm";
  ASSERT_EQ(::setxattr(page.c_str(), "user.trelvin.acl", "nonsense", 8, 0), 0);
  setList(R"(\\WEB1\D$\sites\shop\img)", {R"(WEB1\painters)"});
  transfer();
  EXPECT_THAT(
      logLines(),
      Contains(AllOf(StartsWith("setPerms Error -2147352567 "),
                     EndsWith(R"( @S=\\WEB1\D$\sites\shop\index.htm@ @T=\\WEB2\D$\sites\shop\index.htm@)"))));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img)"), IsEmpty());
  EXPECT_TRUE(hasOutput("Done!"));
}

}  // namespace
}  // namespace trelvin::test
