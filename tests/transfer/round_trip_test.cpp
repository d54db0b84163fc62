// From server to database to server, against the way straight from server to server. Random sites of what
// both ways carry alike come out equal; behind them stands, one test each, all that they carry differently.
#include "core/err.h"
#include "core/run_state.h"
#include "core/text.h"
#include "fakes/some_cases.h"
#include "round_trip_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// The database holds a site's bindings twice, as a property and as its new bindings, and all are read back.
void doubleBindings(SiteContent& content) {
  for (const char* name : {" ServerBindings", " SecureBindings"}) {
    const auto bindings = content.find(name);
    if (bindings == content.end()) continue;
    bindings->second += bindings->second.substr(std::string("list").size());
  }
}

// New bindings are stored with the place of the property that was read last; where that isn't the site's own
// node the target refuses them.
bool isOfMisplacedBindings(const std::string& line) {
  return line.starts_with("Error transfering Prop ServerBindings") ||
         line.starts_with("Error transfering Prop SecureBindings");
}

// A difference in words: the first of each kind is enough to see what is wrong.
std::string difference(const SiteContent& straight, const SiteContent& rebuilt) {
  for (const auto& [key, value] : straight) {
    const auto other = rebuilt.find(key);
    if (other == rebuilt.end()) return "lost: " + key + " = " + value.substr(0, 200);
    if (other->second != value) {
      return "changed: " + key + " = " + value.substr(0, 200) + " became " + other->second.substr(0, 200);
    }
  }
  for (const auto& [key, value] : rebuilt) {
    if (!straight.contains(key)) return "new: " + key + " = " + value.substr(0, 200);
  }
  return {};
}

const std::string kNotSupported = std::to_string(error_number::kAdsPropertyNotSupported);

class RandomRoundTrip : public RoundTrip {
 protected:
  void expectSameSite(int number, const std::string& what) {
    SiteContent expected = straight(number);
    EXPECT_GT(expected.size(), 5U) << what;
    doubleBindings(expected);
    EXPECT_EQ(difference(expected, throughDatabase(number)), "") << what;
  }
  // Nothing but the bindings of the way out fails on either way.
  void expectNoOtherFailures(const std::string& what) const {
    EXPECT_THAT(straightFailures, IsEmpty()) << what;
    EXPECT_THAT(storeFailures, IsEmpty()) << what;
    for (const std::string& line : rebuildFailures) EXPECT_TRUE(isOfMisplacedBindings(line)) << line;
  }
};

class SeededRoundTrip : public RandomRoundTrip, public ::testing::WithParamInterface<unsigned> {};

TEST_P(SeededRoundTrip, GivesTheSitesThatTheStraightWayGives) {
  const unsigned seed = GetParam();
  std::string sites;
  int nodes = 0;
  // One and two digits, the most that a number of the program can hold, and one beyond it.
  const auto numbers = someOf<int>({1, 12, 7, 42, 32767, 87257621});
  for (const int number : numbers) {
    RandomSite site(seed * 100 + static_cast<unsigned>(number % 100), number);
    sites += site.elements();
    nodes += site.nodes;
  }
  ASSERT_GT(nodes, 10) << "the lot drew sites that are too small to show anything";
  openBoth(sites);
  if (seed % 2 == 0) {
    map("d:\\sites", "E:\\Web");
    map("e", "ee");
    map("192.0.2.", "198.51.100.");
    map("'", "''");
  }
  sendBothWays();
  for (int number = 1; number <= static_cast<int>(numbers.size()); ++number) {
    expectSameSite(number, "site " + std::to_string(number) + " of seed " + std::to_string(seed));
  }
  expectNoOtherFailures("seed " + std::to_string(seed));
}

INSTANTIATE_TEST_SUITE_P(Seeds, SeededRoundTrip, ::testing::ValuesIn(someOf<unsigned>({1, 2, 3, 4})));

struct Versions {
  int from;
  int to;
};

class VersionedRoundTrip : public RandomRoundTrip, public ::testing::WithParamInterface<Versions> {};

TEST_P(VersionedRoundTrip, GivesTheSameSiteBetweenGenerations) {
  RandomSite site(17U + static_cast<unsigned>(GetParam().from * 10 + GetParam().to), 3);
  openBoth(site.elements(), GetParam().from, GetParam().to);
  frmMain.lstExclude.addItem("ScriptMaps");  // the directions have rules of their own for it
  sendBothWays();
  expectSameSite(1, "IIS " + std::to_string(GetParam().from) + " to " + std::to_string(GetParam().to));
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, VersionedRoundTrip,
    ::testing::ValuesIn(someOf<Versions>({{4, 6}, {4, 4}, {4, 5}, {5, 4}, {6, 4}, {5, 5}, {5, 6}, {6, 5}})));

TEST_F(RandomRoundTrip, GivesTheSameFtpSites) {
  std::string sites;
  for (const int number : {1, 12, 105}) {
    sites += RandomSite(static_cast<unsigned>(number), number).ftpElements();
  }
  openBothFtp(sites);
  map("d:\\sites", "E:\\Ftp");
  sendBothWays();
  for (int number = 1; number <= 3; ++number) expectSameSite(number, "FTP site " + std::to_string(number));
  // An FTP node has no application, which the way into the database notes for every value.
  for (const std::string& line : storeFailures) EXPECT_THAT(line, HasSubstr(kNotSupported));
}

TEST_F(RandomRoundTrip, GivesAListOfAMillionCharacters) {
  std::string errors;
  for (int i = 0; i < 20000; ++i) {
    errors += (i == 0 ? "" : std::string(kNextEntry)) + std::to_string(400 + i) +
              ",*,FILE,C:\\it's a long way\\to the page.htm";
  }
  ASSERT_GT(errors.size(), 1000000U);
  openBoth(webSite(1, "Large", {{"ServerBindings", ":80:"}}) +
           virtualDir(1, "/ROOT", {{"Path", "C:\\large"}, {"HttpErrors", errors}}));
  sendBothWays();
  expectSameSite(1, "a list of a million characters");
  expectNoOtherFailures("a list of a million characters");
}

TEST_F(RandomRoundTrip, GivesATreeOfSixtyLevels) {
  std::string path = "/ROOT";
  std::string nodes = virtualDir(1, path, {{"Path", "C:\\deep"}});
  for (int level = 0; level < 60; ++level) {
    path += "/" + std::string(level % 2 == 0 ? "level" : "12");
    nodes += level % 3 == 0 ? virtualDir(1, path, {{"Path", "C:\\deep\\" + std::to_string(level)}})
                            : directory(1, path, {{"DefaultDoc", std::to_string(level) + ".htm"}});
  }
  openBoth(webSite(1, "Deep", {{"ServerBindings", ":80:"}}) + nodes);
  sendBothWays();
  EXPECT_EQ(straight(1)[path + " class"], "IIsWebDirectory");
  expectSameSite(1, "sixty levels");
}

// What the two ways carry differently.

class WaysThatDiffer : public RoundTrip {
 protected:
  // A site 7 with bindings, a root at C:\shop and those nodes.
  static std::string shop(const std::string& nodes = {}, const Properties& ofRoot = {},
                          const Properties& ofSite = {}) {
    Properties site{{"ServerBindings", ":80:"}};
    site.insert(site.end(), ofSite.begin(), ofSite.end());
    Properties root{{"Path", "C:\\shop"}};
    root.insert(root.end(), ofRoot.begin(), ofRoot.end());
    return webSite(7, "Shop", site) + virtualDir(7, "/ROOT", root) + nodes;
  }
  void send(const std::string& sites, int from = 6, int to = 6) {
    openBoth(sites, from, to);
    sendBothWays();
  }
  static void include(const std::string& name) {
    for (std::int32_t i = frmMain.lstExclude.listCount() - 1; i >= 0; --i) {
      if (equalsIgnoringCase(frmMain.lstExclude.list(i), name)) frmMain.lstExclude.removeItem(i);
    }
  }
  static std::string at(const SiteContent& content, const std::string& key) {
    const auto found = content.find(key);
    return found == content.end() ? kUnset : found->second;
  }
};

TEST_F(WaysThatDiffer, BindingsComeOutOfTheDatabaseTwice) {
  send(shop({}, {}, {{"SecureBindings", ":443:"}}));
  EXPECT_EQ(at(straight(1), " ServerBindings"), "list [:80:]");
  EXPECT_EQ(at(throughDatabase(1), " ServerBindings"), "list [:80:] [:80:]");
  EXPECT_EQ(at(straight(1), " SecureBindings"), "list [:443:]");
  EXPECT_EQ(at(throughDatabase(1), " SecureBindings"), "list [:443:] [:443:]");
}

TEST_F(WaysThatDiffer, NewBindingsComeOutOfTheDatabaseBehindTheFormerOnes) {
  openBoth(shop());
  frmMain.lstSites.setSelected(0, true);
  frmMain.DBSettings->execute("UPDATE tmpSettings SET NewIP = '192.0.2.1:8080:' WHERE OldIP IS NOT NULL");
  sendBothWays();
  EXPECT_EQ(at(straight(1), " ServerBindings"), "list [192.0.2.1:8080:]");
  EXPECT_EQ(at(throughDatabase(1), " ServerBindings"), "list [:80:] [192.0.2.1:8080:]");
}

TEST_F(WaysThatDiffer, BindingsThatAreExcludedComeOutOfTheDatabaseOnce) {
  openBoth(shop({}, {}, {{"SecureBindings", ":443:"}}));
  for (const char* name : {"ServerBindings", "SecureBindings"}) frmMain.lstExclude.addItem(name);
  sendBothWays();
  for (const SiteContent& site : {straight(1), throughDatabase(1)}) {
    EXPECT_EQ(at(site, " ServerBindings"), "list [:80:]");
    EXPECT_EQ(at(site, " SecureBindings"), "list [:443:]");
  }
}

TEST_F(WaysThatDiffer, AListOfObjectsIsRefusedByTheTargetOfTheDatabaseAlone) {
  send(shop({}, {{"MimeMap", ".job,text/plain"}}));
  EXPECT_EQ(at(straight(1), "/ROOT MimeMap"), kUnset);
  EXPECT_EQ(at(throughDatabase(1), "/ROOT MimeMap"), kUnset);
  EXPECT_THAT(straightFailures, Contains(StartsWith("Error transfering Property MimeMap")));
  EXPECT_THAT(storeFailures, Contains(StartsWith("Error transfering Property MimeMap")));
  EXPECT_THAT(rebuildFailures, Contains(StartsWith("Error transfering Prop MimeMap")));
}

TEST_F(WaysThatDiffer, AnEmptyListIsNotStored) {
  send(shop({}, {{"HttpErrors", ""}}));
  EXPECT_EQ(at(straight(1), "/ROOT HttpErrors"), "list");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT HttpErrors"), kUnset);
}

TEST_F(WaysThatDiffer, AnObjectIsNotStored) {
  send(shop({}, {{"IPSecurity", "1800"}}));
  EXPECT_THAT(at(straight(1), "/ROOT IPSecurity"), StartsWith("object "));
  EXPECT_EQ(at(throughDatabase(1), "/ROOT IPSecurity"), kUnset);
  EXPECT_THAT(output, Contains("IPSecurity cannot be stored in database"));
}

TEST_F(WaysThatDiffer, BytesAreNotStored) {
  openBoth(shop({}, {}, {{"SSLCertHash", "0123456789abcdef0123456789abcdef01234567"}}));
  include("SSLCertHash");
  sendBothWays();
  EXPECT_EQ(at(straight(1), " SSLCertHash"), "20 bytes");
  EXPECT_EQ(at(throughDatabase(1), " SSLCertHash"), kUnset);
  EXPECT_THAT(storeFailures, Contains(StartsWith("Error transfering Property SSLCertHash")));
}

TEST_F(WaysThatDiffer, FiltersStayInTheDatabaseEvenWhenTheyAreWanted) {
  openBoth(shop(below(7, "IIsFilters", "/Filters", {{"FilterLoadOrder", "one"}})));
  run.bSkipFilters = false;
  sendBothWays();
  EXPECT_THAT(straightFailures, Contains(StartsWith("Error transfering Property FilterLoadOrder")));
  EXPECT_THAT(rebuildFailures, Each(Not(HasSubstr("FilterLoadOrder"))));
  EXPECT_FALSE(throughDatabase(1).contains("/Filters class"));
}

TEST_F(WaysThatDiffer, ASettingOfASingleFileLandsOnAnotherNode) {
  send(shop(directory(7, "/ROOT/a", {{"DontLog", "TRUE"}}) +
                below(7, "IIsWebFile", "/ROOT/page.asp", {{"AuthFlags", "AuthBasic"}}),
            {{"AuthFlags", "AuthAnonymous"}}));
  // Straight: the node before among those of this property. From the database: the node before in the tree.
  EXPECT_EQ(at(straight(1), "/ROOT AuthFlags"), "3 2");
  EXPECT_EQ(at(straight(1), "/ROOT/a AuthFlags"), kUnset);
  EXPECT_EQ(at(throughDatabase(1), "/ROOT AuthFlags"), "3 1");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/a AuthFlags"), "3 2");
  EXPECT_FALSE(straight(1).contains("/ROOT/page.asp class"));
  EXPECT_FALSE(throughDatabase(1).contains("/ROOT/page.asp class"));
}

TEST_F(WaysThatDiffer, AVirtualDirectoryWithoutAPathKeepsNoneFromTheDatabase) {
  send(shop(virtualDir(7, "/ROOT/v", {{"Path", ""}, {"DefaultDoc", "x.htm"}})));
  EXPECT_EQ(at(straight(1), "/ROOT/v Path"), "8 ");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/v Path"), kUnset);
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/v class"), "IIsWebVirtualDir");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/v DefaultDoc"), "8 x.htm");
}

TEST_F(WaysThatDiffer, AVirtualDirectoryWithNeitherPathNorPropertyIsNotStored) {
  send(shop(virtualDir(7, "/ROOT/v", {{"Path", ""}})));
  EXPECT_EQ(at(straight(1), "/ROOT/v class"), "IIsWebVirtualDir");
  EXPECT_FALSE(throughDatabase(1).contains("/ROOT/v class"));
}

TEST_F(WaysThatDiffer, TheApplicationOfADirectoryIsInProcessFromTheDatabase) {
  send(shop(directory(7, "/ROOT/app",
                      {{"AppRoot", "/LM/W3SVC/7/ROOT/app"}, {"AppIsolated", "2"}, {"AppPoolId", "Own"}})));
  EXPECT_EQ(at(straight(1), "/ROOT/app AppRoot"), "8 /LM/W3SVC/1/ROOT/app");
  EXPECT_EQ(at(straight(1), "/ROOT/app AppIsolated"), "3 2");
  // The tree row of a directory holds neither isolation nor pool; the pool has a property row as well.
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/app AppRoot"), "8 /LM/W3SVC/1/ROOT/app");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/app AppIsolated"), "3 0");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/app AppPoolId"), "8 Own");
}

TEST_F(WaysThatDiffer, ADirectoryWithAPathOfItsOwnEmptiesItsParentsOnTheStraightWayAlone) {
  giveDirectoriesAPath("WEB1");
  send(shop(directory(7, "/ROOT/d", {{"Path", "D:\\elsewhere"}})));
  EXPECT_EQ(at(straight(1), "/ROOT Path"), "8 ");
  EXPECT_EQ(at(throughDatabase(1), "/ROOT Path"), "8 C:\\shop");
  EXPECT_EQ(at(straight(1), "/ROOT/d Path"), kUnset);
  EXPECT_EQ(at(throughDatabase(1), "/ROOT/d Path"), kUnset);
}

TEST_F(WaysThatDiffer, ANumberOfTwoDigitsIsNotPreservedThroughTheDatabase) {
  std::string sites;
  for (const int number : {7, 12, 105}) {
    sites += webSite(number, "Shop " + std::to_string(number), {{"ServerBindings", ":80:"}}) +
             virtualDir(number, "/ROOT", {{"Path", "C:\\shop"}});
  }
  openBoth(sites);
  frmMain.optOverwritePreserve.setValue(true);
  sendBothWays();
  for (const int number : {7, 12, 105}) {
    EXPECT_EQ(at(straight(number), " ServerComment"), "8 Shop " + std::to_string(number));
  }
  EXPECT_EQ(at(throughDatabase(7), " ServerComment"), "8 Shop 7");
  EXPECT_EQ(at(throughDatabase(105), " ServerComment"), "8 Shop 105");
  EXPECT_FALSE(throughDatabase(12).contains(" class"));
  EXPECT_EQ(at(throughDatabase(106), " ServerComment"), "8 Shop 12") << "it follows the site before it";
}

TEST_F(WaysThatDiffer, ScriptMapsFromIis6DownwardsComeOutOfTheDatabaseAlone) {
  send(shop({}, {{"ScriptMaps", ".asp,C:\\asp.dll,5,GET,POST"}}), 6, 5);
  EXPECT_EQ(at(straight(1), "/ROOT ScriptMaps"), kUnset);
  EXPECT_EQ(at(throughDatabase(1), "/ROOT ScriptMaps"), "list [.asp,C:\\asp.dll,5,GET,POST]");
}

TEST_F(WaysThatDiffer, SwappedScriptMapsMeetThePairsOnceOnTheWayIntoTheDatabaseAndTwiceStraight) {
  openBoth(shop({}, {{"ScriptMaps", ".asp,C:\\a\\asp.dll,1,PUT,DELETE"}}), 4, 6);
  map("C:\\a", "C:\\a\\a");
  sendBothWays();
  EXPECT_THAT(at(straight(1), "/ROOT ScriptMaps"), StartsWith("list [.asp,C:\\a\\a\\a\\asp.dll,1,"));
  EXPECT_THAT(at(throughDatabase(1), "/ROOT ScriptMaps"), StartsWith("list [.asp,C:\\a\\a\\asp.dll,1,"));
}

TEST_F(WaysThatDiffer, WhatAnOlderTargetDoesNotKnowIsTriedFromTheDatabaseAlone) {
  send(shop({}, {}, {{"TraceUriPrefix", "x"}}), 6, 5);
  EXPECT_THAT(straightFailures, Each(Not(HasSubstr("TraceUriPrefix"))));
  EXPECT_THAT(rebuildFailures, Contains(StartsWith("Error transfering Prop TraceUriPrefix")));
  EXPECT_EQ(at(throughDatabase(1), " TraceUriPrefix"), kUnset);
}

TEST_F(WaysThatDiffer, TheConfigurationComesOutOfTheDatabaseEvenWhenItIsNotWanted) {
  openBoth(shop());
  frmMain.chkCopyIIS.setValue(false);
  frmMain.chkRunSilent.setValue(true);
  sendBothWays();
  EXPECT_THAT(straight(1), IsEmpty());
  EXPECT_EQ(at(throughDatabase(1), "/ROOT Path"), "8 C:\\shop");
}

TEST_F(WaysThatDiffer, ContentTravelsStraightAlone) {
  openBoth(shop());
  frmMain.chkCopyFiles.setValue(true);
  sendBothWays();
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_THAT(shell.operations[0].to, StartsWith("\\\\NEW1\\"));
}

}  // namespace
}  // namespace trelvin::test
