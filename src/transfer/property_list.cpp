#include "transfer/property_list.h"

#include <algorithm>
#include <utility>

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

Exclusions::Exclusions() {
  const std::int32_t count = frmMain.lstExclude.listCount();
  upperNames_.reserve(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) upperNames_.push_back(upperCase(frmMain.lstExclude.list(i)));
  std::sort(upperNames_.begin(), upperNames_.end());
}

bool Exclusions::hold(const std::string& name) const {
  return std::binary_search(upperNames_.begin(), upperNames_.end(), upperCase(name));
}

namespace {

void addNames(const std::vector<std::string>& names) {
  const Exclusions exclusions;
  for (const std::string& name : names) {
    if (!exclusions.hold(name)) attempt([&] { frmMain.lstPropsToExport.addItem(name); });
  }
}

}  // namespace

void addSchemaNames(const NodeHandle& schemaClass) {
  attempt([&] { addNames(bound(schemaClass).mandatoryProperties()); });
  attempt([&] { addNames(bound(schemaClass).optionalProperties()); });
}

void TreeNames::add(Names names) {
  if (std::find(added_.begin(), added_.end(), names) != added_.end()) return;
  addNames(names);
  removeDuplicates(frmMain.lstPropsToExport);
  added_.push_back(std::move(names));
}

void TreeNames::collect(const NodeHandle& schemaClass) {
  attempt([&] { add(bound(schemaClass).mandatoryProperties()); });
  attempt([&] { add(bound(schemaClass).optionalProperties()); });
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
