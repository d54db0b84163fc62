#include "core/text.h"

#include <algorithm>

#include "core/case_table.h"

namespace trelvin {

namespace {

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t announcedLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF5) return 4;
  return 0;
}

// Length in bytes of the character at a position; a byte that begins no character counts as one by itself.
std::size_t lengthAt(std::string_view text, std::size_t position) {
  const std::size_t length = announcedLength(static_cast<unsigned char>(text[position]));
  if (length <= 1 || position + length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[position + i])) return 1;
  }
  return length;
}

char32_t decode(std::string_view character) {
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead < 0x80 ? lead : kNoCharacter;
  char32_t point = lead & (0xFFU >> (character.size() + 1));
  for (std::size_t i = 1; i < character.size(); ++i) {
    point = (point << 6U) | (static_cast<unsigned char>(character[i]) & 0x3FU);
  }
  return point;
}

void append(std::string& text, char32_t point) {
  if (point < 0x80) {
    text += static_cast<char>(point);
    return;
  }
  if (point < 0x800) {
    text += static_cast<char>(0xC0U | (point >> 6U));
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0U | (point >> 12U));
    text += static_cast<char>(0x80U | ((point >> 6U) & 0x3FU));
  } else {
    text += static_cast<char>(0xF0U | (point >> 18U));
    text += static_cast<char>(0x80U | ((point >> 12U) & 0x3FU));
    text += static_cast<char>(0x80U | ((point >> 6U) & 0x3FU));
  }
  text += static_cast<char>(0x80U | (point & 0x3FU));
}

template <std::size_t Size>
char32_t mapped(const std::array<CaseRange, Size>& ranges, char32_t point) {
  const auto next =
      std::upper_bound(ranges.begin(), ranges.end(), point,
                       [](char32_t wanted, const CaseRange& range) { return wanted < range.first; });
  if (next == ranges.begin()) return point;
  const CaseRange& range = *std::prev(next);
  if (point > range.last || (point - range.first) % range.step != 0) return point;
  return static_cast<char32_t>(static_cast<std::int64_t>(point) + range.difference);
}

char upperAscii(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}
char lowerAscii(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

// Goes through a text character by character, in one case.
class UpperReader {
 public:
  explicit UpperReader(std::string_view text) : text_(text) {}

  [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }

  // A byte that is no UTF-8 gives a value of its own, beyond all characters.
  char32_t next() {
    const char byte = text_[position_];
    if (isAscii(byte)) {
      ++position_;
      return static_cast<char32_t>(upperAscii(byte));
    }
    const std::string_view character = text_.substr(position_, lengthAt(text_, position_));
    position_ += character.size();
    const char32_t point = decode(character);
    if (point == kNoCharacter) return 0x110000U + static_cast<unsigned char>(byte);
    return mapped(kUpperRanges, point);
  }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

template <std::size_t Size>
std::string converted(std::string_view text, char (*ascii)(char), const std::array<CaseRange, Size>& ranges) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    if (isAscii(text[position])) {
      result += ascii(text[position++]);
      continue;
    }
    const std::string_view character = text.substr(position, lengthAt(text, position));
    const char32_t point = decode(character);
    if (point == kNoCharacter) {
      result += character;
    } else {
      append(result, mapped(ranges, point));
    }
    position += character.size();
  }
  return result;
}

// Where the part stands in the text from a position on, as a stretch of bytes of the text; its length may
// differ from the part's, since some letters need more bytes in one case than in the other.
struct Stretch {
  std::size_t begin;
  std::size_t end;
};

bool matchesHere(std::string_view text, std::size_t begin, std::string_view part, std::size_t& end) {
  UpperReader here(text.substr(begin));
  UpperReader wanted(part);
  while (!wanted.atEnd()) {
    if (here.atEnd() || here.next() != wanted.next()) return false;
  }
  end = begin + here.position();
  return true;
}

Stretch findIgnoringCase(std::string_view text, std::string_view part, std::size_t from) {
  const char first = part.empty() ? '\0' : upperAscii(part[0]);
  for (std::size_t begin = from; begin < text.size(); begin += lengthAt(text, begin)) {
    if (isAscii(first) && isAscii(text[begin]) && upperAscii(text[begin]) != first) continue;
    std::size_t end = begin;
    if (matchesHere(text, begin, part, end)) return {begin, end};
  }
  return {std::string_view::npos, std::string_view::npos};
}

}  // namespace

std::string upperCase(std::string_view text) {
  return converted(text, upperAscii, kUpperRanges);
}

std::string lowerCase(std::string_view text) {
  return converted(text, lowerAscii, kLowerRanges);
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  if (left == right) return true;
  // Nearly all texts are ASCII, and nearly all comparisons are decided within their first letters.
  std::size_t same = 0;
  const std::size_t shorter = std::min(left.size(), right.size());
  while (same < shorter && isAscii(left[same]) && isAscii(right[same])) {
    if (upperAscii(left[same]) != upperAscii(right[same])) return false;
    ++same;
  }
  UpperReader first(left.substr(same));
  UpperReader second(right.substr(same));
  while (!first.atEnd() && !second.atEnd()) {
    if (first.next() != second.next()) return false;
  }
  return first.atEnd() && second.atEnd();
}

bool sortsBefore(std::string_view left, std::string_view right) {
  std::size_t same = 0;
  const std::size_t shorter = std::min(left.size(), right.size());
  while (same < shorter && isAscii(left[same]) && isAscii(right[same])) {
    const char a = upperAscii(left[same]);
    const char b = upperAscii(right[same]);
    if (a != b) return a < b;
    ++same;
  }
  UpperReader first(left.substr(same));
  UpperReader second(right.substr(same));
  while (!first.atEnd() && !second.atEnd()) {
    const char32_t a = first.next();
    const char32_t b = second.next();
    if (a != b) return a < b;
  }
  if (first.atEnd() != second.atEnd()) return first.atEnd();
  return left < right;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return trimmedRight(text);
}

std::string_view trimmedRight(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t position = 0; position < text.size(); position += lengthAt(text, position)) ++count;
  return count;
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
  return text.substr(0, text.size() - behindCharacters(text, count).size());
}

std::string_view lastCharacters(std::string_view text, std::size_t count) {
  const std::size_t all = characterCount(text);
  return count >= all ? text : behindCharacters(text, all - count);
}

std::string_view behindCharacters(std::string_view text, std::size_t count) {
  std::size_t position = 0;
  while (count > 0 && position < text.size()) {
    position += lengthAt(text, position);
    --count;
  }
  return text.substr(position);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  if (text.empty()) return parts;
  std::size_t begin = 0;
  for (std::size_t end = text.find(separator); end != std::string_view::npos;
       end = text.find(separator, begin)) {
    parts.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  parts.emplace_back(text.substr(begin));
  return parts;
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
  return part.empty() || findIgnoringCase(text, part, 0).begin != std::string_view::npos;
}

std::string replaceAll(std::string_view text, std::string_view part, std::string_view replacement) {
  if (part.empty()) return std::string(text);
  std::string result;
  std::size_t begin = 0;
  for (std::size_t found = text.find(part); found != std::string_view::npos; found = text.find(part, begin)) {
    result.append(text.substr(begin, found - begin)).append(replacement);
    begin = found + part.size();
  }
  return result.append(text.substr(begin));
}

std::string replaceAllIgnoringCase(std::string_view text, std::string_view part,
                                   std::string_view replacement) {
  return replaceIgnoringCase(text, part, replacement, std::string_view::npos);
}

std::string replaceIgnoringCase(std::string_view text, std::string_view part, std::string_view replacement,
                                std::size_t most) {
  std::string result;
  std::size_t begin = 0;
  for (std::size_t count = 0; !part.empty() && count < most; ++count) {
    const Stretch found = findIgnoringCase(text, part, begin);
    if (found.begin == std::string_view::npos) break;
    result.append(text.substr(begin, found.begin - begin)).append(replacement);
    begin = found.end;
  }
  return result.append(text.substr(begin));
}

std::string reversed(std::string_view text) {
  std::string result;
  for (std::size_t position = 0; position < text.size();) {
    const std::string_view character = text.substr(position, lengthAt(text, position));
    result.insert(0, character);
    position += character.size();
  }
  return result;
}

}  // namespace trelvin
