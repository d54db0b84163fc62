// The words of Access for a table, as SQLite has to hear them.
#pragma once

#include <string>

namespace trelvin::test {

// Whether Access would make this table: not with words that are SQLite's alone, and with a default only for a
// connection that has asked for the extended SQL. Any statement but a CREATE TABLE is left to SQLite.
bool isAccessStatement(const std::string& statement, bool isExtended);

// The types and defaults of a CREATE TABLE; any other statement is the same for both.
std::string sqliteStatement(std::string statement);

}  // namespace trelvin::test
