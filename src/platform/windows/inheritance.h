// What an object's list gets from the list of the one it lies in.
#pragma once

#include "platform/windows/list_builder.h"

namespace trelvin {

struct Heir {
  bool isContainer = false;
  // Whom the entries of a creator mean on this object; none leaves such an entry as it is.
  PSID owner = nullptr;
  PSID group = nullptr;
  // What the general rights are on this kind of object.
  GENERIC_MAPPING rights{};
};

// Adds the entries that an object inherits, in the order of the parent's list, as Windows itself hands them
// down: an entry that says something about the heir means its rights and its owner; where that differs from
// what the heir hands on, it gets two entries. An entry for one kind of heir is handed on and says nothing
// about files, folders and keys, which have no kinds.
void addInherited(ListBuilder& builder, PACL parent, const Heir& heir);

}  // namespace trelvin
