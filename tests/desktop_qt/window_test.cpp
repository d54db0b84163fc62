#include "desktop_qt/desktop_test.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST_F(DesktopTest, APersonMovesASiteFromServerToServerWithTheMouse) {
  addServers();
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
  platform().metabase.reset();  // what it has put into its journal gets into the file
  EXPECT_THAT(metabaseOf("NEW1"), HasSubstr("E:\\sites\\shop"));
}

}  // namespace
}  // namespace trelvin::test
