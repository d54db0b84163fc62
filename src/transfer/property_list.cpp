#include "transfer/property_list.h"

#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/text.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

bool isExcluded(const std::string& sName) {
  bool found = false;
  handled("frmMain_isExcluded Error ", [&] {
    const std::int32_t count = frmMain.lstExclude.listCount();
    for (std::int32_t i = 0; i < count && !found; ++i)
      found = equalsIgnoringCase(frmMain.lstExclude.list(i), sName);
  });
  return found;
}

namespace {

void addNames(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (!isExcluded(name)) attempt([&] { frmMain.lstPropsToExport.addItem(name); });
  }
}

}  // namespace

void addSchemaNames(const NodeHandle& schemaClass) {
  attempt([&] { addNames(bound(schemaClass).mandatoryProperties()); });
  attempt([&] { addNames(bound(schemaClass).optionalProperties()); });
}

void completePropertyList(const NodeHandle& site) {
  NodeHandle schemaClass;
  attempt([&] { schemaClass = getObject(bound(site).schema()); });
  attempt([] { debugLogIfErr("After init"); });
  addSchemaNames(schemaClass);
  attempt([] { debugLogIfErr("After master list"); });
  attempt([] { reportProgress("Building property transfer list"); });
  removeDuplicates(frmMain.lstPropsToExport);
  attempt([] { frmMain.lstPropsToExport.refresh(); });
  attempt([] { reportProgress("Transferring properties..."); });
  attempt([] { writeLog("Transferring properties..."); });
  attempt([] { platform().events->doEvents(); });
}

}  // namespace trelvin
