#include "desktop/desktop.h"

#include <algorithm>
#include <new>
#include <utility>

#include "core/err.h"
#include "core/main_window.h"
#include "platform/platform.h"

namespace trelvin::desktop {

std::string progressText(std::uint64_t done, std::uint64_t found) {
  return std::to_string(done) + " of " + std::to_string(found) + " files copied";
}

int progressSteps(std::uint64_t done, std::uint64_t found) {
  return found == 0 ? 0 : static_cast<int>(done * kProgressSteps / found);
}

Desktop::Desktop(std::vector<Window> windows) {
  for (Window& each : windows) windows_.push_back({std::move(each), nullptr});
  desk_.redraw = [this] {
    for (const Shown& each : windows_) {
      if (each.view) each.view->draw();
    }
  };
}

Desktop::~Desktop() = default;

void Desktop::run() {
  while (anyFormLoaded()) turn();
  draw();
}

void Desktop::turn(bool mayWait) {
  draw();
  hear(mayWait && desk_.touches.isEmpty());
  tidyUp();
  runTouches();
}

void Desktop::yield() {
  dropProgress();
  const bool isDue = desk_.pace.isDue();
  if (isDue) draw();
  hear(false);
  if (isDue) desk_.pace.noteDrawn();
  if (desk_.touches.isEmpty()) return;
  runNestedTouches();
  draw();
}

void Desktop::beginBox() {
  dropProgress();
  desk_.touches.forget();
  draw();
}

void Desktop::waitWhile(const std::function<bool()>& isUp) {
  beginBox();
  while (isUp()) {
    hear(true);
    runNestedTouches();
    draw();
  }
  endBox();
}

bool Desktop::isMainWindowUp() const {
  return std::any_of(windows_.begin(), windows_.end(),
                     [](const Shown& each) { return each.window.isMain && each.window.form->loaded; });
}

void Desktop::runNestedTouches() {
  const bool wasUp = isMainWindowUp();
  runTouches();
  // The form is unloaded, its stores are closed, what was written is whole. The routine that yielded would go
  // on with what is no longer there.
  if (wasUp && !isMainWindowUp()) platform().application->end(0);
}

// Once every window has been told, the system ends the process where it stands. So nothing waits for its
// turn, and a routine that is at work does not go on without its form.
void Desktop::endSession() {
  mnuExit_Click();
  platform().application->end(0);
}

// The top of every event: what comes up to here has no handler, and ends the process.
void Desktop::runTouches() {
  desk_.pace.startAnew();
  try {
    desk_.touches.runAll();
  } catch (const Failure& failure) {
    endWithRunTimeError(failure);
  } catch (const std::bad_alloc&) {
    endWithRunTimeError(Failure(error_number::kOutOfMemory));
  }
}

void Desktop::draw() {
  for (Shown& each : windows_) drawWindow(each);
}

void Desktop::drawWindow(Shown& shown) {
  Form& form = *shown.window.form;
  if (!form.loaded || !form.visible) {
    shown.view.reset();
  } else if (shown.view) {
    shown.view->draw();
  } else {
    shown.view = open(shown.window, [&form] { unloadForm(form); });
  }
}

}  // namespace trelvin::desktop
