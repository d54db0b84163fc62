// The list of a site's properties, and their values, on their way from server to server.
#include <algorithm>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "server_to_server_fixture.h"
#include "transfer/export_to_server.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr std::int32_t kDenied = error_number::kAccessDenied;

std::string denied() {
  return "-2147024891 " + describeError(kDenied);
}

class PropertiesToServer : public ServerToServer {
 protected:
  // A site 7 with a root and those nodes besides.
  std::string site(const Properties& ofSite = {}, const Properties& ofRoot = {},
                   const std::string& nodes = {}) {
    Properties root{{"Path", "C:\\shop"}};
    root.insert(root.end(), ofRoot.begin(), ofRoot.end());
    return webService(webSite(7, "Shop", ofSite) + virtualDir(7, "/ROOT", root) + nodes);
  }
  [[nodiscard]] std::vector<std::string> names() const { return entriesOf(frmMain.lstPropsToExport); }
  // Every line of the run that begins like this.
  [[nodiscard]] std::vector<std::string> runLines(const std::string& beginning) const {
    std::vector<std::string> found;
    for (const std::string& line : runLog()) {
      if (line.starts_with(beginning)) found.push_back(line);
    }
    return found;
  }
};

// The list.

TEST_F(PropertiesToServer, ListsTheNamesOfTheTreeAndOfTheSiteOnceEach) {
  open(site({}, {}, below(7, "IIsFilters", "/Filters")));
  frmMain.lstExclude.clear();
  frmMain.lstExclude.addItem("path");
  exportSites({0});
  EXPECT_THAT(names(), Contains("ServerBindings"));
  EXPECT_THAT(names(), Contains("AppPoolId"));
  EXPECT_THAT(names(), Contains("FilterLoadOrder"));
  EXPECT_THAT(names(), Not(Contains("Path"))) << "excluded";
  const std::vector<std::string> list = names();
  EXPECT_EQ(std::adjacent_find(list.begin(), list.end()), list.end());
}

TEST_F(PropertiesToServer, BeginsTheListAnewForEachSite) {
  open(
      webService(plainSite(1, "Shop") + element("IIsFilters", "/LM/W3SVC/1/Filters") + plainSite(2, "Wiki")));
  exportSites({0, 1});
  EXPECT_THAT(names(), Not(Contains("FilterLoadOrder")));
  EXPECT_THAT(names(), Contains("ServerBindings"));
}

TEST_F(PropertiesToServer, LeavesOutWhatAnOlderTargetDoesNotKnow) {
  open(infoOf(6) + site({{"TraceUriPrefix", "x"}}), infoOf(5) + webService(""), 6, 5);
  exportSites({0});
  EXPECT_THAT(names(), Not(Contains("TraceUriPrefix")));
}

TEST_F(PropertiesToServer, ListsWhatOnlyIis6KnowsBetweenServersOfIis6) {
  open(infoOf(6) + site(), infoOf(6) + webService(""), 6, 6);
  frmMain.lstExclude.clear();
  exportSites({0});
  EXPECT_THAT(names(), Contains("TraceUriPrefix"));
}

TEST_F(PropertiesToServer, GoesOnWithTheNamesOfTheTreeWhenTheSchemaOfTheSiteCannotBeRead) {
  open(site({{"ServerSize", "2"}}, {{"DefaultDoc", "a.htm"}}));
  metabase->failOn("GetObject", "/schema/IIsWebServer", "", kDenied);
  exportSites({0});
  EXPECT_THAT(names(), Not(Contains("ServerSize")));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "a.htm");
  EXPECT_THAT(failureLines(), IsEmpty()) << "only a debug log tells it";
}

TEST_F(PropertiesToServer, DoesNothingWithAnEmptyList) {
  open(site());
  metabase->failOn("MandatoryProperties", "", "", kDenied);
  metabase->failOn("OptionalProperties", "", "", kDenied);
  exportSites({0});
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_THAT(callsOf({"GetDataPaths"}, "WEB1"), IsEmpty());
  EXPECT_TRUE(exists("/W3SVC/1/ROOT"));
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(PropertiesToServer, TellsASchemaThatItCannotNameInADebugLog) {
  openForDebug(site());
  metabase->failOn("Schema", "WEB1/W3SVC/7", "", kDenied);
  exportSites({0});
  EXPECT_EQ(runLines("Failed to"),
            (std::vector<std::string>{
                "Failed to set schema " + denied(), "Failed to create schema object" + failureOfBind(""),
                "Failed to retrieve mprops91 " + describeError(error_number::kObjectNotSet),
                "Failed to set OProps"}));
}

TEST_F(PropertiesToServer, TellsASchemaThatItCannotBindInADebugLog) {
  openForDebug(site());
  metabase->failOn("GetObject", "/schema/IIsWebServer", "", kDenied);
  exportSites({0});
  EXPECT_THAT(runLines("Failed to create schema object"),
              ElementsAre("Failed to create schema object" + denied()));
}

TEST_F(PropertiesToServer, TellsNamesThatItCannotReadInADebugLog) {
  openForDebug(site());
  metabase->failOn("MandatoryProperties", "/schema/IIsWebServer", "", kDenied);
  metabase->failOn("OptionalProperties", "/schema/IIsWebServer", "", kDenied);
  exportSites({0});
  EXPECT_THAT(runLines("Failed to"),
              ElementsAre("Failed to retrieve mprops" + denied(), "Failed to set OProps"));
}

TEST_F(PropertiesToServer, TellsWhatWentWrongWhileItAddedNames) {
  openForDebug(site());
  transferOnly({"ServerComment"});
  watchFiles().refuses = [](const std::string& bytes) {
    return bytes.find("Adding ServerComment") != bytes.npos;
  };
  exportSites({0});
  EXPECT_THAT(runLines("Error occured"),
              ElementsAre("Error occured during enumeration of OProps75 Path/File access error"));
}

TEST_F(PropertiesToServer, TellsWhatTheTreeLeftBehindInADebugLog) {
  openForDebug(site());
  metabase->failOn("enumerate", "WEB1/W3SVC/7", "", kDenied);
  exportSites({0});
  EXPECT_THAT(runLines("Failed to"), ElementsAre("Failed to remove duplicates " + denied()));
}

TEST_F(PropertiesToServer, TellsWhatWentWrongAheadOfTheLastRemovalOfDuplicates) {
  openForDebug(site());
  transferOnly({"ServerComment"});
  watchFiles().refuses = [](const std::string& bytes) { return bytes.find("before remdupes") != bytes.npos; };
  exportSites({0});
  EXPECT_THAT(runLines("Error occured"),
              ElementsAre("Error occured while removing duplicates 75 Path/File access error"));
}

TEST_F(PropertiesToServer, KeepsItsDebugLinesInOrder) {
  openForDebug(site({}, {{"DefaultDoc", "a.htm"}}));
  transferOnly({"ServerComment", "DefaultDoc"});
  exportSites({0});
  std::vector<std::string> lines = runLog();
  lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "Setting up metabase structure..."));
  std::erase_if(lines, [](const std::string& line) { return line.starts_with("GetNewDir"); });
  EXPECT_THAT(lines,
              ElementsAre("Setting up metabase structure...", "Creating virtual directory 1/ROOT",
                          "New value C:\\shop",  // of the tree
                          "Adding ServerComment to the list", "Adding DefaultDoc to the list",
                          "2 properties to export before remdupes", "Transferring properties...",
                          "1 properties to export",  // one less than there are
                          "Propname = DefaultDoc", "Reading IIS://WEB1/W3SVC/7/ROOT", "New value a.htm",
                          "Propname = ServerComment", "Reading IIS://WEB1/W3SVC/7", "New value Shop",
                          "Transferring IP addresses...", "Transferring SSL IP addresses...", "Completed"));
}

TEST_F(PropertiesToServer, CountsProgressInProperties) {
  open(site({}, {{"DefaultDoc", "a.htm"}}));
  transferOnly({"DefaultDoc", "ServerComment", "ServerSize", "AppFriendlyName"});
  std::vector<double> seen;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "GetDataPaths") {
      seen.push_back(frmMain.ProgressBar1.value());
      EXPECT_EQ(frmMain.ProgressBar1.max(), 3) << "one less than there are";
    }
    return std::nullopt;
  };
  exportSites({0});
  EXPECT_THAT(seen, ElementsAre(0, 0, 1, 2)) << "set behind each property";
}

TEST_F(PropertiesToServer, GivesWayToEventsOnceAheadOfTheProperties) {
  open(site({}, {{"DefaultDoc", "a.htm"}}));
  int before = -1;
  int behind = -1;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Create" && before < 0) before = events->yields;
    if (call.operation == "Put" && call.argument == "HttpCustomHeaders") behind = events->yields;
    return std::nullopt;
  };
  exportSites({0});
  EXPECT_EQ(behind, before + 1);
}

TEST_F(PropertiesToServer, PassesOverEntriesOfBlanks) {
  openForDebug(site());
  transferOnly({"ServerComment"});
  frmMain.lstPropsToExport.onRefresh = [added = false]() mutable {
    if (added) return;
    added = true;
    frmMain.lstPropsToExport.addItem("   ");
  };
  exportSites({0});
  frmMain.lstPropsToExport.onRefresh = nullptr;
  EXPECT_THAT(names(), Contains("   "));
  EXPECT_THAT(runLines("Propname"), ElementsAre("Propname = ServerComment"));
}

// Which nodes.

TEST_F(PropertiesToServer, WritesAPropertyAtEachNodeThatHoldsIt) {
  open(site({{"DefaultDoc", "site.htm"}}, {{"DefaultDoc", "root.htm"}},
            directory(7, "/ROOT/a", {{"DefaultDoc", "a.htm"}}) +
                directory(7, "/ROOT/a/deep", {{"DefaultDoc", "d.htm"}}) + directory(7, "/ROOT/b")));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "DefaultDoc"), "site.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "root.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "DefaultDoc"), "a.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a/deep", "DefaultDoc"), "d.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/b", "DefaultDoc"), kUnset) << "what is inherited stays inherited";
}

TEST_F(PropertiesToServer, FindsANodeOfTheTargetByItsPathBelowTheSite) {
  openForDebug(
      site({{"DefaultDoc", "s"}}, {{"DefaultDoc", "r"}}, directory(7, "/ROOT/a", {{"DefaultDoc", "a"}})));
  transferOnly({"DefaultDoc"});
  metabase->calls.clear();
  exportSites({0});
  EXPECT_THAT(runLines("Reading "),
              ElementsAre("Reading IIS://WEB1/W3SVC/7", "Reading IIS://WEB1/W3SVC/7/ROOT",
                          "Reading IIS://WEB1/W3SVC/7/ROOT/a"));
  EXPECT_THAT(callsOf({"Put"}),
              testing::IsSupersetOf({"Put /W3SVC/1 DefaultDoc", "Put /W3SVC/1/ROOT DefaultDoc",
                                     "Put /W3SVC/1/ROOT/a DefaultDoc"}));
}

TEST_F(PropertiesToServer, BindsReadsWritesAndCommitsOncePerNode) {
  open(site({{"DefaultDoc", "s"}}, {{"HttpErrors", "404,*,FILE,C:\\x"}}));
  transferOnly({"DefaultDoc", "HttpErrors", "ServerSize"});
  exportSites({0});
  const auto countOf = [&](const char* operation, const char* server, const char* text) {
    const std::vector<std::string> calls = callsOf({operation}, server);
    return std::count(calls.begin(), calls.end(), text);
  };
  EXPECT_EQ(countOf("GetDataPaths", "WEB1", "GetDataPaths /W3SVC/7 DefaultDoc"), 1);
  EXPECT_EQ(countOf("Get", "WEB1", "Get /W3SVC/7 DefaultDoc"), 1);
  EXPECT_EQ(countOf("Get", "WEB1", "Get /W3SVC/7/ROOT HttpErrors"), 1);
  EXPECT_EQ(countOf("Put", "NEW1", "Put /W3SVC/1 DefaultDoc"), 1);
  EXPECT_EQ(countOf("Put", "NEW1", "Put /W3SVC/1/ROOT HttpErrors"), 1);
}

TEST_F(PropertiesToServer, SkipsFiltersUnlessAsked) {
  openForDebug(site({}, {},
                    below(7, "IIsFilters", "/Filters", {{"FilterLoadOrder", "f"}}) +
                        below(7, "IIsFilter", "/Filters/f", {{"FilterPath", "C:\\f.dll"}})));
  transferOnly({"FilterLoadOrder", "FilterPath", "ServerComment"});
  exportSites({0});
  EXPECT_EQ(std::ranges::count(runLog(), "Skipping IIsFilters"), 2);
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_THAT(callsOf({"Put"}), Not(Contains(HasSubstr("Filter"))));
}

TEST_F(PropertiesToServer, SkipsFiltersOfEveryCase) {
  openForDebug(site({}, {}, below(7, "IISFILTERS", "/Filters", {{"FilterLoadOrder", "f"}})));
  transferOnly({"FilterLoadOrder"});
  exportSites({0});
  EXPECT_EQ(std::ranges::count(runLog(), "Skipping IIsFilters"), 1);
}

TEST_F(PropertiesToServer, TellsOfFiltersThatHaveNoNodeOnTheTarget) {
  open(site({}, {}, below(7, "IIsFilters", "/Filters", {{"FilterLoadOrder", "f"}})));
  transferOnly({"DefaultDoc", "FilterLoadOrder"});
  run.bSkipFilters = false;
  exportSites({0});
  EXPECT_THAT(failureLines(), SizeIs(1));
  EXPECT_THAT(failureLines()[0], StartsWith("Error transfering Property FilterLoadOrderError "));
}

TEST_F(PropertiesToServer, PutsWhatHasNoNodeOnTheTargetOnTheNodeBefore) {
  // A server on which files have a default document, too.
  folder.write("network/WEB1/C$/WINDOWS/system32/inetsrv/MBSchema.xml",
               "<MetaData><DatabaseMeta><Collection InternalName=\"IIsWebFile\">"
               "<Property InheritsPropertiesFrom=\"IIsConfigObject:DefaultDoc\"/>"
               "</Collection></DatabaseMeta></MetaData>");
  open(site({}, {{"DefaultDoc", "root.htm"}},
            below(7, "IIsWebFile", "/ROOT/one.htm", {{"DefaultDoc", "file.htm"}})));
  transferOnly({"DefaultDoc"});
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "file.htm");
  EXPECT_THAT(failureLines(), ElementsAre("Error transfering Property DefaultDocError " +
                                          failureOfBind("IIS://NEW1/W3SVC/1/ROOT/one.htm") + " 80070003"));
}

TEST_F(PropertiesToServer, ReadsTheNodeBeforeWhenASourceNodeCannotBeBound) {
  open(site({{"DefaultDoc", "site.htm"}}, {{"DefaultDoc", "root.htm"}}));
  transferOnly({"DefaultDoc"});
  metabase->failOn("GetObject", "WEB1/W3SVC/7/ROOT", "", kDenied);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "site.htm");
  EXPECT_THAT(failureLines(),
              ElementsAre("Error transfering Property DefaultDocError " + denied() + " 80070005"));
}

// Values.

TEST_F(PropertiesToServer, RewritesTexts) {
  open(site({}, {{"AppFriendlyName", "Shop in WINNT"}}));
  map("winnt", "Windows");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AppFriendlyName"), "Shop in Windows");
}

TEST_F(PropertiesToServer, EmptiesATextOfBlanks) {
  open(site({}, {{"AppFriendlyName", "   "}}));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AppFriendlyName"), "");
}

TEST_F(PropertiesToServer, RewritesEachEntryOfAList) {
  const std::string errors = std::string("404,*,FILE,C:\\WINNT\\404.htm") + kNextEntry +
                             "500,*,URL,/winnt.asp" + kNextEntry + "403,*,FILE,D:\\x.htm";
  open(site({}, {{"HttpErrors", errors}}));
  map("winnt", "Windows");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpErrors"),
            "404,*,FILE,C:\\Windows\\404.htm|500,*,URL,/Windows.asp|403,*,FILE,D:\\x.htm");
}

TEST_F(PropertiesToServer, LeavesNumbersAndTruthsAsTheyAre) {
  open(site({{"ServerAutoStart", "FALSE"}, {"ConnectionTimeout", "120"}}, {{"AccessFlags", "513"}}));
  map("1", "9");
  map("False", "True");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "ServerAutoStart"), "False");
  EXPECT_EQ(stored("/W3SVC/1", "ConnectionTimeout"), "120");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AccessFlags"), "513");
}

TEST_F(PropertiesToServer, CarriesNamesBeyondAscii) {
  open(site({}, {{"AppFriendlyName", "Größe Лаборатория"}},
            virtualDir(7, "/ROOT/Größentabellen", {{"Path", "C:\\x"}})));
  map("größe", "Mass");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AppFriendlyName"), "Mass Лаборатория");
  EXPECT_TRUE(exists("/W3SVC/1/ROOT/Größentabellen"));
}

// Failures.

TEST_F(PropertiesToServer, LogsAPropertyThatFailedAndGoesOnWithTheNextNode) {
  open(site({{"DefaultDoc", "site.htm"}}, {{"DefaultDoc", "root.htm"}}));
  metabase->failOn("Put", "NEW1/W3SVC/1", "DefaultDoc", kDenied);
  exportSites({0});
  EXPECT_THAT(failureLines(),
              ElementsAre("Error transfering Property DefaultDocError " + denied() + " 80070005"));
  EXPECT_EQ(stored("/W3SVC/1", "DefaultDoc"), kUnset);
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "root.htm");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop") << "and with the next property";
}

TEST_F(PropertiesToServer, LogsACommitThatFailed) {
  open(site({}, {{"DefaultDoc", "root.htm"}}));
  transferOnly({"ServerComment", "DefaultDoc"});
  metabase->rule = [puts = false](const MetabaseCall& call) mutable -> std::optional<std::int32_t> {
    if (call.operation == "Put") puts = call.argument == "DefaultDoc";
    if (call.operation == "SetInfo" && puts) return kDenied;
    return std::nullopt;
  };
  exportSites({0});
  EXPECT_THAT(failureLines(),
              ElementsAre("Error transfering Property DefaultDocError " + denied() + " 80070005"));
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
}

TEST_F(PropertiesToServer, WritesNothingInThePlaceOfAValueThatItCouldNotRead) {
  open(site({}, {{"DefaultDoc", "root.htm"}, {"ScriptMaps", ".asp,C:\\asp.dll,5,GET"}}));
  metabase->failOn("Get", "WEB1/W3SVC/7/ROOT", "DefaultDoc", kDenied);
  metabase->failOn("Get", "WEB1/W3SVC/7/ROOT", "ScriptMaps", kDenied);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), kUnset);
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), kUnset);
  EXPECT_THAT(failureLines(),
              ElementsAre("Error transfering Property DefaultDocError " + denied() + " 80070005",
                          "Error transfering Property ScriptMapsError " + denied() + " 80070005"));
}

TEST_F(PropertiesToServer, TellsInADebugLogOfPathsThatItCouldNotGet) {
  openForDebug(site());
  transferOnly({"DefaultDoc", "ServerComment"});
  metabase->failOn("GetDataPaths", "WEB1/W3SVC/7", "DefaultDoc", kDenied);
  exportSites({0});
  const std::vector<std::string> lines = runLog();
  const auto found = std::find(lines.begin(), lines.end(), "Error during getdatapaths " + denied());
  ASSERT_NE(found, lines.end());
  EXPECT_EQ(*(found - 1), "Propname = DefaultDoc");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop") << "the next property goes on";
}

TEST_F(PropertiesToServer, SaysNothingOfPathsThatItCouldNotGetInAnOrdinaryLog) {
  open(site());
  transferOnly({"DefaultDoc"});
  metabase->failOn("GetDataPaths", "WEB1/W3SVC/7", "DefaultDoc", kDenied);
  exportSites({0});
  EXPECT_THAT(runLog(), Not(Contains(StartsWith("Error during getdatapaths"))));
}

TEST_F(PropertiesToServer, ForgetsAFailureBeforeEachProperty) {
  open(site({}, {{"DefaultDoc", "root.htm"}}));
  transferOnly({"AppFriendlyName", "DefaultDoc"});
  metabase->failOn("GetDataPaths", "WEB1/W3SVC/7", "AppFriendlyName", kDenied);
  exportSites({0});
  EXPECT_THAT(logStartingWith("Error transfering Property DefaultDoc"), IsEmpty());
}

}  // namespace
}  // namespace trelvin::test
