#include "metabase/applications.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/text.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

bool isAtLeastIis5(const std::string& version) {
  return version == "IIS5" || version == "IIS6";
}

}  // namespace

ApplicationCall applicationCall() {
  const std::string& import = frmMain.lstIMIISVer.text();
  const std::string& target = frmMain.lstEXIISVer.text();
  if (import == "IIS6" && target == "IIS6") return ApplicationCall::kAppCreate3;
  if (isAtLeastIis5(import) && isAtLeastIis5(target)) return ApplicationCall::kAppCreate2;
  return ApplicationCall::kAppCreate;
}

void createApplication(const NodeHandle& node, const Value& isolation, const Value& pool,
                       const Value& inProcess) {
  switch (applicationCall()) {
    case ApplicationCall::kAppCreate3:
      debugLog("AppCreate3");
      bound(node).appCreate3(isolation.toLong(), pool.toText(), true);
      break;
    case ApplicationCall::kAppCreate2:
      debugLog("AppCreate2");
      bound(node).appCreate2(isolation.toLong());
      break;
    case ApplicationCall::kAppCreate:
      debugLog("AppCreate");
      bound(node).appCreate(inProcess.toBoolean());
      break;
  }
}

bool isApplicationRoot(const Value& appRoot, const std::string& name) {
  return equalsIgnoringCase(lastCharacters(appRoot.toText(), characterCount(name)), name);
}

}  // namespace trelvin
