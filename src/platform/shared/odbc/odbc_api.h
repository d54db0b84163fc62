// ODBC's own headers, as each system wants them. For the sources of this folder; no other file includes it.
#pragma once

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#endif

#include <sql.h>
#include <sqlext.h>

#include <cstdint>

namespace trelvin {

// ODBC passes the numbers of attributes in the form of pointers.
inline SQLPOINTER asPointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace trelvin
