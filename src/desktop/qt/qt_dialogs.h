// Boxes and choosers on the screen.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "desktop/qt/qt_desktop.h"
#include "platform/application.h"
#include "platform/dialogs.h"

namespace trelvin::desktop {

// Between the program's form of a path and this machine's.
struct PathForms {
  std::function<std::string(std::string_view)> toNative;
  std::function<std::string(std::string_view)> fromNative;
};

std::unique_ptr<Dialogs> makeQtDialogs(QtDesktop& desktop, PathForms paths);
std::unique_ptr<Events> makeQtEvents(QtDesktop& desktop);

}  // namespace trelvin::desktop
