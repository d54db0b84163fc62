// Between a property's text in the file and its value as a client sees it.
//
// The text is the attribute's, with character references resolved. The items of a list are separated by line
// ends (the tabs behind them belong to the separator); the file's own line ends and tabs are the writer's
// business.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/value.h"
#include "schema.h"

namespace trelvin {

// One entry of a MimeMap.
class MimeType final : public ValueObject {
 public:
  MimeType(std::string extension, std::string type)
      : extension_(std::move(extension)), type_(std::move(type)) {}
  [[nodiscard]] std::string typeName() const override { return "MimeMap"; }
  [[nodiscard]] const std::string& extension() const { return extension_; }
  [[nodiscard]] const std::string& type() const { return type_; }

 private:
  std::string extension_;
  std::string type_;
};

// IPSecurity and access lists: bytes that are carried along and never looked into.
class OpaqueObject final : public ValueObject {
 public:
  OpaqueObject(PropertyType kind, std::string text, std::string origin)
      : kind_(kind), text_(std::move(text)), origin_(std::move(origin)) {}
  [[nodiscard]] std::string typeName() const override;
  [[nodiscard]] PropertyType kind() const { return kind_; }
  [[nodiscard]] const std::string& text() const { return text_; }
  // The file that it was read from. What is encrypted there can be read nowhere else.
  [[nodiscard]] const std::string& origin() const { return origin_; }

 private:
  PropertyType kind_;
  std::string text_;
  std::string origin_;
};

// Whether the text is one of a secure property's encrypted values. Their key is bound to the server's
// machine.
bool isEncrypted(std::string_view text);

// Whether the text is of the property's form. IIS skips an invalid property and keeps the rest of the node.
bool isValidText(const Schema& schema, const Property& property, std::string_view text);

// The 32 bits of a DWORD, decimal or as names of flags joined with bars; nothing for any other text.
std::optional<std::uint32_t> bitsOf(const Schema& schema, const Property& property, std::string_view text);
// The text of a DWORD: names of flags where the property has them and they say it all, else decimal.
std::string textOfBits(const Schema& schema, const Property& property, std::uint32_t bits);

std::vector<std::string_view> itemsOf(std::string_view text);

// A valid text as a value. Encrypted ones read as empty. origin: see OpaqueObject.
Value valueOf(const Schema& schema, const Property& property, std::string_view text,
              const std::string& origin);
// A value as text; 0x80005008 when it does not fit the property. Not for secure properties and single flags.
std::string textOf(const Schema& schema, const Property& property, const Value& value);

// 0x80005008 unless the text can stand in the file: UTF-8 without control characters but tab and line end.
void requireWritable(std::string_view what, std::string_view text);

}  // namespace trelvin
