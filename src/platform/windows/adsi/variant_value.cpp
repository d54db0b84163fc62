#include "platform/windows/adsi/variant_value.h"

#include <cstdint>
#include <limits>
#include <utility>

#include "core/err.h"
#include "platform/windows/system_time.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

std::string textOfBstr(BSTR text) {
  return text == nullptr ? std::string() : utf8Text({text, ::SysStringLen(text)});
}

Value dateValue(double moment) {
  SYSTEMTIME time{};
  if (!::VariantTimeToSystemTime(moment, &time)) throw Failure(error_number::kTypeMismatch);
  return dateOf(time);
}

double momentOf(const Date& date) {
  SYSTEMTIME time = systemTimeOf(date);
  double moment = 0;
  if (!::SystemTimeToVariantTime(&time, &moment)) throw Failure(error_number::kTypeMismatch);
  return moment;
}

// A long where it fits, else a double.
Value wholeNumber(double number) {
  const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::int32_t>::max();
  if (fits) return static_cast<std::int32_t>(number);
  return number;
}

// The content of an array of one dimension, held in place while it is read. No array at all is COM's other
// way to say that there are no elements.
class ArrayAccess {
 public:
  explicit ArrayAccess(SAFEARRAY* array) : array_(array) {
    if (array == nullptr) return;
    if (::SafeArrayGetDim(array) != 1) throw Failure(error_number::kTypeMismatch);
    LONG lower = 0;
    LONG upper = 0;
    requireSuccess(::SafeArrayGetLBound(array, 1, &lower));
    requireSuccess(::SafeArrayGetUBound(array, 1, &upper));
    count_ = upper < lower ? 0 : static_cast<std::size_t>(upper - lower) + 1;
    requireSuccess(::SafeArrayAccessData(array, &data_));
  }
  ArrayAccess(const ArrayAccess&) = delete;
  ArrayAccess& operator=(const ArrayAccess&) = delete;
  ~ArrayAccess() {
    if (array_ != nullptr) ::SafeArrayUnaccessData(array_);
  }

  [[nodiscard]] std::size_t count() const { return count_; }
  template <typename Element>
  [[nodiscard]] const Element* as() const {
    return static_cast<const Element*>(data_);
  }

 private:
  SAFEARRAY* array_;
  void* data_ = nullptr;
  std::size_t count_ = 0;
};

Value arrayValue(VARTYPE kind, SAFEARRAY* array) {
  const ArrayAccess content(array);
  if (kind == VT_UI1) {
    const auto* bytes = content.as<std::uint8_t>();
    return Value::Bytes(bytes, bytes + content.count());
  }
  Value::List list;
  list.reserve(content.count());
  for (std::size_t i = 0; i < content.count(); ++i) {
    if (kind == VT_VARIANT) {
      list.push_back(valueOf(content.as<VARIANT>()[i]));
    } else if (kind == VT_BSTR) {
      list.emplace_back(textOfBstr(content.as<BSTR>()[i]));
    } else {
      throw Failure(error_number::kTypeMismatch);
    }
  }
  return list;
}

Value objectValue(IDispatch* object) {
  if (object != nullptr) object->AddRef();
  return Value::Object(std::make_shared<DispatchValue>(ComPtr<IDispatch>(object)));
}

Value simpleValue(const VARIANT& variant) {
  switch (V_VT(&variant)) {
    case VT_EMPTY:
      return {};
    case VT_NULL:
      return Null{};
    case VT_I2:
      return V_I2(&variant);
    case VT_UI1:
      return static_cast<std::int16_t>(V_UI1(&variant));
    case VT_I4:
    case VT_INT:
      return static_cast<std::int32_t>(V_I4(&variant));
    case VT_UI2:
      return static_cast<std::int32_t>(V_UI2(&variant));
    case VT_UI4:
    case VT_UINT:
      return wholeNumber(static_cast<double>(V_UI4(&variant)));
    case VT_R4:
      return static_cast<double>(V_R4(&variant));
    case VT_R8:
      return V_R8(&variant);
    case VT_DATE:
      return dateValue(V_DATE(&variant));
    case VT_BSTR:
      return textOfBstr(V_BSTR(&variant));
    case VT_BOOL:
      return V_BOOL(&variant) != VARIANT_FALSE;
    case VT_DISPATCH:
      return objectValue(V_DISPATCH(&variant));
    default:
      throw Failure(error_number::kTypeMismatch);
  }
}

SAFEARRAY* newArray(VARTYPE kind, std::size_t count) {
  SAFEARRAY* array = ::SafeArrayCreateVector(kind, 0, static_cast<ULONG>(count));
  if (array == nullptr) throw Failure(error_number::kOutOfMemory);
  return array;
}

// The array belongs to the variant from the start, so that a failure on the way frees what is in it.
template <typename Element, typename Fill>
void fillArray(VARIANT& target, VARTYPE kind, std::size_t count, Fill&& fill) {
  V_ARRAY(&target) = newArray(kind, count);
  V_VT(&target) = static_cast<VARTYPE>(VT_ARRAY | kind);
  void* data = nullptr;
  requireSuccess(::SafeArrayAccessData(V_ARRAY(&target), &data));
  try {
    fill(static_cast<Element*>(data));
  } catch (...) {
    ::SafeArrayUnaccessData(V_ARRAY(&target));
    throw;
  }
  ::SafeArrayUnaccessData(V_ARRAY(&target));
}

void fillVariant(VARIANT& target, const Value& value);

void fillFromList(VARIANT& target, const Value::List& list) {
  fillArray<VARIANT>(target, VT_VARIANT, list.size(), [&](VARIANT* elements) {
    for (std::size_t i = 0; i < list.size(); ++i) fillVariant(elements[i], list[i]);
  });
}

void fillFromBytes(VARIANT& target, const Value::Bytes& bytes) {
  fillArray<std::uint8_t>(target, VT_UI1, bytes.size(),
                          [&](std::uint8_t* elements) { std::copy(bytes.begin(), bytes.end(), elements); });
}

void fillFromObject(VARIANT& target, const Value::Object& object) {
  const auto* dispatch = dynamic_cast<const DispatchValue*>(object.get());
  if (dispatch == nullptr) throw Failure(error_number::kNotSupportedByObject);
  V_VT(&target) = VT_DISPATCH;
  V_DISPATCH(&target) = dispatch->object();
  if (dispatch->object() != nullptr) dispatch->object()->AddRef();
}

void fillVariant(VARIANT& target, const Value& value) {
  switch (value.varType()) {
    case kVarEmpty:
      break;
    case kVarNull:
      V_VT(&target) = VT_NULL;
      break;
    case kVarInteger:
      V_I2(&target) = value.toInteger();
      V_VT(&target) = VT_I2;
      break;
    case kVarLong:
      V_I4(&target) = value.toLong();
      V_VT(&target) = VT_I4;
      break;
    case kVarDouble:
      V_R8(&target) = value.toDouble();
      V_VT(&target) = VT_R8;
      break;
    case kVarDate:
      V_DATE(&target) = momentOf(value.date());
      V_VT(&target) = VT_DATE;
      break;
    case kVarText:
      V_BSTR(&target) = Bstr(value.toText()).release();
      V_VT(&target) = VT_BSTR;
      break;
    case kVarBoolean:
      V_BOOL(&target) = value.toBoolean() ? VARIANT_TRUE : VARIANT_FALSE;
      V_VT(&target) = VT_BOOL;
      break;
    case kVarObject:
      fillFromObject(target, value.object());
      break;
    case kVarList:
      fillFromList(target, value.list());
      break;
    case kVarBytes:
      fillFromBytes(target, value.bytes());
      break;
  }
}

}  // namespace

std::string DispatchValue::typeName() const {
  constexpr const char* kUnknown = "Object";
  if (!object_) return "Nothing";
  ComPtr<ITypeInfo> type;
  if (FAILED(object_->GetTypeInfo(0, LOCALE_NEUTRAL, type.put())) || !type) return kUnknown;
  BSTR name = nullptr;
  if (FAILED(type->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr))) return kUnknown;
  std::string text = textOfBstr(name);
  ::SysFreeString(name);
  return text;
}

Value valueOf(const VARIANT& variant) {
  const VARTYPE kind = V_VT(&variant);
  if (kind == (VT_BYREF | VT_VARIANT)) return valueOf(*V_VARIANTREF(&variant));
  if ((kind & VT_ARRAY) == 0) return simpleValue(variant);
  SAFEARRAY* array = (kind & VT_BYREF) != 0 ? *V_ARRAYREF(&variant) : V_ARRAY(&variant);
  return arrayValue(static_cast<VARTYPE>(kind & VT_TYPEMASK), array);
}

std::vector<std::string> namesIn(const Value& value) {
  if (value.varType() == kVarEmpty || value.isNull()) return {};
  if (value.varType() != kVarList) return {value.toText()};
  std::vector<std::string> names;
  for (const Value& name : value.list()) names.push_back(name.toText());
  return names;
}

Variant variantOf(const Value& value) {
  Variant variant;
  fillVariant(variant.get(), value);
  return variant;
}

}  // namespace trelvin
