#include "transfer/value_rewriting.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

class SecurityObject : public ValueObject {
 public:
  [[nodiscard]] std::string typeName() const override { return "IPSecurity"; }
};

class FindAndReplace : public ProgramTest {
 protected:
  static void pair(const std::string& oldText, const std::string& newText) {
    frmMain.lstOldValues.addItem(oldText);
    frmMain.lstNewValues.addItem(newText);
  }
};

TEST_F(FindAndReplace, GivesAnEmptyTextForNull) {
  pair("", "x");
  EXPECT_EQ(applyFindReplace(Null{}), "");
}

TEST_F(FindAndReplace, GivesAnEmptyTextForAnEmptyOne) {
  EXPECT_EQ(applyFindReplace(""), "");
}

TEST_F(FindAndReplace, GivesAnEmptyTextForBlanksAlone) {
  pair(" ", "x");
  EXPECT_EQ(applyFindReplace("   "), "");
}

TEST_F(FindAndReplace, TakesATabForTextAndNoBlank) {
  EXPECT_EQ(applyFindReplace("\t"), "\t");
}

TEST_F(FindAndReplace, KeepsTheBlanksAroundAText) {
  EXPECT_EQ(applyFindReplace(" a "), " a ");
  pair("a", "b");
  EXPECT_EQ(applyFindReplace("  a "), "  b ");
}

TEST_F(FindAndReplace, ReplacesBlanksOfATextThatHoldsMore) {
  pair(" ", "_");
  EXPECT_EQ(applyFindReplace(" a b "), "_a_b_");
}

TEST_F(FindAndReplace, LeavesATextAloneWithoutPairs) {
  EXPECT_EQ(applyFindReplace("C:\\inetpub"), "C:\\inetpub");
}

TEST_F(FindAndReplace, ReplacesEveryOccurrenceFromTheFirstCharacterOn) {
  pair("web", "www");
  EXPECT_EQ(applyFindReplace("web1;web2;web"), "www1;www2;www");
}

TEST_F(FindAndReplace, IgnoresCase) {
  pair("WinNT", "Windows");
  EXPECT_EQ(applyFindReplace("C:\\WINNT\\winnt"), "C:\\Windows\\Windows");
}

TEST_F(FindAndReplace, IgnoresCaseBeyondAscii) {
  pair("Größe", "x");
  EXPECT_EQ(applyFindReplace("D:\\GRÖßE\\gröSSe"), "D:\\x\\gröSSe");
}

TEST_F(FindAndReplace, HitsAnyPartOfAText) {
  pair("net", "NET");
  EXPECT_EQ(applyFindReplace("inetpub;10.net"), "iNETpub;10.NET");
}

TEST_F(FindAndReplace, AppliesEachPairToTheResultOfTheOneBefore) {
  pair("C:\\WINNT", "D:\\WINNT");
  pair("D:", "E:");
  EXPECT_EQ(applyFindReplace("c:\\winnt\\x"), "E:\\WINNT\\x");
}

TEST_F(FindAndReplace, GoesThroughThePairsOnceOnly) {
  pair("D:", "E:");
  pair("C:", "D:");
  EXPECT_EQ(applyFindReplace("C:\\x"), "D:\\x");
}

TEST_F(FindAndReplace, LooksNotIntoWhatItHasPutIn) {
  pair("a", "aa");
  EXPECT_EQ(applyFindReplace("banana"), "baanaanaa");
}

TEST_F(FindAndReplace, TakesAPartOutForAnEmptyNewText) {
  pair("old", "");
  EXPECT_EQ(applyFindReplace("goldOLD"), "g");
}

TEST_F(FindAndReplace, MayReplaceAWholeTextByNothing) {
  pair("all", "");
  EXPECT_EQ(applyFindReplace("all"), "");
}

TEST_F(FindAndReplace, LeavesATextAloneForAnEmptyOldText) {
  pair("", "x");
  EXPECT_EQ(applyFindReplace("abc"), "abc");
}

TEST_F(FindAndReplace, NeverReachesAnOldTextWithoutANewOne) {
  pair("a", "b");
  frmMain.lstOldValues.addItem("c");
  EXPECT_EQ(applyFindReplace("abc"), "bbc");
}

TEST_F(FindAndReplace, DoesNothingForANewTextWithoutAnOldOne) {
  pair("a", "b");
  frmMain.lstNewValues.addItem("c");
  frmMain.lstNewValues.addItem("d");
  EXPECT_EQ(applyFindReplace("abc"), "bbc");
}

TEST_F(FindAndReplace, RewritesWhatIsNoTextByItsText) {
  pair("1", "2");
  EXPECT_EQ(applyFindReplace(Value(std::int32_t{31})), "32");
}

TEST_F(FindAndReplace, LogsEachPairAndTheResultInADebugRun) {
  run.bDebug = true;
  pair("C:", "D:");
  pair("x", "y");
  applyFindReplace(" C:\\x");
  EXPECT_EQ(logLines(), (std::vector<std::string>{
                            "Replace checking @ C:\\x@ for @C:@ to be replaced by @D:@ ",
                            "Replace checking @ D:\\x@ for @x@ to be replaced by @y@ ",
                            "New value  D:\\y",
                        }));
}

TEST_F(FindAndReplace, LogsTheResultWithoutPairsTooInADebugRun) {
  run.bDebug = true;
  applyFindReplace("abc");
  EXPECT_EQ(logLines(), std::vector<std::string>{"New value abc"});
}

TEST_F(FindAndReplace, LogsNothingForATextOfBlanks) {
  run.bDebug = true;
  pair("a", "b");
  applyFindReplace("  ");
  EXPECT_TRUE(logLines().empty());
}

TEST_F(FindAndReplace, LogsNothingWithoutDebug) {
  pair("a", "b");
  applyFindReplace("a");
  EXPECT_TRUE(logLines().empty());
}

TEST_F(FindAndReplace, LeavesAFailureToItsCaller) {
  EXPECT_EQ(
      numberOfFailure([] { return applyFindReplace(Value::Object(std::make_shared<SecurityObject>())); }),
      error_number::kNotSupportedByObject);
  EXPECT_FALSE(Err.isSet());
}

TEST_F(FindAndReplace, LeavesALogThatCantBeWrittenToItsCaller) {
  run.bDebug = true;
  watchFiles().refuses = [](const std::string&) { return true; };
  EXPECT_EQ(numberOfFailure([] { return applyFindReplace("a"); }), error_number::kPathFileAccess);
}

class ScriptMapVerbs : public FindAndReplace {
 protected:
  ScriptMapVerbs() { openWindow(); }
};

TEST_F(ScriptMapVerbs, AreTurnedIntoTheOnesThatWereNotThere) {
  EXPECT_EQ(swapScriptMapVerbs(".asp,C:\\x\\a.dll,1,GET,HEAD,POST,TRACE"),
            ".asp,C:\\x\\a.dll,1,TRACE,PUT,DELETE,OPTIONS");
}

TEST_F(ScriptMapVerbs, AreAllAppendedInTheOrderOfTheTableWhereThereAreNone) {
  EXPECT_EQ(swapScriptMapVerbs(".asp,C:\\x\\a.dll,1"),
            ".asp,C:\\x\\a.dll,1,GET,POST,HEAD,TRACE,PUT,DELETE,OPTIONS");
}

TEST_F(ScriptMapVerbs, StayWhenTheyStandLast) {
  EXPECT_EQ(swapScriptMapVerbs(".idq,a.dll,7,GET"), ".idq,a.dll,7,GET,POST,HEAD,TRACE,PUT,DELETE,OPTIONS");
}

TEST_F(ScriptMapVerbs, CountAsThereWhenTheyArePartOfThePath) {
  EXPECT_EQ(swapScriptMapVerbs(".x,C:\\output\\a.dll,1"),
            ".x,C:\\output\\a.dll,1,GET,POST,HEAD,TRACE,DELETE,OPTIONS");
}

TEST_F(ScriptMapVerbs, AreFoundInAnyCaseAndTakenOutInTheirOwnOnly) {
  EXPECT_EQ(swapScriptMapVerbs(".x,a.dll,1,get,Post,HEAD,1"),
            ".x,a.dll,1,get,Post,1,TRACE,PUT,DELETE,OPTIONS");
}

TEST_F(ScriptMapVerbs, AreTakenOutAtEveryPlace) {
  EXPECT_EQ(swapScriptMapVerbs("GET,x,GET,POST,HEAD,TRACE,PUT,DELETE,OPTIONS,y"), "x,y");
}

TEST_F(ScriptMapVerbs, AreReplacedLikeAnyTextAfterwards) {
  pair("C:", "D:");
  pair("OPTIONS", "ALL");
  EXPECT_EQ(swapScriptMapVerbs(".x,C:\\a.dll,1,GET,POST,HEAD,TRACE,PUT,DELETE,"), ".x,D:\\a.dll,1,,ALL");
}

TEST_F(ScriptMapVerbs, ComeForAnEmptyEntryToo) {
  EXPECT_EQ(swapScriptMapVerbs(""), ",GET,POST,HEAD,TRACE,PUT,DELETE,OPTIONS");
}

class NewBindings : public FindAndReplace {
 protected:
  ListControl& list = frmMain.lstNewIPs(0);
  Value counter;
};

TEST_F(NewBindings, EndEachWithALineEndTheLastOneToo) {
  list.addItem(":80:");
  list.addItem("10.0.0.1:8080:shop");
  EXPECT_EQ(rewrittenBindings(list, counter), ":80:\r\n10.0.0.1:8080:shop\r\n");
}

TEST_F(NewBindings, PassThroughFindAndReplace) {
  pair("10.0.0", "192.168.1");
  list.addItem("10.0.0.7:80:");
  EXPECT_EQ(rewrittenBindings(list, counter), "192.168.1.7:80:\r\n");
}

TEST_F(NewBindings, AreNotParsed) {
  list.addItem("anything at all");
  EXPECT_EQ(rewrittenBindings(list, counter), "anything at all\r\n");
}

TEST_F(NewBindings, LeaveTheCounterOneBehindTheLast) {
  list.addItem("a");
  list.addItem("b");
  rewrittenBindings(list, counter);
  EXPECT_EQ(counter.toText(), "2");
}

}  // namespace
}  // namespace trelvin::test
