// Access lists as Windows keeps them, of one kind of object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/shared/record_list.h"

namespace trelvin {

// The values of an entry carry the fields of Windows' own:
//
//    1        type: 0 allow, 1 deny, 5 and 6 the same for one kind of object
//    2        flags: 1 files inherit, 2 folders inherit, 4 no further, 8 not the folder itself
//    3        mask of the rights
//    4        for types 5 and 6: 1 when an object's GUID is given, 2 when an inheriting object's is
//    5 to 8   GUID of the object: its 16 bytes, four to a value, the lowest first
//    9 to 12  GUID of the object that inherits, likewise
//   13 to 15  nothing

// Reads and writes the lists of one kind of object. Every failure is 0x80020009 with the cause.
class SecurityStore {
 public:
  SecurityStore() = default;
  SecurityStore(const SecurityStore&) = delete;
  SecurityStore& operator=(const SecurityStore&) = delete;
  virtual ~SecurityStore() = default;

  // The entries that the object holds itself, without those that it inherits.
  [[nodiscard]] virtual std::vector<AccessRecord> read(const std::string& path) = 0;
  // Denying entries go before allowing ones, otherwise the order stays; what the object inherits stays behind
  // them. `handDown` has all that lies in the object inherit anew.
  virtual void write(const std::string& path, const std::vector<AccessRecord>& records, bool handDown) = 0;
};

// Of files and folders, also of another server's: an account is looked up on the server that the path names.
std::unique_ptr<SecurityStore> makeFileSecurity();

// Of keys below HKEY_CURRENT_USER, named by their path there. It serves where files keep no lists.
std::unique_ptr<SecurityStore> makeKeySecurity();

}  // namespace trelvin
