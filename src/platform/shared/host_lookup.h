// Host names become addresses, without holding up whoever asks: a name server may take a minute to say
// nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trelvin {

class Streams;
class Wakeup;

// An address of a host, with or without a port.
struct HostAddress {
  std::string bytes;  // in the system's own form
};

struct HostAnswer {
  std::int32_t failure = 0;  // a number of socket_error; 0 when there are addresses
  std::vector<HostAddress> addresses{};
};

// Finds the addresses of a host and takes the time that it takes. May be called on any thread.
using HostLookup = std::function<HostAnswer(const std::string& host)>;

// The system's own way: hosts file, name servers.
HostAnswer lookUpHost(const std::string& host);
// Of an address in numbers; anything else isn't found. Asks nobody.
HostAnswer addressInNumbers(const std::string& host);
HostAddress withPort(const HostAddress& address, std::uint16_t port);

// A lookup under way on a thread of its own; an address in numbers needs none and has its answer at once.
// Who no longer wants the answer drops the object, and the thread ends unheard when its lookup does.
class PendingLookup {
 public:
  // heard is called by the streams' dispatch when the answer is there. Fails with 10055 when the system has
  // no room for it.
  PendingLookup(const std::string& host, const HostLookup& lookUp, Streams& streams,
                std::function<void()> heard);
  ~PendingLookup();

  // Only to be called when it was heard of, and once.
  HostAnswer answer();

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<Wakeup> wakeup_;
};

}  // namespace trelvin
