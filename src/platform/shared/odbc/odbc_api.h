// ODBC as the sources of this folder call it; no other file includes it. The calls go by their names without
// an ending, and text is made of SQLTCHAR: both become what the system's drivers understand by system_odbc.h,
// which each system has in its own folder.
#pragma once

#include <cstdint>

#include "system_odbc.h"

namespace trelvin {

// ODBC passes the numbers of attributes in the form of pointers.
inline SQLPOINTER asPointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace trelvin
