// The job that the program is there for, as a person does it.
#include "core/start_up.h"
#include "desktop_qt/desktop_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class MainJobTest : public DesktopTest {
 protected:
  MainJobTest() { addServers(); }
  // A button that is pressed by its access key shows that it is pressed for a moment first.
  void exportByKey() {
    for (int i = 0; i < 2; ++i) person.willDo([](QDialog& box) { Person::sendKey(box, Qt::Key_Return); });
    person.key(Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(person.waitFor([this] { return person.hasDoneAll(); }));
    person.look();
  }
  // What NEW1 has got, when the program has put its metabase away.
  std::string newMetabase() {
    platform().metabase.reset();
    return metabaseOf("NEW1");
  }
};

TEST_F(MainJobTest, SitesGoFromServerToServerByMouse) {
  openProgram();
  listWeb1();
  EXPECT_THAT(shownEntries("lstSites"), ElementsAre("Shop", "News"));

  person.clickEntry("lstSites", 0);
  EXPECT_THAT(shownEntries("lstFolders"), ElementsAre("/ROOT", "/ROOT/images"));
  person.willType("E:\\sites\\shop");
  person.doubleClickEntry("lstDirectories", 0);
  EXPECT_THAT(shownEntries("lstDirectories"), ElementsAre("E:\\sites\\shop", "D:\\inetpub\\images"));

  person.type("txtExportServer", "NEW1");
  person.dropDown("lstEXIISVer", 2);
  person.willPress("OK");
  person.willPress("OK");
  person.click("cmdExportServer");
  EXPECT_THAT(person.boxes,
              ElementsAre("Directory configuration: Please specify the new directory",
                          StartsWith("Trelvin: You are about to export web sites"), "Trelvin: Done!"));
  EXPECT_EQ(shownEntries("lstOutput").back(), "Done!");
  EXPECT_THAT(newMetabase(), HasSubstr("E:\\sites\\shop"));
}

TEST_F(MainJobTest, SitesGoIntoTheDatabaseAndOutOfItByMouse) {
  openProgram();
  listWeb1();
  person.clickEntry("lstSites", 0);
  person.clickEntry("lstSites", 1);
  person.chooseTab("TabExportType", 2);
  person.willPress("OK");
  person.willPress("OK");
  person.click("cmdExportFile");
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT SiteName AS a FROM Sites ORDER BY ID"),
            (Rows{{"Shop"}, {"News"}}));

  person.chooseTab("TabImportType", 2);
  person.click("cmdPopulate");
  EXPECT_THAT(shownEntries("lstSites"), ElementsAre(StartsWith("Shop"), StartsWith("News")));
  person.clickEntry("lstSites", 1);
  EXPECT_THAT(shownEntries("lstDirectories"), ElementsAre("D:\\inetpub\\news"));
  person.type("txtExportServer", "NEW1");
  person.dropDown("lstEXIISVer", 2);
  person.willPress("OK");
  person.willPress("OK");
  person.click("cmdExportServer");
  const std::string target = newMetabase();
  EXPECT_THAT(target, HasSubstr("D:\\inetpub\\news"));
  EXPECT_THAT(target, ::testing::Not(HasSubstr("D:\\inetpub\\shop")));
}

TEST_F(MainJobTest, SitesGoFromServerToServerByTheKeysAlone) {
  loadWelcomeForm();
  person.look();
  person.key(Qt::Key_Return);
  ASSERT_NE(Person::window("Trelvin Utility"), nullptr);

  person.key(Qt::Key_V, Qt::AltModifier);
  ASSERT_EQ(Person::focus(), "txtImportServer");
  person.key(Qt::Key_A, Qt::ControlModifier);
  person.keys("WEB1");
  person.key(Qt::Key_Tab);
  ASSERT_EQ(Person::focus(), "lstIMIISVer");
  person.key(Qt::Key_Down);
  person.key(Qt::Key_Down);
  person.key(Qt::Key_Tab);
  ASSERT_EQ(Person::focus(), "cmdPopulate");
  person.key(Qt::Key_Return);
  person.key(Qt::Key_B, Qt::AltModifier);
  ASSERT_EQ(Person::focus(), "lstSites");
  person.key(Qt::Key_Home);
  person.key(Qt::Key_Space);
  EXPECT_EQ(frmMain.lstSites.selCount(), 1);

  person.key(Qt::Key_D, Qt::AltModifier);
  ASSERT_EQ(Person::focus(), "tabNewValues");
  person.key(Qt::Key_Tab);
  person.key(Qt::Key_Tab);
  ASSERT_EQ(Person::focus(), "lstDirectories");
  person.key(Qt::Key_Home);
  person.key(Qt::Key_Space);
  person.willType("E:\\keys");
  person.key(Qt::Key_Return);
  EXPECT_THAT(shownEntries("lstDirectories"), Contains("E:\\keys"));

  person.key(Qt::Key_P, Qt::AltModifier);
  ASSERT_EQ(Person::focus(), "txtExportServer");
  person.keys("NEW1");
  person.key(Qt::Key_Tab);
  person.key(Qt::Key_End);
  person.key(Qt::Key_X, Qt::AltModifier);
  EXPECT_TRUE(person.waitFor([] { return frmMain.optOverwriteWebs.value(); }));
  exportByKey();
  EXPECT_EQ(shownEntries("lstOutput").back(), "Done!");
  EXPECT_THAT(newMetabase(), HasSubstr("E:\\keys"));
}

TEST_F(MainJobTest, SitesGoIntoTheDatabaseAndOutOfItByTheKeysAlone) {
  openProgram();
  person.key(Qt::Key_V, Qt::AltModifier);
  person.key(Qt::Key_A, Qt::ControlModifier);
  person.keys("WEB1");
  person.key(Qt::Key_Return);  // lists the sites
  person.key(Qt::Key_B, Qt::AltModifier);
  person.key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(frmMain.lstSites.selCount(), 2);
  for (int i = 0; i < 40 && Person::focus() != "TabExportType"; ++i) person.key(Qt::Key_Tab);
  person.key(Qt::Key_Right);
  ASSERT_TRUE(Person::canSee("cmdExportFile"));
  exportByKey();
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT count(*) AS a FROM Sites"), (Rows{{"2"}}));

  for (int i = 0; i < 40 && Person::focus() != "TabImportType"; ++i) {
    person.key(Qt::Key_Backtab, Qt::ShiftModifier);
  }
  person.key(Qt::Key_Right);
  person.key(Qt::Key_L, Qt::AltModifier);
  EXPECT_TRUE(person.waitFor([] { return frmMain.lstSites.listCount() == 2; }));
  person.key(Qt::Key_B, Qt::AltModifier);
  person.key(Qt::Key_Home);
  person.key(Qt::Key_Space);
  person.key(Qt::Key_P, Qt::AltModifier);
  person.keys("NEW1");
  exportByKey();
  EXPECT_THAT(newMetabase(), HasSubstr("D:\\inetpub\\shop"));
}

TEST_F(MainJobTest, AJobIsSavedWithTheChooser) {
  openProgram();
  listWeb1();
  person.clickEntry("lstSites", 0);
  person.willType((programFolder() / "mine").string());
  person.chooseMenu("mnuFile", "mnuSaveBackup");
  ASSERT_TRUE(folder.has("program/mine.job")) << "the extension goes behind a name without one";
  EXPECT_THAT(folder.read("program/mine.job"), HasSubstr("SiteName=IIS://WEB1/W3SVC/1"));
  EXPECT_THAT(person.boxes, ElementsAre("Save Backup Job"));
}

TEST_F(MainJobTest, TheSiteRootsOfASourceAreCheckedAndMended) {
  addServer("BAD1", metabaseFile(webService(webSite(1, "Bad") + element("IIsWebDirectory", "/LM/W3SVC/1/ROOT",
                                                                        {{"Path", "C:\\bad"}}))));
  openProgram();
  person.type("txtImportServer", "BAD1");
  person.click("cmdPopulate");
  person.willDo([](QDialog& box) { Person::sendKey(box, Qt::Key_Return); });
  person.chooseMenu("mnuTools", "mnuCheckMetabase");
  EXPECT_THAT(person.boxes.size(), 1U);
}

}  // namespace
}  // namespace trelvin::test
