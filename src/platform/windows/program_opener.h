// Opens what the shell knows how to open.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/shell.h"

namespace trelvin {

// The system's handle of the main window as it is now; 0 when there is none.
using MainWindowHandle = std::function<std::intptr_t()>;

std::unique_ptr<Opener> makeProgramOpener(MainWindowHandle mainWindow);

}  // namespace trelvin
