// Has the metabase files for the directory provider of the Windows tests. Listens on a port of the loopback
// that the system chooses, says which on standard output, and ends with its standard input.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "windows/provider_host/served_metabase.h"

namespace trelvin::test {
namespace {

[[noreturn]] void failWithSystemError(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int listeningSocket() {
  const int listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool isReady = listening >= 0 &&
                       ::bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                       ::listen(listening, SOMAXCONN) == 0;
  if (!isReady) failWithSystemError("can't listen");
  return listening;
}

int portOf(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    failWithSystemError("can't tell the port");
  }
  return ntohs(address.sin_port);
}

// Nothing when the other side is gone.
std::optional<std::string> received(int socket, std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t done = 0; done < count;) {
    const ssize_t got = ::recv(socket, bytes.data() + done, count - done, 0);
    if (got <= 0) return std::nullopt;
    done += static_cast<std::size_t>(got);
  }
  return bytes;
}

bool sendAll(int socket, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t sent = ::send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    done += static_cast<std::size_t>(sent);
  }
  return true;
}

class Connection {
 public:
  explicit Connection(int socket) : socket_(socket), metabase_(std::make_unique<ServedMetabase>()) {
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  // The other side waits for the end of the connection to see the files complete.
  ~Connection() {
    metabase_.reset();
    ::close(socket_);
  }

  // Answers one request; whether there was one.
  bool serve() {
    const std::optional<std::string> length = received(socket_, kLengthSize);
    if (!length) return false;
    const std::optional<std::string> request = received(socket_, lengthOf(*length));
    return request && sendAll(socket_, withLength(metabase_->answer(*request)));
  }

 private:
  int socket_;
  std::unique_ptr<ServedMetabase> metabase_;
};

// One request at a time, of whichever connection has one: metabases need no thread of their own.
class Host {
 public:
  explicit Host(int listening) : listening_(listening) {}

  void run() {
    for (;;) {
      std::vector<pollfd> waited{{STDIN_FILENO, POLLIN, 0}, {listening_, POLLIN, 0}};
      for (const auto& [socket, connection] : connections_) waited.push_back({socket, POLLIN, 0});
      if (::poll(waited.data(), waited.size(), -1) < 0) failWithSystemError("can't wait");
      if (waited[0].revents != 0) return;
      if (waited[1].revents != 0) accept();
      for (std::size_t i = 2; i < waited.size(); ++i) {
        if (waited[i].revents != 0 && !connections_.at(waited[i].fd)->serve()) {
          connections_.erase(waited[i].fd);
        }
      }
    }
  }

 private:
  void accept() {
    const int socket = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) failWithSystemError("can't accept");
    connections_.emplace(socket, std::make_unique<Connection>(socket));
  }

  int listening_;
  std::map<int, std::unique_ptr<Connection>> connections_;
};

}  // namespace
}  // namespace trelvin::test

int main() {
  const int listening = trelvin::test::listeningSocket();
  std::printf("%d\n", trelvin::test::portOf(listening));
  std::fflush(stdout);
  trelvin::test::Host(listening).run();
}
