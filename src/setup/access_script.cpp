#include "setup/access_script.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "core/text.h"

namespace trelvin::setup {

namespace {

using Replacement = std::pair<std::string_view, std::string_view>;

// In this order: the types of the last two are words of the others, too.
constexpr std::array<Replacement, 5> kTypes{{
    {" COLLATE NOCASE", ""},
    {" INTEGER PRIMARY KEY AUTOINCREMENT", " COUNTER PRIMARY KEY"},
    {" TIMESTAMP DEFAULT (datetime('now', 'localtime'))", " DATETIME DEFAULT Now()"},
    {" TEXT", " LONGTEXT"},
    {" BOOLEAN", " BIT"},
}};

bool isSpace(char letter) {
  return std::isspace(static_cast<unsigned char>(letter)) != 0;
}

// Comments gone, blanks single; texts in quotes as they are.
std::string condensed(std::string_view script) {
  std::string text;
  bool quoted = false;
  for (std::size_t i = 0; i < script.size(); ++i) {
    if (!quoted && script.substr(i, 2) == "--") i = std::min(script.find('\n', i), script.size());
    if (i == script.size()) break;
    if (script[i] == '\'') quoted = !quoted;
    if (quoted || !isSpace(script[i])) {
      text += script[i];
    } else if (!text.empty() && text.back() != ' ') {
      text += ' ';
    }
  }
  return text;
}

// The parts between separators that stand neither in quotes nor in brackets.
std::vector<std::string> parts(std::string_view text, char separator) {
  std::vector<std::string> all(1);
  bool quoted = false;
  int depth = 0;
  for (const char letter : text) {
    if (letter == '\'') quoted = !quoted;
    if (!quoted && letter == '(') ++depth;
    if (!quoted && letter == ')') --depth;
    if (!quoted && depth == 0 && letter == separator) {
      all.emplace_back();
    } else {
      all.back() += letter;
    }
  }
  for (std::string& each : all) each = trimmed(each);
  return all;
}

// The first word in brackets.
std::string named(const std::string& definition) {
  const std::size_t end = definition.find(' ');
  return "[" + definition.substr(0, end) + "]" + (end == std::string::npos ? "" : definition.substr(end));
}

std::string accessTable(std::string statement) {
  for (const auto& [ours, theirs] : kTypes) statement = replaceAll(statement, ours, theirs);
  const std::size_t begin = statement.find('(');
  const std::size_t end = statement.rfind(')');
  std::string columns;
  for (const std::string& each : parts(statement.substr(begin + 1, end - begin - 1), ',')) {
    columns += (columns.empty() ? "" : ", ") + named(each);
  }
  return statement.substr(0, begin) + "(" + columns + ")";
}

void addInserts(const std::string& statement, std::vector<std::string>& all) {
  constexpr std::string_view kValues = " VALUES ";
  const std::size_t rows = statement.find(kValues) + kValues.size();
  for (const std::string& row : parts(std::string_view(statement).substr(rows), ','))
    all.push_back(statement.substr(0, rows) + row);
}

}  // namespace

std::vector<std::string> accessStatements(std::string_view script) {
  std::vector<std::string> all;
  for (const std::string& statement : parts(condensed(script), ';')) {
    if (statement.starts_with("CREATE TABLE ")) {
      all.push_back(accessTable(statement));
    } else if (statement.starts_with("INSERT ")) {
      addInserts(statement, all);
    } else if (!statement.empty()) {
      all.push_back(statement);
    }
  }
  return all;
}

}  // namespace trelvin::setup
