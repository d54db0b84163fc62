// What the windows look like: room for everything, an order of the Tab key, a name for every input.
#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QMainWindow>
#include <QStatusBar>

#include "core/start_up.h"
#include "desktop/layout.h"
#include "desktop/qt/texts.h"
#include "desktop_qt/desktop_test.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using desktop::fromQt;
using ::testing::ElementsAre;

// What a screen reader is told.
std::string heard(QWidget& widget, QAccessible::Text what) {
  return fromQt(QAccessible::queryAccessibleInterface(&widget)->text(what));
}

// The controls of a window that can be seen, frames left out, in the window's own coordinates.
std::vector<std::pair<std::string, QRect>> placesOf(const Form& form, const QWidget& window) {
  std::vector<std::pair<std::string, QRect>> places;
  for (const Control* control : form.controls()) {
    const auto* widget = window.findChild<QWidget*>(desktop::toQt(control->name));
    if (widget == nullptr || !widget->isVisible() || dynamic_cast<const Frame*>(control) != nullptr) continue;
    places.emplace_back(control->name, QRect(widget->mapTo(&window, QPoint(0, 0)), widget->size()));
  }
  return places;
}

// Whatever can be seen lies within the window, over nothing else, and has the room that it needs.
void expectRoomForAll(const Form& form, const QWidget& window) {
  const auto places = placesOf(form, window);
  EXPECT_FALSE(places.empty());
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto& [name, place] = places[i];
    EXPECT_TRUE(window.rect().contains(place)) << name;
    const auto* const widget = window.findChild<QWidget*>(desktop::toQt(name));
    const QSize needed = widget->minimumSizeHint();
    EXPECT_GE(place.width(), name == "StatusBar1" ? 0 : needed.width()) << name;
    EXPECT_GE(place.height(), needed.height()) << name;
    for (std::size_t other = i + 1; other < places.size(); ++other) {
      EXPECT_FALSE(place.intersects(places[other].second)) << name << " and " << places[other].first;
    }
  }
}

class LooksTest : public DesktopTest {
 protected:
  LooksTest() {
    addServers();
    openProgram();
  }
  static QWidget& window() { return *Person::window("Trelvin Utility"); }
  void resizeTo(QSize size) {
    window().resize(size);
    person.look();
    person.look();
    ASSERT_EQ(window().size(), size);
  }
};

TEST_F(LooksTest, HasRoomForEverythingFromTheSmallScreenToTheLargeInEveryState) {
  listWeb1();
  person.clickEntry("lstSites", 0);
  for (const QSize size : {QSize(800, 570), QSize(1024, 768), QSize(1600, 1000)}) {
    resizeTo(size);
    for (int exportTab = 1; exportTab <= 2; ++exportTab) {
      person.chooseTab("TabExportType", exportTab);
      for (int mappingTab = 1; mappingTab <= 4; ++mappingTab) {
        person.chooseTab("tabNewValues", mappingTab);
        expectRoomForAll(frmMain, window());
      }
    }
  }
}

TEST_F(LooksTest, FitsOnAScreenOf800By600WithAFrameAround) {
  EXPECT_LE(window().minimumSizeHint().width(), 790);
  EXPECT_LE(window().minimumSizeHint().height(), 570);
}

TEST_F(LooksTest, GivesTheRoomOfALargeScreenToItsLists) {
  resizeTo({800, 570});
  const auto sizeOf = [](const char* name) { return Person::see(name).size(); };
  const QSize sites = sizeOf("lstSites");
  const QSize outputBefore = sizeOf("lstOutput");
  const QSize button = sizeOf("cmdPopulate");
  resizeTo({1600, 1000});
  EXPECT_GT(sizeOf("lstSites").height(), sites.height() * 3 / 2);
  EXPECT_GT(sizeOf("lstOutput").height(), outputBefore.height() * 3 / 2);
  EXPECT_GT(sizeOf("lstOutput").width(), outputBefore.width() * 3 / 2);
  EXPECT_EQ(sizeOf("cmdPopulate").height(), button.height());
}

TEST_F(LooksTest, StaysInItsPlacesWhenAChoiceHidesControls) {
  const QRect before = Person::see("lstSites").geometry();
  const QRect mapping = Person::see("fraNewValues").geometry();
  person.chooseTab("TabExportType", 2);
  EXPECT_EQ(Person::see("fraNewValues").geometry(), mapping);
  person.chooseTab("TabImportType", 2);
  EXPECT_EQ(Person::see("lstSites").geometry(), before);
}

TEST_F(LooksTest, TheTabKeyGoesThroughWhatCanBeTouchedInTheOrderOfTheLayout) {
  std::vector<std::string> expected;
  for (const std::string& name : desktop::tabOrder(frmMain, desktop::mainLayout())) {
    const auto* const widget = window().findChild<QWidget*>(desktop::toQt(name));
    // Of options the Tab key reaches the one that is set; the arrow keys reach the others.
    const auto* const option = dynamic_cast<const OptionButton*>(frmMain.control(name));
    if (widget->isVisible() && widget->isEnabled() && (option == nullptr || option->value()))
      expected.push_back(name);
  }
  Person::see("TabImportType").setFocus();
  std::vector<std::string> visited{Person::focus()};
  for (std::size_t i = 1; i < expected.size(); ++i) {
    person.key(Qt::Key_Tab);
    visited.push_back(Person::focus());
  }
  EXPECT_EQ(visited, expected);
  person.key(Qt::Key_Tab);
  EXPECT_EQ(Person::focus(), expected.front()) << "and begins anew";
}

TEST_F(LooksTest, TellsAReaderForTheBlindWhatEveryInputIs) {
  for (const std::string& name : desktop::tabOrder(frmMain, desktop::mainLayout())) {
    auto* const widget = window().findChild<QWidget*>(desktop::toQt(name));
    EXPECT_NE(heard(*widget, QAccessible::Name), "") << name;
    EXPECT_NE(widget->focusPolicy(), Qt::NoFocus) << name;
  }
  EXPECT_EQ(heard(Person::see("cmdPopulate"), QAccessible::Name), "List Sites");
  EXPECT_EQ(heard(Person::see("txtImportServer"), QAccessible::Name), "Server");
  EXPECT_EQ(heard(Person::see("lstSites"), QAccessible::Name), "Available Sites");
}

TEST_F(LooksTest, TellsAReaderForTheBlindWhatHasChanged) {
  EXPECT_EQ(heard(Person::see("cmdExportServer"), QAccessible::Name), "Export");
  EXPECT_EQ(heard(Person::see("lstSites"), QAccessible::Description),
            "This is the list of sites available for export");
  frmMain.cmdExportServer.caption = "Abort";
  frmMain.lstSites.tooltip = "Nothing to export";
  person.look();
  EXPECT_EQ(heard(Person::see("cmdExportServer"), QAccessible::Name), "Abort");
  EXPECT_EQ(heard(Person::see("lstSites"), QAccessible::Description), "Nothing to export");
}

TEST_F(LooksTest, HasTheTooltipsOfTheState) {
  EXPECT_EQ(fromQt(Person::see("lstSites").toolTip()), "This is the list of sites available for export");
  EXPECT_EQ(fromQt(Person::see("fraImportType").toolTip()), "Select the location to import sites from");
}

TEST_F(LooksTest, TheOtherWindowsHaveRoomForEverythingToo) {
  for (const auto& [form, title] :
       {std::pair<Form*, const char*>{&frmSplash, "Welcome to the Trelvin Utility"},
        {&frmPermProgress, ""},
        {&frmDatabaseSelect, "Database Setup"}}) {
    form->loaded = true;
    form->visible = true;
    person.look();
    for (QWidget* each : QApplication::topLevelWidgets()) {
      const bool isItsWindow = each->isVisible() && fromQt(each->windowTitle()) == form->caption;
      if (isItsWindow) expectRoomForAll(*form, *each);
    }
    EXPECT_EQ(form->caption, title);
    form->loaded = false;
    person.look();
  }
}

TEST_F(LooksTest, TheWelcomeFormContinuesWithReturnAndLeavesWithEscape) {
  frmSplash.loaded = true;
  frmSplash.visible = true;
  int continued = 0;
  int left = 0;
  frmSplash.cmdContinue.onClick = [&] { ++continued; };
  frmSplash.cmdExit.onClick = [&] { ++left; };
  person.look();
  // An X server gives a window the focus some time after it was asked to.
  ASSERT_TRUE(person.waitFor([] { return Person::focus() == "cmdContinue"; }));
  person.key(Qt::Key_Return);
  person.key(Qt::Key_Escape);
  EXPECT_EQ(continued, 1);
  EXPECT_EQ(left, 1);
  frmSplash.loaded = false;
}

TEST_F(LooksTest, CancelOfThePermissionProgressTakesItAway) {
  frmPermProgress.loaded = true;
  frmPermProgress.visible = true;
  person.look();
  EXPECT_EQ(fromQt(Person::see<QLabel>("filesCompleted").text()), "Files completed 0...");
  person.click("cmdCancel");
  EXPECT_FALSE(frmPermProgress.loaded);
  EXPECT_FALSE(Person::canSee("filesCompleted"));
}

}  // namespace
}  // namespace trelvin::test
