#include "transfer/value_rewriting.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "window/frm_main.h"

namespace trelvin {

std::string applyFindReplace(const Value& sValue) {
  if (sValue.isNull()) return {};
  std::string working = sValue.toText();
  if (trimmed(working).empty()) return {};
  const std::int32_t count = frmMain.lstNewValues.listCount();
  for (std::int32_t i = 0; i < count; ++i) {
    const std::string& oldText = frmMain.lstOldValues.list(i);
    const std::string& newText = frmMain.lstNewValues.list(i);
    if (run.bDebug) {
      writeLog("Replace checking @" + working + "@ for @" + oldText + "@ to be replaced by @" + newText +
               "@ ");
    }
    working = replaceAllIgnoringCase(working, oldText, newText);
  }
  if (run.bDebug) writeLog("New value " + working);
  return working;
}

std::string swapScriptMapVerbs(const std::string& sEntry) {
  std::string working = sEntry;
  for (const std::string& verb : run.asHttpVerbs) {
    if (containsIgnoringCase(working, verb)) {
      working = replaceAll(working, verb + ",", "");
    } else {
      working += "," + verb;
    }
  }
  return applyFindReplace(working);
}

std::string rewrittenBindings(const ListControl& list, Value& counter) {
  std::string text;
  const std::int32_t count = list.listCount();
  for (std::int32_t i = 0; i < count; ++i) {
    counter = i;
    attempt([&] { text += applyFindReplace(list.list(i)) + "\r\n"; });
  }
  counter = count;
  return text;
}

}  // namespace trelvin
