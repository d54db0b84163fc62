// The statements of data/ in the words of the Access driver. This is the only place that knows the
// difference.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trelvin::setup {

// The statements of a script, each without comments and line breaks. Access knows no COLLATE and needs none,
// has other names for some types, takes one row for each INSERT, and takes a column's name for a word of its
// own unless it is in brackets.
std::vector<std::string> accessStatements(std::string_view script);

}  // namespace trelvin::setup
