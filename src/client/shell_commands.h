// Menu commands that open something outside of the program, and the proxy setting.
#pragma once

#include <cstdint>
#include <string>

namespace trelvin {

// Hands a document or an address to the system's shell, its window to be shown as that command says. Returns
// what the shell answers: above 32 when it is open, else why it is not. 0 when the call itself failed, which
// the log tells.
std::int32_t OpenLocation(const std::string& URL, std::int32_t WindowState);

void mnuHomePage_Click();
void mnuDocumentation_Click();
// Has no handler.
void mnuProxyServer_Click();

}  // namespace trelvin
