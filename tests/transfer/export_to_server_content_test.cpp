// Content and permissions on their way from server to server.
#include "core/err.h"
#include "core/run_state.h"
#include "fakes/fake_access_lists.h"
#include "server_to_server_fixture.h"
#include "transfer/export_to_server.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class ContentToServer : public ServerToServer {
 protected:
  // A site with the directory C:\shop and, besides it, one on D:.
  void openSite() {
    for (const char* name : {"C$/shop", "D$/docs"}) folder.makeFolder(std::string("network/WEB1/") + name);
    for (const char* share : {"D$", "E$", "F$"}) folder.makeFolder(std::string("network/NEW1/") + share);
    open(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}}) +
                    virtualDir(1, "/ROOT/docs", {{"Path", "D:\\docs"}})));
    frmMain.chkCopyFiles.setValue(true);
  }
  void withPermissions() {
    lists.placeOnMainWindow();
    frmMain.chkSetFilePerms.setValue(true);
  }
  [[nodiscard]] std::vector<std::string> copies() const {
    std::vector<std::string> texts;
    for (const FileOperation& operation : shell.operations)
      texts.push_back(operation.from + " > " + operation.to);
    return texts;
  }
  [[nodiscard]] std::vector<std::string> copyLines() const {
    std::vector<std::string> found;
    for (const std::string& line : runLog()) {
      if (line.starts_with("Copying ")) found.push_back(line);
    }
    return found;
  }

  AccessLists lists;
};

TEST_F(ContentToServer, StaysAwayUnlessAsked) {
  openSite();
  withPermissions();
  frmMain.chkCopyFiles.setValue(false);
  databases.calls.clear();
  exportSites({0});
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_THAT(lists.calls, IsEmpty()) << "permissions go with the content only";
  EXPECT_THAT(databases.textsOf("OpenRows"), Not(Contains(testing::HasSubstr("tmpFilesToCopy"))));
}

TEST_F(ContentToServer, ReadsTheFoldersOfTheSiteInHand) {
  openSite();
  databases.calls.clear();
  exportSites({0});
  EXPECT_THAT(databases.textsOf("OpenRows"),
              Contains("SELECT * FROM tmpFilesToCopy  WHERE ListNum = 0  ORDER BY DirNum "));
}

TEST_F(ContentToServer, CopiesEachDirectoryFromShareToShare) {
  openSite();
  map("C:\\shop", "E:\\web\\shop");
  exportSites({0});
  EXPECT_THAT(copies(),
              ElementsAre("\\\\WEB1\\C$\\shop > \\\\NEW1\\E$\\web", "\\\\WEB1\\D$\\docs > \\\\NEW1\\D$"));
  EXPECT_EQ(shell.operations[0].progressTitle, "Copying web content...");
  EXPECT_TRUE(folder.has("network/NEW1/E$/web/shop")) << "the folders of the target are made";
}

TEST_F(ContentToServer, TellsWhatItCopiesAndWhere) {
  openSite();
  map("C:\\shop", "E:\\web\\shop");
  std::vector<std::string> panels;
  shell.onCopy = [&](const FileOperation&) { panels.push_back(frmMain.StatusBar1.panel); };
  exportSites({0});
  EXPECT_THAT(copyLines(),
              ElementsAre("Copying from \\\\WEB1\\C$\\shop", "Copying to   \\\\NEW1\\E$\\web\\shop",
                          "Copying from \\\\WEB1\\D$\\docs", "Copying to   \\\\NEW1\\D$\\docs"));
  EXPECT_THAT(panels, ElementsAre("Copying web content /ROOT...", "Copying web content /ROOT/docs..."));
  const std::vector<std::string> lines = shownOutput();
  ASSERT_GE(lines.size(), 10U);
  EXPECT_EQ(lines[7], "Copying web content /ROOT...");
  EXPECT_EQ(lines[8], "Copying web content /ROOT/docs...");
  EXPECT_EQ(lines[9], "Checking to see if W3SVC1 exists..");
}

TEST_F(ContentToServer, ShowsTheLineOfTheCopyInHand) {
  openSite();
  std::string line;
  shell.onCopy = [&](const FileOperation&) { line = frmMain.lstOutput.text(); };
  exportSites({0});
  EXPECT_EQ(line, "Copying web content /ROOT/docs...");
}

TEST_F(ContentToServer, FindsTheSourceWhereItIsWhateverIsReplaced) {
  openSite();
  map("shop", "store");
  exportSites({0});
  EXPECT_THAT(copyLines(), Contains("Copying from \\\\WEB1\\C$\\shop"));
  EXPECT_THAT(copyLines(), Contains("Copying to   \\\\NEW1\\C$\\store"));
}

TEST_F(ContentToServer, TurnsEveryColonIntoADollar) {
  openSite();
  map("C:\\shop", "E:\\a:b\\shop");
  exportSites({0});
  EXPECT_THAT(copyLines(), Contains("Copying to   \\\\NEW1\\E$\\a$b\\shop"));
}

TEST_F(ContentToServer, UsesTheDirectoryThatThePersonHasChosen) {
  openSite();
  select({0});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'F:\\chosen\\shop' WHERE Folder = '/ROOT'");
  press();
  EXPECT_THAT(copies(), Contains("\\\\WEB1\\C$\\shop > \\\\NEW1\\F$\\chosen"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "F:\\chosen\\shop") << "content and configuration agree";
}

TEST_F(ContentToServer, PassesOverDirectoriesThatComeWithAnother) {
  folder.makeFolder("network/WEB1/C$/shop/inner");
  open(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}}) +
                  virtualDir(1, "/ROOT/inner", {{"Path", "C:\\shop\\inner"}})));
  frmMain.chkCopyFiles.setValue(true);
  withPermissions();
  exportSites({0});
  EXPECT_THAT(copies(), ElementsAre("\\\\WEB1\\C$\\shop > \\\\NEW1\\C$"));
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (std::vector<std::string>{"True", "False"}));
  EXPECT_EQ(entriesOf(frmMain.lstFilesToCopy(0)), (std::vector<std::string>{"C:\\shop", "C:\\shop\\inner"}));
  EXPECT_EQ(timesLogged("Copying to   \\\\NEW1\\C$\\shop\\inner"), 0);
}

TEST_F(ContentToServer, PairsFoldersAndDirectoriesByPositionAlone) {
  openSite();
  select({0});
  // The rows of the folders change places, those of the mapping don't.
  executeOn("Trelvin.mdb", "UPDATE tmpFilesToCopy SET DirNum = 1 - DirNum");
  press();
  EXPECT_THAT(copyLines(), ElementsAre("Copying from \\\\WEB1\\D$\\docs", "Copying to   \\\\NEW1\\C$\\shop",
                                       "Copying from \\\\WEB1\\C$\\shop", "Copying to   \\\\NEW1\\D$\\docs"));
  EXPECT_TRUE(hasOutput("Copying web content /ROOT..."));
}

TEST_F(ContentToServer, ReadsTheListsOfEachSiteAnew) {
  for (const char* name : {"C$/site1", "C$/site2"}) folder.makeFolder(std::string("network/WEB1/") + name);
  open(webService(plainSite(1, "Shop") + plainSite(2, "Wiki")));
  frmMain.chkCopyFiles.setValue(true);
  exportSites({0, 1});
  EXPECT_THAT(copies(),
              ElementsAre("\\\\WEB1\\C$\\site1 > \\\\NEW1\\C$", "\\\\WEB1\\C$\\site2 > \\\\NEW1\\C$"));
  EXPECT_EQ(entriesOf(frmMain.lstFilesToCopy(0)), (std::vector<std::string>{"C:\\site2"}));
}

TEST_F(ContentToServer, CopiesWhatIsNotSaidToStay) {
  openSite();
  select({0});
  executeOn("Trelvin.mdb", "UPDATE tmpFilesToCopy SET Copy = NULL WHERE DirNum = 1");
  press();
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (std::vector<std::string>{"True", "True"}));
}

TEST_F(ContentToServer, KeepsInStepWithTheMappingWhenAFlagCannotBeRead) {
  openSite();
  databases.failOn("Field", "Copy", error_number::kItemNotFound);
  exportSites({0});
  EXPECT_EQ(entriesOf(frmMain.lstCheckCopy(0)), (std::vector<std::string>{"False", "False"}));
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_TRUE(exists("/W3SVC/1/ROOT/docs")) << "the configuration goes on";
}

TEST_F(ContentToServer, GoesOnWithoutTheTableOfFolders) {
  openSite();
  select({0});
  databases.failOn("OpenRows", "tmpFilesToCopy", error_number::kNoSuchTable);
  press();
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_TRUE(exists("/W3SVC/1"));
}

TEST_F(ContentToServer, ReachesTheTargetBeforeAnyConfiguration) {
  openSite();
  const std::string before = metabaseOf("NEW1");
  std::vector<std::string> changes;
  shell.onCopy = [&](const FileOperation&) { changes = callsOf({"Create", "Delete", "Put", "SetInfo"}); };
  exportSites({0});
  EXPECT_THAT(changes, IsEmpty());
  EXPECT_FALSE(callsOf({"Create"}).empty());
}

TEST_F(ContentToServer, TravelsWithoutTheConfigurationToo) {
  openSite();
  frmMain.chkCopyIIS.setValue(false);
  exportSites({0});
  EXPECT_EQ(copies().size(), 2U);
  EXPECT_FALSE(exists("/W3SVC/1"));
}

TEST_F(ContentToServer, CopiesAllRowsAfterAnAbortAndThenEndsWithoutAWord) {
  openSite();
  const std::string before = metabaseOf("NEW1");
  frmMain.cmdPopulate.enabled = false;
  shell.onCopy = [](const FileOperation&) {
    if (frmMain.cmdExportServer.caption == "Abort") frmMain.cmdExportServer.onClick();
  };
  exportSites({0});
  EXPECT_EQ(copies().size(), 2U);
  EXPECT_EQ(shownOutput().back(), "Copying web content /ROOT/docs...")
      << "neither Done! nor Transfer aborted";
  EXPECT_EQ(timesLogged("Completed"), 0);
  EXPECT_EQ(events->beeps, 0);
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_TRUE(frmMain.cmdPopulate.enabled);
  EXPECT_EQ(closedTargetFile(), before);
}

TEST_F(ContentToServer, EndsWithoutAWordWhenAMissingSourceIsAnsweredWithAbort) {
  open(webService(plainSite(1, "Shop")));
  frmMain.chkCopyFiles.setValue(true);
  exportSites({0}, {Answer::kAbort});
  EXPECT_EQ(timesLogged("Could not find Source folder \\\\WEB1\\C$\\site1"), 1);
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_FALSE(exists("/W3SVC/1"));
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
}

// Permissions.

TEST_F(ContentToServer, SetsNoPermissionsUnlessAsked) {
  openSite();
  lists.placeOnMainWindow();
  exportSites({0});
  EXPECT_THAT(lists.calls, IsEmpty());
  EXPECT_FALSE(hasOutput("Setting file permissions...."));
}

TEST_F(ContentToServer, SetsThePermissionsOfEachDirectoryBehindItsContent) {
  openSite();
  withPermissions();
  std::vector<std::size_t> pathsAtCopy;
  shell.onCopy = [&](const FileOperation&) { pathsAtCopy.push_back(lists.pathsGivenTo("NTFSCtl1").size()); };
  folder.makeFolder("network/NEW1/C$/shop");
  folder.makeFolder("network/NEW1/D$/docs");
  exportSites({0});
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"), ElementsAre("\\\\WEB1\\C$\\shop", "\\\\WEB1\\D$\\docs"));
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), ElementsAre("\\\\NEW1\\C$\\shop", "\\\\NEW1\\D$\\docs"));
  EXPECT_THAT(pathsAtCopy, ElementsAre(0U, 1U));
}

TEST_F(ContentToServer, TellsOfThePermissions) {
  openSite();
  withPermissions();
  exportSites({0});
  const std::vector<std::string> lines = shownOutput();
  ASSERT_GE(lines.size(), 13U);
  EXPECT_THAT(std::vector<std::string>(lines.begin() + 7, lines.begin() + 13),
              ElementsAre("Copying web content /ROOT...", "Setting file permissions....",
                          "This can take a long time...", "Copying web content /ROOT/docs...",
                          "Setting file permissions....", "This can take a long time..."));
}

TEST_F(ContentToServer, RunsTheTimerOfThePermissionsAndBeginsTheirCountAnew) {
  openSite();
  withPermissions();
  folder.makeFolder("network/NEW1/C$/shop");
  run.lPermsSet = 500;
  run.bCancelPerms = true;
  std::string panel;
  std::int32_t count = -1;
  bool timer = false;
  bool cancelled = true;
  std::string line;
  lists.rule = [&](const std::string&) -> std::optional<std::int32_t> {
    if (count < 0) {
      panel = frmMain.StatusBar1.panel;
      count = run.lPermsSet;
      timer = frmMain.syncPermTimer.enabled;
      cancelled = run.bCancelPerms;
      line = frmMain.lstOutput.text();
    }
    return std::nullopt;
  };
  exportSites({0});
  EXPECT_EQ(panel, "Setting file permissions...");
  EXPECT_EQ(count, 1) << "the first folder";
  EXPECT_TRUE(timer);
  EXPECT_FALSE(cancelled);
  EXPECT_EQ(line, "This can take a long time...");
  EXPECT_FALSE(frmMain.syncPermTimer.enabled);
}

TEST_F(ContentToServer, GivesTheNextDirectoryItsPermissionsAfterACancelledWalk) {
  openSite();
  withPermissions();
  folder.makeFolder("network/NEW1/C$/shop");
  folder.makeFolder("network/NEW1/D$/docs");
  lists.failOnNth("NTFSCtl1 getAccounts", 1, error_number::kControlException);
  exportSites({0});
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"), Contains("\\\\WEB1\\D$\\docs"));
}

TEST_F(ContentToServer, PutsTheTargetsNameIntoTheAccounts) {
  openSite();
  withPermissions();
  folder.makeFolder("network/NEW1/C$/shop");
  lists.lists["\\\\WEB1\\C$\\shop"] = {Account{.name = "WEB1\\anna"}};
  exportSites({0});
  EXPECT_THAT(lists.calls, Contains("NTFSCtl2 accountName = NEW1\\anna"));
}

}  // namespace
}  // namespace trelvin::test
