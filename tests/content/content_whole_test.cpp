#include "content_whole.h"

#include <gmock/gmock.h>

#include "core/run_state.h"
#include "fakes/failures.h"
#include "metabase/paths.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

}  // namespace
}  // namespace trelvin::test
