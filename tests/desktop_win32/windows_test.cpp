#include <algorithm>
#include <array>
#include <cwchar>
#include <filesystem>

#include "core/main_window.h"
#include "desktop_win32/desktop_win32_test.h"
#include "fakes/people.h"
#include "fakes/temp_folder.h"
#include "platform/platform.h"
#include "platform/windows/file_system.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"
#include "window/frm_splash.h"
// clang-format off
#include <commctrl.h>  // stands on Windows' own header
// clang-format on

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

class WindowsTest : public DesktopWin32Test {
 protected:
  static RECT roomOf(HWND window) {
    RECT room{};
    GetWindowRect(window, &room);
    return room;
  }
  static long widthOf(HWND window) { return roomOf(window).right - roomOf(window).left; }
  static long fontHeightOf(HWND window) {
    LOGFONTW face{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof face, &face);
    return std::abs(face.lfHeight);
  }
  // The control of the main window that has the focus.
  static std::string inHand() {
    for (const Control* control : frmMain.controls()) {
      if (desktop::numberOf(frmMain, *control) == GetDlgCtrlID(GetFocus())) return control->name;
    }
    return {};
  }
  static HWND mainWindow() { return Hand::window("Trelvin Utility"); }
  static HWND databaseWindow() { return Hand::window(frmDatabaseSelect.caption); }
};

TEST_F(WindowsTest, EveryControlOfALayoutHasItsPlaceAndNoTwoCrossOver) {
  for (const desktop::Window& window : desktop::windows()) {
    Form& form = *window.form;
    if (form.caption.empty()) form.caption = "Some window";
    show(form);
    std::vector<std::pair<std::string, RECT>> placed;
    desktop::forEachControl(window.layout.body, [&](const desktop::Place& place) {
      const HWND control = Hand::see(form, place.control);
      ASSERT_NE(control, nullptr) << place.control;
      if (!place.places.empty() || IsWindowVisible(control) == FALSE) return;
      if (form.control(place.control)->caption.empty() && dynamic_cast<Label*>(form.control(place.control)))
        return;
      const RECT room = roomOf(control);
      const RECT around = roomOf(GetAncestor(control, GA_ROOT));
      EXPECT_GT(room.right, room.left) << place.control;
      EXPECT_GT(room.bottom, room.top) << place.control;
      EXPECT_TRUE(room.left >= around.left && room.right <= around.right && room.top >= around.top &&
                  room.bottom <= around.bottom)
          << place.control;
      for (const auto& [other, otherRoom] : placed) {
        RECT common{};
        EXPECT_FALSE(IntersectRect(&common, &room, &otherRoom)) << place.control << " over " << other;
      }
      placed.emplace_back(place.control, room);
    });
    EXPECT_FALSE(placed.empty());
    form.loaded = false;
    form.visible = false;
    hand.look();
  }
}

TEST_F(WindowsTest, TheTabKeyFollowsTheLayoutAndComesAround) {
  show(frmMain);
  std::vector<std::string> expected;
  for (const std::string& each : desktop::tabOrder(frmMain, desktop::mainLayout())) {
    const HWND control = main(each);
    const bool isStop = (GetWindowLongPtrW(control, GWL_STYLE) & WS_TABSTOP) != 0;
    if (isStop && IsWindowVisible(control) != FALSE && IsWindowEnabled(control) != FALSE)
      expected.push_back(each);
  }
  std::vector<std::string> reached;
  hand.focus(main("TabImportType"));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    reached.push_back(inHand());
    hand.key(VK_TAB);
  }
  EXPECT_EQ(reached, expected);
  EXPECT_EQ(inHand(), expected.front());
  // Of the site types none is chosen, so that the first is reached.
  EXPECT_THAT(reached,
              IsSupersetOf({"txtImportServer", "lstIMIISVer", "cmdPopulate", "optExportWeb", "lstSites",
                            "txtAddExclusion", "txtExportServer", "tabNewValues", "lstOutput"}));
}

TEST_F(WindowsTest, LabelsLeadToTheirControlsByTheirKeys) {
  show(frmMain);
  hand.focus(main("lstOutput"));
  hand.accessKey('p');
  EXPECT_EQ(inHand(), "txtExportServer");
  hand.accessKey('v');
  EXPECT_EQ(inHand(), "txtImportServer");
  hand.accessKey('b');
  EXPECT_EQ(inHand(), "lstSites");
  count(frmMain.cmdPopulate);
  hand.accessKey('l');
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate"));
}

TEST_F(WindowsTest, EveryMenuEntryRunsItsRoutineOnce) {
  show(frmMain);
  std::vector<std::string> expected;
  const HMENU bar = GetMenu(mainWindow());
  const auto menus = desktop::mainLayout().menus;
  ASSERT_EQ(GetMenuItemCount(bar), static_cast<int>(menus.size()));
  for (std::size_t i = 0; i < menus.size(); ++i) {
    const HMENU popup = GetSubMenu(bar, static_cast<int>(i));
    ASSERT_EQ(GetMenuItemCount(popup), static_cast<int>(menus[i].entries.size()));
    for (std::size_t j = 0; j < menus[i].entries.size(); ++j) {
      const std::string& name = menus[i].entries[j];
      if (name.empty()) continue;
      count(dynamic_cast<MenuEntry&>(*frmMain.control(name)));
      SendMessageW(mainWindow(), WM_COMMAND, GetMenuItemID(popup, static_cast<int>(j)), 0);
      hand.look();
      expected.push_back(name);
    }
  }
  EXPECT_EQ(clicked, expected);
}

TEST_F(WindowsTest, MenuEntriesAreSwitchedOffAndOnWithTheState) {
  show(frmMain);
  const auto stateOfExit = [] {
    const auto number = static_cast<UINT>(desktop::numberOf(frmMain, frmMain.mnuExit));
    return GetMenuState(GetMenu(mainWindow()), number, MF_BYCOMMAND);
  };
  EXPECT_EQ(stateOfExit() & MF_GRAYED, 0U);
  frmMain.mnuExit.enabled = false;
  hand.look();
  EXPECT_NE(stateOfExit() & MF_GRAYED, 0U);
  frmMain.mnuExit.visible = false;
  hand.look();
  EXPECT_EQ(stateOfExit(), static_cast<UINT>(-1));
}

TEST_F(WindowsTest, TheReturnKeyPressesTheButtonOfATextBox) {
  show(frmMain);
  count(frmMain.cmdPopulate);
  count(frmMain.cmdAddExclusion);
  hand.focus(main("txtImportServer"));
  hand.key(VK_RETURN);
  hand.focus(main("txtAddExclusion"));
  hand.key(VK_RETURN);
  hand.focus(main("txtExportServer"));
  hand.key(VK_RETURN);
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate", "cmdAddExclusion"));
}

TEST_F(WindowsTest, ReturnAndEscapePressTheButtonsOfTheWelcome) {
  show(frmSplash);
  count(frmSplash.cmdContinue);
  count(frmSplash.cmdExit);
  hand.key(VK_RETURN);
  hand.key(VK_ESCAPE);
  hand.focus(Hand::see(frmSplash, "cmdExit"));
  hand.key(VK_RETURN);
  EXPECT_THAT(clicked, ElementsAre("cmdContinue", "cmdExit", "cmdExit"))
      << "Return presses the button in hand";
}

TEST_F(WindowsTest, AWindowGoesWithItsForm) {
  show(frmSplash);
  EXPECT_NE(Hand::see(frmSplash, "cmdExit"), nullptr);
  frmSplash.visible = false;
  hand.look();
  EXPECT_EQ(Hand::see(frmSplash, "cmdExit"), nullptr);
}

TEST_F(WindowsTest, ClosingAWindowIsAWishThatIsCarriedOutInItsTurn) {
  show(frmSplash);
  SendMessageW(GetAncestor(Hand::see(frmSplash, "cmdExit"), GA_ROOT), WM_CLOSE, 0, 0);
  EXPECT_TRUE(frmSplash.loaded) << "only noted so far";
  hand.look();
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_EQ(Hand::see(frmSplash, "cmdExit"), nullptr);
}

TEST_F(WindowsTest, EscapeTakesTheDatabaseWindowAway) {
  show(frmDatabaseSelect);
  hand.key(VK_ESCAPE);
  EXPECT_FALSE(frmDatabaseSelect.visible);
}

TEST_F(WindowsTest, AModalWindowTakesTheTouchOfTheOthers) {
  show(frmMain);
  frmDatabaseSelect.owner = &frmMain;
  show(frmDatabaseSelect);
  EXPECT_FALSE(IsWindowEnabled(mainWindow()));
  frmDatabaseSelect.loaded = false;
  frmDatabaseSelect.visible = false;
  hand.look();
  EXPECT_TRUE(IsWindowEnabled(mainWindow()));
  EXPECT_EQ(GetActiveWindow(), mainWindow());
}

TEST_F(WindowsTest, AWindowComesUpInTheMiddleOfItsOwner) {
  show(frmMain);
  frmDatabaseSelect.owner = &frmMain;
  show(frmDatabaseSelect);
  const RECT owner = roomOf(mainWindow());
  const RECT own = roomOf(databaseWindow());
  EXPECT_NEAR(own.left - owner.left, owner.right - own.right, 1);
  EXPECT_NEAR(own.top - owner.top, owner.bottom - own.bottom, 1);
}

TEST_F(WindowsTest, AWindowIsSeenAsAWholeWhenItsOwnerHangsOverAnEdgeOfTheScreen) {
  RECT screen{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
  frmDatabaseSelect.owner = &frmMain;
  for (const POINT corner : {POINT{-700, -500}, POINT{screen.right - 100, screen.bottom - 100}}) {
    show(frmMain);
    SetWindowPos(mainWindow(), nullptr, corner.x, corner.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    show(frmDatabaseSelect);
    const RECT own = roomOf(databaseWindow());
    RECT seen{};
    IntersectRect(&seen, &own, &screen);
    EXPECT_TRUE(EqualRect(&seen, &own)) << own.left << ", " << own.top;
    frmDatabaseSelect.loaded = false;
    frmDatabaseSelect.visible = false;
    hand.look();
  }
}

TEST_F(WindowsTest, TheFocusGoesOnWhenItsControlIsSwitchedOff) {
  show(frmMain);
  hand.focus(main("cmdPopulate"));
  frmMain.cmdPopulate.enabled = false;
  hand.look();
  const HWND focus = GetFocus();
  EXPECT_NE(focus, main("cmdPopulate"));
  EXPECT_TRUE(IsChild(mainWindow(), focus));
  EXPECT_TRUE(IsWindowEnabled(focus));
}

TEST_F(WindowsTest, TheFormHearsTheSizeOfItsWindowInTwips) {
  show(frmMain);
  SetWindowPos(mainWindow(), nullptr, 0, 0, 1100, 900, SWP_NOMOVE | SWP_NOZORDER);
  hand.look();
  EXPECT_EQ(frmMain.width, 1100 * 15);
  EXPECT_EQ(frmMain.height, 900 * 15);
  EXPECT_EQ(widthOf(mainWindow()), 1100) << "and doesn't ask for another one";
}

TEST_F(WindowsTest, TheWindowTakesTheSizeThatTheFormWants) {
  show(frmMain);
  frmMain.setSize(1200 * 15, 950 * 15);
  hand.look();
  EXPECT_EQ(widthOf(mainWindow()), 1200);
}

TEST_F(WindowsTest, AWindowGetsNoSmallerThanItsControlsNeed) {
  show(frmMain);
  MINMAXINFO limits{};
  SendMessageW(mainWindow(), WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
  EXPECT_GT(limits.ptMinTrackSize.x, 400);
  frmMain.setSize(15, 15);
  hand.look();
  EXPECT_EQ(widthOf(mainWindow()), limits.ptMinTrackSize.x);
}

TEST_F(WindowsTest, TheFormHearsWhetherItsWindowIsMinimizedOrMaximized) {
  show(frmMain);
  ShowWindow(mainWindow(), SW_MINIMIZE);
  hand.look();
  EXPECT_EQ(frmMain.windowState, 1);
  const std::int32_t width = frmMain.width;
  ShowWindow(mainWindow(), SW_RESTORE);
  hand.look();
  EXPECT_EQ(frmMain.windowState, 0);
  EXPECT_EQ(frmMain.width, width);
  ShowWindow(mainWindow(), SW_MAXIMIZE);
  hand.look();
  EXPECT_EQ(frmMain.windowState, 2);
}

TEST_F(WindowsTest, OnAFinerScreenEverythingGrowsAndTheFormKeepsItsMeasure) {
  show(frmMain);
  const long font = fontHeightOf(main("cmdPopulate"));
  const long button = widthOf(main("cmdPopulate"));
  const RECT wanted{0, 0, 1260, 1005};
  SendMessageW(mainWindow(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&wanted));
  hand.look();
  EXPECT_NEAR(static_cast<double>(fontHeightOf(main("cmdPopulate"))), static_cast<double>(font) * 1.5, 1.0);
  EXPECT_GT(widthOf(main("cmdPopulate")), button * 5 / 4);
  EXPECT_EQ(widthOf(mainWindow()), 1260);
  EXPECT_EQ(frmMain.width, 840 * 15) << "of a usual screen";
}

// What is left of a tab beside its caption.
long roomInTab(HWND tabs, int index) {
  RECT tab{};
  SendMessageW(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&tab));
  std::array<wchar_t, 64> caption{};
  TCITEMW item{};
  item.mask = TCIF_TEXT;
  item.pszText = caption.data();
  item.cchTextMax = static_cast<int>(caption.size());
  SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
  const HDC device = GetDC(tabs);
  SelectObject(device, reinterpret_cast<HFONT>(SendMessageW(tabs, WM_GETFONT, 0, 0)));
  SIZE text{};
  GetTextExtentPoint32W(device, caption.data(), static_cast<int>(std::wcslen(caption.data())), &text);
  ReleaseDC(tabs, device);
  return tab.right - tab.left - text.cx;
}

TEST_F(WindowsTest, CaptionsOfTabsHaveTheirRoomOnAFineScreenToo) {
  show(frmMain);
  const int database = 1;
  const long usual = roomInTab(main("TabImportType"), database);
  const RECT wanted{0, 0, 1680, 1340};
  SendMessageW(mainWindow(), WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&wanted));
  hand.look();
  EXPECT_GE(roomInTab(main("TabImportType"), database), usual + 12);
}

TEST_F(WindowsTest, AWindowOfTheSizeOfItsTextsGrowsWithThem) {
  frmPermProgress.caption = "Progress";
  frmPermProgress.currentPath.caption = "C:\\a";
  show(frmPermProgress);
  const HWND window = Hand::window("Progress");
  const long narrow = widthOf(window);
  frmPermProgress.currentPath.caption = "C:\\a folder with a rather long name\\and another one\\in it";
  hand.look();
  const long wide = widthOf(window);
  EXPECT_GT(wide, narrow);
  frmPermProgress.currentPath.caption = "C:\\a";
  hand.look();
  EXPECT_EQ(widthOf(window), wide) << "and doesn't jump back with each shorter one";
}

TEST_F(WindowsTest, ARoutineThatYieldsLetsTheWindowBeTouched) {
  show(frmMain);
  count(frmMain.cmdAddExclusion);
  frmMain.cmdPopulate.onClick = [this] {
    PostMessageW(main("cmdAddExclusion"), BM_CLICK, 0, 0);
    platform().events->doEvents();
    clicked.emplace_back("after");
  };
  hand.click(main("cmdPopulate"));
  EXPECT_THAT(clicked, ElementsAre("cmdAddExclusion", "after"));
}

TEST_F(WindowsTest, ARoutineDoesNotGoOnWhenTheMainWindowHasGoneMeanwhile) {
  show(frmMain);
  count(frmMain.cmdAddExclusion);
  frmMain.cmdAddExclusion.onClick = [] {
    frmMain.loaded = false;
    frmMain.visible = false;
  };
  frmMain.cmdPopulate.onClick = [this] {
    PostMessageW(main("cmdAddExclusion"), BM_CLICK, 0, 0);
    platform().events->doEvents();
    clicked.emplace_back("after");
  };
  EXPECT_THROW(hand.click(main("cmdPopulate")), ProcessEnded);
  EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(WindowsTest, ProgressOfLongWorkIsShownUntilTheNextYield) {
  show(frmMain);
  platform().events->showProgress("Copying", 3, 12);
  const HWND box = Hand::window("Copying");
  ASSERT_NE(box, nullptr);
  EXPECT_NE(FindWindowExW(box, nullptr, nullptr, L"3 of 12 files copied"), nullptr);
  platform().events->showProgress("Copying", 4, 12);
  EXPECT_NE(FindWindowExW(box, nullptr, nullptr, L"4 of 12 files copied"), nullptr);
  platform().events->doEvents();
  EXPECT_EQ(Hand::window("Copying"), nullptr);
}

// Windows asks and then tells all windows of a program.
class EndOfSessionTest : public WindowsTest {
 protected:
  EndOfSessionTest() {
    platform().clock = std::make_unique<StoppedClock>();
    platform().files = makeFileSystem();
    std::filesystem::current_path(folder_.path());
    show(frmMain);
  }
  ~EndOfSessionTest() override { std::filesystem::current_path(former_); }
  EndOfSessionTest(const EndOfSessionTest&) = delete;
  EndOfSessionTest& operator=(const EndOfSessionTest&) = delete;

  static void logOff(bool isAgreed = true) {
    EXPECT_NE(SendMessageW(mainWindow(), WM_QUERYENDSESSION, 0, static_cast<LPARAM>(ENDSESSION_LOGOFF)), 0);
    SendMessageW(mainWindow(), WM_ENDSESSION, isAgreed ? TRUE : FALSE,
                 static_cast<LPARAM>(ENDSESSION_LOGOFF));
  }
  void expectClosed() const {
    EXPECT_FALSE(frmMain.loaded);
    EXPECT_EQ(folder_.has("Trelvin.log") ? folder_.read("Trelvin.log") : "",
              "\"NOW Closing...\"\r\n\"NOW Closing complete\"\r\n");
  }
  // Waits for its turn behind the message.
  void expectEnd() { EXPECT_THROW(hand.look(), ProcessEnded); }

 private:
  TempFolder folder_;
  std::filesystem::path former_ = std::filesystem::current_path();
};

TEST_F(EndOfSessionTest, TheProgramIsClosedBeforeWindowsHasItsAnswer) {
  logOff();
  expectClosed();
  expectEnd();
}

TEST_F(EndOfSessionTest, ItStaysWhenAnotherProgramHasObjected) {
  logOff(false);
  EXPECT_TRUE(frmMain.loaded);
  EXPECT_NO_THROW(hand.look());
}

TEST_F(EndOfSessionTest, ARoutineThatIsAtWorkDoesNotGoOn) {
  frmMain.cmdPopulate.onClick = [this] {
    logOff();
    expectClosed();
    platform().events->doEvents();
    clicked.emplace_back("after");
  };
  EXPECT_THROW(hand.click(main("cmdPopulate")), ProcessEnded);
  EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(EndOfSessionTest, NorDoesOneThatShowsHowFarItIs) {
  frmMain.cmdPopulate.onClick = [this] {
    logOff();
    platform().events->showProgress("Copying", 3, 12);
    clicked.emplace_back("after");
  };
  EXPECT_THROW(hand.click(main("cmdPopulate")), ProcessEnded);
  EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(EndOfSessionTest, NorDoesOneWithABox) {
  hand.willDo([this](HWND /*box*/) {
    logOff();
    expectClosed();
  });
  frmMain.cmdPopulate.onClick = [this] {
    platform().dialogs->showMessage({.text = "Done!"});
    clicked.emplace_back("after");
  };
  EXPECT_THROW(hand.click(main("cmdPopulate")), ProcessEnded);
  EXPECT_THAT(clicked, IsEmpty());
}

}  // namespace
}  // namespace trelvin::test
