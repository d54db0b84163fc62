#include "client/endpoints.h"

namespace trelvin {

std::string updateHost() {
  return TRELVIN_UPDATE_HOST;
}

std::string advertHost() {
  return TRELVIN_ADVERT_HOST;
}

std::string updateAddress(std::string_view path) {
  return "http://" + updateHost() + std::string(path);
}

}  // namespace trelvin
