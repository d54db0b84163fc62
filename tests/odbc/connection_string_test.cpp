#include "platform/shared/odbc/connection_string.h"

#include <gtest/gtest.h>

#include <string>

namespace trelvin {
namespace {

TEST(ConnectionString, IsMadeOfPairsWithBlanksAroundThemDropped) {
  const auto pairs = attributesOf(" DSN = store ;; PASSWORD=a b;Empty=;");
  ASSERT_EQ(pairs.size(), 3U);
  EXPECT_EQ(pairs[0].keyword, "DSN");
  EXPECT_EQ(pairs[0].value, "store");
  EXPECT_EQ(pairs[1].value, "a b");
  EXPECT_EQ(pairs[2].keyword, "Empty");
  EXPECT_EQ(pairs[2].value, "");
}

TEST(ConnectionString, ASemicolonInBracesBelongsToTheValue) {
  const auto pairs = attributesOf("A={x;y}}z};B=1");
  ASSERT_EQ(pairs.size(), 2U);
  EXPECT_EQ(pairs[0].value, "{x;y}}z}");
  EXPECT_EQ(unbraced(pairs[0].value), "x;y}z");
  EXPECT_EQ(pairs[1].value, "1");
}

TEST(ConnectionString, ASemicolonThatNoKeywordFollowsBelongsToTheValue) {
  const auto pairs = attributesOf("DBQ=Z:\\a;b\\Trelvin.mdb;Driver={x};");
  ASSERT_EQ(pairs.size(), 2U);
  EXPECT_EQ(pairs[0].value, "Z:\\a;b\\Trelvin.mdb");
  EXPECT_EQ(attributesOf("DBQ= Z:\\a ; b\\c.mdb ;X=1")[0].value, "Z:\\a ; b\\c.mdb");
}

TEST(ConnectionString, BracesThatNothingClosesReachToTheEnd) {
  const auto pairs = attributesOf("A={x;B=1");
  ASSERT_EQ(pairs.size(), 1U);
  EXPECT_EQ(pairs[0].value, "{x;B=1");
  EXPECT_EQ(unbraced(pairs[0].value), "{x;B=1");
}

TEST(ConnectionString, TheEmptyTextAndLooseWordsHoldNoPairs) {
  EXPECT_TRUE(attributesOf("").empty());
  EXPECT_TRUE(attributesOf(" ;; ").empty());
  EXPECT_TRUE(attributesOf("words").empty());
}

TEST(ConnectionString, TheFirstAttributeOfANameCountsInAnyCase) {
  const auto pairs = attributesOf("driver={One};DRIVER=Two");
  EXPECT_EQ(attributeOf(pairs, "Driver"), "One");
  EXPECT_EQ(attributeOf(pairs, "DBQ"), "");
}

TEST(ConnectionString, ReachesTheDriverManagerAsItStandsLessTheBlanksAtItsEnd) {
  EXPECT_EQ(driverManagerString("DSN=store  "), "DSN=store");
  EXPECT_EQ(driverManagerString(" DSN = store ;;UID=x"), " DSN = store ;;UID=x");
  EXPECT_EQ(driverManagerString(""), "");
}

TEST(ConnectionString, AdosNamesOfUserAndPasswordBecomeOdbcs) {
  EXPECT_EQ(driverManagerString("DSN=store;User Id=me;PASSWORD=a=b;"), "DSN=store;UID=me;PWD=a=b;");
  EXPECT_EQ(driverManagerString("DSN=store;Password={a;b};"), "DSN=store;PWD={a;b};");
}

TEST(ConnectionString, APasswordWithASemicolonIsPutIntoBraces) {
  EXPECT_EQ(driverManagerString("DSN=store;User Id=me;PASSWORD=a;b;"), "DSN=store;UID=me;PWD={a;b};");
  EXPECT_EQ(driverManagerString("DSN=store;User Id=me;PASSWORD=a;b}c;"), "DSN=store;UID=me;PWD={a;b}}c};");
}

}  // namespace
}  // namespace trelvin
