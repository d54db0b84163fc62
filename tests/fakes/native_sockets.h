// What a server on loopback needs of the system's sockets. No call waits; each throws std::system_error.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace trelvin::test {

// An open socket in the system's own form, closed with its owner.
class NativeSocket {
 public:
  NativeSocket() = default;
  explicit NativeSocket(std::intptr_t socket) : socket_(socket) {}
  NativeSocket(NativeSocket&& other) noexcept : socket_(std::exchange(other.socket_, kNone)) {}
  NativeSocket& operator=(NativeSocket&& other) noexcept {
    std::swap(socket_, other.socket_);
    other.close();
    return *this;
  }
  NativeSocket(const NativeSocket&) = delete;
  NativeSocket& operator=(const NativeSocket&) = delete;
  ~NativeSocket() { close(); }

  [[nodiscard]] bool isOpen() const { return socket_ != kNone; }
  [[nodiscard]] std::intptr_t get() const { return socket_; }
  void close();
  // Closes with a reset of the connection.
  void reset();

  // Bytes that came: none when there are none yet, 0 when the other end has closed or broken off.
  std::optional<std::size_t> receive(char* buffer, std::size_t size);
  // Bytes that went; none when the other end takes no more for now.
  std::optional<std::size_t> send(std::string_view bytes);

 private:
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t socket_ = kNone;
};

// Listens on a port of loopback that was free, and tells it.
NativeSocket listenOnLoopback(std::int32_t& port);
// The next connection that waits; one that isn't open when there is none yet.
NativeSocket acceptFrom(const NativeSocket& listener);

}  // namespace trelvin::test
