// The text of one node's element in the metabase file.
#pragma once

#include <string>
#include <string_view>

#include "element_text.h"
#include "tree.h"

namespace trelvin {

// From "<" to the last ">", in the form of the file.
std::string newElement(const Tree& tree, Node& node, std::string_view lineEnd);

// The old element with the node's changes in it. What did not change keeps its text and its place:
// attributes, Custom elements, comments and whatever else stands in it. When the class changed, properties
// move between attributes and Custom elements as the new class wants it.
std::string changedElement(const Tree& tree, Node& node, const ElementText& old, std::string_view lineEnd);

}  // namespace trelvin
