#include "platform/windows/adsi/variant_value.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "fakes/failures.h"

namespace trelvin {
namespace {

using test::numberOfFailure;

Value roundTrip(const Value& value) {
  return valueOf(variantOf(value).get());
}

TEST(VariantValue, EveryKindComesBackAsItWas) {
  Date date;
  date.parts.tm_year = 104;
  date.parts.tm_mon = 2;
  date.parts.tm_mday = 7;
  date.parts.tm_hour = 2;
  date.parts.tm_min = 30;
  date.parts.tm_sec = 59;
  const Value values[] = {Value(),
                          Null{},
                          true,
                          false,
                          std::int16_t{-7},
                          std::int32_t{70000},
                          -2147483647 - 1,
                          1.5,
                          "",
                          "Grüße 日本",
                          date,
                          Value::Bytes{0, 1, 255},
                          Value::Bytes{},
                          Value::List{},
                          Value::List{"a", std::int32_t{1}, Value::List{"deep"}}};
  for (const Value& value : values) {
    const Value back = roundTrip(value);
    EXPECT_EQ(back.varType(), value.varType());
    EXPECT_TRUE(back == value) << value.varType();
  }
}

TEST(VariantValue, NumbersOfOtherWidthsBecomeLongsWhereTheyFit) {
  VARIANT variant{};
  V_VT(&variant) = VT_UI4;
  V_UI4(&variant) = 4000000000U;
  EXPECT_EQ(valueOf(variant).varType(), kVarDouble);
  V_UI4(&variant) = 5;
  EXPECT_EQ(valueOf(variant), Value(5));
  V_VT(&variant) = VT_UI1;
  V_UI1(&variant) = 200;
  EXPECT_EQ(valueOf(variant), Value(std::int16_t{200}));
}

TEST(VariantValue, AKindThatNoPropertyHasFails) {
  VARIANT variant{};
  V_VT(&variant) = VT_CY;
  EXPECT_EQ(numberOfFailure([&] { return valueOf(variant); }), error_number::kTypeMismatch);
}

class OtherObject final : public ValueObject {
 public:
  [[nodiscard]] std::string typeName() const override { return "Other"; }
};

TEST(VariantValue, AnObjectThatIsNoneOfTheServicesOwnFails) {
  const Value value(std::make_shared<OtherObject>());
  EXPECT_EQ(numberOfFailure([&] { variantOf(value); }), error_number::kNotSupportedByObject);
}

}  // namespace
}  // namespace trelvin
