// Sites between servers of every pair of versions.
#include <algorithm>

#include "core/run_state.h"
#include "server_to_server_fixture.h"
#include "transfer/export_to_server.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;

constexpr const char* kMaps = ".asp,C:\\WINNT\\asp.dll,1,GET,HEAD,POST,TRACE";
// Verbs that were there and have a comma behind them go, TRACE stays, the others come.
constexpr const char* kSwapped = ".asp,C:\\Windows\\asp.dll,1,TRACE,PUT,DELETE,OPTIONS";
constexpr const char* kKept = ".asp,C:\\Windows\\asp.dll,1,GET,HEAD,POST,TRACE";

struct VersionPair {
  int from;
  int to;
  const char* applicationCall;  // for isolation 0 at the root
  const char* scriptMaps;
  const char* schemaOf;
};

constexpr const char* kFromSource = "IIS://WEB1/W3SVC/7";
constexpr const char* kFromTarget = "IIS://NEW1/W3SVC/1";

class EachPairOfVersions : public ServerToServer, public ::testing::WithParamInterface<VersionPair> {
 protected:
  void openSite(const Properties& ofRoot = {}) {
    Properties root{{"Path", "C:\\shop"}, {"AppRoot", "/LM/W3SVC/7/ROOT"}, {"AppIsolated", "0"}};
    if (GetParam().from == 6) root.emplace_back("AppPoolId", "Pool");
    root.insert(root.end(), ofRoot.begin(), ofRoot.end());
    open(infoOf(GetParam().from) +
             webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}}) + virtualDir(7, "/ROOT", root)),
         infoOf(GetParam().to) + webService(plainSite(3, "Neighbour")), GetParam().from, GetParam().to);
    frmMain.optOverwriteWebs.setValue(true);
  }
};

TEST_P(EachPairOfVersions, MovesASite) {
  openSite({{"DefaultDoc", "x.htm"}, {"AccessFlags", "513"}});
  const std::string source = metabaseOf("WEB1");
  const std::string target = metabaseOf("NEW1");
  exportSites({0});
  EXPECT_EQ(classOf("/W3SVC/1"), "IIsWebServer");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "x.htm");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AccessFlags"), "513");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"),
            "Trelvin: This web site was exported using Trelvin v4.1");
  // The tree lists what the classes of the source know; an older target refuses the rest, one by one.
  const std::vector<std::string> refusals = logStartingWith("Error transfering");
  EXPECT_EQ(refusals.empty(), GetParam().to >= GetParam().from);
  EXPECT_THAT(refusals, ::testing::Each(::testing::EndsWith(" 80005006")));
  EXPECT_EQ(shownOutput().back(), "Done!");
  const std::string after = closedTargetFile();
  for (const char* location : {"/LM/W3SVC/3", "/LM/W3SVC/3/ROOT", "/LM/W3SVC/Info"})
    EXPECT_EQ(elementAt(after, location), elementAt(target, location)) << location;
  EXPECT_EQ(metabaseOf("WEB1"), source);
}

TEST_P(EachPairOfVersions, MakesTheApplicationByTheCallThatBothKnow) {
  openSite();
  exportSites({0});
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3"}), ElementsAre(GetParam().applicationCall));
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AppRoot"), "/LM/W3SVC/1/ROOT");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "AppIsolated"), "0");
}

TEST_P(EachPairOfVersions, KeepsPoolsWhereBothHaveThem) {
  openSite();
  exportSites({0});
  const bool bothHavePools = GetParam().from == 6 && GetParam().to == 6;
  EXPECT_EQ(exists("/W3SVC/AppPools/Pool"), bothHavePools);
  const std::string element = elementAt(closedTargetFile(), "/LM/W3SVC/1/ROOT");
  EXPECT_EQ(element.find("AppPoolId=\"Pool\"") != std::string::npos, bothHavePools) << element;
}

TEST_P(EachPairOfVersions, CarriesScriptMapsInTheFormOfTheTarget) {
  openSite({{"ScriptMaps", std::string(kMaps) + kNextEntry + ".x,C:\\WINNT\\x.dll,4"}});
  transferOnly({"ScriptMaps"});
  map("winnt", "Windows");
  exportSites({0});
  std::string expected = GetParam().scriptMaps;
  if (expected == kKept) expected += "|.x,C:\\Windows\\x.dll,4";
  if (expected == kSwapped) expected += "|.x,C:\\Windows\\x.dll,4,GET,POST,HEAD,TRACE,PUT,DELETE,OPTIONS";
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), expected);
}

TEST_P(EachPairOfVersions, CommitsScriptMapsWhetherOrNotTheyWereRewritten) {
  openSite({{"ScriptMaps", kMaps}});
  transferOnly({"ScriptMaps"});
  frmMain.lstExclude.addItem("UNCAuthenticationPassthrough");  // an older target alone lists it
  metabase->calls.clear();
  exportSites({0});
  const std::vector<std::string> commits = callsOf({"SetInfo"});
  EXPECT_EQ(std::count(commits.begin(), commits.end(), "SetInfo /W3SVC/1/ROOT"), 4)
      << "the creation, the path, the maps, the mark";
}

TEST_P(EachPairOfVersions, ReadsTheSchemaOfTheOlderSide) {
  openSite();
  exportSites({0});
  std::vector<std::string> paths;
  for (const MetabaseCall& call : metabase->calls) {
    const bool ofSite = call.path == kFromSource || call.path == kFromTarget;
    if (call.operation == "Schema" && ofSite) paths.push_back(call.path);
  }
  EXPECT_THAT(paths, ElementsAre(GetParam().schemaOf));
}

INSTANTIATE_TEST_SUITE_P(
    Iis, EachPairOfVersions,
    ::testing::Values(VersionPair{4, 4, "AppCreate /W3SVC/1/ROOT True", kKept, kFromSource},
                      VersionPair{4, 5, "AppCreate /W3SVC/1/ROOT True", kSwapped, kFromSource},
                      VersionPair{4, 6, "AppCreate /W3SVC/1/ROOT True", kSwapped, kFromSource},
                      VersionPair{5, 4, "AppCreate /W3SVC/1/ROOT True", kSwapped, kFromTarget},
                      VersionPair{5, 5, "AppCreate2 /W3SVC/1/ROOT 0", kKept, kFromSource},
                      VersionPair{5, 6, "AppCreate2 /W3SVC/1/ROOT 0", kKept, kFromSource},
                      VersionPair{6, 4, "AppCreate /W3SVC/1/ROOT True", kUnset, kFromTarget},
                      VersionPair{6, 5, "AppCreate2 /W3SVC/1/ROOT 0", kUnset, kFromTarget},
                      VersionPair{6, 6, "AppCreate3 /W3SVC/1/ROOT 0 Pool", kKept, kFromSource}),
    [](const ::testing::TestParamInfo<VersionPair>& pair) {
      return std::to_string(pair.param.from) + "To" + std::to_string(pair.param.to);
    });

class ScriptMaps : public ServerToServer {
 protected:
  void openSite(int from, int to) {
    open(infoOf(from) + webService(webSite(7, "Shop") +
                                   virtualDir(7, "/ROOT", {{"Path", "C:\\s"}, {"ScriptMaps", kMaps}})),
         infoOf(to) + webService(""), from, to);
    transferOnly({"ScriptMaps"});
  }
};

TEST_F(ScriptMaps, PassThroughFindAndReplaceTwiceWhenTheirVerbsAreSwapped) {
  openSite(5, 4);
  map("WINNT", "WINNT\\WINNT");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"),
            ".asp,C:\\WINNT\\WINNT\\WINNT\\WINNT\\asp.dll,1,TRACE,PUT,DELETE,OPTIONS");
}

TEST_F(ScriptMaps, PassThroughFindAndReplaceOnceOtherwise) {
  openSite(5, 6);
  map("WINNT", "WINNT\\WINNT");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), ".asp,C:\\WINNT\\WINNT\\asp.dll,1,GET,HEAD,POST,TRACE");
}

TEST_F(ScriptMaps, GoByTheNumbersOfTheVersionsAndNotByTheWords) {
  openSite(5, 6);
  select({0});
  run.dblEXIISVer = 4;
  dialogs->answers = {Answer::kOk};
  frmMain.cmdExportServer.onClick();
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), ".asp,C:\\WINNT\\asp.dll,1,TRACE,PUT,DELETE,OPTIONS");
}

// A server whose schema has ScriptMaps as one text.
class ScriptMapsInOneText : public ServerToServer, public ::testing::WithParamInterface<VersionPair> {};

TEST_P(ScriptMapsInOneText, AreWrittenAsReadOrNotAtAll) {
  constexpr const char* kSchema =
      "<MetaData><DatabaseMeta><Collection InternalName=\"IIsConfigObject\">"
      "<Property InternalName=\"ScriptMaps\" ID=\"6014\" Type=\"STRING\" UserType=\"IIS_MD_UT_FILE\" "
      "Attributes=\"INHERIT\"/></Collection></DatabaseMeta></MetaData>";
  for (const char* server : {"WEB1", "NEW1"})
    folder.write(std::string("network/") + server + "/C$/WINDOWS/system32/inetsrv/MBSchema.xml", kSchema);
  open(
      infoOf(GetParam().from) +
          webService(webSite(7, "Shop") + virtualDir(7, "/ROOT", {{"Path", "C:\\s"}, {"ScriptMaps", kMaps}})),
      infoOf(GetParam().to) + webService(""), GetParam().from, GetParam().to);
  transferOnly({"ScriptMaps"});
  map("WINNT", "Windows");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), GetParam().scriptMaps);
}

INSTANTIATE_TEST_SUITE_P(
    Iis, ScriptMapsInOneText,
    ::testing::Values(VersionPair{4, 4, "", kMaps, ""}, VersionPair{4, 5, "", kUnset, ""},
                      VersionPair{4, 6, "", kUnset, ""}, VersionPair{5, 4, "", kMaps, ""},
                      VersionPair{5, 5, "", kMaps, ""}, VersionPair{5, 6, "", kMaps, ""},
                      VersionPair{6, 4, "", kUnset, ""}, VersionPair{6, 5, "", kUnset, ""},
                      VersionPair{6, 6, "", kMaps, ""}),
    [](const ::testing::TestParamInfo<VersionPair>& pair) {
      return std::to_string(pair.param.from) + "To" + std::to_string(pair.param.to);
    });

}  // namespace
}  // namespace trelvin::test
