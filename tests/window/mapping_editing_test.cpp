// What a touch of the mapping lists does, as a person does it: list, select, choose a tab, press,
// double-click, type, answer.
#include "window/mapping_editing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "metabase/sites_test.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kAddressPrompt =
    "Please enter the new IP address in the format IP:Port:HostName ie. 127.0.0.1:80:www.example.com";

// Keys as the window system tells of them. Backspace and a full stop are characters, Delete is none; the full
// stop's character has the number of the key Delete.
void pressBackspace(const ListControl& list) {
  list.onKeyPress(8);
  list.onKeyUp(8);
}
void pressDelete(const ListControl& list) {
  list.onKeyUp(46);
}
void pressFullStop(const ListControl& list) {
  list.onKeyPress('.');
  list.onKeyUp(190);
}

enum Tab : std::int32_t { kDirectories = 1, kBindings = 2, kSslBindings = 3, kFindAndReplace = 4 };

class MappingEditingTest : public SitesTest {
 protected:
  // Two sites, both read; the first one is selected and on display.
  MappingEditingTest() {
    addWebServer(webSite("1", {{"ServerComment", "One"},
                               {"ServerBindings", asList({":80:a", ":80:b", ":80:c"})},
                               {"SecureBindings", asList({":443:a", ":443:b", ":443:c"})}}) +
                 webDirectory("1/ROOT", "d:\\one") + webDirectory("1/ROOT/images", "d:\\images") +
                 webDirectory("1/ROOT/data", "d:\\data") +
                 webSite("2", {{"ServerComment", "Two"}, {"ServerBindings", asList({":80:two"})}}) +
                 webDirectory("2/ROOT", "d:\\two"));
    pressPopulate();
    select(1);
    unselect(1);
    select(0);
    databases.calls.clear();
  }

  static void showTab(Tab tab) { frmMain.tabNewValues.select(tab); }
  // Shows what the rows hold now.
  static void showAgain(Tab tab) {
    showTab(kFindAndReplace);
    showTab(tab);
  }
  void answer(std::initializer_list<const char*> texts) {
    dialogs->inputs.assign(texts.begin(), texts.end());
  }
  static void selectEntries(ListControl& list, std::initializer_list<std::int32_t> entries) {
    for (const std::int32_t entry : entries) list.setSelected(entry, true);
  }
  static void addPairs(std::initializer_list<std::pair<const char*, const char*>> pairs) {
    for (const auto& [oldValue, newValue] : pairs) {
      frmMain.lstOldValues.addItem(oldValue);
      frmMain.lstNewValues.addItem(newValue);
    }
  }
  [[nodiscard]] Texts statementsRun() const { return databases.textsOf("Execute"); }
};

// Exclusions.

TEST_F(MappingEditingTest, AnExclusionIsAddedAndItsTextBoxStaysAsItIs) {
  frmMain.lstExclude.clear();
  frmMain.txtAddExclusion.text = "MyProperty";
  frmMain.cmdAddExclusion.onClick();
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("MyProperty"));
  EXPECT_EQ(frmMain.txtAddExclusion.text, "MyProperty");
  EXPECT_THAT(statementsRun(), IsEmpty()) << "exclusions live in memory only";
}

TEST_F(MappingEditingTest, AnEmptyExclusionIsNotAdded) {
  const std::int32_t before = frmMain.lstExclude.listCount();
  frmMain.cmdAddExclusion.onClick();
  EXPECT_EQ(frmMain.lstExclude.listCount(), before);
}

TEST_F(MappingEditingTest, AnExclusionAddedTwiceStandsThereTwice) {
  frmMain.lstExclude.clear();
  frmMain.txtAddExclusion.text = "MyProperty";
  frmMain.cmdAddExclusion.onClick();
  frmMain.cmdAddExclusion.onClick();
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("MyProperty", "MyProperty"));
}

// Find-and-replace pairs.

TEST_F(MappingEditingTest, APairIsAskedForOldTextFirst) {
  answer({"d:\\inetpub", "e:\\sites"});
  frmMain.cmdAddNewValue.onClick();
  EXPECT_THAT(dialogs->asked, ElementsAre("Old Value|Please enter the Old value to look for|",
                                          "New Value|Please enter the New value to replace the Old one|"));
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("d:\\inetpub"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("e:\\sites"));
  EXPECT_THAT(statementsRun(), IsEmpty()) << "pairs live in memory only";
}

TEST_F(MappingEditingTest, BothTextsAreAskedForEvenWhenTheFirstBoxIsCancelled) {
  answer({"", "e:\\sites"});
  frmMain.cmdAddNewValue.onClick();
  EXPECT_EQ(dialogs->asked.size(), 2U);
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 0);
  EXPECT_EQ(frmMain.lstNewValues.listCount(), 0);
}

TEST_F(MappingEditingTest, AnOldTextCannotBeReplacedByNothing) {
  answer({"d:\\inetpub", ""});
  frmMain.cmdAddNewValue.onClick();
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 0);
  EXPECT_EQ(frmMain.lstNewValues.listCount(), 0);
}

TEST_F(MappingEditingTest, AnAdditionThatFailsIsLoggedUnderItsButtonsLabel) {
  const auto fail = [](const std::string&) { throw Failure(error_number::kInvalidProcedureCall); };
  frmMain.lstExclude.onAddItem = fail;
  frmMain.lstOldValues.onAddItem = fail;
  frmMain.txtAddExclusion.text = "MyProperty";
  frmMain.cmdAddExclusion.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_cmdAddExclusion Error 5 Invalid procedure call or argument");
  answer({"d:\\inetpub", "e:\\sites"});
  frmMain.cmdAddNewValue.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_cmdAddNewValue Error 5 Invalid procedure call or argument");
  EXPECT_EQ(frmMain.lstNewValues.listCount(), 0) << "the routine was left where it failed";
}

// New addresses.

TEST_F(MappingEditingTest, ANewBindingGoesToTheEndOfItsListAndIntoARow) {
  showTab(kBindings);
  answer({"10.0.0.1:80:new"});
  frmMain.cmdAddIP.onClick();
  EXPECT_THAT(dialogs->asked, ElementsAre(std::string("New IP Addresses|") + kAddressPrompt + "|"));
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:a", ":80:b", ":80:c", "10.0.0.1:80:new"));
  EXPECT_THAT(statementsRun(), ElementsAre("INSERT INTO tmpSettings (SiteID, OldIP, NewIP, ListIndex) VALUES "
                                           "('0','New','10.0.0.1:80:new', 3)"));
  EXPECT_EQ(bindingRows()[3], (Texts{"0", "3", "New", "10.0.0.1:80:new"}));
}

TEST_F(MappingEditingTest, ANewSecureBindingIsAskedForUnderTheSameTitle) {
  showTab(kSslBindings);
  answer({":444:new"});
  frmMain.cmdAddSSLIP.onClick();
  EXPECT_THAT(dialogs->asked, ElementsAre(std::string("New IP Addresses|") + kAddressPrompt + "|"));
  EXPECT_THAT(entriesOf(frmMain.lstNewSSLIPs(0)), ElementsAre(":443:a", ":443:b", ":443:c", ":444:new"));
  EXPECT_THAT(statementsRun(),
              ElementsAre("INSERT INTO tmpSettings (SiteID, OldSSLIP, NewSSLIP, ListIndex) VALUES "
                          "('0','New',':444:new', 3)"));
  EXPECT_EQ(sslRows()[3], (Texts{"0", "3", "New", ":444:new"}));
}

TEST_F(MappingEditingTest, TheListsOfOldAddressesShowANewOneAtTheirNextLoadOnly) {
  showTab(kBindings);
  answer({":80:new", ":444:new"});
  frmMain.cmdAddIP.onClick();
  frmMain.cmdAddSSLIP.onClick();
  EXPECT_THAT(entriesOf(frmMain.lstOldIPs(0)), ElementsAre(":80:a", ":80:b", ":80:c"));
  EXPECT_THAT(entriesOf(frmMain.lstOldSSLIPs(0)), ElementsAre(":443:a", ":443:b", ":443:c"));
  showTab(kSslBindings);
  EXPECT_THAT(entriesOf(frmMain.lstOldIPs(0)), ElementsAre(":80:a", ":80:b", ":80:c", "New"));
  EXPECT_THAT(entriesOf(frmMain.lstOldSSLIPs(0)), ElementsAre(":443:a", ":443:b", ":443:c", "New"));
}

TEST_F(MappingEditingTest, ACancelledAddressAddsNothing) {
  frmMain.cmdAddIP.onClick();
  frmMain.cmdAddSSLIP.onClick();
  EXPECT_EQ(frmMain.lstNewIPs(0).listCount(), 3);
  EXPECT_EQ(frmMain.lstNewSSLIPs(0).listCount(), 3);
  EXPECT_THAT(statementsRun(), IsEmpty());
}

TEST_F(MappingEditingTest, AnAddressIsNotChecked) {
  answer({"it's no address"});
  frmMain.cmdAddIP.onClick();
  EXPECT_EQ(bindingRows()[3][3], "it's no address");
}

TEST_F(MappingEditingTest, ANewAddressBelongsToTheSiteInHand) {
  select(1);
  answer({":80:new"});
  frmMain.cmdAddIP.onClick();
  EXPECT_EQ(bindingRows().back(), (Texts{"1", "1", "New", ":80:new"}));
}

TEST_F(MappingEditingTest, AnAddressThatCannotBeStoredIsLoggedAndStaysInTheList) {
  databases.failOn("Execute", "INSERT INTO tmpSettings", error_number::kUnspecified);
  answer({":80:new", ":444:new"});
  frmMain.cmdAddIP.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_cmdAddIP Error -2147467259 Unspecified error");
  frmMain.cmdAddSSLIP.onClick();
  EXPECT_EQ(logLines().back(), "frmMain_cmdAddSSLIP Error -2147467259 Unspecified error");
  EXPECT_EQ(frmMain.lstNewIPs(0).list(3), ":80:new");
  EXPECT_EQ(frmMain.lstNewSSLIPs(0).list(3), ":444:new");
  EXPECT_EQ(bindingRows().size(), 4U) << "three of the first site and one of the second";
}

// Double-clicks, alike for the three lists.

struct Editor {
  const char* name;
  Tab tab;
  ControlArray<ListControl> FrmMain::*list;
  const char* question;
  const char* setting;
  const char* kind;
};

void PrintTo(const Editor& editor, std::ostream* out) {
  *out << editor.name;
}

class EditorTest : public MappingEditingTest, public ::testing::WithParamInterface<Editor> {
 protected:
  static ListControl& list() { return (frmMain.*GetParam().list)(0); }
  static void doubleClick() { list().onDblClick(); }
  static std::string statement(const std::string& text, int index) {
    return std::string("UPDATE tmpSettings SET ") + GetParam().setting + " = '" + text +
           "' WHERE SiteID = 0 AND (" + GetParam().kind +
           " IS NOT NULL) AND ListIndex = " + std::to_string(index) + " ";
  }
  static std::string question(const std::string& entry) {
    return std::string(GetParam().question) + "|" + entry;
  }
};

INSTANTIATE_TEST_SUITE_P(
    Lists, EditorTest,
    ::testing::Values(
        Editor{"Directories", kDirectories, &FrmMain::lstDirectories,
               "Directory configuration|Please specify the new directory", "Directory", "Folder"},
        Editor{"Bindings", kBindings, &FrmMain::lstNewIPs,
               "New IP Addresses|Please enter the new IP address in the format IP:Port:HostName ie. "
               "127.0.0.1:80:www.example.com",
               "NewIP", "OldIP"},
        Editor{"SecureBindings", kSslBindings, &FrmMain::lstNewSSLIPs,
               "New SSL IP Addresses|Please enter the new IP address in the format IP:Port:HostName ie. "
               "127.0.0.1:80:www.example.com",
               "NewSSLIP", "OldSSLIP"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(EditorTest, ChangesTheSelectedEntryAndItsRow) {
  showTab(GetParam().tab);
  const Texts before = entriesOf(list());
  selectEntries(list(), {1});
  answer({"changed"});
  doubleClick();
  EXPECT_THAT(dialogs->asked, ElementsAre(question(before[1])));
  EXPECT_THAT(entriesOf(list()), ElementsAre(before[0], "changed", before[2]));
  EXPECT_THAT(statementsRun(), ElementsAre(statement("changed", 1)));
  showAgain(GetParam().tab);
  EXPECT_THAT(entriesOf(list()), ElementsAre(before[0], "changed", before[2]));
}

TEST_P(EditorTest, ChangesNoRowOfAnotherKindOrAnotherSite) {
  const Rows before = allSettings();
  selectEntries(list(), {0});
  answer({"changed"});
  doubleClick();
  const Rows after = allSettings();
  ASSERT_EQ(after.size(), before.size());
  int changed = 0;
  for (std::size_t row = 0; row < after.size(); ++row) changed += after[row] != before[row] ? 1 : 0;
  EXPECT_EQ(changed, 1);
}

TEST_P(EditorTest, ACancelledBoxOrAnEmptiedFieldChangesNothing) {
  const Texts before = entriesOf(list());
  selectEntries(list(), {1});
  doubleClick();
  EXPECT_EQ(dialogs->asked.size(), 1U);
  EXPECT_EQ(entriesOf(list()), before);
  EXPECT_THAT(statementsRun(), IsEmpty());
}

TEST_P(EditorTest, WithNothingSelectedNothingIsAsked) {
  doubleClick();
  EXPECT_THAT(dialogs->asked, IsEmpty());
}

TEST_P(EditorTest, AQuoteIsDoubledInTheStatementAndSingleInTheRow) {
  selectEntries(list(), {0});
  answer({"d:\\Bob's"});
  doubleClick();
  EXPECT_EQ(list().list(0), "d:\\Bob's");
  EXPECT_THAT(statementsRun(), ElementsAre(statement("d:\\Bob''s", 0)));
  showAgain(GetParam().tab);
  EXPECT_EQ(list().list(0), "d:\\Bob's");
}

TEST_P(EditorTest, AnEditOutlivesASelectionOfOtherSites) {
  selectEntries(list(), {0});
  answer({"changed"});
  doubleClick();
  unselect(0);
  select(1);
  EXPECT_NE(list().list(0), "changed");
  unselect(1);
  select(0);
  EXPECT_EQ(list().list(0), "changed");
}

TEST_P(EditorTest, ANewListingForgetsAnEdit) {
  const std::string before = list().list(0);
  selectEntries(list(), {0});
  answer({"changed"});
  doubleClick();
  pressPopulate();
  select(0);
  EXPECT_EQ(list().list(0), before);
}

TEST_P(EditorTest, AnEditThatCannotBeStoredIsLoggedAndStaysInTheList) {
  databases.failOn("Execute", "UPDATE tmpSettings", error_number::kUnspecified);
  selectEntries(list(), {1});
  answer({"changed"});
  doubleClick();
  EXPECT_EQ(list().list(1), "changed");
  EXPECT_EQ(logLines().back(), "frmMain_" + list().name + "_DblClick Error -2147467259 Unspecified error");
}

TEST_P(EditorTest, ADebugLogShowsTheStatement) {
  run.bDebug = true;
  selectEntries(list(), {2});
  answer({"changed"});
  doubleClick();
  EXPECT_EQ(logLines().back(), statement("changed", 2));
}

TEST_F(MappingEditingTest, OfSeveralSelectedAddressesTheFirstIsEdited) {
  selectEntries(frmMain.lstNewIPs(0), {2, 1});
  answer({":80:changed"});
  frmMain.lstNewIPs(0).onDblClick();
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:a", ":80:changed", ":80:c"));
}

// Keys that delete, alike for the lists and for both keys.

struct DeleteKey {
  const char* name;
  void (*press)(const ListControl&);
  const char* pairLabelEnd;
  const char* sslLabelEnd;
};

void PrintTo(const DeleteKey& key, std::ostream* out) {
  *out << key.name;
}

class DeleteKeyTest : public MappingEditingTest, public ::testing::WithParamInterface<DeleteKey> {
 protected:
  static void press(const ListControl& list) { GetParam().press(list); }
  static std::string label(const ListControl& list) {
    return "frmMain_" + list.name +
           (list.name == "lstNewSSLIPs" ? GetParam().sslLabelEnd : GetParam().pairLabelEnd) + " Error ";
  }
};

INSTANTIATE_TEST_SUITE_P(Keys, DeleteKeyTest,
                         ::testing::Values(DeleteKey{"Backspace", pressBackspace, "_keypress", "_Keypress"},
                                           DeleteKey{"Delete", pressDelete, "_keyup", "_keyup"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(DeleteKeyTest, TakesOneExclusionOut) {
  frmMain.lstExclude.clear();
  for (const char* name : {"A", "B", "C"}) frmMain.lstExclude.addItem(name);
  selectEntries(frmMain.lstExclude, {1});
  press(frmMain.lstExclude);
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("A", "C"));
  EXPECT_THAT(statementsRun(), IsEmpty());
}

TEST_P(DeleteKeyTest, TakesAPairOutWholeWhicheverSideIsSelected) {
  addPairs({{"a", "1"}, {"b", "2"}, {"c", "3"}});
  selectEntries(frmMain.lstOldValues, {1});
  press(frmMain.lstOldValues);
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a", "c"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("1", "3"));
  selectEntries(frmMain.lstNewValues, {0});
  press(frmMain.lstNewValues);
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("c"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("3"));
  EXPECT_THAT(statementsRun(), IsEmpty());
}

TEST_P(DeleteKeyTest, TakesABindingOutOfBothListsAndItsRow) {
  showTab(kBindings);
  selectEntries(frmMain.lstNewIPs(0), {1});
  press(frmMain.lstNewIPs(0));
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:a", ":80:c"));
  EXPECT_THAT(entriesOf(frmMain.lstOldIPs(0)), ElementsAre(":80:a", ":80:c"));
  EXPECT_THAT(
      statementsRun(),
      ElementsAre("DELETE FROM tmpSettings WHERE SiteID = 0 AND (OldIP IS NOT NULL) AND ListIndex = 1 "));
  EXPECT_EQ(
      bindingRows(),
      (Rows{{"0", "0", ":80:a", ":80:a"}, {"0", "2", ":80:c", ":80:c"}, {"1", "0", ":80:two", ":80:two"}}));
  EXPECT_EQ(sslRows().size(), 3U);
  EXPECT_EQ(directoryRows().size(), 3U + 1U);
}

TEST_P(DeleteKeyTest, TakesASecureBindingOutOfBothListsAndItsRow) {
  showTab(kSslBindings);
  selectEntries(frmMain.lstNewSSLIPs(0), {2});
  press(frmMain.lstNewSSLIPs(0));
  EXPECT_THAT(entriesOf(frmMain.lstNewSSLIPs(0)), ElementsAre(":443:a", ":443:b"));
  EXPECT_THAT(entriesOf(frmMain.lstOldSSLIPs(0)), ElementsAre(":443:a", ":443:b"));
  EXPECT_THAT(
      statementsRun(),
      ElementsAre("DELETE FROM tmpSettings WHERE SiteID = 0 AND (OldSSLIP IS NOT NULL) AND ListIndex = 2 "));
  EXPECT_EQ(sslRows(), (Rows{{"0", "0", ":443:a", ":443:a"}, {"0", "1", ":443:b", ":443:b"}}));
  EXPECT_EQ(bindingRows().size(), 3U + 1U);
}

TEST_P(DeleteKeyTest, DoesNothingWithNothingSelected) {
  addPairs({{"a", "1"}});
  const std::int32_t exclusions = frmMain.lstExclude.listCount();
  for (const ListControl* list : {&frmMain.lstExclude, &frmMain.lstOldValues, &frmMain.lstNewValues,
                                  &frmMain.lstNewIPs(0), &frmMain.lstNewSSLIPs(0)}) {
    press(*list);
  }
  EXPECT_EQ(frmMain.lstExclude.listCount(), exclusions);
  EXPECT_EQ(frmMain.lstOldValues.listCount(), 1);
  EXPECT_EQ(frmMain.lstNewIPs(0).listCount(), 3);
  EXPECT_EQ(frmMain.lstNewSSLIPs(0).listCount(), 3);
  EXPECT_THAT(statementsRun(), IsEmpty());
}

TEST_P(DeleteKeyTest, OnePressTakesOneOfSeveralAndTheNextPressTheNext) {
  frmMain.lstExclude.clear();
  for (const char* name : {"A", "B", "C", "D"}) frmMain.lstExclude.addItem(name);
  selectEntries(frmMain.lstExclude, {3, 1});
  press(frmMain.lstExclude);
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("A", "C", "D"));
  press(frmMain.lstExclude);
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("A", "C"));
  press(frmMain.lstExclude);
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("A", "C")) << "nothing is selected any more";
}

TEST_P(DeleteKeyTest, ABindingThatWasJustAddedLeavesNoRowBehind) {
  answer({":80:wrong"});
  frmMain.cmdAddIP.onClick();
  selectEntries(frmMain.lstNewIPs(0), {3});
  press(frmMain.lstNewIPs(0));
  EXPECT_EQ(frmMain.lstNewIPs(0).listCount(), 3);
  EXPECT_EQ(bindingRows().size(), 3U + 1U) << "what has left the screen must not travel";
  EXPECT_EQ(logLines().back(), label(frmMain.lstNewIPs(0)) + "5 Invalid procedure call or argument")
      << "the old lists had no entry for it yet";
}

TEST_P(DeleteKeyTest, AFailureIsLoggedUnderTheListsLabel) {
  databases.failOn("Execute", "DELETE FROM tmpSettings", error_number::kUnspecified);
  for (ListControl* list : {&frmMain.lstNewIPs(0), &frmMain.lstNewSSLIPs(0)}) {
    selectEntries(*list, {0});
    press(*list);
    EXPECT_EQ(logLines().back(), label(*list) + "-2147467259 Unspecified error");
  }
  // Lists of pairs that have lost their step can't lose a pair.
  frmMain.lstNewValues.addItem("1");
  selectEntries(frmMain.lstNewValues, {0});
  press(frmMain.lstNewValues);
  EXPECT_EQ(logLines().back(), label(frmMain.lstNewValues) + "5 Invalid procedure call or argument");
  frmMain.lstNewValues.clear();
  frmMain.lstOldValues.addItem("a");
  selectEntries(frmMain.lstOldValues, {0});
  press(frmMain.lstOldValues);
  EXPECT_EQ(logLines().back(), label(frmMain.lstOldValues) + "5 Invalid procedure call or argument");
}

TEST_P(DeleteKeyTest, ADebugLogShowsTheStatement) {
  run.bDebug = true;
  selectEntries(frmMain.lstNewIPs(0), {1});
  press(frmMain.lstNewIPs(0));
  EXPECT_EQ(logLines().back(),
            "DELETE FROM tmpSettings WHERE SiteID = 0 AND (OldIP IS NOT NULL) AND ListIndex = 1 ");
}

TEST_F(MappingEditingTest, OtherKeysDeleteNothing) {
  addPairs({{"a", "1"}});
  for (ListControl* list : {&frmMain.lstExclude, &frmMain.lstOldValues, &frmMain.lstNewValues,
                            &frmMain.lstNewIPs(0), &frmMain.lstNewSSLIPs(0)}) {
    selectEntries(*list, {0});
    const std::int32_t before = list->listCount();
    pressFullStop(*list);
    list->onKeyPress('a');
    list->onKeyUp('A');
    list->onKeyUp(8);
    EXPECT_EQ(list->listCount(), before) << list->name;
  }
}

TEST_F(MappingEditingTest, ADirectoryCannotBeDeleted) {
  EXPECT_FALSE(frmMain.lstDirectories(0).onKeyPress);
  EXPECT_FALSE(frmMain.lstDirectories(0).onKeyUp);
  EXPECT_FALSE(frmMain.lstFolders(0).onKeyPress);
  EXPECT_FALSE(frmMain.lstFolders(0).onKeyUp);
}

// Rows that stay behind a gap.

TEST_F(MappingEditingTest, RowsKeepTheirNumbersBehindADeletedOne) {
  selectEntries(frmMain.lstNewIPs(0), {0});
  pressDelete(frmMain.lstNewIPs(0));
  EXPECT_EQ(bindingRows()[0], (Texts{"0", "1", ":80:b", ":80:b"}));
  EXPECT_EQ(bindingRows()[1], (Texts{"0", "2", ":80:c", ":80:c"}));
  showAgain(kBindings);
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:b", ":80:c"));
}

TEST_F(MappingEditingTest, AnEditBehindTheGapReachesTheListBoxOnlyWhereNoRowHasThatNumber) {
  selectEntries(frmMain.lstNewIPs(0), {0});
  pressDelete(frmMain.lstNewIPs(0));
  selectEntries(frmMain.lstNewIPs(0), {0});
  answer({":80:changed"});
  frmMain.lstNewIPs(0).onDblClick();
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:changed", ":80:c"));
  showAgain(kBindings);
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:b", ":80:c"));
}

TEST_F(MappingEditingTest, AnEditBehindTheGapReachesTheRowOfThatNumber) {
  selectEntries(frmMain.lstNewIPs(0), {0});
  pressDelete(frmMain.lstNewIPs(0));
  selectEntries(frmMain.lstNewIPs(0), {1});
  answer({":80:changed"});
  frmMain.lstNewIPs(0).onDblClick();
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:b", ":80:changed"));
  showAgain(kBindings);
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:changed", ":80:c"));
}

TEST_F(MappingEditingTest, ADeletionBehindTheGapLeavesItsOwnRow) {
  selectEntries(frmMain.lstNewIPs(0), {0, 1});
  pressDelete(frmMain.lstNewIPs(0));
  pressDelete(frmMain.lstNewIPs(0));
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:c"));
  showAgain(kBindings);
  EXPECT_THAT(entriesOf(frmMain.lstNewIPs(0)), ElementsAre(":80:b", ":80:c"));
}

TEST_F(MappingEditingTest, AnAddressAddedBehindAGapSharesANumber) {
  selectEntries(frmMain.lstNewIPs(0), {0});
  pressDelete(frmMain.lstNewIPs(0));
  answer({":80:new"});
  frmMain.cmdAddIP.onClick();
  EXPECT_EQ(query("Trelvin.mdb", "SELECT ListIndex AS a FROM tmpSettings WHERE NewIP = ':80:new'"),
            (Rows{{"2"}}));
  EXPECT_EQ(query("Trelvin.mdb", "SELECT ListIndex AS a FROM tmpSettings WHERE NewIP = ':80:c'"),
            (Rows{{"2"}}));
}

// Several sites.

TEST_F(MappingEditingTest, WithSeveralSitesSelectedAnEditGoesToTheLastOfThem) {
  select(1);
  selectEntries(frmMain.lstDirectories(0), {0});
  answer({"e:\\two"});
  frmMain.lstDirectories(0).onDblClick();
  EXPECT_EQ(directoryRows().back(), (Texts{"1", "0", "/ROOT", "e:\\two"}));
  EXPECT_EQ(directoryRows().front(), (Texts{"0", "0", "/ROOT", "d:\\one"}));
}

// What a person sees behind a choice of sites, with and without the statements that nobody could miss.
class GoneRowsTest : public MappingEditingTest {
 protected:
  using Seen = std::vector<Texts>;

  // The debug log makes the program leave nothing out.
  Seen seenBehindSelections(bool leavesNothingOut) {
    run.bDebug = leavesNothingOut;
    dialogs->shown.clear();
    Seen seen;
    for (const auto& [line, selected] : std::vector<std::pair<std::int32_t, bool>>{
             {1, true}, {0, false}, {0, true}, {1, false}, {1, true}}) {
      frmMain.lstSites.setSelected(line, selected);
      for (const ControlArray<ListControl>* list :
           {&frmMain.lstFolders, &frmMain.lstDirectories, &frmMain.lstOldIPs, &frmMain.lstNewIPs,
            &frmMain.lstOldSSLIPs, &frmMain.lstNewSSLIPs}) {
        seen.push_back(entriesOf((*list)(0)));
      }
      seen.push_back(boxes());
    }
    run.bDebug = false;
    return seen;
  }
};

TEST_F(GoneRowsTest, ASiteThatHasLostItsBindingsIsShownAsIfNothingWereLeftOut) {
  for (ListControl* list : {&frmMain.lstNewIPs(0), &frmMain.lstNewSSLIPs(0)}) {
    for (const std::int32_t entry : {2, 1, 0}) {
      list->setSelected(entry, true);
      pressDelete(*list);
    }
  }
  ASSERT_EQ(bindingRows().size() + sslRows().size(), 1U) << "the second site's binding is left";
  const Seen all = seenBehindSelections(true);
  frmMain.lstSites.setSelected(1, false);
  EXPECT_EQ(seenBehindSelections(false), all);
}

}  // namespace
}  // namespace trelvin::test
