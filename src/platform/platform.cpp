#include "platform/platform.h"

namespace trelvin {

Platform& platform() {
  static Platform inForce;
  return inForce;
}

}  // namespace trelvin
