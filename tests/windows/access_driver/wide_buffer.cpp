#include "windows/access_driver/wide_buffer.h"

#include <algorithm>
#include <cstring>

#include "platform/linux/file_text.h"

namespace trelvin::test {

std::string utf8Of(const SQLWCHAR* text, SQLINTEGER length) {
  auto count = static_cast<std::size_t>(length);
  if (length == SQL_NTS) {
    for (count = 0; text[count] != 0;) ++count;
  }
  return utf8FromUtf16({reinterpret_cast<const char*>(text), count * sizeof(SQLWCHAR)});
}

WideText::WideText(std::string_view utf8) : bytes_(utf16FromUtf8(utf8)) {}

bool WideText::fill(SQLPOINTER buffer, std::size_t capacity, std::size_t from) const {
  const std::size_t rest = size() - from;
  if (buffer == nullptr || capacity == 0) return false;
  const std::size_t count = std::min(rest, capacity - 1);
  auto* const place = static_cast<char*>(buffer);
  std::memcpy(place, bytes_.data() + from * sizeof(SQLWCHAR), count * sizeof(SQLWCHAR));
  std::memset(place + count * sizeof(SQLWCHAR), 0, sizeof(SQLWCHAR));
  return count == rest;
}

SQLRETURN give(std::string_view utf8, SQLPOINTER buffer, std::size_t capacity, SQLSMALLINT* length) {
  const WideText text(utf8);
  if (length != nullptr) *length = static_cast<SQLSMALLINT>(text.size());
  return text.fill(buffer, capacity) ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

}  // namespace trelvin::test
