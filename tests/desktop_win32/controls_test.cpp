#include <array>
#include <utility>

#include "desktop_win32/desktop_win32_test.h"
#include "platform/platform.h"
#include "platform/windows/wide_text.h"
#include "window/frm_main.h"
// clang-format off
#include <commctrl.h>  // stands on Windows' own header
// clang-format on

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ControlsTest : public DesktopWin32Test {
 protected:
  ControlsTest() { show(frmMain); }
  static bool isOn(const std::string& control) {
    return SendMessageW(main(control), BM_GETCHECK, 0, 0) == BST_CHECKED;
  }
  static bool isStop(const std::string& control) {
    return (GetWindowLongPtrW(main(control), GWL_STYLE) & WS_TABSTOP) != 0;
  }
  static int selectedTab(const std::string& strip) { return TabCtrl_GetCurSel(main(strip)); }
  void fill(ListControl& list, const std::vector<std::string>& entries) {
    for (const std::string& entry : entries) list.addItem(entry);
    hand.look();
  }
};

TEST_F(ControlsTest, AClickOnAButtonRunsItsRoutineOnce) {
  for (Button* button : {&frmMain.cmdPopulate, &frmMain.cmdAddExclusion, &frmMain.cmdExportServer}) {
    count(*button);
    hand.click(main(button->name));
  }
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate", "cmdAddExclusion", "cmdExportServer"));
}

TEST_F(ControlsTest, WhatIsSwitchedOffIsDrawnSoAndTakesNoClick) {
  count(frmMain.cmdPopulate);
  frmMain.cmdPopulate.enabled = false;
  hand.look();
  EXPECT_FALSE(IsWindowEnabled(main("cmdPopulate")));
  hand.click(main("cmdPopulate"));
  EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(ControlsTest, AFrameHidesAndSwitchesOffWhatItHolds) {
  frmMain.fraExportServer.visible = false;
  frmMain.fraPreferences.enabled = false;
  hand.look();
  EXPECT_FALSE(Hand::canSee(frmMain, "txtExportServer"));
  EXPECT_FALSE(Hand::canSee(frmMain, "lblExportServer"));
  EXPECT_FALSE(IsWindowEnabled(main("chkCopyFiles")));
  frmMain.fraExportServer.visible = true;
  frmMain.fraPreferences.enabled = true;
  hand.look();
  EXPECT_TRUE(Hand::canSee(frmMain, "txtExportServer"));
  EXPECT_TRUE(IsWindowEnabled(main("chkCopyFiles")));
}

TEST_F(ControlsTest, ACaptionThatChangesIsDrawn) {
  EXPECT_EQ(Hand::textOf(main("cmdPopulate")), "&List Sites");
  frmMain.cmdPopulate.caption = "Abort";
  hand.look();
  EXPECT_EQ(Hand::textOf(main("cmdPopulate")), "Abort (&L)");
}

TEST_F(ControlsTest, ATextThatIsTypedIsInTheStateAtOnce) {
  frmMain.txtImportServer.text.clear();
  hand.look();
  hand.focus(main("txtImportServer"));
  hand.type(
      "W\xC3\xA4"
      "B1");
  EXPECT_EQ(frmMain.txtImportServer.text,
            "W\xC3\xA4"
            "B1");
  frmMain.txtImportServer.text = "OTHER";
  hand.look();
  EXPECT_EQ(Hand::textOf(main("txtImportServer")), "OTHER");
}

TEST_F(ControlsTest, ACheckBoxShowsWhatBecameOfAClick) {
  hand.click(main("chkCopyFiles"));
  EXPECT_TRUE(frmMain.chkCopyFiles.value());
  EXPECT_TRUE(isOn("chkCopyFiles"));
  hand.click(main("chkCopyFiles"));
  EXPECT_FALSE(isOn("chkCopyFiles"));
  frmMain.chkStartWebs.onClick = [] {
    frmMain.chkStartWebs.onClick = nullptr;
    frmMain.chkStartWebs.setValue(false);
  };
  hand.click(main("chkStartWebs"));
  EXPECT_FALSE(isOn("chkStartWebs")) << "its routine has turned it back";
}

TEST_F(ControlsTest, OptionsExcludeEachOther) {
  count(frmMain.optExportFTP);
  hand.click(main("optExportFTP"));
  hand.click(main("optExportFTP"));
  EXPECT_THAT(clicked, ElementsAre("optExportFTP"));
  EXPECT_TRUE(isOn("optExportFTP"));
  EXPECT_FALSE(isOn("optExportWeb"));
}

TEST_F(ControlsTest, AnOptionGroupWithNoneSetIsDrawnSo) {
  frmMain.optCreateWebs.setValue(false);
  hand.look();
  for (const char* option : {"optCreateWebs", "optOverwriteWebs", "optOverwritePreserve"}) {
    EXPECT_FALSE(isOn(option)) << option;
  }
  EXPECT_TRUE(isStop("optCreateWebs"));
}

TEST_F(ControlsTest, ArrowKeysGoThroughAGroupOfOptionsAndChoose) {
  hand.focus(main("optCreateWebs"));
  hand.key(VK_DOWN);
  EXPECT_TRUE(frmMain.optOverwriteWebs.value());
  EXPECT_EQ(GetFocus(), main("optOverwriteWebs"));
  hand.key(VK_UP);
  hand.key(VK_UP);
  EXPECT_TRUE(frmMain.optOverwritePreserve.value()) << "round its end";
  frmMain.optOverwriteWebs.enabled = false;
  hand.look();
  hand.key(VK_UP);
  EXPECT_TRUE(frmMain.optCreateWebs.value()) << "past one that can't be reached";
}

TEST_F(ControlsTest, TheTabKeyStopsOnceAtAGroupOfOptionsAndChoosesNothing) {
  frmMain.optOverwriteWebs.setValue(true);
  hand.look();
  EXPECT_TRUE(isStop("optOverwriteWebs"));
  EXPECT_FALSE(isStop("optCreateWebs"));
  EXPECT_FALSE(isStop("optOverwritePreserve"));
  frmMain.optOverwriteWebs.setValue(false);
  hand.look();
  hand.focus(main("lstEXIISVer"));
  hand.key(VK_TAB);
  EXPECT_EQ(GetFocus(), main("optCreateWebs"));
  EXPECT_FALSE(frmMain.optCreateWebs.value());
}

TEST_F(ControlsTest, AClickOnATabSelectsIt) {
  count(frmMain.TabExportType);
  hand.clickTab(main("TabExportType"), 1);
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 2);
  EXPECT_EQ(selectedTab("TabExportType"), 1);
  EXPECT_THAT(clicked, ElementsAre("TabExportType"));
}

TEST_F(ControlsTest, TabsComeAndGoWithTheState) {
  EXPECT_EQ(TabCtrl_GetItemCount(main("TabExportType")), 2);
  frmMain.TabExportType.remove(2);
  hand.look();
  EXPECT_EQ(TabCtrl_GetItemCount(main("TabExportType")), 1);
  frmMain.TabExportType.add(2, {"Somewhere", ""});
  hand.look();
  std::array<wchar_t, 64> text{};
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  item.pszText = text.data();
  item.cchTextMax = static_cast<int>(text.size());
  SendMessageW(main("TabExportType"), TCM_GETITEMW, 1, reinterpret_cast<LPARAM>(&item));
  EXPECT_EQ(utf8Text(text.data()), "Somewhere");
}

TEST_F(ControlsTest, ATabThatItsRoutineTurnsBackIsDrawnBack) {
  frmMain.tabNewValues.onClick = [] {
    frmMain.tabNewValues.onClick = nullptr;
    frmMain.tabNewValues.select(1);
  };
  hand.clickTab(main("tabNewValues"), 2);
  EXPECT_EQ(selectedTab("tabNewValues"), 0);
}

TEST_F(ControlsTest, TabsHaveAccessKeysAndTakeTheFocus) {
  hand.accessKey('i');
  EXPECT_EQ(frmMain.tabNewValues.selectedTab(), 2);
  EXPECT_EQ(GetFocus(), main("tabNewValues"));
}

TEST_F(ControlsTest, AListShowsItsEntriesAsTheyComeAndChange) {
  fill(frmMain.lstOutput, {"one", "two"});
  EXPECT_THAT(Hand::entriesOf(main("lstOutput")), ElementsAre("one", "two"));
  fill(frmMain.lstOutput, {"three"});
  EXPECT_THAT(Hand::entriesOf(main("lstOutput")), ElementsAre("one", "two", "three"));
  frmMain.lstOutput.setList(1, "zwei");
  frmMain.lstOutput.removeItem(0);
  hand.look();
  EXPECT_THAT(Hand::entriesOf(main("lstOutput")), ElementsAre("zwei", "three"));
  frmMain.lstOutput.clear();
  hand.look();
  EXPECT_THAT(Hand::entriesOf(main("lstOutput")), IsEmpty());
}

TEST_F(ControlsTest, ARefreshedListIsDrawnInTheMiddleOfARoutine) {
  frmMain.cmdPopulate.onClick = [this] {
    frmMain.lstOutput.addItem("working");
    frmMain.cmdPopulate.caption = "Abort";
    frmMain.lstOutput.refresh();
    clicked = Hand::entriesOf(main("lstOutput"));
    clicked.push_back(Hand::textOf(main("cmdPopulate")));
  };
  hand.click(main("cmdPopulate"));
  EXPECT_THAT(clicked, ElementsAre("working", "Abort (&L)"));
}

TEST_F(ControlsTest, ASiteIsMarkedByAClickAndUnmarkedByAnother) {
  fill(frmMain.lstSites, {"Shop", "News", "Shop 2"});
  count(frmMain.lstSites);
  hand.clickEntry(main("lstSites"), 1);
  hand.clickEntry(main("lstSites"), 2);
  EXPECT_EQ(frmMain.lstSites.selCount(), 2);
  hand.clickEntry(main("lstSites"), 1);
  EXPECT_EQ(frmMain.lstSites.selCount(), 1);
  EXPECT_TRUE(frmMain.lstSites.selected(2));
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSEL, 2, 0), 1);
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSEL, 1, 0), 0);
  EXPECT_THAT(clicked, ElementsAre("lstSites", "lstSites", "lstSites"));
}

TEST_F(ControlsTest, TheSelectionOfTheStateIsDrawn) {
  fill(frmMain.lstSites, {"Shop", "News"});
  frmMain.lstSites.setSelected(0, true);
  frmMain.lstOutput.addItem("line");
  frmMain.lstOutput.setListIndex(0);
  hand.look();
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSEL, 0, 0), 1);
  EXPECT_EQ(SendMessageW(main("lstOutput"), LB_GETCURSEL, 0, 0), 0);
  frmMain.lstSites.setSelected(0, false);
  frmMain.lstOutput.setListIndex(-1);
  hand.look();
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSEL, 0, 0), 0);
  EXPECT_EQ(SendMessageW(main("lstOutput"), LB_GETCURSEL, 0, 0), LB_ERR);
}

TEST_F(ControlsTest, AListWithoutMarksKeepsOneEntryAtAClick) {
  fill(frmMain.lstExclude, {"a", "b", "c"});
  hand.clickEntry(main("lstExclude"), 0);
  hand.clickEntry(main("lstExclude"), 2);
  EXPECT_EQ(frmMain.lstExclude.selCount(), 1);
  EXPECT_TRUE(frmMain.lstExclude.selected(2));
}

TEST_F(ControlsTest, ADoubleClickAndTheReturnKeyRunTheSameRoutine) {
  fill(frmMain.lstDirectories(0), {"D:\\a", "D:\\b"});
  frmMain.lstDirectories(0).onDblClick = [this] {
    clicked.push_back("double-click " + std::to_string(frmMain.lstDirectories(0).listIndex()));
  };
  hand.clickEntry(main("lstDirectories"), 1, true);
  hand.focus(main("lstDirectories"));
  hand.key(VK_RETURN);
  EXPECT_THAT(clicked, ElementsAre("double-click 1", "double-click 1"));
}

TEST_F(ControlsTest, KeysReachTheRoutinesOfAList) {
  fill(frmMain.lstExclude, {"a", "b"});
  std::vector<std::int32_t> pressed;
  std::vector<std::int32_t> released;
  frmMain.lstExclude.onKeyPress = [&](std::int32_t code) { pressed.push_back(code); };
  frmMain.lstExclude.onKeyUp = [&](std::int32_t code) { released.push_back(code); };
  hand.focus(main("lstExclude"));
  hand.key(VK_BACK);
  hand.key(VK_DELETE);
  EXPECT_THAT(pressed, ElementsAre(key::kBackspace));
  EXPECT_THAT(released, ElementsAre(key::kBackspace, key::kDelete));
}

TEST_F(ControlsTest, TheSpaceBarMarksTheEntryInHandOnce) {
  fill(frmMain.lstSites, {"Shop", "News"});
  count(frmMain.lstSites);
  hand.focus(main("lstSites"));
  hand.key(VK_DOWN);
  hand.key(VK_SPACE);
  EXPECT_FALSE(frmMain.lstSites.selected(0));
  EXPECT_TRUE(frmMain.lstSites.selected(1));
  EXPECT_THAT(clicked, ElementsAre("lstSites"));
}

// Who marks quickly must not lose what he has marked while the first site's details are read.
TEST_F(ControlsTest, MarksThatComeWhileAnEarlierOneIsDealtWithStay) {
  fill(frmMain.lstSites, {"Shop", "News", "Mail"});
  const auto post = [](std::initializer_list<WPARAM> keys) {
    for (const WPARAM each : keys) PostMessageW(main("lstSites"), WM_KEYDOWN, each, 1);
  };
  bool isFirst = true;
  frmMain.lstSites.onClick = [&] {
    if (!std::exchange(isFirst, false)) return;
    post({VK_DOWN, VK_SPACE});
    platform().events->doEvents();
  };
  hand.focus(main("lstSites"));
  post({VK_SPACE});
  post({VK_DOWN, VK_SPACE});
  hand.look();
  EXPECT_EQ(frmMain.lstSites.selCount(), 3);
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSELCOUNT, 0, 0), 3);
}

TEST_F(ControlsTest, ADropDownShowsAndTakesAChoice) {
  count(frmMain.lstIMIISVer);
  EXPECT_THAT(Hand::entriesOf(main("lstIMIISVer")), ElementsAre("IIS4", "IIS5", "IIS6"));
  EXPECT_EQ(SendMessageW(main("lstIMIISVer"), CB_GETCURSEL, 0, 0), CB_ERR);
  hand.focus(main("lstIMIISVer"));
  hand.key(VK_DOWN);
  EXPECT_EQ(frmMain.lstIMIISVer.listIndex(), 0);
  EXPECT_THAT(clicked, ElementsAre("lstIMIISVer"));
  frmMain.lstIMIISVer.setListIndex(2);
  hand.look();
  EXPECT_EQ(SendMessageW(main("lstIMIISVer"), CB_GETCURSEL, 0, 0), 2);
}

TEST_F(ControlsTest, TheWheelDoesNotChangeADropDown) {
  frmMain.lstIMIISVer.setListIndex(1);
  hand.look();
  hand.focus(main("lstIMIISVer"));
  PostMessageW(main("lstIMIISVer"), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA), 0);
  hand.look();
  EXPECT_EQ(frmMain.lstIMIISVer.listIndex(), 1);
  EXPECT_EQ(SendMessageW(main("lstIMIISVer"), CB_GETCURSEL, 0, 0), 1);
}

TEST_F(ControlsTest, StatusBarAndProgressBarShowTheirState) {
  frmMain.StatusBar1.panel = "Listing sites";
  frmMain.ProgressBar1.setMax(4);
  frmMain.ProgressBar1.setValue(1);
  hand.look();
  std::array<wchar_t, 64> text{};
  SendMessageW(main("StatusBar1"), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text.data()));
  EXPECT_EQ(utf8Text(text.data()), "Listing sites");
  EXPECT_EQ(SendMessageW(main("ProgressBar1"), PBM_GETPOS, 0, 0), 250);
}

TEST_F(ControlsTest, ATimerTicksWhileItIsOn) {
  int ticks = 0;
  frmMain.timAd1.interval = 10;
  frmMain.timAd1.onTimer = [&] { ++ticks; };
  frmMain.timAd1.enabled = true;
  EXPECT_TRUE(hand.waitFor([&] { return ticks >= 2; }));
  frmMain.timAd1.enabled = false;
  hand.look();
  const int former = ticks;
  EXPECT_FALSE(hand.waitFor([&, looks = 0]() mutable { return ticks > former || ++looks > 20; }) &&
               ticks > former);
}

TEST_F(ControlsTest, TooltipsTellOfControlsTabsEntriesAndFrames) {
  fill(frmMain.lstFolders(0), {"/ROOT/a/very/long/path"});
  EXPECT_EQ(hand.tipAt(main("optExportFTP"), {3, 3}), "Click this option if you want to export ftp sites");
  EXPECT_EQ(hand.tipAt(main("lstFolders"), {20, 5}), "/ROOT/a/very/long/path") << "which may be cut off";
  RECT tab{};
  SendMessageW(main("TabImportType"), TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&tab));
  EXPECT_EQ(hand.tipAt(main("TabImportType"), {tab.left + 5, tab.top + 5}), "Import sites from the database");

  const HWND top = Hand::window("Trelvin Utility");
  RECT frame{};
  GetWindowRect(main("Frame4"), &frame);
  POINT corner{frame.right - 4, frame.bottom - 4};
  ScreenToClient(top, &corner);
  EXPECT_EQ(hand.tipAt(top, corner), "Select the type of site you want to export");
  frmMain.Frame4.tooltip = "Something else";
  EXPECT_EQ(hand.tipAt(top, corner), "Something else");
}

}  // namespace
}  // namespace trelvin::test
