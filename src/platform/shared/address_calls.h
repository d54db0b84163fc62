// The calls for addresses that all systems have under the same names. To be included behind the system's own
// headers for sockets.
#pragma once

#include <memory>
#include <string>

#include "platform/shared/host_lookup.h"

namespace trelvin {

// What the system finds by these flags; numberOfFailure gives the socket number for one of its results.
inline HostAnswer askForAddresses(const std::string& host, int flags, std::int32_t (*numberOfFailure)(int)) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* first = nullptr;
  const int result = ::getaddrinfo(host.c_str(), nullptr, &hints, &first);
  if (result != 0) return {.failure = numberOfFailure(result)};
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(first, &::freeaddrinfo);
  HostAnswer answer;
  for (const addrinfo* each = first; each != nullptr; each = each->ai_next) {
    answer.addresses.push_back({std::string(reinterpret_cast<const char*>(each->ai_addr), each->ai_addrlen)});
  }
  return answer;
}

inline void putPort(HostAddress& address, std::uint16_t port) {
  auto* const place = reinterpret_cast<sockaddr*>(address.bytes.data());
  if (place->sa_family == AF_INET) reinterpret_cast<sockaddr_in*>(place)->sin_port = htons(port);
  if (place->sa_family == AF_INET6) reinterpret_cast<sockaddr_in6*>(place)->sin6_port = htons(port);
}

}  // namespace trelvin
