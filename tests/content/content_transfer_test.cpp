#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/export_test.h"
#include "fakes/failures.h"
#include "fakes/fake_access_lists.h"
#include "fakes/fake_shell.h"
#include "fakes/recorded_files.h"
#include "metabase/paths.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// A server WEB1 with two sites, Shop with two directories and Wiki with one, and a server WEB2 with the same
// drives and no site. A run carries the content of sites from one to the other, and nothing else unless a
// test wants it.
class ContentTransfer : public ExportTest {
 protected:
  ContentTransfer() : shell(useFakeShell()) {
    openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}}) +
                      virtualDir(1, "/ROOT/docs", {{"Path", "D:\\manuals"}}) + webSite(2, "Wiki") +
                      virtualDir(2, "/ROOT", {{"Path", "C:\\wiki"}})));
    lists.placeOnMainWindow();
    addServer("WEB2", metabaseFile(webService("")));
    for (const char* server : {"WEB1", "WEB2"}) {
      for (const char* path : {"C$/shop", "D$/manuals", "C$/wiki"}) addFolder(server, path);
    }
    frmMain.TabExportType.select(1);
    frmMain.txtExportServer.text = "WEB2";
    frmMain.chkCopyFiles.setValue(true);
    frmMain.chkCopyIIS.setValue(false);
    transferOnly({"Path", "ServerComment", "KeyType"});
  }

  void addFolder(const std::string& server, const std::string& path) {
    folder.makeFolder("network/" + server + "/" + path);
  }
  void removeFolder(const std::string& server, const std::string& path) {
    std::filesystem::remove_all(folder / ("network/" + server + "/" + path));
  }
  // Presses the button, as a person who answers the long warning with OK and then what is given.
  void transfer(std::initializer_list<Answer> furtherAnswers = {}) {
    dialogs->answers.assign(1, Answer::kOk);
    dialogs->answers.insert(dialogs->answers.end(), furtherAnswers);
    frmMain.cmdExportServer.onClick();
  }
  void copyPermissionsToo() { frmMain.chkSetFilePerms.setValue(true); }
  // Changes the Shop on the source; what is selected already keeps its rows.
  static void setPath(const std::string& below, const std::string& path) {
    const NodeHandle node = getObject("IIS://WEB1/W3SVC/1" + below);
    node->put("Path", path);
    node->setInfo();
  }
  static void addDirectoryTo(const std::string& below, const std::string& name, const std::string& path) {
    getObject("IIS://WEB1/W3SVC/1" + below)->create("IIsWebVirtualDir", name)->setInfo();
    setPath(below + "/" + name, path);
  }
  void setWorkingTable(const std::string& assignment, const std::string& condition) {
    executeOn("Trelvin.mdb", "UPDATE tmpFilesToCopy SET " + assignment + " WHERE " + condition);
  }
  static void replace(const std::string& oldText, const std::string& newText) {
    frmMain.lstOldValues.addItem(oldText);
    frmMain.lstNewValues.addItem(newText);
  }
  // "source > target's parent" of each copy.
  [[nodiscard]] std::vector<std::string> copies() const {
    std::vector<std::string> lines;
    for (const FileOperation& operation : shell.operations)
      lines.push_back(operation.from + " > " + operation.to);
    return lines;
  }
  [[nodiscard]] std::vector<std::string> copyLines() const {
    std::vector<std::string> lines;
    for (const std::string& line : logLines()) {
      if (line.starts_with("Copying ")) lines.push_back(line);
    }
    return lines;
  }
  static bool targetHasSite() {
    return numberOfFailure([] { return getObject("IIS://WEB2/W3SVC/1"); }) == 0;
  }
  // Nodes of the target that something was changed on.
  [[nodiscard]] std::vector<std::string> changedOnTarget() const {
    std::vector<std::string> paths;
    for (const MetabaseCall& call : metabase->calls) {
      const bool isChange = call.operation == "Create" || call.operation == "Delete" ||
                            call.operation == "Put" || call.operation == "SetInfo" ||
                            call.operation == "Start";
      if (isChange && call.path.starts_with("IIS://WEB2/")) paths.push_back(call.operation + " " + call.path);
    }
    return paths;
  }

  FakeShell& shell;
  AccessLists lists;
};

// Which directories travel, and where to.

TEST_F(ContentTransfer, CopiesEachDirectoryOfTheSiteFromShareToShare) {
  select({0});
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\shop > \\WEB2\C$)", R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
  for (const FileOperation& operation : shell.operations) {
    EXPECT_EQ(operation.progressTitle, "Copying web content...");
  }
}

TEST_F(ContentTransfer, LogsWhereEachCopyComesFromAndGoesTo) {
  select({0});
  transfer();
  EXPECT_THAT(copyLines(),
              ElementsAre(R"(Copying from \\WEB1\C$\shop)", R"(Copying to   \\WEB2\C$\shop)",
                          R"(Copying from \\WEB1\D$\manuals)", R"(Copying to   \\WEB2\D$\manuals)"));
}

TEST_F(ContentTransfer, TellsWhatIsCopiedBeforeTheCopy) {
  select({0});
  std::vector<std::string> panels;
  std::vector<std::string> lines;
  std::vector<std::size_t> logged;
  shell.onCopy = [&](const FileOperation&) {
    panels.push_back(frmMain.StatusBar1.panel);
    lines.push_back(frmMain.lstOutput.text());
    logged.push_back(copyLines().size());
  };
  transfer();
  const auto texts = ElementsAre("Copying web content " + frmMain.lstFolders(0).list(0) + "...",
                                 "Copying web content " + frmMain.lstFolders(0).list(1) + "...");
  EXPECT_THAT(panels, texts);
  EXPECT_THAT(lines, texts);
  EXPECT_THAT(logged, ElementsAre(2, 4));
  EXPECT_EQ(frmMain.lstFolders(0).list(1), "/ROOT/docs");
}

TEST_F(ContentTransfer, TakesTheNewDirectoryOfTheMappingForTheTarget) {
  select({0});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'E:\\new\\shop' WHERE Folder = '/ROOT'");
  addFolder("WEB2", "E$/new/shop");
  transfer();
  EXPECT_THAT(copies(), Contains(R"(\\WEB1\C$\shop > \\WEB2\E$\new)"));
}

TEST_F(ContentTransfer, RewritesTheTargetAndNeverTheSource) {
  select({0});
  replace("c:\\SHOP", "E:\\web:shop");
  addFolder("WEB2", "E$/web$shop");
  transfer();
  EXPECT_THAT(copyLines(), AllOf(Contains(R"(Copying from \\WEB1\C$\shop)"),
                                 Contains(R"(Copying to   \\WEB2\E$\web$shop)")));
  EXPECT_THAT(copies(), Contains(R"(\\WEB1\C$\shop > \\WEB2\E$)"));
}

TEST_F(ContentTransfer, MakesTheTargetsFolders) {
  select({0});
  removeFolder("WEB2", "D$/manuals");
  replace("D:\\manuals", "D:\\a\\b\\manuals");
  transfer();
  EXPECT_TRUE(folder.has("network/WEB2/D$/a/b/manuals"));
}

TEST_F(ContentTransfer, PassesOverDirectoriesThatAreNotToBeCopiedWithTheirPermissions) {
  select({0});
  copyPermissionsToo();
  setWorkingTable("Copy = 0", "DirNum = 0");
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"), ElementsAre(R"(\\WEB1\D$\manuals)"));
}

TEST_F(ContentTransfer, CopiesForAnyMarkOtherThanZero) {
  select({0});
  setWorkingTable("Copy = 1", "DirNum = 0");
  setWorkingTable("Copy = -1", "DirNum = 1");
  transfer();
  EXPECT_THAT(copies(), SizeIs(2));
}

TEST_F(ContentTransfer, CopiesForAMarkThatIsMissing) {
  select({0});
  setWorkingTable("Copy = NULL", "DirNum = 0");
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\shop > \\WEB2\C$)", R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
}

TEST_F(ContentTransfer, KeepsWhatTheWorkingTableSaysInItsScratchLists) {
  select({0});
  setWorkingTable("Copy = 0", "DirNum = 1");
  frmMain.lstCheckCopy(0).addItem("from before");
  frmMain.lstFilesToCopy(0).addItem("from before");
  transfer();
  EXPECT_THAT(entriesOf(frmMain.lstCheckCopy(0)), ElementsAre("True", "False"));
  EXPECT_THAT(entriesOf(frmMain.lstFilesToCopy(0)), ElementsAre("C:\\shop", "D:\\manuals"));
}

TEST_F(ContentTransfer, PairsRowsAndDirectoriesByTheirPlaceInTheOrderOfNumbers) {
  select({0});
  setWorkingTable("DirNum = 7", "DirNum = 0");  // now behind the other one
  transfer();
  EXPECT_THAT(copyLines(),
              ElementsAre(R"(Copying from \\WEB1\D$\manuals)", R"(Copying to   \\WEB2\C$\shop)",
                          R"(Copying from \\WEB1\C$\shop)", R"(Copying to   \\WEB2\D$\manuals)"));
}

TEST_F(ContentTransfer, PairsWhatStandsBehindADirectoryWithoutAPathWithTheOneBefore) {
  setPath("/ROOT/docs", "  ");
  addDirectoryTo("/ROOT", "wiki", "C:\\wiki");
  select({0});
  transfer();
  EXPECT_THAT(copyLines(), ElementsAre(R"(Copying from \\WEB1\C$\shop)", R"(Copying to   \\WEB2\C$\shop)",
                                       R"(Copying from \\WEB1\C$\wiki)", R"(Copying to   \\WEB2\)"))
      << "there is one row less than there are directories";
  EXPECT_TRUE(hasOutput("Copying web content /ROOT/docs..."));
}

TEST_F(ContentTransfer, CopiesNothingOfASiteWithADirectoryOfTheEmptyPath) {
  setPath("/ROOT/docs", "");
  select({0});
  transfer();
  EXPECT_TRUE(hasLogged("Error, a virtual directory was found without a path set"));
  EXPECT_THAT(copies(), IsEmpty()) << "the empty text is a part of every path and cancels it";
}

TEST_F(ContentTransfer, CopiesNeitherOfTwoDirectoriesOfOnePath) {
  addDirectoryTo("/ROOT", "wiki", "D:\\manuals");
  select({0});
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\shop > \\WEB2\C$)"));
}

TEST_F(ContentTransfer, CopiesNothingWithoutRows) {
  select({0});
  executeOn("Trelvin.mdb", "DELETE FROM tmpFilesToCopy");
  transfer();
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ContentTransfer, TakesTheRowsOfTheSiteInHand) {
  select({1});
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\wiki > \\WEB2\C$)"));
}

TEST_F(ContentTransfer, CopiesOneSiteAfterTheOther) {
  select({0, 1});
  transfer();
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\shop > \\WEB2\C$)", R"(\\WEB1\D$\manuals > \\WEB2\D$)",
                                    R"(\\WEB1\C$\wiki > \\WEB2\C$)"));
  EXPECT_THAT(entriesOf(frmMain.lstFilesToCopy(0)), ElementsAre("C:\\wiki"));
}

TEST_F(ContentTransfer, CopiesNothingAndNoPermissionsWithoutTheWish) {
  copyPermissionsToo();
  frmMain.chkCopyFiles.setValue(false);
  EXPECT_TRUE(run.bSetFilePerms);
  select({0});
  transfer();
  EXPECT_THAT(copies(), IsEmpty());
  EXPECT_THAT(lists.calls, IsEmpty());
  EXPECT_THAT(copyLines(), IsEmpty());
  EXPECT_FALSE(hasOutput("Setting file permissions...."));
}

TEST_F(ContentTransfer, BringsContentBeforeAnyConfiguration) {
  select({0});
  frmMain.chkCopyIIS.setValue(true);
  shell.onCopy = [&](const FileOperation&) {
    EXPECT_THAT(changedOnTarget(), IsEmpty());
    EXPECT_FALSE(hasLogged("Checking to see if W3SVC1 exists.."));
  };
  transfer();
  EXPECT_THAT(copies(), SizeIs(2));
  EXPECT_THAT(changedOnTarget(), Not(IsEmpty()));
  EXPECT_TRUE(targetHasSite());
}

TEST_F(ContentTransfer, CopiesContentAloneWhenConfigurationIsNotWanted) {
  select({0});
  transfer();
  EXPECT_THAT(copies(), SizeIs(2));
  EXPECT_FALSE(hasLogged("Checking to see if W3SVC1 exists.."));
  EXPECT_FALSE(targetHasSite());
  EXPECT_TRUE(hasLogged("Completed"));
  EXPECT_TRUE(hasOutput("Done!"));
}

// What fails on the way.

TEST_F(ContentTransfer, ADirectoryThatFailsDoesNotKeepBackTheNext) {
  select({0});
  recordFiles().failOn("folderExists", R"(\\WEB1\C$\shop)", error_number::kPermissionDenied);
  transfer();
  EXPECT_TRUE(hasLogged(R"(Failed copying files from \\WEB1\C$\shop to \\WEB2\C$\shop Err 70 0)"));
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ContentTransfer, ALogThatCannotBeWrittenKeepsNoDirectoryBack) {
  select({0});
  removeFolder("WEB2", "C$/shop");
  RecordedFiles& files = recordFiles();
  files.failOn("createFolder", R"(\\WEB2\C$\shop)", error_number::kPermissionDenied);
  files.refuses = [](const std::string& line) { return line.find("opying ") != std::string::npos; };
  transfer();
  EXPECT_THAT(copyLines(), IsEmpty());
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ContentTransfer, ASilentRunGoesOnToTheConfigurationWithoutShares) {
  select({0});
  removeFolder("WEB2", "D$");
  frmMain.chkCopyIIS.setValue(true);
  frmMain.chkRunSilent.setValue(true);
  transfer();
  EXPECT_EQ(timesLogged(R"(Could not find Target folder \\WEB2\D$\manuals)"), 1);
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_THAT(copies(), SizeIs(2));
  EXPECT_TRUE(targetHasSite());
}

TEST_F(ContentTransfer, AnAbortWhileCopyingStillCopiesEveryDirectoryAndThenEndsWithoutAWord) {
  select({0, 1});
  removeFolder("WEB1", "C$/shop");
  frmMain.chkCopyIIS.setValue(true);
  frmMain.chkStartWebs.setValue(true);
  transfer({Answer::kAbort});
  EXPECT_THAT(copies(), ElementsAre(R"(\\WEB1\C$\shop > \\WEB2\C$)", R"(\\WEB1\D$\manuals > \\WEB2\D$)"));
  EXPECT_THAT(changedOnTarget(), IsEmpty());
  EXPECT_EQ(logLines().back(), R"(Copying to   \\WEB2\D$\manuals)");
  EXPECT_EQ(shownOutput().back(), "Copying web content /ROOT/docs...");
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_EQ(frmMain.cmdExportFile.caption, "Export");
  EXPECT_TRUE(frmMain.chkCopyFiles.enabled);
  EXPECT_EQ(events->beeps, 0);
  EXPECT_THAT(boxes(), SizeIs(2));  // the long warning and the missing folder
}

TEST_F(ContentTransfer, ACopyThatIsAbortedStillSetsPermissions) {
  select({0});
  copyPermissionsToo();
  removeFolder("WEB1", "C$/shop");
  transfer({Answer::kAbort});
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), ElementsAre(R"(\\WEB2\D$\manuals)"));
}

// Permissions.

TEST_F(ContentTransfer, SetsNoPermissionsWithoutTheWish) {
  select({0});
  transfer();
  EXPECT_THAT(lists.calls, IsEmpty());
  EXPECT_FALSE(hasOutput("Setting file permissions...."));
}

TEST_F(ContentTransfer, SetsThePermissionsOfEachDirectoryBehindItsCopy) {
  select({0});
  copyPermissionsToo();
  std::vector<std::size_t> walkedBefore;
  shell.onCopy = [&](const FileOperation&) { walkedBefore.push_back(lists.pathsGivenTo("NTFSCtl2").size()); };
  transfer();
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"), ElementsAre(R"(\\WEB1\C$\shop)", R"(\\WEB1\D$\manuals)"));
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), ElementsAre(R"(\\WEB2\C$\shop)", R"(\\WEB2\D$\manuals)"));
  EXPECT_THAT(walkedBefore, ElementsAre(0, 1));
}

TEST_F(ContentTransfer, SetsThePermissionsOfTheTargetThatWasWrittenForADirectory) {
  select({0});
  copyPermissionsToo();
  replace("C:\\shop", "D:\\new\\store");
  transfer();
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), Contains(R"(\\WEB2\D$\new\store)"));
}

TEST_F(ContentTransfer, WarnsThatPermissionsTakeTime) {
  select({1});
  copyPermissionsToo();
  bool walked = false;
  lists.rule = [&](const std::string&) -> std::optional<std::int32_t> {
    if (!walked) {
      walked = true;
      EXPECT_EQ(frmMain.StatusBar1.panel, "Setting file permissions...");
      EXPECT_EQ(frmMain.lstOutput.text(), "This can take a long time...");
    }
    return std::nullopt;
  };
  transfer();
  EXPECT_TRUE(walked);
  EXPECT_THAT(shownOutput(),
              ElementsAre("Begining the export", "This may take some time", "This program may appear to ",
                          "have stopped responding", "Watch this list for", "progress reports", "Wiki",
                          "Copying web content /ROOT...", "Setting file permissions....",
                          "This can take a long time...", "Done!"));
}

TEST_F(ContentTransfer, RenamesAccountsOfTheImportServerIntoThoseOfTheExportServer) {
  select({1});
  copyPermissionsToo();
  lists.lists[R"(\\WEB1\C$\wiki)"] = {{.name = "web1\\IUSR_WEB1"}, {.name = "CORP\\anna"}};
  transfer();
  EXPECT_THAT(lists.lists[R"(\\WEB2\C$\wiki)"],
              ElementsAre(Account{.name = "WEB2\\IUSR_WEB2"}, Account{.name = "CORP\\anna"}));
}

TEST_F(ContentTransfer, RunsTheTimerForTheLengthOfEachWalk) {
  select({0});
  copyPermissionsToo();
  std::vector<bool> inWalk;
  std::vector<bool> inCopy;
  shell.onCopy = [&](const FileOperation&) { inCopy.push_back(frmMain.syncPermTimer.enabled); };
  lists.rule = [&](const std::string& call) -> std::optional<std::int32_t> {
    if (call == "NTFSCtl1 GetAccounts") inWalk.push_back(frmMain.syncPermTimer.enabled);
    return std::nullopt;
  };
  transfer();
  EXPECT_THAT(inCopy, ElementsAre(false, false));
  EXPECT_THAT(inWalk, ElementsAre(true, true));
  EXPECT_FALSE(frmMain.syncPermTimer.enabled);
}

TEST_F(ContentTransfer, StopsTheTimerBehindAWalkThatFailed) {
  select({1});
  copyPermissionsToo();
  lists.failOn("NTFSCtl1 GetAccounts", error_number::kControlException);
  transfer();
  EXPECT_FALSE(frmMain.syncPermTimer.enabled);
}

TEST_F(ContentTransfer, AWalkWhoseFailuresCannotBeLoggedEndsAndLeavesTheNextDirectoryItsOwn) {
  select({0});
  copyPermissionsToo();
  lists.failOn("NTFSCtl1 FileOrDirectory = \\\\WEB1\\C$\\shop", error_number::kPermissionDenied);
  recordFiles().refuses = [](const std::string& line) { return line.find("Error") != std::string::npos; };
  transfer();
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), ElementsAre(R"(\\WEB2\D$\manuals)"));
  EXPECT_FALSE(frmMain.syncPermTimer.enabled);
}

TEST_F(ContentTransfer, CountsThePermissionsOfEachDirectoryAnew) {
  select({0});
  copyPermissionsToo();
  run.lPermsSet = 99;
  std::vector<std::int32_t> counts;
  lists.rule = [&](const std::string& call) -> std::optional<std::int32_t> {
    if (call == "NTFSCtl1 GetAccounts") counts.push_back(run.lPermsSet);
    return std::nullopt;
  };
  transfer();
  EXPECT_THAT(counts, ElementsAre(1, 1));
  EXPECT_EQ(run.lPermsSet, 2);
}

TEST_F(ContentTransfer, CountsFilesBetweenTurnsForEventsOnFromDirectoryToDirectory) {
  select({0});
  copyPermissionsToo();
  run.iFileTick = 5;
  for (const char* path : {"WEB1/C$/shop/a", "WEB1/C$/shop/b", "WEB1/D$/manuals/c"}) {
    folder.write(std::string("network/") + path, "x");
  }
  transfer();
  EXPECT_EQ(run.iFileTick, 8);
}

TEST_F(ContentTransfer, AWalkThatEndedForAnExceptionLeavesTheNextDirectoryItsOwn) {
  select({0});
  copyPermissionsToo();
  lists.failOn("NTFSCtl1 FileOrDirectory = \\\\WEB1\\C$\\shop", error_number::kControlException);
  transfer();
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), ElementsAre(R"(\\WEB2\D$\manuals)"));
  EXPECT_FALSE(run.bCancelPerms);
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ContentTransfer, AnAbortClickDuringAWalkEndsThatWalkAndTheRunBehindTheLastDirectory) {
  select({0, 1});
  copyPermissionsToo();
  frmMain.chkFastPermissions.setValue(true);
  frmMain.chkCopyIIS.setValue(true);
  for (const char* server : {"WEB1", "WEB2"}) {
    addFolder(server, "C$/shop/img");
    addFolder(server, "D$/manuals/img");
  }
  events->onYield = [&](int) {
    if (lists.pathsGivenTo("NTFSCtl2").empty() || run.bExportCancelled) return;
    frmMain.cmdExportServer.onClick();
    EXPECT_TRUE(run.bCancelPerms);
  };
  transfer();
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"),
              ElementsAre(R"(\\WEB1\C$\shop)", R"(\\WEB1\D$\manuals)", R"(\\WEB1\D$\manuals\img)"));
  EXPECT_THAT(copies(), SizeIs(2));
  EXPECT_FALSE(targetHasSite());
  EXPECT_FALSE(hasOutput("Transfer aborted"));
  EXPECT_FALSE(hasOutput("Done!"));
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
}

TEST_F(ContentTransfer, TheTimersTickShowsTheCountOfTheWalkInHand) {
  select({1});
  copyPermissionsToo();
  frmMain.chkFastPermissions.setValue(true);
  std::string panel;
  events->onYield = [&](int) {
    if (!frmMain.syncPermTimer.enabled) return;
    frmMain.syncPermTimer.onTimer();
    panel = frmMain.StatusBar1.panel;
  };
  transfer();
  EXPECT_EQ(panel, "2 file permissions set");
}

}  // namespace
}  // namespace trelvin::test
