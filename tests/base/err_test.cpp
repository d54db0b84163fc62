#include "core/err.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

namespace trelvin {
namespace {

class ErrTest : public ::testing::Test {
 protected:
  void SetUp() override { Err.clear(); }
};

TEST_F(ErrTest, KeepsAFailureUntilItIsCleared) {
  EXPECT_FALSE(attempt([] { throw Failure(error_number::kMetabasePathNotFound, "gone"); }));
  EXPECT_TRUE(attempt([] {}));
  EXPECT_EQ(Err.number, error_number::kMetabasePathNotFound);
  EXPECT_EQ(Err.description, "gone");
  Err.clear();
  EXPECT_FALSE(Err.isSet());
  EXPECT_EQ(Err.description, "");
}

TEST_F(ErrTest, ALaterFailureTakesThePlaceOfAnEarlierOne) {
  attempt([] { throw Failure(5); });
  attempt([] { throw Failure(13); });
  EXPECT_EQ(Err.number, 13);
  EXPECT_EQ(Err.description, "Type mismatch");
}

TEST_F(ErrTest, AFailedAssignmentKeepsTheOldValue) {
  std::string text = "old";
  const auto failing = []() -> std::string { throw Failure(6); };
  attempt([&] { text = failing(); });
  EXPECT_EQ(text, "old");
}

TEST_F(ErrTest, AConditionThatFailsHolds) {
  EXPECT_TRUE(holdsOrFails([]() -> bool { throw Failure(13); }));
  EXPECT_EQ(Err.number, 13);
  EXPECT_FALSE(holdsOrFails([] { return false; }));
  EXPECT_TRUE(holdsOrFails([] { return true; }));
}

TEST_F(ErrTest, RunningOutOfMemoryIsAFailureLikeOthers) {
  attempt([] { throw std::bad_alloc(); });
  EXPECT_EQ(Err.number, error_number::kOutOfMemory);
}

TEST_F(ErrTest, AHandleThatHoldsNothingFailsWith91) {
  const std::shared_ptr<int> nothing;
  attempt([&] { bound(nothing) = 1; });
  EXPECT_EQ(Err.number, error_number::kObjectNotSet);
  const auto something = std::make_shared<int>(1);
  bound(something) = 2;
  EXPECT_EQ(*something, 2);
}

TEST_F(ErrTest, NumbersPrintAsSignedDecimalsAndUpperCaseHex) {
  EXPECT_EQ(hexOf(error_number::kMetabasePathNotFound), "80070003");
  EXPECT_EQ(std::to_string(error_number::kMetabasePathNotFound), "-2147024893");
  EXPECT_EQ(hexOf(429), "1AD");
  EXPECT_EQ(hexOf(0), "0");
}

TEST_F(ErrTest, UnknownNumbersHaveTheGeneralDescription) {
  EXPECT_EQ(describeError(12345), "Application-defined or object-defined error");
  EXPECT_EQ(describeError(91), "Object variable or With block variable not set");
}

}  // namespace
}  // namespace trelvin
