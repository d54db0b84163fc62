#include "platform/linux/access_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::numberOfFailure;
using test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char* kAttribute = "user.trelvin.acl";
constexpr std::int32_t kObjectInherit = 1;
constexpr std::int32_t kInherited = 0x10;
constexpr std::int32_t kRead = 0x001200A9;
constexpr uid_t kNobody = 65534;

// Acts with few rights, also where the tests are run by an administrator.
class FewRights {
 public:
  FewRights() {
    if (user_ == 0) isChanged_ = ::seteuid(kNobody) == 0;
  }
  FewRights(const FewRights&) = delete;
  FewRights& operator=(const FewRights&) = delete;
  ~FewRights() {
    if (isChanged_ && ::seteuid(user_) != 0) std::abort();
  }

 private:
  uid_t user_ = ::geteuid();
  bool isChanged_ = false;
};

class AccessListsTest : public testing::Test {
 protected:
  void SetUp() override {
    const fs::path file = network_.write("WEB1/C$/site/default.htm", "page");
    if (::setxattr(file.c_str(), "user.trelvin.try", "x", 1, 0) != 0) {
      GTEST_SKIP() << "the file system of " << network_.path() << " keeps no extended attributes";
    }
    ::removexattr(file.c_str(), "user.trelvin.try");
  }

  [[nodiscard]] fs::path native(std::string_view relative) const {
    return network_ / ("WEB1/C$/" + std::string(relative));
  }
  std::unique_ptr<AccessList> take(std::string_view path) {
    control_->setFileOrDirectory(path);
    return control_->getAccounts();
  }
  static AccessEntry& add(AccessList& list, std::string_view account, std::int32_t mask = kRead,
                          std::int32_t flags = 0) {
    AccessEntry& entry = list.addAccount();
    entry.setAccountName(account);
    entry.setAccessValue(2, flags);
    entry.setAccessValue(3, mask);
    return entry;
  }
  // The accounts of a list taken anew.
  std::vector<std::string> accountsOf(std::string_view path) { return accountsOf(*take(path)); }
  static std::vector<std::string> accountsOf(const AccessList& list) {
    std::vector<std::string> names;
    list.forEachAccount([&](const AccessEntry& entry) { names.push_back(entry.accountName()); });
    return names;
  }

  void setAttribute(std::string_view relative, std::string_view text) const {
    ASSERT_EQ(::setxattr(native(relative).c_str(), kAttribute, text.data(), text.size(), 0), 0) << relative;
  }
  // None when the path has no such attribute.
  [[nodiscard]] std::optional<std::string> attribute(std::string_view relative) const {
    std::string text(70000, '\0');
    const ssize_t length = ::getxattr(native(relative).c_str(), kAttribute, text.data(), text.size());
    if (length < 0) {
      EXPECT_EQ(errno, ENODATA) << relative;
      return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
  }
  void setMode(std::string_view relative, mode_t mode) const {
    ASSERT_EQ(::chmod(native(relative).c_str(), mode), 0);
  }
  // Gives the longest list to a path that its file system takes. Returns the text.
  std::string fill(std::string_view relative) const {
    for (int count = 3000; count > 0; --count) {
      std::string text;
      for (int i = 0; i < count; ++i) text += "allow;;0x001200a9;;WEB1\\u\n";
      if (::setxattr(native(relative).c_str(), kAttribute, text.data(), text.size(), 0) == 0) return text;
    }
    ADD_FAILURE() << "no list fits";
    return {};
  }

  // The operation fails with 0x80020009; its description, which has to be what lastError says as well.
  template <typename Operation>
  std::string failureOf(Operation&& operation) {
    try {
      static_cast<void>(operation());
    } catch (const Failure& failure) {
      EXPECT_EQ(hexOf(failure.number()), "80020009") << failure.description();
      EXPECT_EQ(failure.description(), control_->lastError());
      return failure.description();
    }
    ADD_FAILURE() << "nothing failed";
    return {};
  }
  std::string failureOfTaking(std::string_view path) {
    return failureOf([&] { return take(path); });
  }
  std::string failureOfWriting(AccessList& list) {
    return failureOf([&] { return list.writeAccounts(), 0; });
  }

  static constexpr const char* kFile = R"(\\WEB1\C$\site\default.htm)";
  static constexpr const char* kFolder = R"(\\WEB1\C$\site)";

  TempFolder network_;
  int lookUps_ = 0;
  std::unique_ptr<NtfsControl> control_ =
      makeAccessLists([this, paths = Paths(network_.path().string())](auto path) {
        ++lookUps_;
        return paths.nativePath(path);
      });
};

// Lists

TEST_F(AccessListsTest, APathThatNeverHadAListHasAnEmptyOne) {
  EXPECT_THAT(accountsOf(kFile), IsEmpty());
  EXPECT_THAT(accountsOf(kFolder), IsEmpty());
}

TEST_F(AccessListsTest, AWrittenListComesBackInItsOrder) {
  const auto list = take(kFile);
  add(*list, R"(WEB1\editors)");
  add(*list, "Everyone");
  add(*list, R"(NT AUTHORITY\NETWORK SERVICE)");
  list->writeAccounts();
  EXPECT_THAT(accountsOf(kFile),
              ElementsAre(R"(WEB1\editors)", "Everyone", R"(NT AUTHORITY\NETWORK SERVICE)"));
}

TEST_F(AccessListsTest, AFolderHasAListOfItsOwn) {
  const auto list = take(kFolder);
  add(*list, R"(BUILTIN\Administrators)");
  list->writeAccounts();
  EXPECT_THAT(accountsOf(kFolder), ElementsAre(R"(BUILTIN\Administrators)"));
  EXPECT_THAT(accountsOf(kFile), IsEmpty());
}

TEST_F(AccessListsTest, ChangesReachThePathOnlyWhenWritten) {
  const auto list = take(kFile);
  add(*list, "Everyone");
  EXPECT_THAT(accountsOf(kFile), IsEmpty());
  list->writeAccounts();
  list->removeAccount(1);
  EXPECT_THAT(accountsOf(kFile), ElementsAre("Everyone"));
}

TEST_F(AccessListsTest, AListTakenEarlierStaysAsItWas) {
  const auto early = take(kFile);
  const auto late = take(kFile);
  add(*late, "Everyone");
  late->writeAccounts();
  EXPECT_THAT(accountsOf(*early), IsEmpty());
}

TEST_F(AccessListsTest, ANewEntryIsEmptyAndTheLastOfTheList) {
  const auto list = take(kFile);
  add(*list, "Everyone");
  const AccessEntry& entry = list->addAccount();
  EXPECT_EQ(entry.accountName(), "");
  for (int index = 1; index <= AccessEntry::kValueCount; ++index)
    EXPECT_EQ(entry.accessValue(index), 0) << index;
  EXPECT_THAT(accountsOf(*list), ElementsAre("Everyone", ""));
}

TEST_F(AccessListsTest, RemovingCountsFromOne) {
  const auto list = take(kFile);
  for (const char* name : {"a", "b", "c", "d"}) add(*list, name);
  list->removeAccount(1);
  EXPECT_THAT(accountsOf(*list), ElementsAre("b", "c", "d"));
  list->removeAccount(3);
  EXPECT_THAT(accountsOf(*list), ElementsAre("b", "c"));
  list->writeAccounts();
  EXPECT_THAT(accountsOf(kFile), ElementsAre("b", "c"));
}

TEST_F(AccessListsTest, RemovingWhatIsNotThereFailsWith9AndChangesNothing) {
  const auto list = take(kFile);
  EXPECT_EQ(numberOfFailure([&] { return list->removeAccount(1), 0; }), 9);
  add(*list, "Everyone");
  for (const std::int32_t index :
       {0, -1, 2, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(numberOfFailure([&] { return list->removeAccount(index), 0; }), 9) << index;
  }
  EXPECT_THAT(accountsOf(*list), ElementsAre("Everyone"));
}

TEST_F(AccessListsTest, AListEmptiedEntryByEntryLeavesThePathWithoutAttribute) {
  const auto list = take(kFile);
  for (const char* name : {"a", "b", "c"}) add(*list, name);
  list->writeAccounts();

  const auto again = take(kFile);
  std::vector<std::size_t> left;
  for (int count = 0; count < 3; ++count) {
    again->removeAccount(1);
    again->writeAccounts();
    left.push_back(accountsOf(kFile).size());
  }
  EXPECT_THAT(left, ElementsAre(2, 1, 0));
  EXPECT_EQ(attribute("site/default.htm"), std::nullopt);
}

TEST_F(AccessListsTest, WritingAnEmptyListOverNoneIsNoFailure) {
  EXPECT_NO_THROW(take(kFile)->writeAccounts());
  EXPECT_EQ(attribute("site/default.htm"), std::nullopt);
}

TEST_F(AccessListsTest, AListOutlivesItsControl) {
  const auto list = take(kFile);
  control_.reset();
  add(*list, "Everyone");
  list->writeAccounts();
  EXPECT_EQ(attribute("site/default.htm"), "allow;;0x001200a9;;Everyone\n");
  list->addAccount();
  EXPECT_EQ(hexOf(numberOfFailure([&] { return list->writeAccounts(), 0; })), "80020009");
}

TEST_F(AccessListsTest, WritingLeavesContentModeAndOtherAttributesAlone) {
  setMode("site/default.htm", 0640);
  ASSERT_EQ(::setxattr(native("site/default.htm").c_str(), "user.other", "kept", 4, 0), 0);
  const auto list = take(kFile);
  add(*list, "Everyone");
  list->writeAccounts();
  std::array<char, 8> other{};
  EXPECT_EQ(network_.read("WEB1/C$/site/default.htm"), "page");
  EXPECT_EQ(fs::status(native("site/default.htm")).permissions(), fs::perms(0640));
  EXPECT_EQ(::getxattr(native("site/default.htm").c_str(), "user.other", other.data(), other.size()), 4);
  EXPECT_STREQ(other.data(), "kept");
}

// Values

TEST_F(AccessListsTest, EachOfTheFifteenValuesComesBackAsItWas) {
  using Limits = std::numeric_limits<std::int32_t>;
  for (const std::int32_t value : {0, 1, -1, 5, 0xFF, 0x100, 0x20, Limits::max(), Limits::min()}) {
    const auto list = take(kFile);
    AccessEntry& entry = add(*list, R"(WEB1\web)");
    // In the order in which a copy goes through them.
    for (const int index : {14, 13, 12, 1, 10, 15, 11, 8, 7, 6, 2, 3, 4, 9, 5}) {
      entry.setAccessValue(index, value ^ (index << 8));
    }
    list->writeAccounts();
    const auto again = take(kFile);
    again->forEachAccount([&](const AccessEntry& read) {
      for (int index = 1; index <= AccessEntry::kValueCount; ++index) {
        EXPECT_EQ(read.accessValue(index), value ^ (index << 8)) << value << " in " << index;
      }
    });
    ASSERT_THAT(accountsOf(*again), SizeIs(1));
    again->removeAccount(1);
    again->writeAccounts();
  }
}

TEST_F(AccessListsTest, AnIndexOutsideOfTheFifteenFailsWith9) {
  const auto list = take(kFile);
  AccessEntry& entry = add(*list, "Everyone");
  for (const int index : {0, 16, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(numberOfFailure([&] { return entry.accessValue(index); }), 9) << index;
    EXPECT_EQ(numberOfFailure([&] { return entry.setAccessValue(index, 1), 0; }), 9) << index;
  }
}

TEST_F(AccessListsTest, AnEntryCopiedValueByValueIsEqual) {
  setAttribute("site/default.htm",
               "0x5;OICINPIOIDSAFA;0xffffffff;4=0x3,5=0xbf967aba,8=0x1,12=0xffffffff,15=0x7;WEB1\\a;b\n");
  const auto source = take(kFile);
  const auto target = take(kFolder);
  source->forEachAccount([&](const AccessEntry& from) {
    AccessEntry& to = target->addAccount();
    to.setAccountName(from.accountName());
    for (int index = 1; index <= AccessEntry::kValueCount; ++index)
      to.setAccessValue(index, from.accessValue(index));
  });
  target->writeAccounts();
  EXPECT_EQ(attribute("site"), attribute("site/default.htm"));
}

TEST_F(AccessListsTest, TheAttributeIsTextThatAPersonCanRead) {
  const auto list = take(kFile);
  add(*list, R"(WEB1\editors)", kRead, 3);
  add(*list, "Everyone", 0x10000).setAccessValue(1, 1);
  AccessEntry& object = add(*list, R"(CORP\Web Team)", -1, 0x20);
  object.setAccessValue(1, 5);
  object.setAccessValue(4, 1);
  object.setAccessValue(5, static_cast<std::int32_t>(0xBF967ABAU));
  list->writeAccounts();
  EXPECT_EQ(attribute("site/default.htm"),
            "allow;OICI;0x001200a9;;WEB1\\editors\n"
            "deny;;0x00010000;;Everyone\n"
            "0x5;0x20;0xffffffff;4=0x1,5=0xbf967aba;CORP\\Web Team\n");
}

TEST_F(AccessListsTest, AnAttributeWrittenByHandIsRead) {
  setAttribute("site/default.htm", "audit;FASA;0x1;;Everyone\nalarm;0xff;0xFF;15=0x0;WEB1\\b");
  const auto list = take(kFile);
  std::vector<std::int32_t> values;
  list->forEachAccount([&](const AccessEntry& entry) {
    for (int index = 1; index <= 3; ++index) values.push_back(entry.accessValue(index));
  });
  EXPECT_THAT(values, ElementsAre(2, 0xC0, 1, 3, 0xFF, 0xFF));
  EXPECT_THAT(accountsOf(*list), ElementsAre("Everyone", R"(WEB1\b)"));
}

// Names

TEST_F(AccessListsTest, WellFormedNamesAreTakenWhetherOrNotTheAccountExists) {
  const std::vector<std::string> names{"Everyone",
                                       "CREATOR OWNER",
                                       R"(BUILTIN\Administrators)",
                                       R"(NT AUTHORITY\SYSTEM)",
                                       R"(IIS APPPOOL\Default;Pool, 100%=yes)",
                                       "WEB1\\J\xC3\xBCrgen",
                                       "S-1-5-21-1-2-3-1001",
                                       std::string(256, 'n')};
  const auto list = take(kFile);
  for (const std::string& name : names) add(*list, name);
  list->writeAccounts();
  EXPECT_EQ(accountsOf(kFile), names);
}

TEST_F(AccessListsTest, ALengthCountsCharactersNotBytes) {
  std::string umlauts;
  for (int count = 0; count < 256; ++count) umlauts += "\xC3\xBC";
  const auto list = take(kFile);
  add(*list, umlauts);
  EXPECT_NO_THROW(list->writeAccounts());
  list->removeAccount(1);
  add(*list, umlauts + "u");
  EXPECT_THAT(failureOfWriting(*list), HasSubstr("more than 256 characters"));
}

TEST_F(AccessListsTest, ANameThatIsNoneFailsAndTheOldListStays) {
  setAttribute("site/default.htm", "allow;;0x00000001;;old\n");
  const std::vector<std::string> names{"",
                                       " ",
                                       "\\name",
                                       "DOMAIN\\",
                                       "\\",
                                       "A\\b\\c",
                                       " \\name",
                                       "D\\ ",
                                       "a\tb",
                                       "a\nb",
                                       "a\rb",
                                       "a\x1F",
                                       "a\x7F",
                                       std::string("a\0b", 3),
                                       std::string(257, 'n')};
  for (const std::string& name : names) {
    const auto list = take(kFile);
    add(*list, name);
    const std::string text = failureOfWriting(*list);
    EXPECT_THAT(text, HasSubstr(kFile));
    EXPECT_THAT(text, HasSubstr("account"));
    EXPECT_EQ(text.find_first_of(std::string_view("\t\n\r\0\x1F\x7F", 6)), text.npos)
        << "unfit for a log: " << text;
    EXPECT_EQ(attribute("site/default.htm"), "allow;;0x00000001;;old\n") << name;
  }
}

// Paths

TEST_F(AccessListsTest, APathThatIsMissingFailsWithItsNameAndCause) {
  const std::string text = failureOfTaking(R"(\\WEB1\C$\site\gone.htm)");
  EXPECT_THAT(text, HasSubstr(R"(\\WEB1\C$\site\gone.htm)"));
  EXPECT_THAT(text, HasSubstr("No such file or directory"));
}

TEST_F(AccessListsTest, WhatIsNoPathFails) {
  for (const std::string& path : {std::string(), std::string("\\\\WEB1"), std::string("C:\\a\0b", 6)}) {
    EXPECT_THAT(failureOfTaking(path), HasSubstr("can't be read")) << path;
  }
}

TEST_F(AccessListsTest, AControlThatWasGivenNoPathFails) {
  EXPECT_THAT(failureOf([&] { return control_->getAccounts(); }), HasSubstr("can't be read"));
}

TEST_F(AccessListsTest, APathMatchesInAnyCase) {
  setAttribute("site/default.htm", "allow;;0x00000001;;Everyone\n");
  EXPECT_THAT(accountsOf(R"(\\web1\c$\SITE\Default.HTM)"), ElementsAre("Everyone"));
}

TEST_F(AccessListsTest, APathIsLookedUpOnceHoweverOftenItsListIsWritten) {
  const auto list = take(kFile);
  for (const char* name : {"a", "b", "c"}) {
    add(*list, name);
    list->writeAccounts();
  }
  EXPECT_EQ(lookUps_, 1);
}

TEST_F(AccessListsTest, APathThatVanishedFailsWhenWritten) {
  const auto list = take(kFile);
  add(*list, "Everyone");
  fs::remove(native("site/default.htm"));
  EXPECT_THAT(failureOfWriting(*list), HasSubstr("No such file or directory"));
}

TEST_F(AccessListsTest, TheReadOnlyMarkGuardsTheContentAndNotTheList) {
  setAttribute("site/default.htm", "allow;;0x00000001;;old\n");
  setMode("site/default.htm", 0444);
  const auto list = take(kFile);
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_EQ(attribute("site/default.htm"), std::nullopt);
  EXPECT_EQ(fs::status(native("site/default.htm")).permissions(), fs::perms(0444));
}

TEST_F(AccessListsTest, WithoutTheRightToReadAListItIsNotTaken) {
  fs::permissions(network_.path(), fs::perms(0755));
  setMode("site/default.htm", 0);
  const FewRights fewRights;
  EXPECT_THAT(failureOfTaking(kFile), HasSubstr("Permission denied"));
}

TEST_F(AccessListsTest, WithoutTheRightToWriteAListTheOldOneStays) {
  if (::geteuid() != 0) GTEST_SKIP() << "whoever runs this owns the file, and an owner may write its list";
  fs::permissions(network_.path(), fs::perms(0755));
  setAttribute("site/default.htm", "allow;;0x00000001;;old\n");
  setMode("site/default.htm", 0644);
  const FewRights fewRights;
  const auto list = take(kFile);
  add(*list, "Everyone");
  EXPECT_THAT(failureOfWriting(*list), HasSubstr("Permission denied"));
  EXPECT_EQ(attribute("site/default.htm"), "allow;;0x00000001;;old\n");
}

TEST_F(AccessListsTest, AFileSystemWithoutAttributesIsToldOf) {
  EXPECT_THAT(failureOfTaking(R"(Z:\proc\version)"), HasSubstr("keeps no extended attributes"));
}

TEST_F(AccessListsTest, AListTooLargeForTheAttributeFailsAndTheOldOneStays) {
  setAttribute("site/default.htm", "allow;;0x00000001;;old\n");
  const auto list = take(kFile);
  for (int count = 0; count < 3000; ++count) add(*list, "WEB1\\user" + std::to_string(count));
  EXPECT_THAT(failureOfWriting(*list), HasSubstr("no room for a list of this size"));
  EXPECT_EQ(attribute("site/default.htm"), "allow;;0x00000001;;old\n");
}

TEST_F(AccessListsTest, AListAsLargeAsTheFileSystemTakesComesBackWhole) {
  const std::string text = fill("site/default.htm");
  const auto list = take(kFile);
  list->writeAccounts();
  EXPECT_EQ(attribute("site/default.htm"), text);
  EXPECT_GT(text.size(), 1024U) << "not larger than what is read at first";
}

// Attributes that somebody edited

TEST_F(AccessListsTest, ABrokenAttributeFailsWithItsPlaceAndStays) {
  const std::map<std::string, std::string> faults{
      {"allow", "entry 1: it isn't"},
      {"\n", "entry 1: it isn't"},
      {"allow;;0x1;Everyone", "entry 1: it isn't"},
      {"permit;;0x1;;Everyone", "entry 1: 'permit' is no type"},
      {";;0x1;;Everyone", "entry 1: '' is no type"},
      {"allow;OIXX;0x1;;Everyone", "entry 1: 'OIXX' is no set of flags"},
      {"allow;O;0x1;;Everyone", "entry 1: 'O' is no set of flags"},
      {"allow;;;;Everyone", "entry 1: '' is no mask"},
      {"allow;;12;;Everyone", "entry 1: '12' is no mask"},
      {"allow;;0x;;Everyone", "entry 1: '0x' is no mask"},
      {"allow;;0x-1;;Everyone", "entry 1: '0x-1' is no mask"},
      {"allow;;0x100000000;;Everyone", "entry 1: '0x100000000' is no mask"},
      {"allow;;0x1g;;Everyone", "entry 1: '0x1g' is no mask"},
      {"allow;;0x1;3=0x1;Everyone", "entry 1: '3=0x1' is no list of more values"},
      {"allow;;0x1;16=0x1;Everyone", "entry 1: '16=0x1' is no list of more values"},
      {"allow;;0x1;4;Everyone", "entry 1: '4' is no list of more values"},
      {"allow;;0x1;=0x1;Everyone", "entry 1: '=0x1' is no list of more values"},
      {"allow;;0x1;4=;Everyone", "entry 1: '4=' is no list of more values"},
      {"allow;;0x1;4=0x1,;Everyone", "entry 1: '4=0x1,' is no list of more values"},
      {"allow;;0x1;5=0x1,5=0x2;Everyone", "entry 1: '5=0x1,5=0x2' is no list of more values"},
      {"allow;;0x1;99999999999999999999=0x1;Everyone", "is no list of more values"},
      {"allow;;0x1;;", "entry 1: the account has no name"},
      {"allow;;0x1;;Everyone\r\n", "entry 1: the account name 'Everyone?' holds a control character"},
      {"allow;;0x1;;Everyone\nallow;;0x1;;a\\b\\c\n",
       "entry 2: the account name 'a\\b\\c' isn't DOMAIN\\name"},
      {"allow;;0x1;;Everyone\n\nallow;;0x1;;Everyone\n", "entry 2: it isn't"},
      {std::string("\0\0\0", 3), "entry 1: it isn't"},
      {std::string(900, 'x') + ";;0x1;;Everyone", "entry 1: '" + std::string(60, 'x') + "...' is no type"},
  };
  for (const auto& [broken, fault] : faults) {
    setAttribute("site/default.htm", broken);
    const std::string text = failureOfTaking(kFile);
    EXPECT_THAT(text, HasSubstr(fault));
    EXPECT_THAT(text, HasSubstr(kFile));
    EXPECT_THAT(text, HasSubstr(kAttribute));
    EXPECT_EQ(attribute("site/default.htm"), broken);
  }
}

TEST_F(AccessListsTest, AnAttributeCutOffAnywhereIsReadOrRefusedButNeverMore) {
  const std::string whole =
      "0x5;OICI;0x001200a9;4=0x1,5=0xbf967aba;WEB1\\editors\ndeny;;0x00010000;;Everyone\n";
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    setAttribute("site/default.htm", whole.substr(0, length));
    std::size_t count = 0;
    const std::int32_t number = numberOfFailure([&] { return count = accountsOf(kFile).size(); });
    EXPECT_LE(count, 2U);
    EXPECT_THAT(hexOf(number), testing::AnyOf("0", "80020009")) << length;
  }
}

// Last error

TEST_F(AccessListsTest, WithoutAFailureThereIsNoLastError) {
  EXPECT_EQ(control_->lastError(), "");
  take(kFile)->writeAccounts();
  EXPECT_EQ(control_->lastError(), "");
}

TEST_F(AccessListsTest, TheLastErrorIsThatOfThePathInHand) {
  failureOfTaking(R"(\\WEB1\C$\gone)");
  EXPECT_THAT(control_->lastError(), Not(IsEmpty()));
  control_->setFileOrDirectory(kFile);
  EXPECT_EQ(control_->lastError(), "");
}

// Apply flags

class InheritanceTest : public AccessListsTest {
 protected:
  void SetUp() override {
    AccessListsTest::SetUp();
    network_.write("WEB1/C$/site/web.config", "settings");
    network_.write("WEB1/C$/site/images/logo.gif", "picture");
  }
  // The folder's list with one entry that files inherit and one that they don't.
  std::unique_ptr<AccessList> listToInherit() {
    auto list = take(kFolder);
    list->setFirstApplyFlag(false);
    list->setSecondApplyFlag(true);
    add(*list, R"(WEB1\editors)", kRead, 0x4B);
    add(*list, R"(WEB1\owners)", kRead, 2);
    return list;
  }
  static constexpr const char* kInheritedLine = "allow;IDSA;0x001200a9;;WEB1\\editors\n";
};

TEST_F(InheritanceTest, InTheMainPassOnlyThePathItselfIsWritten) {
  const auto list = listToInherit();
  list->setSecondApplyFlag(false);
  list->writeAccounts();
  EXPECT_THAT(accountsOf(kFolder), SizeIs(2));
  EXPECT_EQ(attribute("site/default.htm"), std::nullopt);
  EXPECT_EQ(attribute("site/images"), std::nullopt);
}

TEST_F(InheritanceTest, InTheSecondPassTheFilesOfTheFolderInherit) {
  listToInherit()->writeAccounts();
  EXPECT_EQ(attribute("site"),
            "allow;OICIIOSA;0x001200a9;;WEB1\\editors\nallow;CI;0x001200a9;;WEB1\\owners\n");
  EXPECT_EQ(attribute("site/default.htm"), kInheritedLine);
  EXPECT_EQ(attribute("site/web.config"), kInheritedLine);
}

TEST_F(InheritanceTest, SubfoldersAndWhatLiesInThemAreLeftToTheirOwnVisit) {
  setAttribute("site/images", "allow;;0x00000001;;old\n");
  listToInherit()->writeAccounts();
  EXPECT_EQ(attribute("site/images"), "allow;;0x00000001;;old\n");
  EXPECT_EQ(attribute("site/images/logo.gif"), std::nullopt);
}

TEST_F(InheritanceTest, AFileKeepsItsOwnEntriesInFrontOfTheInheritedOnes) {
  setAttribute(
      "site/web.config",
      "allow;ID;0x00000001;;inherited earlier\ndeny;;0x00010000;;Everyone\nallow;;0x00000002;;WEB1\\own\n");
  listToInherit()->writeAccounts();
  EXPECT_EQ(attribute("site/web.config"),
            std::string("deny;;0x00010000;;Everyone\nallow;;0x00000002;;WEB1\\own\n") + kInheritedLine);
}

TEST_F(InheritanceTest, WritingAgainInheritsNothingTwice) {
  const auto list = listToInherit();
  list->writeAccounts();
  list->writeAccounts();
  EXPECT_EQ(attribute("site/web.config"), kInheritedLine);
}

TEST_F(InheritanceTest, AListEmptiedInTheSecondPassTakesBackWhatFilesInherited) {
  const auto list = listToInherit();
  list->writeAccounts();
  for (int i = 0; i < 2; ++i) {
    list->removeAccount(1);
    list->writeAccounts();
  }
  list->writeAccounts();
  EXPECT_EQ(attribute("site"), std::nullopt);
  EXPECT_EQ(attribute("site/web.config"), std::nullopt);
}

TEST_F(InheritanceTest, TheStepsOfAnEmptyingHandNothingDown) {
  const auto list = listToInherit();
  list->writeAccounts();
  list->removeAccount(1);
  list->writeAccounts();
  EXPECT_EQ(attribute("site"), "allow;CI;0x001200a9;;WEB1\\owners\n");
  EXPECT_EQ(attribute("site/web.config"), kInheritedLine);
}

TEST_F(InheritanceTest, AnEntryThatTakesTheRemovedOnesPlaceIsHandedDown) {
  const auto list = listToInherit();
  list->writeAccounts();
  list->removeAccount(1);
  add(*list, R"(WEB1\guests)", kRead, kObjectInherit);
  list->writeAccounts();
  EXPECT_EQ(attribute("site/web.config"), "allow;ID;0x001200a9;;WEB1\\guests\n");
}

TEST_F(InheritanceTest, TheSecondPassOnAFileIsAsTheFirst) {
  const auto list = take(kFile);
  list->setSecondApplyFlag(true);
  add(*list, "Everyone", 1, kObjectInherit);
  list->writeAccounts();
  EXPECT_EQ(attribute("site/default.htm"), "allow;OI;0x00000001;;Everyone\n");
  EXPECT_EQ(attribute("site/web.config"), std::nullopt);
}

TEST_F(InheritanceTest, AnInheritedEntryCountsAsAnEntryOfTheFile) {
  listToInherit()->writeAccounts();
  const auto list = take(kFile);
  std::int32_t flags = 0;
  list->forEachAccount([&](const AccessEntry& entry) { flags = entry.accessValue(2); });
  EXPECT_THAT(accountsOf(*list), ElementsAre(R"(WEB1\editors)"));
  EXPECT_EQ(flags & kInherited, kInherited);
}

TEST_F(InheritanceTest, AReadOnlyFileInheritsToo) {
  setMode("site/web.config", 0444);
  listToInherit()->writeAccounts();
  EXPECT_NE(attribute("site/web.config"), std::nullopt);
  EXPECT_EQ(fs::status(native("site/web.config")).permissions(), fs::perms(0444));
}

TEST_F(InheritanceTest, AFileWithABrokenListFailsTheWholeAndNothingIsWritten) {
  setAttribute("site/web.config", "rubbish");
  const std::string text = failureOfWriting(*listToInherit());
  EXPECT_THAT(text, HasSubstr(R"(\\WEB1\C$\site\web.config)"));
  EXPECT_THAT(text, HasSubstr("entry 1"));
  EXPECT_EQ(attribute("site"), std::nullopt);
  EXPECT_EQ(attribute("site/web.config"), "rubbish");
}

TEST_F(InheritanceTest, AFileWithoutRoomPutsFolderAndFilesBackToTheListsFromBefore) {
  setAttribute("site", "allow;;0x00000001;;old\n");
  for (int count = 0; count < 10; ++count) {
    network_.write("WEB1/C$/site/page" + std::to_string(count) + ".htm", "page");
    setAttribute("site/page" + std::to_string(count) + ".htm", "allow;;0x00000001;;own\n");
  }
  const std::string full = fill("site/web.config");
  EXPECT_THAT(failureOfWriting(*listToInherit()), HasSubstr("no room"));
  EXPECT_EQ(attribute("site"), "allow;;0x00000001;;old\n");
  EXPECT_EQ(attribute("site/web.config"), full);
  EXPECT_EQ(attribute("site/default.htm"), std::nullopt);
  for (int count = 0; count < 10; ++count) {
    EXPECT_EQ(attribute("site/page" + std::to_string(count) + ".htm"), "allow;;0x00000001;;own\n") << count;
  }
}

TEST_F(InheritanceTest, LinksCountAsWhatTheyLeadTo) {
  network_.write("elsewhere/shared.inc", "shared");
  network_.makeFolder("elsewhere/folder");
  fs::create_symlink(network_ / "elsewhere/shared.inc", native("site/shared.inc"));
  fs::create_directory_symlink(network_ / "elsewhere/folder", native("site/linked"));
  fs::create_symlink("nowhere", native("site/dangling"));
  listToInherit()->writeAccounts();
  EXPECT_EQ(attribute("site/shared.inc"), kInheritedLine);
  EXPECT_EQ(attribute("site/linked"), std::nullopt);
}

TEST_F(InheritanceTest, WhatIsNeitherFileNorFolderIsPassedOver) {
  ASSERT_EQ(::mkfifo(native("site/pipe").c_str(), 0644), 0);
  EXPECT_NO_THROW(listToInherit()->writeAccounts());
  EXPECT_EQ(attribute("site/web.config"), kInheritedLine);
}

TEST_F(InheritanceTest, AListThatSubfoldersShouldInheritIsRefused) {
  const auto list = listToInherit();
  list->setFirstApplyFlag(true);
  EXPECT_THAT(failureOfWriting(*list), HasSubstr("subfolders"));
  EXPECT_EQ(attribute("site"), std::nullopt);
}

}  // namespace
}  // namespace trelvin
