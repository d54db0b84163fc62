// What the views of one program share.
#pragma once

#include <chrono>
#include <functional>

#include "desktop/touches.h"

namespace trelvin::desktop {

// How often a routine that is at work may bring its state to the screen. Some of them yield or refresh ten
// thousand times a second; nobody sees more than some dozen pictures of that, and each costs a millisecond.
// What was passed over shows with the next yield or refresh, and at the latest when the routine is done.
class Pace {
 public:
  [[nodiscard]] bool isDue() const { return Clock::now() - last_ >= kBetweenPictures; }
  // Counted from the end of a picture, so that on a slow screen the work still gets its share.
  void noteDrawn() { last_ = Clock::now(); }
  // What comes next shows at once, such as the button of a run that now reads "Abort".
  void startAnew() { last_ = {}; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kBetweenPictures{20};
  Clock::time_point last_{};
};

struct Desk {
  Touches touches;
  Pace pace;
  std::function<void()> redraw;  // brings all windows that are up to the state of their forms
  // For a window that hears of the end of the user's session. Does not come back in a real process.
  std::function<void()> endSession;
};

}  // namespace trelvin::desktop
