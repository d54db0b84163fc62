// The time of this machine, in the forms that the user has chosen in Windows.
#pragma once

#include <memory>

#include "platform/application.h"

namespace trelvin {

std::unique_ptr<Clock> makeLocaleClock();

}  // namespace trelvin
