#include "platform/shared/tcp_sockets.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "core/err.h"
#include "platform/shared/streams.h"

namespace trelvin {

namespace {

constexpr std::size_t kReadSize = std::size_t{64} * 1024;
constexpr std::int32_t kLargestPort = 65535;

[[noreturn]] void refuse(std::int32_t number) {
  throw Failure(number, describeSocketError(number));
}

class TcpSocket final : public Socket {
 public:
  TcpSocket(std::shared_ptr<Streams> streams, HostLookup lookUp, SocketEvents events)
      : streams_(std::move(streams)),
        lookUp_(std::move(lookUp)),
        events_(std::make_shared<const SocketEvents>(std::move(events))) {}

  [[nodiscard]] std::int32_t state() const override { return state_; }

  void connect(const std::string& host, std::int32_t port) override {
    if (state_ != kSocketClosed) refuse(socket_error::kInvalidOperation);
    if (port < 1 || port > kLargestPort) throw Failure(error_number::kInvalidPropertyValue);
    lookup_.emplace(host, lookUp_, *streams_, [this] { takeAddresses(); });
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
    stream_->want(outgoing_.empty() ? kReadable : kReadable | kWritable);
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
    stream_.reset();
    lookup_.reset();
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
    lookup_.reset();
    if (answer.failure != 0) return fail(answer.failure);
    addresses_ = std::move(answer.addresses);
    std::reverse(addresses_.begin(), addresses_.end());
    state_ = kSocketConnecting;
    tryNextAddress();
  }

  void tryNextAddress() {
    while (!addresses_.empty()) {
      const HostAddress address = withPort(addresses_.back(), port_);
      addresses_.pop_back();
      BegunStream begun = streams_->connect(address, [this](unsigned ready) { hear(ready); });
      stream_ = std::move(begun.stream);
      if (stream_) return;
      note(begun.failure);
    }
    fail(firstFailure_ != 0 ? firstFailure_ : socket_error::kNetworkDown);
  }

  void note(std::int32_t failure) {
    if (firstFailure_ == 0) firstFailure_ = failure;
  }

  void hear(unsigned ready) {
    if (state_ == kSocketConnecting) return seeConnection();
    traffic(ready);
  }

  void seeConnection() {
    if (const std::int32_t failure = stream_->connectFailure()) {
      note(failure);
      return tryNextAddress();
    }
    stream_->want(kReadable);
    addresses_.clear();
    state_ = kSocketConnected;
    raise(&SocketEvents::connect);
  }

  void traffic(unsigned ready) {
    if ((ready & kWritable) != 0) {
      flush();
      if (outgoing_.empty()) stream_->want(kReadable);
    }
    if (brokenBy_ != 0) return fail(brokenBy_);
    if ((ready & kReadable) != 0) receive();
  }

  // Sends what the system takes. A broken connection is told by the next event, not by whoever sends.
  void flush() {
    std::size_t sent = 0;
    while (sent < outgoing_.size()) {
      const Transfer went = stream_->send(std::string_view(outgoing_).substr(sent));
      brokenBy_ = went.failure;
      sent += went.count;
      if (went.count == 0) break;
    }
    outgoing_.erase(0, brokenBy_ != 0 ? outgoing_.size() : sent);
  }

  // One portion for each call, so that a fast server does not keep the window waiting.
  void receive() {
    const std::size_t before = incoming_.size();
    incoming_.resize(before + kReadSize);
    const Transfer came = stream_->receive(incoming_.data() + before, kReadSize);
    incoming_.resize(before + came.count);
    if (came.count > 0) return raise(&SocketEvents::dataArrival, bytesWaiting());
    if (came.failure != 0) return fail(came.failure);
    if (!came.ended) return;
    stream_->want(0);
    state_ = kSocketClosing;
    raise(&SocketEvents::close);
  }

  [[nodiscard]] std::int32_t bytesWaiting() const {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(incoming_.size(), kMost));
  }

  std::shared_ptr<Streams> streams_;
  HostLookup lookUp_;
  std::shared_ptr<const SocketEvents> events_;

  std::int32_t state_ = kSocketClosed;
  std::uint16_t port_ = 0;
  std::optional<PendingLookup> lookup_;
  std::vector<HostAddress> addresses_;  // not tried yet; the next one is the last
  std::unique_ptr<Stream> stream_;
  std::string incoming_;
  std::string outgoing_;
  std::int32_t firstFailure_ = 0;
  std::int32_t brokenBy_ = 0;  // what sending failed with
};

class TcpSockets final : public Sockets {
 public:
  explicit TcpSockets(HostLookup lookUp) : lookUp_(std::move(lookUp)) {}

  std::unique_ptr<Socket> create(SocketEvents events) override {
    return std::make_unique<TcpSocket>(streams_, lookUp_, std::move(events));
  }
  bool dispatch(std::chrono::milliseconds longest) override { return streams_->dispatch(longest); }
  [[nodiscard]] std::intptr_t handle() const override { return streams_->handle(); }

 private:
  HostLookup lookUp_;
  std::shared_ptr<Streams> streams_ = makeStreams();
};

}  // namespace

std::unique_ptr<Sockets> makeTcpSockets(HostLookup lookUp) {
  return std::make_unique<TcpSockets>(std::move(lookUp));
}

}  // namespace trelvin
