#include "transfer/tree_to_server.h"

#include <algorithm>

#include "core/err.h"
#include "core/run_state.h"
#include "metabase/applications.h"
#include "metabase/paths.h"
#include "server_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class TreeToServer : public ServerToServer {
 protected:
  // A source with those nodes below its site 7, and a target with the empty site 3.
  void openTree(const std::string& nodesBelowSite, int from = 6, int to = 6, bool debug = false) {
    const std::string source = infoOf(from) + webService(webSite(7, "Shop") + nodesBelowSite);
    const std::string target = infoOf(to) + webService(webSite(3, "New"));
    if (debug) {
      openForDebug(source, target, from, to);
    } else {
      open(source, target, from, to);
    }
    forgetMapping();
  }
  static void forgetMapping() {
    frmMain.lstFolders(0).clear();
    frmMain.lstDirectories(0).clear();
  }
  static void place(const std::string& folder, const std::string& directory) {
    frmMain.lstFolders(0).addItem(folder);
    frmMain.lstDirectories(0).addItem(directory);
  }
  void walk() {
    output.clear();
    metabase->calls.clear();
    logged_ = logLines().size();
    frmMain.lstPropsToExport.clear();
    Err.clear();
    const std::string number = "3";
    copyTreeToServer(getObject("IIS://WEB1/W3SVC/7"), number, number, treeNames);
  }
  // What the walk has logged.
  [[nodiscard]] std::vector<std::string> walkLog() const {
    const std::vector<std::string> lines = logLines();
    return {lines.begin() + static_cast<std::ptrdiff_t>(logged_), lines.end()};
  }
  [[nodiscard]] std::vector<std::string> applicationCalls() const {
    return callsOf({"AppCreate", "AppCreate2", "AppCreate3"});
  }
  static Properties application(const std::string& root, const std::string& isolation = "2") {
    return {{"Path", "C:\\s"}, {"AppRoot", root}, {"AppIsolated", isolation}, {"AppPoolId", "Pool"}};
  }

  TreeNames treeNames;

 private:
  std::size_t logged_ = 0;
};

// Virtual directories.

TEST_F(TreeToServer, MakesTheRootOfASite) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\old"}}));
  place("/ROOT", "D:\\new");
  walk();
  EXPECT_EQ(classOf("/W3SVC/3/ROOT"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "Path"), "D:\\new");
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT"));
  EXPECT_THAT(output, ElementsAre("Creating virtual directory 3/ROOT"));
  EXPECT_EQ(frmMain.lstOutput.text(), "Creating virtual directory 3/ROOT");
}

TEST_F(TreeToServer, CommitsEachStepOfAVirtualDirectory) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\old"}}));
  walk();
  EXPECT_THAT(callsOf({"GetObject", "Create", "Delete", "Put", "SetInfo"}),
              ElementsAre("GetObject /W3SVC/3", "GetObject /W3SVC/3/ROOT", "Create /W3SVC/3 ROOT",
                          "SetInfo /W3SVC/3/ROOT", "Put /W3SVC/3/ROOT Path", "SetInfo /W3SVC/3/ROOT"));
}

TEST_F(TreeToServer, RewritesTheNewDirectory) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\old"}}));
  map("WINNT", "Windows");
  place("/ROOT", "C:\\winnt\\x");
  walk();
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "Path"), "C:\\Windows\\x");
}

TEST_F(TreeToServer, GivesAVirtualDirectoryThatIsNotMappedTheEmptyPath) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\old"}}) + virtualDir(7, "/ROOT/x", {{"Path", "C:\\x"}}));
  place("/ROOT", "D:\\new");
  walk();
  EXPECT_EQ(stored("/W3SVC/3/ROOT/x", "Path"), "");
}

TEST_F(TreeToServer, GivesItsOwnPathBackWhenTheLoopOfPropertiesMay) {
  open(webService(webSite(7, "Shop") + virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}) +
                  virtualDir(7, "/ROOT/x", {{"Path", "C:\\x"}})));
  transferOnly({"Path"});
  select({0});
  executeOn("Trelvin.mdb", "DELETE FROM tmpSettings WHERE Folder = '/ROOT/x'");
  press();
  EXPECT_EQ(stored("/W3SVC/1/ROOT/x", "Path"), "C:\\x");
}

TEST_F(TreeToServer, LooksTheDirectoryUpByThePathBelowTheSite) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\old"}}) + virtualDir(7, "/ROOT/shop", {{"Path", "C:\\x"}}) +
               virtualDir(7, "/ROOT/shop/deep", {{"Path", "C:\\y"}}),
           6, 6, true);
  walk();
  const std::vector<std::string> lookups = [&] {
    std::vector<std::string> found;
    for (const std::string& line : walkLog()) {
      if (line.starts_with("GetNewDir ")) found.push_back(line);
    }
    return found;
  }();
  const std::string a = "GetNewDir /ROOT";
  const std::string b = "GetNewDir /ROOT/shop";
  const std::string c = "GetNewDir /ROOT/shop/deep";
  EXPECT_THAT(lookups, ElementsAre(a, a, a, a, b, b, b, b, c, c, c, c)) << "four times each";
}

TEST_F(TreeToServer, DeletesAVirtualDirectoryThatIsThere) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  addServer("NEW1",
            metabaseFile(webService(webSite(3, "New") + virtualDir(3, "/ROOT", {{"Path", "C:\\gone"}}) +
                                    virtualDir(3, "/ROOT/gone", {{"Path", "C:\\gone"}}))));
  walk();
  EXPECT_THAT(walkLog(),
              ElementsAre("Deleting virtual directory 3/ROOT", "Creating virtual directory 3/ROOT"));
  EXPECT_THAT(output, ElementsAre("Creating virtual directory 3/ROOT")) << "the deletion is logged only";
  EXPECT_FALSE(exists("/W3SVC/3/ROOT/gone"));
}

TEST_F(TreeToServer, SaysNothingOfADeletionThatFailedButOfThePathThatFollows) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  addServer("NEW1",
            metabaseFile(webService(webSite(3, "New") + virtualDir(3, "/ROOT", {{"Path", "C:\\stays"}}))));
  metabase->failOn("Delete", "/W3SVC/3", "ROOT", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(
      walkLog(),
      ElementsAre("Deleting virtual directory 3/ROOT", "Creating virtual directory 3/ROOT",
                  testing::StartsWith("Error setting path for virtual directory 3/ROOTError -2147463154")));
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "Path"), "C:\\stays");
}

TEST_F(TreeToServer, SaysNothingOfACreationThatFailedButOfThePathThatFollows) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  metabase->failOn("Create", "/W3SVC/3", "ROOT", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT",
                                     "Error setting path for virtual directory 3/ROOTError 91" +
                                         describeError(error_number::kObjectNotSet)));
}

TEST_F(TreeToServer, LetsThePathLandOnTheNodeBeforeWhenACreationFailed) {
  openTree(virtualDir(7, "/a", {{"Path", "C:\\a"}}) + virtualDir(7, "/b", {{"Path", "C:\\b"}}));
  place("/a", "D:\\a");
  place("/b", "D:\\b");
  metabase->failOn("Create", "/W3SVC/3", "b", error_number::kAccessDenied);
  walk();
  EXPECT_FALSE(exists("/W3SVC/3/b"));
  EXPECT_EQ(stored("/W3SVC/3/a", "Path"), "D:\\b");
  EXPECT_THAT(walkLog(), Each(testing::StartsWith("Creating virtual directory 3/"))) << "nothing tells it";
}

TEST_F(TreeToServer, LogsAPathThatItCouldNotSetWithoutBlanks) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  metabase->failOn("Put", "/W3SVC/3/ROOT", "Path", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(walkLog(), Contains("Error setting path for virtual directory 3/ROOTError -2147024891" +
                                  describeError(error_number::kAccessDenied)));
  EXPECT_FALSE(Err.isSet());
}

TEST_F(TreeToServer, GoesOnBelowADirectoryThatFailed) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}) + virtualDir(7, "/ROOT/x", {{"Path", "C:\\x"}}));
  metabase->failOn("Put", "", "Path", error_number::kAccessDenied);
  walk();
  EXPECT_TRUE(exists("/W3SVC/3/ROOT/x"));
  EXPECT_THAT(walkLog(),
              Contains(testing::StartsWith("Error setting path for virtual directory 3/ROOT/xError")));
}

// Directories.

TEST_F(TreeToServer, MakesADirectoryWithoutAPath) {
  openTree(virtualDir(7, "/ROOT", {}) + directory(7, "/ROOT/bin", {{"AccessFlags", "513"}}));
  place("/ROOT/bin", "D:\\never");
  walk();
  EXPECT_EQ(classOf("/W3SVC/3/ROOT/bin"), "IIsWebDirectory");
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT", "Creating directory 3/ROOT/bin"));
  EXPECT_THAT(output, ElementsAre("Creating virtual directory 3/ROOT", "Creating directory 3/ROOT/bin"));
  EXPECT_THAT(callsOf({"Put"}), ElementsAre("Put /W3SVC/3/ROOT Path"))
      << "the class of the directory has no path; other properties travel by themselves";
}

TEST_F(TreeToServer, KeepsADirectoryThatIsThere) {
  openTree(directory(7, "/bin"));
  addServer("NEW1", metabaseFile(webService(webSite(3, "New") + directory(3, "/bin", {{"AccessFlags", "1"}}) +
                                            directory(3, "/bin/kept"))));
  walk();
  EXPECT_THAT(walkLog(), IsEmpty());
  EXPECT_THAT(callsOf({"Create", "Delete"}), IsEmpty());
  EXPECT_TRUE(exists("/W3SVC/3/bin/kept"));
  EXPECT_EQ(stored("/W3SVC/3/bin", "AccessFlags"), "1");
}

// A server whose schema gives directories a path, too.
class DirectoryWithPath : public TreeToServer {
 protected:
  void openTree(const std::string& nodes) {
    giveDirectoriesAPath("WEB1");
    TreeToServer::openTree(nodes);
  }
};

TEST_F(DirectoryWithPath, SetsThePathOfItsParent) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}) + directory(7, "/ROOT/bin", {{"Path", "C:\\bin"}}));
  place("/ROOT", "D:\\root");
  place("/ROOT/bin", "C:\\winnt\\bin");
  map("winnt", "Windows");
  walk();
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "Path"), "C:\\Windows\\bin");
  EXPECT_EQ(stored("/W3SVC/3/ROOT/bin", "Path"), kUnset);
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT", "Creating directory 3/ROOT/bin"));
}

TEST_F(DirectoryWithPath, LogsAPathThatItsParentDidNotTake) {
  openTree(directory(7, "/bin", {{"Path", "C:\\bin"}}));
  walk();
  EXPECT_THAT(walkLog(),
              ElementsAre("Creating directory 3/bin",
                          testing::StartsWith("Error setting path for directory 3/binError -2147463162")));
}

// Applications.

TEST_F(TreeToServer, MakesTheApplicationOfTheRoot) {
  openTree(virtualDir(7, "/ROOT", application("/LM/W3SVC/7/ROOT", "0")));
  walk();
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "AppRoot"), "/LM/W3SVC/3/ROOT");
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "AppIsolated"), "0");
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "AppPoolId"), "Pool");
  EXPECT_EQ(classOf("/W3SVC/AppPools/Pool"), "IIsApplicationPool") << "a missing pool is made";
}

TEST_F(TreeToServer, MakesTheApplicationOfADirectory) {
  openTree(virtualDir(7, "/ROOT", {}) + directory(7, "/ROOT/app", application("/LM/W3SVC/7/ROOT/app")));
  walk();
  EXPECT_EQ(stored("/W3SVC/3/ROOT/app", "AppRoot"), "/LM/W3SVC/3/ROOT/app");
  EXPECT_THAT(applicationCalls(), ElementsAre("AppCreate3 /W3SVC/3/ROOT/app 2 Pool"));
}

TEST_F(TreeToServer, KnowsAnApplicationByTheEndOfItsRootInAnyCase) {
  openTree(virtualDir(7, "/ROOT", application("/LM/w3svc/7/Root")));
  walk();
  EXPECT_THAT(applicationCalls(), ElementsAre("AppCreate3 /W3SVC/3/ROOT 2 Pool"));
}

TEST_F(TreeToServer, MakesNoApplicationBelowItsRoot) {
  openTree(virtualDir(7, "/ROOT", application("/LM/W3SVC/7/ROOT")) +
           virtualDir(7, "/ROOT/docs", {{"Path", "C:\\d"}}) + directory(7, "/ROOT/bin"));
  walk();
  EXPECT_THAT(applicationCalls(), ElementsAre("AppCreate3 /W3SVC/3/ROOT 2 Pool"));
}

TEST_F(TreeToServer, TakesANodeForAnApplicationWhoseNameEndsTheRootThatItInherits) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}) +
           virtualDir(7, "/ROOT/data", application("/LM/W3SVC/7/ROOT/data")) + directory(7, "/ROOT/data/a"));
  walk();
  EXPECT_THAT(applicationCalls(),
              ElementsAre("AppCreate3 /W3SVC/3/ROOT/data 2 Pool", "AppCreate3 /W3SVC/3/ROOT/data/a 2 Pool"));
}

TEST_F(TreeToServer, MakesNoApplicationWithoutARoot) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  walk();
  EXPECT_THAT(applicationCalls(), IsEmpty());
}

TEST_F(TreeToServer, LogsAnApplicationThatFailedByTheKindOfItsNode) {
  openTree(virtualDir(7, "/ROOT", {}) + directory(7, "/ROOT/app", application("/LM/W3SVC/7/ROOT/app")) +
           virtualDir(7, "/ROOT/vapp", application("/LM/W3SVC/7/ROOT/vapp")));
  metabase->failOn("AppCreate3", "", "", error_number::kAccessDenied);
  walk();
  const std::string cause = "Error -2147024891" + describeError(error_number::kAccessDenied);
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT", "Creating directory 3/ROOT/app",
                                     "Error creating Application for directory 3/ROOT/app" + cause,
                                     "Creating virtual directory 3/ROOT/vapp",
                                     "Error creating Application for virtual directory 3/ROOT/vapp" + cause));
  EXPECT_FALSE(Err.isSet());
}

TEST_F(TreeToServer, TellsOfAPoolThatItCouldNotReadThoughTheApplicationIsMade) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}, {"AppRoot", "/LM/W3SVC/7/ROOT"}, {"AppIsolated", "1"}}),
           5, 4);
  walk();
  EXPECT_THAT(applicationCalls(), ElementsAre("AppCreate /W3SVC/3/ROOT False"));
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "AppRoot"), "/LM/W3SVC/3/ROOT");
  EXPECT_THAT(walkLog(), Contains(testing::StartsWith(
                             "Error creating Application for virtual directory 3/ROOTError -2147463162")))
      << "IIS 5 has no pools, and the failure to read one is told with the next test";
}

TEST_F(TreeToServer, NamesTheApplicationCallInADebugLog) {
  openTree(virtualDir(7, "/ROOT", application("/LM/W3SVC/7/ROOT")), 6, 6, true);
  walk();
  EXPECT_THAT(walkLog(), Contains("AppCreate3"));
}

TEST_F(TreeToServer, ReadsTheIsolationForTheOldApplicationCallAsInProcessOrNot) {
  openTree(virtualDir(7, "/a", {{"Path", "C:\\s"}, {"AppRoot", "/LM/W3SVC/7/a"}, {"AppIsolated", "0"}}) +
               virtualDir(7, "/b", {{"Path", "C:\\s"}, {"AppRoot", "/LM/W3SVC/7/b"}, {"AppIsolated", "2"}}),
           4, 4);
  walk();
  EXPECT_THAT(applicationCalls(), ElementsAre("AppCreate /W3SVC/3/a True", "AppCreate /W3SVC/3/b False"));
}

TEST_F(TreeToServer, MakesNoApplicationOnAnFtpSite) {
  openFtp(ftpService(ftpSite(7, "Files") + ftpDir(7, "/ROOT", {{"Path", "C:\\f"}}) +
                     ftpDir(7, "/ROOT/pub", {{"Path", "C:\\p"}})),
          ftpService(ftpSite(3, "New")));
  const std::string number = "3";
  copyTreeToServer(getObject("IIS://WEB1/MSFTPSVC/7"), number, number, treeNames);
  EXPECT_EQ(classOf("/MSFTPSVC/3/ROOT"), "IIsFtpVirtualDir");
  EXPECT_EQ(classOf("/MSFTPSVC/3/ROOT/pub"), "IIsFtpVirtualDir");
  EXPECT_THAT(applicationCalls(), IsEmpty());
  EXPECT_THAT(logStartingWith("Error creating Application"), IsEmpty());
}

TEST_F(TreeToServer, LeavesWebDirectoriesAloneWhenFtpIsSelected) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}}));
  frmMain.sExportSiteType = "Ftp";
  walk();
  EXPECT_THAT(childrenOf("/W3SVC/3"), IsEmpty());
}

// Which call it is.

struct Versions {
  const char* from;
  const char* to;
  ApplicationCall call;
};

TEST_F(TreeToServer, ChoosesTheApplicationCallByBothVersionWords) {
  openTree("");
  frmMain.lstIMIISVer.addItem("IIS7");
  frmMain.lstEXIISVer.addItem("IIS7");
  const auto choose = [](ListControl& versions, const std::string& word) {
    for (std::int32_t i = 0; i < versions.listCount(); ++i) {
      if (versions.list(i) == word) versions.setListIndex(i);
    }
  };
  for (const Versions& each : {Versions{"IIS6", "IIS6", ApplicationCall::kAppCreate3},
                               Versions{"IIS5", "IIS5", ApplicationCall::kAppCreate2},
                               Versions{"IIS5", "IIS6", ApplicationCall::kAppCreate2},
                               Versions{"IIS6", "IIS5", ApplicationCall::kAppCreate2},
                               Versions{"IIS4", "IIS4", ApplicationCall::kAppCreate},
                               Versions{"IIS4", "IIS5", ApplicationCall::kAppCreate},
                               Versions{"IIS4", "IIS6", ApplicationCall::kAppCreate},
                               Versions{"IIS5", "IIS4", ApplicationCall::kAppCreate},
                               Versions{"IIS6", "IIS4", ApplicationCall::kAppCreate},
                               Versions{"IIS7", "IIS6", ApplicationCall::kAppCreate},
                               Versions{"IIS6", "IIS7", ApplicationCall::kAppCreate}}) {
    choose(frmMain.lstIMIISVer, each.from);
    choose(frmMain.lstEXIISVer, each.to);
    EXPECT_EQ(applicationCall(), each.call) << each.from << " to " << each.to;
  }
}

TEST_F(TreeToServer, MakesAnApplicationWithoutAHandleNoSuccess) {
  openTree("");
  EXPECT_FALSE(attempt([] { createApplication(nullptr, 0, "", true); }));
  EXPECT_EQ(Err.number, error_number::kObjectNotSet);
}

// The walk.

TEST_F(TreeToServer, WalksDownBeforeItGoesOn) {
  openTree(virtualDir(7, "/ROOT", {}) + virtualDir(7, "/ROOT/a", {}) + directory(7, "/ROOT/a/deep") +
           virtualDir(7, "/ROOT/b", {}));
  walk();
  EXPECT_THAT(output, ElementsAre("Creating virtual directory 3/ROOT", "Creating virtual directory 3/ROOT/a",
                                  "Creating directory 3/ROOT/a/deep", "Creating virtual directory 3/ROOT/b"));
}

TEST_F(TreeToServer, FindsDirectoriesBelowNodesOfOtherClasses) {
  openTree(below(7, "IIsFilters", "/Filters") + below(7, "IIsWebFile", "/odd") + virtualDir(7, "/odd/v", {}));
  walk();
  EXPECT_THAT(childrenOf("/W3SVC/3"), IsEmpty()) << "the file isn't made, so that nothing can stand below it";
  EXPECT_THAT(walkLog(), Contains("Creating virtual directory 3/odd/v")) << "but its children are walked";
}

TEST_F(TreeToServer, MakesDirectoriesOfTheTargetAndNothingElse) {
  openTree(virtualDir(7, "/ROOT", {{"Path", "C:\\s"}, {"DefaultDoc", "x.htm"}}) +
           below(7, "IIsFilters", "/Filters") + below(7, "IIsFilter", "/Filters/f") +
           below(7, "IIsCertMapper", "/IIsCertMapper") + below(7, "IIsWebFile", "/ROOT/one.htm"));
  walk();
  EXPECT_THAT(childrenOf("/W3SVC/3"), ElementsAre("ROOT"));
  EXPECT_THAT(childrenOf("/W3SVC/3/ROOT"), IsEmpty());
  EXPECT_EQ(stored("/W3SVC/3/ROOT", "DefaultDoc"), kUnset) << "no property but the path";
}

TEST_F(TreeToServer, GivesNoWayToEvents) {
  openTree(virtualDir(7, "/ROOT", {}) + directory(7, "/ROOT/a"));
  const int before = events->yields;
  run.bExportCancelled = true;
  walk();
  EXPECT_EQ(events->yields, before);
  EXPECT_TRUE(exists("/W3SVC/3/ROOT/a")) << "and doesn't look at the flag";
}

TEST_F(TreeToServer, EndsQuietlyWithoutANode) {
  openTree("");
  Err.clear();
  const std::string number = "3";
  copyTreeToServer(nullptr, number, number, treeNames);
  EXPECT_EQ(Err.number, error_number::kObjectNotSet);
}

// Names of properties.

TEST_F(TreeToServer, CollectsTheNamesOfEveryClassBelowTheSite) {
  openTree(virtualDir(7, "/ROOT", {}) + below(7, "IIsFilters", "/Filters") +
           below(7, "IIsFilter", "/Filters/f"));
  frmMain.lstExclude.clear();
  walk();
  const std::vector<std::string> names = entriesOf(frmMain.lstPropsToExport);
  EXPECT_THAT(names, Contains("Path"));
  EXPECT_THAT(names, Contains("FilterLoadOrder"));
  EXPECT_THAT(names, Contains("FilterPath"));
  EXPECT_THAT(names, Not(Contains("ServerBindings"))) << "the site's own class comes later";
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "each name once";
}

TEST_F(TreeToServer, LeavesOutExcludedNamesInAnyCase) {
  openTree(virtualDir(7, "/ROOT", {}));
  frmMain.lstExclude.clear();
  frmMain.lstExclude.addItem("PATH");
  frmMain.lstExclude.addItem("Default");
  walk();
  const std::vector<std::string> names = entriesOf(frmMain.lstPropsToExport);
  EXPECT_THAT(names, Not(Contains("Path")));
  EXPECT_THAT(names, Contains("DefaultDoc")) << "names are compared as a whole";
}

TEST_F(TreeToServer, CollectsNothingOfAChildWithoutASchema) {
  openTree(virtualDir(7, "/ROOT", {}));
  metabase->failOn("GetObject", "/schema/IIsWebVirtualDir", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), IsEmpty());
  EXPECT_THAT(walkLog(), ElementsAre("Creating virtual directory 3/ROOT")) << "and nothing is said";
  EXPECT_TRUE(exists("/W3SVC/3/ROOT"));
}

TEST_F(TreeToServer, TakesTheOptionalNamesWhenTheMandatoryOnesCannotBeRead) {
  openTree(virtualDir(7, "/ROOT", {}));
  metabase->failOn("MandatoryProperties", "", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), Contains("DefaultDoc"));
}

TEST_F(TreeToServer, ClearsDuplicatesAwayBehindEachNode) {
  openTree(virtualDir(7, "/a", {}) + virtualDir(7, "/b", {}));
  std::int32_t countAtSecond = 0;
  std::int32_t countAtEnd = 0;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Create" && call.argument == "b")
      countAtSecond = frmMain.lstPropsToExport.listCount();
    return std::nullopt;
  };
  walk();
  countAtEnd = frmMain.lstPropsToExport.listCount();
  EXPECT_GT(countAtSecond, 0);
  EXPECT_EQ(countAtEnd, countAtSecond);
}

}  // namespace
}  // namespace trelvin::test
