#include "platform/shared/streams.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "core/err.h"
#include "platform/linux/epoll.h"
#include "platform/linux/native_file.h"
#include "platform/socket.h"

namespace trelvin {

namespace {

// The socket number for a number of the system.
std::int32_t socketNumber(int systemNumber) {
  switch (systemNumber) {
    case EACCES:
    case EPERM:
      return socket_error::kAccessDenied;
    case EMFILE:
    case ENFILE:
      return socket_error::kTooManySockets;
    case EADDRNOTAVAIL:
      return socket_error::kAddressNotAvailable;
    case ENETUNREACH:
    case EAFNOSUPPORT:
      return socket_error::kNetworkUnreachable;
    case ECONNABORTED:
      return socket_error::kConnectionAborted;
    case ECONNRESET:
    case EPIPE:
      return socket_error::kConnectionReset;
    case ENOBUFS:
    case ENOMEM:
      return socket_error::kNoBufferSpace;
    case ETIMEDOUT:
      return socket_error::kTimedOut;
    case ECONNREFUSED:
      return socket_error::kConnectionRefused;
    case EHOSTUNREACH:
      return socket_error::kHostUnreachable;
    default:
      return socket_error::kNetworkDown;
  }
}

std::uint32_t epollBits(unsigned wanted) {
  return ((wanted & kReadable) != 0 ? EPOLLIN : 0U) | ((wanted & kWritable) != 0 ? EPOLLOUT : 0U);
}

// A broken connection is readable: reading tells what has become of it.
unsigned readyBits(std::uint32_t bits) {
  constexpr auto kOut = static_cast<std::uint32_t>(EPOLLOUT);
  return ((bits & ~kOut) != 0 ? kReadable : 0U) | ((bits & kOut) != 0 ? kWritable : 0U);
}

// What a call of the system has given: bytes, or why none.
Transfer transferOf(ssize_t result) {
  if (result >= 0) return {.count = static_cast<std::size_t>(result)};
  const int failure = errno;
  return {.failure = failure == EAGAIN || failure == EINTR ? 0 : socketNumber(failure)};
}

class EpollStream final : public Stream {
 public:
  EpollStream(Descriptor descriptor, std::shared_ptr<Epoll> epoll, Hear hear)
      : descriptor_(std::move(descriptor)) {
    watch_.emplace(std::move(epoll), descriptor_.get(), EPOLLOUT,
                   [hear = std::move(hear)](std::uint32_t bits) { hear(readyBits(bits)); });
  }

  void want(unsigned bits) override {
    if (bits == 0) return watch_.reset();  // epoll would go on to tell of a broken connection
    watch_->want(epollBits(bits));
  }

  std::int32_t connectFailure() override {
    int failure = 0;
    socklen_t length = sizeof(failure);
    if (::getsockopt(descriptor_.get(), SOL_SOCKET, SO_ERROR, &failure, &length) != 0) failure = errno;
    return failure == 0 ? 0 : socketNumber(failure);
  }

  Transfer send(std::string_view bytes) override {
    return transferOf(::send(descriptor_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }

  Transfer receive(char* buffer, std::size_t size) override {
    const ssize_t result = ::recv(descriptor_.get(), buffer, size, 0);
    return result == 0 ? Transfer{.ended = true} : transferOf(result);
  }

 private:
  Descriptor descriptor_;
  std::optional<EpollWatch> watch_;
};

Descriptor newSignal() {
  Descriptor signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (signal.get() < 0) {
    throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
  }
  return signal;
}

class EpollWakeup final : public Wakeup {
 public:
  EpollWakeup(std::shared_ptr<Epoll> epoll, std::function<void()> hear)
      : watch_(std::move(epoll), signal_->get(), EPOLLIN,
               [signal = signal_, hear = std::move(hear)](std::uint32_t) {
                 eventfd_t ignored = 0;
                 ::eventfd_read(signal->get(), &ignored);
                 hear();
               }) {}

  std::function<void()> call() override {
    return [signal = signal_] { ::eventfd_write(signal->get(), 1); };
  }

 private:
  std::shared_ptr<const Descriptor> signal_ = std::make_shared<const Descriptor>(newSignal());
  EpollWatch watch_;
};

class EpollStreams final : public Streams {
 public:
  BegunStream connect(const HostAddress& address, Hear hear) override {
    const auto* place = reinterpret_cast<const sockaddr*>(address.bytes.data());
    Descriptor descriptor(::socket(place->sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (descriptor.get() < 0) return {.failure = socketNumber(errno)};
    const int result = ::connect(descriptor.get(), place, static_cast<socklen_t>(address.bytes.size()));
    if (result != 0 && errno != EINPROGRESS && errno != EINTR) return {.failure = socketNumber(errno)};
    return {.stream = std::make_unique<EpollStream>(std::move(descriptor), epoll_, std::move(hear))};
  }

  std::unique_ptr<Wakeup> wakeup(std::function<void()> hear) override {
    return std::make_unique<EpollWakeup>(epoll_, std::move(hear));
  }

  bool dispatch(std::chrono::milliseconds longest) override { return epoll_->dispatch(longest); }
  [[nodiscard]] std::intptr_t handle() const override { return epoll_->descriptor(); }

 private:
  std::shared_ptr<Epoll> epoll_ = std::make_shared<Epoll>();
};

}  // namespace

std::shared_ptr<Streams> makeStreams() {
  return std::make_shared<EpollStreams>();
}

}  // namespace trelvin
