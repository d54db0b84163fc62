#include "client/shell_commands.h"

#include "client/endpoints.h"
#include "core/err.h"
#include "core/registry_strings.h"
#include "core/run_state.h"
#include "platform/platform.h"

namespace trelvin {

namespace {

// The show command that leaves it to the program that opens the document.
constexpr std::int32_t kShowDefault = 10;

}  // namespace

std::int32_t OpenLocation(const std::string& URL, std::int32_t WindowState) {
  std::int32_t result = 0;
  handled("frmMain_OpenLocation Error ",
          [&] { result = bound(platform().opener).open({.file = URL, .showCommand = WindowState}); });
  return result;
}

void mnuHomePage_Click() {
  handled("frmMain_mnuHomePage Error ", [] { OpenLocation(updateAddress("/Trelvin"), kShowDefault); });
}

void mnuDocumentation_Click() {
  handled("frmMain_mnuDocumentation Error ",
          [] { OpenLocation(platform().application->path() + "/Documentation/Index.htm", kShowDefault); });
}

void mnuProxyServer_Click() {
  // Cancel gives the empty text, which clears the setting.
  run.sProxyServer =
      platform().dialogs->inputBox("Proxy server", "Enter your proxy server as proxy:port", run.sProxyServer);
  writeProgramValue("ProxyServer", run.sProxyServer);
}

}  // namespace trelvin
