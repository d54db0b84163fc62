#include "value_forms.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "core/err.h"
#include "core/text.h"
#include "utf8.h"

namespace trelvin {

namespace {

[[noreturn]] void refuse(std::string_view property, std::string_view why) {
  throw Failure(error_number::kAdsBadParameter, std::string(property) + ": " + std::string(why) + ".");
}

bool isBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

std::string_view withoutBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

int hexDigit(char byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  const char lower = static_cast<char>(byte | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isHex(std::string_view text) {
  return text.size() % 2 == 0 &&
         std::all_of(text.begin(), text.end(), [](char byte) { return hexDigit(byte) >= 0; });
}

Value::Bytes bytesOf(std::string_view hex) {
  Value::Bytes bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(hexDigit(hex[i]) * 16 + hexDigit(hex[i + 1])));
  }
  return bytes;
}

std::string hexOfBytes(const Value::Bytes& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex;
  for (const std::uint8_t byte : bytes) {
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

// Older servers wrote -1 for what is unlimited.
std::optional<std::uint32_t> decimalBits(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (number < INT32_MIN || number > static_cast<std::int64_t>(UINT32_MAX)) return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

std::optional<std::uint32_t> flagBits(const Schema& schema, const Property& word, std::string_view name) {
  // Nearly all files have the schema's spelling, and names of flags begin alike.
  for (const PropertyIndex flag : word.flags) {
    if (schema.property(flag).name == name) return schema.property(flag).bit;
  }
  for (const PropertyIndex flag : word.flags) {
    if (equalsIgnoringCase(schema.property(flag).name, name)) return schema.property(flag).bit;
  }
  return decimalBits(name);
}

bool isTrue(std::string_view text) {
  return equalsIgnoringCase(text, "TRUE") || text == "1";
}
bool isFalse(std::string_view text) {
  return equalsIgnoringCase(text, "FALSE") || text == "0" || text.empty();
}

Value mimeTypesOf(std::string_view text) {
  Value::List list;
  for (const std::string_view item : itemsOf(text)) {
    const std::size_t comma = std::min(item.find(','), item.size());
    list.emplace_back(Value::Object(std::make_shared<MimeType>(
        std::string(item.substr(0, comma)), std::string(item.substr(std::min(comma + 1, item.size()))))));
  }
  return list;
}

Value textsOf(std::string_view text) {
  Value::List list;
  for (const std::string_view item : itemsOf(text)) list.emplace_back(std::string(item));
  return list;
}

// One item of a list. An item that is empty would end the list in the metabase, so that it is left out.
void appendItem(const Property& property, std::string& text, const std::string& item) {
  requireWritable(property.name, item);
  if (item.find_first_of("\r\n") != std::string::npos || item.starts_with('\t')) {
    refuse(property.name, "an item of a list can't begin with a tab or hold a line end");
  }
  if (item.empty()) return;
  if (!text.empty()) text += '\n';
  text += item;
}

std::string plainText(const Property& property, const Value& value) {
  const VarType type = value.varType();
  const bool fits = type == kVarText || type == kVarInteger || type == kVarLong || type == kVarDouble ||
                    type == kVarBoolean || type == kVarDate;
  if (!fits) refuse(property.name, "a text is wanted");
  return value.toText();
}

std::string textOfList(const Property& property, const Value& value) {
  std::string text;
  if (value.varType() != kVarList) {
    appendItem(property, text, plainText(property, value));
    return text;
  }
  for (const Value& item : value.list()) appendItem(property, text, plainText(property, item));
  return text;
}

std::string textOfMimeMap(const Property& property, const Value& value) {
  if (value.varType() != kVarList) refuse(property.name, "a list of MimeMap objects is wanted");
  std::string text;
  for (const Value& item : value.list()) {
    const auto* type =
        item.varType() == kVarObject ? dynamic_cast<const MimeType*>(item.object().get()) : nullptr;
    if (type == nullptr) refuse(property.name, "a list of MimeMap objects is wanted");
    appendItem(property, text, type->extension() + "," + type->type());
  }
  return text;
}

std::string textOfObject(const Property& property, const Value& value) {
  const auto* object =
      value.varType() == kVarObject ? dynamic_cast<const OpaqueObject*>(value.object().get()) : nullptr;
  if (object == nullptr || object->kind() != property.type)
    refuse(property.name, "an object of its own kind is wanted");
  return object->text();
}

std::string textOfBytes(const Property& property, const Value& value) {
  if (value.varType() != kVarBytes) refuse(property.name, "an array of bytes is wanted");
  return hexOfBytes(value.bytes());
}

std::uint32_t bitsOfValue(const Property& property, const Value& value) {
  double number = 0;
  try {
    number = std::nearbyint(value.toDouble());
  } catch (const Failure&) {
    refuse(property.name, "a number is wanted");
  }
  if (!(number >= INT32_MIN && number <= UINT32_MAX))
    refuse(property.name, "the number has no place in 32 bits");
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(number));
}

std::string textOfTruth(const Property& property, const Value& value) {
  try {
    return value.toBoolean() ? "TRUE" : "FALSE";
  } catch (const Failure&) {
    refuse(property.name, "True or False is wanted");
  }
}

}  // namespace

std::string OpaqueObject::typeName() const {
  return kind_ == PropertyType::kIpSecurity ? "IPSecurity" : "SecurityDescriptor";
}

bool isEncrypted(std::string_view text) {
  constexpr std::string_view kMark = "49634462";  // "IcDb", by which the server knows its own encryption
  return text.starts_with(kMark);
}

std::vector<std::string_view> itemsOf(std::string_view text) {
  std::vector<std::string_view> items;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    if (end > 0) items.push_back(text.substr(0, end));
    text.remove_prefix(end);
    // The separator: a line end and the tabs of the next line.
    while (!text.empty() && (text.front() == '\r' || text.front() == '\n')) text.remove_prefix(1);
    while (!text.empty() && text.front() == '\t') text.remove_prefix(1);
  }
  return items;
}

std::optional<std::uint32_t> bitsOf(const Schema& schema, const Property& property, std::string_view text) {
  text = withoutBlanks(text);
  if (const auto number = decimalBits(text)) return number;
  if (property.flags.empty()) return std::nullopt;
  std::uint32_t bits = 0;
  bool anyKnown = text.empty();
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('|'), text.size());
    const auto flag = flagBits(schema, property, withoutBlanks(text.substr(0, end)));
    // A flag of another version must not take the others with it: a site would lose all its rights.
    anyKnown = anyKnown || flag.has_value();
    bits |= flag.value_or(0);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return anyKnown ? std::optional(bits) : std::nullopt;
}

std::string textOfBits(const Schema& schema, const Property& property, std::uint32_t bits) {
  std::string names;
  std::uint32_t left = bits;
  for (const PropertyIndex index : property.flags) {
    const Property& flag = schema.property(index);
    // A flag without an id is known from documents only; the server would not understand its name.
    if ((left & flag.bit) == 0 || flag.id.empty()) continue;
    left &= ~flag.bit;
    names += (names.empty() ? "" : " | ") + flag.name;
  }
  return left == 0 && !names.empty() ? names : std::to_string(bits);
}

bool isValidText(const Schema& schema, const Property& property, std::string_view text) {
  switch (property.type) {
    case PropertyType::kNumber:
      return bitsOf(schema, property, text).has_value();
    case PropertyType::kTruth:
      return isTrue(text) || isFalse(text);
    case PropertyType::kBytes:
    case PropertyType::kIpSecurity:
    case PropertyType::kAccessList:
      return isHex(text);
    default:
      return true;
  }
}

Value valueOf(const Schema& schema, const Property& property, std::string_view text,
              const std::string& origin) {
  const bool hidden = property.secure && isEncrypted(text);
  switch (property.type) {
    case PropertyType::kNumber:
      return static_cast<std::int32_t>(bitsOf(schema, property, text).value_or(0));
    case PropertyType::kTruth:
      return isTrue(text);
    case PropertyType::kTexts:
      return textsOf(text);
    case PropertyType::kMimeMap:
      return mimeTypesOf(text);
    case PropertyType::kIpSecurity:
    case PropertyType::kAccessList:
      return Value::Object(std::make_shared<OpaqueObject>(property.type, std::string(text), origin));
    case PropertyType::kBytes:
      return bytesOf(hidden ? std::string_view() : text);
    default:
      return hidden ? std::string() : std::string(text);
  }
}

std::string textOf(const Schema& schema, const Property& property, const Value& value) {
  switch (property.type) {
    case PropertyType::kNumber:
      return textOfBits(schema, property, bitsOfValue(property, value));
    case PropertyType::kTruth:
      return textOfTruth(property, value);
    case PropertyType::kTexts:
      return textOfList(property, value);
    case PropertyType::kMimeMap:
      return textOfMimeMap(property, value);
    case PropertyType::kIpSecurity:
    case PropertyType::kAccessList:
      return textOfObject(property, value);
    case PropertyType::kBytes:
      return textOfBytes(property, value);
    default: {
      std::string text = plainText(property, value);
      requireWritable(property.name, text);
      return text;
    }
  }
}

void requireWritable(std::string_view what, std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = utf8Length(text);
    if (length == 0) refuse(what, "the text is not UTF-8");
    const char byte = text.front();
    const bool control =
        static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
    const bool noCharacter =
        length == 3 && (text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF"));
    if (control || noCharacter)
      refuse(what, "the text holds a control character, which has no place in the file");
    text.remove_prefix(length);
  }
}

}  // namespace trelvin
