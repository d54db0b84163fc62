// The windows on the screen and the loop that waits for what people do to them, as far as that is the same
// under every window system.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/desk.h"
#include "desktop/layout.h"

namespace trelvin::desktop {

// Of a long piece of work, such as a copy. More files are found while the first travel, so that the end is
// not known before it is reached.
std::string progressText(std::uint64_t done, std::uint64_t found);
inline constexpr int kProgressSteps = 1000;
int progressSteps(std::uint64_t done, std::uint64_t found);

// A window that is up.
class DrawnWindow {
 public:
  DrawnWindow() = default;
  DrawnWindow(const DrawnWindow&) = delete;
  DrawnWindow& operator=(const DrawnWindow&) = delete;
  virtual ~DrawnWindow() = default;

  // Brings over what has changed in the form since the last call.
  virtual void draw() = 0;
};

// Shows each form that is visible, and takes the windows of those away that no longer are. State comes to the
// screen when a routine yields, when it refreshes a list, and when it is done.
class Desktop {
 public:
  explicit Desktop(std::vector<Window> windows);
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  virtual ~Desktop();

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

 protected:
  struct Shown {
    Window window;
    std::unique_ptr<DrawnWindow> view;  // null when it isn't up
  };
  [[nodiscard]] const std::vector<Shown>& shown() const { return windows_; }
  Desk& desk() { return desk_; }
  virtual void draw();
  // A box comes up: what was meant for the windows behind it is dropped.
  void beginBox();
  void endBox() { desk_.pace.startAnew(); }
  // Carries out what has been noted while a routine is at work.
  void runNestedTouches();
  // The user logs off or the machine goes down. Does not come back.
  void endSession();

 private:
  // Shows a window on top of the others.
  virtual std::unique_ptr<DrawnWindow> open(const Window& window, std::function<void()> onClose) = 0;
  // Lets the window system tell what has happened, and waits for something if nothing has and that is wanted.
  virtual void hear(bool mayWait) = 0;
  // What has to wait until no routine is at work.
  virtual void tidyUp() {}
  // Takes the box away that shows how far a piece of work has got.
  virtual void dropProgress() = 0;

  void drawWindow(Shown& shown);
  void runTouches();
  [[nodiscard]] bool isMainWindowUp() const;

  Desk desk_;
  std::vector<Shown> windows_;
};

}  // namespace trelvin::desktop
