#include "platform/windows/security_entry.h"

#include <cstddef>
#include <cstring>

namespace trelvin {

namespace {

constexpr std::size_t kTypeValue = 0;
constexpr std::size_t kFlagsValue = 1;
constexpr std::size_t kMaskValue = 2;
constexpr std::size_t kObjectFlagsValue = 3;
constexpr std::size_t kObjectGuidValue = 4;
constexpr std::size_t kInheritedGuidValue = 8;

bool isObjectType(int type) {
  return type == ACCESS_ALLOWED_OBJECT_ACE_TYPE || type == ACCESS_DENIED_OBJECT_ACE_TYPE;
}

bool isPlainType(int type) {
  return type == ACCESS_ALLOWED_ACE_TYPE || type == ACCESS_DENIED_ACE_TYPE;
}

void keepGuid(AccessRecord& record, std::size_t first, const std::uint8_t* bytes) {
  std::memcpy(&record.values[first], bytes, sizeof(GUID));
}

template <typename Field>
void append(std::vector<std::uint8_t>& bytes, const Field& field, std::size_t size = sizeof(Field)) {
  const auto* from = reinterpret_cast<const std::uint8_t*>(&field);
  bytes.insert(bytes.end(), from, from + size);
}

}  // namespace

bool isKnownEntryType(std::int32_t type) {
  return isPlainType(type) || isObjectType(type);
}

bool deniesAccess(std::int32_t type) {
  return type == ACCESS_DENIED_ACE_TYPE || type == ACCESS_DENIED_OBJECT_ACE_TYPE;
}

std::int32_t entryTypeOf(const AccessRecord& record) {
  return record.values[kTypeValue];
}

bool isForOneKindOfHeir(const ACE_HEADER* entry) {
  if (!isObjectType(entry->AceType)) return false;
  AccessRecord record;
  readEntry(entry, record);
  return (record.values[kObjectFlagsValue] & ACE_INHERITED_OBJECT_TYPE_PRESENT) != 0;
}

DWORD maskOf(const AccessRecord& record) {
  return static_cast<DWORD>(record.values[kMaskValue]);
}

void setMask(AccessRecord& record, DWORD mask) {
  record.values[kMaskValue] = static_cast<std::int32_t>(mask);
}

PSID readEntry(const ACE_HEADER* header, AccessRecord& record) {
  record.values[kTypeValue] = header->AceType;
  record.values[kFlagsValue] = header->AceFlags;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(header) + sizeof(ACE_HEADER);
  std::memcpy(&record.values[kMaskValue], bytes, sizeof(DWORD));
  bytes += sizeof(DWORD);
  if (isObjectType(header->AceType)) {
    DWORD given = 0;
    std::memcpy(&given, bytes, sizeof given);
    bytes += sizeof given;
    record.values[kObjectFlagsValue] = static_cast<std::int32_t>(given);
    if ((given & ACE_OBJECT_TYPE_PRESENT) != 0) {
      keepGuid(record, kObjectGuidValue, bytes);
      bytes += sizeof(GUID);
    }
    if ((given & ACE_INHERITED_OBJECT_TYPE_PRESENT) != 0) {
      keepGuid(record, kInheritedGuidValue, bytes);
      bytes += sizeof(GUID);
    }
  }
  return const_cast<std::uint8_t*>(bytes);
}

std::vector<std::uint8_t> entryOf(const AccessRecord& record, const std::vector<std::uint8_t>& sid) {
  std::vector<std::uint8_t> entry(sizeof(ACE_HEADER));
  append(entry, record.values[kMaskValue]);
  const std::int32_t type = record.values[kTypeValue];
  if (isObjectType(type)) {
    const auto given = static_cast<DWORD>(record.values[kObjectFlagsValue]);
    append(entry, given);
    if ((given & ACE_OBJECT_TYPE_PRESENT) != 0) append(entry, record.values[kObjectGuidValue], sizeof(GUID));
    if ((given & ACE_INHERITED_OBJECT_TYPE_PRESENT) != 0) {
      append(entry, record.values[kInheritedGuidValue], sizeof(GUID));
    }
  }
  entry.insert(entry.end(), sid.begin(), sid.end());
  ACE_HEADER header{};
  header.AceType = static_cast<BYTE>(type);
  header.AceFlags = static_cast<BYTE>(record.values[kFlagsValue] & ~std::int32_t{INHERITED_ACE});
  header.AceSize = static_cast<WORD>(entry.size());
  std::memcpy(entry.data(), &header, sizeof header);
  return entry;
}

}  // namespace trelvin
