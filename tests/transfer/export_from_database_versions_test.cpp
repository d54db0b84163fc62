// Stored sites onto servers, for every pair of versions.
#include <string>

#include "core/run_state.h"
#include "database_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr const char* kMap = ".asp,C:\\WINNT\\asp.dll,1,GET,HEAD,POST,TRACE";
constexpr const char* kKept = ".asp,C:\\Windows\\asp.dll,1,GET,HEAD,POST,TRACE";
// Verbs that were there and have a comma behind them go, TRACE stays, the others come.
constexpr const char* kSwapped = ".asp,C:\\Windows\\asp.dll,1,TRACE,PUT,DELETE,OPTIONS";

struct StoredPair {
  int from;
  int to;
  const char* applicationCall;  // of a virtual directory with 2 and a pool
  const char* applicationLine;
  const char* maps;           // what a list becomes
  bool readsListOfOtherType;  // whether ObjectValue counts although the row says that it holds a text
};

class StoredVersions : public DatabaseToServer, public ::testing::WithParamInterface<StoredPair> {
 protected:
  void openPair(const StoredRow& row) {
    storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\shop"), row});
    openStoredForDebug(infoOf(GetParam().to) + webService(""), GetParam().from, GetParam().to);
    map("winnt", "Windows");
  }
  [[nodiscard]] std::string writtenMaps() const { return stored("/W3SVC/1/ROOT", "ScriptMaps"); }
};

TEST_P(StoredVersions, MakeTheApplicationByTheCallThatBothKnow) {
  openPair(withApplication(ofVirtualDirectory("/ROOT/a", "D:\\a"), "2", "'Pool'"));
  exportSites({0});
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3"}), ElementsAre(GetParam().applicationCall));
  EXPECT_EQ(timesLogged(GetParam().applicationLine), 1);
  EXPECT_EQ(logStartingWith("AppCreate").size(), 1U);
  EXPECT_EQ(stored("/W3SVC/1/ROOT/a", "AppRoot"), "/LM/W3SVC/1/ROOT/a");
}

TEST_P(StoredVersions, CarryScriptMapsInTheFormOfTheTarget) {
  openPair(ofNode("/ROOT", "scriptmaps", kVarList, list({kMap})));
  exportSites({0});
  EXPECT_EQ(writtenMaps(), GetParam().maps);
}

TEST_P(StoredVersions, ReadScriptMapsOfAnotherTypeByTheirOwnRules) {
  StoredRow row = ofNode("/ROOT", "ScriptMaps", kVarList, list({kMap}));
  row.type = kVarText;  // says that it is a text; the list stands in its own column all the same
  row.columnType = kVarList;
  openPair(row);
  exportSites({0});
  EXPECT_THAT(callsOf({"Put"}), Contains("Put /W3SVC/1/ROOT ScriptMaps"));
  EXPECT_EQ(writtenMaps(), GetParam().readsListOfOtherType ? GetParam().maps : "");
}

TEST_P(StoredVersions, CarryOtherListsWithoutASwapOfVerbs) {
  openPair(ofNode("/ROOT", "HttpCustomHeaders", kVarList, list({kMap})));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"),
            std::string(kKept) + "|Trelvin: This web site was exported using Trelvin v4.1");
}

INSTANTIATE_TEST_SUITE_P(
    AllPairs, StoredVersions,
    ::testing::Values(StoredPair{4, 4, "AppCreate /W3SVC/1/ROOT/a True", "AppCreate", kKept, true},
                      StoredPair{4, 5, "AppCreate /W3SVC/1/ROOT/a True", "AppCreate", kSwapped, false},
                      StoredPair{4, 6, "AppCreate /W3SVC/1/ROOT/a True", "AppCreate", kSwapped, false},
                      StoredPair{5, 4, "AppCreate /W3SVC/1/ROOT/a True", "AppCreate", kSwapped, true},
                      StoredPair{5, 5, "AppCreate2 /W3SVC/1/ROOT/a 2", "AppCreate2", kKept, true},
                      StoredPair{5, 6, "AppCreate2 /W3SVC/1/ROOT/a 2", "AppCreate2", kKept, true},
                      StoredPair{6, 4, "AppCreate /W3SVC/1/ROOT/a True", "AppCreate", kKept, false},
                      StoredPair{6, 5, "AppCreate2 /W3SVC/1/ROOT/a 2", "AppCreate2", kKept, false},
                      StoredPair{6, 6, "AppCreate3 /W3SVC/1/ROOT/a 2 Pool", "AppCreate3", kKept, true}),
    [](const auto& instance) {
      return "IIS" + std::to_string(instance.param.from) + "ToIIS" + std::to_string(instance.param.to);
    });

class StoredFrom : public DatabaseToServer {
 protected:
  void rebuildInProcess(const std::string& value) {
    storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\shop"),
                       withApplication(ofVirtualDirectory("/ROOT/a", "D:\\a"), value)});
    openStored(infoOf(4) + webService(""), 4, 4);
    exportSites({0});
  }
};

TEST_F(StoredFrom, Iis4HoldsTrueForAnApplicationInProcess) {
  rebuildInProcess("True");
  EXPECT_THAT(callsOf({"AppCreate"}), ElementsAre("AppCreate /W3SVC/1/ROOT/a True"));
}

TEST_F(StoredFrom, Iis4HoldsFalseForAnApplicationOutOfProcess) {
  rebuildInProcess("False");
  EXPECT_THAT(callsOf({"AppCreate"}), ElementsAre("AppCreate /W3SVC/1/ROOT/a False"));
}

TEST_F(StoredFrom, Iis4HoldsNothingForAPlainDirectoryWhichComesOutOfProcess) {
  storeSite("Shop", {ofVirtualDirectory("/ROOT", "C:\\shop"),
                     withApplication(ofDirectory("/ROOT/a", ""), "Null", "Null")});
  openStored(infoOf(4) + webService(""), 4, 4);
  exportSites({0});
  EXPECT_THAT(callsOf({"AppCreate"}), ElementsAre("AppCreate /W3SVC/1/ROOT/a False"));
}

TEST_F(StoredFrom, Iis4ToADatabaseServerMayHoldTheWords) {
  rebuildInProcess("'False'");
  EXPECT_THAT(callsOf({"AppCreate"}), ElementsAre("AppCreate /W3SVC/1/ROOT/a False"));
}

TEST_F(StoredFrom, Iis6ScriptMapsGoDownToIis5AsTheyStand) {
  // Between two servers nothing is written in this case.
  storeSite("Shop",
            {ofVirtualDirectory("/ROOT", "C:\\shop"), ofNode("/ROOT", "ScriptMaps", kVarList, list({kMap}))});
  openStored(infoOf(5) + webService(""), 6, 5);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "ScriptMaps"), kMap);
  EXPECT_THAT(failureLines(), Not(Contains(::testing::HasSubstr("ScriptMaps"))));
}

}  // namespace
}  // namespace trelvin::test
