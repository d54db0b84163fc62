// Handles of the driver manager, freed with their owners.
#pragma once

#include "platform/shared/odbc/odbc_api.h"

namespace trelvin {

template <SQLSMALLINT kType>
class OdbcHandle {
 public:
  OdbcHandle() = default;
  OdbcHandle(const OdbcHandle&) = delete;
  OdbcHandle& operator=(const OdbcHandle&) = delete;
  ~OdbcHandle() { reset(); }

  // A new handle below the parent (SQL_NULL_HANDLE for an environment), in place of the old one. False when
  // there is none to be had; the parent then tells why.
  [[nodiscard]] bool allocate(SQLHANDLE parent) {
    reset();
    return SQL_SUCCEEDED(SQLAllocHandle(kType, parent, &handle_));
  }
  void reset() {
    if (handle_ != SQL_NULL_HANDLE) SQLFreeHandle(kType, handle_);
    handle_ = SQL_NULL_HANDLE;
  }
  // Forgets a handle that went with its parent.
  void forget() { handle_ = SQL_NULL_HANDLE; }
  [[nodiscard]] SQLHANDLE get() const { return handle_; }

 private:
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

}  // namespace trelvin
