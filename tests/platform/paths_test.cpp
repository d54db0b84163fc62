#include "platform/linux/paths.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "core/err.h"
#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

using test::TempFolder;

class PathsTest : public testing::Test {
 protected:
  [[nodiscard]] std::string below(std::string_view relative) const { return (network_ / relative).string(); }
  [[nodiscard]] std::string native(std::string_view path) const { return paths_.nativePath(path); }
  // The temporary folder in the program's form.
  [[nodiscard]] std::string inZ(std::string_view relative) const {
    return windowsPath(network_.path().string()) + "\\" + std::string(relative);
  }

  std::int32_t numberOf(std::string_view path) const {
    try {
      static_cast<void>(native(path));
    } catch (const Failure& failure) {
      return failure.number();
    }
    return 0;
  }

  TempFolder network_;
  Paths paths_{network_.path().string()};
};

// The current directory of the process, put back at the end.
class CurrentDirectory {
 public:
  explicit CurrentDirectory(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }
  CurrentDirectory(const CurrentDirectory&) = delete;
  CurrentDirectory& operator=(const CurrentDirectory&) = delete;
  ~CurrentDirectory() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(PathsTest, DriveZIsTheRoot) {
  EXPECT_EQ(native("Z:\\"), "/");
  EXPECT_EQ(native("Z:"), "/");
  EXPECT_EQ(native("z:\\proc\\self"), "/proc/self");
  EXPECT_EQ(native("Z:proc"), "/proc");
}

TEST_F(PathsTest, APathWithoutADriveThatBeginsAtTheRootStaysThere) {
  EXPECT_EQ(native("\\proc\\self"), "/proc/self");
  EXPECT_EQ(native("/proc/self"), "/proc/self");
}

TEST_F(PathsTest, ASlashCountsAsABackslash) {
  network_.makeFolder("web1/C$/Inetpub");
  EXPECT_EQ(native("//web1/C$/Inetpub"), below("web1/C$/Inetpub"));
  EXPECT_EQ(native("\\\\web1/C$\\Inetpub/new"), below("web1/C$/Inetpub/new"));
}

TEST_F(PathsTest, AShareLiesBelowTheNetworkFolderInAnyCase) {
  network_.makeFolder("Web1/D$/Sites");
  EXPECT_EQ(native("\\\\WEB1\\d$\\sites\\Default.htm"), below("Web1/D$/Sites/Default.htm"));
  EXPECT_EQ(native("\\\\web1\\D$"), below("Web1/D$"));
  EXPECT_EQ(native("\\\\web1\\D$\\"), below("Web1/D$"));
}

TEST_F(PathsTest, AnyOtherDriveIsAShareOfThisServer) {
  network_.makeFolder("Localhost/D$/Sites");
  EXPECT_EQ(native("D:\\Sites\\x"), below("Localhost/D$/Sites/x"));
  EXPECT_EQ(native("d:sites"), below("Localhost/D$/Sites"));
  EXPECT_EQ(native("E:\\x"), below("Localhost/E$/x"));
}

TEST_F(PathsTest, TheServerOfDrivesIsFoundInAnyCase) {
  network_.makeFolder("LOCALHOST/c$/x");
  EXPECT_EQ(native("C:\\x"), below("LOCALHOST/c$/x"));
}

TEST_F(PathsTest, ANameWithoutAFolderStaysRelative) {
  const CurrentDirectory here(network_.path());
  EXPECT_EQ(native("Trelvin.log"), "Trelvin.log");
  EXPECT_EQ(native("logs\\Trelvin.log"), "logs/Trelvin.log");
  EXPECT_EQ(native(".\\Trelvin.log"), "Trelvin.log");
  EXPECT_EQ(native("."), ".");
}

TEST_F(PathsTest, ARelativeNameIsFoundInAnyCase) {
  network_.write("Logs/Old.log", "");
  const CurrentDirectory here(network_.path());
  EXPECT_EQ(native("LOGS\\OLD.LOG"), "Logs/Old.log");
}

TEST_F(PathsTest, ARelativeNameMayLeaveTheCurrentDirectory) {
  network_.write("beside.txt", "");
  network_.makeFolder("inner");
  const CurrentDirectory here(network_ / "inner");
  EXPECT_EQ(native("..\\Beside.TXT"), "../beside.txt");
  EXPECT_EQ(native("..\\..\\x"), "../../x");
  EXPECT_EQ(native("a\\..\\b"), "b");
}

TEST_F(PathsTest, AComponentThatIsThereAsWrittenWins) {
  network_.write("Sites/INDEX.HTM", "");
  network_.write("Sites/index.htm", "");
  EXPECT_EQ(native(inZ("sites\\index.htm")), below("Sites/index.htm"));
  EXPECT_EQ(native(inZ("SITES\\INDEX.HTM")), below("Sites/INDEX.HTM"));
}

TEST_F(PathsTest, OfSeveralThatDifferInCaseTheFirstInByteOrderIsTaken) {
  network_.write("readme", "");
  network_.write("README", "");
  network_.write("ReadMe", "");
  EXPECT_EQ(native(inZ("rEADmE")), below("README"));
}

TEST_F(PathsTest, CaseIsFoldedBeyondAscii) {
  network_.makeFolder("Büro/ЖУРНАЛ");
  EXPECT_EQ(native(inZ("BÜRO\\журнал")), below("Büro/ЖУРНАЛ"));
}

TEST_F(PathsTest, WhatIsThereInNoCaseStaysAsWritten) {
  network_.makeFolder("Sites");
  EXPECT_EQ(native(inZ("SITES\\New\\Index.HTM")), below("Sites/New/Index.HTM"));
}

TEST_F(PathsTest, ASymbolicLinkThatLeadsNowhereCountsAsThere) {
  std::filesystem::create_symlink("nowhere", network_ / "Link");
  EXPECT_EQ(native(inZ("LINK")), below("Link"));
}

TEST_F(PathsTest, DotsNeverLeadOutOfAShare) {
  network_.makeFolder("web1/C$");
  network_.makeFolder("Localhost/C$");
  EXPECT_EQ(native("\\\\web1\\C$\\..\\..\\etc"), below("web1/C$/etc"));
  EXPECT_EQ(native("\\\\web1\\C$\\a\\..\\..\\..\\etc\\passwd"), below("web1/C$/etc/passwd"));
  EXPECT_EQ(native("C:\\..\\..\\..\\..\\etc"), below("Localhost/C$/etc"));
  EXPECT_EQ(native("//web1/C$/../../../etc"), below("web1/C$/etc"));
  EXPECT_EQ(native("Z:\\..\\..\\proc"), "/proc");
}

TEST_F(PathsTest, DotsAreTakenOutByTheTextAlone) {
  network_.makeFolder("web1/C$/b");
  EXPECT_EQ(native("\\\\web1\\C$\\.\\missing\\..\\b\\.\\c"), below("web1/C$/b/c"));
}

TEST_F(PathsTest, ANetworkPathWithoutAPlainServerAndShareIsABadName) {
  for (const char* const path : {"\\\\", "\\\\web1", "\\\\web1\\", "\\\\.\\C$\\x", "\\\\..\\C$\\x",
                                 "\\\\web1\\..\\x", "\\\\web1\\.\\x", "//../../etc"}) {
    EXPECT_EQ(numberOf(path), error_number::kBadFileName) << path;
  }
}

TEST_F(PathsTest, AnEmptyPathAndOneWithANulAreBadNames) {
  EXPECT_EQ(numberOf(""), error_number::kBadFileName);
  EXPECT_EQ(numberOf(std::string_view("Z:\\a\0b", 6)), error_number::kBadFileName);
}

TEST_F(PathsTest, ANativePathReadsAsDriveZ) {
  EXPECT_EQ(windowsPath("/opt/trelvin"), "Z:\\opt\\trelvin");
  EXPECT_EQ(windowsPath("/opt/trelvin/"), "Z:\\opt\\trelvin");
  EXPECT_EQ(windowsPath("/"), "Z:\\");
  EXPECT_EQ(windowsPath("logs/x"), "logs\\x");
}

TEST_F(PathsTest, ANativePathSurvivesTheWayThereAndBack) {
  const std::string folder = network_.makeFolder("Ein Ordner/ü").string();
  EXPECT_EQ(native(windowsPath(folder)), folder);
}

TEST_F(PathsTest, TheMetabaseFileOfAServerIsFoundInAnyCase) {
  network_.write("WEB1/c$/Windows/System32/inetsrv/metabase.XML", "<x/>");
  EXPECT_EQ(paths_.metabaseFileOf("web1"), below("WEB1/c$/Windows/System32/inetsrv/metabase.XML"));
}

TEST_F(PathsTest, TheMetabaseFileMayLieInTheOlderSystemFolder) {
  network_.write("web2/C$/WINNT/system32/inetsrv/MetaBase.xml", "<x/>");
  EXPECT_EQ(paths_.metabaseFileOf("web2"), below("web2/C$/WINNT/system32/inetsrv/MetaBase.xml"));
}

TEST_F(PathsTest, OfTwoMetabaseFilesTheOneInWindowsCounts) {
  network_.write("web1/C$/WINNT/system32/inetsrv/MetaBase.xml", "<x/>");
  network_.write("web1/C$/WINDOWS/system32/inetsrv/MetaBase.xml", "<x/>");
  EXPECT_EQ(paths_.metabaseFileOf("web1"), below("web1/C$/WINDOWS/system32/inetsrv/MetaBase.xml"));
}

TEST_F(PathsTest, AServerWithoutAMetabaseFileHasNone) {
  network_.makeFolder("web1/C$/WINDOWS/system32/inetsrv/MetaBase.xml");  // a folder is no file
  EXPECT_EQ(paths_.metabaseFileOf("web1"), std::nullopt);
  EXPECT_EQ(paths_.metabaseFileOf("nobody"), std::nullopt);
}

TEST_F(PathsTest, NoTextThatIsNoServerNameLeavesTheNetworkFolder) {
  // Each of these would find a file if it were put into a path as it stands.
  network_.write("C$/WINDOWS/system32/inetsrv/MetaBase.xml", "<x/>");
  network_.write("net/C$/WINDOWS/system32/inetsrv/MetaBase.xml", "<x/>");
  network_.write("net/web1/C$/WINDOWS/system32/inetsrv/MetaBase.xml", "<x/>");
  const Paths paths((network_ / "net").string());
  ASSERT_TRUE(paths.metabaseFileOf("web1"));
  for (const std::string_view server :
       {std::string_view(""), std::string_view("."), std::string_view(".."), std::string_view("web1/."),
        std::string_view("../net/web1"), std::string_view("..\\net\\web1"), std::string_view("/"),
        std::string_view("\\"), std::string_view("web1\0", 5)}) {
    EXPECT_EQ(paths.metabaseFileOf(server), std::nullopt) << server;
  }
}

TEST(ProgramPathsTest, TheEnvironmentNamesTheNetworkFolder) {
  const TempFolder named;
  const TempFolder program;
  ::setenv("TRELVIN_NETWORK", named.path().c_str(), 1);
  EXPECT_EQ(Paths::ofProgram(program.path().string()).nativePath("\\\\a\\C$"), (named / "a/C$").string());
  ::setenv("TRELVIN_NETWORK", "", 1);
  EXPECT_EQ(Paths::ofProgram(program.path().string()).nativePath("\\\\a\\C$"),
            (program / "Network/a/C$").string());
  ::unsetenv("TRELVIN_NETWORK");
  EXPECT_EQ(Paths::ofProgram(program.path().string()).nativePath("\\\\a\\C$"),
            (program / "Network/a/C$").string());
}

TEST(ProgramPathsTest, TheExecutablesFolderHoldsTheRunningProgram) {
  EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::path(executableFolder()) / "platform_tests",
                                          "/proc/self/exe"));
}

}  // namespace
}  // namespace trelvin
