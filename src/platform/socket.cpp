#include "platform/socket.h"

#include <algorithm>
#include <array>

#include "core/err.h"

namespace trelvin {

namespace {

struct Description {
  std::int32_t number;
  const char* text;
};

constexpr std::array kDescriptions{
    Description{socket_error::kAccessDenied, "Permission denied"},
    Description{socket_error::kTooManySockets, "Too many open sockets"},
    Description{socket_error::kAddressNotAvailable, "Address not available from the local machine"},
    Description{socket_error::kNetworkDown, "Network subsystem failed"},
    Description{socket_error::kNetworkUnreachable, "Network cannot be reached from this host at this time"},
    Description{socket_error::kConnectionAborted, "Connection is aborted due to timeout or other failure"},
    Description{socket_error::kConnectionReset, "The connection is reset by remote side"},
    Description{socket_error::kNoBufferSpace, "No buffer space is available"},
    Description{socket_error::kTimedOut, "Attempt to connect timed out"},
    Description{socket_error::kConnectionRefused, "Connection is forcefully rejected"},
    Description{socket_error::kHostUnreachable, "No route to the host"},
    Description{socket_error::kHostNotFound, "Authoritative answer: Host not found"},
    Description{socket_error::kHostNotFoundTryAgain, "Non-Authoritative answer: Host not found"},
    Description{socket_error::kLookupFailed, "Non-recoverable errors"},
    Description{socket_error::kWrongState,
                "Wrong protocol or connection state for the requested transaction or request"},
    Description{socket_error::kInvalidOperation, "Invalid operation at current state"},
};

}  // namespace

std::string describeSocketError(std::int32_t number) {
  const auto known = std::find_if(kDescriptions.begin(), kDescriptions.end(),
                                  [&](const Description& each) { return each.number == number; });
  return known == kDescriptions.end() ? describeError(number) : known->text;
}

}  // namespace trelvin
