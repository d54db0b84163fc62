// Text and list helpers.
#include "core/helpers.h"

#include <gtest/gtest.h>

#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "window/controls.h"

namespace trelvin::test {
namespace {

TEST(QuoteSqlTest, NullGivesAnEmptyText) {
  EXPECT_EQ(quoteSql(Null{}), "");
}

TEST(QuoteSqlTest, DoublesEverySingleQuote) {
  EXPECT_EQ(quoteSql("O'Hara"), "O''Hara");
  EXPECT_EQ(quoteSql("''"), "''''");
  EXPECT_EQ(quoteSql("'"), "''");
}

TEST(QuoteSqlTest, TouchesNoOtherCharacter) {
  const std::string text = "a \"b\" \\ % _ ; -- \r\n\t \xE2\x80\x99 [x]";
  EXPECT_EQ(quoteSql(text), text);
}

TEST(QuoteSqlTest, WritesOtherValuesAsText) {
  EXPECT_EQ(quoteSql(""), "");
  EXPECT_EQ(quoteSql(Value()), "");
  EXPECT_EQ(quoteSql(std::int32_t{-12}), "-12");
  EXPECT_EQ(quoteSql(true), "True");
  EXPECT_EQ(quoteSql(2.5), "2.5");
}

TEST(QuoteSqlTest, AValueThatIsNoTextFails) {
  EXPECT_EQ(numberOfFailure([] { return quoteSql(Value::List{"a"}); }), 13);
}

class RemoveDuplicatesTest : public ::testing::Test {
 protected:
  std::vector<std::string> remaining(std::initializer_list<const char*> entries) {
    ListControl list(form_, "lst");
    list.onRefresh = [this] { ++refreshes_; };
    for (const char* entry : entries) list.addItem(entry);
    removeDuplicates(list);
    std::vector<std::string> left;
    for (std::int32_t i = 0; i < list.listCount(); ++i) left.push_back(list.list(i));
    return left;
  }

  Form form_;
  int refreshes_ = 0;
};

using Texts = std::vector<std::string>;

TEST_F(RemoveDuplicatesTest, AnEmptyListStaysEmpty) {
  EXPECT_EQ(remaining({}), Texts{});
  EXPECT_EQ(refreshes_, 0);
}

TEST_F(RemoveDuplicatesTest, RunsOfAnyLengthCollapse) {
  EXPECT_EQ(remaining({"a", "a", "a", "b"}), (Texts{"a", "b"}));
}

TEST_F(RemoveDuplicatesTest, ARunAtTheEndCollapsesToo) {
  EXPECT_EQ(remaining({"a", "b", "b", "b"}), (Texts{"a", "b"}));
}

TEST_F(RemoveDuplicatesTest, AListOfOneTextKeepsOne) {
  EXPECT_EQ(remaining({"a", "a", "a"}), (Texts{"a"}));
}

TEST_F(RemoveDuplicatesTest, TheListIsRefreshedForEachEntryThatGoes) {
  remaining({"a", "a", "a", "b", "b"});
  EXPECT_EQ(refreshes_, 3);
}

TEST_F(RemoveDuplicatesTest, CaseMakesADifference) {
  EXPECT_EQ(remaining({"A", "a", "a", "A"}), (Texts{"A", "a", "A"}));
}

TEST_F(RemoveDuplicatesTest, OnlyNeighboursAreCompared) {
  EXPECT_EQ(remaining({"a", "b", "a"}), (Texts{"a", "b", "a"}));
}

TEST_F(RemoveDuplicatesTest, AnEmptyLastEntryIsNotTakenForItsMissingNeighbour) {
  EXPECT_EQ(remaining({"a", ""}), (Texts{"a", ""}));
  EXPECT_EQ(remaining({"a", "", ""}), (Texts{"a", ""}));
  EXPECT_EQ(remaining({""}), (Texts{""}));
}

TEST(ReverseStringTest, PutsTheCharactersInReverseOrder) {
  EXPECT_EQ(ReverseString("abc"), "cba");
  EXPECT_EQ(ReverseString("a"), "a");
  EXPECT_EQ(ReverseString(""), "");
}

TEST(ReverseStringTest, KeepsACharacterOfSeveralBytesWhole) {
  EXPECT_EQ(ReverseString("\xC3\xA4-\xE2\x82\xAC"), "\xE2\x82\xAC-\xC3\xA4");
}

TEST(PadTwoDigitsTest, ShorterTextGetsANoughtInFront) {
  EXPECT_EQ(padTwoDigits("7"), "07");
  EXPECT_EQ(padTwoDigits(std::int32_t{3}), "03");
  EXPECT_EQ(padTwoDigits(""), "0");
}

TEST(PadTwoDigitsTest, TwoCharactersAndMoreStay) {
  EXPECT_EQ(padTwoDigits("12"), "12");
  EXPECT_EQ(padTwoDigits(std::int32_t{2004}), "2004");
  EXPECT_EQ(padTwoDigits("\xC3\xA4"), "0\xC3\xA4") << "characters count, not bytes";
}

}  // namespace
}  // namespace trelvin::test
