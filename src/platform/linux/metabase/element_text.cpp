#include "element_text.h"

#include <algorithm>

namespace trelvin {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::size_t orEnd(std::string_view text, std::size_t position) {
  return std::min(position, text.size());
}

std::size_t behind(std::string_view text, std::string_view mark, std::size_t from) {
  const std::size_t found = text.find(mark, from);
  return found == std::string_view::npos ? text.size() : found + mark.size();
}

// Behind a comment, an instruction, a CDATA section or a declaration that begins at the position.
std::size_t behindAside(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position);
  if (rest.starts_with("<!--")) return behind(text, "-->", position + 4);
  if (rest.starts_with("<![CDATA[")) return behind(text, "]]>", position);
  if (rest.starts_with("<?")) return behind(text, "?>", position);
  return behind(text, ">", position);
}

bool isAside(std::string_view text, std::size_t position) {
  return position + 1 < text.size() && (text[position + 1] == '!' || text[position + 1] == '?');
}

struct Head {
  std::size_t end = 0;  // behind ">"
  bool closed = false;  // "/>"
};

// Reads name and attributes of the tag at the position.
Head readHead(std::string_view text, std::size_t position, ElementText& element) {
  std::size_t at = position + 1;
  const std::size_t nameEnd = orEnd(text, text.find_first_of(" \t\r\n/>", at));
  element.name = text.substr(at, nameEnd - at);
  at = nameEnd;
  while (true) {
    at = orEnd(text, text.find_first_not_of(kBlanks, at));
    if (at >= text.size() || text[at] == '>') return {orEnd(text, at + 1), false};
    if (text[at] == '/') return {behind(text, ">", at), true};
    const std::size_t end = orEnd(text, text.find_first_of(" \t\r\n=", at));
    const std::size_t open = orEnd(text, text.find_first_of("\"'", end));
    if (open >= text.size()) return {text.size(), false};
    const std::size_t close = orEnd(text, text.find(text[open], open + 1));
    element.attributes.push_back(
        {std::string(text.substr(at, end - at)), std::string(text.substr(open + 1, close - open - 1))});
    at = close + 1;
  }
}

}  // namespace

std::size_t nextElement(std::string_view text, std::size_t position) {
  while (true) {
    position = text.find('<', position);
    if (position == std::string_view::npos || !isAside(text, position)) return position;
    position = behindAside(text, position);
  }
}

ElementText elementAt(std::string_view text, std::size_t position) {
  ElementText element;
  element.begin = position;
  const Head head = readHead(text, position, element);
  element.end = head.end;
  if (head.closed) return element;
  std::size_t at = head.end;
  for (int depth = 1; depth > 0;) {
    at = nextElement(text, at);
    if (at == std::string_view::npos) {
      element.end = text.size();
      return element;
    }
    if (text.substr(at).starts_with("</")) {
      if (--depth == 0) element.inner = text.substr(head.end, at - head.end);
      at = behind(text, ">", at);
      continue;
    }
    ElementText inner;
    const Head innerHead = readHead(text, at, inner);
    if (!innerHead.closed) ++depth;
    at = innerHead.end;
  }
  element.end = at;
  return element;
}

namespace {

std::string_view referenceFor(char byte) {
  switch (byte) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#09;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t done = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view reference = referenceFor(text[i]);
    if (reference.empty()) continue;
    result.append(text.substr(done, i - done)).append(reference);
    done = i + 1;
  }
  return result.append(text.substr(done));
}

}  // namespace trelvin
