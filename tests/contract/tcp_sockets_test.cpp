#include "platform/shared/tcp_sockets.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/tcp_server.h"

namespace trelvin {
namespace {

using test::dispatchAll;
using test::dispatchUntil;
using test::numberOfFailure;
using test::TcpPeer;
using test::TcpServer;
using Events = std::vector<std::string>;

constexpr const char* kLoopback = "127.0.0.1";

// A socket that keeps what it is told.
class TcpSocketsTest : public testing::Test {
 protected:
  std::unique_ptr<Socket> newSocket() {
    return sockets_->create(
        {.connect = [this] { heard_.emplace_back("connect"); },
         .dataArrival =
             [this](std::int32_t bytesTotal) { heard_.push_back("data " + std::to_string(bytesTotal)); },
         .close = [this] { heard_.emplace_back("close"); },
         .error =
             [this](std::int32_t number, const std::string& description) {
               heard_.push_back("error " + std::to_string(number) + " " + description);
             }});
  }

  bool until(const std::function<bool()>& holds) { return dispatchUntil(*sockets_, holds); }
  bool untilHeard(std::size_t count) {
    return until([&] { return heard_.size() >= count; });
  }

  // The server's end of the connection that the socket makes.
  TcpPeer connected() {
    socket_->connect(kLoopback, server_.port());
    EXPECT_TRUE(untilHeard(1));
    EXPECT_EQ(heard_, Events{"connect"});
    TcpPeer peer = server_.accept();
    EXPECT_TRUE(peer.isConnected());
    heard_.clear();
    return peer;
  }

  [[nodiscard]] bool isReady() const { return test::isSignalled(sockets_->handle()); }

  TcpServer server_;
  Events heard_;
  std::unique_ptr<Sockets> sockets_ = makeTcpSockets();
  std::unique_ptr<Socket> socket_ = newSocket();
};

TEST_F(TcpSocketsTest, ASocketBeginsClosedAndHearsNothing) {
  EXPECT_EQ(socket_->state(), kSocketClosed);
  EXPECT_FALSE(sockets_->dispatch());
  EXPECT_FALSE(isReady());
}

TEST_F(TcpSocketsTest, ItConnectsAndSaysSoFromDispatchAlone) {
  socket_->connect(kLoopback, server_.port());
  EXPECT_EQ(socket_->state(), kSocketResolvingHost);
  EXPECT_TRUE(heard_.empty());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"connect"});
  EXPECT_EQ(socket_->state(), kSocketConnected);
}

TEST_F(TcpSocketsTest, WhatIsSentReachesTheServerByteForByte) {
  TcpPeer peer = connected();
  const std::string bytes("a\0b\xFF\r\n", 6);
  socket_->sendData(bytes);
  EXPECT_TRUE(until([&] { return peer.received().size() >= bytes.size(); }));
  EXPECT_EQ(peer.received(), bytes);
}

TEST_F(TcpSocketsTest, WhatTheServerSendsArrivesByteForByteAndIsFetchedOnce) {
  TcpPeer peer = connected();
  const std::string bytes("a\0b\xFF\r\n", 6);
  peer.send(bytes);
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"data 6"});
  EXPECT_EQ(socket_->getData(), bytes);
  EXPECT_EQ(socket_->getData(), "");
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_.size(), 1U);
}

TEST_F(TcpSocketsTest, WhatIsNotFetchedCountsAtTheNextArrival) {
  TcpPeer peer = connected();
  peer.send("one");
  ASSERT_TRUE(untilHeard(1));
  peer.send("four");
  ASSERT_TRUE(untilHeard(2));
  EXPECT_EQ(heard_, (Events{"data 3", "data 7"}));
  EXPECT_EQ(socket_->getData(), "onefour");
}

TEST_F(TcpSocketsTest, AClosingServerIsHeardOnceAfterAllItsData) {
  TcpPeer peer = connected();
  peer.send("last words");
  peer.close();
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, (Events{"data 10", "close"}));
  EXPECT_EQ(socket_->state(), kSocketClosing);
  EXPECT_EQ(socket_->getData(), "last words");
  EXPECT_EQ(numberOfFailure([&] { socket_->sendData("more"); }), socket_error::kWrongState);
}

TEST_F(TcpSocketsTest, ARefusedConnectionIsAnErrorAndLeavesTheErrorState) {
  server_.stopListening();
  socket_->connect(kLoopback, server_.port());
  EXPECT_TRUE(heard_.empty());
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, Events{"error 10061 Connection is forcefully rejected"});
  EXPECT_EQ(socket_->state(), kSocketError);
  EXPECT_FALSE(isReady());
}

TEST_F(TcpSocketsTest, ABrokenConnectionIsAnErrorAndLeavesTheErrorState) {
  if (!test::tellsResetFromClose()) GTEST_SKIP() << "a reset passes for a close here";
  TcpPeer peer = connected();
  peer.reset();
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, Events{"error 10054 The connection is reset by remote side"});
  EXPECT_EQ(socket_->state(), kSocketError);
}

TEST_F(TcpSocketsTest, SendingIntoABrokenConnectionIsToldByAnEvent) {
  TcpPeer peer = connected();
  peer.reset();
  socket_->sendData("hello");
  socket_->sendData("hello again");
  EXPECT_TRUE(heard_.empty());
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, Events{"error 10054 The connection is reset by remote side"});
}

TEST_F(TcpSocketsTest, AfterAnErrorItConnectsAgainOnceItIsClosed) {
  TcpPeer peer = connected();
  peer.reset();
  dispatchAll(*sockets_);
  EXPECT_EQ(numberOfFailure([&] { socket_->connect(kLoopback, server_.port()); }),
            socket_error::kInvalidOperation);
  socket_->close();
  EXPECT_EQ(socket_->state(), kSocketClosed);
  heard_.clear();
  EXPECT_TRUE(connected().isConnected());
}

TEST_F(TcpSocketsTest, ClosingEndsTheConversationForBothAndIsNoEvent) {
  TcpPeer peer = connected();
  peer.send("never fetched");
  ASSERT_TRUE(untilHeard(1));
  socket_->close();
  EXPECT_EQ(socket_->state(), kSocketClosed);
  EXPECT_TRUE(until([&] { return peer.isClosedByClient(); }));
  EXPECT_EQ(heard_.size(), 1U);
  EXPECT_EQ(numberOfFailure([&] { socket_->getData(); }), socket_error::kWrongState);
  EXPECT_EQ(numberOfFailure([&] { socket_->sendData("x"); }), socket_error::kWrongState);
}

TEST_F(TcpSocketsTest, NothingComesOfAConnectionThatIsClosedOnItsWay) {
  socket_->connect(kLoopback, server_.port());
  socket_->close();
  dispatchAll(*sockets_);
  EXPECT_TRUE(heard_.empty());
}

TEST_F(TcpSocketsTest, NothingComesOfASocketThatIsGone) {
  TcpPeer peer = connected();
  peer.send("too late");
  socket_.reset();
  dispatchAll(*sockets_);
  EXPECT_TRUE(heard_.empty());
}

TEST_F(TcpSocketsTest, ASocketMayOutliveTheSet) {
  TcpPeer peer = connected();
  sockets_.reset();
  socket_->sendData("still here");
  socket_->close();
  EXPECT_EQ(peer.received(), "still here");
}

TEST_F(TcpSocketsTest, AnEventMayCloseTheSocketAndConnectAgain) {
  int arrivals = 0;
  socket_ = sockets_->create({.connect = [this] { socket_->sendData("hello"); },
                              .dataArrival =
                                  [&, this](std::int32_t) {
                                    if (++arrivals > 1) return;
                                    socket_->close();
                                    socket_->connect(kLoopback, server_.port());
                                  },
                              .close = {},
                              .error = {}});
  socket_->connect(kLoopback, server_.port());
  TcpPeer first;
  ASSERT_TRUE(until([&] { return (first = server_.accept()).isConnected(); }));
  first.send("again");
  TcpPeer second;
  ASSERT_TRUE(until([&] { return (second = server_.accept()).isConnected(); }));
  EXPECT_TRUE(until([&] { return second.received() == "hello"; }));
  second.send("enough");
  EXPECT_TRUE(until([&] { return arrivals == 2; }));
  EXPECT_TRUE(first.isClosedByClient());
}

TEST_F(TcpSocketsTest, AnEventMayDestroyItsSocket) {
  socket_ = sockets_->create({.connect =
                                  [this] {
                                    socket_.reset();
                                    heard_.emplace_back("gone");
                                  },
                              .dataArrival = {},
                              .close = {},
                              .error = {}});
  socket_->connect(kLoopback, server_.port());
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, Events{"gone"});
}

TEST_F(TcpSocketsTest, AnEventThatEndsAnotherSocketsConversationLeavesItUnheard) {
  const auto endTheOthers = [this](std::unique_ptr<Socket>& other) {
    return [this, &other](std::int32_t) {
      heard_.emplace_back("data");
      other->close();
    };
  };
  std::unique_ptr<Socket> other;
  socket_ = sockets_->create({.connect = {}, .dataArrival = endTheOthers(other), .close = {}, .error = {}});
  other = sockets_->create({.connect = {}, .dataArrival = endTheOthers(socket_), .close = {}, .error = {}});
  for (Socket* each : {socket_.get(), other.get()}) each->connect(kLoopback, server_.port());
  TcpPeer first;
  TcpPeer second;
  ASSERT_TRUE(until([&] { return (first = server_.accept()).isConnected(); }));
  ASSERT_TRUE(until([&] { return (second = server_.accept()).isConnected(); }));
  ASSERT_TRUE(
      until([&] { return socket_->state() == kSocketConnected && other->state() == kSocketConnected; }));
  first.send("x");
  second.send("x");
  dispatchAll(*sockets_);
  EXPECT_EQ(heard_, Events{"data"});
}

TEST_F(TcpSocketsTest, WhatAnEventThrowsReachesTheLoopAndTheSocketLivesOn) {
  socket_ = sockets_->create({.connect = [] { throw Failure(error_number::kTypeMismatch); },
                              .dataArrival = [this](std::int32_t) { heard_.emplace_back("data"); },
                              .close = {},
                              .error = {}});
  socket_->connect(kLoopback, server_.port());
  EXPECT_EQ(numberOfFailure([&] { return until([] { return false; }); }), error_number::kTypeMismatch);
  TcpPeer peer = server_.accept();
  peer.send("x");
  EXPECT_TRUE(untilHeard(1));
}

TEST_F(TcpSocketsTest, AnEventMayDispatchItself) {
  // As a message box does, which keeps the loop of the window going.
  socket_ = sockets_->create({.connect =
                                  [this] {
                                    heard_.emplace_back("connect");
                                    EXPECT_TRUE(untilHeard(2));
                                    heard_.emplace_back("connect ends");
                                  },
                              .dataArrival = [this](std::int32_t) { heard_.emplace_back("data"); },
                              .close = {},
                              .error = {}});
  socket_->connect(kLoopback, server_.port());
  TcpPeer peer;
  ASSERT_TRUE(dispatchUntil(*sockets_, [&] {
    if (peer.isConnected()) return true;
    peer = server_.accept();
    if (peer.isConnected()) peer.send("x");
    return false;
  }));
  ASSERT_TRUE(untilHeard(3));
  EXPECT_EQ(heard_, (Events{"connect", "data", "connect ends"}));
}

TEST_F(TcpSocketsTest, MoreThanTheSystemTakesAtOnceIsSentInTheEnd) {
  TcpPeer peer = connected();
  const std::string much(std::size_t{20} * 1024 * 1024, 'x');
  socket_->sendData(much);
  socket_->sendData("end");
  EXPECT_TRUE(until([&] { return peer.received().size() >= much.size() + 3; }));
  EXPECT_EQ(peer.received().size(), much.size() + 3);
  EXPECT_TRUE(peer.received().ends_with("xend"));
  dispatchAll(*sockets_);
  EXPECT_TRUE(heard_.empty());
  EXPECT_FALSE(isReady());
}

TEST_F(TcpSocketsTest, MuchThatArrivesComesInPortionsAndNothingIsLost) {
  TcpPeer peer = connected();
  std::string fetched;
  socket_->close();
  socket_ = sockets_->create({.connect = [this] { heard_.emplace_back("connect"); },
                              .dataArrival =
                                  [&, this](std::int32_t bytesTotal) {
                                    EXPECT_LE(bytesTotal, 64 * 1024);
                                    const std::string chunk = socket_->getData();
                                    EXPECT_EQ(chunk.size(), static_cast<std::size_t>(bytesTotal));
                                    fetched += chunk;
                                  },
                              .close = [this] { heard_.emplace_back("close"); },
                              .error = {}});
  peer = connected();
  std::string much;
  for (int i = 0; much.size() < std::size_t{3} * 1024 * 1024; ++i) much += std::to_string(i) + " ";
  peer.send(much, [this] { sockets_->dispatch(); });
  peer.close();
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(fetched, much);
}

TEST_F(TcpSocketsTest, TheHandleIsReadyAsLongAsThereIsSomethingToDo) {
  TcpPeer peer = connected();
  dispatchAll(*sockets_);
  EXPECT_FALSE(isReady());
  peer.send("x");
  EXPECT_TRUE(until([this] { return isReady() || !heard_.empty(); }));
  dispatchAll(*sockets_);
  EXPECT_FALSE(isReady());
}

TEST_F(TcpSocketsTest, WhatIsNoPortIsRefusedAtOnce) {
  for (const std::int32_t port : {0, -1, 65536}) {
    EXPECT_EQ(numberOfFailure([&] { socket_->connect(kLoopback, port); }),
              error_number::kInvalidPropertyValue);
  }
  EXPECT_EQ(socket_->state(), kSocketClosed);
}

TEST_F(TcpSocketsTest, AConversationCannotBeginWithinAnother) {
  const TcpPeer peer = connected();
  EXPECT_EQ(numberOfFailure([&] { socket_->connect(kLoopback, server_.port()); }),
            socket_error::kInvalidOperation);
  EXPECT_EQ(socket_->state(), kSocketConnected);
}

TEST_F(TcpSocketsTest, ANameOfTheHostsFileIsFound) {
  socket_->connect("localhost", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"connect"});
}

// A lookup that a test answers by hand.
class LookupTest : public TcpSocketsTest {
 protected:
  LookupTest() {
    sockets_ = makeTcpSockets([asked = asked_](const std::string& host) {
      asked->host = host;
      return asked->answer.get_future().get();
    });
    socket_ = newSocket();
  }

  struct Asked {
    std::string host;
    std::promise<HostAnswer> answer;
  };
  // The thread of a lookup may outlive the test.
  std::shared_ptr<Asked> asked_ = std::make_shared<Asked>();
};

TEST_F(LookupTest, ASlowNameServerHoldsNobodyUp) {
  socket_->connect("update.trelvin.example", server_.port());
  EXPECT_EQ(socket_->state(), kSocketResolvingHost);
  EXPECT_FALSE(sockets_->dispatch());
  EXPECT_EQ(socket_->state(), kSocketResolvingHost);
  asked_->answer.set_value(addressInNumbers(kLoopback));
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"connect"});
  EXPECT_EQ(asked_->host, "update.trelvin.example");
}

TEST_F(LookupTest, AHostThatNobodyKnowsIsAnError) {
  asked_->answer.set_value({.failure = socket_error::kHostNotFound});
  socket_->connect("update.trelvin.example", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"error 11001 Authoritative answer: Host not found"});
  EXPECT_EQ(socket_->state(), kSocketError);
}

TEST_F(LookupTest, ALookupThatBreaksDownIsAnError) {
  asked_->answer.set_exception(std::make_exception_ptr(std::bad_alloc()));
  socket_->connect("update.trelvin.example", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"error 11003 Non-recoverable errors"});
}

TEST_F(LookupTest, AnAnswerThatComesAfterTheCloseIsNotHeard) {
  socket_->connect("update.trelvin.example", server_.port());
  socket_->close();
  asked_->answer.set_value(addressInNumbers(kLoopback));
  dispatchAll(*sockets_);
  EXPECT_TRUE(heard_.empty());
  EXPECT_EQ(socket_->state(), kSocketClosed);
}

TEST_F(LookupTest, AnAddressInNumbersNeedsNoLookup) {
  EXPECT_TRUE(connected().isConnected());
  EXPECT_EQ(asked_->host, "");
}

TEST_F(LookupTest, EachAddressIsTriedInTurn) {
  HostAnswer answer = addressInNumbers("::1");  // nobody listens there
  for (const HostAddress& each : addressInNumbers(kLoopback).addresses) {
    answer.addresses.push_back(each);
  }
  asked_->answer.set_value(std::move(answer));
  socket_->connect("update.trelvin.example", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"connect"});
}

TEST_F(LookupTest, WhenNoAddressAnswersTheFirstFailureIsTold) {
  server_.stopListening();
  HostAnswer answer = addressInNumbers(kLoopback);
  // An address of no family leads nowhere.
  answer.addresses.push_back({std::string(answer.addresses.front().bytes.size(), '\xFF')});
  asked_->answer.set_value(std::move(answer));
  socket_->connect("update.trelvin.example", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"error 10061 Connection is forcefully rejected"});
}

TEST_F(LookupTest, AnAnswerWithoutAddressesIsAnErrorToo) {
  asked_->answer.set_value({});
  socket_->connect("update.trelvin.example", server_.port());
  ASSERT_TRUE(untilHeard(1));
  EXPECT_EQ(heard_, Events{"error 10050 Network subsystem failed"});
}

TEST(HostLookupTest, ANameThatCannotBeAHostsIsNotFound) {
  // With a part that is too long, so that no name server is asked.
  EXPECT_EQ(lookUpHost(std::string(70, 'x') + ".example").failure, socket_error::kHostNotFound);
}

TEST(SocketErrorTest, EveryNumberHasItsDescriptionAndOthersTheRuntimes) {
  EXPECT_EQ(describeSocketError(socket_error::kInvalidOperation), "Invalid operation at current state");
  EXPECT_EQ(describeSocketError(error_number::kTypeMismatch), "Type mismatch");
}

}  // namespace
}  // namespace trelvin
