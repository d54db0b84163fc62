// Access lists as Windows keeps them, of one kind of object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/shared/record_list.h"
#include "platform/windows/accounts.h"
#include "platform/windows/object_tree.h"

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

// The list of one object, which stays open: what its list says meanwhile keeps nobody from writing the next
// one. Every failure is 0x80020009 with the cause.
class SecuredObject {
 public:
  SecuredObject() = default;
  SecuredObject(const SecuredObject&) = delete;
  SecuredObject& operator=(const SecuredObject&) = delete;
  virtual ~SecuredObject() = default;

  // The entries that the object holds itself, without those that it inherits.
  [[nodiscard]] virtual std::vector<AccessRecord> read() = 0;
  // Denying entries go before allowing ones, otherwise the order stays. Behind them comes what the object
  // inherits from the one it lies in, as that is now; an object that inherited nothing so far does from now
  // on. An object that lies in nothing that can be seen (see ObjectTree) keeps what it inherits. Nothing that
  // lies in the object changes. An account is looked up by its name, but for a record with a key.
  virtual void write(const std::vector<AccessRecord>& records) = 0;
  // Notes who is to inherit from the object, as long as its list still lets them be seen. Once is enough.
  virtual void findHeirs() = 0;
  // Has the heirs inherit anew; those that are gone, or that are protected from inheriting, are passed over.
  // The first one that can't be written ends it: those before have inherited, those behind not.
  virtual void handDown() = 0;
};

class SecurityStore {
 public:
  SecurityStore() = default;
  SecurityStore(const SecurityStore&) = delete;
  SecurityStore& operator=(const SecurityStore&) = delete;
  virtual ~SecurityStore() = default;

  // Fails with 0x80020009 for an object that isn't there or whose list can't be read.
  virtual std::unique_ptr<SecuredObject> open(const std::string& path) = 0;
};

// Of the objects of a tree. An account is looked up on the server that a network path names, once for each
// name while the object is open.
std::unique_ptr<SecurityStore> makeSecurity(std::shared_ptr<ObjectTree> tree,
                                            std::shared_ptr<Accounts> accounts);

// Of files and folders, also of another server's.
std::unique_ptr<SecurityStore> makeFileSecurity();
// Of keys below HKEY_CURRENT_USER. It serves where files keep no lists.
std::unique_ptr<SecurityStore> makeKeySecurity();

}  // namespace trelvin
