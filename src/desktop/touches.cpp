#include "desktop/touches.h"

#include <algorithm>
#include <utility>

namespace trelvin::desktop {

void Touches::post(const Control& control, Touch touch) {
  waiting_.push_back({&control, std::move(touch)});
}

void Touches::postAlways(Touch touch) {
  waiting_.push_back({nullptr, std::move(touch)});
}

bool Touches::areWaitingFor(const Control& control) const {
  return std::any_of(waiting_.begin(), waiting_.end(),
                     [&control](const Waiting& each) { return each.control == &control; });
}

void Touches::runAll() {
  while (!waiting_.empty()) {
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    if (next.control == nullptr || (next.control->enabled && next.control->visible)) next.touch();
  }
}

void Touches::forget() {
  std::erase_if(waiting_, [](const Waiting& each) { return each.control != nullptr; });
}

void postDoubleClick(Touches& touches, ListControl& list) {
  if (list.onDblClick) touches.post(list, [&list] { list.onDblClick(); });
}

void postKeyPress(Touches& touches, ListControl& list, std::int32_t character) {
  if (character == 0 || !list.onKeyPress) return;
  touches.post(list, [&list, character] { list.onKeyPress(character); });
}

void postKeyUp(Touches& touches, ListControl& list, std::int32_t key) {
  if (key == 0 || !list.onKeyUp) return;
  touches.post(list, [&list, key] { list.onKeyUp(key); });
}

void postChoice(Touches& touches, ListControl& list, std::vector<std::int32_t> chosen, std::int32_t inHand) {
  touches.post(list, [&list, chosen = std::move(chosen), inHand, rewrites = list.rewrites()] {
    if (rewrites == list.rewrites()) list.choose(chosen, inHand);
  });
}

void postTab(Touches& touches, TabStrip& strip, std::int32_t index) {
  touches.post(strip, [&strip, index] {
    if (index < strip.tabCount()) strip.select(index + 1);
  });
}

void Ticks::post() {
  if (std::exchange(*isDue_, true)) return;
  touches_.postAlways([&timer = timer_, isDue = isDue_] {
    *isDue = false;
    if (timer.enabled && timer.onTimer) timer.onTimer();
  });
}

}  // namespace trelvin::desktop
