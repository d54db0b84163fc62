#include "platform/linux/epoll.h"

#include <sys/epoll.h>

#include <array>
#include <utility>

#include "core/err.h"
#include "platform/socket.h"

namespace trelvin {

namespace {

constexpr int kMostAtOnce = 16;

void check(int result) {
  if (result >= 0) return;
  throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
}

}  // namespace

Epoll::Epoll() : epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
  check(epoll_.get());
}

bool Epoll::dispatch(std::chrono::milliseconds longest) {
  std::array<epoll_event, kMostAtOnce> ready{};
  const int count = ::epoll_wait(epoll_.get(), ready.data(), kMostAtOnce, static_cast<int>(longest.count()));
  bool anyCalled = false;
  for (int i = 0; i < count; ++i) {
    // One that was called before may have ended this watch, or another one on the same descriptor.
    const epoll_event& event = ready[static_cast<std::size_t>(i)];
    const auto found = hearers_.find(event.data.u64);
    if (found == hearers_.end()) continue;
    const Hear hear = found->second;  // a copy: it may end its own watch
    anyCalled = true;
    hear(event.events);
  }
  return anyCalled;
}

EpollWatch::EpollWatch(std::shared_ptr<Epoll> epoll, int descriptor, std::uint32_t wanted, Epoll::Hear hear)
    : epoll_(std::move(epoll)), descriptor_(descriptor), id_(++epoll_->lastId_) {
  epoll_event event{.events = wanted, .data = {.u64 = id_}};
  check(::epoll_ctl(epoll_->epoll_.get(), EPOLL_CTL_ADD, descriptor_, &event));
  epoll_->hearers_.emplace(id_, std::move(hear));
}

EpollWatch::~EpollWatch() {
  epoll_->hearers_.erase(id_);
  ::epoll_ctl(epoll_->epoll_.get(), EPOLL_CTL_DEL, descriptor_, nullptr);
}

void EpollWatch::want(std::uint32_t wanted) {
  epoll_event event{.events = wanted, .data = {.u64 = id_}};
  check(::epoll_ctl(epoll_->epoll_.get(), EPOLL_CTL_MOD, descriptor_, &event));
}

}  // namespace trelvin
