#include "platform/linux/file_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace trelvin {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// Windows-1252 from 0x80 to 0x9F; above, and where it has no character, it agrees with Unicode.
constexpr std::array<char32_t, 32> kWindows1252{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

unsigned byteAt(std::string_view bytes, std::size_t position) {
  return static_cast<unsigned char>(bytes[position]);
}

char32_t fromWindows1252(unsigned byte) {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80] : static_cast<char32_t>(byte);
}

bool isSurrogate(char32_t point) {
  return point >= 0xD800 && point < 0xE000;
}
bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

void append(std::string& text, char32_t point) {
  const auto tail = [&](unsigned shift) { text += static_cast<char>(0x80U | ((point >> shift) & 0x3FU)); };
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0U | (point >> 6U));
    tail(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0U | (point >> 12U));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | (point >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

// A character of UTF-8 and the bytes that it takes; length 0 for what is none.
struct Decoded {
  char32_t point = 0;
  std::size_t length = 0;
};

std::size_t announcedLength(unsigned lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

// The smallest character that needs so many bytes; a longer form of a smaller one is no UTF-8.
constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};

Decoded decodeAt(std::string_view text, std::size_t position) {
  const unsigned lead = byteAt(text, position);
  const std::size_t length = announcedLength(lead);
  if (length == 1) return {lead, 1};
  if (length == 0 || text.size() - position < length) return {};
  char32_t point = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned byte = byteAt(text, position + i);
    if ((byte & 0xC0U) != 0x80U) return {};
    point = (point << 6U) | (byte & 0x3FU);
  }
  return point < kSmallest[length] || point > 0x10FFFF ? Decoded{} : Decoded{point, length};
}

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

void appendUnit(std::string& bytes, char32_t unit) {
  bytes += static_cast<char>(unit & 0xFFU);
  bytes += static_cast<char>((unit >> 8U) & 0xFFU);
}

char32_t unitAt(std::string_view bytes, std::size_t position) {
  return byteAt(bytes, position) | (byteAt(bytes, position + 1) << 8U);
}

}  // namespace

std::string utf8OrWindows1252(std::string_view bytes) {
  if (isAscii(bytes)) return std::string(bytes);
  std::string text;
  for (std::size_t position = 0; position < bytes.size();) {
    const Decoded character = decodeAt(bytes, position);
    const bool isUtf8 = character.length > 0 && !isSurrogate(character.point);
    append(text, isUtf8 ? character.point : fromWindows1252(byteAt(bytes, position)));
    position += isUtf8 ? character.length : 1;
  }
  return text;
}

std::string utf8FromUtf16(std::string_view bytes) {
  std::string text;
  for (std::size_t position = 0; position + 1 < bytes.size(); position += 2) {
    char32_t point = unitAt(bytes, position);
    if (isHighSurrogate(point) && position + 3 < bytes.size() &&
        isLowSurrogate(unitAt(bytes, position + 2))) {
      position += 2;
      point = 0x10000U + ((point - 0xD800U) << 10U) + (unitAt(bytes, position) - 0xDC00U);
    }
    append(text, point);
  }
  return text;
}

std::string utf16FromUtf8(std::string_view text) {
  std::string bytes;
  for (std::size_t position = 0; position < text.size();) {
    Decoded character = decodeAt(text, position);
    if (character.length == 0) character = {fromWindows1252(byteAt(text, position)), 1};
    position += character.length;
    if (character.point >= 0x10000) {
      appendUnit(bytes, 0xD800U + ((character.point - 0x10000U) >> 10U));
      character.point = 0xDC00U + (character.point & 0x3FFU);
    }
    appendUnit(bytes, character.point);
  }
  return bytes;
}

FileText FileText::fromBytes(std::string bytes) {
  if (bytes.starts_with(kUtf8Mark)) return {bytes.substr(kUtf8Mark.size()), Form::kUtf8Mark};
  if (bytes.starts_with(kUtf16Mark)) {
    return {utf8FromUtf16(std::string_view(bytes).substr(kUtf16Mark.size())), Form::kUtf16Mark};
  }
  return {std::move(bytes), Form::kBytes};
}

std::string FileText::toBytes() const {
  switch (form) {
    case Form::kUtf8Mark:
      return std::string(kUtf8Mark) + text;
    case Form::kUtf16Mark:
      return std::string(kUtf16Mark) + utf16FromUtf8(text);
    case Form::kBytes:
      break;
  }
  return text;
}

std::string_view FileText::lineEnd() const {
  const std::size_t end = text.find('\n');
  const bool isUnixStyle = end != std::string::npos && (end == 0 || text[end - 1] != '\r');
  return isUnixStyle ? "\n" : "\r\n";
}

}  // namespace trelvin
