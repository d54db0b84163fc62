#include "windows/provider/host_link.h"

#include <array>

#include "core/err.h"
#include "platform/windows/adsi/com.h"
#include "platform/windows/wide_text.h"
#include "windows/provider/native_path.h"

namespace trelvin::test {

namespace {

std::string environmentText(const wchar_t* name) {
  std::array<wchar_t, 1024> text{};
  const DWORD length = ::GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size()));
  return utf8Text({text.data(), length});
}

// Never destroyed: at the end of the process there are no sockets any more.
std::shared_ptr<HostLink>& linkInUse() {
  static auto* const link = new std::shared_ptr<HostLink>;
  return *link;
}

SOCKET connectedSocket(const std::string& port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
  address.sin_port = ::htons(static_cast<u_short>(longOf(port.empty() ? "0" : port)));
  const SOCKET opened = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  if (::connect(opened, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    ::closesocket(opened);
    throw Failure(error_number::kServerUnavailable, "The host of the directory provider does not run.");
  }
  const BOOL on = TRUE;
  ::setsockopt(opened, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  return opened;
}

}  // namespace

std::shared_ptr<HostLink> HostLink::current() {
  std::shared_ptr<HostLink>& link = linkInUse();
  if (!link) link.reset(new HostLink(environmentText(L"TRELVIN_NETWORK")));
  return link;
}

void HostLink::leave() {
  linkInUse().reset();
}

HostLink::HostLink(const std::string& networkFolder) {
  requireSuccess(HRESULT_FROM_WIN32(static_cast<DWORD>(::WSAStartup(MAKEWORD(2, 2), &version_))));
  socket_ = connectedSocket(environmentText(L"TRELVIN_DIRECTORY_PORT"));
  exchange(bytesOf(Request{Operation::kServe, 0, {nativePath(networkFolder)}}, {}));
}

// Waits for the host to be done with the files.
HostLink::~HostLink() {
  ::shutdown(socket_, SD_SEND);
  char byte = 0;
  while (::recv(socket_, &byte, 1, 0) > 0) {
  }
  ::closesocket(socket_);
  ::WSACleanup();
}

std::string HostLink::exchange(std::string_view request) {
  const std::string message = withLength(request);
  for (std::size_t done = 0; done < message.size();) {
    const int sent = ::send(socket_, message.data() + done, static_cast<int>(message.size() - done), 0);
    if (sent <= 0) throw Failure(error_number::kServerUnavailable);
    done += static_cast<std::size_t>(sent);
  }
  return received(lengthOf(received(kLengthSize)));
}

std::string HostLink::received(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t done = 0; done < count;) {
    const int got = ::recv(socket_, bytes.data() + done, static_cast<int>(count - done), 0);
    if (got <= 0) throw Failure(error_number::kServerUnavailable);
    done += static_cast<std::size_t>(got);
  }
  return bytes;
}

}  // namespace trelvin::test
