// The addresses of hosts, by the system's own calls.
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <memory>

#include "platform/shared/host_lookup.h"
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

HostAnswer addressesOf(const std::string& host, int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* first = nullptr;
  const int result = ::getaddrinfo(host.c_str(), nullptr, &hints, &first);
  if (result != 0) return {.failure = numberOfLookupFailure(result)};
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(first, &::freeaddrinfo);
  HostAnswer answer;
  for (const addrinfo* each = first; each != nullptr; each = each->ai_next) {
    answer.addresses.push_back({std::string(reinterpret_cast<const char*>(each->ai_addr), each->ai_addrlen)});
  }
  return answer;
}

}  // namespace

HostAnswer lookUpHost(const std::string& host) {
  return addressesOf(host, 0);
}

HostAnswer addressInNumbers(const std::string& host) {
  return addressesOf(host, AI_NUMERICHOST);
}

HostAddress withPort(const HostAddress& address, std::uint16_t port) {
  HostAddress changed = address;
  auto* const place = reinterpret_cast<sockaddr*>(changed.bytes.data());
  if (place->sa_family == AF_INET) reinterpret_cast<sockaddr_in*>(place)->sin_port = htons(port);
  if (place->sa_family == AF_INET6) reinterpret_cast<sockaddr_in6*>(place)->sin6_port = htons(port);
  return changed;
}

}  // namespace trelvin
