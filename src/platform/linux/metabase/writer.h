// Writes a changed metabase as a new file: the old text with the changed elements exchanged.
#pragma once

#include <string_view>

#include "disk.h"
#include "tree.h"

namespace trelvin {

// source: the text that the tree was read from. Elements of nodes that did not change, and everything that is
// no node, come out byte for byte; a changed element keeps its untouched attributes, and its Custom elements
// and comments, as they are written. A new element stands where the order of the file wants it.
void writeMetabase(const Tree& tree, std::string_view source, MetabaseRewrite& target);

}  // namespace trelvin
