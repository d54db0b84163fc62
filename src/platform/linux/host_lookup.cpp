#include "platform/linux/host_lookup.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/eventfd.h>

#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "core/err.h"
#include "platform/linux/native_file.h"
#include "platform/socket.h"

namespace trelvin {

namespace {

std::int32_t numberOfLookupFailure(int result) {
  switch (result) {
    case EAI_NONAME:
    case EAI_NODATA:
    case EAI_ADDRFAMILY:
      return socket_error::kHostNotFound;
    case EAI_AGAIN:
      return socket_error::kHostNotFoundTryAgain;
    default:
      return socket_error::kLookupFailed;
  }
}

HostAnswer addressesOf(const std::string& host, int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* first = nullptr;
  const int result = ::getaddrinfo(host.c_str(), nullptr, &hints, &first);
  if (result != 0) return {.failure = numberOfLookupFailure(result)};
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(first, &::freeaddrinfo);
  HostAnswer answer;
  for (const addrinfo* each = first; each != nullptr; each = each->ai_next) {
    HostAddress& address = answer.addresses.emplace_back();
    std::memcpy(&address.storage, each->ai_addr, each->ai_addrlen);
    address.length = each->ai_addrlen;
  }
  return answer;
}

// The error state is the other thread's: what fails here ends up in the answer.
HostAnswer answerOf(const HostLookup& lookUp, const std::string& host) {
  try {
    return lookUp(host);
  } catch (const std::exception&) {
    return {.failure = socket_error::kLookupFailed};
  }
}

Descriptor newSignal() {
  Descriptor signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (signal.get() < 0) {
    throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
  }
  return signal;
}

}  // namespace

void HostAddress::setPort(std::uint16_t port) {
  if (storage.ss_family == AF_INET) reinterpret_cast<sockaddr_in&>(storage).sin_port = htons(port);
  if (storage.ss_family == AF_INET6) reinterpret_cast<sockaddr_in6&>(storage).sin6_port = htons(port);
}

HostAnswer lookUpHost(const std::string& host) {
  return addressesOf(host, 0);
}

struct PendingLookup::Shared {
  Descriptor ready = newSignal();
  std::mutex mutex;
  HostAnswer answer;

  void set(HostAnswer found) {
    {
      const std::lock_guard lock(mutex);
      answer = std::move(found);
    }
    ::eventfd_write(ready.get(), 1);
  }
};

PendingLookup::PendingLookup(const std::string& host, const HostLookup& lookUp)
    : shared_(std::make_shared<Shared>()) {
  HostAnswer numeric = addressesOf(host, AI_NUMERICHOST);
  if (numeric.failure == 0) {
    shared_->set(std::move(numeric));
    return;
  }
  try {
    std::thread([shared = shared_, host, lookUp] { shared->set(answerOf(lookUp, host)); }).detach();
  } catch (const std::system_error&) {
    throw Failure(socket_error::kNoBufferSpace, describeSocketError(socket_error::kNoBufferSpace));
  }
}

int PendingLookup::descriptor() const {
  return shared_->ready.get();
}

HostAnswer PendingLookup::answer() {
  const std::lock_guard lock(shared_->mutex);
  return std::move(shared_->answer);
}

}  // namespace trelvin
