#include "platform/linux/program_opener.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "fakes/temp_folder.h"
#include "platform/linux/file_system.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;

// A folder with a program xdg-open of its own, which writes down what it is called with.
class ProgramOpenerTest : public testing::Test {
 protected:
  ProgramOpenerTest() {
    writeProgram("bin/xdg-open",
                 "printf '%s\\n' \"$#\" \"$@\" > '" + (folder_ / "part").string() + "'\n" + kDone);
    ::setenv("PATH", ((folder_ / "bin").string() + ":" + formerPath_).c_str(), 1);
  }
  ~ProgramOpenerTest() override { ::setenv("PATH", formerPath_.c_str(), 1); }

  void writeProgram(const std::string& name, const std::string& commands) {
    fs::permissions(folder_.write(name, "#!/bin/sh\ncd '" + folder_.path().string() + "'\n" + commands),
                    fs::perms::owner_all);
  }

  std::int32_t open(const std::string& file) { return opener_->open({.file = file}); }
  [[nodiscard]] std::string pathOf(const std::string& name) const {
    return windowsPath((folder_ / name).string());
  }

  // What the started program has written, once it has.
  [[nodiscard]] std::string written() const {
    for (int i = 0; i < 2000 && !folder_.has("written"); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return folder_.read("written");
  }

  // The whole of it appears at once.
  static constexpr const char* kDone = "mv part written\n";

  test::TempFolder folder_;
  std::string formerPath_ = std::getenv("PATH");
  PathMapping toNative_ = [paths = Paths(folder_.path().string())](std::string_view path) {
    return paths.nativePath(path);
  };
  std::unique_ptr<Opener> opener_ = makeProgramOpener(toNative_);
};

TEST_F(ProgramOpenerTest, AnAddressGoesToTheDesktopAsItStands) {
  EXPECT_GT(open("http://update.trelvin.example/Trelvin?a=$(id)&b='x y'"), 32);
  EXPECT_EQ(written(), "1\nhttp://update.trelvin.example/Trelvin?a=$(id)&b='x y'\n");
}

TEST_F(ProgramOpenerTest, ADocumentGoesToTheDesktopByItsNativePath) {
  folder_.write("Documentation/Index.htm", "<html>");
  EXPECT_GT(open(windowsPath(folder_.path().string()) + "/documentation/Index.htm"), 32);
  EXPECT_EQ(written(), "1\n" + (folder_ / "Documentation/Index.htm").string() + "\n");
}

TEST_F(ProgramOpenerTest, ADocumentThatMayBeExecutedIsADocumentStill) {
  writeProgram("Index.htm", "echo started > written\n");
  EXPECT_GT(open(pathOf("Index.htm")), 32);
  EXPECT_EQ(written(), "1\n" + (folder_ / "Index.htm").string() + "\n");
}

TEST_F(ProgramOpenerTest, AProgramIsStartedItself) {
  writeProgram("Upgrade.exe", std::string("echo started $# > part\n") + kDone);
  EXPECT_GT(open(pathOf("upgrade.EXE")), 32);
  EXPECT_EQ(written(), "started 0\n");
}

TEST_F(ProgramOpenerTest, AProgramOfTheCurrentFolderIsNotLookedForElsewhere) {
  writeProgram("bin/Upgrade.exe", std::string("echo elsewhere > part\n") + kDone);
  writeProgram("here/Upgrade.exe", std::string("echo here > part\n") + kDone);
  const fs::path former = fs::current_path();
  fs::current_path(folder_ / "here");
  const std::int32_t result = open("Upgrade.exe");
  fs::current_path(former);
  EXPECT_GT(result, 32);
  EXPECT_EQ(written(), "here\n");
}

TEST_F(ProgramOpenerTest, AProgramThatWasWrittenIsReadyToStart) {
  folder_.write("Upgrade.exe", "an older one that can't be started");
  makeFileSystem(toNative_)->writeText(pathOf("Upgrade.exe"), "#!/bin/sh\ncd '" + folder_.path().string() +
                                                                  "'\necho upgraded > part\n" + kDone);
  EXPECT_GT(open(pathOf("Upgrade.exe")), 32);
  EXPECT_EQ(written(), "upgraded\n");
}

TEST_F(ProgramOpenerTest, AStartedProgramHasItsOwnSessionNoStreamsAndTheUsualSignals) {
  const auto former = std::signal(SIGPIPE, SIG_IGN);
  // Fields 5 and 6 of its status are its group and its session; the last line is the set of ignored signals.
  writeProgram("Upgrade.exe",
               std::string("[ -t 0 ] || [ \"$(readlink /proc/$$/fd/1)\" = /dev/null ] && echo quiet > part\n"
                           "[ \"$(cut -d' ' -f6 /proc/$$/stat)\" = $$ ] && echo apart >> part\n"
                           "grep SigIgn /proc/$$/status | grep -q '[02468ace]...$' && echo usual >> part\n") +
                   kDone);
  const std::int32_t result = open(pathOf("Upgrade.exe"));
  std::signal(SIGPIPE, former);
  EXPECT_GT(result, 32);
  EXPECT_EQ(written(), "quiet\napart\nusual\n");
}

TEST_F(ProgramOpenerTest, WhatIsNotThereIsToldApartFromAFolderThatIsNotThere) {
  EXPECT_EQ(open(pathOf("Upgrade.exe")), 2);
  EXPECT_EQ(open(pathOf("Index.htm")), 2);
  EXPECT_EQ(open(pathOf("Documentation/Index.htm")), 3);
  EXPECT_EQ(open(""), 2);
  EXPECT_FALSE(folder_.has("written"));
}

TEST_F(ProgramOpenerTest, AProgramThatMayNotBeStartedIsRefused) {
  folder_.write("Upgrade.exe", "#!/bin/sh\n");
  EXPECT_EQ(open(pathOf("Upgrade.exe")), 5);
}

TEST_F(ProgramOpenerTest, WhatIsNoProgramOfThisMachineIsRefused) {
  fs::permissions(folder_.write("Upgrade.exe", std::string("MZ\x90\0\x03", 5)), fs::perms::owner_all);
  EXPECT_EQ(open(pathOf("Upgrade.exe")), 11);
}

TEST_F(ProgramOpenerTest, WithoutADesktopNothingIsMeantForADocument) {
  folder_.write("Index.htm", "<html>");
  ::setenv("PATH", (folder_ / "nowhere").c_str(), 1);
  EXPECT_EQ(open(pathOf("Index.htm")), 31);
  EXPECT_EQ(open("http://update.trelvin.example/Trelvin"), 31);
}

TEST_F(ProgramOpenerTest, WhatHasEndedIsNotKeptByTheSystem) {
  writeProgram("Upgrade.exe", std::string("echo $$ > part\n") + kDone);
  ASSERT_GT(open(pathOf("Upgrade.exe")), 32);
  const std::string process = written();
  const std::string status = "/proc/" + process.substr(0, process.size() - 1) + "/stat";
  bool isGone = false;
  for (int i = 0; i < 2000 && !isGone; ++i) {
    ASSERT_GT(open(pathOf("Upgrade.exe")), 32);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    isGone = !fs::exists(status);
  }
  EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace trelvin
