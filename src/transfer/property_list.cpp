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

std::vector<std::string> textsOf(const ListControl& list) {
  std::vector<std::string> texts;
  for (std::int32_t i = 0; i < list.listCount(); ++i) texts.push_back(list.list(i));
  return texts;
}

void addNames(const NameList& names) {
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

void TreeNames::begin() {
  const bool wasFromEmptyList = std::exchange(fromEmptyList_, frmMain.lstPropsToExport.listCount() == 0);
  const std::uint64_t before = std::exchange(exclusions_, frmMain.lstExclude.revision());
  if (!fromEmptyList_ || !wasFromEmptyList || before != exclusions_) steps_.clear();
  taken_ = 0;
}

void TreeNames::add(const NameList& names) {
  const auto isOf = [&](const Step& step) { return step.names == names; };
  const auto taken = steps_.begin() + static_cast<std::ptrdiff_t>(taken_);
  if (names.empty() || std::any_of(steps_.begin(), taken, isOf)) return;
  ++taken_;
  if (taken != steps_.end() && isOf(*taken)) {
    frmMain.lstPropsToExport.assign(taken->list);
    return;
  }
  steps_.erase(taken, steps_.end());
  addNames(names);
  removeDuplicates(frmMain.lstPropsToExport);
  steps_.push_back({names, textsOf(frmMain.lstPropsToExport)});
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
