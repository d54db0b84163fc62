#include "core/text.h"

#include <gtest/gtest.h>

namespace trelvin {
namespace {

TEST(TextTest, FoldsCaseBeyondAscii) {
  EXPECT_EQ(upperCase("iiswebvirtualdir"), "IISWEBVIRTUALDIR");
  EXPECT_EQ(upperCase("zürich ñandú жук αβς ŵ"), "ZÜRICH ÑANDÚ ЖУК ΑΒΣ Ŵ");
  EXPECT_EQ(lowerCase("ZÜRICH ÑANDÚ ЖУК Ŵ"), "zürich ñandú жук ŵ");
}

TEST(TextTest, LeavesLettersWithoutASingleCounterpartAlone) {
  EXPECT_EQ(upperCase("straße"), "STRAßE");
  EXPECT_EQ(upperCase("日本語 123 -_"), "日本語 123 -_");
}

TEST(TextTest, FoldsLettersThatChangeTheirLengthInBytes) {
  EXPECT_EQ(upperCase("ɐ"), "Ɐ");
  EXPECT_EQ(upperCase("\xC4\xB1"), "I");  // dotless i
}

TEST(TextTest, PassesBytesThatAreNoUtf8AsTheyAre) {
  const std::string broken = "a\xFFz\xC3";
  EXPECT_EQ(upperCase(broken), "A\xFFZ\xC3");
  EXPECT_TRUE(equalsIgnoringCase(broken, "A\xFFZ\xC3"));
  EXPECT_FALSE(equalsIgnoringCase("a\xFF", "a\xFE"));
  EXPECT_EQ(characterCount(broken), 4U);
}

TEST(TextTest, ComparesWithoutRegardToCase) {
  EXPECT_TRUE(equalsIgnoringCase("", ""));
  EXPECT_TRUE(equalsIgnoringCase("Straße", "STRAßE"));
  EXPECT_TRUE(equalsIgnoringCase("ÄrGer", "äRgEr"));
  EXPECT_FALSE(equalsIgnoringCase("abc", "abcd"));
  EXPECT_FALSE(equalsIgnoringCase("abcd", "abc"));
  EXPECT_FALSE(equalsIgnoringCase("é", "e"));
}

TEST(TextTest, OrdersTextsSoThatEqualOnesAreNeighbours) {
  EXPECT_TRUE(sortsBefore("a", "B"));
  EXPECT_TRUE(sortsBefore("B", "c"));
  EXPECT_TRUE(sortsBefore("A", "a"));
  EXPECT_FALSE(sortsBefore("a", "A"));
  EXPECT_FALSE(sortsBefore("a", "a"));
  EXPECT_TRUE(sortsBefore("a", "ab"));
  EXPECT_TRUE(sortsBefore("", "a"));
}

TEST(TextTest, TrimsNothingButTheBlank) {
  EXPECT_EQ(trimmed("  a b  "), "a b");
  EXPECT_EQ(trimmed("\ta\n"), "\ta\n");
  EXPECT_EQ(trimmed("   "), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("\xC2\xA0"), "\xC2\xA0");  // a no-break space is none
  EXPECT_EQ(trimmedRight(" a "), " a");
}

TEST(TextTest, CountsAndCutsByCharacters) {
  EXPECT_EQ(characterCount("Zürich"), 6U);
  EXPECT_EQ(characterCount("日本"), 2U);
  EXPECT_EQ(firstCharacters("Zürich", 2), "Zü");
  EXPECT_EQ(firstCharacters("ab", 5), "ab");
  EXPECT_EQ(lastCharacters("Zürich", 5), "ürich");
  EXPECT_EQ(lastCharacters("ab", 5), "ab");
  EXPECT_EQ(lastCharacters("ab", 0), "");
  EXPECT_EQ(behindCharacters("Zürich", 2), "rich");
  EXPECT_EQ(behindCharacters("ab", 5), "");
}

TEST(TextTest, SplitsWithEmptyParts) {
  EXPECT_EQ(split("a  b", ' '), (std::vector<std::string>{"a", "", "b"}));
  EXPECT_EQ(split(" ", ' '), (std::vector<std::string>{"", ""}));
  EXPECT_TRUE(split("", ' ').empty());
}

TEST(TextTest, FindsWithoutRegardToCase) {
  EXPECT_TRUE(containsIgnoringCase(R"(C:\Web\AB)", R"(c:\web\a)"));
  EXPECT_TRUE(containsIgnoringCase("über", "ÜB"));
  EXPECT_TRUE(containsIgnoringCase("abc", ""));
  EXPECT_FALSE(containsIgnoringCase("abc", "abcd"));
  EXPECT_FALSE(containsIgnoringCase("", "a"));
}

TEST(TextTest, ReplacesEveryOccurrenceOnceAndNothingWithinWhatItPutIn) {
  EXPECT_EQ(replaceAll("aXaXa", "X", "XX"), "aXXaXXa");
  EXPECT_EQ(replaceAll("get,GET,", "GET,", ""), "get,");
  EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
  EXPECT_EQ(replaceAllIgnoringCase(R"(c:\winnt\x C:\WinNT)", R"(C:\WINNT)", R"(D:\WINNT)"),
            R"(D:\WINNT\x D:\WINNT)");
  EXPECT_EQ(replaceAllIgnoringCase("aaaa", "AA", "a"), "aa");
  EXPECT_EQ(replaceAllIgnoringCase("Ärger ärger", "ärger", "Friede"), "Friede Friede");
  EXPECT_EQ(replaceAllIgnoringCase("abc", "", "x"), "abc");
  EXPECT_EQ(replaceAllIgnoringCase("", "a", "x"), "");
}

TEST(TextTest, ReversesByCharacters) {
  EXPECT_EQ(reversed("Zü1"), "1üZ");
  EXPECT_EQ(reversed(""), "");
}

}  // namespace
}  // namespace trelvin
