// The job that the program is there for, as a person does it with Trelvin.exe.
#include "desktop_win32/hand.h"
#include "platform/windows/wide_text.h"
#include "program_win32/screen_test.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Lt;
using ::testing::SizeIs;

using Texts = std::vector<std::string>;

class MainJobTest : public ScreenTest {
 protected:
  void listWeb1ByMouse() {
    typeByMouse("txtImportServer", "WEB1");
    person().click(main("cmdPopulate"));
  }
  void selectFirstByMouse() {
    person().clickEntry(main("lstSites"), 0);
    ASSERT_TRUE(waitForEntries("lstFolders", {"/ROOT", "/ROOT/images"}));
  }
  // Past the warning.
  void exportByMouse(const std::string& button) {
    person().click(main(button));
    ASSERT_TRUE(waitForBox("You are about to export web sites"));
    person().clickInBox(IDOK);
  }
  void waitUntilDone() {
    ASSERT_TRUE(waitForBox("Done!"));
    person().clickInBox(IDOK);
    ASSERT_TRUE(waitForNoBox());
  }
  [[nodiscard]] Texts storedSites() const {
    return column(inProgram("TrelvinData.mdb"), "SELECT SiteName AS a FROM Sites ORDER BY ID");
  }
  [[nodiscard]] Texts storedPaths() const {
    return column(inProgram("TrelvinData.mdb"),
                  "SELECT StringValue AS a FROM Data WHERE Name = 'Path' ORDER BY ID");
  }
};

TEST_F(MainJobTest, ASiteGoesIntoTheDatabaseByMouse) {
  startProgram("");
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(person().see(frmSplash, "cmdContinue")); }));
  person().click(person().see(frmSplash, "cmdContinue"));
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdPopulate")); }));
  EXPECT_EQ(person().window(frmSplash.caption), nullptr);
  EXPECT_EQ(text("StatusBar1"), "Ready");

  listWeb1ByMouse();
  ASSERT_TRUE(waitForEntries("lstSites", {"Bob's shop", "News"}));
  selectFirstByMouse();
  person().clickEntry(main("lstDirectories"), 1, true);
  ASSERT_TRUE(Person::waitFor([this] { return person().window("Directory configuration") != nullptr; }));
  const HWND question = person().window("Directory configuration");
  person().keys("Home shift+End", question);
  person().type("E:\\images", question);
  person().keys("Return", question);
  ASSERT_TRUE(waitForEntries("lstDirectories", {"C:\\site", "E:\\images"}));

  chooseDatabaseByMouse();
  exportByMouse("cmdExportFile");
  waitUntilDone();
  EXPECT_EQ(text("StatusBar1"), "Ready");
  EXPECT_EQ(text("cmdExportFile"), "Exp&ort");
  EXPECT_EQ(entries("lstOutput").back(), "Done!");

  person().clickClose(mainWindow());
  expectEndInOrder();
  EXPECT_THAT(log(), HasSubstr("Exporting to file"));
  EXPECT_THAT(storedSites(), ElementsAre("Bob's shop"));
  EXPECT_THAT(storedPaths(), ElementsAre("C:\\site", "E:\\images"));
}

TEST_F(MainJobTest, ASiteGoesIntoTheDatabaseByTheKeysAlone) {
  startProgram("");
  ASSERT_TRUE(Person::waitFor([this] { return person().window(frmSplash.caption) != nullptr; }));
  person().keys("alt+c", person().window(frmSplash.caption));
  ASSERT_TRUE(waitForFocus("TabImportType"));

  person().keys("alt+v", mainWindow());
  ASSERT_TRUE(waitForFocus("txtImportServer"));
  person().keys("Home shift+End", mainWindow());
  person().type("WEB1", mainWindow());
  ASSERT_TRUE(Person::waitFor([this] { return text("txtImportServer") == "WEB1"; }));
  person().keys("Tab", mainWindow());
  ASSERT_TRUE(waitForFocus("lstIMIISVer"));
  person().keys("Down Down", mainWindow());
  ASSERT_TRUE(Person::waitFor([this] { return SendMessageW(main("lstIMIISVer"), CB_GETCURSEL, 0, 0) == 2; }));
  person().keys("alt+l", mainWindow());
  ASSERT_TRUE(waitForEntries("lstSites", {"Bob's shop", "News"}));

  person().keys("alt+b", mainWindow());
  ASSERT_TRUE(waitForFocus("lstSites"));
  person().keys("End space", mainWindow());
  ASSERT_TRUE(waitForEntries("lstDirectories", {"C:\\site", "D:\\images"}));
  EXPECT_EQ(SendMessageW(main("lstSites"), LB_GETSEL, 1, 0), 1);

  // The strip of the export has no key of its own; it stands before the box for the server.
  person().keys("alt+p", mainWindow());
  ASSERT_TRUE(waitForFocus("txtExportServer"));
  person().keys("shift+Tab", mainWindow());
  ASSERT_TRUE(waitForFocus("TabExportType"));
  person().keys("Right", mainWindow());
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdExportFile")); }));
  person().keys("alt+o", mainWindow());
  ASSERT_TRUE(waitForBox("You are about to export web sites"));
  person().keys("Return", person().window("Trelvin"));
  ASSERT_TRUE(waitForBox("Done!"));
  person().keys("Return", person().window("Trelvin"));
  ASSERT_TRUE(waitForNoBox());

  person().keys("alt+f x", mainWindow());
  expectEndInOrder();
  EXPECT_THAT(storedSites(), ElementsAre("News"));
}

TEST_F(MainJobTest, ASiteGoesFromServerToServerByMouse) {
  openProgram();
  chooseByKeys("lstIMIISVer", 2);
  listWeb1ByMouse();
  ASSERT_TRUE(waitForEntries("lstSites", {"Bob's shop", "News"}));
  selectFirstByMouse();
  typeByMouse("txtExportServer", "WEB2");
  chooseByKeys("lstEXIISVer", 2);
  exportByMouse("cmdExportServer");
  waitUntilDone();
  EXPECT_EQ(text("StatusBar1"), "Ready");

  person().clickClose(mainWindow());
  expectEndInOrder();
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT/images", "Path"), "D:\\images");
}

TEST_F(MainJobTest, AJobThatIsSavedInTheWindowRunsUnattended) {
  openProgram();
  listWeb1ByMouse();
  ASSERT_TRUE(waitForEntries("lstSites", {"Bob's shop", "News"}));
  selectFirstByMouse();
  chooseDatabaseByMouse();
  person().keys("alt+f s", mainWindow());
  ASSERT_TRUE(Person::waitFor([this] { return person().window("Save Backup Job") != nullptr; }));
  const HWND chooser = person().window("Save Backup Job");
  const std::string job = utf8Text(inProgram("night.job").wstring());
  person().keys("Home shift+End", chooser);
  person().type(job, chooser);
  person().keys("Return", chooser);
  ASSERT_TRUE(Person::waitFor([this] { return person().window("Save Backup Job") == nullptr; }));
  person().clickClose(mainWindow());
  expectEndInOrder();

  const Outcome outcome = start("-RUNBACKUP -B " + job)->outcome();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, Contains("Done!"));
  EXPECT_THAT(column(databaseOfRun(), "SELECT SiteName AS a FROM Sites"), ElementsAre("Bob's shop"));
}

// A run into the database that takes its time.
class LongRunTest : public MainJobTest {
 protected:
  static constexpr int kSites = 40;

  LongRunTest() {
    std::string sites;
    for (int i = 1; i <= kSites; ++i) {
      const int number = 100 + i;  // of three digits, as they are listed in the order of their texts
      names_.push_back("Site " + std::to_string(number));
      sites += webSite(number, names_.back());
    }
    addServer("WEB1", sites);
  }
  // Until the first site is done.
  void startRun() {
    openProgram();
    listWeb1ByMouse();
    ASSERT_TRUE(waitForEntries("lstSites", names_));
    selectFirstByMouse();
    std::string marks;
    for (int i = 1; i < kSites; ++i) marks += "Down space ";
    person().keys(marks, mainWindow());
    ASSERT_TRUE(
        Person::waitFor([this] { return SendMessageW(main("lstSites"), LB_GETSELCOUNT, 0, 0) == kSites; }));
    chooseDatabaseByMouse();
    exportByMouse("cmdExportFile");
    ASSERT_TRUE(Person::waitFor([this] {
      const std::string status = text("StatusBar1");
      return status.starts_with("Exporting site (") && !status.starts_with("Exporting site (1 ");
    }));
  }
  void expectSomeStored() const { EXPECT_THAT(storedSites(), SizeIs(AllOf(Ge(2), Lt(kSites)))); }

 private:
  Texts names_;
};

TEST_F(LongRunTest, AbortedItEndsBeforeItsNextSite) {
  startRun();
  EXPECT_EQ(text("cmdExportFile"), "Ab&ort");
  person().click(main("cmdExportFile"));
  ASSERT_TRUE(Person::waitFor([this] { return text("cmdExportFile") == "Exp&ort"; }));
  ASSERT_TRUE(Person::waitFor([this] { return entries("lstOutput").back() == "Transfer aborted"; }));
  person().clickClose(mainWindow());
  expectEndInOrder();
  expectSomeStored();
}

TEST_F(LongRunTest, ItEndsInOrderWithItsWindow) {
  startRun();
  person().clickClose(mainWindow());
  expectEndInOrder();
  expectSomeStored();
}

// As Windows sends it to every window when its user logs off.
TEST_F(LongRunTest, ItEndsInOrderWithTheSessionOfItsUser) {
  startRun();
  SendMessageW(mainWindow(), WM_ENDSESSION, TRUE, static_cast<LPARAM>(ENDSESSION_LOGOFF));
  expectEndInOrder();
  expectSomeStored();
}

}  // namespace
}  // namespace trelvin::test
