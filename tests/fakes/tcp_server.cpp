#include "fakes/tcp_server.h"

#include <array>
#include <stdexcept>

namespace trelvin::test {

void TcpPeer::drain() {
  std::array<char, 4096> buffer{};
  while (isConnected() && !isAtEnd_) {
    const std::optional<std::size_t> count = socket_.receive(buffer.data(), buffer.size());
    if (!count) return;
    isAtEnd_ = *count == 0;
    received_.append(buffer.data(), *count);
  }
}

const std::string& TcpPeer::received() {
  drain();
  return received_;
}

bool TcpPeer::isClosedByClient() {
  drain();
  return isAtEnd_;
}

void TcpPeer::send(std::string_view bytes, const std::function<void()>& meanwhile) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!bytes.empty()) {
    bytes.remove_prefix(socket_.send(bytes).value_or(0));
    if (meanwhile) meanwhile();
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("the client takes no more");
  }
}

bool dispatchUntil(Sockets& sockets, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    sockets.dispatch(std::chrono::milliseconds(10));
  }
  return true;
}

void dispatchAll(Sockets& sockets) {
  while (sockets.dispatch(kStillness)) continue;
}

}  // namespace trelvin::test
