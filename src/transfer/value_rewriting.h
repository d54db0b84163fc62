// What happens to every text that leaves the source.
#pragma once

#include <cstdint>
#include <string>

#include "core/value.h"

namespace trelvin {

// Applies the pairs of lstOldValues and lstNewValues in list order, each to the result of the one before,
// without regard to case. Null, and a text of nothing but blanks, give the empty text. A failure goes to the
// caller.
std::string applyFindReplace(const Value& sValue);

// For an entry of ScriptMaps between servers that read its verb list in opposite ways: verbs that are there
// go, if a comma stands behind them, the others are appended in the table's order; then applyFindReplace. A
// verb that stands last stays, and one that is part of the entry's path counts as there.
std::string swapScriptMapVerbs(const std::string& sEntry);

// The entries of lstNewIPs or lstNewSSLIPs, rewritten, each followed by CR LF. The counter is left one past
// the last index, as a loop leaves it.
class ListControl;
std::string rewrittenBindings(const ListControl& list, Value& counter);

}  // namespace trelvin
