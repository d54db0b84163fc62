// One field of the row that a cursor stands on.
#pragma once

#include "core/value.h"
#include "platform/shared/odbc/diagnostics.h"

namespace trelvin {

// A column of a result: its number from 1, and its type as the driver describes it.
struct CellSource {
  SQLHANDLE statement = SQL_NULL_HANDLE;
  SQLUSMALLINT column = 0;
  SQLSMALLINT type = SQL_VARCHAR;
  DriverKind driver = DriverKind::kTellsStates;
};

// Its value. Columns of a row are to be read in their order and once each: many drivers give no more.
Value readCell(const CellSource& source);

}  // namespace trelvin
