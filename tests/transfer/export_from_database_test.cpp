// Stored sites onto a server: the frame, the numbers, and the order of a site's work.
#include "transfer/export_from_database.h"

#include "core/err.h"
#include "core/run_state.h"
#include "database_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DatabaseToServerRun : public DatabaseToServer {};

TEST_F(DatabaseToServerRun, RebuildsASiteFromItsRowsAlone) {
  storeSite(
      "Shop",
      {ofSite("ServerComment", "Shop"),
       {.name = "ServerBindings",
        .nodeClass = "IIsWebServer",
        .type = 8204,
        .value = list({":80:", ":81:"}),
        .localPath = "'7'"},
       {.name = "ServerAutoStart", .nodeClass = "IIsWebServer", .type = 11, .value = "1", .localPath = "'7'"},
       {.name = "ConnectionTimeout",
        .nodeClass = "IIsWebServer",
        .type = 3,
        .value = "90",
        .localPath = "'7'"},
       ofVirtualDirectory("/ROOT", "C:\\shop"),
       ofNode("/ROOT", "DefaultDoc", 8, "'x.htm'"),
       ofDirectory("/ROOT/images", ""),
       ofVirtualDirectory("/ROOT/images/big", "D:\\big")});
  openStored();
  exportSites({0});
  EXPECT_EQ(classOf("/W3SVC/1"), "IIsWebServer");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:|:81:");
  EXPECT_EQ(stored("/W3SVC/1", "ServerAutoStart"), "True");
  EXPECT_EQ(stored("/W3SVC/1", "ConnectionTimeout"), "90");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "x.htm");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images"), "IIsWebDirectory");
  EXPECT_EQ(classOf("/W3SVC/1/ROOT/images/big"), "IIsWebVirtualDir");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/images/big", "Path"), "D:\\big");
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_EQ(boxes().back(), "Done!");
}

}  // namespace
}  // namespace trelvin::test
