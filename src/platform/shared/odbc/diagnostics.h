// What a driver says about a call that failed.
#pragma once

#include <string>

#include "core/err.h"
#include "platform/shared/odbc/odbc_api.h"

namespace trelvin {

// A driver that gives one SQLSTATE to every failure of a statement has to be understood by its number and
// text.
enum class DriverKind { kTellsStates, kSqlite };

// The failure of a call on an environment or a connection: 0x80004005 with the driver's text.
Failure connectionFailure(SQLSMALLINT handleType, SQLHANDLE handle);

// The failure of a statement, by kind: 0x80040E37 for a table that isn't there, 0x80040E14 for a statement
// that the database does not understand, 0x80004005 for the rest.
Failure statementFailure(SQLHANDLE statement, DriverKind driver);

// Throws statementFailure unless the result is a success, with or without a remark, or "no data".
// Returns whether there is data.
bool checkStatement(SQLRETURN result, SQLHANDLE statement, DriverKind driver);

}  // namespace trelvin
