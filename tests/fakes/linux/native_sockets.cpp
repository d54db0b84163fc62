#include "fakes/native_sockets.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace trelvin::test {

namespace {

void check(long result) {
  if (result < 0) throw std::system_error(errno, std::generic_category());
}

int descriptorOf(const NativeSocket& socket) {
  return static_cast<int>(socket.get());
}

}  // namespace

void NativeSocket::close() {
  if (isOpen()) ::close(descriptorOf(*this));
  socket_ = kNone;
}

void NativeSocket::reset() {
  // An end that lingers for no time at all leaves with a reset.
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  check(::setsockopt(descriptorOf(*this), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce)));
  close();
}

std::optional<std::size_t> NativeSocket::receive(char* buffer, std::size_t size) {
  const ssize_t count = ::recv(descriptorOf(*this), buffer, size, MSG_DONTWAIT);
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EAGAIN) return std::nullopt;
  return 0;
}

std::optional<std::size_t> NativeSocket::send(std::string_view bytes) {
  const ssize_t count = ::send(descriptorOf(*this), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (count < 0 && errno == EAGAIN) return std::nullopt;
  check(count);
  return static_cast<std::size_t>(count);
}

NativeSocket listenOnLoopback(std::int32_t& port) {
  NativeSocket listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  check(listener.get());
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  check(::bind(descriptorOf(listener), reinterpret_cast<sockaddr*>(&address), length));
  check(::listen(descriptorOf(listener), SOMAXCONN));
  check(::getsockname(descriptorOf(listener), reinterpret_cast<sockaddr*>(&address), &length));
  port = ntohs(address.sin_port);
  return listener;
}

NativeSocket acceptFrom(const NativeSocket& listener) {
  NativeSocket accepted(::accept4(descriptorOf(listener), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!accepted.isOpen() && errno != EAGAIN) check(-1);
  return accepted;
}

}  // namespace trelvin::test
