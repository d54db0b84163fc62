#include "platform/shared/host_lookup.h"

#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "core/err.h"
#include "platform/shared/streams.h"
#include "platform/socket.h"

namespace trelvin {

namespace {

// The error state is the other thread's: what fails here ends up in the answer.
HostAnswer answerOf(const HostLookup& lookUp, const std::string& host) {
  try {
    return lookUp(host);
  } catch (const std::exception&) {
    return {.failure = socket_error::kLookupFailed};
  }
}

}  // namespace

struct PendingLookup::Shared {
  std::mutex mutex;
  HostAnswer answer;
  std::function<void()> wake;

  void set(HostAnswer found) {
    {
      const std::lock_guard lock(mutex);
      answer = std::move(found);
    }
    wake();
  }
};

PendingLookup::PendingLookup(const std::string& host, const HostLookup& lookUp, Streams& streams,
                             std::function<void()> heard)
    : shared_(std::make_shared<Shared>()), wakeup_(streams.wakeup(std::move(heard))) {
  shared_->wake = wakeup_->call();
  HostAnswer inNumbers = addressInNumbers(host);
  if (inNumbers.failure == 0) {
    shared_->set(std::move(inNumbers));
    return;
  }
  try {
    std::thread([shared = shared_, host, lookUp] { shared->set(answerOf(lookUp, host)); }).detach();
  } catch (const std::system_error&) {
    throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
  }
}

PendingLookup::~PendingLookup() = default;

HostAnswer PendingLookup::answer() {
  const std::lock_guard lock(shared_->mutex);
  return std::move(shared_->answer);
}

}  // namespace trelvin
