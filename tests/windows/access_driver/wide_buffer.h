// Wide text of this machine's ODBC, in UTF-16, from and to UTF-8.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace trelvin::test {

// A text of so many characters, or up to its NUL for SQL_NTS.
std::string utf8Of(const SQLWCHAR* text, SQLINTEGER length);

// Text as it lies in a wide buffer.
class WideText {
 public:
  explicit WideText(std::string_view utf8);

  [[nodiscard]] std::size_t size() const { return bytes_.size() / sizeof(SQLWCHAR); }
  // Fills a buffer of so many characters with what fits from one character on, and ends it with a NUL. Where
  // the buffer ends, a character of two halves is cut, as real drivers do it. Returns whether that was all of
  // the text.
  bool fill(SQLPOINTER buffer, std::size_t capacity, std::size_t from = 0) const;

 private:
  std::string bytes_;
};

// The result of a call that gives a whole text and its length in characters.
SQLRETURN give(std::string_view utf8, SQLPOINTER buffer, std::size_t capacity, SQLSMALLINT* length);

}  // namespace trelvin::test
