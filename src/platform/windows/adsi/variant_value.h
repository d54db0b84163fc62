// Values of the program in COM's form and back.
#pragma once

#include <string>
#include <vector>

#include "core/value.h"
#include "platform/windows/adsi/com.h"

namespace trelvin {

// An object that is the value of a property, such as IPSecurity.
class DispatchValue final : public ValueObject {
 public:
  explicit DispatchValue(ComPtr<IDispatch> object) : object_(std::move(object)) {}
  [[nodiscard]] std::string typeName() const override;
  [[nodiscard]] IDispatch* object() const { return object_.get(); }

 private:
  ComPtr<IDispatch> object_;
};

// Whole numbers that fit 16 bits and were stored so stay 16-bit; all wider ones are longs. Arrays of bytes
// become bytes, all other arrays lists, counted from 0. Fails with 13 for a kind that no property has, such
// as a currency.
Value valueOf(const VARIANT& variant);

// The texts of a list of names. A single name may come as a text, none as Empty or Null.
std::vector<std::string> namesIn(const Value& value);

// Fails with 7 when memory runs out, with 438 for an object that did not come from valueOf.
Variant variantOf(const Value& value);

}  // namespace trelvin
