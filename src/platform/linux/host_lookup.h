// Host names become addresses, without holding up whoever asks: a name server may take a minute to say
// nothing.
#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trelvin {

struct HostAddress {
  sockaddr_storage storage{};
  socklen_t length = 0;

  void setPort(std::uint16_t port);
};

struct HostAnswer {
  std::int32_t failure = 0;  // a number of socket_error; 0 when there are addresses
  std::vector<HostAddress> addresses{};
};

// Finds the addresses of a host and takes the time that it takes. May be called on any thread.
using HostLookup = std::function<HostAnswer(const std::string& host)>;

// The system's own way: hosts file, name servers.
HostAnswer lookUpHost(const std::string& host);

// A lookup under way on a thread of its own; an address in numbers needs none and has its answer at once.
// Who no longer wants the answer drops the object, and the thread ends unheard when its lookup does.
class PendingLookup {
 public:
  // Fails with 10055 when the system has no room for it.
  PendingLookup(const std::string& host, const HostLookup& lookUp);

  // Ready to be read when the answer is there.
  [[nodiscard]] int descriptor() const;
  // Only to be called when the descriptor was ready, and once.
  HostAnswer answer();

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
};

}  // namespace trelvin
