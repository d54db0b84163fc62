#include "desktop/run_desktop.h"

#include <cstdlib>

#include "core/err.h"
#include "core/main_window.h"
#include "core/start_up.h"
#include "desktop/win32/win32_dialogs.h"
#include "platform/platform.h"
#include "platform/windows/adsi/com.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

// A service and a task that runs whether or not anybody is logged on have a screen that nobody sees.
bool hasDisplay() {
  USEROBJECTFLAGS flags{};
  const BOOL isKnown =
      GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr);
  return isKnown != FALSE && (flags.dwFlags & WSF_VISIBLE) != 0;
}

int runDesktop(char** /*argv*/) {
  const Apartment apartment;  // choosers and what speaks to screen readers stand on it
  Win32Desktop desktop(windows());
  platform().dialogs = makeWin32Dialogs(desktop);
  platform().events = makeWin32Events(desktop);
  try {
    loadWelcomeForm();
    desktop.run();
  } catch (const Failure& failure) {
    endWithRunTimeError(failure);
  }
  return EXIT_SUCCESS;
}

}  // namespace trelvin::desktop
