// The windows on the screen and the loop that waits for what people do to them.
#pragma once

#include <QElapsedTimer>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "desktop/layout.h"
#include "desktop/qt/desk.h"
#include "desktop/qt/window_view.h"

class QProgressDialog;
class QSocketNotifier;

namespace trelvin::desktop {

// Shows each form that is visible, and takes the windows of those away that no longer are. State comes to the
// screen when a routine yields, when it refreshes a list, and when it is done.
class QtDesktop {
 public:
  explicit QtDesktop(std::vector<Window> windows);
  ~QtDesktop();
  QtDesktop(const QtDesktop&) = delete;
  QtDesktop& operator=(const QtDesktop&) = delete;

  // Stays until no form is loaded any more.
  void run();
  // One turn of the loop: draws, waits for something to happen if nothing has and that is wanted, and carries
  // it out.
  void turn(bool mayWait = true);
  // What a routine calls in the middle of its work. Does not come back when the main window has gone
  // meanwhile: the routine stands on it.
  void yield();
  // Stays until the box that is up has been answered. The windows behind it are drawn and their timers tick.
  void waitWhile(const std::function<bool()>& isUp);
  // Shows how far a long piece of work has got, until the next yield. Clicks wait for that too.
  void showProgress(std::string_view title, std::uint64_t done, std::uint64_t found);

  // The window that a box belongs to; null when none is up.
  [[nodiscard]] QWidget* activeWindow() const;

 private:
  struct Shown {
    Window window;
    std::unique_ptr<WindowView> view;
  };
  void draw();
  void drawWindow(Shown& shown);
  void hearSockets();
  void runTouches();
  void runNestedTouches();
  [[nodiscard]] bool isMainWindowUp() const;

  Desk desk_;
  std::unique_ptr<QSocketNotifier> sockets_;
  std::vector<Shown> windows_;
  std::unique_ptr<QProgressDialog> progress_;
};

}  // namespace trelvin::desktop
