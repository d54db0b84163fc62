#include "core/registry_strings.h"

#include "platform/platform.h"

namespace trelvin {

std::string readRegString(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                          std::string_view defaultText) {
  const Registry::QueryResult found = platform().registry->queryValue(root, subKey, valueName);
  if (found.code != 0 || found.type != kRegString) return std::string(defaultText);
  return found.data.substr(0, found.data.find('\0'));
}

void writeRegString(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                    std::string_view value) {
  platform().registry->setValue(root, subKey, valueName, kRegString, value);
}

std::string readProgramValue(std::string_view valueName) {
  return readRegString(RegistryRoot::kLocalMachine, kRegistryKey, valueName, "");
}

void writeProgramValue(std::string_view valueName, std::string_view value) {
  writeRegString(RegistryRoot::kLocalMachine, kRegistryKey, valueName, value);
}

}  // namespace trelvin
