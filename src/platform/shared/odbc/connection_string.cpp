#include "platform/shared/odbc/connection_string.h"

#include <algorithm>
#include <cstddef>

#include "core/text.h"

namespace trelvin {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

// Position behind the brace that closes the one at the start; the text's end when nothing closes it.
std::size_t behindBraces(std::string_view text) {
  for (std::size_t at = 1; at < text.size(); ++at) {
    if (text[at] != '}') continue;
    if (at + 1 == text.size() || text[at + 1] != '}') return at + 1;
    ++at;
  }
  return text.size();
}

// Length of the value that the text begins with: up to the next semicolon outside braces.
std::size_t valueLength(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  const bool braced = first != kNone && text[first] == '{';
  const std::size_t start = braced ? first + behindBraces(text.substr(first)) : 0;
  return std::min(text.find(';', start), text.size());
}

// Takes the pair that the text begins with off its front.
void takePair(std::string_view& text, std::vector<Attribute>& pairs) {
  const std::size_t mark = text.find_first_of("=;");
  const std::size_t valueStart = mark != kNone && text[mark] == '=' ? mark + 1 : 0;
  const std::size_t end = valueStart + valueLength(text.substr(valueStart));
  const std::string_view value = text.substr(valueStart, end - valueStart);
  if (valueStart > 0) {
    pairs.push_back({std::string(trimmed(text.substr(0, mark))), std::string(value)});
  } else if (!trimmed(value).empty() && !pairs.empty()) {
    pairs.back().value.append(";").append(value);
  }
  text.remove_prefix(std::min(end + 1, text.size()));
}

std::string_view odbcKeyword(std::string_view keyword) {
  if (equalsIgnoringCase(keyword, "User Id")) return "UID";
  if (equalsIgnoringCase(keyword, "Password")) return "PWD";
  return keyword;
}

// A password may hold a semicolon, and the program puts it into its string as it was typed.
std::string braced(const std::string& value) {
  if (value.find(';') == std::string::npos || value.starts_with('{')) return value;
  return "{" + replaceAll(value, "}", "}}") + "}";
}

}  // namespace

std::vector<Attribute> attributesOf(std::string_view connectionString) {
  std::vector<Attribute> pairs;
  while (!connectionString.empty()) takePair(connectionString, pairs);
  // Not before a value is complete: blanks around a semicolon within it are its own.
  for (Attribute& pair : pairs) pair.value = trimmed(pair.value);
  return pairs;
}

std::string unbraced(std::string_view value) {
  if (value.size() < 2 || value.front() != '{' || value.back() != '}') return std::string(value);
  return replaceAll(value.substr(1, value.size() - 2), "}}", "}");
}

std::string attributeOf(const std::vector<Attribute>& attributes, std::string_view keyword) {
  const auto found = std::find_if(attributes.begin(), attributes.end(), [&](const Attribute& attribute) {
    return equalsIgnoringCase(attribute.keyword, keyword);
  });
  return found == attributes.end() ? std::string() : unbraced(found->value);
}

std::string driverManagerString(std::string_view connectionString) {
  const std::string_view text = trimmedRight(connectionString);
  const std::vector<Attribute> attributes = attributesOf(text);
  const bool foreign = std::any_of(attributes.begin(), attributes.end(), [](const Attribute& attribute) {
    return odbcKeyword(attribute.keyword) != attribute.keyword;
  });
  if (!foreign) return std::string(text);
  std::string result;
  for (const auto& [keyword, value] : attributes) {
    result.append(odbcKeyword(keyword)).append("=").append(braced(value)).append(";");
  }
  return result;
}

}  // namespace trelvin
