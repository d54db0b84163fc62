#include "platform/shared/streams.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "platform/socket.h"
#include "platform/windows/gathering.h"
#include "platform/windows/winsock_api.h"

namespace trelvin {

namespace {

// Winsock's numbers are those of the socket control, but for a kind of address that this machine can't use.
std::int32_t socketNumber(int systemNumber) {
  return systemNumber == WSAEAFNOSUPPORT ? socket_error::kNetworkUnreachable : systemNumber;
}

// A socket that is closed with its owner.
class SocketHandle {
 public:
  explicit SocketHandle(SOCKET socket) : socket_(socket) {}
  SocketHandle(SocketHandle&& other) noexcept : socket_(std::exchange(other.socket_, INVALID_SOCKET)) {}
  SocketHandle(const SocketHandle&) = delete;
  SocketHandle& operator=(const SocketHandle&) = delete;
  SocketHandle& operator=(SocketHandle&&) = delete;
  ~SocketHandle() {
    if (socket_ != INVALID_SOCKET) ::closesocket(socket_);
  }
  [[nodiscard]] SOCKET get() const { return socket_; }

 private:
  SOCKET socket_;
};

class WinsockStream final : public Stream {
 public:
  WinsockStream(SocketHandle socket, std::shared_ptr<Gathering> gathering, Hear hear)
      : socket_(std::move(socket)),
        waiting_(std::move(gathering),
                 {.look = [this] { return look(); }, .hear = std::move(hear), .wanted = kWritable}) {}

  void want(unsigned bits) override { waiting_.want(bits); }

  std::int32_t connectFailure() override { return connectFailure_; }

  Transfer send(std::string_view bytes) override {
    const int result = ::send(socket_.get(), bytes.data(), lengthOf(bytes.size()), 0);
    if (result >= 0) return {.count = static_cast<std::size_t>(result)};
    const std::int32_t failure = failureOfCall();
    if (failure != 0) end(failure);
    return {.failure = failure};
  }

  Transfer receive(char* buffer, std::size_t size) override {
    const int result = ::recv(socket_.get(), buffer, lengthOf(size), 0);
    if (result > 0) return {.count = static_cast<std::size_t>(result)};
    const std::int32_t failure = result == 0 ? 0 : failureOfCall();
    if (failure != 0) return {.failure = failure};
    // Nothing came. Reading may not tell any more what the connection was broken by.
    const bool ended = result == 0 || ending_;
    const std::int32_t brokenBy = ending_.value_or(0);
    return {.ended = ended && brokenBy == 0, .failure = brokenBy};
  }

 private:
  static int lengthOf(std::size_t size) {
    constexpr std::size_t kMost = 1U << 30;
    return static_cast<int>(std::min(size, kMost));
  }

  // 0 when it has to wait.
  static std::int32_t failureOfCall() {
    const int number = ::WSAGetLastError();
    return number == WSAEWOULDBLOCK ? 0 : socketNumber(number);
  }

  void end(std::int32_t failure) {
    if (!ending_) ending_ = failure;
    waiting_.wake();
  }

  unsigned look() {
    WSANETWORKEVENTS seen{};
    if (::WSAEnumNetworkEvents(socket_.get(), nullptr, &seen) != 0) return 0;
    const auto has = [&](long bit) { return (seen.lNetworkEvents & bit) != 0; };
    if (has(FD_CONNECT)) connectFailure_ = socketNumber(seen.iErrorCode[FD_CONNECT_BIT]);
    if (has(FD_CLOSE) && !ending_) ending_ = socketNumber(seen.iErrorCode[FD_CLOSE_BIT]);
    // The end is told once, but it is there to be read from now on.
    return (has(FD_READ) || ending_ ? kReadable : 0U) | (has(FD_CONNECT) || has(FD_WRITE) ? kWritable : 0U);
  }

  SocketHandle socket_;
  std::int32_t connectFailure_ = 0;
  std::optional<std::int32_t> ending_;  // when it has broken: by what, 0 for the other end's own close
  Waiting waiting_;
};

class EventWakeup final : public Wakeup {
 public:
  EventWakeup(const std::shared_ptr<Gathering>& gathering, std::function<void()> hear)
      : event_(gathering->event()),
        waiting_(gathering, {.look = [called = called_] { return called->exchange(false) ? kReadable : 0U; },
                             .hear = [hear = std::move(hear)](unsigned) { hear(); },
                             .wanted = kReadable}) {}

  std::function<void()> call() override {
    return [called = called_, event = event_] {
      *called = true;
      ::SetEvent(event.get());
    };
  }

 private:
  std::shared_ptr<std::atomic<bool>> called_ = std::make_shared<std::atomic<bool>>(false);
  std::shared_ptr<void> event_;
  Waiting waiting_;
};

class WinsockStreams final : public Streams {
 public:
  WinsockStreams() { startWinsock(); }

  BegunStream connect(const HostAddress& address, Hear hear) override {
    const auto* place = reinterpret_cast<const sockaddr*>(address.bytes.data());
    SocketHandle socket(::WSASocketW(place->sa_family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
    constexpr long kEvents = FD_CONNECT | FD_READ | FD_WRITE | FD_CLOSE;
    // This makes it one that never waits, too.
    if (socket.get() == INVALID_SOCKET ||
        ::WSAEventSelect(socket.get(), gathering_->event().get(), kEvents) != 0) {
      return {.failure = socketNumber(::WSAGetLastError())};
    }
    const int result = ::connect(socket.get(), place, static_cast<int>(address.bytes.size()));
    if (result != 0 && ::WSAGetLastError() != WSAEWOULDBLOCK) {
      return {.failure = socketNumber(::WSAGetLastError())};
    }
    return {.stream = std::make_unique<WinsockStream>(std::move(socket), gathering_, std::move(hear))};
  }

  std::unique_ptr<Wakeup> wakeup(std::function<void()> hear) override {
    return std::make_unique<EventWakeup>(gathering_, std::move(hear));
  }

  bool dispatch(std::chrono::milliseconds longest) override { return gathering_->dispatch(longest); }
  [[nodiscard]] std::intptr_t handle() const override {
    return reinterpret_cast<std::intptr_t>(gathering_->event().get());
  }

 private:
  std::shared_ptr<Gathering> gathering_ = std::make_shared<Gathering>();
};

}  // namespace

void startWinsock() {
  // Never ended: a lookup may still run when the last socket goes.
  static const int result = [] {
    WSADATA ignored{};
    return ::WSAStartup(MAKEWORD(2, 2), &ignored);
  }();
  static_cast<void>(result);
}

std::shared_ptr<Streams> makeStreams() {
  return std::make_shared<WinsockStreams>();
}

}  // namespace trelvin
