// The rows of a stored site: the nodes that they open and the properties that they write.
#include "transfer/site_rebuild.h"

#include <algorithm>
#include <random>

#include "core/err.h"
#include "core/run_state.h"
#include "database_to_server_fixture.h"
#include "fakes/some_cases.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

std::string failure(std::int32_t number) {
  return std::to_string(number) + describeError(number);
}

class SiteRebuildTest : public DatabaseToServer {
 protected:
  // Rebuilds one site of those rows as site 1 of the target; rows of its own node and its root come before
  // them.
  void rebuild(const std::vector<StoredRow>& rows) {
    store(rows);
    openStored();
    exportSites({0});
  }
  void store(const std::vector<StoredRow>& rows) {
    std::vector<StoredRow> all{ofSite("ServerComment", "Shop"), ofVirtualDirectory("/ROOT", "C:\\shop")};
    all.insert(all.end(), rows.begin(), rows.end());
    storeSite("Shop", all);
  }
  // Lets Path rows through, which are excluded unless the list says otherwise.
  static void includePath() {
    for (std::int32_t i = 0; i < frmMain.lstExclude.listCount(); ++i) {
      if (frmMain.lstExclude.list(i) == "Path") frmMain.lstExclude.removeItem(i);
    }
  }
  // Takes the directories out of the mapping, as if the user had mapped none.
  void forgetMapping() const { executeOn("Trelvin.mdb", "DELETE FROM tmpSettings WHERE Folder IS NOT NULL"); }
  [[nodiscard]] static std::string root(const std::string& property) { return "/W3SVC/1/ROOT" + property; }
  // Lines between the root's creation and the bindings.
  [[nodiscard]] std::vector<std::string> linesOfNodes() const {
    std::vector<std::string> lines = logBehind("Creating IIsWebVirtualDir, ROOT");
    lines.erase(std::find(lines.begin(), lines.end(), "Setting New IP Addresses..."), lines.end());
    return lines;
  }
};

// Nodes.

TEST_F(SiteRebuildTest, CreatesADirectoryBelowItsParent) {
  rebuild({ofDirectory("/ROOT/images", "")});
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebDirectory");
  EXPECT_THAT(linesOfNodes(), ElementsAre("Creating directory /ROOT/images",
                                          "Creating dir IIsWebDirectory, images", "Calling GetDir ", ""));
  EXPECT_TRUE(hasOutput("Creating directory /ROOT/images"));
}

TEST_F(SiteRebuildTest, TellsThatAPlainDirectoryHasNoPathOfItsOwn) {
  rebuild({ofDirectory("/ROOT/images", "D:\\images")});
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebDirectory");
  EXPECT_EQ(logBehind("Calling GetDir ").front(), "D:\\images");
  ASSERT_THAT(failureLines(), SizeIs(1));
  EXPECT_THAT(failureLines()[0],
              StartsWith("Error setting path for directory /ROOT/imagesError -2147463162"));
}

TEST_F(SiteRebuildTest, CreatesAVirtualDirectoryBelowItsParent) {
  rebuild({ofVirtualDirectory("/ROOT/images", "D:\\images")});
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebVirtualDir");
  EXPECT_THAT(linesOfNodes(),
              ElementsAre("Creating virtual directory /ROOT/images", "ExpObj = IIS://NEW1/W3SVC/1/ROOT",
                          "Creating IIsWebVirtualDir, images"));
  EXPECT_TRUE(hasOutput("Creating virtual directory /ROOT/images"));
}

TEST_F(SiteRebuildTest, ComparesClassesWithoutRegardToCase) {
  StoredRow row = ofDirectory("/ROOT/images", "D:\\images");
  row.nodeClass = "iiswebdirectory";
  rebuild({row});
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebDirectory");
}

TEST_F(SiteRebuildTest, CreatesParentsBeforeTheirChildrenHoweverTheyWereStored) {
  rebuild({ofVirtualDirectory("/ROOT/a/b/c", "D:\\c"), ofVirtualDirectory("/ROOT/a/b", "D:\\b"),
           ofVirtualDirectory("/ROOT/a", "D:\\a")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a/b/c", "Path"), "D:\\c");
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(SiteRebuildTest, OpensANodeByTheRowThatNamesIt) {
  // The row without a name, as bindings have it, was stored first and comes behind the one that has it.
  StoredRow late = ofNode("/ROOT/a", "DefaultDoc", 8, "'x.htm'");
  late.localPath = "Null";
  late.nodeClass = "";
  rebuild({late, ofVirtualDirectory("/ROOT/a", "D:\\a")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "Path"), "D:\\a");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "DefaultDoc"), "x.htm");
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(SiteRebuildTest, OpensEachNodeOnce) {
  rebuild({ofVirtualDirectory("/ROOT/a", "D:\\a"), ofNode("/ROOT/a", "DefaultDoc", 8, "'x.htm'"),
           ofNode("/ROOT/a", "AccessFlags", 3, "513")});
  EXPECT_EQ(timesLogged("Creating virtual directory /ROOT/a"), 1);
  EXPECT_EQ(timesLogged("Creating virtual directory /ROOT"), 1);
  EXPECT_THAT(callsOf({"Create"}),
              ElementsAre("Create /W3SVC 1", "Create /W3SVC/1 ROOT", "Create /W3SVC/1/ROOT a"));
}

TEST_F(SiteRebuildTest, FindsTheParentOfANameBeyondAscii) {
  rebuild({ofVirtualDirectory("/ROOT/Büro", "D:\\a"), ofVirtualDirectory("/ROOT/Büro/Größe", "D:\\b")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT/Büro/Größe", "Path"), "D:\\b");
  EXPECT_TRUE(hasLogged("ExpObj = IIS://NEW1/W3SVC/1/ROOT/Büro"));
}

TEST_F(SiteRebuildTest, DeletesANodeThatIsThereBeforeItCreatesIt) {
  // A second spelling of the same place opens the node a second time.
  rebuild({ofVirtualDirectory("/ROOT/a", "D:\\a"), ofNode("/ROOT/a", "DefaultDoc", 8, "'x.htm'"),
           ofVirtualDirectory("/ROOT/A", "D:\\second")});
  EXPECT_THAT(callsOf({"Delete"}), ElementsAre("Delete /W3SVC/1/ROOT A"));
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_THAT(childrenOf("/W3SVC/1/ROOT"), SizeIs(1));
}

TEST_F(SiteRebuildTest, CreatesNothingForAnyOtherClass) {
  StoredRow file = ofNode("/ROOT/x.asp", "AccessFlags", 3, "513");
  file.nodeClass = "IIsWebFile";
  rebuild({file});
  EXPECT_FALSE(exists("/W3SVC/1/ROOT/x.asp"));
  std::string failure = failureOfBind("IIS://NEW1/W3SVC/1/ROOT/x.asp");
  failure.erase(failure.find(' '), 1);
  EXPECT_THAT(linesOfNodes(), ElementsAre("Error transfering Prop AccessFlagsError " + failure +
                                          "IIS://NEW1/W3SVC/1/ROOT/x.aspAccessFlags"));
}

TEST_F(SiteRebuildTest, WritesTheRowOfAMissingNodeToTheNodeBefore) {
  StoredRow file = ofNode("/ROOT/x.asp", "DefaultDoc", 8, "'lost.htm'");
  file.nodeClass = "IIsWebFile";
  rebuild({ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"), file});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "lost.htm");
  EXPECT_THAT(logStartingWith("Error transfering Prop DefaultDoc"), SizeIs(1));
}

TEST_F(SiteRebuildTest, LeavesFiltersAndCertificateMappersOut) {
  StoredRow filters = ofNode("/Filters", "FilterLoadOrder", 8, "'a'");
  StoredRow filter = ofNode("/Filters/a", "FilterPath", 8, "'a'");
  StoredRow mapper = ofNode("/IIsCertMapper", "KeyType", 8, "'a'");
  filters.nodeClass = "IIsFilters";
  filter.nodeClass = "IIsFilter";
  mapper.nodeClass = "IIsCertMapper";
  store({filters, filter, mapper});
  openStored();
  run.bSkipFilters = false;
  exportSites({0});
  EXPECT_THAT(linesOfNodes(), IsEmpty());
  EXPECT_THAT(childrenOf("/W3SVC/1"), ElementsAre("ROOT"));
}

TEST_F(SiteRebuildTest, TellsAParentThatIsMissing) {
  rebuild({ofVirtualDirectory("/ROOT/gone/a", "D:\\a"), ofDirectory("/ROOT/lost/b", "D:\\b")});
  EXPECT_TRUE(hasLogged("Error getting expobj"));
  EXPECT_FALSE(exists("/W3SVC/1/ROOT/gone"));
  EXPECT_FALSE(exists("/W3SVC/1/ROOT/lost"));
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(SiteRebuildTest, CreatesBelowTheFormerParentWhenTheOwnOneIsMissing) {
  rebuild({ofVirtualDirectory("/ROOT/a", "D:\\a"), ofVirtualDirectory("/ROOT/gone/b", "D:\\b")});
  EXPECT_TRUE(exists("/W3SVC/1/ROOT/b")) << "a bind that fails leaves the handle on the node before";
}

TEST_F(SiteRebuildTest, TellsADirectoryThatCantBeCreated) {
  store({ofDirectory("/ROOT/a", "D:\\a"), ofVirtualDirectory("/ROOT/b", "D:\\b")});
  openStored();
  metabase->failOn("SetInfo", "/ROOT/a", "", error_number::kAccessDenied);
  metabase->failOn("SetInfo", "/ROOT/b", "", error_number::kAccessDenied);
  exportSites({0});
  const std::string denied =
      std::to_string(error_number::kAccessDenied) + " " + describeError(error_number::kAccessDenied);
  EXPECT_TRUE(hasLogged("Error creating directory " + denied));
  EXPECT_TRUE(hasLogged("Error creating vdir " + denied));
}

// Paths.

TEST_F(SiteRebuildTest, TakesTheNewDirectoryFromTheMappingAndRewritesIt) {
  store({ofVirtualDirectory("/ROOT/a", "D:\\a"), ofDirectory("/ROOT/b", "D:\\b")});
  openStored();
  map("NewPlace", "E:");
  select({0});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Directory = 'newplace\\x' WHERE Folder LIKE '/ROOT/%'");
  press();
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "Path"), "E:\\x");
  EXPECT_TRUE(hasLogged("newplace\\x")) << "the directory's line shows it as it is in the mapping";
}

TEST_F(SiteRebuildTest, KeepsThePathOfTheRowsWithoutANewDirectory) {
  store({ofVirtualDirectory("/ROOT/a", "D:\\a")});
  openStored();
  includePath();
  map("D:", "E:");
  select({0});
  forgetMapping();
  press();
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "Path"), "E:\\a");
}

TEST_F(SiteRebuildTest, SetsNoPathWithoutANewDirectoryWhenPathIsExcluded) {
  store({ofDirectory("/ROOT/a", "D:\\a")});
  openStored();
  select({0});
  forgetMapping();
  press();
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "Path"), kUnset);
  EXPECT_THAT(callsOf({"Put"}), Not(Contains("Put /W3SVC/1/ROOT/a Path")));
  EXPECT_EQ(logBehind("Calling GetDir ").front(), "");
}

TEST_F(SiteRebuildTest, LooksTheDirectoryUpThreeTimesAndTheVirtualDirectoryTwice) {
  store(
      {ofVirtualDirectory("/ROOT/a", "D:\\a"), ofDirectory("/ROOT/b", "D:\\b"), ofDirectory("/ROOT/c", "")});
  openStoredForDebug();
  exportSites({0});
  EXPECT_EQ(timesLogged("GetNewDir /ROOT/a"), 2);
  EXPECT_EQ(timesLogged("GetNewDir /ROOT/b"), 3);
  EXPECT_EQ(timesLogged("GetNewDir /ROOT/c"), 2) << "without a path to set there is no third time";
}

TEST_F(SiteRebuildTest, TellsAPathThatCantBeSet) {
  store({ofVirtualDirectory("/ROOT/a", "D:\\a"), ofDirectory("/ROOT/b", "D:\\b")});
  openStored();
  metabase->failOn("Put", "/ROOT/a", "Path", error_number::kAccessDenied);
  metabase->failOn("Put", "/ROOT/b", "Path", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_TRUE(hasLogged("Error setting path for virtual directory /ROOT/aError " +
                        failure(error_number::kAccessDenied) + " - Object"));
  EXPECT_TRUE(
      hasLogged("Error setting path for directory /ROOT/bError " + failure(error_number::kAccessDenied)));
}

TEST_F(SiteRebuildTest, SaysThatThereIsNoObjectToSetAPathOn) {
  storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\shop")});
  openStored();
  metabase->failOn("Create", "/W3SVC/1", "ROOT", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_TRUE(hasLogged("Error setting path for virtual directory /ROOTError " +
                        failure(error_number::kObjectNotSet) + " - Nothing"));
}

// Applications; the calls of each pair of versions have a test of their own.

TEST_F(SiteRebuildTest, MakesAnApplicationOfANodeWithAnApplicationPath) {
  rebuild({withApplication(ofVirtualDirectory("/ROOT/a", "D:\\a"), "2", "'Pool'"),
           ofVirtualDirectory("/ROOT/b", "D:\\b")});
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3"}),
              ElementsAre("AppCreate3 /W3SVC/1/ROOT/a 2 Pool"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "AppRoot"), "/LM/W3SVC/1/ROOT/a");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/b", "AppRoot"), kUnset);
}

TEST_F(SiteRebuildTest, MakesAPlainDirectoryAnApplicationInProcessAndInTheInheritedPool) {
  rebuild({withApplication(ofDirectory("/ROOT/a", "D:\\a"), "Null", "Null")});
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3"}),
              ElementsAre("AppCreate3 /W3SVC/1/ROOT/a 0 "));
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "AppRoot"), "/LM/W3SVC/1/ROOT/a");
}

TEST_F(SiteRebuildTest, TellsAnApplicationThatCantBeMade) {
  store({withApplication(ofVirtualDirectory("/ROOT/a", "D:\\a"), "0"),
         withApplication(ofDirectory("/ROOT/b", "D:\\b"), "0")});
  openStored();
  metabase->failOn("AppCreate3", "/ROOT/a", "", error_number::kAccessDenied);
  metabase->failOn("AppCreate3", "/ROOT/b", "", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_TRUE(hasLogged("Error creating Application for virtual directory /ROOT/aError " +
                        failure(error_number::kAccessDenied)));
  EXPECT_TRUE(hasLogged("Error creating Application for directory /ROOT/bError " +
                        failure(error_number::kAccessDenied)));
}

TEST_F(SiteRebuildTest, TellsAnIsolationThatIsNoNumber) {
  rebuild({withApplication(ofVirtualDirectory("/ROOT/a", "D:\\a"), "'pooled'")});
  EXPECT_TRUE(hasLogged("Error creating Application for virtual directory /ROOT/aError 13Type mismatch"));
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3"}), IsEmpty());
}

// Properties.

TEST_F(SiteRebuildTest, WritesEachRowWithABindAPutAndACommitOfItsOwn) {
  store({ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"), ofNode("/ROOT", "AccessFlags", 3, "513")});
  openStored();
  metabase->calls.clear();
  exportSites({0});
  const std::vector<std::string> calls = callsOf({"GetObject", "Put", "SetInfo"});
  const auto first = std::find(calls.begin(), calls.end(), "Put /W3SVC/1/ROOT DefaultDoc");
  ASSERT_GT(calls.end() - first, 5);
  EXPECT_THAT(
      std::vector<std::string>(first - 1, first + 5),
      ElementsAre("GetObject /W3SVC/1/ROOT", "Put /W3SVC/1/ROOT DefaultDoc", "SetInfo /W3SVC/1/ROOT",
                  "GetObject /W3SVC/1/ROOT", "Put /W3SVC/1/ROOT AccessFlags", "SetInfo /W3SVC/1/ROOT"));
}

TEST_F(SiteRebuildTest, CreatesTheNodeOfAnExcludedRow) {
  store({ofNode("/ROOT/a", "DefaultDoc", 8, "'x.htm'")});
  openStored();
  frmMain.lstExclude.addItem("defaultdoc");
  exportSites({0});
  EXPECT_TRUE(exists("/W3SVC/1/ROOT/a"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "DefaultDoc"), kUnset);
}

TEST_F(SiteRebuildTest, NamesEachRowInADebugLogTheExcludedOnesToo) {
  store({ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'")});
  openStoredForDebug();
  exportSites({0});
  EXPECT_EQ(timesLogged("PropName = Path"), 1);
  EXPECT_EQ(timesLogged("PropName = DefaultDoc"), 1);
  EXPECT_EQ(logStartingWith("PropName = ").size(), 3U);
}

TEST_F(SiteRebuildTest, TellsAPropertyThatCantBeWrittenAndGoesOn) {
  store({ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"), ofNode("/ROOT", "AccessFlags", 3, "513")});
  openStored();
  metabase->failOn("Put", "/ROOT", "DefaultDoc", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_THAT(failureLines(),
              ElementsAre("Error transfering Prop DefaultDocError " + failure(error_number::kAccessDenied) +
                          "IIS://NEW1/W3SVC/1/ROOTDefaultDoc"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AccessFlags"), "513");
}

TEST_F(SiteRebuildTest, RewritesTextsAndItemsAndNothingElse) {
  store({ofNode("/ROOT", "DefaultDoc", 8, "'old1.htm'"), ofNode("/ROOT", "AccessFlags", 3, "513"),
         ofNode("/ROOT", "HttpCustomHeaders", 8204, list({"X: old1", "Y: 1"})),
         ofNode("/ROOT", "DontLog", 11, "1")});
  openStored();
  map("1", "2");
  map("OLD", "new");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "new2.htm");
  EXPECT_THAT(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), StartsWith("X: new2|Y: 2|"));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AccessFlags"), "513");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DontLog"), "True");
}

TEST_F(SiteRebuildTest, ReadsATruthValueOfNoughtAsFalseAndAnyOtherAsTrue) {
  rebuild({ofNode("/ROOT", "DontLog", 11, "0"), ofNode("/ROOT", "EnableDirBrowsing", 11, "-1"),
           ofNode("/ROOT", "EnableDefaultDoc", 11, "Null")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DontLog"), "False");
  EXPECT_THAT(callsOf({"Put"}), Contains("Put /W3SVC/1/ROOT EnableDirBrowsing"));
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(SiteRebuildTest, LosesTheItemBehindTheLastLineEnd) {
  rebuild({ofNode("/ROOT", "HttpCustomHeaders", 8204, list({"X: 1", "Y: 2"}) + " || 'Z: 3'")});
  EXPECT_THAT(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), StartsWith("X: 1|Y: 2|Trelvin"));
}

TEST_F(SiteRebuildTest, WritesAnEmptyListAsOneEmptyItem) {
  for (const char* content : {"''", "'no line end'", "Null"}) {
    storeSite("Shop", {ofSite("ServerComment", "Shop"), ofVirtualDirectory("/ROOT", "C:\\shop"),
                       ofNode("/ROOT", "HttpCustomHeaders", 8204, content)});
  }
  openStored();
  exportSites({0, 1, 2});
  for (const char* site : {"/W3SVC/1/ROOT", "/W3SVC/2/ROOT", "/W3SVC/3/ROOT"})
    EXPECT_THAT(stored(site, "HttpCustomHeaders"), StartsWith("Trelvin"));
  const std::vector<std::string> puts = callsOf({"Put"});
  EXPECT_EQ(std::count(puts.begin(), puts.end(), "Put /W3SVC/1/ROOT HttpCustomHeaders"), 2)
      << "the row's and the mark's";
  EXPECT_THAT(logStartingWith("Error transfering"), IsEmpty());
}

TEST_F(SiteRebuildTest, CarriesALongList) {
  std::vector<std::string> items;
  for (int i = 0; i < 5000; ++i) items.push_back("X-" + std::to_string(i) + ": " + std::string(200, 'x'));
  std::string content;
  for (const std::string& item : items) content += item + "\r\n";
  rebuild({ofNode("/ROOT", "HttpCustomHeaders", 8204, text(content))});
  const std::string written = stored("/W3SVC/1/ROOT", "HttpCustomHeaders");
  EXPECT_GT(written.size(), 1000000U);
  EXPECT_THAT(written, StartsWith(items.front() + "|" + items[1]));
  EXPECT_THAT(written, HasSubstr(items.back() + "|Trelvin"));
}

TEST_F(SiteRebuildTest, WritesTheEmptyTextForATypeThatCantBeStored) {
  rebuild({ofNode("/ROOT", "DefaultDoc", 5, "'kept out'"), ofNode("/ROOT", "AccessFlags", 9, "'513'")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "");
  EXPECT_THAT(logStartingWith("Error transfering Prop AccessFlagsError "), SizeIs(1));
}

// Progress and events.

TEST_F(SiteRebuildTest, GivesWayBehindEveryFiftyFirstRow) {
  std::vector<StoredRow> rows;
  for (int i = 2; i < 110; ++i)
    rows.push_back(ofNode("/ROOT", "DefaultDoc", 8, "'" + std::to_string(i) + "'"));
  store(rows);
  openStored();
  std::vector<double> positions;
  events->onYield = [&](int) {
    if (hasLogged("Transferring Properties...")) positions.push_back(frmMain.ProgressBar1.value());
  };
  exportSites({0});
  // The last one is the yield behind the site.
  ASSERT_THAT(positions, SizeIs(3));
  EXPECT_EQ(positions[0], 51);
  EXPECT_EQ(positions[1], 102);
}

TEST_F(SiteRebuildTest, CountsTheRowsBetweenYieldsOnFromSiteToSite) {
  std::vector<StoredRow> rows;
  for (int i = 0; i < 30; ++i)
    rows.push_back(ofNode("/ROOT", "DefaultDoc", 8, "'" + std::to_string(i) + "'"));
  storeSite("One", rows);
  storeSite("Two", rows);
  openStored();
  std::vector<std::pair<int, double>> yields;
  events->onYield = [&](int) {
    yields.emplace_back(timesLogged("Transferring Properties..."), frmMain.ProgressBar1.value());
  };
  exportSites({0, 1});
  EXPECT_THAT(yields, Contains(std::pair(2, 21.0))) << "30 rows of the first site and 21 of the second";
}

TEST_F(SiteRebuildTest, LeavesBetweenTwoRowsOnAnAbort) {
  std::vector<StoredRow> rows;
  for (int i = 2; i < 80; ++i)
    rows.push_back(ofNode("/ROOT", "DefaultDoc", 8, "'" + std::to_string(i) + "'"));
  store(rows);
  openStored();
  select({0});
  atYieldBehind("Transferring Properties...", [] { frmMain.cmdExportServer.onClick(); });
  press();
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "50");
  EXPECT_FALSE(hasLogged("Setting New IP Addresses..."));
  EXPECT_THAT(shownOutput(), Not(Contains("Done!")));
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_TRUE(frmMain.rsData->isOpen());
}

// Rows that somebody has edited.

TEST_F(SiteRebuildTest, GoesOnBehindRowsThatMakeNoSense) {
  StoredRow noName = ofNode("/ROOT", "", 8, "'x'");
  StoredRow unknownClass = ofNode("/ROOT/u", "DefaultDoc", 8, "'u.htm'");
  unknownClass.nodeClass = "IIsNothing";
  StoredRow unknownProperty = ofNode("/ROOT", "NoSuchProperty", 8, "'x'");
  StoredRow wrongColumn = ofNode("/ROOT", "AccessFlags", 8, "'many'");
  StoredRow textAsNumber = ofNode("/ROOT", "MaxRequestEntityAllowed", 3, "'many'");
  StoredRow emptyColumn = ofNode("/ROOT", "CGITimeout", 3, "Null");
  StoredRow textAsTruth = ofNode("/ROOT", "DontLog", 11, "'perhaps'");
  rebuild({noName, unknownClass, unknownProperty, wrongColumn, textAsNumber, emptyColumn, textAsTruth,
           ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"), ofVirtualDirectory("/ROOT/z", "D:\\z")});
  EXPECT_THAT(logStartingWith("Error transfering Prop "), SizeIs(7));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AccessFlags"), kUnset);
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DontLog"), kUnset);
  EXPECT_EQ(stored("/W3SVC/1/ROOT/z", "Path"), "D:\\z");
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(SiteRebuildTest, TakesTheLaterOfTwoRowsThatContradict) {
  rebuild(
      {ofNode("/ROOT", "DefaultDoc", 8, "'first.htm'"), ofNode("/ROOT", "DefaultDoc", 8, "'second.htm'")});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "second.htm");
}

TEST_F(SiteRebuildTest, SurvivesLocationsWithOddSlashes) {
  for (const char* location :
       {"ROOT/a", "/ROOT//a", "/ROOT/a/", "//", "/", "x", "\\ROOT\\a", "/ROOT/a/../b"}) {
    StoredRow row = ofVirtualDirectory("/ROOT/a", "D:\\a");
    row.location = location;
    storeSite("Shop", {ofSite("ServerComment", "Shop"), ofVirtualDirectory("/ROOT", "C:\\shop"), row,
                       ofNode("/ROOT/z", "DefaultDoc", 8, "'z.htm'")});
  }
  openStored(webService(plainSite(90, "Kept")));
  exportSites({0, 1, 2, 3, 4, 5, 6, 7});
  EXPECT_EQ(timesLogged("Completed"), 8);
  EXPECT_EQ(stored("/W3SVC/90", "ServerComment"), "Kept");
  for (int site = 91; site < 99; ++site)
    EXPECT_EQ(stored("/W3SVC/" + std::to_string(site) + "/ROOT/z", "DefaultDoc"), "z.htm") << site;
}

class RowsDrawnByLot : public SiteRebuildTest, public ::testing::WithParamInterface<unsigned> {
 protected:
  RowsDrawnByLot() : random_(GetParam()) {}
  StoredRow row() {
    StoredRow row;
    row.location = oneOf({"", "/ROOT", "/ROOT/a", "/root/A", "/ROOT/a/b", "/ROOT//c", "/ROOT/a/", "/", "//",
                          "x", "/..", "/ROOT/\xc3\xa4", "/ROOT/it's", "/Filters", "/ROOT/\r\n"});
    row.name = oneOf({"Path", "DefaultDoc", "AccessFlags", "ScriptMaps", "HttpCustomHeaders", "DontLog",
                      "ServerBindings", "NoSuchProperty", "", "it's", "AppRoot", "KeyType", "ServerState"});
    row.nodeClass = oneOf({"", "IIsWebVirtualDir", "IIsWebDirectory", "IIsWebServer", "IIsFtpVirtualDir",
                           "IIsWebFile", "iiswebdirectory", "nonsense"});
    row.type = std::stoi(oneOf({"3", "8", "11", "8204", "0", "-1", "9", "2147483647"}));
    row.columnType = std::stoi(oneOf({"0", "3", "8", "11", "8204"}));
    row.value = oneOf({"Null", "''", "'x.htm'", "'  '", "-1", "4294967296", "1.5",
                       "'a' || char(13, 10) || 'b'", "char(13, 10)", "x'00ff'", "'it''s'"});
    row.localPath = oneOf({"Null", "''", "'ROOT'", "'a'", "'7'", "'a name that is longer than its place'"});
    row.appPath = oneOf({"Null", "''", "'/ROOT/a'"});
    row.inProcess = oneOf({"Null", "0", "2", "'True'", "'many'", "99999999999"});
    row.pool = oneOf({"Null", "''", "'Pool'"});
    return row;
  }

 private:
  std::string oneOf(const std::vector<std::string>& choices) { return choices[random_() % choices.size()]; }
  std::mt19937 random_;
};

TEST_P(RowsDrawnByLot, SpoilNeitherTheRunNorTheSitesBesideThem) {
  std::vector<StoredRow> rows;
  for (int i = 0; i < 60; ++i) rows.push_back(row());
  storeSite("Spoilt", rows);
  storePlainSite("Wiki", "9");
  openStored(webService(plainSite(90, "Kept")));
  exportSites({0, 1});
  EXPECT_EQ(timesLogged("Completed"), 2);
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_TRUE(exists("/W3SVC/91"));
  EXPECT_EQ(stored("/W3SVC/90", "ServerComment"), "Kept");
  EXPECT_EQ(stored("/W3SVC/92", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/92/ROOT", "Path"), "C:\\Wiki");
  for (const std::string& line : logBehind("Creating Web Site W3SVC92"))
    EXPECT_THAT(line, Not(StartsWith("Error"))) << "a fault of the site before";
}

INSTANTIATE_TEST_SUITE_P(Seeds, RowsDrawnByLot, ::testing::ValuesIn(someOf<unsigned>({1, 2, 3, 4})));

TEST_F(SiteRebuildTest, KeepsTheParentsPathWhenANameIsLongerThanItsPlace) {
  StoredRow row = ofVirtualDirectory("/a", "D:\\a");
  row.localPath = "'much too long'";
  rebuild({row});
  EXPECT_EQ(shownOutput().back(), "Done!");
  EXPECT_TRUE(hasLogged("Creating virtual directory /a"));
  EXPECT_THAT(childrenOf("/W3SVC"), ElementsAre("1"));
}

TEST_F(SiteRebuildTest, RefusesANodeWithoutAName) {
  StoredRow row = ofVirtualDirectory("/ROOT/a", "D:\\a");
  row.localPath = "Null";
  rebuild({row});
  EXPECT_THAT(logStartingWith("Error creating vdir "), SizeIs(1));
  EXPECT_EQ(shownOutput().back(), "Done!");
}

}  // namespace
}  // namespace trelvin::test
