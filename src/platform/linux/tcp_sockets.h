// TCP clients over the system's non-blocking sockets.
#pragma once

#include <memory>

#include "platform/linux/host_lookup.h"
#include "platform/socket.h"

namespace trelvin {

// A host of several addresses is tried at each in the order of the lookup; the failure of the first is the
// one that is told. The handle is a descriptor that is ready to be read.
std::unique_ptr<Sockets> makeTcpSockets(HostLookup lookUp = lookUpHost);

}  // namespace trelvin
