// Who waits for which descriptor: the one place where the sockets of a process meet.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "platform/linux/native_file.h"

namespace trelvin {

class Epoll {
 public:
  // What the descriptor is ready for, in the bits of epoll.
  using Hear = std::function<void(std::uint32_t ready)>;

  // Fails with 10055 when the system has no room for it.
  Epoll();

  // Calls whoever waits for what is ready, each once; waits so long at the most when nothing is. Returns
  // whether anybody was called. Whoever is called may end any watch and begin others.
  bool dispatch(std::chrono::milliseconds longest);
  // Ready to be read as long as anything watched is ready.
  [[nodiscard]] int descriptor() const { return epoll_.get(); }

 private:
  friend class EpollWatch;
  Descriptor epoll_;
  std::uint64_t lastId_ = 0;
  std::map<std::uint64_t, Hear> hearers_;
};

// Waits for one descriptor, which must stay open as long as this lives.
class EpollWatch {
 public:
  EpollWatch(std::shared_ptr<Epoll> epoll, int descriptor, std::uint32_t wanted, Epoll::Hear hear);
  EpollWatch(const EpollWatch&) = delete;
  EpollWatch& operator=(const EpollWatch&) = delete;
  ~EpollWatch();

  void want(std::uint32_t wanted);

 private:
  std::shared_ptr<Epoll> epoll_;
  int descriptor_;
  std::uint64_t id_;
};

}  // namespace trelvin
