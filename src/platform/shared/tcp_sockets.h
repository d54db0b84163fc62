// TCP clients over the system's connections that never wait.
#pragma once

#include <memory>

#include "platform/shared/host_lookup.h"
#include "platform/socket.h"

namespace trelvin {

// A host of several addresses is tried at each in the order of the lookup; the failure of the first is the
// one that is told.
std::unique_ptr<Sockets> makeTcpSockets(HostLookup lookUp = lookUpHost);

}  // namespace trelvin
