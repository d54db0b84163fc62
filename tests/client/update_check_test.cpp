#include "client/update_check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <initializer_list>
#include <limits>
#include <string>
#include <tuple>

#include "client/endpoints.h"
#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "fakes/program_test.h"
#include "fakes/tcp_server.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

using test::dispatchAll;
using test::dispatchUntil;
using test::TcpPeer;
using test::TcpServer;

constexpr const char* kChecking = "Checking for updates...";
const std::string kNewer =
    "Updates are available, please go to http://" + updateHost() + "/Trelvin/Download.asp";
constexpr const char* kNone = "No updates available";
const std::string kMoved = "HTTP/1.0 302 Object moved\r\nServer: test\r\nLocation: ";

std::string versionAnswer(const std::string& version) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n<html>@@CurrentVersion=" + version + "@@</html>";
}

// A loaded window, and the server that it talks to in the test's own hands.
class UpdateCheckTest : public test::ProgramTest {
 protected:
  UpdateCheckTest() {
    sockets->port = server_.port();
    openWindow();
    run.bRunSilent = false;
    output.clear();
  }

  bool until(const std::function<bool()>& holds) { return dispatchUntil(*sockets, holds); }

  // Begins a conversation that no command begins, on the endpoint that it is meant for.
  void begin(std::string_view word, const std::string& host = updateHost()) {
    frmMain.sSocketState = word;
    frmMain.wsck1.remoteHost = host;
    frmMain.wsck1.remotePort = 80;
    frmMain.wsck1.connect();
  }

  // The next connection, once its whole request has come.
  TcpPeer nextRequest() {
    TcpPeer peer;
    EXPECT_TRUE(until([&] {
      if (!peer.isConnected()) peer = server_.accept();
      return peer.isConnected() && peer.received().ends_with("\r\n\r\n");
    }));
    return peer;
  }

  // Sends each chunk when the one before has been dealt with.
  void sendChunks(TcpPeer& peer, std::initializer_list<std::string> chunks) {
    for (const std::string& chunk : chunks) {
      const std::size_t before = frmMain.sReceived.size();
      peer.send(chunk);
      EXPECT_TRUE(until([&] { return frmMain.sReceived.size() == before + chunk.size(); })) << chunk;
    }
  }

  void answer(TcpPeer& peer, const std::string& text) {
    peer.send(text);
    peer.close();
    dispatchAll(*sockets);
  }

  void checkAgainst(const std::string& version) {
    mnuChkUpdates_Click();
    TcpPeer peer = nextRequest();
    answer(peer, versionAnswer(version));
  }

  void ofVersion(std::int32_t major, std::int32_t minor) {
    application->major = major;
    application->minor = minor;
  }

  // The texts of the boxes that were shown.
  [[nodiscard]] std::vector<std::string> boxes() const {
    std::vector<std::string> texts;
    for (const Message& message : dialogs->shown) texts.push_back(message.text);
    return texts;
  }

  using Texts = std::vector<std::string>;
  TcpServer server_;
};

TEST_F(UpdateCheckTest, TheCommandSaysWhatItDoesAndAsksTheUpdateEndpointOnTheWebsPort) {
  ofVersion(2, 4);
  frmMain.timAd1.enabled = true;
  frmMain.mnuChkUpdates.onClick();
  EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
  EXPECT_TRUE(hasLogged("Checking for update, version is 2.4"));
  EXPECT_FALSE(frmMain.timAd1.enabled);
  EXPECT_EQ(frmMain.sSocketState, "CheckUpdate");
  EXPECT_EQ(sockets->meant, Texts{updateHost() + ":80"});
}

TEST_F(UpdateCheckTest, TheRequestHasItsLineOneHeaderAndNothingElse) {
  ofVersion(4, 10);
  mnuChkUpdates_Click();
  EXPECT_EQ(nextRequest().received(), "GET http://" + updateHost() +
                                          "/TrelvinVerCheck.asp?Version=4%2E10 HTTP/1.0\r\n"
                                          "Accept: */*\r\n\r\n");
}

TEST_F(UpdateCheckTest, ANewerVersionIsToldWithTheAddressOfItsPage) {
  ofVersion(2, 4);
  checkAgainst("2.5");
  EXPECT_EQ(boxes(), Texts{kNewer});
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_TRUE(hasLogged(kNewer));
  EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
  EXPECT_TRUE(output.empty());
}

TEST_F(UpdateCheckTest, AnEqualOrAnOlderVersionIsNoUpdate) {
  for (const std::int32_t minor : {5, 6}) {
    ofVersion(2, minor);
    dialogs->shown.clear();
    checkAgainst("2.5");
    EXPECT_EQ(boxes(), Texts{kNone}) << minor;
    EXPECT_EQ(frmMain.StatusBar1.panel, "No updates available, Ready");
  }
  EXPECT_EQ(timesLogged(kNone), 2);
}

TEST_F(UpdateCheckTest, ASilentRunTellsBothResultsInTheOutputList) {
  run.bRunSilent = true;
  ofVersion(2, 4);
  checkAgainst("2.5");
  ofVersion(2, 6);
  checkAgainst("2.5");
  EXPECT_EQ(output, (Texts{kNewer, kNone}));
  EXPECT_TRUE(boxes().empty());
  EXPECT_TRUE(hasLogged(kNewer));
  EXPECT_TRUE(hasLogged(kNone));
}

TEST_F(UpdateCheckTest, VersionsAreComparedAsNumbersSoThatTenComesBeforeNine) {
  ofVersion(1, 10);
  checkAgainst("1.9");
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, TheVersionIsFoundInAHeaderAsWellAndBlanksAroundItDoNotMatter) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  answer(peer,
         "HTTP/1.0 200 OK\r\nX-Version: @@CurrentVersion= 2.5 @@\r\n\r\n<html>@@CurrentVersion=1.0@@</html>");
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, MarksThatAreSplitOverChunksAreFound) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  sendChunks(peer, {"HTTP/1.0 200 OK\r\n\r\n<html>@@Curr", "entVersion=2", ".5@", "@</html>"});
  answer(peer, "");
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, TheConversationEndsClosedAndItsWordStays) {
  checkAgainst("1.0");
  EXPECT_EQ(frmMain.wsck1.state(), kSocketClosed);
  EXPECT_EQ(frmMain.sSocketState, "CheckUpdate");
  EXPECT_EQ(frmMain.lDownloaded, 0);
}

TEST_F(UpdateCheckTest, AnAnswerWithoutItsMarksIsLoggedAndToldNobody) {
  for (const char* text : {"", "HTTP/1.0 404 Not Found\r\n\r\n", "no marks here @@ but some",
                           "@@CurrentVersion=2.5", "@@CurrentVersion=2.5@"}) {
    mnuChkUpdates_Click();
    TcpPeer peer = nextRequest();
    answer(peer, text);
    EXPECT_EQ(logLines().back(), "frmMain_wsck1_Close Error 5 Invalid procedure call or argument") << text;
    EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
  }
  EXPECT_TRUE(boxes().empty());
  EXPECT_TRUE(output.empty());
}

TEST_F(UpdateCheckTest, AVersionThatIsNoNumberIsLoggedAndToldNobody) {
  for (const char* version : {"", "soon", "2.5.1", "2.5\r\n"}) {
    checkAgainst(version);
    EXPECT_EQ(logLines().back(), "frmMain_wsck1_Close Error 13 Type mismatch") << version;
    EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
    EXPECT_EQ(frmMain.wsck1.state(), kSocketClosed);
  }
  EXPECT_TRUE(boxes().empty());
}

TEST_F(UpdateCheckTest, ACheckAfterAFailedOneClosesItAndIsAnswered) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  answer(peer, "nothing");
  EXPECT_EQ(frmMain.wsck1.state(), kSocketClosing);
  checkAgainst("2.5");
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, ASecondCheckClosesTheFirstAndOnlyOneAnswerCounts) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer first = nextRequest();
  mnuChkUpdates_Click();
  TcpPeer second = nextRequest();
  EXPECT_TRUE(first.isClosedByClient());
  answer(second, versionAnswer("2.5"));
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, ASecondCheckBeforeTheFirstHasConnectedLeavesOneConversation) {
  mnuChkUpdates_Click();
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  answer(peer, versionAnswer("1.0"));
  EXPECT_EQ(boxes(), Texts{kNone});
  EXPECT_EQ(sockets->meant.size(), 2U);
}

TEST_F(UpdateCheckTest, WhatTheFirstServerSaidIsGoneWhenTheSecondAnswers) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer first = nextRequest();
  sendChunks(first, {versionAnswer("2.5")});
  mnuChkUpdates_Click();
  TcpPeer second = nextRequest();
  answer(second, versionAnswer("1.0"));
  EXPECT_EQ(boxes(), Texts{kNone});
}

TEST_F(UpdateCheckTest, ASilentServerLeavesTheStatusUntilTheNextCheck) {
  mnuChkUpdates_Click();
  const TcpPeer silent = nextRequest();
  dispatchAll(*sockets);
  EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
  EXPECT_EQ(frmMain.wsck1.state(), kSocketConnected);
  EXPECT_TRUE(boxes().empty());
  checkAgainst("1.0");
  EXPECT_EQ(boxes(), Texts{kNone});
}

TEST_F(UpdateCheckTest, ARefusedConnectionIsToldInTheOutputListAndTheLog) {
  server_.stopListening();
  mnuChkUpdates_Click();
  dispatchAll(*sockets);
  const std::string line = "Winsock Error 10061 Connection is forcefully rejected";
  EXPECT_EQ(output, Texts{line});
  EXPECT_TRUE(hasLogged(line));
  EXPECT_EQ(frmMain.StatusBar1.panel, kChecking);
  EXPECT_EQ(frmMain.wsck1.state(), kSocketError);
}

TEST_F(UpdateCheckTest, ABrokenConnectionIsToldInTheOutputListAndTheLog) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  peer.reset();
  dispatchAll(*sockets);
  const std::string line = "Winsock Error 10054 The connection is reset by remote side";
  EXPECT_EQ(output, Texts{line});
  EXPECT_TRUE(hasLogged(line));
  EXPECT_TRUE(boxes().empty());
}

TEST_F(UpdateCheckTest, AfterAnErrorTheNextCheckIsAnswered) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  peer.reset();
  dispatchAll(*sockets);
  checkAgainst("1.0");
  EXPECT_EQ(boxes(), Texts{kNone});
}

TEST_F(UpdateCheckTest, DataInTheErrorStateIsNotRead) {
  server_.stopListening();
  mnuChkUpdates_Click();
  dispatchAll(*sockets);
  output.clear();
  frmMain.sReceived = "as it was";
  wsck1_DataArrival(10);
  EXPECT_EQ(output, Texts{"Winsock error state"});
  EXPECT_EQ(frmMain.sReceived, "as it was");
}

TEST_F(UpdateCheckTest, ARedirectedCheckAsksTheFirstHostAgain) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer first = nextRequest();
  first.send(kMoved + "http://elsewhere.example/check\r\n\r\n@@CurrentVersion=9@@");
  TcpPeer second = nextRequest();
  EXPECT_TRUE(first.isClosedByClient());
  EXPECT_EQ(second.received(), first.received());
  EXPECT_EQ(sockets->meant, (Texts{updateHost() + ":80", updateHost() + ":80"}));
  EXPECT_EQ(frmMain.sSocketState, "CheckUpdate");
  EXPECT_EQ(frmMain.sRedirect, "http://elsewhere.example/check");
  answer(second, versionAnswer("1.0"));
  EXPECT_EQ(boxes(), Texts{kNone});
}

TEST_F(UpdateCheckTest, AServerThatKeepsRedirectingIsAskedWithoutEnd) {
  mnuChkUpdates_Click();
  for (int i = 0; i < 50; ++i) {
    TcpPeer peer = nextRequest();
    peer.send(kMoved + "http://update.trelvin.example/again\r\n\r\n");
    ASSERT_TRUE(until([&] { return peer.isClosedByClient(); }));
  }
  EXPECT_TRUE(nextRequest().isConnected());
  EXPECT_TRUE(output.empty());
}

TEST_F(UpdateCheckTest, ARedirectIsSeenInAnyCase) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  peer.send("HTTP/1.0 302 oBJECT MOVED\r\nlocation: /here\r\n\r\n");
  EXPECT_TRUE(nextRequest().isConnected());
  EXPECT_EQ(frmMain.sRedirect, "/here");
}

TEST_F(UpdateCheckTest, ARedirectWhoseWordsAreSplitOverTwoChunksIsNone) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  sendChunks(peer, {"HTTP/1.0 302 Object mo", "ved\r\nLocation: http://elsewhere.example/\r\n\r\n"});
  dispatchAll(*sockets);
  EXPECT_EQ(sockets->meant.size(), 1U);
  EXPECT_EQ(frmMain.sRedirect, "");
  EXPECT_EQ(frmMain.wsck1.state(), kSocketConnected);
}

TEST_F(UpdateCheckTest, ARedirectInALaterChunkIsSeen) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  sendChunks(peer, {"HTTP/1.0 "});
  peer.send("302 Object moved\r\nLocation: /here\r\n\r\n");
  EXPECT_TRUE(nextRequest().isConnected());
  EXPECT_EQ(frmMain.sRedirect, "/here");
}

TEST_F(UpdateCheckTest, ARedirectWithoutAPlaceLeadsToNonsenseAndIsFollowed) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  peer.send("HTTP/1.0 302 Object moved\r\n\r\n");
  EXPECT_TRUE(nextRequest().isConnected());
  EXPECT_EQ(frmMain.sRedirect, "302 Object moved");
}

TEST_F(UpdateCheckTest, ARedirectWhosePlaceIsCutOffIsLogged) {
  for (const char* text : {"HTTP/1.0 302 Object moved\r\nLocation:",
                           "HTTP/1.0 302 Object moved\r\nLocation: /he", "302 object moved"}) {
    mnuChkUpdates_Click();
    TcpPeer peer = nextRequest();
    peer.send(text);
    dispatchAll(*sockets);
    EXPECT_EQ(logLines().back(), "frmMain_wsck1_dataarrival Error 5 Invalid procedure call or argument")
        << text;
    EXPECT_EQ(frmMain.sRedirect, "");
  }
}

TEST_F(UpdateCheckTest, LettersBeyondAsciiBeforeThePlaceDoNotShiftIt) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  // Some letters need more bytes in one case than in the other, and a byte alone is no letter at all.
  peer.send(
      "HTTP/1.0 302 Object moved\r\nServer: \xC5\xBF\xC4\xB1\xE9\xFF\r\nLocation: /\xC4\xB1\xFF\r\n\r\n");
  EXPECT_TRUE(nextRequest().isConnected());
  EXPECT_EQ(frmMain.sRedirect, "/\xC4\xB1\xFF");
}

TEST_F(UpdateCheckTest, EveryStateHasItsRequest) {
  ofVersion(4, 1);
  frmMain.sRedirect = "http://elsewhere.example/a b?c";
  const std::vector<std::tuple<std::string, std::string, std::string>> requests{
      {"CheckUpdate", updateHost(), "http://" + updateHost() + "/TrelvinVerCheck.asp?Version=4%2E1"},
      {"GetUpdate", updateHost(), "http://" + updateHost() + "/TrelvinUpgrade.asp?Version=4%2E1"},
      {"DLUpdate", updateHost(), "http://elsewhere.example/a b?c"},
      {"GetAdvert", advertHost(),
       "http://" + advertHost() +
           "/"
           "ProgramAdvert.asp?Site=Trelvin&Format=Banner&Type=Flash+4&Version=4%2E1"},
      {"DLAdvert", advertHost(), "http://elsewhere.example/a b?c"},
      {"GetBook", advertHost(), "http://" + advertHost() + "/ProgramBook.asp?Site=Trelvin&Version=4%2E1"}};
  for (const auto& [word, host, address] : requests) {
    begin(word, host);
    EXPECT_EQ(nextRequest().received(), "GET " + address + " HTTP/1.0\r\nAccept: */*\r\n\r\n");
    EXPECT_EQ(sockets->meant.back(), host + ":80");
    frmMain.wsck1.close();
  }
}

TEST_F(UpdateCheckTest, AnUnknownWordSendsNothingAndForgetsWhatCameBefore) {
  frmMain.sReceived = "old";
  frmMain.lDownloaded = 7;
  begin("checkupdate");
  TcpPeer peer;
  ASSERT_TRUE(until([&] { return (peer = server_.accept()).isConnected(); }));
  dispatchAll(*sockets);
  EXPECT_EQ(peer.received(), "");
  EXPECT_EQ(frmMain.sReceived, "");
  EXPECT_EQ(frmMain.lDownloaded, 0);
}

TEST_F(UpdateCheckTest, AConversationThatIsNoCheckAndNoDownloadEndsWithoutAWord) {
  for (const char* word : {"GetUpdate", "GetAdvert", "DLAdvert", "GetBook"}) {
    begin(word);
    TcpPeer peer = nextRequest();
    frmMain.lDownloaded = 5;
    answer(peer, "a page of @@CurrentVersion=9@@\r\n\r\n");
    EXPECT_EQ(frmMain.lDownloaded, 0) << word;
    EXPECT_EQ(frmMain.sReceived, "a page of @@CurrentVersion=9@@\r\n\r\n");
    EXPECT_EQ(frmMain.sSocketState, word);
    EXPECT_EQ(frmMain.wsck1.state(), kSocketClosing);
    frmMain.wsck1.close();
  }
  EXPECT_TRUE(boxes().empty());
  EXPECT_TRUE(output.empty());
  EXPECT_FALSE(folder.has("work/Upgrade.exe"));
}

TEST_F(UpdateCheckTest, ARedirectTurnsAskingIntoFetching) {
  const std::vector<std::pair<std::string, std::string>> turns{
      {"GetUpdate", "DLUpdate"}, {"DLUpdate", "DLUpdate"}, {"GetAdvert", "DLAdvert"},
      {"DLAdvert", "DLAdvert"},  {"GetBook", "GetBook"},   {"CheckUpdate", "CheckUpdate"}};
  for (const auto& [word, next] : turns) {
    begin(word);
    TcpPeer first = nextRequest();
    first.send(kMoved + "http://elsewhere.example/" + word + "\r\n\r\n");
    TcpPeer second = nextRequest();
    EXPECT_EQ(frmMain.sSocketState, next) << word;
    if (next.starts_with("DL")) {
      EXPECT_EQ(second.received(),
                "GET http://elsewhere.example/" + word + " HTTP/1.0\r\nAccept: */*\r\n\r\n");
    } else {
      EXPECT_EQ(second.received(), first.received());
    }
    frmMain.wsck1.close();
  }
}

TEST_F(UpdateCheckTest, UnloadingTheWindowClosesTheSocket) {
  mnuChkUpdates_Click();
  TcpPeer peer = nextRequest();
  unloadForm(frmMain);
  EXPECT_EQ(frmMain.wsck1.state(), kSocketClosed);
  EXPECT_TRUE(until([&] { return peer.isClosedByClient(); }));
}

TEST_F(UpdateCheckTest, EventsOfTheSocketComeInWheneverTheProgramGivesWay) {
  ofVersion(2, 4);
  mnuChkUpdates_Click();
  TcpPeer peer;
  const auto giveWayUntil = [](const std::function<bool()>& holds) {
    for (int i = 0; i < 1'000'000 && !holds(); ++i) platform().events->doEvents();
    return holds();
  };
  ASSERT_TRUE(giveWayUntil([&] {
    if (!peer.isConnected()) peer = server_.accept();
    return peer.isConnected() && !peer.received().empty();
  }));
  peer.send(versionAnswer("2.5"));
  peer.close();
  EXPECT_TRUE(giveWayUntil([&] { return !dialogs->shown.empty(); }));
  EXPECT_EQ(boxes(), Texts{kNewer});
}

TEST_F(UpdateCheckTest, AFailureOfEachHandlerHasItsLine) {
  dispatchAll(*sockets);
  frmMain.sSocketState = "CheckUpdate";
  wsck1_Connect();  // with a closed socket nothing can be sent
  EXPECT_TRUE(logLines().back().starts_with("frmMain_wsck1_connect Error 40006 ")) << logLines().back();
  wsck1_DataArrival(1);
  EXPECT_TRUE(logLines().back().starts_with("frmMain_wsck1_dataarrival Error 40006 ")) << logLines().back();
  sockets->port = 0;
  mnuChkUpdates_Click();
  EXPECT_EQ(logLines().back(), "frmMain_ChkUpdates Error 380 Invalid property value");

  test::FailingFiles& files = test::watchFiles();
  files.refuses = [](const std::string& line) { return line.find("Winsock Error") != std::string::npos; };
  wsck1_Error(1, "x");
  EXPECT_TRUE(logLines().back().starts_with("frmMain_wsck1Error Error 75 ")) << logLines().back();
  files.refuses = [](const std::string& line) { return line.find(" No updates") != std::string::npos; };
  GetUpgrade(0);
  EXPECT_TRUE(logLines().back().starts_with("frmMain_GetUpgrade Error 75 ")) << logLines().back();
}

// What follows a redirect of GetUpdate: the upgrade program comes.
class UpgradeTest : public UpdateCheckTest {
 protected:
  // The server's end of the download that is asked for.
  TcpPeer download() {
    begin(socket_state::kGetUpdate);
    TcpPeer first = nextRequest();
    first.send(kMoved + "http://update.trelvin.example/files/upgrade\r\n\r\n");
    TcpPeer second = nextRequest();
    EXPECT_EQ(frmMain.sSocketState, "DLUpdate");
    return second;
  }

  static inline const std::string kHead = "HTTP/1.0 200 OK\r\nContent-Type: application/octet-stream\r\n\r\n";
  static constexpr const char* kQuestion =
      "An upgrade has been downloaded, do you wish to upgrade now?\r\n(This operation will close Trelvin)\r\n"
      "If not, please run Upgrade.exe later";
};

TEST_F(UpgradeTest, TheStatusCountsTheBytesOfTheAnswerAsTheyCome) {
  TcpPeer peer = download();
  sendChunks(peer, {kHead});
  EXPECT_EQ(frmMain.lDownloaded, static_cast<std::int32_t>(kHead.size()));
  sendChunks(peer, {"12345"});
  const std::string count = std::to_string(kHead.size() + 5);
  EXPECT_EQ(frmMain.StatusBar1.panel, "Update found, downloading " + count + " bytes");
}

TEST_F(UpgradeTest, MoreBytesThanCanBeCountedAreLoggedAndStillReceived) {
  TcpPeer peer = download();
  sendChunks(peer, {kHead});
  frmMain.lDownloaded = std::numeric_limits<std::int32_t>::max();
  sendChunks(peer, {"M"});
  EXPECT_EQ(logLines().back(), "frmMain_wsck1_dataarrival Error 6 Overflow");
  answer(peer, "Z");
  EXPECT_EQ(folder.read("work/Upgrade.exe"), "MZ");
}

TEST_F(UpgradeTest, TheProgramIsWrittenToTheCurrentFolderByteForByte) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i) bytes += static_cast<char>(i * 7 % 256);
  bytes += "\r\n\r\nnot the head\r\n\r\n";
  folder.write("work/Upgrade.exe", "an older one, longer than the new one" + std::string(200'000, 'x'));
  TcpPeer peer = download();
  peer.send(kHead + bytes, [this] { sockets->dispatch({}); });
  peer.close();
  dispatchAll(*sockets);
  EXPECT_EQ(folder.read("work/Upgrade.exe"), bytes);
  EXPECT_FALSE(folder.has("program/Upgrade.exe"));
  EXPECT_TRUE(hasLogged("Download of update complete"));
  EXPECT_EQ(frmMain.lDownloaded, 0);
  EXPECT_EQ(frmMain.wsck1.state(), kSocketClosed);
}

TEST_F(UpgradeTest, ThePersonIsAskedInASilentRunTooAndNoStartsNothing) {
  run.bRunSilent = true;
  dialogs->answers = {Answer::kNo};
  TcpPeer peer = download();
  answer(peer, kHead + "MZ");
  ASSERT_EQ(boxes(), Texts{kQuestion});
  EXPECT_EQ(dialogs->shown[0].title, "Upgrade Trelvin");
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kYesNo);
  EXPECT_TRUE(opener->opened.empty());
  EXPECT_FALSE(frmMain.timExit.enabled);
  EXPECT_FALSE(hasLogged("Launching upgrade..."));
  EXPECT_EQ(frmMain.lDownloaded, 0);
}

TEST_F(UpgradeTest, YesStartsItFromTheProgramFolderAndLeaves) {
  dialogs->answers = {Answer::kYes};
  frmMain.windowState = 2;
  TcpPeer peer = download();
  answer(peer, kHead + "MZ");
  ASSERT_EQ(opener->opened.size(), 1U);
  EXPECT_EQ(opener->opened[0].file, programPath() + "\\Upgrade.exe");
  EXPECT_EQ(opener->opened[0].showCommand, 2);
  EXPECT_FALSE(opener->opened[0].ownedByMainWindow);
  EXPECT_EQ(logLines().back(), "Launching upgrade...");
  EXPECT_TRUE(frmMain.timExit.enabled);
  EXPECT_EQ(frmMain.lDownloaded, 0);
  frmMain.timExit.onTimer();
  EXPECT_FALSE(anyFormLoaded());
}

TEST_F(UpgradeTest, TheProgramIsThereAndTheSocketClosedBeforeThePersonIsAsked) {
  bool wasReady = false;
  dialogs->onMessage = [&](const Message&) {
    wasReady = folder.has("work/Upgrade.exe") && frmMain.wsck1.state() == kSocketClosed &&
               hasLogged("Download of update complete");
  };
  TcpPeer peer = download();
  answer(peer, kHead + "MZ");
  EXPECT_TRUE(wasReady);
}

TEST_F(UpgradeTest, AnAnswerWithoutAHeadIsNoUpgrade) {
  TcpPeer peer = download();
  answer(peer, "MZ and no empty line");
  EXPECT_EQ(logLines().back(), "frmMain_wsck1_Close Error 5 Invalid procedure call or argument");
  EXPECT_FALSE(folder.has("work/Upgrade.exe"));
  EXPECT_TRUE(boxes().empty());
}

TEST_F(UpgradeTest, AProgramThatCannotBeWrittenIsNotOffered) {
  TcpPeer peer = download();
  test::watchFiles().refusesToWrite = [](const std::string& path) { return path == "Upgrade.exe"; };
  answer(peer, kHead + "MZ");
  EXPECT_TRUE(logLines().back().starts_with("frmMain_wsck1_Close Error 75 ")) << logLines().back();
  EXPECT_TRUE(boxes().empty());
  EXPECT_TRUE(opener->opened.empty());
}

TEST_F(UpgradeTest, ADownloadThatIsRedirectedAgainCountsAnew) {
  TcpPeer first = download();
  first.send(kMoved + "http://mirror.example/upgrade\r\n\r\n");
  TcpPeer second = nextRequest();
  EXPECT_EQ(second.received(), "GET http://mirror.example/upgrade HTTP/1.0\r\nAccept: */*\r\n\r\n");
  EXPECT_EQ(frmMain.lDownloaded, 0);
  answer(second, kHead + "MZ");
  EXPECT_EQ(folder.read("work/Upgrade.exe"), "MZ");
}

TEST_F(UpgradeTest, ABrokenDownloadWritesNothing) {
  TcpPeer peer = download();
  sendChunks(peer, {kHead + "MZ"});
  peer.reset();
  dispatchAll(*sockets);
  EXPECT_TRUE(hasOutput("Winsock Error 10054 The connection is reset by remote side"));
  EXPECT_FALSE(folder.has("work/Upgrade.exe"));
  EXPECT_TRUE(boxes().empty());
}

}  // namespace
}  // namespace trelvin
