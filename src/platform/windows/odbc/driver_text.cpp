#include "platform/shared/odbc/driver_text.h"

#include "platform/windows/wide_text.h"

namespace trelvin {

DriverString driverText(std::string_view text) {
  return wideText(text);
}

std::string programText(DriverView text) {
  return utf8Text(text);
}

}  // namespace trelvin
