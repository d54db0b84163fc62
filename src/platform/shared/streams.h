// The system's connections that never wait, and the one place where whoever waits for one of them is called.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/shared/host_lookup.h"

namespace trelvin {

// What a connection can be ready for, as bits.
inline constexpr unsigned kReadable = 1;
inline constexpr unsigned kWritable = 2;

// Gets the bits that are ready. It may end what it hears of and begin others.
using Hear = std::function<void(unsigned ready)>;

// What has come of a call that never waits: nothing at all when the time for it has not come yet.
struct Transfer {
  std::size_t count = 0;     // bytes that went
  bool ended = false;        // the other end has closed; all its data came before
  std::int32_t failure = 0;  // a number of socket_error
};

// This end of a connection. Nobody hears of it any more when it is gone.
class Stream {
 public:
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  virtual ~Stream() = default;

  // What is to be heard of. A new one is waited for until it is writable, when connecting has ended.
  // Nothing any more for no bits.
  virtual void want(unsigned bits) = 0;
  // How connecting has ended: 0 for well, else a number of socket_error. To be asked once.
  virtual std::int32_t connectFailure() = 0;
  // A stream whose sending has failed becomes readable.
  virtual Transfer send(std::string_view bytes) = 0;
  virtual Transfer receive(char* buffer, std::size_t size) = 0;
};

struct BegunStream {
  std::unique_ptr<Stream> stream{};  // none when it could not begin
  std::int32_t failure = 0;          // then a number of socket_error
};

// A call from another thread. Nobody hears it any more when this is gone.
class Wakeup {
 public:
  Wakeup() = default;
  Wakeup(const Wakeup&) = delete;
  Wakeup& operator=(const Wakeup&) = delete;
  virtual ~Wakeup() = default;

  // What another thread is given to run: at any time, even when all this is gone.
  virtual std::function<void()> call() = 0;
};

// Everything that it makes keeps it alive. It calls on the thread that dispatches and from nowhere else.
class Streams {
 public:
  Streams() = default;
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;
  virtual ~Streams() = default;

  virtual BegunStream connect(const HostAddress& address, Hear hear) = 0;
  // Fails with 10055 when the system has no room for it.
  virtual std::unique_ptr<Wakeup> wakeup(std::function<void()> hear) = 0;

  // Calls whoever waits for what is ready, each once; waits so long at the most when nothing is. Returns
  // whether anybody was called.
  virtual bool dispatch(std::chrono::milliseconds longest) = 0;
  // Ready to be read, or signalled, as long as dispatch has somebody to call; at times a little longer.
  [[nodiscard]] virtual std::intptr_t handle() const = 0;
};

// The system's. Fails with 10055 when it has no room for them.
std::shared_ptr<Streams> makeStreams();

}  // namespace trelvin
