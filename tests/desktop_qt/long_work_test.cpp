// What a person may do while a run is at work, and what becomes of the run.
#include <QAction>
#include <chrono>
#include <filesystem>
#include <thread>

#include "core/main_window.h"
#include "core/run_state.h"
#include "desktop_qt/desktop_test.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "platform/platform.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class LongWorkTest : public DesktopTest {
 protected:
  LongWorkTest() { addServers(); }
  static constexpr int kSites = 40;
  // A source that keeps a run at work for a while, all its sites selected.
  void selectManySites() {
    std::string sites;
    for (int i = 1; i <= kSites; ++i) sites += plainSite(i, "Site " + std::to_string(i));
    addServer("MANY", metabaseFile(webService(sites)));
    openProgram();
    person.type("txtImportServer", "MANY");
    person.key(Qt::Key_Return);
    person.clickEntry("lstSites", 0);
    person.key(Qt::Key_A, Qt::ControlModifier);
    person.type("txtExportServer", "NEW1");
    ASSERT_EQ(frmMain.lstSites.selCount(), kSites);
  }
  static bool isRunning() { return frmMain.cmdExportServer.caption == "Abort"; }
  // Whether another program would find a site of that number on the target now.
  [[nodiscard]] bool isOnTarget(int number) const {
    const Paths paths((folder / "network").string());
    const auto fresh =
        makeFileMetabase([&](std::string_view server) { return paths.metabaseFileOf(server); });
    return attempt([&] { fresh->getObject("IIS://NEW1/W3SVC/" + std::to_string(number)); });
  }
  static bool readsAbort() {
    return Person::see("cmdExportServer").property("text").toString() == QLatin1String("Ab&ort");
  }
};

TEST_F(LongWorkTest, AClickOnAbortEndsTheRunAtItsNextStep) {
  selectManySites();
  person.willPress("OK");
  person.once(isRunning, [] { Person::clickBlindly("cmdExportServer"); });
  person.click("cmdExportServer");
  EXPECT_EQ(shownEntries("lstOutput").back(), "Transfer aborted");
  EXPECT_EQ(frmMain.cmdExportServer.caption, "Export");
  EXPECT_FALSE(isOnTarget(kSites));
}

TEST_F(LongWorkTest, TheButtonOfARunReadsAbortOnTheScreen) {
  selectManySites();
  person.willPress("OK");
  person.once(readsAbort, [] { Person::clickBlindly("cmdExportServer"); });
  person.click("cmdExportServer");
  EXPECT_FALSE(readsAbort());
}

TEST_F(LongWorkTest, ARoutineThatRefreshesItsListShowsAllThatHasChanged) {
  openProgram();
  frmMain.cmdPopulate.onClick = [] {
    frmMain.cmdExportServer.caption = "Abort";
    frmMain.lstOutput.addItem("A line");
    frmMain.lstOutput.refresh();
    EXPECT_TRUE(readsAbort());
    EXPECT_EQ(shownEntries("lstOutput").size(), 1U);
    frmMain.cmdExportServer.caption = "Export";
    frmMain.StatusBar1.panel = "Busy";
    frmMain.StatusBar1.refresh();
    EXPECT_FALSE(readsAbort());
  };
  person.click("cmdPopulate");
}

TEST_F(LongWorkTest, AClickOnTheOtherExportButtonStartsARunWithinTheRun) {
  selectManySites();
  person.willPress("OK");
  person.once(isRunning, [] { frmMain.TabExportType.select(2); });
  person.once([] { return Person::canSee("cmdExportFile"); }, [] { Person::clickBlindly("cmdExportFile"); });
  person.willPress("OK");  // the warning of the second run
  person.willPress("OK");  // its end
  person.willPress("OK");  // the end of the first
  person.click("cmdExportServer");
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT count(*) AS a FROM Sites"), (Rows{{std::to_string(kSites)}}));
  EXPECT_TRUE(hasLogged("Exporting to server from server"));
  EXPECT_TRUE(hasLogged("Exporting to file"));
  EXPECT_TRUE(isOnTarget(kSites));
}

TEST_F(LongWorkTest, TheWindowClosedDuringARunEndsTheProcessWithEverythingWhole) {
  selectManySites();
  person.willPress("OK");
  person.once([this] { return isOnTarget(2); }, [] { Person::window("Trelvin Utility")->close(); });
  int exitCode = -1;
  try {
    person.click("cmdExportServer");
  } catch (const ProcessEnded& end) {
    exitCode = end.exitCode;
  }
  EXPECT_EQ(exitCode, 0);
  EXPECT_FALSE(anyFormLoaded());
  EXPECT_TRUE(hasLogged("Closing complete"));
  EXPECT_TRUE(isOnTarget(1));
  EXPECT_TRUE(isOnTarget(2)) << "what was written so far can be read";
  EXPECT_FALSE(isOnTarget(kSites)) << "and the run did not go on";
  EXPECT_EQ(query("Trelvin.mdb", "SELECT count(*) AS a FROM tmpSettings WHERE Folder IS NOT NULL"),
            (Rows{{std::to_string(kSites)}}));
}

TEST_F(LongWorkTest, ExitFromTheMenuDuringARunDoesTheSame) {
  selectManySites();
  person.willPress("OK");
  person.once(isRunning,
              [] { Person::window("Trelvin Utility")->findChild<QAction*>("mnuExit")->trigger(); });
  EXPECT_THROW(person.click("cmdExportServer"), ProcessEnded);
}

TEST_F(LongWorkTest, TimersTickWhileABoxIsUp) {
  openProgram();
  frmMain.syncPermTimer.interval = 1;
  frmMain.syncPermTimer.enabled = true;
  int ticks = 0;
  frmMain.syncPermTimer.onTimer = [&] { ++ticks; };
  person.willDo([this, &ticks](QDialog& box) {
    const int before = ticks;
    Person::leaveUp(box);
    person.once([&ticks, before] { return ticks > before + 3; }, [&box] { Person::press(box, "OK"); });
  });
  platform().dialogs->showMessage({.text = "wait"});
  EXPECT_GT(ticks, 3);
  frmMain.syncPermTimer.enabled = false;
  person.look();
  const int after = ticks;
  for (int i = 0; i < 20; ++i) person.look();
  EXPECT_EQ(ticks, after);
}

TEST_F(LongWorkTest, WhatWasClickedBeforeABoxCameUpIsNotCarriedOutBehindIt) {
  openProgram();
  int populated = 0;
  frmMain.cmdPopulate.onClick = [&] { ++populated; };
  frmMain.cmdAddExclusion.onClick = [] { platform().dialogs->showMessage({.text = "wait"}); };
  person.willPress("OK");
  Person::clickBlindly("cmdAddExclusion");
  Person::clickBlindly("cmdPopulate");
  person.look();
  EXPECT_EQ(populated, 0);
}

TEST_F(LongWorkTest, ClicksBehindABoxDoNothing) {
  openProgram();
  int populated = 0;
  frmMain.cmdPopulate.onClick = [&] { ++populated; };
  person.willDo([](QDialog& box) {
    Person::clickBlindly("cmdPopulate");
    Person::press(box, "OK");
  });
  platform().dialogs->showMessage({.text = "wait"});
  person.look();
  EXPECT_EQ(populated, 0);
}

TEST_F(LongWorkTest, AFailureThatNoRoutineMeetsIsShownAndEndsTheProcess) {
  openProgram();
  listWeb1();
  std::filesystem::remove(folder / "network/WEB1/C$/WINDOWS/system32/inetsrv/MetaBase.xml");
  platform().metabase =
      makeFileMetabase([](std::string_view) -> std::optional<std::string> { return std::nullopt; });
  person.willPress("OK");
  int exitCode = -1;
  try {
    person.clickEntry("lstSites", 0);
  } catch (const ProcessEnded& end) {
    exitCode = end.exitCode;
  }
  EXPECT_EQ(exitCode, 1);
  EXPECT_THAT(person.boxes, Contains(StartsWith("Trelvin: Run-time error '")));
}

TEST_F(LongWorkTest, AnExportToADatabaseSourceThatIsNotChosenEndsTheProcessWithTheMessage) {
  openProgram();
  person.chooseMenu("mnuFile", "mnuDBLoc");
  ASSERT_TRUE(Person::canSee("optODBC"));
  person.click("optODBC");
  frmDatabaseSelect.lstODBC.clear();
  person.willPress("OK");
  EXPECT_THROW(person.click("cmdSave"), ProcessEnded);
  EXPECT_THAT(person.boxes, Contains(HasSubstr("Run-time error '381'")));
}

TEST_F(LongWorkTest, TheDatabaseDialogHoldsTheMainWindowAndGoesWithEscape) {
  openProgram();
  int populated = 0;
  frmMain.cmdPopulate.onClick = [&] { ++populated; };
  person.chooseMenu("mnuFile", "mnuDBLoc");
  Person::clickBlindly("cmdPopulate");
  person.look();
  EXPECT_EQ(populated, 0);
  person.key(Qt::Key_Escape);
  EXPECT_FALSE(frmDatabaseSelect.loaded);
  EXPECT_EQ(Person::window("Database Setup"), nullptr);
  person.click("cmdPopulate");
  EXPECT_EQ(populated, 1);
}

TEST_F(LongWorkTest, AListingThatYieldsForEverySiteShowsThemAll) {
  std::string sites;
  for (int i = 1; i <= 3000; ++i) sites += plainSite(i, "Site " + std::to_string(i));
  addServer("MANY", metabaseFile(webService(sites)));
  openProgram();
  person.type("txtImportServer", "MANY");
  std::size_t seenInBetween = 0;
  // A server that takes its time once, longer than the pause between two pictures.
  metabase->rule = [isSlow = true](const MetabaseCall&) mutable -> std::optional<std::int32_t> {
    if (isSlow && frmMain.lstSites.listCount() > 1000) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      isSlow = false;
    }
    return std::nullopt;
  };
  person.once([] { return frmMain.lstSites.listCount() > 2900; },
              [&] { seenInBetween = shownEntries("lstSites").size(); });
  person.click("cmdPopulate");
  EXPECT_GT(seenInBetween, 0U);
  EXPECT_EQ(shownEntries("lstSites").size(), 3000U);
}

TEST_F(LongWorkTest, AListingSaysThatItIsAtWorkBeforeTheServerAnswers) {
  openProgram();
  std::string shown;
  metabase->rule = [&shown](const MetabaseCall&) -> std::optional<std::int32_t> {
    if (shown.empty()) shown = Person::see("StatusBar1").property("text").toString().toStdString();
    return std::nullopt;
  };
  listWeb1();
  EXPECT_THAT(shown, StartsWith("Getting list of"));
  metabase->rule = nullptr;
}

TEST_F(LongWorkTest, AContentCopyShowsHowFarItHasGotUntilTheNextYield) {
  openProgram();
  platform().events->showProgress("Copying files...", 3, 12);
  QWidget* const window = Person::window("Copying files...");
  ASSERT_NE(window, nullptr);
  platform().events->doEvents();
  EXPECT_EQ(Person::window("Copying files..."), nullptr);
}

}  // namespace
}  // namespace trelvin::test
