// What people and timers have done to controls and what is still to be carried out.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "window/controls.h"

namespace trelvin::desktop {

// An event routine may run for hours, may open boxes, may end the process. A window system tells of a click
// from deep within its own event handling and wants its call back soon; so it is only noted here, and carried
// out by the loop that waits for events.
class Touches {
 public:
  using Touch = std::function<void()>;

  // Carried out only if the control can still be touched when its turn comes.
  void post(const Control& control, Touch touch);
  // Carried out in any case, such as a timer's tick or the closing of a window.
  void postAlways(Touch touch);

  [[nodiscard]] bool isEmpty() const { return waiting_.empty(); }
  // Whether there are any for that control. What the screen shows of it is newer than its state then.
  [[nodiscard]] bool areWaitingFor(const Control& control) const;
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

// What a person can do, as touches that any window system can note.
template <typename Kind>
void postClick(Touches& touches, Kind& control) {
  touches.post(control, [&control] {
    if (control.onClick) control.onClick();
  });
}
void postDoubleClick(Touches& touches, ListControl& list);
// Keys by the platform's own codes; 0 for one that has none.
void postKeyPress(Touches& touches, ListControl& list, std::int32_t character);
void postKeyUp(Touches& touches, ListControl& list, std::int32_t key);
// Entries that are others by the time of its turn are not those that the person saw, and stay as they are.
void postChoice(Touches& touches, ListControl& list, std::vector<std::int32_t> chosen, std::int32_t inHand);
// The tab's index counts from 0, as window systems do.
void postTab(Touches& touches, TabStrip& strip, std::int32_t index);

// Notes the ticks of a timer. Those that could not be carried out in time are one tick.
class Ticks {
 public:
  Ticks(Timer& timer, Touches& touches) : timer_(timer), touches_(touches) {}
  void post();

 private:
  Timer& timer_;
  Touches& touches_;
  std::shared_ptr<bool> isDue_ = std::make_shared<bool>(false);  // outlives the window that ticked
};

}  // namespace trelvin::desktop
