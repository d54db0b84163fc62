// The process itself: where its program lies, how it was called, whether it is the only one.
#pragma once

#include <memory>

#include "platform/application.h"

namespace trelvin {

// The claim of prevInstance is a mutex named after the executable, in any case of its path, within the
// session of the user; it goes with the process, however that ends.
std::unique_ptr<Application> makeApplication();

}  // namespace trelvin
