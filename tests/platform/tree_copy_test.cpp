#include "platform/linux/tree_copy.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "core/err.h"
#include "fakes/temp_folder.h"
#include "platform/linux/native_file.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

constexpr const char* kLeftover = ".trelvin-copy-0123456789abcdef.tmp";

// Copies the folder "source/site" into the folder "target" of a temporary folder.
class TreeCopyTest : public testing::Test {
 protected:
  TreeCopyTest() {
    folder_.makeFolder("source/site");
    folder_.makeFolder("target");
  }

  [[nodiscard]] std::string path(std::string_view relative) const {
    return windowsPath((folder_ / relative).string());
  }
  // The program's path of an item of the source.
  [[nodiscard]] std::string item(const std::string& name) const { return path("source/site") + "\\" + name; }

  std::int32_t copy(std::string_view from, std::string_view to) {
    return shell_->copy({path(from), path(to), "Copying files..."});
  }
  std::int32_t copySite() { return copy("source/site", "target"); }

  void writeSource(const std::string& name, std::string_view bytes) const {
    folder_.write("source/site/" + name, bytes);
  }
  [[nodiscard]] std::string readTarget(const std::string& name) const {
    return folder_.read("target/site/" + name);
  }
  [[nodiscard]] struct stat statusOf(const std::string& relative) const {
    struct stat status {};
    EXPECT_EQ(::lstat((folder_ / relative).c_str(), &status), 0) << relative;
    return status;
  }
  [[nodiscard]] mode_t modeOf(const std::string& relative) const {
    return statusOf(relative).st_mode & 07777U;
  }
  void setMode(const std::string& relative, mode_t mode) const {
    ASSERT_EQ(::chmod((folder_ / relative).c_str(), mode), 0) << relative;
  }
  void setTime(const std::string& relative, time_t seconds) const {
    const std::array<timespec, 2> times{timespec{seconds - 100, 0}, timespec{seconds, 123456789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / relative).c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
  }
  // The names in a folder.
  [[nodiscard]] std::set<std::string> namesIn(const std::string& relative) const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_ / relative)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  [[nodiscard]] int openDescriptors() const {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
  }

  TempFolder folder_;
  Paths paths_{(folder_ / "Network").string()};
  std::vector<std::string> lines_;
  std::vector<std::tuple<std::string, std::uint64_t, std::uint64_t>> progress_;
  std::chrono::steady_clock::time_point now_;
  std::chrono::milliseconds tick_{0};
  std::unique_ptr<Shell> shell_ =
      makeTreeCopy([this](std::string_view name) { return paths_.nativePath(name); },
                   [this](std::string_view line) { lines_.emplace_back(line); },
                   [this](std::string_view title, std::uint64_t done, std::uint64_t found) {
                     progress_.emplace_back(title, done, found);
                   },
                   [this] { return now_ += tick_; });
};

// Acts as somebody without an administrator's rights, who owns a tree.
class AsNobody {
 public:
  explicit AsNobody(const fs::path& tree) {
    if (::geteuid() != 0) return;
    isAdministrator_ = true;
    give(tree);
    for (const auto& entry : fs::recursive_directory_iterator(tree)) give(entry.path());
    if (::setegid(kNobody) != 0 || ::seteuid(kNobody) != 0)
      throw std::runtime_error("still an administrator");
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
  ~AsNobody() {
    if (isAdministrator_ && (::seteuid(0) != 0 || ::setegid(0) != 0)) std::abort();
  }

 private:
  static constexpr uid_t kNobody = 65534;
  static void give(const fs::path& path) {
    if (::lchown(path.c_str(), kNobody, kNobody) != 0)
      throw std::runtime_error("can't give " + path.string());
  }
  bool isAdministrator_ = false;
};

// No file of the process grows past a size.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t size) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int) = nullptr;
};

// A small disk of its own at a folder; only an administrator gets one.
class SmallDisk {
 public:
  SmallDisk(const fs::path& folder, const char* options) : folder_(folder) {
    isThere_ = ::mount("none", folder_.c_str(), "tmpfs", 0, options) == 0;
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (isThere_) ::umount(folder_.c_str());
  }
  [[nodiscard]] bool isThere() const { return isThere_; }

 private:
  fs::path folder_;
  bool isThere_ = false;
};

TEST_F(TreeCopyTest, AFolderGoesIntoTheTargetUnderItsOwnLastName) {
  writeSource("default.htm", "start");
  writeSource("images/logo.gif", "GIF");
  folder_.makeFolder("source/site/empty/below");
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("default.htm"), "start");
  EXPECT_EQ(readTarget("images/logo.gif"), "GIF");
  EXPECT_TRUE(fs::is_directory(folder_ / "target/site/empty/below"));
  EXPECT_THAT(namesIn("target"), ElementsAre("site"));
  EXPECT_THAT(namesIn("target/site"), UnorderedElementsAre("default.htm", "images", "empty"));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(TreeCopyTest, ASourceWithABackslashAtItsEndHasTheSameName) {
  writeSource("a", "x");
  EXPECT_EQ(shell_->copy({path("source/site") + "\\", path("target") + "\\", ""}), 0);
  EXPECT_EQ(readTarget("a"), "x");
}

TEST_F(TreeCopyTest, TheSourceIsFoundInAnyCaseAndKeepsItsName) {
  writeSource("a", "x");
  EXPECT_EQ(copy("SOURCE/Site", "TARGET"), 0);
  EXPECT_EQ(readTarget("a"), "x");
}

TEST_F(TreeCopyTest, AFileOfTheTargetIsOverwrittenAndOneThatOnlyTheTargetHasStays) {
  writeSource("same", "new");
  folder_.write("target/site/same", "old and longer");
  folder_.write("target/site/own", "own");
  folder_.write("target/site/folder/own", "own");
  writeSource("folder/new", "new");
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("same"), "new");
  EXPECT_EQ(readTarget("own"), "own");
  EXPECT_EQ(readTarget("folder/own"), "own");
  EXPECT_EQ(readTarget("folder/new"), "new");
}

TEST_F(TreeCopyTest, ASecondCopyChangesNothing) {
  writeSource("a/b/c", "x");
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("a/b/c"), "x");
  EXPECT_THAT(namesIn("target/site/a/b"), ElementsAre("c"));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(TreeCopyTest, AReadOnlyFileOfTheTargetIsOverwritten) {
  writeSource("file", "new");
  folder_.write("target/site/file", "old");
  setMode("target/site/file", 0444);
  AsNobody nobody(folder_.path());
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("file"), "new");
}

TEST_F(TreeCopyTest, TimesAndModesOfFilesAndNewFoldersAreKept) {
  writeSource("file", "x");
  writeSource("folder/below", "x");
  setMode("source/site/file", 0640);
  setMode("source/site/folder", 0510);
  setTime("source/site/folder/below", 1'000'000'000);
  setTime("source/site/file", 1'100'000'000);
  setTime("source/site/folder", 1'200'000'000);
  setTime("source/site", 1'300'000'000);
  EXPECT_EQ(copySite(), 0);
  for (const char* const name : {"", "/file", "/folder", "/folder/below"}) {
    const struct stat source = statusOf(std::string("source/site") + name);
    const struct stat target = statusOf(std::string("target/site") + name);
    EXPECT_EQ(target.st_mtim.tv_sec, source.st_mtim.tv_sec) << name;
    EXPECT_EQ(target.st_mtim.tv_nsec, 123456789) << name;
    EXPECT_EQ(target.st_mode, source.st_mode) << name;
    EXPECT_EQ(target.st_uid, source.st_uid) << name;
    EXPECT_EQ(target.st_gid, source.st_gid) << name;
  }
}

TEST_F(TreeCopyTest, AFolderThatNobodyMayWriteInStillGetsItsContent) {
  writeSource("closed/deep/file", "x");
  setMode("source/site/closed/deep", 0555);
  setMode("source/site/closed", 0555);
  {
    AsNobody nobody(folder_.path());
    EXPECT_EQ(copySite(), 0);
  }
  EXPECT_THAT(lines_, IsEmpty());
  EXPECT_EQ(readTarget("closed/deep/file"), "x");
  EXPECT_EQ(modeOf("target/site/closed"), 0555U);
  EXPECT_EQ(modeOf("target/site/closed/deep"), 0555U);
  for (const char* const name : {"source/site/closed", "target/site/closed"}) {
    setMode(name, 0755);
    setMode(std::string(name) + "/deep", 0755);
  }
}

TEST_F(TreeCopyTest, AFolderThatWasThereKeepsItsMode) {
  writeSource("folder/file", "x");
  setMode("source/site/folder", 0755);
  folder_.makeFolder("target/site/folder");
  setMode("target/site/folder", 0750);
  setTime("source/site/folder", 1'200'000'000);
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(modeOf("target/site/folder"), 0750U);
  EXPECT_EQ(statusOf("target/site/folder").st_mtim.tv_sec, 1'200'000'000);
}

TEST_F(TreeCopyTest, NoFileOfTheTargetRunsUnderAnotherAccount) {
  writeSource("tool", "x");
  setMode("source/site/tool", 06755);
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(modeOf("target/site/tool"), 0755U);
}

TEST_F(TreeCopyTest, AnAdministratorsCopyKeepsTheOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only an administrator may give files away";
  writeSource("folder/file", "x");
  ASSERT_EQ(::chown((folder_ / "source/site/folder").c_str(), 1234, 2345), 0);
  ASSERT_EQ(::chown((folder_ / "source/site/folder/file").c_str(), 1235, 2346), 0);
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(statusOf("target/site/folder").st_uid, 1234U);
  EXPECT_EQ(statusOf("target/site/folder").st_gid, 2345U);
  EXPECT_EQ(statusOf("target/site/folder/file").st_uid, 1235U);
  EXPECT_EQ(statusOf("target/site/folder/file").st_gid, 2346U);
}

TEST_F(TreeCopyTest, AttributesTravelButAccessListsDoNot) {
  writeSource("folder/file", "x");
  setMode("source/site/folder/file", 0444);
  const fs::path source = folder_ / "source/site/folder";
  for (const fs::path& each : {source, source / "file"}) {
    if (::setxattr(each.c_str(), "user.DOSATTRIB", "0x2", 3, 0) != 0) GTEST_SKIP() << "no attributes here";
    ASSERT_EQ(::setxattr(each.c_str(), "user.trelvin.acl", "list", 4, 0), 0);
  }
  EXPECT_EQ(copySite(), 0);
  const fs::path target = folder_ / "target/site/folder";
  for (const fs::path& each : {target, target / "file"}) {
    std::array<char, 16> value{};
    EXPECT_EQ(::getxattr(each.c_str(), "user.DOSATTRIB", value.data(), value.size()), 3) << each;
    EXPECT_EQ(std::string(value.data(), 3), "0x2");
    EXPECT_EQ(::getxattr(each.c_str(), "user.trelvin.acl", value.data(), value.size()), -1) << each;
    EXPECT_EQ(errno, ENODATA);
  }
}

TEST_F(TreeCopyTest, ANameInAnotherCaseIsTheSameFileAndKeepsItsName) {
  writeSource("index.htm", "new");
  writeSource("IMAGES/logo.gif", "new");
  folder_.write("target/site/Index.HTM", "old");
  folder_.write("target/site/Images/Logo.gif", "old");
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), UnorderedElementsAre("Index.HTM", "Images"));
  EXPECT_EQ(readTarget("Index.HTM"), "new");
  EXPECT_THAT(namesIn("target/site/Images"), ElementsAre("Logo.gif"));
  EXPECT_EQ(readTarget("Images/Logo.gif"), "new");
}

TEST_F(TreeCopyTest, CaseIsFoldedBeyondAscii) {
  writeSource("größe.htm", "new");
  folder_.write("target/site/GRÖßE.htm", "old");
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), ElementsAre("GRÖßE.htm"));
  EXPECT_EQ(readTarget("GRÖßE.htm"), "new");
}

TEST_F(TreeCopyTest, TheTargetFolderItselfIsFoundInAnyCase) {
  writeSource("a", "x");
  folder_.makeFolder("target/SITE");
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(namesIn("target"), ElementsAre("SITE"));
  EXPECT_EQ(folder_.read("target/SITE/a"), "x");
}

TEST_F(TreeCopyTest, ANameAsWrittenGoesBeforeOneInAnotherCase) {
  writeSource("page.htm", "new");
  folder_.write("target/site/PAGE.htm", "other");
  folder_.write("target/site/page.htm", "old");
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("PAGE.htm"), "other");
  EXPECT_EQ(readTarget("page.htm"), "new");
}

TEST_F(TreeCopyTest, OfNamesThatDifferInCaseOnlyTheFirstTravelsAndTheOthersAreReported) {
  writeSource("Page.htm", "first");
  writeSource("page.htm", "second");
  writeSource("Folder/a", "first");
  writeSource("folder/b", "second");
  EXPECT_NE(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), UnorderedElementsAre("Page.htm", "Folder"));
  EXPECT_EQ(readTarget("Page.htm"), "first");
  EXPECT_THAT(namesIn("target/site/Folder"), ElementsAre("a"));
  EXPECT_THAT(lines_, UnorderedElementsAre(AllOf(StartsWith(item("page.htm: ")), HasSubstr("'Page.htm'")),
                                           AllOf(StartsWith(item("folder: ")), HasSubstr("'Folder'"))));
}

TEST_F(TreeCopyTest, WhatDoesNotTravelNeverKeepsAFileOfAnotherCaseBack) {
  ASSERT_EQ(::mkfifo((folder_ / "source/site/PAGE.htm").c_str(), 0600), 0);
  fs::create_symlink("/nowhere", folder_ / "source/site/Page.htm");
  writeSource("page.htm", "x");
  EXPECT_NE(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), ElementsAre("page.htm"));
  EXPECT_EQ(readTarget("page.htm"), "x");
}

TEST_F(TreeCopyTest, NamesThatAreNoUtf8TravelByteForByte) {
  const std::vector<std::string> names{"Gr\xF6\xDF\x65.htm", "日本語", "back\\slash",
                                       "line\nbreak",        "  ",     "-rf"};
  for (const std::string& name : names) writeSource(name, name);
  EXPECT_EQ(copySite(), 0);
  for (const std::string& name : names) EXPECT_EQ(readTarget(name), name);
}

TEST_F(TreeCopyTest, ALineAboutANameWithALineBreakIsStillOneLine) {
  fs::create_symlink("nowhere", folder_ / "source/site/a\nb");
  EXPECT_NE(copySite(), 0);
  EXPECT_THAT(lines_, ElementsAre(StartsWith(item("a?b: "))));
}

TEST_F(TreeCopyTest, WhatCanNotBeReadIsReportedAndTheRestTravels) {
  writeSource("secret", "x");
  writeSource("closed/file", "x");
  writeSource("open/file", "x");
  setMode("source/site/secret", 0);
  setMode("source/site/closed", 0);
  std::int32_t number = 0;
  {
    AsNobody nobody(folder_.path());
    number = copySite();
  }
  setMode("source/site/closed", 0755);
  EXPECT_EQ(number, 5);
  EXPECT_THAT(lines_, UnorderedElementsAre(item("secret: ") + systemText(EACCES),
                                           item("closed: ") + systemText(EACCES)));
  EXPECT_EQ(readTarget("open/file"), "x");
  EXPECT_FALSE(folder_.has("target/site/secret"));
}

TEST_F(TreeCopyTest, WhatCanNotBeWrittenIsReportedAndTheRestTravels) {
  writeSource("closed/file", "x");
  writeSource("open/file", "x");
  folder_.makeFolder("target/site/closed");
  setMode("target/site/closed", 0555);
  {
    AsNobody nobody(folder_.path());
    EXPECT_EQ(copySite(), 5);
  }
  setMode("target/site/closed", 0755);
  EXPECT_THAT(lines_, ElementsAre(item("closed\\file: ") + systemText(EACCES)));
  EXPECT_EQ(readTarget("open/file"), "x");
}

TEST_F(TreeCopyTest, ALinkToAFileOfTheTreeTravelsAsThatFile) {
  writeSource("real/page.htm", "content");
  folder_.makeFolder("source/site/links");
  fs::create_symlink("../real/page.htm", folder_ / "source/site/links/relative.htm");
  fs::create_symlink(folder_ / "source/site/real/page.htm", folder_ / "source/site/links/absolute.htm");
  fs::create_symlink("relative.htm", folder_ / "source/site/links/twice.htm");
  EXPECT_EQ(copySite(), 0);
  for (const char* const name : {"links/relative.htm", "links/absolute.htm", "links/twice.htm"}) {
    EXPECT_EQ(readTarget(name), "content");
    EXPECT_TRUE(S_ISREG(statusOf(std::string("target/site/") + name).st_mode)) << name;
  }
}

TEST_F(TreeCopyTest, ALinkOutOfTheTreeIsNotFollowed) {
  folder_.write("source/secret", "x");
  folder_.write("source/site2/secret", "x");
  fs::create_symlink("../secret", folder_ / "source/site/up");
  // A neighbour whose name begins like the tree's is none of the tree either.
  fs::create_symlink("../site2/secret", folder_ / "source/site/beside");
  fs::create_symlink("/etc", folder_ / "source/site/etc");
  EXPECT_EQ(copySite(), 50);
  EXPECT_THAT(namesIn("target/site"), IsEmpty());
  const auto leadsOut = HasSubstr("leads out");
  EXPECT_THAT(lines_, UnorderedElementsAre(AllOf(StartsWith(item("up: ")), leadsOut),
                                           AllOf(StartsWith(item("beside: ")), leadsOut),
                                           AllOf(StartsWith(item("etc: ")), leadsOut)));
}

TEST_F(TreeCopyTest, ALinkToAFolderOrToNothingIsLeftOut) {
  writeSource("real/file", "x");
  fs::create_symlink("real", folder_ / "source/site/folder");
  fs::create_symlink(".", folder_ / "source/site/real/round");
  fs::create_symlink("gone", folder_ / "source/site/dangling");
  fs::create_symlink("circle", folder_ / "source/site/circle");
  EXPECT_NE(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), ElementsAre("real"));
  EXPECT_THAT(namesIn("target/site/real"), ElementsAre("file"));
  EXPECT_THAT(lines_, UnorderedElementsAre(StartsWith(item("folder: ")), StartsWith(item("real\\round: ")),
                                           item("dangling: ") + systemText(ENOENT),
                                           item("circle: ") + systemText(ELOOP)));
}

TEST_F(TreeCopyTest, ASourceAndATargetMayBeLinksThemselves) {
  writeSource("a", "x");
  folder_.makeFolder("elsewhere");
  fs::create_directory_symlink(folder_ / "source/site", folder_ / "shop");
  fs::create_directory_symlink(folder_ / "elsewhere", folder_ / "target/shop");
  EXPECT_EQ(copy("shop", "target"), 0);
  EXPECT_EQ(folder_.read("elsewhere/a"), "x");
}

TEST_F(TreeCopyTest, ALinkOfTheTargetIsNeverWrittenThrough) {
  writeSource("file", "new");
  writeSource("folder/file", "new");
  folder_.write("outside/file", "untouched");
  folder_.makeFolder("target/site");
  fs::create_symlink("../../outside/file", folder_ / "target/site/file");
  fs::create_directory_symlink("../../outside", folder_ / "target/site/folder");
  EXPECT_EQ(copySite(), 0x7E);
  EXPECT_EQ(folder_.read("outside/file"), "untouched");
  EXPECT_EQ(readTarget("file"), "new");
  EXPECT_THAT(lines_, ElementsAre(AllOf(StartsWith(item("folder: ")), HasSubstr("link"))));
}

TEST_F(TreeCopyTest, WhatIsNeitherFileNorFolderIsReportedAndNeverOpened) {
  ASSERT_EQ(::mkfifo((folder_ / "source/site/pipe").c_str(), 0600), 0);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string place = (folder_ / "source/site/socket").string();
  ASSERT_LT(place.size(), sizeof address.sun_path);
  place.copy(address.sun_path, place.size());
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  writeSource("file", "x");
  fs::create_symlink("pipe", folder_ / "source/site/toPipe");
  EXPECT_EQ(copySite(), 50);
  ::close(socket);
  EXPECT_THAT(namesIn("target/site"), ElementsAre("file"));
  EXPECT_THAT(lines_, UnorderedElementsAre(StartsWith(item("pipe: ")), StartsWith(item("socket: ")),
                                           StartsWith(item("toPipe: "))));
}

TEST_F(TreeCopyTest, AFolderInAFilesPlaceKeepsTheFileBack) {
  writeSource("name", "x");
  writeSource("other", "x");
  folder_.write("target/site/Name/own", "own");
  EXPECT_EQ(copySite(), 0x80);
  EXPECT_THAT(lines_, ElementsAre(item("name: a folder stands in its place")));
  EXPECT_EQ(readTarget("Name/own"), "own");
  EXPECT_EQ(readTarget("other"), "x");
}

TEST_F(TreeCopyTest, AFileInAFoldersPlaceKeepsTheFolderBack) {
  writeSource("name/below", "x");
  writeSource("other", "x");
  folder_.write("target/site/Name", "own");
  EXPECT_EQ(copySite(), 0x7E);
  EXPECT_THAT(lines_, ElementsAre(item("name: a file stands in its place")));
  EXPECT_EQ(readTarget("Name"), "own");
  EXPECT_EQ(readTarget("other"), "x");
}

TEST_F(TreeCopyTest, AFileInThePlaceOfTheWholeFolderEndsTheCopy) {
  folder_.write("target/site", "own");
  EXPECT_EQ(copySite(), 0x7E);
  EXPECT_THAT(lines_, ElementsAre(StartsWith(path("target") + ": ")));
  EXPECT_EQ(folder_.read("target/site"), "own");
}

TEST_F(TreeCopyTest, ASourceThatIsNotThereIsRefused) {
  EXPECT_EQ(copy("source/missing", "target"), 0x402);
  EXPECT_THAT(lines_, ElementsAre(path("source/missing") + ": there is no such folder"));
  EXPECT_THAT(namesIn("target"), IsEmpty());
}

TEST_F(TreeCopyTest, ASourceThatIsAFileOrNoNameIsRefused) {
  folder_.write("source/file", "x");
  EXPECT_EQ(copy("source/file", "target"), 0x402);
  EXPECT_EQ(shell_->copy({"", path("target"), ""}), 0x402);
  EXPECT_EQ(shell_->copy({"\\\\..\\C$\\x", path("target"), ""}), 0x402);
  EXPECT_EQ(shell_->copy({"Z:\\", path("target"), ""}), 0x7C);
  EXPECT_THAT(namesIn("target"), IsEmpty());
}

TEST_F(TreeCopyTest, ATargetThatIsNotThereIsNotMade) {
  EXPECT_EQ(copy("source/site", "missing"), 0x7C);
  EXPECT_THAT(lines_, ElementsAre(path("missing") + ": there is no such folder"));
  EXPECT_FALSE(folder_.has("missing"));
  EXPECT_EQ(shell_->copy({path("source/site"), "", ""}), 0x7C);
}

TEST_F(TreeCopyTest, AFolderIsNotCopiedOntoItself) {
  writeSource("a", "x");
  EXPECT_EQ(copy("source/site", "source"), 0x71);
  fs::create_directory_symlink("source", folder_ / "sameSource");
  EXPECT_EQ(copy("source/site", "sameSource"), 0x71);
  EXPECT_THAT(namesIn("source/site"), ElementsAre("a"));
  EXPECT_EQ(folder_.read("source/site/a"), "x");
}

TEST_F(TreeCopyTest, AFolderIsNotCopiedIntoItself) {
  writeSource("a/b/c", "x");
  EXPECT_EQ(copy("source/site", "source/site"), 0x76);
  EXPECT_EQ(copy("source/site", "source/site/a/b"), 0x76);
  EXPECT_THAT(namesIn("source/site"), ElementsAre("a"));
  EXPECT_THAT(namesIn("source/site/a/b"), ElementsAre("c"));
  EXPECT_THAT(lines_, SizeIs(2));
}

TEST_F(TreeCopyTest, AFolderThatLiesInItsTargetEnds) {
  folder_.write("site/site/file", "x");
  folder_.write("site/site/site/deeper", "y");
  EXPECT_EQ(copy("site/site", ""), 0x76);
  EXPECT_EQ(folder_.read("site/file"), "x");
  EXPECT_EQ(folder_.read("site/site/site/deeper"), "y");
  EXPECT_FALSE(folder_.has("site/site/deeper"));
  EXPECT_THAT(lines_, ElementsAre(StartsWith(path("site/site/site") + ": ")));
}

TEST_F(TreeCopyTest, ATargetThatIsMountedFromWithinTheSourceEnds) {
  writeSource("sub/file", "x");
  if (::mount((folder_ / "source/site/sub").c_str(), (folder_ / "target").c_str(), nullptr, MS_BIND,
              nullptr) != 0) {
    GTEST_SKIP() << "only an administrator may mount";
  }
  const std::int32_t number = copySite();
  EXPECT_EQ(folder_.read("target/site/sub/file"), "x");
  ASSERT_EQ(::umount((folder_ / "target").c_str()), 0);
  EXPECT_EQ(number, 0x76);
  EXPECT_THAT(lines_, ElementsAre(StartsWith(item("sub\\site: "))));
}

TEST_F(TreeCopyTest, AFileHasItsNameOnlyWhenItIsWhole) {
  writeSource("large", std::string(100'000, 'x'));
  writeSource("small", "x");
  folder_.write("target/site/large", "old");
  std::int32_t number = 0;
  {
    SizeLimit limit(50'000);
    number = copySite();
  }
  EXPECT_EQ(number, 223);
  EXPECT_THAT(lines_, ElementsAre(item("large: ") + systemText(EFBIG)));
  EXPECT_EQ(readTarget("large"), "old");
  EXPECT_EQ(readTarget("small"), "x");
  EXPECT_THAT(namesIn("target/site"), UnorderedElementsAre("large", "small"));
}

TEST_F(TreeCopyTest, AFullDiskEndsTheCopyAndLeavesNoHalfFile) {
  const SmallDisk disk(folder_ / "target", "size=256k");
  if (!disk.isThere()) GTEST_SKIP() << "only an administrator may mount";
  for (int i = 0; i < 200; ++i) writeSource("file" + std::to_string(i), std::string(10'000, 'x'));
  EXPECT_EQ(copySite(), 112);
  // The two threads may both meet the end.
  ASSERT_GE(lines_.size(), 2U);
  ASSERT_LE(lines_.size(), 3U);
  EXPECT_THAT(lines_.front(), EndsWith(systemText(ENOSPC)));
  EXPECT_EQ(lines_.back(), path("source/site") + ": the copy ends here: the disk is full");
  const std::set<std::string> names = namesIn("target/site");
  EXPECT_GT(names.size(), 10U);
  for (const std::string& name : names) {
    EXPECT_THAT(name, StartsWith("file"));
    EXPECT_EQ(readTarget(name).size(), 10'000U);
  }
}

TEST_F(TreeCopyTest, ADiskThatTakesNoMoreFoldersIsFullToo) {
  const SmallDisk disk(folder_ / "target", "nr_inodes=10");
  if (!disk.isThere()) GTEST_SKIP() << "only an administrator may mount";
  for (int i = 0; i < 50; ++i) folder_.makeFolder("source/site/folder" + std::to_string(i));
  EXPECT_EQ(copySite(), 112);
  EXPECT_THAT(lines_, SizeIs(2));
}

TEST_F(TreeCopyTest, FilesGoToAnotherFileSystem) {
  const SmallDisk disk(folder_ / "target", "size=8m");
  if (!disk.isThere()) GTEST_SKIP() << "only an administrator may mount";
  std::string large(1'000'000, 'x');
  for (std::size_t i = 0; i < large.size(); i += 997) large[i] = static_cast<char>('a' + i % 26);
  writeSource("large", large);
  writeSource("empty", "");
  setTime("source/site/large", 1'000'000'000);
  EXPECT_EQ(copySite(), 0);
  EXPECT_TRUE(readTarget("large") == large);
  EXPECT_EQ(readTarget("empty"), "");
  EXPECT_EQ(statusOf("target/site/large").st_mtim.tv_sec, 1'000'000'000);
}

TEST_F(TreeCopyTest, HolesStayHolesInFilesOfMoreThanFourGigabytes) {
  const fs::path file = folder_.write("source/site/sparse", "begin");
  constexpr off_t kFar = (off_t{5} << 30) + 12345;
  {
    const Descriptor opened = openFile(file.string(), O_WRONLY);
    ASSERT_EQ(::pwrite(opened.get(), "middle", 6, off_t{3} << 30), 6);
    ASSERT_EQ(::pwrite(opened.get(), "end", 3, kFar), 3);
    ASSERT_EQ(::ftruncate(opened.get(), kFar + (1 << 20)), 0);
  }
  if (statusOf("source/site/sparse").st_blocks > 10'000) GTEST_SKIP() << "no holes here";
  EXPECT_EQ(copySite(), 0);
  const struct stat target = statusOf("target/site/sparse");
  EXPECT_EQ(target.st_size, kFar + (1 << 20));
  EXPECT_LT(target.st_blocks, 10'000);
  const Descriptor opened = openFile((folder_ / "target/site/sparse").string(), O_RDONLY);
  std::array<char, 8> bytes{};
  ASSERT_EQ(::pread(opened.get(), bytes.data(), 6, off_t{3} << 30), 6);
  EXPECT_EQ(std::string(bytes.data(), 6), "middle");
  ASSERT_EQ(::pread(opened.get(), bytes.data(), 4, kFar - 1), 4);
  EXPECT_EQ(std::string(bytes.data(), 4), std::string("\0end", 4));
}

TEST_F(TreeCopyTest, AFileOfNothingButAHoleKeepsItsSize) {
  const Descriptor file = openFile((folder_ / "source/site/hole").string(), O_WRONLY | O_CREAT, 0644);
  ASSERT_EQ(::ftruncate(file.get(), 1 << 20), 0);
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(readTarget("hole"), std::string(1 << 20, '\0'));
}

TEST_F(TreeCopyTest, LeftoversOfAKilledCopyAreTakenAwayAndDoNotTravel) {
  writeSource("folder/a", "x");
  writeSource(std::string("folder/") + kLeftover, "half");
  folder_.write(std::string("target/site/folder/") + kLeftover, "half");
  folder_.write("target/site/folder/.trelvin-copy-not-ours.tmp", "somebody's");
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(namesIn("target/site/folder"), UnorderedElementsAre("a", ".trelvin-copy-not-ours.tmp"));
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(TreeCopyTest, TheTemporaryFileOfARunningCopyStays) {
  writeSource("a", "x");
  const fs::path busy = folder_.write(std::string("target/site/") + kLeftover, "half");
  const Descriptor other = openFile(busy.string(), O_RDWR);
  ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(namesIn("target/site"), UnorderedElementsAre("a", kLeftover));
}

TEST_F(TreeCopyTest, AKilledCopyLeavesOnlyWholeFilesAndTheNextOneTidiesUp) {
  const std::string content(300'000, 'x');
  for (int i = 0; i < 300; ++i) writeSource("file" + std::to_string(i), content);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    copySite();
    ::_exit(0);
  }
  // Killed as soon as it is in the middle of its work.
  while (!folder_.has("target/site") || namesIn("target/site").size() < 5) std::this_thread::yield();
  ASSERT_EQ(::kill(child, SIGKILL), 0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  for (const std::string& name : namesIn("target/site")) {
    if (!name.starts_with("file")) continue;
    EXPECT_EQ(readTarget(name).size(), content.size()) << name;
  }
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(namesIn("target/site"), namesIn("source/site"));
}

// A tree of folders of one name within each other, deeper than any path can tell, with a file at its end.
class Chain {
 public:
  Chain(const fs::path& root, std::size_t depth) : root_(root), depth_(depth) {
    fs::create_directory(root);
    Descriptor here = openFile(root.string(), O_RDONLY | O_DIRECTORY);
    for (std::size_t i = 0; i < depth; ++i) {
      if (::mkdirat(here.get(), kName.c_str(), 0755) != 0) throw std::runtime_error("no folder");
      here = next(here);
    }
    writeAll(Descriptor(::openat(here.get(), "end", O_WRONLY | O_CREAT, 0644)), "at the end");
  }
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;
  ~Chain() { remove(root_); }

  // What the file at the end of a chain holds.
  [[nodiscard]] std::string endOf(const fs::path& root) const {
    Descriptor here = openFile(root.string(), O_RDONLY | O_DIRECTORY);
    for (std::size_t i = 0; i < depth_; ++i) here = next(here);
    const Descriptor end(::openat(here.get(), "end", O_RDONLY));
    std::array<char, 32> bytes{};
    const ssize_t count = ::read(end.get(), bytes.data(), bytes.size());
    return count < 0 ? std::string("no end") : std::string(bytes.data(), static_cast<std::size_t>(count));
  }

  // Takes a chain apart from the top; what walks down from its root would hold too many folders open.
  static void remove(const fs::path& root) {
    const fs::path below = root / kName;
    fs::path spare = root.string() + "-spare";
    std::error_code failed;
    while (fs::exists(below, failed)) {
      fs::rename(below, spare);
      fs::remove_all(root);
      fs::rename(spare, root);
    }
    fs::remove_all(root);
  }

 private:
  static Descriptor next(const Descriptor& folder) {
    return Descriptor(::openat(folder.get(), kName.c_str(), O_RDONLY | O_DIRECTORY));
  }

  inline static const std::string kName = std::string(100, 'd');
  fs::path root_;
  std::size_t depth_;
};

TEST_F(TreeCopyTest, ATreeDeeperThanAnyPathTravelsWithFewOpenFiles) {
  const Chain chain(folder_ / "source/deep", 300);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few{256, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  EXPECT_EQ(copy("source/deep", "target"), 0);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_THAT(lines_, IsEmpty());
  EXPECT_EQ(chain.endOf(folder_ / "target/deep"), "at the end");
  Chain::remove(folder_ / "target/deep");
}

TEST_F(TreeCopyTest, FoldersOnTheWayBackFromTheDepthStillGetTheirContentAndTimes) {
  std::string place = "source/site";
  for (int depth = 0; depth < 100; ++depth) {
    folder_.write(place + "/z/file", "x");
    folder_.write(place + "/a/file", "x");
    place += "/m";
    folder_.makeFolder(place);
  }
  while (place != "source/site") {
    setTime(place, 1'000'000'000 + static_cast<time_t>(place.size()));
    place.resize(place.size() - 2);
  }
  EXPECT_EQ(copySite(), 0);
  place = "/site";
  for (int depth = 0; depth < 100; ++depth) {
    EXPECT_TRUE(folder_.has("target" + place + "/z/file")) << depth;
    EXPECT_TRUE(folder_.has("target" + place + "/a/file")) << depth;
    place += "/m";
    EXPECT_EQ(statusOf("target" + place).st_mtim.tv_sec, statusOf("source" + place).st_mtim.tv_sec) << depth;
  }
}

TEST_F(TreeCopyTest, ManyFilesInManyFoldersAllTravel) {
  for (int folder = 0; folder < 100; ++folder) {
    for (int file = 0; file < 10; ++file) {
      const std::string name = "f" + std::to_string(folder) + "/" + std::to_string(file);
      writeSource(name, name);
    }
  }
  const int before = openDescriptors();
  EXPECT_EQ(copySite(), 0);
  EXPECT_EQ(openDescriptors(), before);
  for (int folder = 0; folder < 100; ++folder) {
    for (int file = 0; file < 10; ++file) {
      const std::string name = "f" + std::to_string(folder) + "/" + std::to_string(file);
      ASSERT_EQ(readTarget(name), name);
    }
  }
}

TEST_F(TreeCopyTest, AShortCopyShowsNoProgress) {
  for (int i = 0; i < 100; ++i) writeSource(std::to_string(i), "x");
  EXPECT_EQ(copySite(), 0);
  EXPECT_THAT(progress_, IsEmpty());
}

TEST_F(TreeCopyTest, ALongCopyShowsProgressNowAndThen) {
  tick_ = std::chrono::milliseconds(40);
  for (int i = 0; i < 100; ++i) writeSource(std::to_string(i), "x");
  EXPECT_EQ(copySite(), 0);
  // 100 files take 4 seconds and a bit by this clock: 3.5 of them with a step every 120 ms. The rest of the
  // wait depends on the machine.
  ASSERT_GE(progress_.size(), 25U);
  EXPECT_LE(progress_.size(),
            static_cast<std::size_t>(now_.time_since_epoch() / std::chrono::milliseconds(100)));
  std::uint64_t last = 0;
  for (const auto& [title, done, found] : progress_) {
    EXPECT_EQ(title, "Copying files...");
    EXPECT_LE(done, found);
    EXPECT_LE(last, done);
    EXPECT_LE(found, 100U);
    last = done;
  }
}

TEST_F(TreeCopyTest, LinesAndProgressComeOnTheCallersThread) {
  std::set<std::thread::id> threads;
  tick_ = std::chrono::seconds(1);
  shell_ = makeTreeCopy(
      [this](std::string_view name) { return paths_.nativePath(name); },
      [&](std::string_view) { threads.insert(std::this_thread::get_id()); },
      [&](std::string_view, std::uint64_t, std::uint64_t) { threads.insert(std::this_thread::get_id()); },
      [this] { return now_ += tick_; });
  for (int i = 0; i < 200; ++i) fs::create_symlink("nowhere", folder_ / ("source/site/" + std::to_string(i)));
  EXPECT_EQ(copySite(), 2);
  EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id()));
}

TEST_F(TreeCopyTest, AReportThatFailsDoesNotEndTheCopy) {
  shell_ = makeTreeCopy([this](std::string_view name) { return paths_.nativePath(name); },
                        [](std::string_view) { throw Failure(error_number::kDiskFull); }, {});
  fs::create_symlink("nowhere", folder_ / "source/site/link");
  writeSource("file", "x");
  EXPECT_EQ(copySite(), 2);
  EXPECT_EQ(readTarget("file"), "x");
}

}  // namespace
}  // namespace trelvin
