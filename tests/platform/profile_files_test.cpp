#include "platform/linux/profile_files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "core/text.h"
#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

constexpr const char* kDefault = "(missing)";

class ProfileFilesTest : public testing::Test {
 protected:
  [[nodiscard]] std::string path(std::string_view name = "Backup.job") const {
    return windowsPath((folder_ / name).string());
  }
  void fileHolds(std::string_view bytes) const { folder_.write("Backup.job", bytes); }
  [[nodiscard]] std::string file() const { return folder_.read("Backup.job"); }

  // A value through a buffer that is large enough for any.
  std::string get(std::string_view section, std::string_view key) {
    std::string buffer(300, ' ');
    const std::uint32_t count = profile_->getString(section, key, kDefault, buffer, 300, path());
    std::string value(firstCharacters(buffer, count));
    EXPECT_EQ(buffer[value.size()], '\0');
    return value;
  }
  bool put(std::string_view section, std::string_view key, std::string_view value) {
    return profile_->writeString(section, key, value, path());
  }
  bool remove(std::string_view section, std::string_view key) {
    return profile_->writeString(section, key, std::nullopt, path());
  }

  TempFolder folder_;
  std::unique_ptr<ProfileFiles> profile_ =
      makeProfileFiles([](std::string_view path) { return Paths("/nowhere").nativePath(path); });
};

TEST_F(ProfileFilesTest, AValueIsReadFromItsSection) {
  fileHolds("[1Site]\r\nSiteName=one\r\n[2Site]\r\nSiteName=two\r\n");
  EXPECT_EQ(get("1Site", "SiteName"), "one");
  EXPECT_EQ(get("2Site", "SiteName"), "two");
}

TEST_F(ProfileFilesTest, AMissingFileSectionOrKeyGivesTheDefault) {
  EXPECT_EQ(get("Job Details", "Sites"), kDefault);
  fileHolds("Sites=0\r\n[Job Details]\r\nType=W3SVC\r\n");
  EXPECT_EQ(get("Job Details", "Sites"), kDefault) << "a key before the first section belongs to none";
  EXPECT_EQ(get("Other", "Type"), kDefault);
  EXPECT_EQ(get("", "Type"), kDefault);
  EXPECT_EQ(get("Job Details", ""), kDefault);
}

TEST_F(ProfileFilesTest, AnEmptyValueIsNoMissingOne) {
  fileHolds("[a]\nkey=\n");
  std::string buffer(10, ' ');
  EXPECT_EQ(profile_->getString("a", "key", kDefault, buffer, 10, path()), 0U);
  EXPECT_EQ(buffer, std::string("\0         ", 10));
}

TEST_F(ProfileFilesTest, SectionsAndKeysMatchInAnyCase) {
  fileHolds("[JOB Details]\r\nsITES=2\r\n[Ünder]\r\nÄrger=ja\r\n");
  EXPECT_EQ(get("Job Details", "Sites"), "2");
  EXPECT_EQ(get("üNDER", "äRGER"), "ja");
}

TEST_F(ProfileFilesTest, TheFirstSectionOfANameCounts) {
  fileHolds("[a]\nx=1\n[b]\n[A]\nx=2\ny=3\n");
  EXPECT_EQ(get("a", "x"), "1");
  EXPECT_EQ(get("a", "y"), kDefault);
}

TEST_F(ProfileFilesTest, TheFirstKeyOfANameCounts) {
  fileHolds("[a]\nx=1\nX=2\n");
  EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(ProfileFilesTest, BlanksAndTabsAroundSectionKeyAndValueDoNotCount) {
  fileHolds(" \t[ a b ] \r\n\t key one \t=\t  some text \t\r\n");
  EXPECT_EQ(get("a b", "key one"), "some text");
  EXPECT_EQ(get(" a b ", " key one "), "some text");
}

TEST_F(ProfileFilesTest, OnePairOfQuotesAroundAValueIsDropped) {
  fileHolds("[a]\n1=\" kept \"\n2='x'\n3=\"\"x\"\"\n4=\"x'\n5=\"\n6=\"\"\n7=a \"b\" c\n8=\"a\" \"b\"\n");
  EXPECT_EQ(get("a", "1"), " kept ");
  EXPECT_EQ(get("a", "2"), "x");
  EXPECT_EQ(get("a", "3"), "\"x\"");
  EXPECT_EQ(get("a", "4"), "\"x'");
  EXPECT_EQ(get("a", "5"), "\"");
  EXPECT_EQ(get("a", "6"), "");
  EXPECT_EQ(get("a", "7"), "a \"b\" c");
  EXPECT_EQ(get("a", "8"), "a\" \"b");
}

TEST_F(ProfileFilesTest, AValueMayHoldEqualsSignsAndSemicolons) {
  fileHolds("[a]\nx=DSN=store;UID=me\n");
  EXPECT_EQ(get("a", "x"), "DSN=store;UID=me");
}

TEST_F(ProfileFilesTest, CommentsAreNoKeys) {
  fileHolds("[a]\n;x=1\n  ; x = 2\nx=3\n");
  EXPECT_EQ(get("a", "x"), "3");
  EXPECT_EQ(get("a", ";x"), kDefault);
}

TEST_F(ProfileFilesTest, ALineWithoutAnEqualsSignIsNoKey) {
  fileHolds("[a]\nx\nx=1\n");
  EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(ProfileFilesTest, ALineWithoutAClosingBracketIsNoSection) {
  fileHolds("[a]\n[b\nx=1\n");
  EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(ProfileFilesTest, LinesMayEndEitherWayAndTheLastOneNotAtAll) {
  fileHolds("[a]\nx=1\r\ny=2");
  EXPECT_EQ(get("a", "x"), "1");
  EXPECT_EQ(get("a", "y"), "2");
}

TEST_F(ProfileFilesTest, AMarkOfUtf8IsNotPartOfTheFirstLine) {
  fileHolds("\xEF\xBB\xBF[a]\r\nx=ä\r\n");
  EXPECT_EQ(get("a", "x"), "ä");
  EXPECT_TRUE(put("a", "y", "ö"));
  EXPECT_EQ(file(), "\xEF\xBB\xBF[a]\r\nx=ä\r\ny=ö\r\n");
}

TEST_F(ProfileFilesTest, AFileInUtf16StaysOne) {
  fileHolds(std::string_view("\xFF\xFE[\0a\0]\0\r\0\n\0x\0=\0\xE4\0\r\0\n\0", 22));
  EXPECT_EQ(get("a", "x"), "ä");
  EXPECT_TRUE(put("a", "x", "\xF0\x9F\x98\x80"));
  EXPECT_EQ(file(), std::string_view("\xFF\xFE[\0a\0]\0\r\0\n\0x\0=\0\x3D\xD8\x00\xDE\r\0\n\0", 24));
  EXPECT_EQ(get("a", "x"), "\xF0\x9F\x98\x80");
}

TEST_F(ProfileFilesTest, BytesOfTheWindowsCodePageReadAsItsCharacters) {
  fileHolds(
      "[B\xFCro]\r\nStra\xDF"
      "e=Preis 5 \x80, \x8A\r\nBeides=\xE4 und ä\r\n");
  EXPECT_EQ(get("Büro", "Straße"), "Preis 5 €, Š");
  EXPECT_EQ(get("BÜRO", "Beides"), "ä und ä");
}

TEST_F(ProfileFilesTest, BytesThatAreNoUtf8StayAsTheyAreOnWrite) {
  fileHolds("[B\xFCro]\r\nx=\xE4\r\n");
  EXPECT_TRUE(put("Büro", "y", "ä"));
  EXPECT_EQ(file(), "[B\xFCro]\r\nx=\xE4\r\ny=ä\r\n");
}

TEST_F(ProfileFilesTest, AValueOf49CharactersFitsABufferOf50) {
  fileHolds("[a]\nx=" + std::string(49, 'v') + "\n");
  std::string buffer(50, ' ');
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 50, path()), 49U);
  EXPECT_EQ(buffer, std::string(49, 'v') + '\0');
}

TEST_F(ProfileFilesTest, AValueOf50CharactersIsCutTo49) {
  fileHolds("[a]\nx=" + std::string(49, 'v') + "w\n");
  std::string buffer(50, ' ');
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 50, path()), 49U);
  EXPECT_EQ(buffer, std::string(49, 'v') + '\0');
}

TEST_F(ProfileFilesTest, TheBufferCountsCharactersAndCutsNoneInTwo) {
  std::string umlauts;
  for (int i = 0; i < 50; ++i) umlauts += "ü";
  fileHolds("[a]\nx=" + umlauts + "\n");
  std::string buffer(50, ' ');
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 50, path()), 49U);
  EXPECT_EQ(buffer, umlauts.substr(0, 98) + '\0');
}

TEST_F(ProfileFilesTest, ALongDefaultIsCutInTheSameWay) {
  std::string buffer(50, ' ');
  EXPECT_EQ(profile_->getString("a", "x", std::string(60, 'd'), buffer, 50, path()), 49U);
  EXPECT_EQ(buffer, std::string(49, 'd') + '\0');
}

TEST_F(ProfileFilesTest, TheRestOfTheBufferStaysAsItWas) {
  fileHolds("[a]\nx=ä1\n");
  std::string buffer = "0123456789";
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 10, path()), 2U);
  EXPECT_EQ(buffer, std::string("ä1\0"
                                "3456789",
                                11));
}

TEST_F(ProfileFilesTest, ABufferWithRoomForTheNulAloneGetsJustThat) {
  fileHolds("[a]\nx=1\n");
  std::string buffer = "?";
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 1, path()), 0U);
  EXPECT_EQ(buffer, std::string(1, '\0'));
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 0, path()), 0U);
}

TEST_F(ProfileFilesTest, AValueThatEqualsTheDefaultLooksLikeTheDefault) {
  fileHolds("[a]\nx=" + path() + "\n");
  std::string found(200, ' ');
  std::string missing(200, ' ');
  EXPECT_EQ(profile_->getString("a", "x", path(), found, 200, path()),
            profile_->getString("a", "y", path(), missing, 200, path()));
  EXPECT_EQ(found, missing);
}

TEST_F(ProfileFilesTest, AValueEndsAtANul) {
  fileHolds(std::string_view("[a]\nx=ab\0cd\ny=1\n", 16));
  EXPECT_EQ(get("a", "x"), "ab");
  EXPECT_EQ(get("a", "y"), "1");
}

TEST_F(ProfileFilesTest, TheFirstWriteMakesFileSectionAndKey) {
  EXPECT_TRUE(put("Job Details", "Sites", "2"));
  EXPECT_EQ(file(), "[Job Details]\r\nSites=2\r\n");
}

TEST_F(ProfileFilesTest, SectionsAndKeysStandInTheOrderOfTheirFirstWriting) {
  put("Job Details", "Sites", "1");
  put("0FindReplace", "Find", "d:\\inetpub");
  put("1Site", "SiteName", "IIS://web1/W3SVC/1");
  put("Job Details", "BackupAllSites", "False");
  EXPECT_EQ(file(),
            "[Job Details]\r\nSites=1\r\nBackupAllSites=False\r\n[0FindReplace]\r\nFind=d:\\inetpub\r\n"
            "[1Site]\r\nSiteName=IIS://web1/W3SVC/1\r\n");
}

TEST_F(ProfileFilesTest, AKeyThatIsThereGetsTheNewValueInItsPlace) {
  fileHolds("; head\r\n[A]\r\n  Key = old ; text \r\nother=1\r\n\r\n[b]\r\nkey=2\r\n");
  EXPECT_TRUE(put("a", "KEY", "new"));
  EXPECT_EQ(file(), "; head\r\n[A]\r\n  Key =new\r\nother=1\r\n\r\n[b]\r\nkey=2\r\n");
}

TEST_F(ProfileFilesTest, AWriteGoesToTheFirstOfTwoSectionsAndKeys) {
  fileHolds("[a]\nx=1\nx=2\n[A]\nx=3\ny=4\n");
  EXPECT_TRUE(put("a", "x", "new"));
  EXPECT_TRUE(put("a", "y", "new"));
  EXPECT_EQ(file(), "[a]\nx=new\nx=2\ny=new\n[A]\nx=3\ny=4\n");
}

TEST_F(ProfileFilesTest, ANewKeyStandsBeforeTheBlankLinesThatCloseItsSection) {
  fileHolds("[a]\r\nx=1\r\n\r\n \r\n[b]\r\ny=2\r\n\r\n");
  EXPECT_TRUE(put("a", "z", "3"));
  EXPECT_TRUE(put("b", "z", "4"));
  EXPECT_EQ(file(), "[a]\r\nx=1\r\nz=3\r\n\r\n \r\n[b]\r\ny=2\r\nz=4\r\n\r\n");
}

TEST_F(ProfileFilesTest, AFileKeepsItsOwnLineEnds) {
  fileHolds("[a]\nx=1\n");
  EXPECT_TRUE(put("a", "y", "2"));
  EXPECT_TRUE(put("b", "z", "3"));
  EXPECT_EQ(file(), "[a]\nx=1\ny=2\n[b]\nz=3\n");
}

TEST_F(ProfileFilesTest, ALastLineWithoutAnEndGetsOneBeforeTheNextLine) {
  fileHolds("[a]\r\nx=1");
  EXPECT_TRUE(put("a", "y", "2"));
  EXPECT_EQ(file(), "[a]\r\nx=1\r\ny=2\r\n");
  fileHolds("[a]\nx=1");
  EXPECT_TRUE(put("b", "y", "2"));
  EXPECT_EQ(file(), "[a]\nx=1\n[b]\ny=2\n");
  fileHolds("[a]\nx=1");
  EXPECT_TRUE(put("a", "x", "2"));
  EXPECT_EQ(file(), "[a]\nx=2");
}

TEST_F(ProfileFilesTest, NoValueDeletesTheKeyAlone) {
  fileHolds("[a]\r\n; about x\r\nx=1\r\ny=2\r\n");
  EXPECT_TRUE(remove("A", "X"));
  EXPECT_EQ(file(), "[a]\r\n; about x\r\ny=2\r\n");
  EXPECT_TRUE(remove("a", "y"));
  EXPECT_EQ(file(), "[a]\r\n; about x\r\n");
}

TEST_F(ProfileFilesTest, DeletingWhatIsNotThereChangesNothing) {
  EXPECT_TRUE(remove("a", "x"));
  EXPECT_FALSE(folder_.has("Backup.job"));
  fileHolds("[a]\r\ny=2");
  EXPECT_TRUE(remove("a", "x"));
  EXPECT_TRUE(remove("b", "y"));
  EXPECT_EQ(file(), "[a]\r\ny=2");
}

TEST_F(ProfileFilesTest, AnEmptyValueIsWrittenAsOne) {
  EXPECT_TRUE(put("a", "x", ""));
  EXPECT_EQ(file(), "[a]\r\nx=\r\n");
  EXPECT_EQ(get("a", "x"), "");
}

TEST_F(ProfileFilesTest, ALongValueIsWrittenWhole) {
  const std::string value(60'000, 'v');
  EXPECT_TRUE(put("a", "x", value));
  EXPECT_EQ(file(), "[a]\r\nx=" + value + "\r\n");
}

TEST_F(ProfileFilesTest, WhatWouldBreakTheFilesStructureIsRefused) {
  const std::string before = "[a]\r\nx=1\r\n";
  fileHolds(before);
  EXPECT_FALSE(put("a", "x", "1\r\n[Job Details]\r\nBackupAllSites=True"));
  EXPECT_FALSE(put("a", "x", "1\n2"));
  EXPECT_FALSE(put("a", "x", "1\r2"));
  EXPECT_FALSE(put("a", "x",
                   std::string_view("1\0"
                                    "2",
                                    3)));
  EXPECT_FALSE(put("a", "y\nz", "1"));
  EXPECT_FALSE(put("a", "y=z", "1"));
  EXPECT_FALSE(put("a", ";y", "1"));
  EXPECT_FALSE(put("a", "[y]", "1"));
  EXPECT_FALSE(put("a", "", "1"));
  EXPECT_FALSE(put("a]", "y", "1"));
  EXPECT_FALSE(put("a\n", "y", "1")) << "only blanks are dropped around a name";
  EXPECT_FALSE(put("", "y", "1"));
  EXPECT_EQ(file(), before);
}

TEST_F(ProfileFilesTest, AReadOnlyFileIsNotWritten) {
  fileHolds("[a]\nx=1\n");
  ASSERT_EQ(::chmod((folder_ / "Backup.job").c_str(), 0444), 0);
  EXPECT_FALSE(put("a", "x", "2"));
  EXPECT_FALSE(remove("a", "x"));
  EXPECT_EQ(file(), "[a]\nx=1\n");
}

TEST_F(ProfileFilesTest, AFileInAFolderThatIsNotThereIsNotWritten) {
  folder_.write("plain", "x");
  EXPECT_FALSE(profile_->writeString("a", "x", "1", path("missing\\Backup.job")));
  EXPECT_FALSE(profile_->writeString("a", "x", "1", path("plain\\Backup.job")));
  EXPECT_FALSE(profile_->writeString("a", "x", "1", folder_.path().string()));
  EXPECT_FALSE(profile_->writeString("a", "x", "1", ""));
}

TEST_F(ProfileFilesTest, AWriteThatFailsHalfWayLeavesTheOldFile) {
  const std::string before = "[a]\r\nx=1\r\n";
  fileHolds(before);
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{100, limit.rlim_max};
  auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  const bool isWritten = put("a", "x", std::string(500, 'v'));
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(isWritten);
  EXPECT_EQ(file(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 1);
}

TEST_F(ProfileFilesTest, AWriteKeepsModeAndLink) {
  folder_.write("real.job", "[a]\nx=1\n");
  ASSERT_EQ(::chmod((folder_ / "real.job").c_str(), 0640), 0);
  fs::create_symlink("real.job", folder_ / "Backup.job");
  EXPECT_TRUE(put("a", "x", "2"));
  EXPECT_TRUE(fs::is_symlink(folder_ / "Backup.job"));
  EXPECT_EQ(folder_.read("real.job"), "[a]\nx=2\n");
  EXPECT_EQ(fs::status(folder_ / "real.job").permissions(), fs::perms(0640));
}

TEST_F(ProfileFilesTest, AWriteByAnAdministratorKeepsTheOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only an administrator may give files away";
  constexpr uid_t kSomebody = 65534;
  fileHolds("[a]\nx=1\n");
  ASSERT_EQ(::chown((folder_ / "Backup.job").c_str(), kSomebody, kSomebody), 0);
  EXPECT_TRUE(put("a", "x", "2"));
  struct stat status {};
  ASSERT_EQ(::stat((folder_ / "Backup.job").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, kSomebody);
  EXPECT_EQ(status.st_gid, kSomebody);
}

TEST_F(ProfileFilesTest, WhatIsNoPlainFileReadsAsMissingAtOnce) {
  ASSERT_EQ(::mkfifo((folder_ / "Backup.job").c_str(), 0600), 0);
  EXPECT_EQ(get("a", "x"), kDefault);
  EXPECT_FALSE(put("a", "x", "1"));
  std::string buffer(20, ' ');
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 20, "Z:\\dev\\zero"), 9U);
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 20, folder_.path().string()), 9U);
}

TEST_F(ProfileFilesTest, AHugeFileReadsAsMissingAndIsLeftAlone) {
  fileHolds("[a]\nx=1\n");
  fs::resize_file(folder_ / "Backup.job", 1ULL << 40U);  // takes no room: the rest is a hole
  EXPECT_EQ(get("a", "x"), kDefault);
  EXPECT_FALSE(put("a", "x", "2"));
  EXPECT_EQ(fs::file_size(folder_ / "Backup.job"), 1ULL << 40U);
}

TEST_F(ProfileFilesTest, ABinaryFileIsReadWithoutHarm) {
  std::string bytes;
  unsigned state = 12345;
  for (int i = 0; i < 200'000; ++i) {
    state = state * 1664525U + 1013904223U;
    bytes += static_cast<char>(state >> 24U);
  }
  fileHolds(bytes);
  EXPECT_EQ(get("no such section", "x"), kDefault);
  EXPECT_TRUE(put("no such section", "x", "1"));
  EXPECT_EQ(get("no such section", "x"), "1");
  EXPECT_EQ(file().substr(0, bytes.size()), bytes);
}

}  // namespace
}  // namespace trelvin
