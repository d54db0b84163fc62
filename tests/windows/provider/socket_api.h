// Windows' headers for sockets, in the only order in which they can be read.
#pragma once

#include "platform/windows/windows_api.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on
