#include "platform/shared/console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace trelvin {
namespace {

using testing::HasSubstr;

class ConsoleDialogsTest : public testing::Test {
 protected:
  Answer answerTo(Buttons buttons) {
    return dialogs_->showMessage({.text = "Shall I?", .buttons = buttons, .title = "A question"});
  }

  std::ostringstream stream_;
  std::unique_ptr<Dialogs> dialogs_ = makeConsoleDialogs(stream_);
};

TEST_F(ConsoleDialogsTest, EveryQuestionIsAnsweredByRefusal) {
  EXPECT_EQ(answerTo(Buttons::kOk), Answer::kOk);
  EXPECT_EQ(answerTo(Buttons::kOkCancel), Answer::kCancel);
  EXPECT_EQ(answerTo(Buttons::kYesNo), Answer::kNo);
  EXPECT_EQ(answerTo(Buttons::kYesNoCancel), Answer::kCancel);
  EXPECT_EQ(answerTo(Buttons::kAbortRetryIgnore), Answer::kAbort);
}

TEST_F(ConsoleDialogsTest, TheStreamTellsTheQuestionTheAnswerAndTheReason) {
  answerTo(Buttons::kYesNo);
  EXPECT_EQ(stream_.str(),
            "A question: Shall I?\nTrelvin: answered with No, since there is no window to ask in.\n");
}

TEST_F(ConsoleDialogsTest, EachAnswerIsNamed) {
  answerTo(Buttons::kOk);
  EXPECT_THAT(stream_.str(), HasSubstr("with OK,"));
  answerTo(Buttons::kOkCancel);
  EXPECT_THAT(stream_.str(), HasSubstr("with Cancel,"));
  answerTo(Buttons::kAbortRetryIgnore);
  EXPECT_THAT(stream_.str(), HasSubstr("with Abort,"));
}

TEST_F(ConsoleDialogsTest, AMessageWithoutATitleBearsTheProgramsName) {
  dialogs_->showMessage({.text = "This program is already running!", .icon = Icon::kExclamation});
  EXPECT_THAT(stream_.str(), testing::StartsWith("Trelvin: This program is already running!\n"));
}

TEST_F(ConsoleDialogsTest, AnInputBoxGivesTheEmptyTextAndNotItsDefault) {
  EXPECT_EQ(dialogs_->inputBox("Proxy server", "Enter your proxy server as proxy:port", "old:80"), "");
  EXPECT_THAT(stream_.str(), testing::StartsWith("Proxy server: Enter your proxy server as proxy:port\n"));
  EXPECT_THAT(stream_.str(), testing::Not(HasSubstr("old:80")))
      << "a stored setting is nobody else's business";
}

TEST_F(ConsoleDialogsTest, AFileChooserGivesNoFile) {
  const FileChoice choice{.title = "Save Backup Job", .filters = {}, .path = "C:\\Trelvin\\Backup.job"};
  EXPECT_EQ(dialogs_->chooseFileToSave(choice), std::nullopt);
  EXPECT_EQ(stream_.str(),
            "Save Backup Job: C:\\Trelvin\\Backup.job\n"
            "Trelvin: answered with Cancel, since there is no window to ask in.\n");
  EXPECT_EQ(dialogs_->chooseFileToOpen(choice), std::nullopt);
}

TEST_F(ConsoleDialogsTest, AStreamThatTakesNothingStopsNothing) {
  stream_.setstate(std::ios::badbit);
  EXPECT_EQ(answerTo(Buttons::kYesNo), Answer::kNo);
}

TEST(ConsoleEventsTest, NothingIsWrittenByABeep) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const std::unique_ptr<Events> events = makeConsoleEvents();
  events->doEvents();
  events->beep();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace trelvin
