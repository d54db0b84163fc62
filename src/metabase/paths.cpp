#include "metabase/paths.h"

#include "core/err.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

constexpr std::string_view kScheme = "IIS://";

}  // namespace

NodeHandle getObject(const std::string& path) {
  return bound(platform().metabase).getObject(path);
}

std::string servicePath(const std::string& server, const std::string& service) {
  std::string path;
  path.reserve(kScheme.size() + server.size() + service.size() + 32);  // with room for what lies below
  return path.append(kScheme).append(server).append("/").append(service);
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

// What follows the fifth slash, with it; the path is taken to end in one, behind which nothing follows.
std::string relativeToSite(const std::string& adsPath) {
  std::size_t slash = adsPath.find('/');
  for (int cut = 1; cut < 5 && slash != std::string::npos; ++cut) slash = adsPath.find('/', slash + 1);
  return slash == std::string::npos ? std::string() : adsPath.substr(slash);
}

void warmUpProvider() {
  attempt([] { getObject(servicePath("Localhost", frmMain.sService)); });
  Err.clear();
}

}  // namespace trelvin
