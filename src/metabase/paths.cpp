#include "metabase/paths.h"

#include "core/err.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

NodeHandle getObject(const std::string& path) {
  return bound(platform().metabase).getObject(path);
}

std::string servicePath(const std::string& server, const std::string& service) {
  return "IIS://" + server + "/" + service;
}

std::string classWord(const char* suffix) {
  return "IIs" + frmMain.sExportSiteType + suffix;
}

bool isClass(const std::string& className, const char* suffix) {
  return equalsIgnoringCase(className, classWord(suffix));
}

std::int32_t siteNumberFromPath(const std::string& path) {
  return longOf(path.substr(path.rfind('/') + 1));
}

std::string relativeToSite(const std::string& adsPath) {
  std::string rest = adsPath + "/";
  std::size_t begin = 0;
  for (int cut = 0; cut < 5; ++cut) {
    const std::size_t slash = rest.find('/', begin);
    if (slash != std::string::npos) begin = slash + 1;
  }
  if (rest.find('/', begin) == std::string::npos) return rest.substr(begin);
  rest.pop_back();
  return "/" + rest.substr(begin);
}

void warmUpProvider() {
  attempt([] { getObject(servicePath("Localhost", frmMain.sService)); });
  Err.clear();
}

}  // namespace trelvin
