#include "fakes/native_sockets.h"

#include <system_error>

#include "platform/windows/winsock_api.h"

namespace trelvin::test {

namespace {

void check(int result) {
  if (result < 0) throw std::system_error(::WSAGetLastError(), std::system_category());
}

SOCKET socketOf(const NativeSocket& socket) {
  return static_cast<SOCKET>(socket.get());
}

bool mustWait() {
  return ::WSAGetLastError() == WSAEWOULDBLOCK;
}

void neverWait(const NativeSocket& socket) {
  u_long on = 1;
  check(::ioctlsocket(socketOf(socket), static_cast<long>(FIONBIO), &on));
}

}  // namespace

void NativeSocket::close() {
  if (isOpen()) ::closesocket(socketOf(*this));
  socket_ = kNone;
}

void NativeSocket::reset() {
  // An end that lingers for no time at all leaves with a reset.
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  check(::setsockopt(socketOf(*this), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce),
                     sizeof(atOnce)));
  close();
}

std::optional<std::size_t> NativeSocket::receive(char* buffer, std::size_t size) {
  const int count = ::recv(socketOf(*this), buffer, static_cast<int>(size), 0);
  if (count >= 0) return static_cast<std::size_t>(count);
  if (mustWait()) return std::nullopt;
  return 0;
}

std::optional<std::size_t> NativeSocket::send(std::string_view bytes) {
  const int count = ::send(socketOf(*this), bytes.data(), static_cast<int>(bytes.size()), 0);
  if (count < 0 && mustWait()) return std::nullopt;
  check(count);
  return static_cast<std::size_t>(count);
}

NativeSocket listenOnLoopback(std::int32_t& port) {
  startWinsock();
  NativeSocket listener(static_cast<std::intptr_t>(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int length = sizeof(address);
  check(::bind(socketOf(listener), reinterpret_cast<sockaddr*>(&address), length));
  check(::listen(socketOf(listener), SOMAXCONN));
  check(::getsockname(socketOf(listener), reinterpret_cast<sockaddr*>(&address), &length));
  neverWait(listener);
  port = ntohs(address.sin_port);
  return listener;
}

NativeSocket acceptFrom(const NativeSocket& listener) {
  NativeSocket accepted(static_cast<std::intptr_t>(::accept(socketOf(listener), nullptr, nullptr)));
  if (accepted.isOpen()) {
    neverWait(accepted);
  } else if (!mustWait()) {
    check(-1);
  }
  return accepted;
}

}  // namespace trelvin::test
