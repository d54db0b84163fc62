#include "window/help_menu.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin {
namespace {

class ApplicationWithoutCommandLine : public test::FakeApplication {
 public:
  using FakeApplication::FakeApplication;
  [[nodiscard]] std::string commandLine() const override {
    throw Failure(error_number::kInvalidProcedureCall);
  }
};

class HelpMenuTest : public test::ProgramTest {};

TEST_F(HelpMenuTest, AboutShowsTheWelcomeFormBesideTheMainWindow) {
  start("");
  frmSplash.cmdContinue.onClick();
  ASSERT_FALSE(frmSplash.loaded);
  frmSplash.lblAbout.caption.clear();
  frmMain.mnuAbout.onClick();
  EXPECT_TRUE(frmSplash.loaded);
  EXPECT_TRUE(frmSplash.visible);
  EXPECT_TRUE(frmMain.visible);
  EXPECT_EQ(frmSplash.lblAbout.caption, "Trelvin Utility v4.1");
}

TEST_F(HelpMenuTest, TheWelcomeFormGoesAgainByEitherButtonAndTheMainWindowStays) {
  start("");
  frmSplash.cmdContinue.onClick();
  for (Button* button : {&frmSplash.cmdContinue, &frmSplash.cmdExit}) {
    frmMain.mnuAbout.onClick();
    button->onClick();
    EXPECT_FALSE(frmSplash.loaded);
    EXPECT_FALSE(frmSplash.visible);
    EXPECT_TRUE(frmMain.loaded);
  }
  EXPECT_EQ(timesLogged("Loading..."), 1);
}

TEST_F(HelpMenuTest, AboutASecondTimeLeavesTheFormThatIsUpAsItIs) {
  start("");
  frmSplash.cmdContinue.onClick();
  frmMain.mnuAbout.onClick();
  frmSplash.lblAbout.caption = "as it is";
  frmMain.mnuAbout.onClick();
  EXPECT_TRUE(frmSplash.visible);
  EXPECT_EQ(frmSplash.lblAbout.caption, "as it is");
}

TEST_F(HelpMenuTest, ACommandLineIsParsedAgainAndTakesTheFormDown) {
  start("-D -C DSN=x");
  run.bDebug = false;
  run.sCmdConnection = "changed";
  frmMain.mnuAbout.onClick();
  EXPECT_TRUE(run.bDebug);
  EXPECT_EQ(run.sCmdConnection, "DSN=x ");
  EXPECT_FALSE(frmSplash.loaded);
  EXPECT_FALSE(frmSplash.visible);
  EXPECT_TRUE(frmMain.visible);
}

TEST_F(HelpMenuTest, AFailureOfAboutIsLogged) {
  start("");
  frmSplash.cmdContinue.onClick();
  // The load has a handler of its own, so that only what fails in that one comes through.
  platform().application = std::make_unique<ApplicationWithoutCommandLine>(programPath());
  test::watchFiles().refuses = [](const std::string& line) {
    return line.find("frmSplash_Load") != std::string::npos;
  };
  frmMain.mnuAbout.onClick();
  EXPECT_TRUE(logLines().back().starts_with("frmMain_mnuAbout Error 75 ")) << logLines().back();
}

TEST_F(HelpMenuTest, TheCreditsAreOneBoxInASilentRunToo) {
  openWindow();
  run.bRunSilent = true;
  frmMain.mnuCredits.onClick();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_NE(dialogs->shown[0].text.find("tested"), std::string::npos);
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
}

TEST_F(HelpMenuTest, AFailureOfTheCreditsGoesToTheCaller) {
  openWindow();
  const std::size_t logged = logLines().size();
  dialogs->onMessage = [](const Message&) { throw Failure(error_number::kOutOfMemory); };
  EXPECT_EQ(test::numberOfFailure([] { frmMain.mnuCredits.onClick(); }), error_number::kOutOfMemory);
  EXPECT_EQ(logLines().size(), logged);
}

}  // namespace
}  // namespace trelvin
