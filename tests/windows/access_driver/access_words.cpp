#include "windows/access_driver/access_words.h"

#include <array>
#include <regex>
#include <utility>

namespace trelvin::test {

std::string sqliteStatement(std::string statement) {
  if (!statement.starts_with("CREATE TABLE ")) return statement;
  // Access compares texts without regard to case.
  static const std::array<std::pair<std::regex, const char*>, 5> kWords{{
      {std::regex(" COUNTER PRIMARY KEY"), " INTEGER PRIMARY KEY AUTOINCREMENT"},
      {std::regex(" DATETIME DEFAULT Now\\(\\)"), " TIMESTAMP DEFAULT (datetime('now', 'localtime'))"},
      {std::regex(" LONGTEXT"), " TEXT COLLATE NOCASE"},
      {std::regex(" (VARCHAR\\(\\d+\\))"), " $1 COLLATE NOCASE"},
      {std::regex(" BIT"), " BOOLEAN"},
  }};
  for (const auto& [theirs, ours] : kWords) statement = std::regex_replace(statement, theirs, ours);
  return statement;
}

}  // namespace trelvin::test
