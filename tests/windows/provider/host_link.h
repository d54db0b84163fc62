// The provider's side of a connection to its host.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "windows/provider/socket_api.h"
#include "windows/provider/wire.h"

namespace trelvin::test {

// One connection for one network folder, shared by all objects that come from it. When it ends the metabase
// files are complete.
class HostLink {
 public:
  // The link in use; opened for the folder that the environment variable TRELVIN_NETWORK names when there is
  // none. The host listens on TRELVIN_DIRECTORY_PORT. 0x800706BA when there is no host.
  static std::shared_ptr<HostLink> current();
  // The link ends with the last object that uses it; the next bind opens another one.
  static void leave();

  HostLink(const HostLink&) = delete;
  HostLink& operator=(const HostLink&) = delete;
  ~HostLink();

  // Sends a request and waits for its reply; both without their length. 0x800706BA when the host is gone.
  std::string exchange(std::string_view request);

 private:
  explicit HostLink(const std::string& networkFolder);
  std::string received(std::size_t count);

  WSADATA version_{};
  SOCKET socket_ = INVALID_SOCKET;
};

}  // namespace trelvin::test
