// Sockets that lead every conversation to one port of this machine, whatever host and port it is meant for,
// and keep whom it was meant for. Without a server nothing is reached.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/socket.h"

namespace trelvin::test {

class LoopbackSockets : public Sockets {
 public:
  explicit LoopbackSockets(std::unique_ptr<Sockets> real) : real_(std::move(real)) {}

  std::unique_ptr<Socket> create(SocketEvents events) override {
    return std::make_unique<LoopbackSocket>(*this, real_->create(std::move(events)));
  }
  bool dispatch(std::chrono::milliseconds longest) override { return real_->dispatch(longest); }
  [[nodiscard]] std::intptr_t handle() const override { return real_->handle(); }

  std::int32_t port = 0;
  std::vector<std::string> meant;  // host:port of each conversation that was begun

 private:
  class LoopbackSocket : public Socket {
   public:
    LoopbackSocket(LoopbackSockets& set, std::unique_ptr<Socket> real) : set_(set), real_(std::move(real)) {}

    [[nodiscard]] std::int32_t state() const override { return real_->state(); }
    void connect(const std::string& host, std::int32_t port) override {
      set_.meant.push_back(host + ":" + std::to_string(port));
      real_->connect("127.0.0.1", set_.port);
    }
    void close() override { real_->close(); }
    void sendData(std::string_view bytes) override { real_->sendData(bytes); }
    std::string getData() override { return real_->getData(); }

   private:
    LoopbackSockets& set_;
    std::unique_ptr<Socket> real_;
  };

  std::unique_ptr<Sockets> real_;
};

}  // namespace trelvin::test
