// Boxes and choosers of Windows.
#pragma once

#include <memory>

#include "desktop/win32/win32_desktop.h"
#include "platform/application.h"
#include "platform/dialogs.h"

namespace trelvin::desktop {

std::unique_ptr<Dialogs> makeWin32Dialogs(Win32Desktop& desktop);
std::unique_ptr<Events> makeWin32Events(Win32Desktop& desktop);

}  // namespace trelvin::desktop
