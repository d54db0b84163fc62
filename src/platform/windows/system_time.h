// Moments of the program in Windows' form and back.
#pragma once

#include "core/value.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

SYSTEMTIME systemTimeOf(const Date& date);
Date dateOf(const SYSTEMTIME& time);

}  // namespace trelvin
