#include "desktop/qt/touches.h"

#include <utility>

namespace trelvin::desktop {

void Touches::post(const Control& control, Touch touch) {
  waiting_.push_back({&control, std::move(touch)});
}

void Touches::postAlways(Touch touch) {
  waiting_.push_back({nullptr, std::move(touch)});
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

}  // namespace trelvin::desktop
