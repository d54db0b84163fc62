#include "desktop_win32/desktop_win32_test.h"
#include "fakes/tcp_server.h"
#include "platform/platform.h"
#include "platform/shared/tcp_sockets.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

class NetTest : public DesktopWin32Test {
 protected:
  NetTest() {
    platform().sockets = makeTcpSockets();
    show(frmMain);
    socket = platform().sockets->create(
        {.connect = [this] { isConnected = true; }, .dataArrival = {}, .close = {}, .error = {}});
    socket->connect("127.0.0.1", server.port());
  }

  TcpServer server;
  std::unique_ptr<Socket> socket;
  bool isConnected = false;
};

TEST_F(NetTest, WhatComesOverTheNetIsHeardByTheLoop) {
  EXPECT_TRUE(hand.waitFor([this] { return isConnected; }));
}

TEST_F(NetTest, WhatComesOverTheNetIsHeardWhileABoxIsUp) {
  frmMain.timAd1.interval = 10;
  frmMain.timAd1.enabled = true;
  hand.willDo([this](HWND box) {
    frmMain.timAd1.onTimer = [this, box] {
      if (isConnected) PostMessageW(box, WM_COMMAND, IDOK, 0);
    };
  });
  platform().dialogs->showMessage({"Wait"});
  EXPECT_TRUE(isConnected);
}

}  // namespace
}  // namespace trelvin::test
