// Text values of the program's registry key.
#pragma once

#include <string>
#include <string_view>

#include "platform/registry.h"

namespace trelvin {

inline constexpr std::string_view kRegistryKey = R"(Software\Morvane\Trelvin)";

// The default for a missing key, a missing value and a value that is no text; nothing is reported.
std::string readRegString(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                          std::string_view defaultText);
// A write without the right to it passes in silence: the value simply isn't there the next time.
void writeRegString(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                    std::string_view value);

// The program's own values: ProxyServer, ODBCDSN, ODBCUID, ODBCPWD. A missing one reads as the empty text.
std::string readProgramValue(std::string_view valueName);
void writeProgramValue(std::string_view valueName, std::string_view value);

}  // namespace trelvin
