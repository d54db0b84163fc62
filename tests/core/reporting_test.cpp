// The log, the output list and the boxes.
#include "core/reporting.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

class ReportingTest : public ProgramTest {
 protected:
  [[nodiscard]] std::string log() const { return folder.read("work/Trelvin.log"); }
};

TEST_F(ReportingTest, ALogLineIsDateAndMessageAsOneQuotedItem) {
  writeLog("Loading...");
  EXPECT_EQ(log(), "\"NOW Loading...\"\r\n");
}

TEST_F(ReportingTest, LinesAreAppended) {
  folder.write("work/Trelvin.log", "\"older\"\r\n");
  writeLog("one");
  writeLog("two");
  EXPECT_EQ(log(), "\"older\"\r\n\"NOW one\"\r\n\"NOW two\"\r\n");
}

TEST_F(ReportingTest, NothingWithinALineIsEscaped) {
  writeLog("say \"it\"\r\nand 'more'");
  EXPECT_EQ(log(), "\"NOW say \"it\"\r\nand 'more'\"\r\n");
}

TEST_F(ReportingTest, AnEmptyMessageIsALineToo) {
  writeLog("");
  EXPECT_EQ(log(), "\"NOW \"\r\n");
}

TEST_F(ReportingTest, TheLogLiesInTheCurrentDirectoryAndNotInTheProgramFolder) {
  writeLog("here");
  EXPECT_TRUE(folder.has("work/Trelvin.log"));
  EXPECT_FALSE(folder.has("program/Trelvin.log"));
  std::filesystem::current_path(folder.path());
  writeLog("there");
  EXPECT_EQ(folder.read("Trelvin.log"), "\"NOW there\"\r\n");
  EXPECT_EQ(log(), "\"NOW here\"\r\n");
}

TEST_F(ReportingTest, NoHandleStaysOpenBetweenTwoLines) {
  writeLog("one");
  std::filesystem::remove(workFolder() / "Trelvin.log");
  writeLog("two");
  EXPECT_EQ(log(), "\"NOW two\"\r\n");
}

TEST_F(ReportingTest, AFailureToOpenTheLogGoesToTheCaller) {
  folder.makeFolder("work/Trelvin.log");
  EXPECT_EQ(numberOfFailure([] { writeLog("lost"); }), 75);
}

TEST_F(ReportingTest, DebugLinesAppearWithTheFlagOnly) {
  debugLog("SELECT 1");
  EXPECT_TRUE(logLines().empty());
  run.bDebug = true;
  debugLog("SELECT 2");
  EXPECT_EQ(logLines(), (std::vector<std::string>{"SELECT 2"}));
}

TEST_F(ReportingTest, AMessageIsABoxWithAnOkButtonTheDefaultTitleAndNoIcon) {
  tellUser("No sites");
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "No sites");
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_EQ(dialogs->shown[0].title, "");
  EXPECT_EQ(dialogs->shown[0].icon, Icon::kNone);
  EXPECT_EQ(frmMain.lstOutput.listCount(), 0);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(ReportingTest, InASilentRunAMessageIsALineOfTheOutputList) {
  run.bRunSilent = true;
  tellUser("No sites");
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(entriesOf(frmMain.lstOutput), (std::vector<std::string>{"No sites"}));
  EXPECT_TRUE(logLines().empty());
}

TEST_F(ReportingTest, AMessageThatIsLoggedTooIsLoggedWithAndWithoutSilence) {
  tellUserAndLog("loud");
  run.bRunSilent = true;
  tellUserAndLog("silent");
  EXPECT_EQ(logLines(), (std::vector<std::string>{"loud", "silent"}));
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "loud");
  EXPECT_EQ(entriesOf(frmMain.lstOutput), (std::vector<std::string>{"silent"}));
}

TEST_F(ReportingTest, ProgressSelectsTheNewestLineAndThenRefreshesTheList) {
  std::vector<std::int32_t> indexes;
  frmMain.lstOutput.onRefresh = [&] { indexes.push_back(frmMain.lstOutput.listIndex()); };
  reportProgress("one");
  reportProgress("two");
  EXPECT_EQ(entriesOf(frmMain.lstOutput), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(indexes, (std::vector<std::int32_t>{0, 1}));
  EXPECT_EQ(frmMain.lstOutput.text(), "two");
}

TEST_F(ReportingTest, AnAddedLineIsNeitherSelectedNorRefreshed) {
  int refreshes = 0;
  frmMain.lstOutput.onRefresh = [&] { ++refreshes; };
  addOutput("one");
  EXPECT_EQ(frmMain.lstOutput.listIndex(), -1);
  EXPECT_EQ(refreshes, 0);
  showLastLine();
  EXPECT_EQ(frmMain.lstOutput.listIndex(), 0);
  EXPECT_EQ(refreshes, 1);
}

TEST_F(ReportingTest, TheOutputListKeepsTheOrderOfArrival) {
  for (const char* line : {"b", "a", "b"}) reportProgress(line);
  EXPECT_EQ(entriesOf(frmMain.lstOutput), (std::vector<std::string>{"b", "a", "b"}));
}

TEST_F(ReportingTest, TheStatusIsTheTextOfTheFirstPanel) {
  setStatus("Working");
  EXPECT_EQ(frmMain.StatusBar1.panel, "Working");
}

TEST_F(ReportingTest, ADoubleClickShowsTheWholeOfTheSelectedLine) {
  openWindow();
  reportProgress("first");
  reportProgress("second");
  frmMain.lstOutput.setListIndex(0);
  frmMain.lstOutput.onDblClick();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "first");
}

TEST_F(ReportingTest, ADoubleClickDuringASilentRunDoesNothing) {
  openWindow();
  reportProgress("first");
  run.bRunSilent = true;
  frmMain.lstOutput.onDblClick();
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ReportingTest, AHandlerLogsLabelNumberBlankAndDescriptionAndLeavesTheRoutine) {
  int reached = 0;
  const bool wentThrough = handled("frmMain_some Error ", [&] {
    ++reached;
    throw Failure(13);
  });
  EXPECT_FALSE(wentThrough);
  EXPECT_EQ(reached, 1) << "what was reached stays";
  EXPECT_EQ(logLines(), (std::vector<std::string>{"frmMain_some Error 13 Type mismatch"}));
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(frmMain.lstOutput.listCount(), 0);
  EXPECT_EQ(Err.number, 13);
}

TEST_F(ReportingTest, AHandlerWritesTheNumberInDecimal) {
  handled("frmMain_some Error ", [] { throw Failure(static_cast<std::int32_t>(0x80070003U), "no path"); });
  EXPECT_EQ(logLines(), (std::vector<std::string>{"frmMain_some Error -2147024893 no path"}));
}

TEST_F(ReportingTest, ARoutineThatGoesThroughLogsNothing) {
  EXPECT_TRUE(handled("frmMain_some Error ", [] {}));
  EXPECT_TRUE(logLines().empty());
  EXPECT_FALSE(Err.isSet());
}

TEST_F(ReportingTest, AHandlerThatResumesLogsAndLetsTheNextStatementRun) {
  bool next = false;
  resumed("some Error ", [] { throw Failure(53); });
  resumed("some Error ", [&] { next = true; });
  EXPECT_TRUE(next);
  EXPECT_EQ(logLines(), (std::vector<std::string>{"some Error 53 File not found"}));
}

TEST_F(ReportingTest, AnIgnoredFailureLogsNothingAndStaysSetUntilItIsCleared) {
  attempt([] { throw Failure(91); });
  attempt([] {});
  EXPECT_TRUE(logLines().empty());
  EXPECT_EQ(Err.number, 91);
  Err.clear();
  EXPECT_EQ(Err.number, 0);
  EXPECT_EQ(Err.description, "");
}

TEST_F(ReportingTest, TheErrorStateIsWrittenInTwoForms) {
  Err.set(Failure(6));
  EXPECT_EQ(errText(), "6 Overflow");
  EXPECT_EQ(errTextWithDash(), "6 - Overflow");
}

TEST_F(ReportingTest, ADebugLineAboutAnErrorNeedsTheFlagAndAnErrorAndClearsIt) {
  debugLogIfErr("no error");
  Err.set(Failure(6));
  debugLogIfErr("no flag");
  EXPECT_EQ(Err.number, 6);
  run.bDebug = true;
  debugLogIfErr("both");
  EXPECT_EQ(logLines(), (std::vector<std::string>{"both"}));
  EXPECT_FALSE(Err.isSet());
  debugLogIfErr("cleared");
  EXPECT_EQ(timesLogged("cleared"), 0);
}

}  // namespace
}  // namespace trelvin::test
