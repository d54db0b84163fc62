// Every control once, with mouse or keys, and what the window then shows.
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>
#include <utility>

#include "core/main_window.h"
#include "core/run_state.h"
#include "desktop/qt/texts.h"
#include "desktop_qt/desktop_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TouchingTest : public DesktopTest {
 protected:
  TouchingTest() {
    addServers();
    openProgram();
  }
  // Counts instead of what the control does.
  template <typename Kind>
  void count(Kind& control) {
    control.onClick = [this, name = control.name] { clicked.push_back(name); };
  }

  std::vector<std::string> clicked;
};

TEST_F(TouchingTest, EveryButtonRunsItsRoutineOnce) {
  listWeb1();
  person.clickEntry("lstSites", 0);
  for (Control* control : frmMain.controls()) {
    if (auto* const button = dynamic_cast<Button*>(control)) count(*button);
  }
  for (const char* button : {"cmdPopulate", "cmdAddExclusion", "cmdExportServer"}) person.click(button);
  person.chooseTab("TabExportType", 2);
  person.click("cmdExportFile");
  const std::vector<std::string> addButtons{"cmdAddIP", "cmdAddSSLIP", "cmdAddNewValue"};
  for (int tab = 2; tab <= 4; ++tab) {
    person.chooseTab("tabNewValues", tab);
    person.click(addButtons.at(static_cast<std::size_t>(tab) - 2));
  }
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate", "cmdAddExclusion", "cmdExportServer", "cmdExportFile",
                                   "cmdAddIP", "cmdAddSSLIP", "cmdAddNewValue"));
}

TEST_F(TouchingTest, EveryMenuEntryRunsItsRoutineOnce) {
  std::vector<std::string> expected;
  for (const desktop::Menu& menu : desktop::mainLayout().menus) {
    for (const std::string& entry : menu.entries) {
      if (entry.empty()) continue;
      count(dynamic_cast<MenuEntry&>(*frmMain.control(entry)));
      person.chooseMenu(menu.control, entry);
      expected.push_back(entry);
    }
  }
  EXPECT_EQ(clicked, expected);
}

TEST_F(TouchingTest, MenusOpenByTheirKeysAndRunTheirEntries) {
  count(frmMain.mnuFixMetabase);
  person.key(Qt::Key_T, Qt::AltModifier);
  person.key(Qt::Key_F);
  EXPECT_THAT(clicked, ElementsAre("mnuFixMetabase"));
}

TEST_F(TouchingTest, ExitClosesTheProgram) {
  person.chooseMenu("mnuFile", "mnuExit");
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_EQ(Person::window("Trelvin Utility"), nullptr);
  EXPECT_TRUE(hasLogged("Closing complete"));
}

TEST_F(TouchingTest, ClosingTheWindowUnloadsTheForm) {
  Person::window("Trelvin Utility")->close();
  EXPECT_TRUE(frmMain.loaded) << "only noted so far";
  person.look();
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_TRUE(hasLogged("Closing complete"));
}

TEST_F(TouchingTest, CheckBoxesStoreTheirStateAndShowWhatHangsOnIt) {
  EXPECT_FALSE(Person::see("chkSetFilePerms").isEnabled());
  person.click("chkCopyFiles");
  EXPECT_TRUE(run.bCopyFiles);
  EXPECT_TRUE(Person::see("chkSetFilePerms").isEnabled());
  EXPECT_FALSE(Person::see("chkFastPermissions").isEnabled());
  person.click("chkSetFilePerms");
  EXPECT_TRUE(Person::see("chkFastPermissions").isEnabled());
  person.click("chkFastPermissions");
  EXPECT_TRUE(run.bFastPerms);
  for (const char* box : {"chkCopyIIS", "chkRunSilent", "chkStartWebs"}) person.click(box);
  EXPECT_FALSE(run.bCopyIIS);
  EXPECT_TRUE(run.bRunSilent);
  EXPECT_TRUE(run.bStartWebs);
  person.click("chkRunSilent");
  EXPECT_FALSE(run.bRunSilent);
}

TEST_F(TouchingTest, ACheckBoxThatItsRoutineTurnsBackIsDrawnBack) {
  frmMain.chkStartWebs.onClick = [this] {
    clicked.push_back("chkStartWebs");
    frmMain.chkStartWebs.onClick = nullptr;
    frmMain.chkStartWebs.setValue(false);
  };
  person.click("chkStartWebs");
  EXPECT_THAT(clicked, ElementsAre("chkStartWebs"));
  EXPECT_FALSE(Person::see<QCheckBox>("chkStartWebs").isChecked());
}

TEST_F(TouchingTest, OptionsExcludeEachOtherAndAnOptionThatIsOnRunsNothing) {
  count(frmMain.optExportFTP);
  count(frmMain.optExportWeb);
  person.click("optExportFTP");
  person.click("optExportFTP");
  EXPECT_THAT(clicked, ElementsAre("optExportFTP"));
  EXPECT_TRUE(Person::see<QRadioButton>("optExportFTP").isChecked());
  EXPECT_FALSE(Person::see<QRadioButton>("optExportWeb").isChecked());
  person.click("optExportWeb");
  EXPECT_TRUE(frmMain.optExportWeb.value());
  for (const char* option : {"optOverwriteWebs", "optOverwritePreserve", "optCreateWebs"}) {
    person.click(option);
    EXPECT_TRUE(dynamic_cast<OptionButton&>(*frmMain.control(option)).value()) << option;
  }
}

TEST_F(TouchingTest, AnOptionGroupWithNoneSetIsDrawnSo) {
  frmMain.optCreateWebs.setValue(false);
  person.look();
  EXPECT_FALSE(Person::see<QRadioButton>("optCreateWebs").isChecked());
}

TEST_F(TouchingTest, TheImportTabsHideTheServerAndTakeTheExportTabAway) {
  auto& exportTabs = Person::see<QTabBar>("TabExportType");
  EXPECT_EQ(exportTabs.count(), 2);
  person.chooseTab("TabExportType", 2);
  EXPECT_TRUE(Person::canSee("fraExportFile"));
  EXPECT_FALSE(Person::canSee("fraExportServer"));
  person.chooseTab("TabImportType", 2);
  EXPECT_FALSE(Person::canSee("txtImportServer"));
  EXPECT_EQ(exportTabs.count(), 1);
  EXPECT_TRUE(Person::canSee("fraExportServer"));
  EXPECT_FALSE(Person::canSee("fraExportFile"));
  person.chooseTab("TabImportType", 1);
  EXPECT_TRUE(Person::canSee("txtImportServer"));
  EXPECT_EQ(exportTabs.count(), 2);
  EXPECT_EQ(desktop::fromQt(exportTabs.tabText(1)), "Database");
}

TEST_F(TouchingTest, EachMappingTabShowsItsListsAndNoOthers) {
  listWeb1();
  person.clickEntry("lstSites", 0);
  const std::vector<std::vector<std::string>> lists{{"lstFolders", "lstDirectories"},
                                                    {"lstOldIPs", "lstNewIPs", "cmdAddIP"},
                                                    {"lstOldSSLIPs", "lstNewSSLIPs", "cmdAddSSLIP"},
                                                    {"lstOldValues", "lstNewValues", "cmdAddNewValue"}};
  for (std::size_t shown = 0; shown < lists.size(); ++shown) {
    person.chooseTab("tabNewValues", static_cast<int>(shown) + 1);
    for (std::size_t each = 0; each < lists.size(); ++each) {
      for (const std::string& control : lists[each])
        EXPECT_EQ(Person::canSee(control), each == shown) << control;
    }
  }
}

TEST_F(TouchingTest, ASiteIsMarkedByAClickAndUnmarkedByAnother) {
  listWeb1();
  person.clickEntry("lstSites", 1);
  person.clickEntry("lstSites", 0);
  EXPECT_EQ(frmMain.lstSites.selCount(), 2);
  const QAbstractItemModel& model = *Person::see<QListView>("lstSites").model();
  EXPECT_EQ(model.index(1, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  person.clickEntry("lstSites", 1);
  EXPECT_EQ(frmMain.lstSites.selCount(), 1);
  EXPECT_TRUE(frmMain.lstSites.selected(0));
  EXPECT_EQ(model.index(1, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
}

// Who marks quickly must not lose what he has marked while the first site's details are read.
TEST_F(TouchingTest, MarksThatComeWhileAnEarlierOneIsDealtWithStay) {
  frmMain.lstSites.onClick = nullptr;
  frmMain.lstSites.clear();
  for (const char* each : {"Shop", "News", "Mail"}) frmMain.lstSites.addItem(each);
  person.look();
  auto& list = Person::see<QListView>("lstSites");
  list.setCurrentIndex(list.model()->index(0, 0));
  list.clearSelection();
  list.setFocus();
  person.look();
  const auto post = [&list](std::initializer_list<Qt::Key> keys) {
    for (const Qt::Key each : keys) {
      const QString text = each == Qt::Key_Space ? " " : "";
      QCoreApplication::postEvent(&list, new QKeyEvent(QEvent::KeyPress, each, Qt::NoModifier, text));
    }
  };
  bool isFirst = true;
  frmMain.lstSites.onClick = [&] {
    if (!std::exchange(isFirst, false)) return;
    post({Qt::Key_Down, Qt::Key_Space});
    platform().events->doEvents();
  };
  post({Qt::Key_Space, Qt::Key_Down, Qt::Key_Space});
  person.look();
  EXPECT_EQ(frmMain.lstSites.selCount(), 3);
  EXPECT_EQ(list.selectionModel()->selectedRows().size(), 3);
}

TEST_F(TouchingTest, AChangeOfTheSelectionRunsTheRoutineOnceHoweverManyEntriesItTakes) {
  listWeb1();
  count(frmMain.lstSites);
  person.clickEntry("lstSites", 0);
  person.key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(frmMain.lstSites.selCount(), 2);
  EXPECT_THAT(clicked, ElementsAre("lstSites", "lstSites"));
}

TEST_F(TouchingTest, WhatTheProgramSelectsIsShownSelected) {
  listWeb1();
  frmMain.lstSites.setSelected(1, true);
  person.look();
  const auto& view = Person::see<QListView>("lstSites");
  EXPECT_TRUE(view.selectionModel()->isRowSelected(1));
  EXPECT_FALSE(view.selectionModel()->isRowSelected(0));
  frmMain.lstSites.clear();
  person.look();
  EXPECT_THAT(shownEntries("lstSites"), IsEmpty());
}

TEST_F(TouchingTest, AVersionIsChosenFromItsListOrByTheArrowKeys) {
  person.dropDown("lstIMIISVer", 2);
  EXPECT_EQ(run.dblIMIISVer, 6);
  person.dropDown("lstEXIISVer", 1);
  EXPECT_EQ(run.dblEXIISVer, 5);
  Person::see("lstEXIISVer").setFocus();
  person.key(Qt::Key_Down);
  EXPECT_EQ(run.dblEXIISVer, 6);
  EXPECT_EQ(desktop::fromQt(Person::see<QComboBox>("lstEXIISVer").currentText()), "IIS6");
}

TEST_F(TouchingTest, TextGoesIntoTheStateAsItIsTypedAndOutOfItWhenItChanges) {
  person.type("txtImportServer", "web9");
  EXPECT_EQ(frmMain.txtImportServer.text, "web9");
  frmMain.txtImportServer.text = "Größe";
  person.look();
  EXPECT_EQ(desktop::fromQt(Person::see<QLineEdit>("txtImportServer").text()), "Größe");
}

TEST_F(TouchingTest, ReturnPressesTheButtonThatBelongsToATextBox) {
  count(frmMain.cmdPopulate);
  count(frmMain.cmdAddExclusion);
  person.type("txtImportServer", "web9");
  person.key(Qt::Key_Return);
  person.type("txtAddExclusion", "AppRoot");
  person.key(Qt::Key_Return);
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate", "cmdAddExclusion"));
}

TEST_F(TouchingTest, AnExclusionIsAddedAndDeletedOneByOneWithTheKeys) {
  person.type("txtAddExclusion", "MyProperty");
  person.click("cmdAddExclusion");
  EXPECT_EQ(shownEntries("lstExclude").back(), "MyProperty");
  const std::int32_t count = frmMain.lstExclude.listCount();
  person.clickEntry("lstExclude", 0);
  person.clickEntry("lstExclude", 2, Qt::ShiftModifier);
  EXPECT_EQ(frmMain.lstExclude.selCount(), 3);
  person.key(Qt::Key_Delete);
  person.key(Qt::Key_Backspace);
  EXPECT_EQ(frmMain.lstExclude.listCount(), count - 2);
  EXPECT_EQ(frmMain.lstExclude.selCount(), 1);
}

TEST_F(TouchingTest, BindingsAndPairsAreAddedChangedAndDeleted) {
  listWeb1();
  person.clickEntry("lstSites", 0);
  person.chooseTab("tabNewValues", 2);
  person.willType("10.9.9.9:80:");
  person.doubleClickEntry("lstNewIPs", 0);
  person.willType("10.9.9.9:81:");
  person.click("cmdAddIP");
  EXPECT_THAT(shownEntries("lstNewIPs"), ElementsAre("10.9.9.9:80:", "10.9.9.9:81:"));
  person.clickEntry("lstNewIPs", 0);
  person.key(Qt::Key_Delete);
  EXPECT_THAT(shownEntries("lstNewIPs"), ElementsAre("10.9.9.9:81:"));
  person.chooseTab("tabNewValues", 3);
  person.willType("10.9.9.9:443:");
  person.click("cmdAddSSLIP");
  EXPECT_THAT(shownEntries("lstNewSSLIPs"), ElementsAre("10.9.9.9:443:"));
  person.chooseTab("tabNewValues", 4);
  person.willType("D:\\old");
  person.willType("E:\\new");
  person.click("cmdAddNewValue");
  EXPECT_THAT(shownEntries("lstOldValues"), ElementsAre("D:\\old"));
  person.clickEntry("lstNewValues", 0);
  person.key(Qt::Key_Backspace);
  EXPECT_THAT(shownEntries("lstOldValues"), IsEmpty());
}

TEST_F(TouchingTest, ReturnOnAListEditsAsADoubleClickDoes) {
  listWeb1();
  person.clickEntry("lstSites", 0);
  person.clickEntry("lstDirectories", 1);
  person.willCancel();
  person.key(Qt::Key_Return);
  EXPECT_THAT(person.boxes, ElementsAre("Directory configuration: Please specify the new directory"));
}

TEST_F(TouchingTest, ControlsAndTabsShowTheirTooltipsOnHover) {
  int tooltips = 0;
  for (const Control* control : frmMain.controls()) {
    if (control->tooltip.empty()) continue;
    EXPECT_EQ(desktop::fromQt(Person::see(control->name).toolTip()), control->tooltip) << control->name;
    ++tooltips;
  }
  EXPECT_GT(tooltips, 0);
  for (const TabStrip* strip : {&frmMain.TabImportType, &frmMain.TabExportType, &frmMain.tabNewValues}) {
    const auto& tabs = Person::see<QTabBar>(strip->name);
    ASSERT_EQ(tabs.count(), strip->tabCount());
    for (int i = 0; i < tabs.count(); ++i) {
      EXPECT_EQ(desktop::fromQt(tabs.tabToolTip(i)), strip->tab(i + 1).tooltip) << strip->name;
    }
  }
}

TEST_F(TouchingTest, TheExportTabThatComesBackHasItsTooltip) {
  person.chooseTab("TabImportType", 2);
  person.chooseTab("TabImportType", 1);
  EXPECT_EQ(desktop::fromQt(Person::see<QTabBar>("TabExportType").tabToolTip(1)),
            "Export your sites to a database");
}

TEST_F(TouchingTest, ThePasswordOfADataSourceIsShownAsItIsTyped) {
  person.chooseMenu("mnuFile", "mnuDBLoc");
  person.type("txtPassword", "secret");
  EXPECT_EQ(desktop::fromQt(Person::see<QLineEdit>("txtPassword").displayText()), "secret");
}

TEST_F(TouchingTest, ALineOfTheOutputIsShownWholeByADoubleClickAndOnHover) {
  frmMain.lstOutput.addItem("A line that is long enough");
  person.look();
  EXPECT_EQ(desktop::fromQt(
                Person::see<QListView>("lstOutput").model()->index(0, 0).data(Qt::ToolTipRole).toString()),
            "A line that is long enough");
  person.willPress("OK");
  person.doubleClickEntry("lstOutput", 0);
  EXPECT_THAT(person.boxes, ElementsAre("Trelvin: A line that is long enough"));
}

TEST_F(TouchingTest, TheOutputScrollsToItsNewestLine) {
  for (int i = 0; i < 500; ++i) frmMain.lstOutput.addItem("Line " + std::to_string(i));
  frmMain.lstOutput.setListIndex(499);
  person.look();
  auto& view = Person::see<QListView>("lstOutput");
  EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(view.model()->index(499, 0))));
}

TEST_F(TouchingTest, CaptionsStatusAndProgressFollowTheState) {
  frmMain.cmdExportServer.caption = "Abort";
  frmMain.StatusBar1.panel = "Exporting <b>site</b> & more";
  frmMain.ProgressBar1.setMax(8);
  frmMain.ProgressBar1.setValue(2);
  person.look();
  EXPECT_EQ(desktop::fromQt(Person::see<QPushButton>("cmdExportServer").text()), "Ab&ort");
  EXPECT_EQ(desktop::fromQt(Person::see<QLabel>("StatusBar1").text()), "Exporting <b>site</b> & more");
  EXPECT_EQ(Person::see<QLabel>("StatusBar1").textFormat(), Qt::PlainText);
  const auto& bar = Person::see<QProgressBar>("ProgressBar1");
  EXPECT_EQ(bar.value() * 4, bar.maximum());
}

TEST_F(TouchingTest, AWindowThatAPersonMakesLargerTellsTheFormAndStaysSo) {
  QWidget& window = *Person::window("Trelvin Utility");
  window.resize(1000, 700);
  person.look();
  person.look();
  EXPECT_EQ(window.size(), QSize(1000, 700));
  EXPECT_EQ(frmMain.width, 15000);
  EXPECT_EQ(frmMain.height, 10500);
  frmMain.setSize(13500, 9900);
  person.look();
  EXPECT_EQ(window.size(), QSize(900, 660));
}

TEST_F(TouchingTest, AClickOnWhatHasBeenSwitchedOffMeanwhileDoesNothing) {
  frmMain.cmdPopulate.onClick = [this] {
    clicked.push_back("cmdPopulate");
    frmMain.cmdPopulate.enabled = false;
  };
  Person::clickBlindly("cmdPopulate");
  Person::clickBlindly("cmdPopulate");
  person.look();
  EXPECT_THAT(clicked, ElementsAre("cmdPopulate"));
}

}  // namespace
}  // namespace trelvin::test
