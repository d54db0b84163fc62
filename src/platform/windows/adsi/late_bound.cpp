#include "platform/windows/adsi/late_bound.h"

#include <algorithm>
#include <map>
#include <utility>

#include "core/err.h"
#include "platform/windows/adsi/variant_value.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

// What an object says of a failure of its own, freed with its owner.
class ExceptionInfo {
 public:
  ExceptionInfo() = default;
  ExceptionInfo(const ExceptionInfo&) = delete;
  ExceptionInfo& operator=(const ExceptionInfo&) = delete;
  ~ExceptionInfo() {
    ::SysFreeString(info_.bstrSource);
    ::SysFreeString(info_.bstrDescription);
    ::SysFreeString(info_.bstrHelpFile);
  }
  EXCEPINFO* put() { return &info_; }

  [[noreturn]] void fail() {
    if (info_.pfnDeferredFillIn != nullptr) info_.pfnDeferredFillIn(&info_);
    const std::wstring_view text =
        info_.bstrDescription == nullptr
            ? std::wstring_view()
            : std::wstring_view(info_.bstrDescription, ::SysStringLen(info_.bstrDescription));
    if (text.empty()) throw numberedFailure(number());
    throw Failure(number(), utf8Text(text));
  }

 private:
  // An object gives either the one or the other. One that gives neither has failed nevertheless, and 0 would
  // tell that it has not.
  [[nodiscard]] std::int32_t number() const {
    if (info_.scode != 0) return info_.scode;
    return info_.wCode != 0 ? std::int32_t{info_.wCode} : DISP_E_EXCEPTION;
  }

  EXCEPINFO info_{};
};

// Asking for the number of a name costs a call as dear as the one that it is for. The members that every
// directory object has carry the same number on all objects of one implementation, which is told by its table
// of routines; those that come with a node's class (AppCreate, Start) are asked for each time.
bool belongsToEveryObject(std::string_view name) {
  constexpr const char* kMembers[] = {"Get",  "Put",     "SetInfo", "GetDataPaths", "Class",
                                      "Name", "ADsPath", "Schema",  "Create",       "Delete"};
  return std::find(std::begin(kMembers), std::end(kMembers), name) != std::end(kMembers);
}

DISPID askForId(IDispatch* object, std::string_view name) {
  std::wstring wide = wideText(name);
  LPOLESTR pointer = wide.data();
  DISPID id = 0;
  const HRESULT found = object->GetIDsOfNames(IID_NULL, &pointer, 1, LOCALE_NEUTRAL, &id);
  if (found == DISP_E_UNKNOWNNAME) throw Failure(error_number::kNotSupportedByObject);
  requireSuccess(found);
  return id;
}

DISPID idOf(IDispatch* object, std::string_view name) {
  if (!belongsToEveryObject(name)) return askForId(object, name);
  static std::map<std::pair<const void*, std::string>, DISPID> known;
  const void* implementation = *reinterpret_cast<void* const*>(object);
  const std::pair key(implementation, std::string(name));
  const auto found = known.find(key);
  if (found != known.end()) return found->second;
  return known.emplace(key, askForId(object, name)).first->second;
}

void requireInvoked(HRESULT result, ExceptionInfo& info) {
  if (result == DISP_E_EXCEPTION) info.fail();
  if (result == DISP_E_MEMBERNOTFOUND) throw Failure(error_number::kNotSupportedByObject);
  requireSuccess(result);
}

ComPtr<IDispatch> dispatchOf(const VARIANT& variant) {
  const bool isObject = V_VT(&variant) == VT_DISPATCH || V_VT(&variant) == VT_UNKNOWN;
  if (!isObject || V_UNKNOWN(&variant) == nullptr) throw Failure(error_number::kTypeMismatch);
  ComPtr<IDispatch> object;
  requireSuccess(V_UNKNOWN(&variant)->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(object.put())));
  return object;
}

ComPtr<IEnumVARIANT> enumeratorOf(IDispatch* object) {
  Variant result;
  ExceptionInfo info;
  DISPPARAMS none{};
  requireInvoked(
      object->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none,
                     &result.get(), info.put(), nullptr),
      info);
  ComPtr<IEnumVARIANT> enumerator;
  const VARIANT& held = result.get();
  const bool isObject = V_VT(&held) == VT_UNKNOWN || V_VT(&held) == VT_DISPATCH;
  if (!isObject || V_UNKNOWN(&held) == nullptr) throw Failure(error_number::kNotSupportedByObject);
  requireSuccess(
      V_UNKNOWN(&held)->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(enumerator.put())));
  return enumerator;
}

}  // namespace

Variant LateBound::invoke(std::string_view name, WORD kind, std::initializer_list<Value> arguments) const {
  IDispatch* object = object_.get();
  if (object == nullptr) throw Failure(error_number::kObjectNotSet);
  // The last argument comes first.
  std::vector<Variant> owners;
  std::vector<VARIANT> passed;
  for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument) {
    owners.push_back(variantOf(*argument));
    passed.push_back(owners.back().get());
  }
  DISPPARAMS parameters{};
  parameters.rgvarg = passed.data();
  parameters.cArgs = static_cast<UINT>(passed.size());
  Variant result;
  ExceptionInfo info;
  requireInvoked(object->Invoke(idOf(object, name), IID_NULL, LOCALE_NEUTRAL, kind, &parameters,
                                &result.get(), info.put(), nullptr),
                 info);
  return result;
}

Value LateBound::property(std::string_view name) const {
  return valueOf(invoke(name, DISPATCH_PROPERTYGET, {}).get());
}

Value LateBound::call(std::string_view method, std::initializer_list<Value> arguments) const {
  return valueOf(invoke(method, DISPATCH_METHOD, arguments).get());
}

LateBound LateBound::callForObject(std::string_view method, std::initializer_list<Value> arguments) const {
  return LateBound(dispatchOf(invoke(method, DISPATCH_METHOD, arguments).get()));
}

std::vector<LateBound> LateBound::children() const {
  if (!object_) throw Failure(error_number::kObjectNotSet);
  const ComPtr<IEnumVARIANT> enumerator = enumeratorOf(object_.get());
  std::vector<LateBound> found;
  for (;;) {
    Variant next;
    ULONG count = 0;
    requireSuccess(enumerator->Next(1, &next.get(), &count));
    if (count == 0) return found;
    found.emplace_back(dispatchOf(next.get()));
  }
}

}  // namespace trelvin
