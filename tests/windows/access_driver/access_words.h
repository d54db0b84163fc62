// The words of Access for a table, as SQLite has to hear them.
#pragma once

#include <string>

namespace trelvin::test {

// The types and defaults of a CREATE TABLE; any other statement is the same for both.
std::string sqliteStatement(std::string statement);

}  // namespace trelvin::test
