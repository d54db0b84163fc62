#include "desktop/qt/qt_desktop.h"

#include <QApplication>
#include <QLabel>
#include <QProgressDialog>
#include <QSocketNotifier>
#include <algorithm>
#include <utility>

#include "core/err.h"
#include "core/main_window.h"
#include "desktop/qt/texts.h"
#include "platform/platform.h"

namespace trelvin::desktop {

QtDesktop::QtDesktop(std::vector<Window> windows) {
  for (Window& each : windows) windows_.push_back({std::move(each), nullptr});
  desk_.redraw = [this] {
    for (const Shown& each : windows_) {
      if (each.view) each.view->draw();
    }
  };
  hearSockets();
}

QtDesktop::~QtDesktop() = default;

void QtDesktop::run() {
  while (anyFormLoaded()) turn();
  draw();
}

void QtDesktop::turn(bool mayWait) {
  draw();
  const bool isIdle = mayWait && desk_.touches.isEmpty();
  QCoreApplication::processEvents(isIdle ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  runTouches();
}

void QtDesktop::yield() {
  progress_.reset();
  const bool isDue = desk_.pace.isDue();
  if (isDue) draw();
  QCoreApplication::processEvents();
  if (isDue) desk_.pace.noteDrawn();
  if (desk_.touches.isEmpty()) return;
  runNestedTouches();
  draw();
}

void QtDesktop::waitWhile(const std::function<bool()>& isUp) {
  progress_.reset();
  desk_.touches.forget();
  draw();
  while (isUp()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    runNestedTouches();
    draw();
  }
  desk_.pace.startAnew();
}

// What comes over the net is carried out in its turn, like a touch.
void QtDesktop::hearSockets() {
  if (!platform().sockets) return;
  sockets_ = std::make_unique<QSocketNotifier>(platform().sockets->handle(), QSocketNotifier::Read);
  QObject::connect(sockets_.get(), &QSocketNotifier::activated, [this] {
    // Once is enough until its turn comes; what an event of a socket yields to hears of the others.
    sockets_->setEnabled(false);
    desk_.touches.postAlways([this] {
      sockets_->setEnabled(true);
      platform().sockets->dispatch();
    });
  });
}

bool QtDesktop::isMainWindowUp() const {
  return std::any_of(windows_.begin(), windows_.end(),
                     [](const Shown& each) { return each.window.isMain && each.window.form->loaded; });
}

void QtDesktop::runNestedTouches() {
  const bool wasUp = isMainWindowUp();
  runTouches();
  // The form is unloaded, its stores are closed, what was written is whole. The routine that yielded would go
  // on with what is no longer there.
  if (wasUp && !isMainWindowUp()) platform().application->end(0);
}

// The top of every event: what comes up to here has no handler, and ends the process.
void QtDesktop::runTouches() {
  desk_.pace.startAnew();
  try {
    desk_.touches.runAll();
  } catch (const Failure& failure) {
    endWithRunTimeError(failure);
  } catch (const std::bad_alloc&) {
    endWithRunTimeError(Failure(error_number::kOutOfMemory));
  }
}

void QtDesktop::draw() {
  for (Shown& each : windows_) drawWindow(each);
}

void QtDesktop::drawWindow(Shown& shown) {
  Form& form = *shown.window.form;
  if (!form.loaded || !form.visible) {
    shown.view.reset();
  } else if (shown.view) {
    shown.view->draw();
  } else {
    shown.view = std::make_unique<WindowView>(shown.window, desk_, [&form] { unloadForm(form); });
    if (form.owner != nullptr) shown.view->setWindowModality(Qt::ApplicationModal);
    shown.view->show();
    shown.view->activateWindow();
  }
}

QWidget* QtDesktop::activeWindow() const {
  if (QWidget* const active = QApplication::activeWindow()) return active;
  const auto up = std::find_if(windows_.rbegin(), windows_.rend(),
                               [](const Shown& each) { return each.view != nullptr; });
  return up == windows_.rend() ? nullptr : up->view.get();
}

void QtDesktop::showProgress(std::string_view title, std::uint64_t done, std::uint64_t found) {
  draw();
  if (!progress_) {
    progress_ = std::make_unique<QProgressDialog>(activeWindow());
    progress_->setCancelButton(nullptr);
    progress_->setAutoReset(false);
    progress_->setMinimumDuration(0);
  }
  progress_->setWindowTitle(toQt(title));
  progress_->setLabelText(toQt(std::to_string(done) + " of " + std::to_string(found) + " files copied"));
  // More files are found while the first travel, so that the end is not known before it is reached.
  constexpr int kSteps = 1000;
  progress_->setMaximum(kSteps);
  progress_->setValue(found == 0 ? 0 : static_cast<int>(done * kSteps / found));
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace trelvin::desktop
