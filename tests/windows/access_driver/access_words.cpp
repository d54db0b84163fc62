#include "windows/access_driver/access_words.h"

#include <array>
#include <regex>
#include <utility>

namespace trelvin::test {

namespace {

bool makesTable(const std::string& statement) {
  return statement.starts_with("CREATE TABLE ");
}

}  // namespace

bool isAccessStatement(const std::string& statement, bool isExtended) {
  // A name may be such a word, since it stands in brackets. Alone, AUTOINCREMENT is a type of Access too.
  static const std::regex kForeign(R"([^\[](COLLATE\b|datetime *\()|PRIMARY KEY AUTOINCREMENT)",
                                   std::regex::icase);
  static const std::regex kDefault(R"([^\[]\bDEFAULT\b)", std::regex::icase);
  if (!makesTable(statement)) return true;
  return !std::regex_search(statement, kForeign) && (isExtended || !std::regex_search(statement, kDefault));
}

std::string sqliteStatement(std::string statement) {
  if (!makesTable(statement)) return statement;
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
