#include "platform/linux/tcp_sockets.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <optional>
#include <utility>

#include "core/err.h"
#include "platform/linux/native_file.h"
#include "platform/linux/readiness.h"

namespace trelvin {

namespace {

constexpr std::size_t kReadSize = std::size_t{64} * 1024;
constexpr std::int32_t kLargestPort = 65535;

[[noreturn]] void refuse(std::int32_t number) {
  throw Failure(number, describeSocketError(number));
}

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

bool mustWait(int systemNumber) {
  return systemNumber == EAGAIN || systemNumber == EINTR;
}

class TcpSocket final : public Socket {
 public:
  TcpSocket(std::shared_ptr<Readiness> readiness, HostLookup lookUp, SocketEvents events)
      : readiness_(std::move(readiness)),
        lookUp_(std::move(lookUp)),
        events_(std::make_shared<const SocketEvents>(std::move(events))) {}

  [[nodiscard]] std::int32_t state() const override { return state_; }

  void connect(const std::string& host, std::int32_t port) override {
    if (state_ != kSocketClosed) refuse(socket_error::kInvalidOperation);
    if (port < 1 || port > kLargestPort) throw Failure(error_number::kInvalidPropertyValue);
    lookup_.emplace(host, lookUp_);
    watch_.emplace(readiness_, lookup_->descriptor(), EPOLLIN, [this](std::uint32_t) { takeAddresses(); });
    port_ = static_cast<std::uint16_t>(port);
    state_ = kSocketResolvingHost;
  }

  void close() override {
    letGo();
    incoming_.clear();
    state_ = kSocketClosed;
  }

  void sendData(std::string_view bytes) override {
    if (state_ != kSocketConnected) refuse(socket_error::kWrongState);
    outgoing_ += bytes;
    flush();
    watch_->want(outgoing_.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT);
  }

  std::string getData() override {
    if (state_ == kSocketClosed) refuse(socket_error::kWrongState);
    return std::exchange(incoming_, {});
  }

 private:
  // Each event is the last thing that a step does: it may close this socket, or destroy it. It is called
  // through a holder of its own for the same reason.
  template <typename Event, typename... Arguments>
  void raise(Event SocketEvents::*event, Arguments&&... arguments) {
    const std::shared_ptr<const SocketEvents> events = events_;
    if ((*events).*event) ((*events).*event)(std::forward<Arguments>(arguments)...);
  }

  void letGo() {
    watch_.reset();
    lookup_.reset();
    descriptor_ = Descriptor();
    addresses_.clear();
    outgoing_.clear();
    brokenBy_ = 0;
    firstFailure_ = 0;
  }

  void fail(std::int32_t number) {
    letGo();
    state_ = kSocketError;
    raise(&SocketEvents::error, number, describeSocketError(number));
  }

  void takeAddresses() {
    HostAnswer answer = lookup_->answer();
    watch_.reset();
    lookup_.reset();
    if (answer.failure != 0) return fail(answer.failure);
    addresses_ = std::move(answer.addresses);
    std::reverse(addresses_.begin(), addresses_.end());
    state_ = kSocketConnecting;
    tryNextAddress();
  }

  void tryNextAddress() {
    while (!addresses_.empty()) {
      HostAddress address = addresses_.back();
      addresses_.pop_back();
      address.setPort(port_);
      if (begin(address)) return;
    }
    fail(socketNumber(firstFailure_));
  }

  // Whether the connection is on its way.
  bool begin(const HostAddress& address) {
    watch_.reset();
    descriptor_ =
        Descriptor(::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (descriptor_.get() < 0) return note(errno);
    const auto* place = reinterpret_cast<const sockaddr*>(&address.storage);
    if (::connect(descriptor_.get(), place, address.length) != 0 && errno != EINPROGRESS && errno != EINTR) {
      return note(errno);
    }
    watch_.emplace(readiness_, descriptor_.get(), EPOLLOUT, [this](std::uint32_t) { seeConnection(); });
    return true;
  }

  bool note(int systemNumber) {
    if (firstFailure_ == 0) firstFailure_ = systemNumber;
    return false;
  }

  void seeConnection() {
    int failure = 0;
    socklen_t length = sizeof(failure);
    if (::getsockopt(descriptor_.get(), SOL_SOCKET, SO_ERROR, &failure, &length) != 0) failure = errno;
    if (failure != 0) {
      note(failure);
      return tryNextAddress();
    }
    watch_.reset();
    watch_.emplace(readiness_, descriptor_.get(), EPOLLIN, [this](std::uint32_t ready) { traffic(ready); });
    addresses_.clear();
    state_ = kSocketConnected;
    raise(&SocketEvents::connect);
  }

  void traffic(std::uint32_t ready) {
    if ((ready & EPOLLOUT) != 0) {
      flush();
      if (outgoing_.empty()) watch_->want(EPOLLIN);
    }
    if (brokenBy_ != 0) return fail(socketNumber(brokenBy_));
    if ((ready & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) receive();
  }

  // Sends what the system takes. A broken connection is told by the next event, not by whoever sends.
  void flush() {
    std::size_t sent = 0;
    while (sent < outgoing_.size()) {
      const ssize_t count =
          ::send(descriptor_.get(), outgoing_.data() + sent, outgoing_.size() - sent, MSG_NOSIGNAL);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) {
        if (errno != EAGAIN) brokenBy_ = errno;
        break;
      }
      sent += static_cast<std::size_t>(count);
    }
    outgoing_.erase(0, brokenBy_ != 0 ? outgoing_.size() : sent);
  }

  // One portion for each call, so that a fast server does not keep the window waiting.
  void receive() {
    const std::size_t before = incoming_.size();
    incoming_.resize(before + kReadSize);
    const ssize_t count = ::recv(descriptor_.get(), incoming_.data() + before, kReadSize, 0);
    const int failure = count < 0 ? errno : 0;
    incoming_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count > 0) return raise(&SocketEvents::dataArrival, bytesWaiting());
    if (mustWait(failure)) return;
    if (failure != 0) return fail(socketNumber(failure));
    watch_.reset();
    state_ = kSocketClosing;
    raise(&SocketEvents::close);
  }

  [[nodiscard]] std::int32_t bytesWaiting() const {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(incoming_.size(), kMost));
  }

  std::shared_ptr<Readiness> readiness_;
  HostLookup lookUp_;
  std::shared_ptr<const SocketEvents> events_;

  std::int32_t state_ = kSocketClosed;
  std::uint16_t port_ = 0;
  std::optional<PendingLookup> lookup_;
  std::vector<HostAddress> addresses_;  // not tried yet; the next one is the last
  Descriptor descriptor_;
  std::optional<Watch> watch_;  // of the lookup, then of the connection; it goes before either
  std::string incoming_;
  std::string outgoing_;
  int firstFailure_ = 0;
  int brokenBy_ = 0;  // what sending failed with
};

class TcpSockets final : public Sockets {
 public:
  explicit TcpSockets(HostLookup lookUp) : lookUp_(std::move(lookUp)) {}

  std::unique_ptr<Socket> create(SocketEvents events) override {
    return std::make_unique<TcpSocket>(readiness_, lookUp_, std::move(events));
  }
  bool dispatch(std::chrono::milliseconds longest) override { return readiness_->dispatch(longest); }
  [[nodiscard]] std::intptr_t handle() const override { return readiness_->descriptor(); }

 private:
  HostLookup lookUp_;
  std::shared_ptr<Readiness> readiness_ = std::make_shared<Readiness>();
};

}  // namespace

std::unique_ptr<Sockets> makeTcpSockets(HostLookup lookUp) {
  return std::make_unique<TcpSockets>(std::move(lookUp));
}

}  // namespace trelvin
