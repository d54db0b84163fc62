#include "desktop/touches.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trelvin::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TouchesTest : public ::testing::Test {
 protected:
  TouchesTest() {
    button.onClick = [this] { done.emplace_back("click"); };
    list.addItem("a");
    list.addItem("b");
    list.onClick = [this] { done.push_back("list " + std::to_string(list.listIndex())); };
    list.onDblClick = [this] { done.emplace_back("double-click"); };
    list.onKeyPress = [this](std::int32_t code) { done.push_back("press " + std::to_string(code)); };
    list.onKeyUp = [this](std::int32_t code) { done.push_back("up " + std::to_string(code)); };
    timer.enabled = true;
    timer.onTimer = [this] { done.emplace_back("tick"); };
  }

  Form form;
  Button button{form, "button"};
  ListControl list{form, "list"};
  TabStrip tabs{form, "tabs", {{"one", ""}, {"two", ""}}};
  Timer timer{form, "timer", 10};
  Touches touches;
  std::vector<std::string> done;
};

TEST_F(TouchesTest, NothingHappensBeforeItsTurn) {
  postClick(touches, button);
  EXPECT_FALSE(touches.isEmpty());
  EXPECT_THAT(done, IsEmpty());
  touches.runAll();
  EXPECT_TRUE(touches.isEmpty());
  EXPECT_THAT(done, ElementsAre("click"));
}

TEST_F(TouchesTest, TouchesAreCarriedOutInTheirOrder) {
  postKeyPress(touches, list, 8);
  postKeyUp(touches, list, 46);
  postDoubleClick(touches, list);
  postClick(touches, button);
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("press 8", "up 46", "double-click", "click"));
}

TEST_F(TouchesTest, WhatCanNoLongerBeTouchedWhenItsTurnComesIsLeftAlone) {
  postClick(touches, button);
  postDoubleClick(touches, list);
  button.enabled = false;
  list.visible = false;
  touches.runAll();
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(TouchesTest, ABoxTakesWhatWasMeantForControlsAndLeavesTicks) {
  Ticks ticks(timer, touches);
  postClick(touches, button);
  ticks.post();
  touches.forget();
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("tick"));
}

TEST_F(TouchesTest, TicksThatCouldNotBeCarriedOutInTimeAreOne) {
  Ticks ticks(timer, touches);
  ticks.post();
  ticks.post();
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("tick"));
  ticks.post();
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("tick", "tick"));
}

TEST_F(TouchesTest, ATimerThatWasStoppedMeanwhileDoesNotTick) {
  Ticks ticks(timer, touches);
  ticks.post();
  timer.enabled = false;
  touches.runAll();
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(TouchesTest, TellsForWhichControlsThereAreStillSome) {
  std::vector<bool> seen;
  list.onClick = [&] { seen.push_back(touches.areWaitingFor(list)); };
  postChoice(touches, list, {0}, 0);
  postChoice(touches, list, {1}, 1);
  EXPECT_TRUE(touches.areWaitingFor(list));
  EXPECT_FALSE(touches.areWaitingFor(button));
  touches.runAll();
  EXPECT_THAT(seen, ElementsAre(true, false)) << "that in hand is none of those that wait";
  EXPECT_FALSE(touches.areWaitingFor(list));
}

TEST_F(TouchesTest, AChoiceAmongEntriesThatAreOthersByNowIsDropped) {
  postChoice(touches, list, {1}, 1);
  list.addItem("c");  // behind those that the person saw
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("list 1"));
  postChoice(touches, list, {0}, 0);
  list.removeItem(2);
  touches.runAll();
  EXPECT_THAT(done, ElementsAre("list 1"));
}

TEST_F(TouchesTest, ATabThatHasGoneMeanwhileIsNotSelected) {
  postTab(touches, tabs, 1);
  tabs.remove(2);
  touches.runAll();
  EXPECT_EQ(tabs.selectedTab(), 1);
}

TEST_F(TouchesTest, AKeyWithoutACodeIsNone) {
  postKeyPress(touches, list, 0);
  postKeyUp(touches, list, 0);
  EXPECT_TRUE(touches.isEmpty());
}

}  // namespace
}  // namespace trelvin::desktop
