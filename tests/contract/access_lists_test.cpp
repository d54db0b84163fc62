#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"
#include "platform/ntfs.h"

namespace trelvin::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int32_t kDeny = 1;
constexpr std::int32_t kOnlyFoldersInheritIt = 0xA;
constexpr std::int32_t kReadRights = 0x20019;

struct Entry {
  std::string account;
  std::array<std::int32_t, AccessEntry::kValueCount> values{};
  bool operator==(const Entry&) const = default;
};

class AccessListsContract : public testing::Test {
 protected:
  void SetUp() override {
    if (path_.empty()) GTEST_SKIP() << "the file system of " << folder_.path() << " keeps no access lists";
    control_->setFileOrDirectory(path_);
  }

  static std::vector<Entry> entriesOf(const AccessList& list) {
    std::vector<Entry> entries;
    list.forEachAccount([&](const AccessEntry& entry) {
      Entry& read = entries.emplace_back(Entry{entry.accountName(), {}});
      for (std::size_t i = 0; i < read.values.size(); ++i) {
        read.values[i] = entry.accessValue(static_cast<int>(i) + 1);
      }
    });
    return entries;
  }
  std::vector<Entry> entriesNow() { return entriesOf(*control_->getAccounts()); }

  static void add(AccessList& list, const std::string& account, std::int32_t type = 0) {
    AccessEntry& entry = list.addAccount();
    entry.setAccountName(account);
    entry.setAccessValue(1, type);
    entry.setAccessValue(3, kReadRights);
  }
  // With the accounts "Everyone" and "SYSTEM", in this order.
  std::unique_ptr<AccessList> listOfTwo() {
    auto list = control_->getAccounts();
    while (!entriesOf(*list).empty()) list->removeAccount(1);
    add(*list, "Everyone");
    add(*list, "NT AUTHORITY\\SYSTEM");
    list->writeAccounts();
    return list;
  }
  static std::vector<std::string> accountsOf(const std::vector<Entry>& entries) {
    std::vector<std::string> accounts;
    for (const Entry& entry : entries) accounts.push_back(entry.account);
    return accounts;
  }

  TempFolder folder_;
  std::string path_ = pathWithAccessList(folder_, "one");
  std::unique_ptr<NtfsControl> control_ = systemAccessLists();
};

TEST_F(AccessListsContract, EntriesComeBackAsTheyWereWritten) {
  const auto list = control_->getAccounts();
  while (!entriesOf(*list).empty()) list->removeAccount(1);
  add(*list, "BUILTIN\\Administrators", kDeny);
  add(*list, "Everyone");
  AccessEntry& entry = list->addAccount();
  entry.setAccountName("NT AUTHORITY\\SYSTEM");
  entry.setAccessValue(2, kOnlyFoldersInheritIt);
  entry.setAccessValue(3, -0x10000000);
  list->writeAccounts();
  EXPECT_THAT(entriesNow(),
              ElementsAre(Entry{"BUILTIN\\Administrators", {kDeny, 0, kReadRights}},
                          Entry{"Everyone", {0, 0, kReadRights}},
                          Entry{"NT AUTHORITY\\SYSTEM", {0, kOnlyFoldersInheritIt, -0x10000000}}));
}

TEST_F(AccessListsContract, EntriesAreRemovedFromTheFirstOn) {
  const auto list = listOfTwo();
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_THAT(accountsOf(entriesNow()), ElementsAre("NT AUTHORITY\\SYSTEM"));
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_THAT(entriesNow(), IsEmpty());
}

TEST_F(AccessListsContract, WhatIsNotThereCannotBeRemoved) {
  const auto list = listOfTwo();
  for (const std::int32_t index : {-1, 0, 3}) {
    EXPECT_EQ(numberOfFailure([&] { list->removeAccount(index); }), error_number::kSubscriptOutOfRange)
        << index;
  }
  EXPECT_THAT(entriesOf(*list), SizeIs(2));
}

TEST_F(AccessListsContract, AnEntryHasFifteenValues) {
  const auto list = control_->getAccounts();
  AccessEntry& entry = list->addAccount();
  for (const int index : {-1, 0, 16}) {
    EXPECT_EQ(numberOfFailure([&] { return entry.accessValue(index); }), error_number::kSubscriptOutOfRange)
        << index;
    EXPECT_EQ(numberOfFailure([&] { entry.setAccessValue(index, 1); }), error_number::kSubscriptOutOfRange)
        << index;
  }
  for (const int index : {1, 15}) {
    entry.setAccessValue(index, -7);
    EXPECT_EQ(entry.accessValue(index), -7) << index;
  }
}

TEST_F(AccessListsContract, NothingReachesThePathUntilItIsWritten) {
  const auto list = listOfTwo();
  list->removeAccount(1);
  add(*list, "BUILTIN\\Administrators");
  EXPECT_THAT(accountsOf(entriesNow()), ElementsAre("Everyone", "NT AUTHORITY\\SYSTEM"));
}

TEST_F(AccessListsContract, AListTakenEarlierStaysThatOfItsPath) {
  const auto list = listOfTwo();
  control_->setFileOrDirectory(pathWithAccessList(folder_, "other"));
  const std::vector<Entry> others = entriesNow();
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_EQ(entriesNow(), others);
  control_->setFileOrDirectory(path_);
  EXPECT_THAT(accountsOf(entriesNow()), ElementsAre("NT AUTHORITY\\SYSTEM"));
}

TEST_F(AccessListsContract, AControlWithoutAPathHasNoList) {
  const auto control = systemAccessLists();
  EXPECT_EQ(control->lastError(), "");
  EXPECT_EQ(numberOfFailure([&] { control->getAccounts(); }), error_number::kControlException);
  EXPECT_NE(control->lastError(), "");
}

TEST_F(AccessListsContract, APathThatIsNotThereFailsWithItsName) {
  control_->setFileOrDirectory(path_ + " that is not there");
  EXPECT_EQ(numberOfFailure([&] { control_->getAccounts(); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), HasSubstr(path_ + " that is not there"));
  control_->setFileOrDirectory(path_);
  EXPECT_EQ(control_->lastError(), "");
}

TEST_F(AccessListsContract, AnEntryWithoutAnAccountFailsAndTheListStays) {
  const auto list = listOfTwo();
  list->addAccount();
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), error_number::kControlException);
  EXPECT_NE(control_->lastError(), "");
  EXPECT_THAT(accountsOf(entriesNow()), ElementsAre("Everyone", "NT AUTHORITY\\SYSTEM"));
}

TEST_F(AccessListsContract, NothingHasSubfoldersInherit) {
  const auto list = listOfTwo();
  list->setFirstApplyFlag(true);
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), error_number::kControlException);
  list->setFirstApplyFlag(false);
  list->setSecondApplyFlag(true);
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), 0);
}

}  // namespace
}  // namespace trelvin::test
