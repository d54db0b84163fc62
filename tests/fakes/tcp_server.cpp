#include "fakes/tcp_server.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace trelvin::test {

namespace {

void check(long result) {
  if (result < 0) throw std::system_error(errno, std::generic_category());
}

}  // namespace

void TcpPeer::drain() {
  std::array<char, 4096> buffer{};
  while (isConnected() && !isAtEnd_) {
    const ssize_t count = ::recv(descriptor_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0) {
      isAtEnd_ = errno != EAGAIN;
      return;
    }
    isAtEnd_ = count == 0;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
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
    const ssize_t count = ::send(descriptor_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    if (count < 0 && errno != EAGAIN) check(count);
    if (meanwhile) meanwhile();
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("the client takes no more");
  }
}

void TcpPeer::reset() {
  // An end that lingers for no time at all leaves with a reset.
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  check(::setsockopt(descriptor_.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce)));
  close();
}

TcpServer::TcpServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  check(listener_.get());
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  check(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), length));
  check(::listen(listener_.get(), SOMAXCONN));
  check(::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &length));
  port_ = ntohs(address.sin_port);
}

TcpPeer TcpServer::accept() {
  Descriptor accepted(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (accepted.get() < 0 && errno != EAGAIN) check(accepted.get());
  return TcpPeer(std::move(accepted));
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
