// The addresses of hosts, by the system's own calls.
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "platform/shared/address_calls.h"
#include "platform/socket.h"

namespace trelvin {

namespace {

std::int32_t numberOfLookupFailure(int result) {
  switch (result) {
    case EAI_NONAME:
    case EAI_NODATA:
    case EAI_ADDRFAMILY:
      return socket_error::kHostNotFound;
    case EAI_AGAIN:
      return socket_error::kHostNotFoundTryAgain;
    default:
      return socket_error::kLookupFailed;
  }
}

}  // namespace

HostAnswer lookUpHost(const std::string& host) {
  return askForAddresses(host, 0, numberOfLookupFailure);
}

HostAnswer addressInNumbers(const std::string& host) {
  return askForAddresses(host, AI_NUMERICHOST, numberOfLookupFailure);
}

HostAddress withPort(const HostAddress& address, std::uint16_t port) {
  HostAddress changed = address;
  putPort(changed, port);
  return changed;
}

}  // namespace trelvin
