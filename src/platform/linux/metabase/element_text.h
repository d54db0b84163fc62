// One element of the metabase file as text, so that what isn't changed stays as it was written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

// A part of the file's text. The parser took the whole for well-formed before.
struct ElementText {
  struct Attribute {
    std::string name;
    std::string raw;  // with references and line ends as in the file, without the quotes
  };
  std::string_view name;
  std::vector<Attribute> attributes;  // in the order of the file
  std::string_view inner;             // between head and end tag; empty for an element in one tag
  std::size_t begin = 0;              // of "<"
  std::size_t end = 0;                // behind the last ">"
};

// The element whose "<" stands at the position.
ElementText elementAt(std::string_view text, std::size_t position);

// Position of the next element's "<" at or behind a position, past comments and instructions; npos for none.
std::size_t nextElement(std::string_view text, std::size_t position);

// A value as it stands between double quotes. Line ends and tabs become references, which is what keeps them
// when any XML parser reads the file.
std::string escaped(std::string_view text);

}  // namespace trelvin
