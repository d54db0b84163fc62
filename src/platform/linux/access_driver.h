// What stands in for the Access driver here: SQLite, behind its ODBC driver.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin {

// How long a statement waits for another one's lock before it fails, in milliseconds. The driver waits twice.
inline constexpr int kLockTimeout = 2500;

// A string with Driver={Microsoft Access Driver (*.mdb)} becomes one that opens the SQLite file named by DBQ.
// Every other string stays as it is, less the blanks at its end.
//
// Each statement is on disk, as far as a killed process goes, when it returns. A file that can't be written
// is opened for reading only. 0x80004005 with the file's native path and the reason when DBQ names nothing,
// when the file is not there, empty or unreadable, and, once it is opened, when it is no database.
// `toNativePath` turns a path of the program into one of this machine.
DriverConnection accessDriverString(std::string_view connectionString,
                                    const std::function<std::string(std::string_view)>& toNativePath);

}  // namespace trelvin
