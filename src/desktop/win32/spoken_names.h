// What screen readers say of a window's controls.
#pragma once

#include <functional>

#include "desktop/layout.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

// Gives each control that the Tab key reaches its name and its tooltip as its description. A Windows that has
// no such service leaves them with what it finds itself: captions, and labels in front of boxes.
void nameForHearing(const Form& form, const WindowLayout& layout,
                    const std::function<HWND(const Control&)>& windowOf);

}  // namespace trelvin::desktop
