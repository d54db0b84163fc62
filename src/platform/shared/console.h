// What stands in for a window in a run that has none.
#pragma once

#include <iosfwd>
#include <memory>

#include "platform/application.h"
#include "platform/dialogs.h"

namespace trelvin {

// Nobody can be asked: every message goes to the stream and is answered at once by refusal (OK where there is
// nothing else, else Cancel, No or Abort), and the stream says so. An input box gives the empty text and a
// file chooser no file, as Cancel does. The stream must outlive the dialogs.
std::unique_ptr<Dialogs> makeConsoleDialogs(std::ostream& stream);

// Nobody clicks, no timer ticks, and without a click there is no conversation over the net: nothing waits.
std::unique_ptr<Events> makeConsoleEvents();

}  // namespace trelvin
