#include "platform/shared/odbc/driver_text.h"

namespace trelvin {

DriverString driverText(std::string_view text) {
  return DriverString(text);
}

std::string programText(DriverView text) {
  return std::string(text);
}

}  // namespace trelvin
