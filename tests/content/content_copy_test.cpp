#include "content/content_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/fake_shell.h"
#include "fakes/program_test.h"
#include "fakes/recorded_files.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const std::string kSource = R"(\\WEB1\D$\sites\shop)";
const std::string kTarget = R"(\\WEB2\E$\new\shop)";

// A source folder with a page on WEB1, the empty share E$ on WEB2.
class ContentCopy : public ProgramTest {
 protected:
  ContentCopy() : shell(useFakeShell()), files(recordFiles()) {
    folder.write("network/WEB1/D$/sites/shop/index.htm", "shop");
    folder.makeFolder("network/WEB2/E$");
  }

  void makeTarget() { folder.makeFolder("network/WEB2/E$/new/shop"); }
  void removeShare() { std::filesystem::remove_all(folder / "network/WEB2/E$"); }
  void removeSource() { std::filesystem::remove_all(folder / "network/WEB1/D$/sites/shop"); }
  // What a person does while a box is on the screen, the number of the box counted from 1.
  void whileBoxIsOpen(std::function<void(std::size_t)> step) {
    dialogs->onMessage = [this, step = std::move(step)](const Message&) { step(dialogs->shown.size()); };
  }
  [[nodiscard]] std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const Message& message : dialogs->shown) titles.push_back(message.title);
    return titles;
  }
  // What was asked and done on folders since the last call of this, "operation path".
  [[nodiscard]] std::vector<std::string> folderCalls() const {
    std::vector<std::string> lines;
    for (const auto& [operation, path] : files.calls) lines.push_back(operation + " " + path);
    return lines;
  }

  FakeShell& shell;
  RecordedFiles& files;
};

std::string boxText(const std::string& path) {
  return "Directory " + path +
         " could not be read, you may not have created the share. Click Abort to stop the entire transfer, "
         "ignore to continue or create the share now and press retry. ";
}

std::string recreateText(const std::string& target) {
  return "Failed while trying to re-create the directory structure for " + target +
         " check that the drive exists and suitable permissions are available.";
}

// Paths of shares.

TEST_F(ContentCopy, AdministrativeSharePathPutsTheServerInFrontAndADollarForTheColon) {
  EXPECT_EQ(sharePath("web1", R"(D:\sites\one)"), R"(\\web1\D$\sites\one)");
}

TEST_F(ContentCopy, AdministrativeSharePathChangesEveryColon) {
  EXPECT_EQ(sharePath("web1", R"(D:\a:b\c:)"), R"(\\web1\D$\a$b\c$)");
}

TEST_F(ContentCopy, AdministrativeSharePathOfWhatHasNoDriveIsPutTogetherByTextAlone) {
  EXPECT_EQ(sharePath("web1", R"(\\nas\share)"), R"(\\web1\\\nas\share)");
  EXPECT_EQ(sharePath("web1", ""), R"(\\web1\)");
}

// What the shell is asked for.

TEST_F(ContentCopy, HandsTheShellTheSourceTheParentOfTheTargetAndTheTitle) {
  makeTarget();
  copyFolder(kSource, kTarget, "Copying web content...");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].from, kSource);
  EXPECT_EQ(shell.operations[0].to, R"(\\WEB2\E$\new)");
  EXPECT_EQ(shell.operations[0].progressTitle, "Copying web content...");
}

TEST_F(ContentCopy, GoesBesideATargetOfAnotherNameAndLeavesTheTargetsFolderEmpty) {
  copyFolder(kSource, R"(\\WEB2\E$\new\store)");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].from, kSource);
  EXPECT_EQ(shell.operations[0].to, R"(\\WEB2\E$\new)");
  EXPECT_TRUE(std::filesystem::is_empty(folder / "network/WEB2/E$/new/store"));
}

TEST_F(ContentCopy, FindsTheParentOfATargetWithLettersOfSeveralBytes) {
  folder.makeFolder("network/WEB2/E$/Größe/Ünïcode-日本");
  copyFolder(kSource, R"(\\WEB2\E$\Größe\Ünïcode-日本)");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].to, R"(\\WEB2\E$\Größe)");
}

TEST_F(ContentCopy, TakesATargetWithoutABackslashForItsOwnParent) {
  run.bRunSilent = true;
  copyFolder(kSource, "shop");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].to, "shop");
}

TEST_F(ContentCopy, CutsATargetThatEndsInABackslashThereAndNowhereElse) {
  makeTarget();
  copyFolder(kSource, kTarget + "\\");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].to, kTarget);
}

TEST_F(ContentCopy, NamesACopyWithoutATitle) {
  makeTarget();
  copyFolder(kSource, kTarget);
  copyFolder(kSource, kTarget, "");
  copyFolder(kSource, kTarget, "   ");
  ASSERT_THAT(shell.operations, SizeIs(3));
  for (const FileOperation& operation : shell.operations) {
    EXPECT_EQ(operation.progressTitle, "Copying files...");
  }
}

TEST_F(ContentCopy, LeavesTheBlanksAroundATitle) {
  makeTarget();
  copyFolder(kSource, kTarget, "  Copying shop ");
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].progressTitle, "  Copying shop ");
}

TEST_F(ContentCopy, SaysNothingAboutWhatTheShellAnswers) {
  makeTarget();
  shell.result = 0x75;
  shell.systemError = 5;
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, IsOneCallOfTheShellForEachCall) {
  makeTarget();
  copyFolder(kSource, kTarget);
  copyFolder(kSource, kTarget);
  EXPECT_THAT(shell.operations, SizeIs(2));
}

// The folders that lead to the target.

TEST_F(ContentCopy, MakesNothingAndAsksNothingWhenBothFoldersAreThere) {
  makeTarget();
  copyFolder(kSource, kTarget);
  EXPECT_THAT(folderCalls(),
              ElementsAre("folderExists " + kTarget, "folderExists " + kSource, "folderExists " + kTarget));
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_THAT(dialogs->shown, IsEmpty());
}

TEST_F(ContentCopy, LooksUpwardsForTheFirstFolderThereIsAndMakesTheRestParentsFirst) {
  const std::string target = R"(\\WEB2\E$\a\b\c)";
  folder.makeFolder("network/WEB2/E$/a");
  copyFolder(kSource, target);
  EXPECT_THAT(folderCalls(),
              ElementsAre("folderExists " + target, "folderExists " + target, R"(folderExists \\WEB2\E$\a\b)",
                          R"(folderExists \\WEB2\E$\a)", R"(createFolder \\WEB2\E$\a\b)",
                          "createFolder " + target, "folderExists " + kSource, "folderExists " + target));
  EXPECT_TRUE(folder.has("network/WEB2/E$/a/b/c"));
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(ContentCopy, MakesFoldersRightBelowTheShare) {
  copyFolder(kSource, kTarget);
  EXPECT_THAT(files.pathsOf("createFolder"), ElementsAre(R"(\\WEB2\E$\new)", kTarget));
  EXPECT_TRUE(folder.has("network/WEB2/E$/new/shop"));
}

TEST_F(ContentCopy, MakesTheFoldersBeforeItAsksForTheSource) {
  removeSource();
  whileBoxIsOpen([this](std::size_t) { EXPECT_TRUE(folder.has("network/WEB2/E$/new/shop")); });
  dialogs->answers = {Answer::kIgnore};
  copyFolder(kSource, kTarget);
  EXPECT_THAT(titles(), ElementsAre("Source directory not found"));
}

TEST_F(ContentCopy, LooksUpToTheServersNameForAShareThatIsMissingAndMakesNothing) {
  removeShare();
  run.bRunSilent = true;
  copyFolder(kSource, kTarget);
  EXPECT_THAT(folderCalls(),
              ElementsAre("folderExists " + kTarget, "folderExists " + kTarget,
                          R"(folderExists \\WEB2\E$\new)", R"(folderExists \\WEB2\E$)",
                          R"(folderExists \\WEB2)", "folderExists " + kSource, "folderExists " + kTarget));
  EXPECT_FALSE(folder.has("network/WEB2/E$"));
}

TEST_F(ContentCopy, MakesNoServerThatIsMissing) {
  run.bRunSilent = true;
  copyFolder(kSource, R"(\\WEB9\E$\new\shop)");
  EXPECT_THAT(files.pathsOf("createFolder"), IsEmpty());
  EXPECT_FALSE(folder.has("network/WEB9"));
}

TEST_F(ContentCopy, MakesNothingRightBelowADriveSinceTheDriveHasNoBackslash) {
  run.bRunSilent = true;
  const std::string target = programPath().substr(0, 2) + R"(\no-such-folder-of-trelvin)";
  copyFolder(kSource, target);
  EXPECT_THAT(files.pathsOf("createFolder"), IsEmpty());
  EXPECT_TRUE(hasLogged("Could not find Target folder " + target));
}

TEST_F(ContentCopy, MakesNothingForATargetWithoutABackslash) {
  run.bRunSilent = true;
  copyFolder(kSource, "shop");
  copyFolder(kSource, "");
  EXPECT_THAT(files.pathsOf("createFolder"), IsEmpty());
  EXPECT_THAT(shell.operations, SizeIs(2));
}

// A folder that is missing, and what a person says.

TEST_F(ContentCopy, AFolderThatIsThereNeedsNoQuestion) {
  EXPECT_TRUE(checkFolder(kSource, "Source"));
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(ContentCopy, AFileIsNoFolder) {
  run.bRunSilent = true;
  EXPECT_TRUE(checkFolder(kSource + "\\index.htm", "Source"));
  EXPECT_THAT(logLines(), ElementsAre("Could not find Source folder " + kSource + "\\index.htm"));
}

TEST_F(ContentCopy, AMissingFolderIsLoggedAndAskedAboutInThreeButtons) {
  removeSource();
  whileBoxIsOpen([this](std::size_t) {
    EXPECT_THAT(logLines(), ElementsAre("Could not find Source folder " + kSource));
  });
  dialogs->answers = {Answer::kIgnore};
  checkFolder(kSource, "Source");
  ASSERT_THAT(dialogs->shown, SizeIs(1));
  EXPECT_EQ(dialogs->shown[0].text, boxText(kSource));
  EXPECT_EQ(dialogs->shown[0].title, "Source directory not found");
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kAbortRetryIgnore);
}

TEST_F(ContentCopy, AMissingTargetHasItsOwnWords) {
  dialogs->answers = {Answer::kIgnore};
  checkFolder(kTarget, "Target");
  EXPECT_THAT(logLines(), ElementsAre("Could not find Target folder " + kTarget));
  ASSERT_THAT(dialogs->shown, SizeIs(1));
  EXPECT_EQ(dialogs->shown[0].text, boxText(kTarget));
  EXPECT_EQ(dialogs->shown[0].title, "Target directory not found");
}

TEST_F(ContentCopy, IgnoreGoesOnAndCancelsNothing) {
  dialogs->answers = {Answer::kIgnore};
  EXPECT_TRUE(checkFolder(kTarget, "Target"));
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, RetryAsksToTryAgainAndCancelsNothing) {
  dialogs->answers = {Answer::kRetry};
  EXPECT_FALSE(checkFolder(kTarget, "Target"));
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, AbortGoesOnAndCancelsTheRun) {
  dialogs->answers = {Answer::kAbort};
  EXPECT_TRUE(checkFolder(kTarget, "Target"));
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_FALSE(run.bCancelPerms);
}

TEST_F(ContentCopy, ASilentRunLogsAMissingFolderAndGoesOn) {
  run.bRunSilent = true;
  EXPECT_TRUE(checkFolder(kTarget, "Target"));
  EXPECT_THAT(logLines(), ElementsAre("Could not find Target folder " + kTarget));
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, ASilentRunTriesTheCopyWithoutSourceAndTarget) {
  removeSource();
  removeShare();
  run.bRunSilent = true;
  shell.result = 0x402;
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(), ElementsAre("Could not find Source folder " + kSource,
                                      "Could not find Target folder " + kTarget));
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, AMissingShareIsOneLineInASilentRun) {
  removeShare();
  run.bRunSilent = true;
  shell.result = 0x7C;
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(), ElementsAre("Could not find Target folder " + kTarget));
}

TEST_F(ContentCopy, AsksForTheSourceBeforeTheTarget) {
  removeSource();
  removeShare();
  dialogs->answers = {Answer::kIgnore, Answer::kIgnore};
  copyFolder(kSource, kTarget);
  EXPECT_THAT(titles(), ElementsAre("Source directory not found", "Target directory not found"));
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, RetryTestsAgainWithoutANewWalk) {
  removeShare();
  dialogs->answers = {Answer::kRetry, Answer::kRetry};
  whileBoxIsOpen([this](std::size_t box) {
    if (box == 1) files.calls.clear();
    if (box == 2) makeTarget();
  });
  copyFolder(kSource, kTarget);
  EXPECT_THAT(titles(), ElementsAre("Target directory not found", "Target directory not found"));
  EXPECT_THAT(folderCalls(), ElementsAre("folderExists " + kTarget, "folderExists " + kTarget));
  EXPECT_EQ(timesLogged("Could not find Target folder " + kTarget), 2);
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, RetryAsksForTheSourceUntilItIsThere) {
  removeSource();
  makeTarget();
  dialogs->answers = {Answer::kRetry, Answer::kRetry, Answer::kRetry};
  whileBoxIsOpen([this](std::size_t box) {
    if (box == 3) folder.makeFolder("network/WEB1/D$/sites/shop");
  });
  copyFolder(kSource, kTarget);
  EXPECT_THAT(dialogs->shown, SizeIs(3));
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, RetryOnAShareThatIsStillEmptyAsksOnSinceNothingIsMadeAnyMore) {
  removeShare();
  dialogs->answers = {Answer::kRetry, Answer::kIgnore};
  whileBoxIsOpen([this](std::size_t) { folder.makeFolder("network/WEB2/E$"); });
  copyFolder(kSource, kTarget);
  EXPECT_THAT(dialogs->shown, SizeIs(2));
  EXPECT_FALSE(folder.has("network/WEB2/E$/new"));
}

TEST_F(ContentCopy, GoesOnToTheCopyBehindAnAbort) {
  removeSource();
  makeTarget();
  dialogs->answers = {Answer::kAbort};
  copyFolder(kSource, kTarget);
  EXPECT_TRUE(run.bExportCancelled);
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, StillAsksForTheTargetBehindAnAbortForTheSourceButOnlyOnce) {
  removeSource();
  removeShare();
  dialogs->answers = {Answer::kAbort, Answer::kRetry, Answer::kRetry};
  copyFolder(kSource, kTarget);
  EXPECT_THAT(titles(), ElementsAre("Source directory not found", "Target directory not found"));
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, StopsAskingForTheSourceWhenTheRunIsCancelledMeanwhile) {
  removeSource();
  makeTarget();
  dialogs->answers = {Answer::kRetry, Answer::kRetry};
  whileBoxIsOpen([](std::size_t) { run.bExportCancelled = true; });
  copyFolder(kSource, kTarget);
  EXPECT_THAT(dialogs->shown, SizeIs(1));
  EXPECT_THAT(shell.operations, SizeIs(1));
}

TEST_F(ContentCopy, AsksOnceInARunThatIsCancelledAlready) {
  removeSource();
  makeTarget();
  run.bExportCancelled = true;
  dialogs->answers = {Answer::kRetry, Answer::kRetry};
  copyFolder(kSource, kTarget);
  EXPECT_THAT(dialogs->shown, SizeIs(1));
}

// Failures.

TEST_F(ContentCopy, ABadNameWhileMakingFoldersIsLoggedAndShownAndEndsTheCopy) {
  files.failOn("createFolder", R"(\\WEB2\E$\new)", error_number::kBadFileName);
  EXPECT_NO_THROW(copyFolder(kSource, kTarget));
  EXPECT_THAT(logLines(), ElementsAre(recreateText(kTarget)));
  ASSERT_THAT(dialogs->shown, SizeIs(1));
  EXPECT_EQ(dialogs->shown[0].text, recreateText(kTarget));
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_EQ(dialogs->shown[0].title, "");
  EXPECT_THAT(shell.operations, IsEmpty());
  EXPECT_THAT(files.pathsOf("createFolder"), ElementsAre(R"(\\WEB2\E$\new)"));
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, ABadNameIsInTheLogAloneInASilentRun) {
  run.bRunSilent = true;
  files.failOn("createFolder", R"(\\WEB2\E$\new)", error_number::kBadFileName);
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(), ElementsAre(recreateText(kTarget)));
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_THAT(shell.operations, IsEmpty());
}

TEST_F(ContentCopy, AnyOtherFailureIsLoggedWithItsNumberAndThatOfTheSystemAndShownToNobody) {
  files.failOn("createFolder", kTarget, error_number::kPermissionDenied);
  shell.systemError = 5;
  EXPECT_NO_THROW(copyFolder(kSource, kTarget));
  EXPECT_THAT(logLines(),
              ElementsAre("Failed copying files from " + kSource + " to " + kTarget + " Err 70 5"));
  EXPECT_THAT(dialogs->shown, IsEmpty());
  EXPECT_THAT(shell.operations, IsEmpty());
  EXPECT_FALSE(run.bExportCancelled);
}

TEST_F(ContentCopy, AFailureAnywhereInTheCallEndsIt) {
  makeTarget();
  files.failOn("folderExists", kSource, error_number::kDeviceIo);
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(),
              ElementsAre("Failed copying files from " + kSource + " to " + kTarget + " Err 57 0"));
  files.failOn("folderExists", kTarget, error_number::kBadFileName);
  copyFolder(kSource, kTarget);
  EXPECT_TRUE(hasLogged(recreateText(kTarget)));
  EXPECT_THAT(shell.operations, IsEmpty());
}

TEST_F(ContentCopy, ANumberBeyondTheRuntimesOwnIsLoggedAsASignedDecimal) {
  files.failOn("createFolder", kTarget, error_number::kControlException);
  copyFolder(kSource, kTarget);
  EXPECT_THAT(logLines(),
              ElementsAre("Failed copying files from " + kSource + " to " + kTarget + " Err -2147352567 0"));
}

TEST_F(ContentCopy, AMachineWithoutAShellLogsAFailure) {
  makeTarget();
  platform().shell.reset();
  EXPECT_NO_THROW(copyFolder(kSource, kTarget));
  EXPECT_THAT(logLines(),
              ElementsAre("Failed copying files from " + kSource + " to " + kTarget + " Err 91 0"));
}

TEST_F(ContentCopy, AFailedCallLeavesNothingBehindForTheNext) {
  files.failOn("createFolder", R"(\\WEB2\E$\new)", error_number::kPermissionDenied);
  copyFolder(kSource, kTarget);
  files.rule = nullptr;
  copyFolder(kSource, kTarget);
  ASSERT_THAT(shell.operations, SizeIs(1));
  EXPECT_EQ(shell.operations[0].from, kSource);
  EXPECT_THAT(logLines(), SizeIs(1));
}

}  // namespace
}  // namespace trelvin::test
