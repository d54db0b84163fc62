// TCP clients that never wait: what happens comes back as events, on the program's one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace trelvin {

// States by the numbers of the platform's socket control.
inline constexpr std::int32_t kSocketClosed = 0;
inline constexpr std::int32_t kSocketResolvingHost = 4;
inline constexpr std::int32_t kSocketConnecting = 6;
inline constexpr std::int32_t kSocketConnected = 7;
inline constexpr std::int32_t kSocketClosing = 8;  // the other end has closed, this one has not yet
inline constexpr std::int32_t kSocketError = 9;

// Numbers of failures, as the platform's sockets and their control give them.
namespace socket_error {
inline constexpr std::int32_t kAccessDenied = 10013;
inline constexpr std::int32_t kTooManySockets = 10024;
inline constexpr std::int32_t kAddressNotAvailable = 10049;
inline constexpr std::int32_t kNetworkDown = 10050;
inline constexpr std::int32_t kNetworkUnreachable = 10051;
inline constexpr std::int32_t kConnectionAborted = 10053;
inline constexpr std::int32_t kConnectionReset = 10054;
inline constexpr std::int32_t kNoBufferSpace = 10055;
inline constexpr std::int32_t kTimedOut = 10060;
inline constexpr std::int32_t kConnectionRefused = 10061;
inline constexpr std::int32_t kHostUnreachable = 10065;
inline constexpr std::int32_t kHostNotFound = 11001;
inline constexpr std::int32_t kHostNotFoundTryAgain = 11002;
inline constexpr std::int32_t kLookupFailed = 11003;
inline constexpr std::int32_t kWrongState = 40006;
inline constexpr std::int32_t kInvalidOperation = 40020;
}  // namespace socket_error

// The description that goes with one of them.
std::string describeSocketError(std::int32_t number);

// Run from dispatch and from nowhere else, never within a call to the socket itself. Each may use the socket,
// close it, or destroy it.
struct SocketEvents {
  std::function<void()> connect;
  std::function<void(std::int32_t bytesTotal)> dataArrival;  // bytes that getData would give now
  std::function<void()> close;                               // the other end has closed; all data came before
  std::function<void(std::int32_t number, const std::string& description)> error;  // state 9 by then
};

class Socket {
 public:
  Socket() = default;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  virtual ~Socket() = default;

  [[nodiscard]] virtual std::int32_t state() const = 0;
  // Begins to look the host up and to connect; ends in the event connect or error. 40020 when the socket is
  // not closed, 380 for what is no port, 10055 when the system has no room for it.
  virtual void connect(const std::string& host, std::int32_t port) = 0;
  // From any state, without an event. What was neither sent nor fetched yet is dropped.
  virtual void close() = 0;
  // Takes the bytes and sends them as the other end takes them. 40006 when not connected.
  virtual void sendData(std::string_view bytes) = 0;
  // All bytes that have arrived and were not fetched yet. 40006 in a closed socket.
  virtual std::string getData() = 0;
};

class Sockets {
 public:
  Sockets() = default;
  Sockets(const Sockets&) = delete;
  Sockets& operator=(const Sockets&) = delete;
  virtual ~Sockets() = default;

  // A closed socket. It may outlive this object; nothing comes of it any more then.
  virtual std::unique_ptr<Socket> create(SocketEvents events) = 0;
  // Runs the events of what has happened on any of the sockets. When there is nothing yet, waits for it, so
  // long at the most. Returns whether something had happened. What an event throws goes to the caller.
  virtual bool dispatch(std::chrono::milliseconds longest = std::chrono::milliseconds(0)) = 0;
  // For a window's loop, which waits for more than sockets: the system's handle of a thing that is ready to
  // be read, or signalled, as long as dispatch has something to do.
  [[nodiscard]] virtual std::intptr_t handle() const = 0;
};

}  // namespace trelvin
