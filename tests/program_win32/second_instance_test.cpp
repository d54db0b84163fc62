// What Trelvin.exe does while another Trelvin.exe of the same folder runs.
#include "desktop_win32/hand.h"
#include "program_win32/screen_test.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kRefusal = "This program is already running!";
constexpr const char* kLogLine = "The user attempted to run the program while another copy was still running";

class SecondInstanceTest : public ScreenTest {
 protected:
  // The first one is in front, with what it is doing.
  SecondInstanceTest() { openProgram(); }
  void expectRefusedInOrder() {
    EXPECT_EQ(program().outcome().status, 0U);
    EXPECT_THAT(log(), HasSubstr(kLogLine));
  }
};

TEST_F(SecondInstanceTest, AWindowSaysSoAndGoes) {
  startProgram("");
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(person().see(frmSplash, "cmdContinue")); }));
  person().click(person().see(frmSplash, "cmdContinue"));
  ASSERT_TRUE(waitForBox(kRefusal));
  EXPECT_EQ(mainWindow(), nullptr);
  person().clickInBox(IDOK);
  expectRefusedInOrder();
}

TEST_F(SecondInstanceTest, ACommandLineChangesNothingAboutIt) {
  startProgram("-F");
  ASSERT_TRUE(waitForBox(kRefusal));
  person().keys("Return", person().window("Trelvin"));
  expectRefusedInOrder();
}

TEST_F(SecondInstanceTest, AJobSaysSoWithoutAWindowAndTouchesNothing) {
  const Outcome outcome = runJob(jobText("WEB1", "Database"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.error, HasSubstr(kRefusal));
  EXPECT_THAT(outcome.output, IsEmpty());
  EXPECT_THAT(log(), HasSubstr(kLogLine));
  EXPECT_FALSE(folder_.has("program/BackupJobs"));
}

TEST_F(SecondInstanceTest, TheFirstOneIsStillThereAndWorks) {
  ASSERT_EQ(runJob(jobText("WEB1", "Database")).status, 0U);
  person().clickTab(main("TabExportType"), 1);
  EXPECT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdExportFile")); }));
  person().clickClose(mainWindow());
  expectEndInOrder();
}

TEST_F(SecondInstanceTest, OnceTheFirstHasGoneAnotherOneStarts) {
  person().clickClose(mainWindow());
  expectEndInOrder();
  openProgram();
  EXPECT_NE(mainWindow(), nullptr);
}

TEST_F(SecondInstanceTest, TheSameProgramInAnotherFolderIsAnotherProgram) {
  std::filesystem::copy(programFolder(), folder_ / "other", std::filesystem::copy_options::recursive);
  ProgramProcess other(folder_ / "other" / "Trelvin.exe", "-F", folder_ / "work", folder_ / "others streams");
  const Person person(other.number(), folder_.path());
  EXPECT_TRUE(Person::waitFor([&] { return person.see(frmMain, "cmdPopulate") != nullptr; }));
}

}  // namespace
}  // namespace trelvin::test
