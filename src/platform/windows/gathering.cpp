#include "platform/windows/gathering.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/err.h"
#include "platform/socket.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

std::shared_ptr<void> newEvent() {
  const HANDLE event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (event == nullptr) {
    throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
  }
  return {event, ::CloseHandle};
}

// Whole milliseconds up to a moment, rounded up.
DWORD timeUntil(steady_clock::time_point end) {
  const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
  return static_cast<DWORD>(std::max<milliseconds::rep>(left.count(), 0));
}

}  // namespace

Gathering::Gathering() : event_(newEvent()) {}

bool Gathering::dispatch(milliseconds longest) {
  const auto end = steady_clock::now() + longest;
  // The event may have been set for what nobody wants to hear.
  while (::WaitForSingleObject(event_.get(), timeUntil(end)) == WAIT_OBJECT_0) {
    if (hearAll()) return true;
  }
  return false;
}

void Gathering::settle() {
  ::ResetEvent(event_.get());
  bool anyLeft = false;
  for (auto& [id, waiter] : waiters_) {
    waiter.ready |= waiter.look();
    anyLeft = anyLeft || (waiter.ready & waiter.wanted) != 0;
  }
  if (anyLeft) ::SetEvent(event_.get());
}

bool Gathering::hearAll() {
  settle();
  std::vector<std::uint64_t> ids;
  for (const auto& [id, waiter] : waiters_) {
    if ((waiter.ready & waiter.wanted) != 0) ids.push_back(id);
  }
  // What one of them throws leaves the others for the next time.
  const std::unique_ptr<Gathering, void (*)(Gathering*)> inTheEnd(this,
                                                                  [](Gathering* all) { all->settle(); });
  for (const std::uint64_t id : ids) {
    // One that was called before may have ended this one, or heard it in a dispatch of its own.
    const auto found = waiters_.find(id);
    if (found == waiters_.end()) continue;
    const unsigned heard = found->second.ready & found->second.wanted;
    if (heard == 0) continue;
    found->second.ready &= ~heard;
    const Hear hear = found->second.hear;  // a copy: it may end its own waiting
    hear(heard);
  }
  return !ids.empty();
}

Waiting::Waiting(std::shared_ptr<Gathering> gathering, Waiter waiter)
    : gathering_(std::move(gathering)), id_(++gathering_->lastId_) {
  gathering_->waiters_.emplace(id_, std::move(waiter));
}

Waiting::~Waiting() {
  gathering_->waiters_.erase(id_);
}

void Waiting::want(unsigned bits) {
  Waiter& waiter = gathering_->waiters_.at(id_);
  waiter.wanted = bits;
  if ((waiter.ready & bits) != 0) wake();
}

void Waiting::wake() const {
  ::SetEvent(gathering_->event().get());
}

}  // namespace trelvin
