#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "contract/facilities.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kLeastSuccess = 33;

class ShellCopyContract : public testing::Test {
 protected:
  ShellCopyContract() {
    folder_.makeFolder("source/site");
    folder_.makeFolder("target");
  }

  std::int32_t copy(const char* from, const char* to) {
    return shell_->copy({.from = programForm(folder_ / from),
                         .to = programForm(folder_ / to),
                         .progressTitle = "Copying files..."});
  }

  TempFolder folder_;
  std::unique_ptr<Shell> shell_ = systemShell();
};

TEST_F(ShellCopyContract, AFolderGoesIntoTheTargetUnderItsOwnLastName) {
  folder_.write("source/site/default.htm", "start");
  folder_.write("source/site/images/logo.gif", "GIF");
  folder_.makeFolder("source/site/empty/below");
  EXPECT_EQ(copy("source/site", "target"), 0);
  EXPECT_EQ(folder_.read("target/site/default.htm"), "start");
  EXPECT_EQ(folder_.read("target/site/images/logo.gif"), "GIF");
  EXPECT_TRUE(fs::is_directory(folder_ / "target/site/empty/below"));
  EXPECT_FALSE(folder_.has("target/default.htm"));
}

TEST_F(ShellCopyContract, FilesOfTheTargetAreOverwrittenAndThoseThatItAloneHasStay) {
  folder_.write("source/site/both.htm", "new");
  folder_.write("target/site/both.htm", "an older one");
  folder_.write("target/site/own.htm", "own");
  EXPECT_EQ(copy("source/site", "target"), 0);
  EXPECT_EQ(folder_.read("target/site/both.htm"), "new");
  EXPECT_EQ(folder_.read("target/site/own.htm"), "own");
}

TEST_F(ShellCopyContract, FilesKeepTheirTime) {
  const fs::path file = folder_.write("source/site/default.htm", "start");
  const fs::file_time_type before = fs::last_write_time(file) - std::chrono::hours(24 * 400);
  fs::last_write_time(file, before);
  EXPECT_EQ(copy("source/site", "target"), 0);
  const auto difference = fs::last_write_time(folder_ / "target/site/default.htm") - before;
  EXPECT_LE(std::chrono::abs(difference), std::chrono::seconds(2));
}

TEST_F(ShellCopyContract, NamesBeyondAsciiTravel) {
  const std::string name =
      "Stra\xC3\x9F"
      "e \xE2\x82\xAC.htm";
  const std::u8string nativeName(name.begin(), name.end());
  std::ofstream(folder_ / "source" / "site" / fs::path(nativeName)) << "x";
  EXPECT_EQ(copy("source/site", "target"), 0);
  EXPECT_TRUE(fs::exists(folder_ / "target" / "site" / fs::path(nativeName)));
}

// The program asks the shell for its boxes, so that a real Windows may show one here, which wants an answer.
TEST_F(ShellCopyContract, ASourceThatIsNotThereIsRefusedByItsNumber) {
  const std::int32_t number = copy("source/missing", "target");
  EXPECT_TRUE(tellsMissingSource(number)) << number;
  EXPECT_TRUE(fs::is_empty(folder_ / "target"));
}

class OpenerContract : public testing::Test {
 protected:
  std::int32_t open(const fs::path& file) {
    return opener_->open({.file = programForm(file), .ownedByMainWindow = false});
  }

  TempFolder folder_;
  std::unique_ptr<Opener> opener_ = systemOpener();
};

TEST_F(OpenerContract, AProgramIsStarted) {
  EXPECT_GE(open(writeProgram(folder_)), kLeastSuccess);
  constexpr std::chrono::milliseconds kStep(10);
  for (int i = 0; i < 2000 && !folder_.has("started"); ++i) std::this_thread::sleep_for(kStep);
  EXPECT_TRUE(folder_.has("started"));
}

TEST_F(OpenerContract, AFileThatIsNotThereIsToldByItsNumber) {
  EXPECT_EQ(open(folder_ / "Upgrade.exe"), 2);
}

TEST_F(OpenerContract, TheMainWindowMayOwnWhatIsOpenedWhileThereIsNone) {
  EXPECT_EQ(opener_->open({.file = programForm(folder_ / "Index.htm"), .showCommand = 10}), 2);
}

}  // namespace
}  // namespace trelvin::test
