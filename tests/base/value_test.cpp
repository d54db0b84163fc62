#include "core/value.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "fakes/failures.h"

namespace trelvin {
namespace {

class SomeObject : public ValueObject {
 public:
  [[nodiscard]] std::string typeName() const override { return "Some"; }
};

using test::numberOfFailure;

TEST(ValueTest, TellsItsTypeByTheVariantTypeNumbers) {
  EXPECT_EQ(Value().varType(), 0);
  EXPECT_EQ(Value(Null{}).varType(), 1);
  EXPECT_EQ(Value(std::int16_t{1}).varType(), 2);
  EXPECT_EQ(Value(1).varType(), 3);
  EXPECT_EQ(Value(1.5).varType(), 5);
  EXPECT_EQ(Value(Date{}).varType(), 7);
  EXPECT_EQ(Value("x").varType(), 8);
  EXPECT_EQ(Value(std::make_shared<SomeObject>()).varType(), 9);
  EXPECT_EQ(Value(true).varType(), 11);
  EXPECT_EQ(Value(Value::List{}).varType(), 8204);
  EXPECT_EQ(Value(Value::Bytes{}).varType(), 8209);
}

TEST(ValueTest, GivesTextsAsThePlatformWritesThem) {
  EXPECT_EQ(Value().toText(), "");
  EXPECT_EQ(Value(true).toText(), "True");
  EXPECT_EQ(Value(false).toText(), "False");
  EXPECT_EQ(Value(-2147483647 - 1).toText(), "-2147483648");
  EXPECT_EQ(Value(std::int16_t{-7}).toText(), "-7");
  EXPECT_EQ(Value("as it is ").toText(), "as it is ");
}

TEST(ValueTest, GivesDoublesWithFifteenDigitsAtTheMost) {
  EXPECT_EQ(textOf(0.0), "0");
  EXPECT_EQ(textOf(-0.0), "0");
  EXPECT_EQ(textOf(5.0), "5");
  EXPECT_EQ(textOf(0.1), "0.1");
  EXPECT_EQ(textOf(-2.5), "-2.5");
  EXPECT_EQ(textOf(1.0 / 3.0), "0.333333333333333");
  EXPECT_EQ(textOf(4294967295.0), "4294967295");
  EXPECT_EQ(textOf(123456789012345.0), "123456789012345");
  EXPECT_EQ(textOf(1e20), "1E+20");
  EXPECT_EQ(textOf(1.5e-20), "1.5E-20");
}

TEST(ValueTest, ReadsTheNumbersThatThePlatformReads) {
  EXPECT_EQ(longOf("0"), 0);
  EXPECT_EQ(longOf(" 12 "), 12);
  EXPECT_EQ(longOf("-12"), -12);
  EXPECT_EQ(longOf("+12"), 12);
  EXPECT_EQ(longOf("12-"), -12);
  EXPECT_EQ(longOf("1,234"), 1234);
  EXPECT_EQ(longOf("1e3"), 1000);
  EXPECT_EQ(longOf("1E+3"), 1000);
  EXPECT_EQ(longOf(".5e1"), 5);
  EXPECT_EQ(longOf("12."), 12);
  EXPECT_EQ(longOf("&H10"), 16);
  EXPECT_EQ(longOf("&hFFFFFFFF"), -1);
  EXPECT_EQ(longOf("&O17"), 15);
  EXPECT_DOUBLE_EQ(numberOf("3.25"), 3.25);
  EXPECT_DOUBLE_EQ(numberOf("1E-400"), 0);
}

TEST(ValueTest, RefusesTextsThatAreNoNumbersWith13) {
  for (const char* text :
       {"", " ", "abc", "12a", "1.2.3", "1e", "--1", "-", "+", ".", "&H", "&HG", "True", "\t1", "1 2"}) {
    EXPECT_EQ(numberOfFailure([&] { return longOf(std::string(text)); }), error_number::kTypeMismatch)
        << text;
  }
}

TEST(ValueTest, RefusesNumbersThatDoNotFitWith6) {
  EXPECT_EQ(integerOf("32767"), 32767);
  EXPECT_EQ(integerOf("-32768"), -32768);
  EXPECT_EQ(numberOfFailure([] { return integerOf("32768"); }), error_number::kOverflow);
  EXPECT_EQ(numberOfFailure([] { return integerOf("-32769"); }), error_number::kOverflow);
  EXPECT_EQ(numberOfFailure([] { return integerOf("1876543210"); }), error_number::kOverflow);
  EXPECT_EQ(longOf("2147483647"), 2147483647);
  EXPECT_EQ(numberOfFailure([] { return longOf("2147483648"); }), error_number::kOverflow);
  EXPECT_EQ(numberOfFailure([] { return longOf("&H1FFFFFFFF"); }), error_number::kOverflow);
  EXPECT_EQ(numberOfFailure([] { return numberOf("1e999"); }), error_number::kOverflow);
  EXPECT_EQ(numberOfFailure([] { return Value(40000).toInteger(); }), error_number::kOverflow);
}

TEST(ValueTest, RoundsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(longOf("0.5"), 0);
  EXPECT_EQ(longOf("1.5"), 2);
  EXPECT_EQ(longOf("2.5"), 2);
  EXPECT_EQ(longOf("-2.5"), -2);
  EXPECT_EQ(integerOf("32767.4"), 32767);
  EXPECT_EQ(numberOfFailure([] { return integerOf("32767.5"); }), error_number::kOverflow);
}

TEST(ValueTest, RefusesNullObjectsAndListsWhereATextOrANumberIsWanted) {
  EXPECT_EQ(numberOfFailure([] { return Value(Null{}).toText(); }), error_number::kInvalidUseOfNull);
  EXPECT_EQ(numberOfFailure([] { return Value(Null{}).toLong(); }), error_number::kInvalidUseOfNull);
  EXPECT_EQ(numberOfFailure([] { return Value(std::make_shared<SomeObject>()).toText(); }),
            error_number::kNotSupportedByObject);
  EXPECT_EQ(numberOfFailure([] { return Value(Value::List{"a"}).toText(); }), error_number::kTypeMismatch);
  EXPECT_EQ(numberOfFailure([] { return Value(Value::Bytes{1}).toLong(); }), error_number::kTypeMismatch);
  EXPECT_EQ(numberOfFailure([] { return Value("a").list(); }), error_number::kTypeMismatch);
  EXPECT_EQ(numberOfFailure([] { return Value("a").upperBound(); }), error_number::kTypeMismatch);
}

TEST(ValueTest, TakesTrueForMinusOneAndAnyNumberButNoughtForTrue) {
  EXPECT_EQ(Value(true).toLong(), -1);
  EXPECT_EQ(Value(false).toLong(), 0);
  EXPECT_TRUE(Value(2).toBoolean());
  EXPECT_FALSE(Value(0).toBoolean());
  EXPECT_TRUE(Value("true").toBoolean());
  EXPECT_FALSE(Value("FALSE").toBoolean());
  EXPECT_TRUE(Value("-1").toBoolean());
  EXPECT_EQ(numberOfFailure([] { return Value("yes").toBoolean(); }), error_number::kTypeMismatch);
}

TEST(ValueTest, CountsTheUpperBoundOfAListFromNought) {
  EXPECT_EQ(Value(Value::List{}).upperBound(), -1);
  EXPECT_EQ(Value(Value::List{"a"}).upperBound(), 0);
}

TEST(ValueTest, ComparesListsByContent) {
  EXPECT_EQ(Value(Value::List{"a", 1}), Value(Value::List{"a", 1}));
  EXPECT_FALSE(Value(Value::List{"a"}) == Value(Value::List{"b"}));
  EXPECT_FALSE(Value("1") == Value(1));
}

TEST(ValueTest, CountsDaysOfADateFromTheEndOf1899) {
  Date date;
  date.parts.tm_year = 100;  // 2000
  date.parts.tm_mon = 0;
  date.parts.tm_mday = 1;
  date.parts.tm_hour = 12;
  EXPECT_DOUBLE_EQ(Value(date).toDouble(), 36526.5);
}

}  // namespace
}  // namespace trelvin
