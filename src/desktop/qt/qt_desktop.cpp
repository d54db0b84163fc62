#include "desktop/qt/qt_desktop.h"

#include <QApplication>
#include <QLabel>
#include <QProgressDialog>
#include <QSocketNotifier>
#include <algorithm>
#include <utility>

#include "desktop/qt/texts.h"
#include "desktop/qt/window_view.h"
#include "platform/platform.h"

namespace trelvin::desktop {

QtDesktop::QtDesktop(std::vector<Window> windows) : Desktop(std::move(windows)) {
  hearSockets();
}

QtDesktop::~QtDesktop() = default;

std::unique_ptr<DrawnWindow> QtDesktop::open(const Window& window, std::function<void()> onClose) {
  auto view = std::make_unique<WindowView>(window, desk(), std::move(onClose));
  if (window.form->owner != nullptr) view->setWindowModality(Qt::ApplicationModal);
  view->show();
  view->activateWindow();
  return view;
}

void QtDesktop::hear(bool mayWait) {
  QCoreApplication::processEvents(mayWait ? QEventLoop::WaitForMoreEvents : QEventLoop::AllEvents);
}

void QtDesktop::tidyUp() {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void QtDesktop::dropProgress() {
  progress_.reset();
}

// What comes over the net is carried out in its turn, like a touch.
void QtDesktop::hearSockets() {
  if (!platform().sockets) return;
  sockets_ = std::make_unique<QSocketNotifier>(platform().sockets->handle(), QSocketNotifier::Read);
  QObject::connect(sockets_.get(), &QSocketNotifier::activated, [this] {
    // Once is enough until its turn comes; what an event of a socket yields to hears of the others.
    sockets_->setEnabled(false);
    desk().touches.postAlways([this] {
      sockets_->setEnabled(true);
      platform().sockets->dispatch();
    });
  });
}

QWidget* QtDesktop::activeWindow() const {
  if (QWidget* const active = QApplication::activeWindow()) return active;
  const auto up =
      std::find_if(shown().rbegin(), shown().rend(), [](const Shown& each) { return each.view != nullptr; });
  return up == shown().rend() ? nullptr : dynamic_cast<QWidget*>(up->view.get());
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
  progress_->setLabelText(toQt(progressText(done, found)));
  progress_->setMaximum(kProgressSteps);
  progress_->setValue(progressSteps(done, found));
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace trelvin::desktop
