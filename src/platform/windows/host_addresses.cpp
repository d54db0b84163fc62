// The addresses of hosts, by Winsock's own calls.
#include "platform/socket.h"
#include "platform/windows/winsock_api.h"

// It needs what those bring.
#include "platform/shared/address_calls.h"

namespace trelvin {

namespace {

std::int32_t numberOfLookupFailure(int result) {
  switch (result) {
    case WSAHOST_NOT_FOUND:
    case WSANO_DATA:
    case WSAEAFNOSUPPORT:
      return socket_error::kHostNotFound;
    case WSATRY_AGAIN:
      return socket_error::kHostNotFoundTryAgain;
    default:
      return socket_error::kLookupFailed;
  }
}

}  // namespace

HostAnswer lookUpHost(const std::string& host) {
  startWinsock();
  return askForAddresses(host, 0, numberOfLookupFailure);
}

HostAnswer addressInNumbers(const std::string& host) {
  startWinsock();
  return askForAddresses(host, AI_NUMERICHOST, numberOfLookupFailure);
}

HostAddress withPort(const HostAddress& address, std::uint16_t port) {
  HostAddress changed = address;
  putPort(changed, port);
  return changed;
}

}  // namespace trelvin
