#include "platform/windows/inheritance.h"

#include <cstring>

#include "platform/windows/security_entry.h"

namespace trelvin {

namespace {

constexpr std::uint8_t kHandedOn = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;

// The flags of the entry with which the heir hands on further; 0 when it doesn't.
std::uint8_t flagsHandedOn(const ACE_HEADER* entry, const Heir& heir) {
  const bool goesOn = heir.isContainer && (entry->AceFlags & NO_PROPAGATE_INHERIT_ACE) == 0;
  return goesOn ? entry->AceFlags & kHandedOn : 0;
}

bool concerns(const ACE_HEADER* entry, const Heir& heir) {
  if (isForOneKindOfHeir(entry)) return false;
  return (entry->AceFlags & (heir.isContainer ? CONTAINER_INHERIT_ACE : OBJECT_INHERIT_ACE)) != 0;
}

bool isWellKnown(PSID sid, WELL_KNOWN_SID_TYPE type) {
  return ::IsWellKnownSid(sid, type) != FALSE;
}

PSID accountOn(const Heir& heir, PSID sid) {
  if (heir.owner != nullptr && isWellKnown(sid, WinCreatorOwnerSid)) return heir.owner;
  if (heir.group != nullptr && isWellKnown(sid, WinCreatorGroupSid)) return heir.group;
  return sid;
}

// The entry as it reads on the heir itself.
std::vector<std::uint8_t> entryOn(const Heir& heir, const ACE_HEADER* entry) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(entry);
  if (!isKnownEntryType(entry->AceType)) return {bytes, bytes + entry->AceSize};
  AccessRecord record;
  PSID sid = accountOn(heir, readEntry(entry, record));
  GENERIC_MAPPING rights = heir.rights;
  DWORD mask = maskOf(record);
  ::MapGenericMask(&mask, &rights);
  setMask(record, mask);
  const auto* sidBytes = static_cast<const std::uint8_t*>(sid);
  return entryOf(record, {sidBytes, sidBytes + ::GetLengthSid(sid)});
}

// But for the flags.
bool isSame(const ACE_HEADER* one, const ACE_HEADER* other) {
  return one->AceSize == other->AceSize &&
         std::memcmp(one + 1, other + 1, one->AceSize - sizeof(ACE_HEADER)) == 0;
}

void addInherited(ListBuilder& builder, const ACE_HEADER* entry, const Heir& heir) {
  const std::uint8_t handedOn = flagsHandedOn(entry, heir);
  const std::uint8_t onlyHandedOn = handedOn | INHERIT_ONLY_ACE | INHERITED_ACE;
  if (!concerns(entry, heir)) {
    if (handedOn != 0) builder.add(entry, onlyHandedOn);
    return;
  }
  const std::vector<std::uint8_t> bytes = entryOn(heir, entry);
  const auto* own = reinterpret_cast<const ACE_HEADER*>(bytes.data());
  if (isSame(own, entry)) {
    builder.add(own, handedOn | INHERITED_ACE);
    return;
  }
  builder.add(own, INHERITED_ACE);
  if (handedOn != 0) builder.add(entry, onlyHandedOn);
}

}  // namespace

void addInherited(ListBuilder& builder, PACL parent, const Heir& heir) {
  forEachEntry(parent, [&](const ACE_HEADER* entry) { addInherited(builder, entry, heir); });
}

}  // namespace trelvin
