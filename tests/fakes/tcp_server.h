// A TCP server on loopback that a test plays itself, step by step, on its own thread: the system takes a
// connection in before anybody accepts it, so both ends can be driven in turn.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "fakes/native_sockets.h"
#include "platform/socket.h"

namespace trelvin::test {

// How long anything may take that is bound to happen, and how long nothing is watched to go on happening.
inline constexpr std::chrono::seconds kPatience(20);
inline constexpr std::chrono::milliseconds kStillness(40);

// The server's end of one connection.
class TcpPeer {
 public:
  TcpPeer() = default;
  explicit TcpPeer(NativeSocket socket) : socket_(std::move(socket)) {}

  [[nodiscard]] bool isConnected() const { return socket_.isOpen(); }
  // All that has come so far.
  const std::string& received();
  // Whether the client has closed its end.
  bool isClosedByClient();
  // Sends all of it; throws when the client does not take it within the patience. meanwhile runs between.
  void send(std::string_view bytes, const std::function<void()>& meanwhile = {});
  void close() { socket_.close(); }
  // Breaks the connection off.
  void reset() { socket_.reset(); }

 private:
  void drain();

  NativeSocket socket_;
  std::string received_;
  bool isAtEnd_ = false;
};

class TcpServer {
 public:
  [[nodiscard]] std::int32_t port() const { return port_; }
  // The next connection that waits; one that is not connected when there is none yet.
  TcpPeer accept() { return TcpPeer(acceptFrom(listener_)); }
  // From now on connections are refused.
  void stopListening() { listener_.close(); }

 private:
  std::int32_t port_ = 0;
  NativeSocket listener_ = listenOnLoopback(port_);
};

// Runs events until it holds; false when it doesn't within the patience.
bool dispatchUntil(Sockets& sockets, const std::function<bool()>& holds);
// Runs whatever events still come until nothing has come for a while.
void dispatchAll(Sockets& sockets);

}  // namespace trelvin::test
