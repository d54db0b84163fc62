// Windows' headers for late-bound COM and the directory service, in the only order in which they can be read.
#pragma once

#include "platform/windows/windows_api.h"

// clang-format off
#include <objbase.h>
#include <oleauto.h>

#include <iads.h>
#include <adshlp.h>
// clang-format on
