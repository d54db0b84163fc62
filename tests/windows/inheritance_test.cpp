#include "platform/windows/inheritance.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/windows/security_entry.h"
#include "windows/security_text.h"

namespace trelvin {
namespace {

using test::descriptorOf;
using test::entriesOf;
using test::listIn;
using test::spelled;

constexpr GENERIC_MAPPING kFileRights{FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                                      FILE_ALL_ACCESS};

class Inheritance : public testing::Test {
 protected:
  // The administrators own what inherits, and their group is that of the users.
  std::string inherited(bool isContainer, PACL parent) {
    const test::LocalDescriptor owners = descriptorOf("O:BAG:BUD:");
    Heir heir{isContainer, nullptr, nullptr, kFileRights};
    BOOL isDefaulted = FALSE;
    ::GetSecurityDescriptorOwner(owners.get(), &heir.owner, &isDefaulted);
    ::GetSecurityDescriptorGroup(owners.get(), &heir.group, &isDefaulted);
    ListBuilder builder;
    addInherited(builder, parent, heir);
    return entriesOf(builder.list());
  }
  std::string byFile(const std::string& entries) {
    return inherited(false, listIn(descriptors_.emplace_back(descriptorOf("D:" + entries))));
  }
  std::string byFolder(const std::string& entries) {
    return inherited(true, listIn(descriptors_.emplace_back(descriptorOf("D:" + entries))));
  }

 private:
  std::vector<test::LocalDescriptor> descriptors_;
};

TEST_F(Inheritance, AFileGetsWhatFilesInheritAndHandsNothingOn) {
  EXPECT_EQ(byFile("(A;OI;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFile("(A;OICI;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFile("(A;OINP;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFile("(A;OIIO;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFile("(A;;FA;;;SY)(A;CI;FA;;;SY)(A;CIIO;FA;;;SY)"), "");
}

TEST_F(Inheritance, AFolderGetsWhatFoldersInheritAndHandsItOn) {
  EXPECT_EQ(byFolder("(A;CI;FA;;;SY)"), spelled("(A;CIID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;OICI;FA;;;SY)"), spelled("(A;OICIID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;CIIO;FA;;;SY)"), spelled("(A;CIID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;;FA;;;SY)"), "");
}

TEST_F(Inheritance, AFolderHandsOnWhatOnlyFilesInherit) {
  EXPECT_EQ(byFolder("(A;OI;FA;;;SY)"), spelled("(A;OIIOID;FA;;;SY)"));
}

TEST_F(Inheritance, WhatGoesNoFurtherEndsInTheFolder) {
  EXPECT_EQ(byFolder("(A;OICINP;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;OINP;FA;;;SY)"), "");
}

TEST_F(Inheritance, WhatWasInheritedIsInheritedFurther) {
  EXPECT_EQ(byFile("(A;OICIID;FA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;OICIID;FA;;;SY)"), spelled("(A;OICIID;FA;;;SY)"));
}

TEST_F(Inheritance, TheOrderStays) {
  EXPECT_EQ(byFile("(D;OI;FW;;;WD)(A;OI;FR;;;WD)(A;;FA;;;SY)(A;OI;FA;;;BA)"),
            spelled("(D;ID;FW;;;WD)(A;ID;FR;;;WD)(A;ID;FA;;;BA)"));
}

TEST_F(Inheritance, TheCreatorsEntriesAreTheOwnersAndStayTheCreatorsForWhatLiesBelow) {
  EXPECT_EQ(byFile("(A;OICIIO;FA;;;CO)(A;OICIIO;FR;;;CG)"), spelled("(A;ID;FA;;;BA)(A;ID;FR;;;BU)"));
  EXPECT_EQ(byFolder("(A;OICIIO;FA;;;CO)"), spelled("(A;ID;FA;;;BA)(A;OICIIOID;FA;;;CO)"));
  EXPECT_EQ(byFolder("(A;OIIO;FA;;;CO)"), spelled("(A;OIIOID;FA;;;CO)"));
}

TEST_F(Inheritance, GeneralRightsBecomeThoseOfTheKindAndStayGeneralForWhatLiesBelow) {
  EXPECT_EQ(byFile("(A;OICIIO;GA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
  EXPECT_EQ(byFolder("(A;OICIIO;GR;;;SY)"), spelled("(A;ID;FR;;;SY)(A;OICIIOID;GR;;;SY)"));
  EXPECT_EQ(byFolder("(A;CINP;GA;;;SY)"), spelled("(A;ID;FA;;;SY)"));
}

TEST_F(Inheritance, AnEntryForOneKindOfHeirIsOnlyHandedOn) {
  AccessRecord record;
  record.values[0] = ACCESS_ALLOWED_OBJECT_ACE_TYPE;
  record.values[1] = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;
  record.values[2] = FILE_GENERIC_READ;
  record.values[3] = ACE_INHERITED_OBJECT_TYPE_PRESENT;
  const std::vector<std::uint8_t> entry = entryOf(record, {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0});
  ListBuilder parent;
  parent.add(reinterpret_cast<const ACE_HEADER*>(entry.data()));
  for (const bool isContainer : {false, true}) {
    ListBuilder list;
    addInherited(list, parent.list(), {isContainer, nullptr, nullptr, kFileRights});
    std::vector<int> flags;
    forEachEntry(list.list(), [&](const ACE_HEADER* inherited) { flags.push_back(inherited->AceFlags); });
    constexpr int kOnlyHandedOn =
        OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE | INHERIT_ONLY_ACE | INHERITED_ACE;
    EXPECT_EQ(flags, isContainer ? std::vector{kOnlyHandedOn} : std::vector<int>{});
  }
}

TEST_F(Inheritance, AnEntryOfAnotherTypeIsInheritedAsItIs) {
  constexpr std::uint8_t kWithCondition = 9;
  std::array<std::uint8_t, 8> entry{kWithCondition, OBJECT_INHERIT_ACE, 8, 0, 1, 2, 3, 4};
  ListBuilder parent;
  parent.add(reinterpret_cast<const ACE_HEADER*>(entry.data()));
  ListBuilder list;
  addInherited(list, parent.list(), {false, nullptr, nullptr, kFileRights});
  std::vector<std::uint8_t> bytes;
  forEachEntry(list.list(), [&](const ACE_HEADER* inherited) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(inherited);
    bytes.assign(first, first + inherited->AceSize);
  });
  EXPECT_EQ(bytes, (std::vector<std::uint8_t>{kWithCondition, INHERITED_ACE, 8, 0, 1, 2, 3, 4}));
}

TEST_F(Inheritance, NoListHandsDownNothing) {
  EXPECT_EQ(inherited(false, nullptr), "");
}

}  // namespace
}  // namespace trelvin
