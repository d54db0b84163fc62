#include "platform/windows/adsi/variant_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/err.h"
#include "fakes/failures.h"
#include "windows/provider/inert.h"

namespace trelvin {
namespace {

using test::numberOfFailure;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Value roundTrip(const Value& value) {
  return valueOf(variantOf(value).get());
}

Date moment() {
  Date date;
  date.parts.tm_year = 104;
  date.parts.tm_mon = 2;
  date.parts.tm_mday = 7;
  date.parts.tm_hour = 2;
  date.parts.tm_min = 30;
  date.parts.tm_sec = 59;
  return date;
}

TEST(VariantValue, EveryKindComesBackAsItWas) {
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
                          moment(),
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

VARTYPE kindOf(const Value& value) {
  return V_VT(&variantOf(value).get());
}

// Whoever is called tells values by these kinds and no others.
TEST(VariantValue, EveryKindHasItsOwnInCom) {
  EXPECT_EQ(kindOf(Value()), VT_EMPTY);
  EXPECT_EQ(kindOf(Null{}), VT_NULL);
  EXPECT_EQ(kindOf(std::int16_t{-7}), VT_I2);
  EXPECT_EQ(kindOf(std::int32_t{70000}), VT_I4);
  EXPECT_EQ(kindOf(1.5), VT_R8);
  EXPECT_EQ(kindOf(moment()), VT_DATE);
  EXPECT_EQ(kindOf("a"), VT_BSTR);
  EXPECT_EQ(kindOf(true), VT_BOOL);
  EXPECT_EQ(kindOf(Value::Object(std::make_shared<DispatchValue>(ComPtr<IDispatch>()))), VT_DISPATCH);
  EXPECT_EQ(kindOf(Value::List{"a"}), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(kindOf(Value::List{}), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(kindOf(Value::Bytes{1}), VT_ARRAY | VT_UI1);
  EXPECT_EQ(kindOf(Value::Bytes{}), VT_ARRAY | VT_UI1);
}

TEST(VariantValue, SimpleContentLiesInItsOwnField) {
  EXPECT_EQ(V_I2(&variantOf(std::int16_t{-7}).get()), -7);
  EXPECT_EQ(V_I4(&variantOf(std::int32_t{-70000}).get()), -70000);
  EXPECT_EQ(V_R8(&variantOf(1.5).get()), 1.5);
  EXPECT_EQ(V_BOOL(&variantOf(true).get()), VARIANT_TRUE);
  EXPECT_EQ(V_BOOL(&variantOf(false).get()), VARIANT_FALSE);
  // 2:30:59 on the day 38053 after 1899-12-30
  EXPECT_NEAR(V_DATE(&variantOf(moment()).get()), 38053 + 9059.0 / 86400, 1e-9);
  const Variant text = variantOf("Grüße 日本");
  EXPECT_EQ(std::wstring(V_BSTR(&text.get()), ::SysStringLen(V_BSTR(&text.get()))), L"Grüße 日本");
}

TEST(VariantValue, AListIsAnArrayOfVariantsFrom0) {
  const Variant variant = variantOf(Value::List{"a", std::int32_t{1}});
  SAFEARRAY* const array = V_ARRAY(&variant.get());
  ASSERT_EQ(::SafeArrayGetDim(array), 1U);
  LONG lower = -1;
  LONG upper = -1;
  EXPECT_EQ(::SafeArrayGetLBound(array, 1, &lower), S_OK);
  EXPECT_EQ(::SafeArrayGetUBound(array, 1, &upper), S_OK);
  EXPECT_EQ(lower, 0);
  EXPECT_EQ(upper, 1);
  Variant element;
  ASSERT_EQ(::SafeArrayGetElement(array, &upper, &element.get()), S_OK);
  EXPECT_EQ(V_VT(&element.get()), VT_I4);
  EXPECT_EQ(V_I4(&element.get()), 1);
}

TEST(VariantValue, BytesAreAnArrayOfBytes) {
  const Variant variant = variantOf(Value::Bytes{0, 1, 255});
  LONG last = 2;
  BYTE byte = 0;
  ASSERT_EQ(::SafeArrayGetElement(V_ARRAY(&variant.get()), &last, &byte), S_OK);
  EXPECT_EQ(byte, 255);
}

// An array as another program makes it.
class GivenArray {
 public:
  GivenArray(VARTYPE kind, LONG lowerBound, ULONG count) {
    SAFEARRAYBOUND bound{};
    bound.cElements = count;
    bound.lLbound = lowerBound;
    V_ARRAY(&variant_.get()) = ::SafeArrayCreate(kind, 1, &bound);
    V_VT(&variant_.get()) = static_cast<VARTYPE>(VT_ARRAY | kind);
  }

  // For elements that are pointers, the pointer itself.
  void set(LONG index, void* element) {
    ASSERT_EQ(::SafeArrayPutElement(V_ARRAY(&variant_.get()), &index, element), S_OK);
  }
  VARIANT& get() { return variant_.get(); }

 private:
  Variant variant_;
};

TEST(VariantValue, AnArrayMayBeCountedFromAnyNumber) {
  GivenArray array(VT_VARIANT, 1, 2);
  array.set(1, &variantOf("a").get());
  array.set(2, &variantOf(std::int32_t{7}).get());
  EXPECT_TRUE(valueOf(array.get()) == Value(Value::List{"a", std::int32_t{7}}));
}

TEST(VariantValue, AnArrayOfTextsIsAListToo) {
  GivenArray array(VT_BSTR, 0, 3);
  array.set(0, Bstr("Grüße").get());
  array.set(2, Bstr("b").get());  // what is between them is a null pointer, COM's other empty text
  EXPECT_TRUE(valueOf(array.get()) == Value(Value::List{"Grüße", "", "b"}));
}

TEST(VariantValue, AnArrayOfAnotherKindFails) {
  EXPECT_EQ(numberOfFailure([] { return valueOf(GivenArray(VT_I4, 0, 1).get()); }),
            error_number::kTypeMismatch);
  SAFEARRAYBOUND square[2]{{2, 0}, {2, 0}};
  Variant variant;
  V_ARRAY(&variant.get()) = ::SafeArrayCreate(VT_VARIANT, 2, square);
  V_VT(&variant.get()) = VT_ARRAY | VT_VARIANT;
  EXPECT_EQ(numberOfFailure([&] { return valueOf(variant.get()); }), error_number::kTypeMismatch);
}

TEST(VariantValue, AnArrayThatIsNotThereHasNoElements) {
  VARIANT variant{};
  V_VT(&variant) = VT_ARRAY | VT_VARIANT;
  EXPECT_TRUE(valueOf(variant) == Value(Value::List{}));
  V_VT(&variant) = VT_ARRAY | VT_UI1;
  EXPECT_TRUE(valueOf(variant) == Value(Value::Bytes{}));
  SAFEARRAY* none = nullptr;
  V_VT(&variant) = VT_BYREF | VT_ARRAY | VT_BSTR;
  V_ARRAYREF(&variant) = &none;
  EXPECT_TRUE(valueOf(variant) == Value(Value::List{}));
}

TEST(VariantValue, WhatIsGivenByReferenceIsReadThere) {
  GivenArray array(VT_VARIANT, 0, 1);
  array.set(0, &variantOf("a").get());
  VARIANT toArray{};
  V_VT(&toArray) = VT_BYREF | VT_ARRAY | VT_VARIANT;
  V_ARRAYREF(&toArray) = &V_ARRAY(&array.get());
  EXPECT_TRUE(valueOf(toArray) == Value(Value::List{"a"}));
  VARIANT toVariant{};
  V_VT(&toVariant) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&toVariant) = &toArray;
  EXPECT_TRUE(valueOf(toVariant) == Value(Value::List{"a"}));
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
  V_VT(&variant) = VT_UI2;
  V_UI2(&variant) = 65535;
  EXPECT_EQ(valueOf(variant), Value(65535));
  V_VT(&variant) = VT_R4;
  V_R4(&variant) = 0.25F;
  EXPECT_EQ(valueOf(variant), Value(0.25));
}

TEST(VariantValue, AKindThatNoPropertyHasFails) {
  VARIANT variant{};
  V_VT(&variant) = VT_CY;
  EXPECT_EQ(numberOfFailure([&] { return valueOf(variant); }), error_number::kTypeMismatch);
}

class PlainObject final : public test::Inert<IDispatch, IID_IDispatch> {};

TEST(VariantValue, AnObjectIsPassedOnItself) {
  const ComPtr<IDispatch> object(new PlainObject);
  {
    const Variant variant = variantOf(Value::Object(std::make_shared<DispatchValue>(object)));
    ASSERT_EQ(V_VT(&variant.get()), VT_DISPATCH);
    EXPECT_EQ(V_DISPATCH(&variant.get()), object.get());
    const Value back = valueOf(variant.get());
    const auto* held = dynamic_cast<const DispatchValue*>(back.object().get());
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(held->object(), object.get());
  }
  // Both have counted their references: the one that is left is the test's own.
  object->AddRef();
  EXPECT_EQ(object->Release(), 1U);
}

TEST(VariantValue, NamesComeAsAListAsASingleTextOrNotAtAll) {
  EXPECT_THAT(namesIn(Value::List{"Path", "AppRoot"}), ElementsAre("Path", "AppRoot"));
  EXPECT_THAT(namesIn("Path"), ElementsAre("Path"));
  EXPECT_THAT(namesIn(Value::List{}), IsEmpty());
  EXPECT_THAT(namesIn(Value()), IsEmpty());
  EXPECT_THAT(namesIn(Null{}), IsEmpty());
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
