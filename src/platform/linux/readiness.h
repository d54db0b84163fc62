// Who waits for which descriptor: the one place where the sockets of a process meet.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "platform/linux/native_file.h"

namespace trelvin {

class Readiness {
 public:
  // What the descriptor is ready for, in the bits of epoll.
  using Hear = std::function<void(std::uint32_t ready)>;

  // Fails with 10055 when the system has no room for it.
  Readiness();

  // Calls whoever waits for what is ready, each once; waits so long at the most when nothing is. Returns
  // whether anybody was called. Whoever is called may end any watch and begin others.
  bool dispatch(std::chrono::milliseconds longest);
  // Ready to be read as long as anything watched is ready.
  [[nodiscard]] int descriptor() const { return epoll_.get(); }

 private:
  friend class Watch;
  Descriptor epoll_;
  std::uint64_t lastId_ = 0;
  std::map<std::uint64_t, Hear> hearers_;
};

// Waits for one descriptor, which must stay open as long as this lives.
class Watch {
 public:
  Watch(std::shared_ptr<Readiness> readiness, int descriptor, std::uint32_t wanted, Readiness::Hear hear);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  void want(std::uint32_t wanted);

 private:
  std::shared_ptr<Readiness> readiness_;
  int descriptor_;
  std::uint64_t id_;
};

}  // namespace trelvin
