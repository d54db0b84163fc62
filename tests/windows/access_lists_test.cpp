// On registry keys: Wine keeps the lists of those exactly, those of files it does not.
#include "platform/windows/access_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/err.h"
#include "fakes/failures.h"
#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <aclapi.h>
#include <sddl.h>

namespace trelvin {
namespace {

using test::numberOfFailure;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kSource = "Software\\Trelvin Lists\\Source";
constexpr const char* kTarget = "Software\\Trelvin Lists\\Target";
constexpr std::int32_t kAllow = 0;
constexpr std::int32_t kDeny = 1;

class AccessListsTest : public testing::Test {
 protected:
  AccessListsTest() {
    ::RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Trelvin Lists");
    for (const char* path : {kSource, kTarget}) {
      HKEY key = nullptr;
      ::RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
      ::RegCloseKey(key);
    }
  }

  // Sets a list in Windows' own text form.
  static void set(const char* path, const char* sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(
        ::ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl, SDDL_REVISION_1, &descriptor, nullptr));
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, WRITE_DAC, &key), ERROR_SUCCESS);
    EXPECT_EQ(::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor), ERROR_SUCCESS);
    ::RegCloseKey(key);
    ::LocalFree(descriptor);
  }

  // The list in that form, with its entries alone.
  static std::string textOf(const char* path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const std::string name = "CURRENT_USER\\" + std::string(path);
    EXPECT_EQ(::GetNamedSecurityInfoA(name.c_str(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                                      nullptr, nullptr, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    char* text = nullptr;
    EXPECT_TRUE(::ConvertSecurityDescriptorToStringSecurityDescriptorA(
        descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    std::string entries = text;
    ::LocalFree(text);
    ::LocalFree(descriptor);
    const std::size_t first = entries.find('(');
    return first == std::string::npos ? std::string() : entries.substr(first);
  }

  std::unique_ptr<AccessList> take(const char* path) {
    control_->setFileOrDirectory(path);
    return control_->getAccounts();
  }

  static std::vector<std::string> accountsOf(const AccessList& list) {
    std::vector<std::string> names;
    list.forEachAccount([&](const AccessEntry& entry) { names.push_back(entry.accountName()); });
    return names;
  }

  // What the program does for each path: the target's entries go, the source's come.
  void copyList() {
    const std::unique_ptr<AccessList> source = take(kSource);
    const std::unique_ptr<AccessList> target = take(kTarget);
    const std::size_t count = accountsOf(*target).size();
    for (std::size_t i = 0; i < count; ++i) {
      target->removeAccount(1);
      target->writeAccounts();
    }
    source->forEachAccount([&](const AccessEntry& entry) {
      AccessEntry& copy = target->addAccount();
      copy.setAccountName(entry.accountName());
      for (int i = 1; i <= AccessEntry::kValueCount; ++i) copy.setAccessValue(i, entry.accessValue(i));
    });
    target->writeAccounts();
  }

  std::unique_ptr<NtfsControl> control_ = makeAccessLists(makeKeySecurity());
};

TEST_F(AccessListsTest, AnEntryHasItsAccountTypeFlagsAndMask) {
  set(kSource, "D:(D;;0x20019;;;WD)(A;CI;0xf003f;;;SY)");
  const std::unique_ptr<AccessList> list = take(kSource);
  EXPECT_THAT(accountsOf(*list), ElementsAre(HasSubstr("Everyone"), HasSubstr("SYSTEM")));
  std::vector<std::int32_t> values;
  list->forEachAccount([&](const AccessEntry& entry) {
    for (int i = 1; i <= 3; ++i) values.push_back(entry.accessValue(i));
  });
  EXPECT_THAT(values, ElementsAre(kDeny, 0, 0x20019, kAllow, CONTAINER_INHERIT_ACE, 0xf003f));
}

TEST_F(AccessListsTest, ACopiedListEqualsItsSource) {
  const char* list = "(D;;KR;;;WD)(A;CI;KA;;;SY)(A;OICIIO;KR;;;BA)(A;;KW;;;AU)";
  set(kSource, (std::string("D:") + list).c_str());
  set(kTarget, "D:(A;;KA;;;WD)(A;;KA;;;BA)");
  const std::string before = textOf(kSource);
  copyList();
  EXPECT_EQ(textOf(kTarget), before);
  EXPECT_EQ(textOf(kSource), before);
}

TEST_F(AccessListsTest, WhatDeniesComesBeforeWhatAllows) {
  const std::unique_ptr<AccessList> list = take(kTarget);
  const std::size_t count = accountsOf(*list).size();
  for (std::size_t i = 0; i < count; ++i) list->removeAccount(1);
  for (const std::int32_t type : {kAllow, kDeny}) {
    AccessEntry& entry = list->addAccount();
    entry.setAccountName("Everyone");
    entry.setAccessValue(1, type);
    entry.setAccessValue(3, KEY_READ);
  }
  list->writeAccounts();
  EXPECT_EQ(textOf(kTarget), "(D;;KR;;;WD)(A;;KR;;;WD)");
}

TEST_F(AccessListsTest, InheritedEntriesAreNoneOfTheListsOwnAndStay) {
  set(kTarget, "D:AI(A;;KR;;;BA)(A;ID;KA;;;SY)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  EXPECT_THAT(accountsOf(*list), ElementsAre(HasSubstr("Administrators")));
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_EQ(textOf(kTarget), "(A;ID;KA;;;SY)");
}

TEST_F(AccessListsTest, AnAccountThatIsNotKnownFailsAndTheListStays) {
  set(kTarget, "D:(A;;KR;;;BA)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  list->addAccount().setAccountName("NOWHERE\\nobody at all");
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), HasSubstr("nobody at all"));
  EXPECT_EQ(textOf(kTarget), "(A;;KR;;;BA)");
}

TEST_F(AccessListsTest, APathThatIsNotThereFailsWithItsName) {
  control_->setFileOrDirectory("Software\\Trelvin Lists\\No");
  EXPECT_EQ(numberOfFailure([&] { control_->getAccounts(); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), HasSubstr("Trelvin Lists\\No"));
  control_->setFileOrDirectory(kSource);
  EXPECT_EQ(control_->lastError(), "");
}

}  // namespace
}  // namespace trelvin
