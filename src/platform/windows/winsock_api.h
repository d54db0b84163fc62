// Windows' headers for sockets, in the only order in which they can be read.
#pragma once

// clang-format off
#include "platform/windows/windows_api.h"

#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on

namespace trelvin {

// Has to come before any other call of the sockets. Whatever it fails with, so do they.
void startWinsock();

}  // namespace trelvin
