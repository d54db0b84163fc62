// One entry of an access list, as Windows lays it out and as the program carries it.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/shared/record_list.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

// Those that allow or deny, either anything or one kind of object.
bool isKnownEntryType(std::int32_t type);
bool deniesAccess(std::int32_t type);
std::int32_t entryTypeOf(const AccessRecord& record);
// Whether only objects of one kind inherit the entry.
bool isForOneKindOfHeir(const ACE_HEADER* entry);

DWORD maskOf(const AccessRecord& record);
void setMask(AccessRecord& record, DWORD mask);

// Fills the values of the record (see security.h) from an entry of a known type; returns the identifier of
// its account, which lies within the entry.
PSID readEntry(const ACE_HEADER* entry, AccessRecord& record);

// The entry of a record, of a known type, for the account with that identifier. It is none that was
// inherited.
std::vector<std::uint8_t> entryOf(const AccessRecord& record, const std::vector<std::uint8_t>& sid);

}  // namespace trelvin
