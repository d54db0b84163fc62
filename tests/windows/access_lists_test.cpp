// On registry keys: Wine keeps the lists of those exactly, those of files it does not.
#include "platform/windows/access_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/temp_folder.h"
#include "fakes/windows/directory_service.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"
#include "windows/security_text.h"

// It needs what windows.h brings.
#include <aclapi.h>

namespace trelvin {
namespace {

using test::descriptorOf;
using test::entriesOf;
using test::numberOfFailure;
using test::spelled;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kAbove = "Software\\Trelvin Lists";
constexpr const char* kSource = "Software\\Trelvin Lists\\Source";
constexpr const char* kTarget = "Software\\Trelvin Lists\\Target";
constexpr const char* kPart = "Software\\Trelvin Lists\\Target\\Part";
constexpr const char* kOtherPart = "Software\\Trelvin Lists\\Target\\Second part";
constexpr const char* kDeepPart = "Software\\Trelvin Lists\\Target\\Part\\Deep";
// The only key that lies in nothing that can be seen.
constexpr const char* kTop = "Trelvin Lists at the top";
constexpr const char* kForeign = "Trelvin Lists of the system";
constexpr std::int32_t kAllow = 0;
constexpr std::int32_t kDeny = 1;

// Asks the real ones, and notes which server was asked about what. Names that are given here are only what an
// account is called, as with one that was renamed.
class RecordedAccounts final : public Accounts {
 public:
  DWORD findName(const std::string& server, PSID sid, std::string& name) override {
    const DWORD result = accounts_->findName("", sid, name);
    asked.push_back("name of " + name + " at " + server);
    name = before + name;
    return result;
  }
  DWORD findSid(const std::string& server, const std::string& name, Sid& sid) override {
    asked.push_back("identifier of " + name + " at " + server);
    return accounts_->findSid("", name, sid);
  }

  std::vector<std::string> asked;
  std::string before;

 private:
  std::unique_ptr<Accounts> accounts_ = makeAccounts();
};

// Notes what is opened.
class RecordedTree final : public ObjectTree {
 public:
  DWORD open(const std::string& path, OpenObject& object) const override {
    opened.push_back(path);
    return tree_->open(path, object);
  }
  [[nodiscard]] std::string parentOf(const std::string& path) const override { return tree_->parentOf(path); }
  [[nodiscard]] std::vector<std::string> heirsOf(const std::string& path) const override {
    return tree_->heirsOf(path);
  }
  [[nodiscard]] GENERIC_MAPPING rights() const override { return tree_->rights(); }

  mutable std::vector<std::string> opened;

 private:
  std::unique_ptr<ObjectTree> tree_ = makeKeyTree();
};

// A key that whoever runs the tests has no rights on but those of its list.
class KeyOfSystem {
 public:
  KeyOfSystem(std::string path, const char* sddl) : path_(std::move(path)) {
    ::RegCreateKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                      nullptr, &key_, nullptr);
    EXPECT_EQ(::RegSetKeySecurity(key_, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                  descriptorOf(sddl).get()),
              ERROR_SUCCESS);
  }
  KeyOfSystem(const KeyOfSystem&) = delete;
  KeyOfSystem& operator=(const KeyOfSystem&) = delete;
  ~KeyOfSystem() {
    ::RegSetKeySecurity(key_, DACL_SECURITY_INFORMATION, descriptorOf("D:(A;;KA;;;WD)").get());
    ::RegCloseKey(key_);
    EXPECT_EQ(::RegDeleteKeyA(HKEY_CURRENT_USER, path_.c_str()), ERROR_SUCCESS);
  }

 private:
  std::string path_;
  HKEY key_ = nullptr;
};

class AccessListsTest : public testing::Test {
 protected:
  AccessListsTest() {
    removeKeys();
    for (const char* path : {kSource, kDeepPart, kOtherPart, kTop}) {
      HKEY key = nullptr;
      ::RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
      ::RegCloseKey(key);
    }
    set(kAbove, "D:(A;;KA;;;WD)");
  }
  ~AccessListsTest() override { removeKeys(); }

  static void removeKeys() {
    for (const char* path : {kAbove, kTop}) ::RegDeleteTreeA(HKEY_CURRENT_USER, path);
  }

  // Sets a list in Windows' own text form.
  static void set(const char* path, const char* sddl) {
    HKEY key = nullptr;
    ASSERT_EQ(::RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, WRITE_DAC, &key), ERROR_SUCCESS);
    EXPECT_EQ(::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptorOf(sddl).get()), ERROR_SUCCESS);
    ::RegCloseKey(key);
  }

  static test::LocalDescriptor descriptorAt(const char* path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const std::string name = "CURRENT_USER\\" + std::string(path);
    EXPECT_EQ(::GetNamedSecurityInfoA(name.c_str(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                                      nullptr, nullptr, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    return test::LocalDescriptor(descriptor);
  }
  // The list in that form, with its entries alone.
  static std::string textOf(const char* path) { return entriesOf(descriptorAt(path).get()); }

  static std::string textOfFile(const std::filesystem::path& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                      nullptr, nullptr, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    return entriesOf(test::LocalDescriptor(descriptor).get());
  }

  std::unique_ptr<AccessList> take(std::string_view path) {
    control_->setFileOrDirectory(path);
    return control_->getAccounts();
  }

  static std::vector<std::string> accountsOf(const AccessList& list) {
    std::vector<std::string> names;
    list.forEachAccount([&](const AccessEntry& entry) { names.push_back(entry.accountName()); });
    return names;
  }

  // What the program does for each path: the target's entries go, the source's come.
  void copyList(bool secondFlag = false, const char* sourcePath = kSource, const char* targetPath = kTarget) {
    const std::unique_ptr<AccessList> source = take(sourcePath);
    const std::unique_ptr<AccessList> target = take(targetPath);
    target->setFirstApplyFlag(false);
    target->setSecondApplyFlag(secondFlag);
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

  std::shared_ptr<RecordedTree> tree_ = std::make_shared<RecordedTree>();
  std::shared_ptr<RecordedAccounts> accounts_ = std::make_shared<RecordedAccounts>();
  std::unique_ptr<NtfsControl> control_ = makeAccessLists(makeSecurity(tree_, accounts_));
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

TEST_F(AccessListsTest, InheritedEntriesAreNoneOfTheListsOwn) {
  set(kTarget, "D:AI(A;;KR;;;BA)(A;ID;KA;;;SY)");
  EXPECT_THAT(accountsOf(*take(kTarget)), ElementsAre(HasSubstr("Administrators")));
}

TEST_F(AccessListsTest, WhatThePathInheritsComesFromAboveAsItIsWhenItIsWritten) {
  set(kTarget, "D:AI(A;;KR;;;BA)(A;CIID;KA;;;SY)");
  set(kAbove, "D:(A;;KA;;;WD)(A;CI;KR;;;AU)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  list->writeAccounts();
  EXPECT_EQ(textOf(kTarget), spelled("(A;;KR;;;BA)(A;CIID;KR;;;AU)"));
  set(kAbove, "D:(A;;KA;;;WD)(D;CI;KW;;;BU)");
  list->writeAccounts();
  EXPECT_EQ(textOf(kTarget), spelled("(A;;KR;;;BA)(D;CIID;KW;;;BU)"));
}

TEST_F(AccessListsTest, AnEmptiedListHoldsWhatIsInherited) {
  set(kTarget, "D:(A;;KR;;;BA)");
  set(kAbove, "D:(A;CI;KA;;;WD)");
  set(kSource, "D:");
  copyList();
  EXPECT_EQ(textOf(kTarget), spelled("(A;CIID;KA;;;WD)"));
}

TEST_F(AccessListsTest, APathThatWasProtectedInheritsFromNowOn) {
  set(kTarget, "D:PAI(A;;KA;;;BA)");
  set(kAbove, "D:(A;CI;KA;;;WD)");
  take(kTarget)->writeAccounts();
  EXPECT_EQ(textOf(kTarget), spelled("(A;;KA;;;BA)(A;CIID;KA;;;WD)"));
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  EXPECT_TRUE(::GetSecurityDescriptorControl(descriptorAt(kTarget).get(), &control, &revision));
  EXPECT_EQ(control & SE_DACL_PROTECTED, 0);
}

TEST_F(AccessListsTest, AtTheTopOfATreeWhatIsInheritedStays) {
  set(kTop, "D:AI(A;;KA;;;WD)(A;;KR;;;BA)(A;CIID;KA;;;SY)");
  const std::unique_ptr<AccessList> list = take(kTop);
  list->removeAccount(2);
  list->writeAccounts();
  EXPECT_EQ(textOf(kTop), spelled("(A;;KA;;;WD)(A;CIID;KA;;;SY)"));
}

TEST_F(AccessListsTest, InTheMainPassNothingInThePathChanges) {
  set(kSource, "D:(A;CI;KA;;;WD)");
  set(kPart, "D:(A;;KA;;;BA)(A;ID;KR;;;AU)");
  copyList();
  EXPECT_EQ(textOf(kPart), spelled("(A;;KA;;;BA)(A;ID;KR;;;AU)"));
}

TEST_F(AccessListsTest, InTheSecondPassWhatLiesInThePathInheritsAnew) {
  set(kSource, "D:(A;CI;KA;;;WD)(A;;KR;;;BU)");
  set(kPart, "D:(A;;KA;;;BA)(A;ID;KR;;;AU)");
  set(kOtherPart, "D:");
  set(kDeepPart, "D:(A;ID;KR;;;AU)");
  copyList(true);
  EXPECT_EQ(textOf(kPart), spelled("(A;;KA;;;BA)(A;CIID;KA;;;WD)"));
  EXPECT_EQ(textOf(kOtherPart), spelled("(A;CIID;KA;;;WD)"));
  EXPECT_EQ(textOf(kDeepPart), spelled("(A;ID;KR;;;AU)")) << "it waits for its own turn";
}

TEST_F(AccessListsTest, WhatThePathInheritsItselfIsHandedOnInTheSecondPass) {
  set(kAbove, "D:(A;CI;KA;;;WD)");
  set(kSource, "D:");
  set(kPart, "D:");
  copyList(true);
  EXPECT_EQ(textOf(kPart), spelled("(A;CIID;KA;;;WD)"));
}

TEST_F(AccessListsTest, WhatIsProtectedInheritsNothingInTheSecondPass) {
  set(kSource, "D:(A;CI;KA;;;WD)");
  set(kPart, "D:PAI(A;;KA;;;BA)");
  copyList(true);
  EXPECT_EQ(textOf(kPart), spelled("(A;;KA;;;BA)"));
}

TEST_F(AccessListsTest, WhatCannotInheritFailsWithItsNameAndThePathKeepsItsNewList) {
  const std::string closed = std::string(kTarget) + "\\Closed";
  const KeyOfSystem key(closed, "O:SYD:(A;;KR;;;WD)");
  set(kSource, "D:(A;CI;KA;;;WD)");
  EXPECT_EQ(numberOfFailure([&] { copyList(true); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), HasSubstr(closed));
  EXPECT_EQ(textOf(kTarget), spelled("(A;CI;KA;;;WD)"));
}

TEST_F(AccessListsTest, WhatIsGoneMeanwhileInheritsNothing) {
  set(kTarget, "D:(A;;KA;;;WD)(A;CI;KR;;;BA)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  list->setSecondApplyFlag(true);
  list->removeAccount(1);
  list->writeAccounts();
  ASSERT_EQ(::RegDeleteTreeA(HKEY_CURRENT_USER, kPart), ERROR_SUCCESS);
  list->writeAccounts();
  EXPECT_THAT(textOf(kOtherPart), HasSubstr(spelled("(A;CIID;KR;;;BA)")));
}

TEST_F(AccessListsTest, TheStepsOfAnEmptyingHandNothingDown) {
  set(kTarget, "D:(A;;KA;;;WD)(A;;KA;;;BA)(A;;KA;;;SY)");
  copyList(true);
  EXPECT_EQ(std::ranges::count(tree_->opened, kPart), 1);
}

TEST_F(AccessListsTest, AListThatFoldersInItShouldInheritIsRefused) {
  set(kTarget, "D:(A;;KA;;;WD)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  list->setFirstApplyFlag(true);
  list->removeAccount(1);
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), AllOf(HasSubstr(kTarget), HasSubstr("subfolders")));
  EXPECT_EQ(textOf(kTarget), spelled("(A;;KA;;;WD)"));
}

// Else an account that isn't the owner would lock itself out with the last of the entries.
TEST_F(AccessListsTest, APathIsOpenedOnceForAllThatIsWritten) {
  set(kTarget, "D:(A;;KA;;;WD)(A;;KA;;;BA)(A;;KA;;;SY)");
  const std::unique_ptr<AccessList> list = take(kTarget);
  for (int i = 0; i < 3; ++i) {
    list->removeAccount(1);
    list->writeAccounts();
  }
  EXPECT_THAT(tree_->opened, ElementsAre(kTarget, kAbove));
}

TEST_F(AccessListsTest, WhoIsNotTheOwnerMayWriteAListToItsEnd) {
  for (const bool secondFlag : {false, true}) {
    const KeyOfSystem key(kForeign, "O:SYD:(A;;KA;;;WD)");
    set(kSource, "D:(A;;KR;;;WD)");
    copyList(secondFlag, kSource, kForeign);
    EXPECT_EQ(textOf(kForeign), spelled("(A;;KR;;;WD)"));
  }
}

TEST_F(AccessListsTest, AListThatMayOnlyBeReadIsReadAndNotWritten) {
  const KeyOfSystem key(kForeign, "O:SYD:(A;;KR;;;WD)");
  const std::unique_ptr<AccessList> list = take(kForeign);
  EXPECT_THAT(accountsOf(*list), ElementsAre(HasSubstr("Everyone")));
  list->removeAccount(1);
  EXPECT_EQ(numberOfFailure([&] { list->writeAccounts(); }), error_number::kControlException);
  EXPECT_THAT(control_->lastError(), HasSubstr(kForeign));
  EXPECT_EQ(textOf(kForeign), spelled("(A;;KR;;;WD)"));
}

TEST_F(AccessListsTest, TheEntriesThatAPathHasAreNotLookedUpByName) {
  set(kTarget, "D:(A;;KA;;;BA)(A;;KA;;;SY)(A;;KR;;;WD)");
  accounts_->before = "once called ";
  const std::unique_ptr<AccessList> list = take(kTarget);
  accounts_->asked.clear();
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_EQ(textOf(kTarget), spelled("(A;;KA;;;SY)(A;;KR;;;WD)"));
  EXPECT_THAT(accounts_->asked, IsEmpty());
}

TEST_F(AccessListsTest, AnEntryWithAnotherNameIsThatAccounts) {
  set(kTarget, "D:");
  const std::unique_ptr<AccessList> list = take(kTarget);
  AccessEntry& entry = list->addAccount();
  entry.setAccessValue(3, KEY_READ);
  for (const auto& [account, written] :
       {std::pair("Everyone", "(A;;KR;;;WD)"), std::pair("BUILTIN\\Administrators", "(A;;KR;;;BA)")}) {
    entry.setAccountName(account);
    list->writeAccounts();
    EXPECT_EQ(textOf(kTarget), spelled(written));
  }
}

TEST_F(AccessListsTest, AnAccountIsLookedUpOnceForAList) {
  set(kSource, "D:(A;;KA;;;WD)(A;CIIO;KR;;;WD)(A;;KR;;;BA)");
  set(kTarget, "D:");
  copyList();
  EXPECT_THAT(accounts_->asked,
              ElementsAre("name of Everyone at ", "name of Everyone at ", HasSubstr("name of BUILTIN"),
                          "identifier of Everyone at ", HasSubstr("identifier of BUILTIN")));
}

TEST_F(AccessListsTest, AccountsAreLookedUpOnTheServerOfTheirPath) {
  const test::TempFolder network;
  network.write("WEB1/D$/shop/index.htm", "welcome");
  network.write("WEB2/D$/shop/index.htm", "welcome");
  const auto shares = test::makeDirectoryService(network.path());
  control_ = makeAccessLists(makeSecurity(makeFileTree(), accounts_));
  const auto source = take("\\\\WEB1\\D$\\shop\\index.htm");
  EXPECT_THAT(accounts_->asked, Each(EndsWith(" at WEB1")));
  EXPECT_THAT(accounts_->asked, Not(IsEmpty()));
  const auto target = take("\\\\WEB2\\D$\\shop\\index.htm");
  accounts_->asked.clear();
  AccessEntry& entry = target->addAccount();
  entry.setAccountName("Everyone");
  entry.setAccessValue(3, FILE_GENERIC_READ);
  target->writeAccounts();
  EXPECT_THAT(accounts_->asked, ElementsAre("identifier of Everyone at WEB2"));
}

// Wine keeps as much of a file's list as mode bits can tell, and that is what everyone may do.
TEST_F(AccessListsTest, InTheSecondPassTheFilesRightInAFolderInheritAnew) {
  const test::TempFolder folder;
  const auto file = folder.write("index.htm", "welcome");
  const auto deepFile = folder.write("images/logo.gif", "picture");
  for (const auto& path : {file, deepFile}) {
    const auto closed = descriptorOf("D:(A;;FA;;;BA)");
    ASSERT_TRUE(::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, closed.get()));
    ASSERT_THAT(textOfFile(path), Not(HasSubstr(";;;WD)")));
  }
  control_ = makeAccessLists(makeFileSecurity());
  const auto list = take(utf8Text(folder.path().wstring()));
  list->setSecondApplyFlag(true);
  AccessEntry& entry = list->addAccount();
  entry.setAccountName("Everyone");
  entry.setAccessValue(2, OBJECT_INHERIT_ACE);
  entry.setAccessValue(3, FILE_GENERIC_READ);
  list->writeAccounts();
  EXPECT_THAT(textOfFile(file), HasSubstr(";;;WD)"));
  EXPECT_THAT(textOfFile(deepFile), Not(HasSubstr(";;;WD)")));
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
