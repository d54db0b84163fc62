#include "window/controls.h"

#include <gtest/gtest.h>

#include <utility>

#include "core/err.h"
#include "fakes/failures.h"

namespace trelvin {
namespace {

using test::numberOfFailure;

class ListControlTest : public ::testing::Test {
 protected:
  ListControlTest() {
    list_.onClick = [this] { ++clicks_; };
    multiple_.onClick = [this] { ++clicks_; };
  }
  void fill(ListControl& list, std::initializer_list<const char*> entries) {
    for (const char* entry : entries) list.addItem(entry);
  }
  static std::vector<std::string> entriesOf(const ListControl& list) {
    std::vector<std::string> entries;
    for (std::int32_t i = 0; i < list.listCount(); ++i) entries.push_back(list.list(i));
    return entries;
  }

  Form form_;
  ListControl list_{form_, "lstSingle"};
  ListControl multiple_{form_, "lstMultiple", ListControl::Selection::kMultiple};
  int clicks_ = 0;
};

TEST_F(ListControlTest, KeepsTheOrderOfInsertion) {
  fill(list_, {"b", "a", "b"});
  EXPECT_EQ(entriesOf(list_), (std::vector<std::string>{"b", "a", "b"}));
}

TEST_F(ListControlTest, ASortedListBringsEqualEntriesTogether) {
  list_.sorted = true;
  fill(list_, {"Path", "appRoot", "PATH", "Path", "AppRoot", "path"});
  EXPECT_EQ(entriesOf(list_),
            (std::vector<std::string>{"AppRoot", "appRoot", "PATH", "Path", "Path", "path"}));
}

TEST_F(ListControlTest, ReadingPastTheEndGivesTheEmptyTextAndANegativeIndexFails) {
  fill(list_, {"a"});
  EXPECT_EQ(list_.list(1), "");
  EXPECT_EQ(list_.list(100), "");
  EXPECT_EQ(numberOfFailure([&] { return list_.list(-1); }), 381);
  EXPECT_FALSE(list_.selected(1));
  EXPECT_EQ(numberOfFailure([&] { return list_.selected(-1); }), 381);
}

TEST_F(ListControlTest, WritingAndRemovingWhatIsNotThereFails) {
  fill(list_, {"a"});
  EXPECT_EQ(numberOfFailure([&] { return list_.setList(1, "b"); }), 381);
  EXPECT_EQ(numberOfFailure([&] { return list_.setList(-1, "b"); }), 381);
  EXPECT_EQ(numberOfFailure([&] { return list_.removeItem(1); }), 5);
  EXPECT_EQ(numberOfFailure([&] { return list_.removeItem(-1); }), 5);
  EXPECT_EQ(numberOfFailure([&] { return list_.setSelected(1, true); }), 381);
  EXPECT_EQ(numberOfFailure([&] { return list_.setListIndex(1); }), 380);
  EXPECT_EQ(numberOfFailure([&] { return list_.setListIndex(-2); }), 380);
  list_.setList(0, "b");
  EXPECT_EQ(entriesOf(list_), (std::vector<std::string>{"b"}));
}

TEST_F(ListControlTest, ASingleSelectionFollowsTheListIndexAndClicksOnChangeOnly) {
  fill(list_, {"a", "b"});
  list_.setListIndex(1);
  EXPECT_TRUE(list_.selected(1));
  EXPECT_EQ(list_.selCount(), 1);
  EXPECT_EQ(list_.text(), "b");
  EXPECT_EQ(clicks_, 1);
  list_.setListIndex(1);
  EXPECT_EQ(clicks_, 1);
  list_.setSelected(0, true);
  EXPECT_EQ(list_.listIndex(), 0);
  EXPECT_EQ(list_.selCount(), 1);
  EXPECT_EQ(clicks_, 2);
  list_.setListIndex(-1);
  EXPECT_EQ(list_.selCount(), 0);
  EXPECT_EQ(list_.text(), "");
}

TEST_F(ListControlTest, AMultipleSelectionClicksForEachEntryThatChanges) {
  fill(multiple_, {"a", "b", "c"});
  multiple_.setSelected(0, true);
  multiple_.setSelected(2, true);
  multiple_.setSelected(2, true);
  EXPECT_EQ(clicks_, 2);
  EXPECT_EQ(multiple_.selCount(), 2);
  EXPECT_EQ(multiple_.listIndex(), 2);
  multiple_.setSelected(0, false);
  EXPECT_EQ(clicks_, 3);
  EXPECT_EQ(multiple_.selCount(), 1);
  multiple_.setListIndex(1);
  EXPECT_EQ(clicks_, 3);
  EXPECT_FALSE(multiple_.selected(1));
}

TEST_F(ListControlTest, RemovingKeepsTheSelectionOfTheOthers) {
  fill(multiple_, {"a", "b", "c"});
  multiple_.setSelected(1, true);
  multiple_.setSelected(2, true);
  multiple_.removeItem(0);
  EXPECT_TRUE(multiple_.selected(0));
  EXPECT_TRUE(multiple_.selected(1));
  EXPECT_EQ(multiple_.listIndex(), 1);
  multiple_.removeItem(1);
  EXPECT_EQ(multiple_.selCount(), 1);
  EXPECT_EQ(multiple_.listIndex(), -1);
}

TEST_F(ListControlTest, InsertingBeforeTheEntryInHandMovesTheIndexAlong) {
  list_.sorted = true;
  fill(list_, {"b"});
  list_.setListIndex(0);
  list_.addItem("a");
  EXPECT_EQ(list_.listIndex(), 1);
  EXPECT_EQ(list_.text(), "b");
}

TEST_F(ListControlTest, ClearingForgetsEntriesAndSelectionWithoutAClick) {
  fill(multiple_, {"a"});
  multiple_.setSelected(0, true);
  multiple_.clear();
  EXPECT_EQ(multiple_.listCount(), 0);
  EXPECT_EQ(multiple_.selCount(), 0);
  EXPECT_EQ(multiple_.listIndex(), -1);
  EXPECT_EQ(clicks_, 1);
}

TEST_F(ListControlTest, BecomesAListOfTextsWithNothingSelected) {
  fill(multiple_, {"a", "b"});
  multiple_.setSelected(1, true);
  const std::uint64_t rewrites = multiple_.rewrites();
  multiple_.assign({"c", "d", "e"});
  EXPECT_EQ(multiple_.listCount(), 3);
  EXPECT_EQ(multiple_.list(0), "c");
  EXPECT_EQ(multiple_.list(2), "e");
  EXPECT_EQ(multiple_.selCount(), 0);
  EXPECT_FALSE(multiple_.selected(1));
  EXPECT_EQ(multiple_.listIndex(), -1);
  EXPECT_GT(multiple_.rewrites(), rewrites) << "a view has to draw it anew";
  EXPECT_EQ(clicks_, 1);
}

TEST_F(ListControlTest, ShowsEntriesToAMirrorAsTheyCome) {
  std::vector<std::string> seen;
  list_.onAddItem = [&](const std::string& entry) { seen.push_back(entry); };
  fill(list_, {"a", "b"});
  EXPECT_EQ(seen, (std::vector<std::string>{"a", "b"}));
}

TEST_F(ListControlTest, APersonsChoiceOfSeveralEntriesClicksOnce) {
  fill(multiple_, {"a", "b", "c", "d"});
  multiple_.setSelected(0, true);
  clicks_ = 0;
  std::int32_t seenByTheClick = -1;
  multiple_.onClick = [&] {
    ++clicks_;
    seenByTheClick = multiple_.selCount();
  };
  multiple_.choose({1, 2, 3}, 2);
  EXPECT_EQ(clicks_, 1);
  EXPECT_EQ(seenByTheClick, 3);
  EXPECT_FALSE(multiple_.selected(0));
  EXPECT_TRUE(multiple_.selected(1) && multiple_.selected(2) && multiple_.selected(3));
  EXPECT_EQ(multiple_.listIndex(), 2);
  multiple_.choose({3, 2, 1}, 2);
  EXPECT_EQ(clicks_, 1) << "nothing has changed";
}

TEST_F(ListControlTest, APersonsChoicePassesOverEntriesThatHaveGone) {
  fill(multiple_, {"a"});
  multiple_.choose({-1, 0, 7}, 7);
  EXPECT_EQ(multiple_.selCount(), 1);
  EXPECT_EQ(multiple_.listIndex(), -1);
  fill(list_, {"a"});
  list_.choose({7}, 7);
  EXPECT_EQ(list_.listIndex(), -1);
  list_.choose({0}, 0);
  EXPECT_EQ(list_.listIndex(), 0);
  EXPECT_EQ(clicks_, 2);
}

TEST_F(ListControlTest, TellsAViewWhatHasChangedSinceItDrew) {
  std::uint64_t revision = multiple_.revision();
  const auto changed = [&] { return std::exchange(revision, multiple_.revision()) != multiple_.revision(); };
  const std::uint64_t rewrites = multiple_.rewrites();
  EXPECT_FALSE(changed());
  fill(multiple_, {"a", "b", "c"});
  EXPECT_TRUE(changed());
  multiple_.setSelected(1, true);
  EXPECT_TRUE(changed());
  multiple_.setListIndex(2);
  EXPECT_TRUE(changed());
  multiple_.choose({0}, 0);
  EXPECT_TRUE(changed());
  multiple_.choose({0}, 0);
  multiple_.setSelected(0, true);
  multiple_.setListIndex(0);
  EXPECT_FALSE(changed()) << "nothing was changed by these";
  EXPECT_EQ(multiple_.rewrites(), rewrites) << "the entries that were there are still the same";
}

TEST_F(ListControlTest, TellsAViewWhenEntriesChangeThatWereThereBefore) {
  fill(list_, {"b", "c", "d"});
  std::uint64_t rewrites = list_.rewrites();
  const auto rewritten = [&] { return std::exchange(rewrites, list_.rewrites()) != list_.rewrites(); };
  list_.addItem("e");
  EXPECT_FALSE(rewritten());
  list_.setList(0, "x");
  EXPECT_TRUE(rewritten());
  list_.removeItem(0);
  EXPECT_TRUE(rewritten());
  list_.sorted = true;
  list_.addItem("a");
  EXPECT_TRUE(rewritten()) << "it went before the others";
  list_.clear();
  EXPECT_TRUE(rewritten());
}

TEST(StatusBarTest, ShowsItsPanelWhenItIsRefreshed) {
  Form form;
  StatusBar bar(form, "StatusBar1");
  bar.refresh();
  std::string shown;
  bar.onRefresh = [&] { shown = bar.panel; };
  bar.panel = "Ready";
  bar.refresh();
  EXPECT_EQ(shown, "Ready");
}

TEST(ControlArrayTest, HasTheOneMemberNought) {
  Form form;
  ControlArray<ListControl> lists(form, "lstFolders");
  EXPECT_EQ(lists.count(), 1);
  lists(0).addItem("a");
  EXPECT_EQ(lists(0).listCount(), 1);
  EXPECT_EQ(numberOfFailure([&] { return lists(1).listCount(); }), 340);
  EXPECT_EQ(numberOfFailure([&] { return lists(-1).listCount(); }), 340);
}

TEST(CheckBoxTest, ClicksWhenItsValueChanges) {
  Form form;
  CheckBox box(form, "chk");
  int clicks = 0;
  box.onClick = [&] { ++clicks; };
  box.setValue(false);
  EXPECT_EQ(clicks, 0);
  box.setValue(true);
  box.setValue(true);
  EXPECT_EQ(clicks, 1);
  box.setValue(false);
  EXPECT_EQ(clicks, 2);
}

TEST(OptionButtonTest, ClicksOnlyWhenItGoesOnAndClearsTheOthersOfItsGroup) {
  Form form;
  OptionButton one(form, "optOne");
  OptionButton two(form, "optTwo");
  OptionButton::group({&one, &two});
  std::string clicks;
  one.onClick = [&] { clicks += "1"; };
  two.onClick = [&] { clicks += "2"; };
  one.setValue(true);
  one.setValue(true);
  EXPECT_EQ(clicks, "1");
  two.setValue(true);
  EXPECT_EQ(clicks, "12");
  EXPECT_FALSE(one.value());
  two.setValue(false);
  EXPECT_EQ(clicks, "12");
  EXPECT_FALSE(one.value());
}

TEST(TabStripTest, ClicksWhenAnotherTabIsSelected) {
  Form form;
  TabStrip tabs(form, "Tab", {{"One", ""}, {"Two", ""}});
  int clicks = 0;
  tabs.onClick = [&] { ++clicks; };
  EXPECT_EQ(tabs.selectedTab(), 1);
  tabs.select(1);
  EXPECT_EQ(clicks, 0);
  tabs.select(2);
  EXPECT_EQ(clicks, 1);
  EXPECT_EQ(numberOfFailure([&] { return tabs.select(3); }), 35600);
  EXPECT_EQ(numberOfFailure([&] { return tabs.select(0); }), 35600);
}

TEST(TabStripTest, TheFirstTabTakesOverFromOneThatGoes) {
  Form form;
  TabStrip tabs(form, "Tab", {{"One", ""}, {"Two", ""}});
  tabs.select(2);
  tabs.remove(2);
  EXPECT_EQ(tabs.tabCount(), 1);
  EXPECT_EQ(tabs.selectedTab(), 1);
  tabs.add(2, {"Two again", "tip"});
  EXPECT_EQ(tabs.tab(2).caption, "Two again");
  EXPECT_EQ(tabs.selectedTab(), 1);
  EXPECT_EQ(numberOfFailure([&] { return tabs.add(4, {}); }), 35600);
}

TEST(ProgressBarTest, RefusesWhatDoesNotFitBetweenNoughtAndItsMaximum) {
  Form form;
  ProgressBar bar(form, "ProgressBar1");
  bar.setMax(3);
  bar.setValue(3);
  EXPECT_EQ(numberOfFailure([&] { return bar.setValue(4); }), 380);
  EXPECT_EQ(numberOfFailure([&] { return bar.setValue(-1); }), 380);
  EXPECT_EQ(bar.value(), 3);
  EXPECT_EQ(numberOfFailure([&] { return bar.setMax(0); }), 380);
  bar.setMax(2);
  EXPECT_EQ(bar.value(), 2);
}

TEST(FormTest, FindsControlsByNameInAnyCase) {
  Form form;
  Button button(form, "cmdPopulate", "List Sites", "tip");
  EXPECT_EQ(form.control("CMDPOPULATE"), &button);
  EXPECT_EQ(form.control("other"), nullptr);
  EXPECT_EQ(button.caption, "List Sites");
  EXPECT_EQ(button.tooltip, "tip");
}

}  // namespace
}  // namespace trelvin
