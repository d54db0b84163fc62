#include "platform/linux/program_process.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

class ProgramProcessTest : public testing::Test {
 protected:
  std::unique_ptr<Application> start(std::initializer_list<const char*> words = {}) {
    std::vector<const char*> arguments{"trelvin"};
    for (const char* const word : words) arguments.push_back(word);
    const ProgramPlace place{folder_.path().string(), (folder_ / "trelvin").string()};
    return makeApplication(place, static_cast<int>(arguments.size()), arguments.data());
  }
  void SetUp() override { folder_.write("trelvin", "program"); }

  TempFolder folder_;
};

// A process that runs until it is ended.
class Child {
 public:
  Child() {
    std::array<char*, 3> arguments{const_cast<char*>("sleep"), const_cast<char*>("600"), nullptr};
    EXPECT_EQ(::posix_spawnp(&process_, "sleep", nullptr, nullptr, arguments.data(), environ), 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_ = 0;
};

// Another process that holds the place until it is killed.
class OtherInstance {
 public:
  explicit OtherInstance(Application& application) {
    std::array<int, 2> ready{};
    EXPECT_EQ(::pipe(ready.data()), 0);
    process_ = ::fork();
    if (process_ == 0) {
      const char answer = application.prevInstance() ? 'y' : 'n';
      if (::write(ready[1], &answer, 1) == 1) ::pause();
      ::_exit(0);
    }
    EXPECT_EQ(::read(ready[0], &sawAnother_, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
  }
  OtherInstance(const OtherInstance&) = delete;
  OtherInstance& operator=(const OtherInstance&) = delete;
  ~OtherInstance() { kill(); }

  [[nodiscard]] bool sawAnother() const { return sawAnother_ == 'y'; }
  void kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
  }

 private:
  pid_t process_ = -1;
  char sawAnother_ = '?';
};

TEST_F(ProgramProcessTest, ThePathIsTheFolderWithoutATrailingBackslash) {
  EXPECT_EQ(
      start()->path(), "Z:" + [&] {
        std::string path = folder_.path().string();
        for (char& letter : path) letter = letter == '/' ? '\\' : letter;
        return path;
      }());
  EXPECT_EQ(makeApplication({"/", "/proc/self/exe"}, 0, nullptr)->path(), "Z:");
}

TEST_F(ProgramProcessTest, TheCommandLineIsTheArgumentsJoinedByBlanks) {
  EXPECT_EQ(start()->commandLine(), "");
  EXPECT_EQ(start({"-RUNBACKUP"})->commandLine(), "-RUNBACKUP");
  EXPECT_EQ(start({"-B", "nightly.job", "-d"})->commandLine(), "-B nightly.job -d");
}

TEST_F(ProgramProcessTest, AnArgumentThatHoldsBlanksComesOutAsSeveralWords) {
  EXPECT_EQ(start({"-C", "DSN=my store;UID=x"})->commandLine(), "-C DSN=my store;UID=x");
}

TEST_F(ProgramProcessTest, AnEmptyArgumentLeavesATrailingBlank) {
  EXPECT_EQ(start({"-B", ""})->commandLine(), "-B ");
}

TEST_F(ProgramProcessTest, TheFirstInstanceSeesNoOtherHoweverOftenItAsks) {
  const auto application = start();
  EXPECT_FALSE(application->prevInstance());
  EXPECT_FALSE(application->prevInstance());
}

TEST_F(ProgramProcessTest, ASecondInstanceSeesTheFirst) {
  const auto first = start();
  const auto second = start();
  EXPECT_FALSE(first->prevInstance());
  EXPECT_TRUE(second->prevInstance());
  EXPECT_TRUE(second->prevInstance());
}

TEST_F(ProgramProcessTest, AnInstanceThatDidNotAskClaimsNothing) {
  const auto silent = start();
  const auto asking = start();
  EXPECT_FALSE(asking->prevInstance());
}

TEST_F(ProgramProcessTest, TheClaimIsGoneWithAKilledProcess) {
  const auto inOther = start();
  OtherInstance other(*inOther);
  EXPECT_FALSE(other.sawAnother());
  EXPECT_TRUE(start()->prevInstance());
  other.kill();
  EXPECT_FALSE(start()->prevInstance());
}

TEST_F(ProgramProcessTest, AStartedProgramDoesNotKeepTheClaim) {
  auto first = start();
  ASSERT_FALSE(first->prevInstance());
  const Child child;
  first.reset();
  EXPECT_FALSE(start()->prevInstance());
}

TEST_F(ProgramProcessTest, AClaimWritesNothingIntoTheProgramFolder) {
  const auto application = start();
  EXPECT_FALSE(application->prevInstance());
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 1);
}

TEST_F(ProgramProcessTest, AnExecutableThatCannotBeOpenedIsReplacedByALockFile) {
  fs::remove(folder_ / "trelvin");
  const auto first = start();
  EXPECT_FALSE(first->prevInstance());
  EXPECT_TRUE(folder_.has("Trelvin.lock"));
  EXPECT_TRUE(start()->prevInstance());
}

TEST_F(ProgramProcessTest, WhereNothingCanBeLockedNoOtherInstanceIsSeen) {
  const ProgramPlace nowhere{(folder_ / "missing").string(), (folder_ / "missing/trelvin").string()};
  EXPECT_FALSE(makeApplication(nowhere, 0, nullptr)->prevInstance());
}

TEST_F(ProgramProcessTest, AnotherProgramsClaimIsNoneOfOurs) {
  folder_.write("other", "program");
  const auto other = makeApplication({folder_.path().string(), (folder_ / "other").string()}, 0, nullptr);
  EXPECT_FALSE(other->prevInstance());
  EXPECT_FALSE(start()->prevInstance());
}

TEST_F(ProgramProcessTest, EndLeavesWithTheCodeAndWritesOutWhatWaits) {
  const std::string path = (folder_ / "out").string();
  const pid_t process = ::fork();
  if (process == 0) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file != nullptr) std::fputs("waiting", file);
    start()->end(7);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(process, &status, 0), process);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
  EXPECT_EQ(folder_.read("out"), "waiting");
}

}  // namespace
}  // namespace trelvin
