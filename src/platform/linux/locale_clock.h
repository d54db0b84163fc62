// The time of this machine, in the forms of the locale in force.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/application.h"

namespace trelvin {

// The forms follow LC_TIME; main puts the user's locale in force.
std::unique_ptr<Clock> makeLocaleClock();

// A locale's format of a time, as strftime takes it, less the seconds and the time zone. timeWithHalves is
// the locale's form with AM and PM, which %r stands for.
std::string shortTimeFormat(std::string_view time, std::string_view timeWithHalves);

}  // namespace trelvin
