// What people and timers have done to controls and what is still to be carried out.
#pragma once

#include <deque>
#include <functional>

#include "window/controls.h"

namespace trelvin::desktop {

// An event routine may run for hours, may open boxes, may end the process. Qt tells of a click from deep
// within its own event handling and wants its call back soon; so it is only noted here, and carried out by
// the loop that waits for events.
class Touches {
 public:
  using Touch = std::function<void()>;

  // Carried out only if the control can still be touched when its turn comes.
  void post(const Control& control, Touch touch);
  // Carried out in any case, such as a timer's tick or the closing of a window.
  void postAlways(Touch touch);

  [[nodiscard]] bool isEmpty() const { return waiting_.empty(); }
  // Carries out all in their order, those too that are noted meanwhile.
  void runAll();
  // A box has come up in front of the windows: what was meant for their controls is not meant any more.
  void forget();

 private:
  struct Waiting {
    const Control* control;  // null for what is carried out in any case
    Touch touch;
  };
  std::deque<Waiting> waiting_;
};

}  // namespace trelvin::desktop
