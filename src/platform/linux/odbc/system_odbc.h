// ODBC's own headers. Its calls are those of one byte a character, with UTF-8 in them, as unixODBC's drivers
// take it.
#pragma once

#include <sql.h>
#include <sqlext.h>
