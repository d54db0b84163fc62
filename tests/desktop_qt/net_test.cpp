#include <QDialog>

#include "client/endpoints.h"
#include "desktop_qt/desktop_test.h"
#include "fakes/tcp_server.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;

// The window, and the server that its update check talks to.
class NetTest : public DesktopTest {
 protected:
  NetTest() { this->sockets->port = server.port(); }

  // Lets the window do nothing but wait for events, as it does when nobody touches it.
  TcpPeer nextRequest() {
    TcpPeer peer;
    EXPECT_TRUE(person.waitFor([&] {
      if (!peer.isConnected()) peer = server.accept();
      return peer.isConnected() && peer.received().ends_with("\r\n\r\n");
    }));
    return peer;
  }

  TcpServer server;
};

TEST_F(NetTest, ACheckForUpdatesIsAnsweredWhileTheWindowWaits) {
  openProgram();
  person.chooseMenu("mnuFile", "mnuChkUpdates");
  TcpPeer peer = nextRequest();
  person.willPress("OK");
  peer.send("HTTP/1.0 200 OK\r\n\r\n@@CurrentVersion=99.0@@");
  peer.close();
  ASSERT_TRUE(person.waitFor([&] { return !person.boxes.empty(); }));
  EXPECT_THAT(person.boxes, ElementsAre("Trelvin: Updates are available, please go to " +
                                        updateAddress("/Trelvin/Download.asp")));
}

TEST_F(NetTest, AConversationGoesOnBehindABox) {
  openProgram();
  person.chooseMenu("mnuFile", "mnuChkUpdates");
  TcpPeer peer = nextRequest();
  bool isHeard = false;
  person.willDo([&](QDialog& box) {
    peer.send("HTTP/1.0 200 OK\r\n");
    isHeard = person.waitFor([] { return !frmMain.sReceived.empty(); });
    box.reject();
  });
  person.chooseMenu("mnuHelp", "mnuCredits");
  EXPECT_TRUE(isHeard);
}

TEST_F(NetTest, TheFormKnowsWhetherItsWindowIsMaximizedOrMinimized) {
  openProgram();
  QWidget& window = *Person::window("Trelvin Utility");
  window.showMaximized();
  EXPECT_TRUE(person.waitFor([] { return frmMain.windowState == 2; }));
  window.showMinimized();
  EXPECT_TRUE(person.waitFor([] { return frmMain.windowState == 1; }));
  window.showNormal();
  EXPECT_TRUE(person.waitFor([] { return frmMain.windowState == 0; }));
}

}  // namespace
}  // namespace trelvin::test
