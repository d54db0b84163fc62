#include "platform/linux/registry_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "core/text.h"
#include "platform/linux/file_text.h"
#include "platform/registry.h"

namespace trelvin::registry_text {

namespace {

constexpr std::uint32_t kRegExpandString = 2;
constexpr std::uint32_t kRegBinary = 3;
constexpr std::uint32_t kRegMultiString = 7;
constexpr std::size_t kDwordSize = 4;
constexpr std::string_view kBlanks = " \t\r";

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

bool isText(std::uint32_t type) {
  return type == kRegString || type == kRegExpandString || type == kRegMultiString;
}

// Behind the quoted text that begins here, or npos when it is never closed.
std::size_t behindQuoted(std::string_view text, std::size_t begin) {
  for (std::size_t i = begin + 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      return i + 1;
    }
  }
  return text.npos;
}

std::string unescaped(std::string_view quoted) {
  std::string text;
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    if (quoted[i] == '\\' && i + 2 < quoted.size()) ++i;
    text += quoted[i];
  }
  return utf8OrWindows1252(text);
}

std::string escaped(std::string_view text) {
  std::string result = "\"";
  for (const char letter : text) {
    if (letter == '\\' || letter == '"') result += '\\';
    result += letter;
  }
  return result + '"';
}

std::size_t lineEndAt(std::string_view text, std::size_t position) {
  const std::size_t end = text.find('\n', position);
  return end == text.npos ? text.size() : end;
}

// One thing that a registry text says; a line that says nothing is of kind kOther.
struct Entry {
  enum class Kind { kOther, kKey, kDeletedKey, kValue };
  Kind kind = Kind::kOther;
  std::string name;  // of the key, or of the value
  Stretch data;      // of a value, without blanks around it
  std::size_t next = 0;
};

// A quoted text may hold line ends. Behind its last quote nothing else stands; where something does, a quote
// is missing, and no more than the line is lost.
std::size_t quotedDataEnd(std::string_view text, std::size_t begin) {
  const std::size_t behind = behindQuoted(text, begin);
  if (behind == text.npos) return lineEndAt(text, begin);
  const std::size_t end = lineEndAt(text, behind);
  return withoutBlanks(text.substr(behind, end - behind)).empty() ? end : lineEndAt(text, begin);
}

// Behind a value's data. A line of bytes that ends in a backslash is continued.
std::size_t dataEnd(std::string_view text, std::size_t begin) {
  if (text.substr(begin).starts_with('"')) return quotedDataEnd(text, begin);
  if (!equalsIgnoringCase(text.substr(begin, 3), "hex")) return lineEndAt(text, begin);
  for (std::size_t line = begin;;) {
    const std::size_t end = lineEndAt(text, line);
    if (end == text.size() || !withoutBlanks(text.substr(line, end - line)).ends_with('\\')) return end;
    line = end + 1;
  }
}

Stretch trimmedStretch(std::string_view text, std::size_t begin, std::size_t end) {
  const std::string_view inside = withoutBlanks(text.substr(begin, end - begin));
  if (inside.empty()) return {begin, begin};
  const auto first = static_cast<std::size_t>(inside.data() - text.data());
  return {first, first + inside.size()};
}

Entry keyAt(std::string_view text, std::size_t begin) {
  Entry entry;
  entry.next = lineEndAt(text, begin);
  const std::string_view line = text.substr(begin, entry.next - begin);
  const std::size_t close = line.rfind(']');  // a key's name may hold brackets
  if (close == line.npos) return entry;
  const bool isDeleted = line.substr(1).starts_with('-');
  const std::size_t first = isDeleted ? 2 : 1;
  if (close < first) return entry;
  entry.kind = isDeleted ? Entry::Kind::kDeletedKey : Entry::Kind::kKey;
  entry.name = utf8OrWindows1252(line.substr(first, close - first));
  return entry;
}

Entry valueAt(std::string_view text, std::size_t begin) {
  Entry entry;
  entry.next = lineEndAt(text, begin);
  const bool isDefault = text[begin] == '@';
  const std::size_t behindName = isDefault ? begin + 1 : behindQuoted(text.substr(0, entry.next), begin);
  if (behindName == text.npos) return entry;
  const std::size_t equals = text.find_first_not_of(" \t", behindName);
  if (equals == text.npos || text[equals] != '=') return entry;
  entry.kind = Entry::Kind::kValue;
  if (!isDefault) entry.name = unescaped(text.substr(begin, behindName - begin));
  std::size_t data = equals + 1;
  while (data < entry.next && (text[data] == ' ' || text[data] == '\t')) ++data;
  entry.next = dataEnd(text, data);
  entry.data = trimmedStretch(text, data, entry.next);
  return entry;
}

// What begins at a line's begin. next is behind the line end of its last line.
Entry entryAt(std::string_view text, std::size_t lineBegin) {
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks, lineBegin), text.size());
  Entry entry;
  entry.next = lineEndAt(text, begin);
  if (begin < text.size() && text[begin] == '[') entry = keyAt(text, begin);
  if (begin < text.size() && (text[begin] == '"' || text[begin] == '@')) entry = valueAt(text, begin);
  if (entry.next < text.size()) ++entry.next;
  return entry;
}

// Whether a key is another one or lies below it.
bool isAtOrBelow(std::string_view key, std::string_view above) {
  if (equalsIgnoringCase(key, above)) return true;
  const std::size_t length = characterCount(above);
  return equalsIgnoringCase(firstCharacters(key, length), above) &&
         behindCharacters(key, length).starts_with('\\');
}

std::optional<std::uint32_t> hexNumber(std::string_view digits, std::size_t mostDigits) {
  std::uint32_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, problem] = std::from_chars(digits.data(), end, number, 16);
  const bool isGood = problem == std::errc() && stop == end && digits.size() <= mostDigits;
  return isGood ? std::optional(number) : std::nullopt;
}

std::string bytesOf(std::uint32_t number) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((number >> shift) & 0xFFU);
  return bytes;
}

std::uint32_t numberOf(std::string_view bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = kDwordSize; i > 0; --i)
    number = (number << 8U) | static_cast<unsigned char>(bytes[i - 1]);
  return number;
}

// "01,ff,\" and the lines that follow.
std::optional<std::string> parseBytes(std::string_view list) {
  std::string clean;
  for (const char letter : list) {
    if (std::string_view(" \t\r\n\\").find(letter) == std::string_view::npos) clean += letter;
  }
  while (clean.ends_with(',')) clean.pop_back();
  std::string bytes;
  for (const std::string& digits : split(clean, ',')) {
    const std::optional<std::uint32_t> byte = hexNumber(digits, 2);
    if (!byte) return std::nullopt;
    bytes += static_cast<char>(*byte);
  }
  return bytes;
}

// A text that is stored as bytes, without the NUL that ends it.
std::string textFromBytes(const std::string& bytes, bool areTextsWide) {
  std::string text = areTextsWide ? utf8FromUtf16(bytes) : utf8OrWindows1252(bytes);
  if (text.ends_with('\0')) text.pop_back();
  return text;
}

// "hex:01", "hex(2):..."
std::optional<Typed> parseHex(std::string_view data, bool areTextsWide) {
  Typed value{kRegBinary, {}};
  data.remove_prefix(3);
  if (data.starts_with('(')) {
    const std::optional<std::uint32_t> type = hexNumber(data.substr(1, data.find(')') - 1), 8);
    if (!type || data.find(')') == data.npos) return std::nullopt;
    value.type = *type;
    data.remove_prefix(data.find(')') + 1);
  }
  if (!data.starts_with(':')) return std::nullopt;
  std::optional<std::string> bytes = parseBytes(data.substr(1));
  if (!bytes) return std::nullopt;
  value.data = isText(value.type) ? textFromBytes(*bytes, areTextsWide) : std::move(*bytes);
  return value;
}

std::string formatHex(const Typed& value) {
  const std::string bytes = isText(value.type) ? utf16FromUtf8(value.data + '\0') : value.data;
  std::array<char, 16> part{};
  std::snprintf(part.data(), part.size(), value.type == kRegBinary ? "hex:" : "hex(%x):", value.type);
  std::string text = part.data();
  const char* separator = "";
  for (const char byte : bytes) {
    std::snprintf(part.data(), part.size(), "%s%02x", separator, static_cast<unsigned char>(byte));
    text += part.data();
    separator = ",";
  }
  return text;
}

}  // namespace

Found find(std::string_view text, std::string_view key, std::string_view valueName) {
  Found found;
  bool isInKey = false;
  for (std::size_t position = 0; position < text.size();) {
    const Entry entry = entryAt(text, position);
    if (entry.kind == Entry::Kind::kKey) {
      isInKey = equalsIgnoringCase(entry.name, key);
    } else if (entry.kind == Entry::Kind::kDeletedKey) {
      isInKey = false;
      if (isAtOrBelow(key, entry.name)) found = {};
    } else if (isInKey && entry.kind == Entry::Kind::kValue && equalsIgnoringCase(entry.name, valueName)) {
      const bool isDeleted = text.substr(entry.data.begin, entry.data.end - entry.data.begin) == "-";
      found.data = isDeleted ? std::nullopt : std::optional(entry.data);
    }
    if (isInKey && entry.kind != Entry::Kind::kOther) found.newValuePlace = entry.next;
    position = entry.next;
  }
  return found;
}

std::optional<Typed> parseData(std::string_view data, bool areTextsWide) {
  if (data.starts_with('"')) {
    if (behindQuoted(data, 0) != data.size()) return std::nullopt;
    return Typed{kRegString, unescaped(data)};
  }
  const std::string lower = lowerCase(data.substr(0, 6));
  if (lower == "dword:") {
    const std::optional<std::uint32_t> number = hexNumber(data.substr(6), 8);
    return number ? std::optional(Typed{kRegDword, bytesOf(*number)}) : std::nullopt;
  }
  return lower.starts_with("hex") ? parseHex(data, areTextsWide) : std::nullopt;
}

std::string formatData(const Typed& value) {
  std::string_view text = value.data;
  if (text.ends_with('\0')) text.remove_suffix(1);
  // A quoted text has no way to write a NUL, and a line end in one would confuse other readers.
  const bool isPlain = text.find_first_of(std::string_view("\0\r\n", 3)) == text.npos;
  if (value.type == kRegString && isPlain) return escaped(text);
  if (value.type != kRegDword || value.data.size() != kDwordSize) return formatHex(value);
  std::array<char, 16> number{};
  std::snprintf(number.data(), number.size(), "dword:%08x", numberOf(value.data));
  return number.data();
}

std::string formatName(std::string_view valueName) {
  return valueName.empty() ? "@" : escaped(valueName);
}

}  // namespace trelvin::registry_text
