#include "platform/windows/security_entry.h"

#include <gtest/gtest.h>

namespace trelvin {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kEveryone{1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};

constexpr GUID kObject{0xbf967aba, 0x0de6, 0x11d0, {0xa2, 0x85, 0x00, 0xaa, 0x00, 0x30, 0x49, 0xe2}};
constexpr GUID kInheriting{0x12345678, 0x9abc, 0xdef0, {1, 2, 3, 4, 5, 6, 7, 8}};

// The bytes of an entry: type, flags, size, mask, which GUIDs are given, those GUIDs, the account.
Bytes objectEntry(std::uint8_t type, const GUID* object, const GUID* inheriting) {
  Bytes entry{type, CONTAINER_INHERIT_ACE, 0, 0, 0x19, 0, 2, 0x80};
  entry.push_back(
      static_cast<std::uint8_t>((object != nullptr ? 1U : 0U) | (inheriting != nullptr ? 2U : 0U)));
  entry.insert(entry.end(), 3, 0);
  for (const GUID* guid : {object, inheriting}) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(guid);
    if (guid != nullptr) entry.insert(entry.end(), bytes, bytes + sizeof(GUID));
  }
  entry.insert(entry.end(), kEveryone.begin(), kEveryone.end());
  entry[2] = static_cast<std::uint8_t>(entry.size());
  return entry;
}

Bytes copied(const Bytes& entry) {
  AccessRecord record;
  const PSID sid = readEntry(reinterpret_cast<const ACE_HEADER*>(entry.data()), record);
  EXPECT_TRUE(::EqualSid(sid, const_cast<std::uint8_t*>(kEveryone.data())));
  return entryOf(record, kEveryone);
}

TEST(SecurityEntry, AnEntryForOneKindOfObjectKeepsItsGuids) {
  for (const std::uint8_t type :
       {std::uint8_t{ACCESS_ALLOWED_OBJECT_ACE_TYPE}, std::uint8_t{ACCESS_DENIED_OBJECT_ACE_TYPE}}) {
    for (const Bytes& entry :
         {objectEntry(type, &kObject, &kInheriting), objectEntry(type, nullptr, &kInheriting),
          objectEntry(type, &kObject, nullptr), objectEntry(type, nullptr, nullptr)}) {
      EXPECT_EQ(copied(entry), entry);
    }
  }
}

TEST(SecurityEntry, APlainEntryHasItsMaskAndItsAccountAlone) {
  Bytes entry{ACCESS_DENIED_ACE_TYPE, 0, 20, 0, 0x19, 0, 2, 0x80};
  entry.insert(entry.end(), kEveryone.begin(), kEveryone.end());
  EXPECT_EQ(copied(entry), entry);
}

TEST(SecurityEntry, ACopyIsNoneThatWasInherited) {
  Bytes entry{ACCESS_ALLOWED_ACE_TYPE, INHERITED_ACE | OBJECT_INHERIT_ACE, 20, 0, 0x19, 0, 2, 0};
  entry.insert(entry.end(), kEveryone.begin(), kEveryone.end());
  Bytes expected = entry;
  expected[1] = OBJECT_INHERIT_ACE;
  EXPECT_EQ(copied(entry), expected);
}

TEST(SecurityEntry, AlarmsAndAuditsAreNoKnownTypes) {
  EXPECT_FALSE(isKnownEntryType(SYSTEM_AUDIT_ACE_TYPE));
  EXPECT_FALSE(isKnownEntryType(SYSTEM_ALARM_ACE_TYPE));
  EXPECT_TRUE(isKnownEntryType(ACCESS_ALLOWED_ACE_TYPE));
  EXPECT_TRUE(deniesAccess(ACCESS_DENIED_OBJECT_ACE_TYPE));
  EXPECT_FALSE(deniesAccess(ACCESS_ALLOWED_OBJECT_ACE_TYPE));
}

}  // namespace
}  // namespace trelvin
