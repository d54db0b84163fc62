// Who waits for what: one event of the system for all sockets and other threads of a process.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "platform/shared/streams.h"

namespace trelvin {

// One who waits. What has happened is remembered until it is heard, because Windows tells of it once.
struct Waiter {
  std::function<unsigned()> look;  // takes what has happened since the last look, in bits of Stream
  Hear hear;
  unsigned wanted = 0;
  unsigned ready = 0;
};

class Gathering {
 public:
  // Fails with 10055 when the system has no room for it.
  Gathering();

  // As Streams has it.
  bool dispatch(std::chrono::milliseconds longest);
  // The event; whoever has something to tell sets it. It lives as long as anybody holds it.
  [[nodiscard]] std::shared_ptr<void> event() const { return event_; }

 private:
  friend class Waiting;
  bool hearAll();
  // Leaves the event set if anybody is still to hear something, and only then.
  void settle();

  std::shared_ptr<void> event_;
  std::uint64_t lastId_ = 0;
  std::map<std::uint64_t, Waiter> waiters_;
};

// Somebody waits as long as this lives.
class Waiting {
 public:
  Waiting(std::shared_ptr<Gathering> gathering, Waiter waiter);
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting();

  void want(unsigned bits);
  // Another look is worth it, without a call of the system behind it.
  void wake() const;

 private:
  std::shared_ptr<Gathering> gathering_;
  std::uint64_t id_;
};

}  // namespace trelvin
