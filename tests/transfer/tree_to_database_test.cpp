#include "transfer/tree_to_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/export_test.h"
#include "metabase/paths.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::int32_t kUnsupported = error_number::kAdsPropertyNotSupported;

class SiteTree : public ExportTest {
 protected:
  void open(const std::string& nodesBelowSite) { openOn(webService(webSite(1, "Shop") + nodesBelowSite)); }
  void openDebug(const std::string& nodesBelowSite) {
    openForDebugOn(webService(webSite(1, "Shop") + nodesBelowSite));
  }
  static void map(const std::string& folder, const std::string& newDirectory) {
    frmMain.lstFolders(0).addItem(folder);
    frmMain.lstDirectories(0).addItem(newDirectory);
  }
  static void setVersions(const std::string& from, const std::string& to) {
    frmMain.lstIMIISVer.setListIndex(from.back() - '4');
    frmMain.lstEXIISVer.setListIndex(to.back() - '4');
  }
  void walk() {
    output.clear();
    databases.calls.clear();
    Err.clear();
    exportSiteTree(getObject("IIS://WEB1/W3SVC/1"), "", "7");
  }
  [[nodiscard]] Rows rows() const {
    return data(
        "SiteNumber AS a, Location AS b, LocalPath AS c, AppPath AS d, AppInOutProc AS e, Name AS f, Class "
        "AS g, "
        "DataType AS h, StringValue AS i, AppPoolName AS j");
  }
  [[nodiscard]] std::vector<std::string> locations() const {
    std::vector<std::string> found;
    for (const auto& row : data("Location AS a")) found.push_back(row.front());
    return found;
  }
  [[nodiscard]] std::vector<std::string> inserts() const { return databases.textsOf("Execute"); }
};

TEST_F(SiteTree, StoresARowForAVirtualDirectory) {
  open(virtualDir(1, "/ROOT", {{"Path", "C:\\old"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}, {"AppIsolated", "2"}}));
  setVersions("IIS5", "IIS5");
  map("/ROOT", "D:\\new");
  walk();
  EXPECT_EQ(rows(),
            (Rows{{"7", "/ROOT", "ROOT", "/ROOT", "2", "Path", "IIsWebVirtualDir", "8", "D:\\new", ""}}));
}

TEST_F(SiteTree, StoresARowForADirectory) {
  open(directory(1, "/ROOT", {{"AppRoot", "/LM/W3SVC/1/ROOT"}, {"AppIsolated", "2"}, {"AppPoolId", "Pool"}}));
  setVersions("IIS6", "IIS6");
  map("/ROOT", "D:\\new");
  walk();
  EXPECT_EQ(
      rows(),
      (Rows{{"7", "/ROOT", "ROOT", "/ROOT", "<Null>", "Path", "IIsWebDirectory", "8", "D:\\new", "<Null>"}}));
}

TEST_F(SiteTree, StoresADirectoryWithoutAnEntryUnderAnEmptyPath) {
  open(directory(1, "/bin"));
  walk();
  EXPECT_EQ(data("Location AS a, StringValue AS b"), (Rows{{"/bin", ""}}));
}

TEST_F(SiteTree, StoresNoVirtualDirectoryWithoutAnEntry) {
  open(virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  map("/OTHER", "D:\\new");
  walk();
  EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(SiteTree, TellsTheUserNothingOfALostVirtualDirectory) {
  open(virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  walk();
  EXPECT_THAT(output, ElementsAre("Exporting virtual directory /ROOT"));
  EXPECT_THAT(logStartingWith("Failed"), IsEmpty());
  EXPECT_FALSE(Err.isSet());
}

TEST_F(SiteTree, TakesTheLastOfSeveralEntriesForADirectory) {
  open(directory(1, "/bin"));
  map("/bin", "D:\\first");
  map("/bin", "D:\\last");
  walk();
  EXPECT_EQ(data("StringValue AS a"), (Rows{{"D:\\last"}}));
}

TEST_F(SiteTree, TakesTheFirstOfSeveralEntriesForAVirtualDirectory) {
  open(virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  map("/ROOT", "D:\\first");
  map("/ROOT", "D:\\last");
  walk();
  EXPECT_EQ(data("StringValue AS a"), (Rows{{"D:\\first"}}));
}

TEST_F(SiteTree, ComparesEntriesWithCase) {
  open(directory(1, "/bin") + virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  map("/BIN", "D:\\bin");
  map("/Root", "D:\\root");
  map("Root", "D:\\root");
  walk();
  EXPECT_EQ(data("Location AS a, StringValue AS b"), (Rows{{"/bin", ""}}));
}

TEST_F(SiteTree, RewritesTheDirectoriesByFindAndReplace) {
  open(directory(1, "/bin") + virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  frmMain.lstOldValues.addItem("WINNT");
  frmMain.lstNewValues.addItem("Windows");
  map("/bin", "C:\\winnt\\bin");
  map("/ROOT", "C:\\winnt\\root");
  walk();
  EXPECT_EQ(data("StringValue AS a", "1 = 1"), (Rows{{"C:\\Windows\\bin"}, {"C:\\Windows\\root"}}));
}

TEST_F(SiteTree, TakesThePathFromTheListsAndNotFromTheNode) {
  open(virtualDir(1, "/ROOT", {{"Path", "C:\\old"}}));
  map("/ROOT", "E:\\chosen");
  metabase->calls.clear();
  walk();
  EXPECT_TRUE(std::none_of(metabase->calls.begin(), metabase->calls.end(), [](const MetabaseCall& call) {
    return call.operation == "Get" && call.argument == "Path";
  }));
}

TEST_F(SiteTree, QuotesEveryText) {
  open(directory(1, "/Bob's", {{"AppRoot", "/LM/W3SVC/1/Bob's"}}) +
       virtualDir(1, "/Tom's", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/Tom's"}, {"AppPoolId", "Al's"}}));
  setVersions("IIS6", "IIS6");
  map("/Bob's", "C:\\Bob's");
  map("/Tom's", "C:\\Tom's");
  walk();
  EXPECT_EQ(data("Location AS a, LocalPath AS b, AppPath AS c, StringValue AS d, AppPoolName AS e"),
            (Rows{{"/Bob's", "Bob's", "/Bob's", "C:\\Bob's", "<Null>"},
                  {"/Tom's", "Tom's", "/Tom's", "C:\\Tom's", "Al's"}}));
}

// The statements themselves.

TEST_F(SiteTree, BuildsTheStatementOfADirectory) {
  open(directory(1, "/bin", {{"AppRoot", "/LM/W3SVC/1/bin"}}));
  map("/bin", "D:\\b");
  walk();
  EXPECT_THAT(
      inserts(),
      ElementsAre(
          "INSERT INTO DATA (SiteNumber, Location, LocalPath, AppPath, Name, class, DataType, StringValue) "
          "VALUES (7, '/bin', 'bin', '/bin', 'Path', 'IIsWebDirectory', 8, 'D:\\b')"));
}

TEST_F(SiteTree, BuildsTheStatementOfAVirtualDirectory) {
  open(
      virtualDir(1, "/ROOT",
                 {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}, {"AppIsolated", "1"}, {"AppPoolId", "P"}}));
  setVersions("IIS6", "IIS6");
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_THAT(
      inserts(),
      ElementsAre("INSERT INTO Data (SiteNumber , Location, LocalPath, AppPath, AppInOutProc, Name, Class, "
                  "DataType, StringValue, AppPoolName) Values(7, '/ROOT', 'ROOT','/ROOT',1, 'Path', "
                  "'IIsWebVirtualDir', 8, 'D:\\r', 'P') "));
}

TEST_F(SiteTree, BuildsTheStatementOfAVirtualDirectoryFoundLate) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppIsolated", "1"}}));
  setVersions("IIS5", "IIS6");
  map("ROOT", "D:\\r");
  walk();
  EXPECT_THAT(
      inserts(),
      ElementsAre(
          "INSERT INTO Data (SiteNumber, Location, LocalPath, AppPath, AppInOutProc, Name, Class, "
          "DataType, StringValue, AppPoolName) Values(7,'/ROOT','ROOT', 1, 'Path', 'IIsWebVirtualDir', 8, "
          "'D:\\r', '')"));
}

// In process, and pools.

struct Versions {
  const char* from;
  const char* to;
  const char* inProcess;  // for AppIsolated 2
  const char* pool;
};

class ApplicationColumns : public SiteTree, public ::testing::WithParamInterface<Versions> {};

TEST_P(ApplicationColumns, FollowTheVersionsOfBothSides) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppIsolated", "2"}, {"AppPoolId", "Shop pool"}}));
  setVersions(GetParam().from, GetParam().to);
  map("/ROOT", "D:\\r");
  walk();
  ASSERT_EQ(inserts().size(), 1U);
  EXPECT_THAT(inserts().front(),
              ::testing::HasSubstr(std::string("','',") + GetParam().inProcess + ", 'Path'"));
  EXPECT_THAT(inserts().front(), ::testing::EndsWith(std::string("'D:\\r', '") + GetParam().pool + "') "));
  EXPECT_EQ(rows().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    AllPairs, ApplicationColumns,
    ::testing::Values(Versions{"IIS6", "IIS6", "2", "Shop pool"}, Versions{"IIS5", "IIS6", "2", ""},
                      Versions{"IIS6", "IIS5", "2", ""}, Versions{"IIS5", "IIS5", "2", ""},
                      Versions{"IIS4", "IIS4", "False", ""}, Versions{"IIS4", "IIS5", "False", ""},
                      Versions{"IIS4", "IIS6", "False", ""}, Versions{"IIS5", "IIS4", "False", ""},
                      Versions{"IIS6", "IIS4", "False", ""}),
    [](const auto& instance) { return std::string(instance.param.from) + "To" + instance.param.to; });

TEST_F(SiteTree, CallsAnApplicationOfIsolationZeroInProcessForIis4) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppIsolated", "0"}}));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_THAT(inserts().front(), ::testing::HasSubstr("'',True, 'Path'"));
  EXPECT_EQ(data("AppInOutProc AS a"), (Rows{{"1"}}));
}

TEST_F(SiteTree, GoesByTheWordsOfTheListsAndNotByTheirNumbers) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppIsolated", "2"}, {"AppPoolId", "P"}}));
  setVersions("IIS6", "IIS6");
  run.dblEXIISVer = 4;
  run.dblIMIISVer = 4;
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(data("AppInOutProc AS a, AppPoolName AS b"), (Rows{{"2", "P"}}));
}

// Applications.

TEST_F(SiteTree, KnowsAnApplicationByItsNodesNameInAnyCase) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/root"}}));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(data("AppPath AS a"), (Rows{{"/ROOT"}}));
}

TEST_F(SiteTree, KeepsTheWholePathOfAnApplicationBelowOthers) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}) + virtualDir(1, "/ROOT/shop", {{"Path", "x"}}) +
       virtualDir(1, "/ROOT/shop/app", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT/shop/app"}}));
  map("/ROOT", "D:\\r");
  map("/ROOT/shop", "D:\\s");
  map("/ROOT/shop/app", "D:\\a");
  walk();
  EXPECT_EQ(
      data("Location AS a, LocalPath AS b, AppPath AS c"),
      (Rows{{"/ROOT", "ROOT", ""}, {"/ROOT/shop", "shop", ""}, {"/ROOT/shop/app", "app", "/ROOT/shop/app"}}));
}

TEST_F(SiteTree, TakesANodeBelowAnApplicationForNone) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}}) + directory(1, "/ROOT/bin"));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(data("Location AS a, AppPath AS b"), (Rows{{"/ROOT", "/ROOT"}, {"/ROOT/bin", ""}}));
}

TEST_F(SiteTree, TakesANodeForAnApplicationWhoseNameEndsTheInheritedRoot) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}}) + directory(1, "/ROOT/oot"));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(data("AppPath AS a", "LocalPath = 'oot'"), (Rows{{"/ROOT/oot"}}))
      << "so many last characters are compared";
}

TEST_F(SiteTree, CountsCharactersAndNotBytesOfAName) {
  open(virtualDir(1, "/Größe", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/GRÖßE"}}));
  map("/Größe", "D:\\g");
  walk();
  EXPECT_EQ(data("AppPath AS a"), (Rows{{"/Größe"}}));
}

TEST_F(SiteTree, StoresANodeWithoutAnApplicationAsNone) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  metabase->failOn("Get", "/ROOT", "AppRoot", kUnsupported);
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(data("AppPath AS a"), (Rows{{""}}));
}

TEST_F(SiteTree, ForgetsTheApplicationOfANodeAtTheNextOne) {
  open(virtualDir(1, "/a", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/a"}}) +
       virtualDir(1, "/b", {{"Path", "x"}}));
  map("/a", "D:\\a");
  map("/b", "D:\\b");
  walk();
  EXPECT_EQ(data("AppPath AS a"), (Rows{{"/a"}, {""}}));
}

TEST_F(SiteTree, KeepsIsolationAndPoolOfTheNodeBeforeWhereTheyCantBeRead) {
  open(virtualDir(1, "/a", {{"Path", "x"}, {"AppIsolated", "1"}, {"AppPoolId", "P"}}) +
       virtualDir(1, "/b", {{"Path", "x"}, {"AppIsolated", "0"}, {"AppPoolId", "Q"}}));
  setVersions("IIS6", "IIS6");
  metabase->failOn("Get", "/b", "AppIsolated", kUnsupported);
  metabase->failOn("Get", "/b", "AppPoolID", kUnsupported);
  map("/a", "D:\\a");
  map("/b", "D:\\b");
  walk();
  EXPECT_EQ(data("AppInOutProc AS a, AppPoolName AS b"), (Rows{{"1", "P"}, {"1", "P"}}));
}

// The walk.

TEST_F(SiteTree, WalksDepthFirstAndParentsBeforeChildren) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}) + directory(1, "/ROOT/a") + directory(1, "/ROOT/a/deep") +
       directory(1, "/ROOT/b") + directory(1, "/ZZZ"));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_THAT(locations(), ElementsAre("/ROOT", "/ROOT/a", "/ROOT/a/deep", "/ROOT/b", "/ZZZ"));
}

TEST_F(SiteTree, WalksIntoNodesOfEveryClass) {
  open(element("IIsFilters", "/LM/W3SVC/1/Filters") + element("IIsFilter", "/LM/W3SVC/1/Filters/rewrite") +
       element("IIsConfigObject", "/LM/W3SVC/1/plain") + directory(1, "/plain/inside"));
  transferOnly({"FilterLoadOrder", "FilterPath", "AccessFlags"});
  walk();
  EXPECT_THAT(locations(), ElementsAre("/plain/inside"));
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport),
              ElementsAre("AccessFlags", "FilterLoadOrder", "FilterPath"));
}

TEST_F(SiteTree, StoresNothingForOtherClasses) {
  open(element("IIsFilters", "/LM/W3SVC/1/Filters") + element("IIsCertMapper", "/LM/W3SVC/1/IIsCertMapper") +
       element("IIsWebFile", "/LM/W3SVC/1/default.htm"));
  map("/Filters", "D:\\f");
  walk();
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_THAT(output, IsEmpty());
  EXPECT_THAT(inserts(), IsEmpty());
}

TEST_F(SiteTree, KnowsClassesInAnyCase) {
  open(element("IISWEBVIRTUALDIR", "/LM/W3SVC/1/ROOT", {{"Path", "x"}}) +
       element("iiswebdirectory", "/LM/W3SVC/1/bin"));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_EQ(rows().size(), 2U);
}

TEST_F(SiteTree, CollectsTheNamesOfEveryNodesClassOnce) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}) + directory(1, "/ROOT/a") + directory(1, "/ROOT/b"));
  transferOnly({"AccessFlags", "Path"});
  walk();
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), ElementsAre("AccessFlags", "Path"));
}

TEST_F(SiteTree, CutsDuplicatesDownBehindEveryClass) {
  open(directory(1, "/a") + virtualDir(1, "/b", {{"Path", "x"}}) +
       element("IIsWebFile", "/LM/W3SVC/1/c.htm"));
  transferOnly({"AccessFlags"});
  std::int32_t longest = 0;
  frmMain.lstPropsToExport.onAddItem = [&](const std::string&) {
    longest = std::max(longest, frmMain.lstPropsToExport.listCount());
  };
  walk();
  EXPECT_EQ(longest, 2);
}

TEST_F(SiteTree, LeavesOutExcludedNames) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  frmMain.lstExclude.addItem("accessflags");
  walk();
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), Not(Contains("AccessFlags")));
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), Contains("DefaultDoc"));
}

TEST_F(SiteTree, CollectsTheFormerClassAgainWhereASchemaCantBeBound) {
  open(virtualDir(1, "/a", {{"Path", "x"}}) + directory(1, "/b"));
  transferOnly({"Path", "AccessFlags"});
  metabase->failOn("Schema", "/b", "", error_number::kAccessDenied);
  map("/a", "D:\\a");
  walk();
  EXPECT_THAT(entriesOf(frmMain.lstPropsToExport), ElementsAre("AccessFlags", "Path"));
  EXPECT_EQ(rows().size(), 2U);
  EXPECT_EQ(Err.number, error_number::kAccessDenied) << "nothing in the walk looks at the failure";
}

TEST_F(SiteTree, WalksFtpSitesByTheirOwnClasses) {
  addServer("WEB1", metabaseFile(ftpService(
                        element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}}) +
                        element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}) +
                        element("IIsFtpDirectory", "/LM/MSFTPSVC/1/ROOT/in") +
                        element("IIsWebVirtualDir", "/LM/MSFTPSVC/1/ROOT/web", {{"Path", "C:\\web"}}))));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listSites();
  map("/ROOT", "D:\\ftp");
  map("/ROOT/web", "D:\\web");
  exportSiteTree(getObject("IIS://WEB1/MSFTPSVC/1"), "", "7");
  EXPECT_EQ(data("Location AS a, AppPath AS b, Class AS c, StringValue AS d"),
            (Rows{{"/ROOT", "", "IIsFtpVirtualDir", "D:\\ftp"}, {"/ROOT/in", "", "IIsFtpDirectory", ""}}));
}

TEST_F(SiteTree, DoesNothingForANodeWithoutChildren) {
  open("");
  walk();
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_FALSE(Err.isSet());
}

TEST_F(SiteTree, IsLeftBehindByAnUnboundParent) {
  open("");
  Err.clear();
  exportSiteTree(nullptr, "", "7");
  EXPECT_EQ(Err.number, error_number::kObjectNotSet);
  EXPECT_THAT(rows(), IsEmpty());
}

// What it tells.

TEST_F(SiteTree, NamesEachDirectoryInOutputAndLog) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}) + directory(1, "/ROOT/bin") +
       virtualDir(1, "/ROOT/images", {{"Path", "y"}}));
  map("/ROOT", "D:\\r");
  map("/ROOT/images", "D:\\i");
  walk();
  EXPECT_THAT(output, ElementsAre("Exporting virtual directory /ROOT", "Exporting directory /ROOT/bin",
                                  "Exporting virtual directory /ROOT/images"));
  EXPECT_EQ(frmMain.lstOutput.text(), "Exporting virtual directory /ROOT/images");
  EXPECT_THAT(logBehind("Done"),
              ElementsAre("Exporting virtual directory /ROOT", "Searching for path for /ROOT",
                          "2 directories to look through", "Exporting directory /ROOT/bin",
                          "Exporting virtual directory /ROOT/images", "Searching for path for /ROOT/images",
                          "2 directories to look through"));
}

TEST_F(SiteTree, BringsTheLastLineIntoViewBehindANode) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  map("/ROOT", "D:\\r");
  std::vector<std::string> shown;
  frmMain.lstOutput.onRefresh = [&] { shown.push_back(frmMain.lstOutput.text()); };
  walk();
  EXPECT_THAT(shown, ElementsAre("Exporting virtual directory /ROOT"));
}

class SiteTreeInDebug : public SiteTree {};

TEST_F(SiteTreeInDebug, TellsEachTrialOfTheFirstSearchUpToTheHit) {
  openDebug(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}, {"AppIsolated", "2"}}));
  map("/other", "D:\\o");
  map("/ROOT", "D:\\r");
  map("/third", "D:\\t");
  walk();
  EXPECT_THAT(logBehind("Done"),
              ElementsAre("Exporting virtual directory /ROOT", "Searching for path for /ROOT",
                          "3 directories to look through", "Trying /other = /ROOT", "False",
                          "Trying /ROOT = /ROOT", "True", "New value D:\\r", inserts().front()));
}

TEST_F(SiteTreeInDebug, TellsOfTheSecondSearchAndClaimsSuccess) {
  openDebug(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  map("other", "D:\\o");
  map("ROOT", "D:\\r");
  walk();
  EXPECT_THAT(
      logBehind("Done"),
      ElementsAre("Exporting virtual directory /ROOT", "App Path not set -  Could be /ROOT",
                  "Searching for path for /ROOT", "2 directories to look through", "Trying other = /ROOT",
                  "False", "Trying ROOT = /ROOT", "False", "Could not find a directory /ROOT",
                  "Trying again...", "Trying /other = /ROOT", "False", "Trying /ROOT = /ROOT", "True",
                  "New value D:\\r", inserts().front(), "Success"));
  EXPECT_THAT(rows(), IsEmpty()) << "the database takes no nine values for ten columns";
  EXPECT_TRUE(Err.isSet());
}

TEST_F(SiteTreeInDebug, GoesOnWithTheSecondSearchBehindAHit) {
  openDebug(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  map("ROOT", "D:\\first");
  map("ROOT", "D:\\last");
  walk();
  EXPECT_EQ(timesLogged("Trying /ROOT = /ROOT"), 2);
  EXPECT_THAT(inserts().front(), ::testing::HasSubstr("'D:\\last'"));
}

TEST_F(SiteTreeInDebug, GivesUpWhereNoSearchFindsAnything) {
  openDebug(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  walk();
  EXPECT_THAT(logBehind("Done"),
              ElementsAre("Exporting virtual directory /ROOT", "App Path not set -  Could be /ROOT",
                          "Searching for path for /ROOT", "0 directories to look through",
                          "Could not find a directory /ROOT", "Trying again...", "Failed, giving up"));
}

TEST_F(SiteTreeInDebug, TellsTheRootOfAnotherApplication) {
  openDebug(virtualDir(1, "/ROOT", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT"}}) +
            directory(1, "/ROOT/bin"));
  map("/ROOT", "D:\\r");
  walk();
  EXPECT_TRUE(hasLogged("App Path not set - /LM/W3SVC/1/ROOT Could be /ROOT/bin"));
  EXPECT_THAT(logLines(), Contains(inserts().back())) << "the statement of a directory";
}

TEST_F(SiteTreeInDebug, IsSilentInOtherRuns) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  map("ROOT", "D:\\r");
  walk();
  EXPECT_THAT(logBehind("Done"),
              ElementsAre("Exporting virtual directory /ROOT", "Searching for path for /ROOT",
                          "1 directories to look through"));
}

// An entry whose new directory is rewritten to nothing counts as none.
TEST_F(SiteTree, LosesAVirtualDirectoryWhoseNewDirectoryIsEmpty) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}));
  map("/ROOT", "   ");
  walk();
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_THAT(inserts(), IsEmpty());
}

// Failures.

class SiteTreeWithFailures : public SiteTree {};

TEST_F(SiteTreeWithFailures, LosesARowThatIsRefusedWithoutAWord) {
  open(virtualDir(1, "/ROOT", {{"Path", "x"}}) + directory(1, "/ROOT/bin"));
  map("/ROOT", "D:\\r");
  databases.failOn("Execute", "'/ROOT', 'ROOT'", error_number::kUnspecified);
  walk();
  databases.rule = nullptr;
  EXPECT_THAT(locations(), ElementsAre("/ROOT/bin"));
  EXPECT_EQ(Err.number, error_number::kUnspecified);
  EXPECT_THAT(logStartingWith("Error"), IsEmpty());
}

TEST_F(SiteTreeWithFailures, TakesANodeWithoutAReadableClassForAVirtualDirectory) {
  open(directory(1, "/a") + directory(1, "/b"));
  map("/b", "D:\\b");
  metabase->failOn("Class", "/b", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(output, ElementsAre("Exporting directory /a", "Exporting virtual directory /b"));
}

TEST_F(SiteTreeWithFailures, RunsTheFormerStatementAgainWhereOneCantBeBuilt) {
  open(directory(1, "/a") + directory(1, "/b"));
  map("/b", "D:\\b");
  metabase->failOn("Class", "/b", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(locations(), ElementsAre("/a", "/a")) << "its class is part of the statement of /b";
}

TEST_F(SiteTreeWithFailures, GoesOnWithTheNextNodeWhereANameCantBeRead) {
  open(directory(1, "/a") + directory(1, "/b") + directory(1, "/c"));
  metabase->failOn("Name", "/b", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(output, ElementsAre("Exporting directory /a", "Exporting directory /c"));
  EXPECT_THAT(locations(), ElementsAre("/a", "/a", "/c"))
      << "the statement of /b can't be built, and that of /a runs again";
}

TEST_F(SiteTreeWithFailures, GoesOnWithTheNextNodeWhereChildrenCantBeListed) {
  open(directory(1, "/a") + directory(1, "/a/lost") + directory(1, "/b"));
  metabase->failOn("enumerate", "/a", "", error_number::kAccessDenied);
  walk();
  EXPECT_THAT(locations(), ElementsAre("/a", "/b"));
  EXPECT_EQ(Err.number, error_number::kAccessDenied);
}

}  // namespace
}  // namespace trelvin::test
