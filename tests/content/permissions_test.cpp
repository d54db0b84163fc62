#include "content/permissions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/fake_access_lists.h"
#include "fakes/program_test.h"
#include "fakes/recorded_files.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

const std::string kSource = R"(\\WEB1\D$\shop)";
const std::string kTarget = R"(\\WEB2\D$\shop)";
constexpr std::int32_t kException = error_number::kControlException;
const std::string kQuitting =
    "Quitting permission setter due to missing files, copy file procedure may have been aborted by user";

std::string errorLine(const std::string& routine, const std::string& error, const std::string& source,
                      const std::string& target) {
  return routine + " Error " + error + " @S=" + source + "@ @T=" + target + "@";
}

// Two servers with the folder shop on the share D$, empty, and both controls on the window.
class Permissions : public ProgramTest {
 protected:
  Permissions() : files(recordFiles()) {
    lists.placeOnMainWindow();
    addFolder("");
  }

  void set(const std::string& oldName = "WEB1", const std::string& newName = "WEB2") {
    setPerms(frmMain, kSource, kTarget, oldName, newName);
  }
  void walk(const std::string& oldName = "WEB1", const std::string& newName = "WEB2") {
    synchPermissions(frmMain, kSource, kTarget, oldName, newName);
  }
  // A folder or a file below both folders; with slashes.
  void addFolder(const std::string& path) {
    for (const char* server : {"WEB1", "WEB2"}) folder.makeFolder(native(server, path));
  }
  void addFile(const std::string& path) {
    for (const char* server : {"WEB1", "WEB2"}) folder.write(native(server, path), "x");
  }
  void addFiles(const std::string& below, int count) {
    for (int i = 0; i < count; ++i) addFile(below + "file" + std::to_string(100 + i));
  }
  static std::string native(const std::string& server, const std::string& path) {
    return "network/" + server + "/D$/shop" + (path.empty() ? "" : "/" + path);
  }
  // What is in a folder can't be read at all.
  void refuseToList(const std::string& path, std::int32_t number) {
    files.rule = [=](const std::string& operation, const std::string& listed) {
      const bool isListing = operation == "fileNames" || operation == "folderNames";
      return isListing && listed == path ? std::optional(number) : std::nullopt;
    };
  }
  // The targets that were visited, relative to the target folder: "." for itself. In the fast mode each of
  // them stands there twice.
  [[nodiscard]] std::vector<std::string> visited() const {
    std::vector<std::string> paths;
    for (const std::string& path : lists.pathsGivenTo("NTFSCtl2")) {
      paths.push_back(path == kTarget ? "." : path.substr(kTarget.size() + 1));
    }
    return paths;
  }
  // The names of accounts that the target has now.
  [[nodiscard]] std::vector<std::string> targetNames() const {
    std::vector<std::string> names;
    const auto found = lists.lists.find(kTarget);
    if (found == lists.lists.end()) return names;
    for (const Account& account : found->second) names.push_back(account.name);
    return names;
  }
  // How many entries the target had after each write.
  [[nodiscard]] std::vector<std::size_t> writtenSizes() const {
    std::vector<std::size_t> sizes;
    const auto found = lists.written.find(kTarget);
    if (found == lists.written.end()) return sizes;
    for (const Accounts& accounts : found->second) sizes.push_back(accounts.size());
    return sizes;
  }
  std::string nameAfterCopy(const std::string& name, const std::string& oldName, const std::string& newName) {
    lists.lists[kSource] = {{.name = name}};
    set(oldName, newName);
    return targetNames().at(0);
  }

  AccessLists lists;
  RecordedFiles& files;
};

Account numbered(const std::string& name, std::int32_t first) {
  Account account{.name = name};
  for (std::int32_t i = 0; i < AccessEntry::kValueCount; ++i) {
    account.values.at(static_cast<std::size_t>(i)) = first + i;
  }
  return account;
}

// The calls that copy one entry under a new name, its values being first + 1 to first + 15 by their index.
std::vector<std::string> entryCalls(const std::string& newName, int first) {
  std::vector<std::string> calls{"NTFSCtl2 addAccount", "NTFSCtl1 accountName",
                                 "NTFSCtl2 accountName = " + newName};
  for (const int index : {14, 13, 12, 1, 10, 15, 11, 8, 7, 6, 2, 3, 4, 9, 5}) {
    calls.push_back("NTFSCtl1 accessValue" + std::to_string(index));
    calls.push_back("NTFSCtl2 accessValue" + std::to_string(index) + " = " + std::to_string(first + index));
  }
  return calls;
}

void append(std::vector<std::string>& calls, const std::vector<std::string>& more) {
  calls.insert(calls.end(), more.begin(), more.end());
}

// One path.

TEST_F(Permissions, EmptiesTheTargetsListEntryByEntryAndThenWritesTheSources) {
  lists.lists[kSource] = {numbered("WEB1\\anna", 101)};
  lists.lists[kTarget] = {{.name = "Everyone"}, {.name = "WEB2\\old"}};
  set();
  std::vector<std::string> expected{"NTFSCtl1 FileOrDirectory = " + kSource,
                                    "NTFSCtl1 GetAccounts",
                                    "NTFSCtl2 FileOrDirectory = " + kTarget,
                                    "NTFSCtl2 GetAccounts",
                                    "NTFSCtl2 firstApplyFlag = False",
                                    "NTFSCtl2 secondApplyFlag = False",
                                    "NTFSCtl2 enumerate",
                                    "NTFSCtl2 removeAccount 1",
                                    "NTFSCtl2 writeAccounts",
                                    "NTFSCtl2 removeAccount 1",
                                    "NTFSCtl2 writeAccounts",
                                    "NTFSCtl1 enumerate"};
  append(expected, entryCalls("WEB2\\anna", 100));
  expected.emplace_back("NTFSCtl2 writeAccounts");
  EXPECT_THAT(lists.calls, ElementsAreArray(expected));
}

TEST_F(Permissions, GoesOverTheTargetOnceMoreInTheFastMode) {
  run.bFastPerms = true;
  lists.lists[kSource] = {numbered("WEB1\\anna", 101)};
  set();
  std::vector<std::string> expected{"NTFSCtl1 FileOrDirectory = " + kSource, "NTFSCtl1 GetAccounts"};
  append(expected,
         {"NTFSCtl2 FileOrDirectory = " + kTarget, "NTFSCtl2 GetAccounts", "NTFSCtl2 firstApplyFlag = False",
          "NTFSCtl2 secondApplyFlag = False", "NTFSCtl2 enumerate", "NTFSCtl1 enumerate"});
  append(expected, entryCalls("WEB2\\anna", 100));
  append(expected,
         {"NTFSCtl2 writeAccounts", "NTFSCtl2 FileOrDirectory = " + kTarget, "NTFSCtl2 GetAccounts",
          "NTFSCtl2 firstApplyFlag = False", "NTFSCtl2 secondApplyFlag = True", "NTFSCtl2 enumerate",
          "NTFSCtl2 removeAccount 1", "NTFSCtl2 writeAccounts", "NTFSCtl1 enumerate"});
  append(expected, entryCalls("WEB2\\anna", 100));
  expected.emplace_back("NTFSCtl2 writeAccounts");
  EXPECT_THAT(lists.calls, ElementsAreArray(expected));
}

TEST_F(Permissions, CarriesEachOfTheFifteenValuesAsItStands) {
  Account account = numbered("WEB1\\anna", 1);
  account.values[0] = INT32_MIN;
  account.values[7] = -1;
  account.values[14] = INT32_MAX;
  lists.lists[kSource] = {account};
  set();
  account.name = "WEB2\\anna";
  EXPECT_THAT(lists.lists[kTarget], ElementsAre(account));
}

TEST_F(Permissions, KeepsTheOrderOfTheSourcesEntriesAndWritesThemTogether) {
  lists.lists[kSource] = {numbered("A\\one", 100), numbered("A\\two", 200), numbered("A\\three", 300)};
  set();
  EXPECT_EQ(lists.lists[kTarget], lists.lists[kSource]);
  EXPECT_THAT(writtenSizes(), ElementsAre(3));
}

TEST_F(Permissions, WritesTheTargetsListAfterEachRemoval) {
  lists.lists[kSource] = {{.name = "A\\one"}};
  lists.lists[kTarget] = {{.name = "B\\one"}, {.name = "B\\two"}, {.name = "B\\three"}};
  set();
  EXPECT_THAT(writtenSizes(), ElementsAre(2, 1, 0, 1));
  EXPECT_THAT(lists.written[kTarget][0], ElementsAre(Account{.name = "B\\two"}, Account{.name = "B\\three"}));
}

TEST_F(Permissions, LeavesAnEmptyListWhereTheSourceHasNoEntries) {
  lists.lists[kTarget] = {{.name = "B\\one"}, {.name = "B\\two"}};
  set();
  EXPECT_THAT(targetNames(), IsEmpty());
  EXPECT_THAT(writtenSizes(), ElementsAre(1, 0, 0));
}

TEST_F(Permissions, LeavesTheSourcesListAlone) {
  lists.lists[kSource] = {numbered("WEB1\\anna", 1)};
  const Accounts before = lists.lists[kSource];
  set();
  EXPECT_EQ(lists.lists[kSource], before);
  EXPECT_EQ(lists.written.count(kSource), 0U);
}

TEST_F(Permissions, CountsAPathThatIsDoneOnceInEitherMode) {
  set();
  EXPECT_EQ(run.lPermsSet, 1);
  run.bFastPerms = true;
  set();
  EXPECT_EQ(run.lPermsSet, 2);
}

TEST_F(Permissions, LogsNothingAboutAPathThatIsDone) {
  lists.lists[kSource] = {{.name = "WEB1\\anna"}};
  set();
  EXPECT_THAT(logLines(), IsEmpty());
}

// Names of accounts.

TEST_F(Permissions, GivesAnAccountOfTheSourceServerTheTargetServersName) {
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", "WEB1", "WEB2"), "WEB2\\anna");
}

TEST_F(Permissions, RenamesWhateverTheCaseOfTheLetters) {
  EXPECT_EQ(nameAfterCopy("web1\\anna", "WEB1", "Web2"), "Web2\\anna");
  EXPECT_EQ(nameAfterCopy("GRÖSSE\\anna", "größe", "WEB2"), "GRÖSSE\\anna");
  EXPECT_EQ(nameAfterCopy("BÜRO\\anna", "büro", "WEB2"), "WEB2\\anna");
}

TEST_F(Permissions, ReplacesBothOccurrencesOfTheServersName) {
  EXPECT_EQ(nameAfterCopy("WEB1\\IUSR_web1", "WEB1", "WEB2"), "WEB2\\IUSR_WEB2");
}

TEST_F(Permissions, DoesNotReplaceWithinWhatItPutIn) {
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", "WEB1", "WEB10"), "WEB10\\anna");
  EXPECT_EQ(nameAfterCopy("aaa", "a", "aa"), "aaaaaa");
}

TEST_F(Permissions, ReplacesAThousandOccurrencesAtMost) {
  EXPECT_EQ(nameAfterCopy(std::string(1002, 'x'), "X", "y"), std::string(1000, 'y') + "xx");
}

TEST_F(Permissions, PassesAnAccountOfADomainUnchanged) {
  EXPECT_EQ(nameAfterCopy("CORP\\anna", "WEB1", "WEB2"), "CORP\\anna");
}

TEST_F(Permissions, RenamesADomainWhoseNameContainsTheServers) {
  EXPECT_EQ(nameAfterCopy("MYWEB1CORP\\anna", "WEB1", "WEB2"), "MYWEB2CORP\\anna");
}

TEST_F(Permissions, TakesTheServersNameOutWhenThereIsNoNewOne) {
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", "WEB1", ""), "\\anna");
}

TEST_F(Permissions, KeepsNamesWithoutAnOldNameToLookFor) {
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", "", "WEB2"), "WEB1\\anna");
  EXPECT_EQ(nameAfterCopy("a b\\anna", " ", "-"), "a b\\anna");
  EXPECT_EQ(nameAfterCopy("a  b\\anna", "  ", "-"), "a  b\\anna");
}

TEST_F(Permissions, LooksForTheOldNameWithTheBlanksAroundIt) {
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", " WEB1", "WEB2"), "WEB1\\anna");
}

TEST_F(Permissions, RenamesInTheSecondPassOfTheFastModeToo) {
  run.bFastPerms = true;
  EXPECT_EQ(nameAfterCopy("WEB1\\anna", "web1", "WEB2"), "WEB2\\anna");
}

// A path that fails.

TEST_F(Permissions, LogsTheFailureAndWhatTheSourcesControlSaysAboutIt) {
  lists.lastErrors = {{"NTFSCtl1", "the source's text"}, {"NTFSCtl2", "the target's text"}};
  lists.failOn("NTFSCtl2 GetAccounts", error_number::kPermissionDenied);
  EXPECT_NO_THROW(set());
  EXPECT_THAT(logLines(), ElementsAre(errorLine("setPerms", "70 Permission denied", kSource, kTarget),
                                      "the source's text"));
  EXPECT_EQ(lists.count("NTFSCtl2 LastError"), 0);
  EXPECT_THAT(dialogs->shown, IsEmpty());
}

TEST_F(Permissions, LogsAnEmptyTextWhenTheSourcesControlHasNothingToSay) {
  lists.failOn("NTFSCtl2 GetAccounts", error_number::kPermissionDenied);
  set();
  EXPECT_THAT(logLines(), ElementsAre(errorLine("setPerms", "70 Permission denied", kSource, kTarget), ""));
}

TEST_F(Permissions, DoesNotCountAPathThatFails) {
  lists.failOn("NTFSCtl2 writeAccounts", error_number::kPermissionDenied);
  set();
  EXPECT_EQ(run.lPermsSet, 0);
}

TEST_F(Permissions, DoesNotCountAPathWhoseSecondPassFails) {
  run.bFastPerms = true;
  lists.failOn("NTFSCtl2 secondApplyFlag = True", error_number::kPermissionDenied);
  set();
  EXPECT_EQ(run.lPermsSet, 0);
  EXPECT_THAT(logLines(), SizeIs(2));
}

TEST_F(Permissions, EndsTheWalkForAnExceptionOfTheControlAlone) {
  lists.failOn("NTFSCtl1 GetAccounts", error_number::kPermissionDenied);
  set();
  EXPECT_FALSE(run.bCancelPerms);
  lists.failOn("NTFSCtl1 GetAccounts", kException);
  set();
  EXPECT_TRUE(run.bCancelPerms);
  EXPECT_FALSE(run.bExportCancelled);
  EXPECT_TRUE(hasLogged(errorLine("setPerms", "-2147352567 Exception occurred.", kSource, kTarget)));
  EXPECT_FALSE(hasLogged(kQuitting));
}

TEST_F(Permissions, TouchesNoTargetWhenTheSourceCannotBeRead) {
  lists.lists[kTarget] = {{.name = "B\\one"}};
  lists.failOn("NTFSCtl1 GetAccounts", kException);
  set();
  EXPECT_THAT(targetNames(), ElementsAre("B\\one"));
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl2"), IsEmpty());
}

TEST_F(Permissions, LeavesTheTargetHalfEmptiedWhereARemovalFails) {
  lists.lists[kSource] = {{.name = "A\\one"}};
  lists.lists[kTarget] = {{.name = "B\\one"}, {.name = "B\\two"}, {.name = "B\\three"}};
  lists.failOnNth("NTFSCtl2 removeAccount 1", 2, error_number::kPermissionDenied);
  set();
  EXPECT_THAT(targetNames(), ElementsAre("B\\two", "B\\three"));
}

TEST_F(Permissions, LeavesTheTargetEmptiedWhereAnEntryFails) {
  lists.lists[kSource] = {{.name = "A\\one"}, {.name = "A\\two"}};
  lists.lists[kTarget] = {{.name = "B\\one"}};
  lists.failOnNth("NTFSCtl2 addAccount", 2, kException);
  set();
  EXPECT_THAT(targetNames(), IsEmpty());
  EXPECT_THAT(writtenSizes(), ElementsAre(0));
}

TEST_F(Permissions, LeavesTheTargetEmptiedWhereTheNewListIsRefused) {
  lists.lists[kSource] = {{.name = "A\\one"}};
  lists.lists[kTarget] = {{.name = "B\\one"}};
  lists.failOnNth("NTFSCtl2 writeAccounts", 2, kException);
  set();
  EXPECT_THAT(targetNames(), IsEmpty());
}

TEST_F(Permissions, LogsAFailureForAPathWithoutControls) {
  frmMain.NTFSCtl1.object.reset();
  frmMain.NTFSCtl2.object.reset();
  EXPECT_NO_THROW(set());
  ASSERT_THAT(logLines(), SizeIs(2));
  EXPECT_THAT(logLines()[0], StartsWith("setPerms Error 91 "));
}

// The walk.

TEST_F(Permissions, WalksEachFolderThenItsFilesThenItsSubfolders) {
  for (const char* file : {"a.htm", "z.htm", "img/logo.gif", "img/big/photo.jpg", "js/x.js"}) addFile(file);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "a.htm", "z.htm", "img", "img\\logo.gif", "img\\big",
                                     "img\\big\\photo.jpg", "js", "js\\x.js"));
  EXPECT_THAT(lists.pathsGivenTo("NTFSCtl1"), Contains(kSource + "\\img\\big\\photo.jpg"));
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Permissions, GivesTheTargetOfEachPathTheListOfItsOwnSource) {
  addFile("img/logo.gif");
  lists.lists[kSource] = {{.name = "WEB1\\top"}};
  lists.lists[kSource + "\\img"] = {{.name = "WEB1\\images"}};
  lists.lists[kSource + "\\img\\logo.gif"] = {{.name = "WEB1\\logo"}};
  walk();
  EXPECT_THAT(lists.lists[kTarget], ElementsAre(Account{.name = "WEB2\\top"}));
  EXPECT_THAT(lists.lists[kTarget + "\\img"], ElementsAre(Account{.name = "WEB2\\images"}));
  EXPECT_THAT(lists.lists[kTarget + "\\img\\logo.gif"], ElementsAre(Account{.name = "WEB2\\logo"}));
}

TEST_F(Permissions, CountsAFolderTwiceAndAFileOnce) {
  for (const char* file : {"a.htm", "b.htm", "img/logo.gif"}) addFile(file);
  walk();
  EXPECT_EQ(run.lPermsSet, 2 * 2 + 3);
}

TEST_F(Permissions, CountsAFolderTwiceInTheFastModeToo) {
  addFile("img/logo.gif");
  run.bFastPerms = true;
  walk();
  EXPECT_EQ(run.lPermsSet, 2 * 2);
}

TEST_F(Permissions, GoesOnCountingFromWhereTheCountStands) {
  run.lPermsSet = 40;
  walk();
  EXPECT_EQ(run.lPermsSet, 42);
}

TEST_F(Permissions, CountsAFolderOnceWhoseListFails) {
  lists.failOn("NTFSCtl2 GetAccounts", error_number::kPermissionDenied);
  walk();
  EXPECT_EQ(run.lPermsSet, 1);
}

TEST_F(Permissions, PassesOverWhatIsOnOneSideOnly) {
  folder.write(native("WEB1", "source.htm"), "x");
  folder.write(native("WEB1", "source-folder/x.htm"), "x");
  folder.write(native("WEB2", "target.htm"), "x");
  folder.write(native("WEB2", "target-folder/x.htm"), "x");
  lists.lists[kTarget + "\\target.htm"] = {{.name = "WEB2\\own"}};
  walk();
  EXPECT_THAT(visited(), ElementsAre("."));
  EXPECT_THAT(lists.lists[kTarget + "\\target.htm"], ElementsAre(Account{.name = "WEB2\\own"}));
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_EQ(run.lPermsSet, 2);
}

TEST_F(Permissions, PassesOverAFileThatIsAFolderOnTheOtherSide) {
  folder.write(native("WEB1", "one"), "x");
  folder.makeFolder(native("WEB2", "one"));
  folder.makeFolder(native("WEB1", "two"));
  folder.write(native("WEB2", "two"), "x");
  walk();
  EXPECT_THAT(visited(), ElementsAre("."));
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Permissions, DoesNothingWhereTheWholeTargetIsMissing) {
  folder.write(native("WEB1", "a.htm"), "x");
  folder.write(native("WEB1", "img/logo.gif"), "x");
  std::filesystem::remove_all(folder / native("WEB2", ""));
  walk();
  EXPECT_THAT(lists.calls, IsEmpty());
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_EQ(run.lPermsSet, 1);
  EXPECT_FALSE(run.bCancelPerms);
}

TEST_F(Permissions, LogsAMissingSourceAndSetsNothing) {
  std::filesystem::remove_all(folder / native("WEB1", ""));
  walk();
  ASSERT_THAT(logLines(), Not(IsEmpty()));
  EXPECT_THAT(logLines()[0], StartsWith("synchPermissions Error 76 "));
  EXPECT_TRUE(logLines()[0].ends_with(" @S=" + kSource + "@ @T=" + kTarget + "@"));
  EXPECT_THAT(lists.calls, IsEmpty());
  EXPECT_FALSE(run.bCancelPerms);
}

TEST_F(Permissions, TakesFoldersAloneInTheFastMode) {
  for (const char* file : {"a.htm", "img/logo.gif", "img/big/photo.jpg"}) addFile(file);
  run.bFastPerms = true;
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", ".", "img", "img", "img\\big", "img\\big"));
}

// Giving way to events.

TEST_F(Permissions, GivesWayBeforeEveryTwentyFirstFile) {
  addFiles("", 43);
  std::vector<std::size_t> filesSet;
  events->onYield = [&](int) { filesSet.push_back(visited().size() - 1); };
  walk();
  EXPECT_THAT(filesSet, ElementsAre(20, 41));
  EXPECT_EQ(run.iFileTick, 1);
}

TEST_F(Permissions, DoesNotGiveWayForTwentyFiles) {
  addFiles("", 20);
  walk();
  EXPECT_EQ(events->yields, 0);
  EXPECT_EQ(run.iFileTick, 20);
}

TEST_F(Permissions, CountsFilesOnFromFolderToFolderAndFromWalkToWalk) {
  addFiles("a/", 6);
  addFiles("b/", 6);
  walk();
  EXPECT_EQ(run.iFileTick, 12);
  walk();
  EXPECT_EQ(events->yields, 1);
  EXPECT_EQ(run.iFileTick, 3);
}

TEST_F(Permissions, CountsFilesThatItPassesOver) {
  for (int i = 0; i < 21; ++i) folder.write(native("WEB1", "file" + std::to_string(i)), "x");
  walk();
  EXPECT_EQ(events->yields, 1);
  EXPECT_EQ(run.iFileTick, 0);
}

TEST_F(Permissions, GivesWayAfterEachFolderInTheFastMode) {
  addFolder("img/big");
  addFolder("js");
  run.bFastPerms = true;
  std::vector<std::int32_t> counts;
  events->onYield = [&](int) { counts.push_back(run.lPermsSet); };
  walk();
  EXPECT_THAT(counts, ElementsAre(2, 4, 6, 8));
}

TEST_F(Permissions, LeavesTheCountOfFilesAloneInTheFastMode) {
  addFiles("", 30);
  run.bFastPerms = true;
  run.iFileTick = 7;
  walk();
  EXPECT_EQ(run.iFileTick, 7);
  EXPECT_EQ(events->yields, 1);
}

TEST_F(Permissions, DoesNotGiveWayAfterFoldersInTheFullMode) {
  addFolder("img/big");
  walk();
  EXPECT_EQ(events->yields, 0);
}

// A walk that is cancelled.

TEST_F(Permissions, ACancelWhileGivingWayStopsBeforeTheFileInHand) {
  addFiles("", 22);
  addFile("img/logo.gif");
  events->onYield = [](int) { run.bCancelPerms = true; };
  walk();
  EXPECT_THAT(visited(), SizeIs(1 + 20));
  EXPECT_THAT(visited(), Not(Contains("img")));
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Permissions, ACancelStopsTheFoldersAboveToo) {
  addFiles("a/b/", 21);
  addFile("a/c/x.htm");
  addFile("z/x.htm");
  events->onYield = [](int) { run.bCancelPerms = true; };
  walk();
  EXPECT_THAT(visited(), SizeIs(3 + 20));
  EXPECT_THAT(visited(), Not(Contains("a\\c")));
  EXPECT_THAT(visited(), Not(Contains("z")));
}

TEST_F(Permissions, ACancelInTheFastModeStopsBeforeTheNextFolder) {
  addFolder("a/b");
  addFolder("z");
  run.bFastPerms = true;
  events->onYield = [](int yield) { run.bCancelPerms = yield == 2; };
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", ".", "a", "a"));
}

TEST_F(Permissions, AWalkThatIsCancelledFromTheStartSetsItsFolderAndCountsOneFile) {
  addFiles("", 3);
  addFolder("img");
  run.bCancelPerms = true;
  walk();
  EXPECT_THAT(visited(), ElementsAre("."));
  EXPECT_EQ(run.iFileTick, 1);
  EXPECT_EQ(run.lPermsSet, 2);
}

TEST_F(Permissions, FinishesThePathInHandWhenTheCancelComesMeanwhile) {
  addFiles("", 3);
  lists.lists[kSource + "\\file100"] = {{.name = "A\\one"}};
  lists.rule = [](const std::string& call) -> std::optional<std::int32_t> {
    if (call == "NTFSCtl2 addAccount") run.bCancelPerms = true;
    return std::nullopt;
  };
  walk();
  EXPECT_THAT(lists.lists[kTarget + "\\file100"], ElementsAre(Account{.name = "A\\one"}));
  EXPECT_THAT(visited(), ElementsAre(".", "file100"));
}

// A walk in which something fails.

TEST_F(Permissions, OneBadFileDoesNotStopTheWalk) {
  addFiles("", 3);
  addFile("img/logo.gif");
  lists.failOn("NTFSCtl1 FileOrDirectory = " + kSource + "\\file101", error_number::kPermissionDenied);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "file100", "file102", "img", "img\\logo.gif"));
  EXPECT_THAT(logLines(), ElementsAre(errorLine("setPerms", "70 Permission denied", kSource + "\\file101",
                                                kTarget + "\\file101"),
                                      ""));
  EXPECT_EQ(run.lPermsSet, 2 * 2 + 3);
}

TEST_F(Permissions, OneBadFolderDoesNotKeepBackWhatIsInIt) {
  addFile("img/logo.gif");
  lists.failOn("NTFSCtl2 FileOrDirectory = " + kTarget + "\\img", error_number::kPermissionDenied);
  walk();
  EXPECT_THAT(visited(), Contains("img\\logo.gif"));
}

TEST_F(Permissions, AnExceptionOfTheControlEndsTheWalkAtTheNextTest) {
  addFiles("img/", 3);
  addFile("js/x.js");
  lists.failOn("NTFSCtl1 FileOrDirectory = " + kSource + "\\img\\file101", kException);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "img", "img\\file100"));
  EXPECT_TRUE(run.bCancelPerms);
  EXPECT_FALSE(hasLogged(kQuitting));
}

TEST_F(Permissions, AnExceptionForAFolderEndsTheWalkBeforeItsFiles) {
  addFiles("", 2);
  addFolder("img");
  lists.failOn("NTFSCtl2 GetAccounts", kException);
  walk();
  EXPECT_THAT(visited(), ElementsAre("."));
}

TEST_F(Permissions, AnExceptionInTheWalkItselfIsLoggedWithTheReasonAndEndsIt) {
  addFile("img/logo.gif");
  addFile("js/x.js");
  refuseToList(kSource + "\\img", kException);
  walk();
  EXPECT_THAT(logLines(), ElementsAre(errorLine("synchPermissions", "-2147352567 Exception occurred.",
                                                kSource + "\\img", kTarget + "\\img"),
                                      kQuitting));
  EXPECT_TRUE(run.bCancelPerms);
  EXPECT_THAT(visited(), ElementsAre("."));
}

TEST_F(Permissions, AFolderThatEndsTheWalkOnEntryIsNotCounted) {
  refuseToList(kSource, kException);
  walk();
  EXPECT_EQ(run.lPermsSet, 0);
  EXPECT_THAT(lists.calls, IsEmpty());
}

TEST_F(Permissions, AnExceptionAtTheListingOfFilesLeavesTheFoldersAlone) {
  addFile("a.htm");
  addFolder("img");
  files.failOn("fileNames", kSource, kException);
  walk();
  EXPECT_THAT(visited(), Not(Contains("img")));
  EXPECT_THAT(logLines(),
              ElementsAre(errorLine("synchPermissions", "-2147352567 Exception occurred.", kSource, kTarget),
                          kQuitting));
}

TEST_F(Permissions, AnExceptionBetweenFilesLeavesTheRestOfTheFolderAlone) {
  addFiles("", 3);
  addFolder("img");
  files.failOn("fileExists", kTarget + "\\file101", kException);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "file100"));
  EXPECT_THAT(logLines(), Contains(kQuitting));
}

TEST_F(Permissions, AnyOtherFailureInTheWalkIsLoggedAndTheWalkGoesOn) {
  addFile("img/logo.gif");
  addFile("js/x.js");
  files.failOn("folderNames", kSource + "\\img", error_number::kPermissionDenied);
  walk();
  EXPECT_TRUE(
      hasLogged(errorLine("synchPermissions", "70 Permission denied", kSource + "\\img", kTarget + "\\img")));
  EXPECT_FALSE(hasLogged(kQuitting));
  EXPECT_FALSE(run.bCancelPerms);
  EXPECT_THAT(visited(), Contains("js\\x.js"));
}

TEST_F(Permissions, AFailedListingOfFoldersDoesNotKeepBackTheFiles) {
  addFile("a.htm");
  files.failOn("folderNames", kSource, error_number::kPermissionDenied);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "a.htm"));
}

TEST_F(Permissions, AFailedListingOfFilesDoesNotKeepBackTheFolders) {
  addFile("img/logo.gif");
  files.failOn("fileNames", kSource, error_number::kPermissionDenied);
  walk();
  EXPECT_THAT(visited(), ElementsAre(".", "img", "img\\logo.gif"));
}

// Progress.

TEST_F(Permissions, TheTimerShowsTheCountEverySecond) {
  EXPECT_EQ(frmMain.syncPermTimer.interval, 1000);
  openWindow();
  EXPECT_FALSE(frmMain.syncPermTimer.enabled);
  run.lPermsSet = 1234;
  frmMain.syncPermTimer.onTimer();
  EXPECT_EQ(frmMain.StatusBar1.panel, "1234 file permissions set");
}

}  // namespace
}  // namespace trelvin::test
