#include "platform/shared/odbc/driver_text.h"

namespace trelvin {

DriverString driverText(std::string_view text) {
  return DriverString(text);
}

std::string programText(DriverString text) {
  return text;
}

}  // namespace trelvin
