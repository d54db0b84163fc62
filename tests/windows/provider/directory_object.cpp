#include "windows/provider/directory_object.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "platform/windows/adsi/variant_value.h"
#include "platform/windows/wide_text.h"
#include "windows/provider/counted.h"
#include "windows/provider/host_link.h"

namespace trelvin::test {

namespace {

// Tells our own objects from others, which the host would know nothing of.
constexpr GUID kDirectoryObject = {
    0x6d0f3a51, 0x2c84, 0x4b7e, {0x9a, 0x13, 0x57, 0xe0, 0x8c, 0x4d, 0x21, 0xb6}};

// Where a member comes from. What every directory object has carries the same number on all objects of one
// implementation; what comes with the class of a node may carry another one on each.
enum class Origin { kEveryObject, kClassOfNode };

struct Member {
  std::string_view name;
  Operation operation;
  WORD kind;
  UINT arguments;
  Origin origin = Origin::kEveryObject;
};

constexpr std::array kMembers{
    Member{"Class", Operation::kClass, DISPATCH_PROPERTYGET, 0},
    Member{"Name", Operation::kName, DISPATCH_PROPERTYGET, 0},
    Member{"ADsPath", Operation::kAdsPath, DISPATCH_PROPERTYGET, 0},
    Member{"Schema", Operation::kSchema, DISPATCH_PROPERTYGET, 0},
    Member{"MandatoryProperties", Operation::kMandatoryProperties, DISPATCH_PROPERTYGET, 0},
    Member{"OptionalProperties", Operation::kOptionalProperties, DISPATCH_PROPERTYGET, 0},
    Member{"Get", Operation::kGet, DISPATCH_METHOD, 1},
    Member{"Put", Operation::kPut, DISPATCH_METHOD, 2},
    Member{"SetInfo", Operation::kSetInfo, DISPATCH_METHOD, 0},
    Member{"Create", Operation::kCreate, DISPATCH_METHOD, 2},
    Member{"Delete", Operation::kDelete, DISPATCH_METHOD, 2},
    Member{"GetDataPaths", Operation::kGetDataPaths, DISPATCH_METHOD, 2},
    Member{"AppCreate", Operation::kAppCreate, DISPATCH_METHOD, 1, Origin::kClassOfNode},
    Member{"AppCreate2", Operation::kAppCreate2, DISPATCH_METHOD, 1, Origin::kClassOfNode},
    Member{"AppCreate3", Operation::kAppCreate3, DISPATCH_METHOD, 3, Origin::kClassOfNode},
    Member{"Start", Operation::kStart, DISPATCH_METHOD, 0, Origin::kClassOfNode},
};

void tell(EXCEPINFO* info, const Failure& failure) {
  if (info == nullptr) return;
  *info = EXCEPINFO{};
  // A number of the runtime's own has a field of its own.
  if (failure.number() > 0) {
    info->wCode = static_cast<WORD>(failure.number());
  } else {
    info->scode = failure.number();
  }
  info->bstrDescription = Bstr(failure.description()).release();
}

// No exception leaves the library: it becomes the information that a caller is given.
template <typename Work>
HRESULT reported(EXCEPINFO* info, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const Failure& failure) {
    tell(info, failure);
    return DISP_E_EXCEPTION;
  } catch (const std::exception&) {
    return E_FAIL;
  }
}

Value::List argumentsOf(const DISPPARAMS& parameters) {
  Value::List arguments;
  for (UINT i = parameters.cArgs; i > 0; --i) arguments.push_back(valueOf(parameters.rgvarg[i - 1]));
  return arguments;
}

void give(VARIANT* result, const Value& value) {
  if (result == nullptr) return;
  Variant made = variantOf(value);
  *result = made.get();
  ::VariantInit(&made.get());
}

ComPtr<ITypeInfo> typeNamed(const std::string& name) {
  ComPtr<ICreateTypeLib2> library;
  requireSuccess(::CreateTypeLib2(SYS_WIN64, L"", library.put()));
  ComPtr<ICreateTypeInfo> made;
  requireSuccess(library->CreateTypeInfo(wideText(name).data(), TKIND_DISPATCH, made.put()));
  ComPtr<ITypeInfo> type;
  requireSuccess(made->QueryInterface(IID_ITypeInfo, reinterpret_cast<void**>(type.put())));
  return type;
}

class DirectoryObject : public Counted<IDispatch> {
 public:
  DirectoryObject(std::shared_ptr<HostLink> link, ObjectNumber number, std::string typeName)
      : link_(std::move(link)), number_(number), typeName_(std::move(typeName)) {}

  // Asks the host; a reply that is a failure is thrown.
  static Value ask(const std::shared_ptr<HostLink>& link, const Request& request);
  [[nodiscard]] ObjectNumber number() const { return number_; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
    if (wanted == IID_IUnknown || wanted == IID_IDispatch || wanted == kDirectoryObject) return refer(result);
    *result = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT /*which*/, LCID /*locale*/, ITypeInfo** type) override {
    return reported(nullptr, [&] {
      *type = nullptr;
      const ComPtr<ITypeInfo> made = typeNamed(typeName_);
      made->AddRef();
      *type = made.get();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID /*unused*/, LPOLESTR* names, UINT count, LCID /*locale*/,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID /*unused*/, LCID /*locale*/, WORD /*kind*/,
                                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* info,
                                   UINT* /*badArgument*/) override;

 protected:
  ~DirectoryObject() override {
    reported(nullptr, [&] {
      ask(link_, Request{Operation::kRelease, number_, {}});
      return S_OK;
    });
  }
  // The number of the first member.
  [[nodiscard]] virtual DISPID firstId() const { return 1; }

 private:
  [[nodiscard]] DISPID idOf(const Member& member) const;
  HRESULT enumerate(VARIANT* result);

  std::shared_ptr<HostLink> link_;
  ObjectNumber number_;
  std::string typeName_;
};

// What a Schema path leads to is another implementation, so that its members carry other numbers.
class SchemaObject final : public DirectoryObject {
 public:
  using DirectoryObject::DirectoryObject;

 private:
  ~SchemaObject() override = default;
  [[nodiscard]] DISPID firstId() const override { return 101; }
};

// What For Each goes through.
class Children final : public Counted<IEnumVARIANT> {
 public:
  explicit Children(Value::List children) : children_(std::move(children)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
    if (wanted == IID_IUnknown || wanted == IID_IEnumVARIANT) return refer(result);
    *result = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* results, ULONG* given) override {
    ULONG count = 0;
    for (; count < wanted && next_ < children_.size(); ++count, ++next_) {
      give(&results[count], children_[next_]);
    }
    if (given != nullptr) *given = count;
    return count == wanted ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const std::size_t left = children_.size() - next_;
    next_ += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    next_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** /*copy*/) override { return E_NOTIMPL; }

 private:
  Value::List children_;
  std::size_t next_ = 0;
};

Value::Object dispatchValue(ComPtr<IDispatch> object) {
  return std::make_shared<DispatchValue>(std::move(object));
}

ObjectNumber numberOf(const Value::Object& object) {
  const auto* held = dynamic_cast<const DispatchValue*>(object.get());
  ComPtr<DirectoryObject> ours;
  const bool isOurs =
      held != nullptr && held->object() != nullptr &&
      SUCCEEDED(held->object()->QueryInterface(kDirectoryObject, reinterpret_cast<void**>(ours.put())));
  return isOurs ? ours->number() : 0;
}

// A value of a node's property has a type of its own, which no node has.
ComPtr<IDispatch> objectOf(const std::shared_ptr<HostLink>& link, ObjectNumber number,
                           const std::string& typeName) {
  if (typeName == kSchemaTypeName) return ComPtr<IDispatch>(new SchemaObject(link, number, typeName));
  return ComPtr<IDispatch>(new DirectoryObject(link, number, typeName));
}

Value DirectoryObject::ask(const std::shared_ptr<HostLink>& link, const Request& request) {
  const Reply reply = replyOf(link->exchange(bytesOf(request, numberOf)),
                              [&link](ObjectNumber number, const std::string& typeName) {
                                return dispatchValue(objectOf(link, number, typeName));
                              });
  if (reply.failure != 0) throw Failure(reply.failure, reply.description);
  return reply.result;
}

// Of what comes with the class of a node the number is this object's alone: whoever keeps it for another
// object is found out.
DISPID DirectoryObject::idOf(const Member& member) const {
  constexpr DISPID kIdsOfAnObject = 1000;
  const DISPID shared = firstId() + static_cast<DISPID>(&member - kMembers.data());
  const bool isOurs = member.origin == Origin::kClassOfNode;
  return isOurs ? shared + kIdsOfAnObject * static_cast<DISPID>(number_) : shared;
}

HRESULT DirectoryObject::GetIDsOfNames(REFIID /*unused*/, LPOLESTR* names, UINT count, LCID /*locale*/,
                                       DISPID* ids) {
  ++nameLookups;
  if (count != 1) return DISP_E_UNKNOWNNAME;
  const std::string name = utf8Text(names[0]);
  const auto found = std::find_if(kMembers.begin(), kMembers.end(), [&](const Member& member) {
    return equalsIgnoringCase(member.name, name);
  });
  ids[0] = found == kMembers.end() ? DISPID_UNKNOWN : idOf(*found);
  return ids[0] == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT DirectoryObject::enumerate(VARIANT* result) {
  const Value children = ask(link_, Request{Operation::kChildren, number_, {}});
  V_UNKNOWN(result) = new Children(children.list());
  V_VT(result) = VT_UNKNOWN;
  return S_OK;
}

HRESULT DirectoryObject::Invoke(DISPID id, REFIID /*unused*/, LCID /*locale*/, WORD kind,
                                DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* info,
                                UINT* /*badArgument*/) {
  return reported(info, [&] {
    if (id == DISPID_NEWENUM && (kind & DISPATCH_PROPERTYGET) != 0) return enumerate(result);
    const auto member = std::find_if(kMembers.begin(), kMembers.end(), [&](const Member& each) {
      return idOf(each) == id && (each.kind & kind) != 0;
    });
    if (member == kMembers.end()) return DISP_E_MEMBERNOTFOUND;
    if (parameters->cArgs != member->arguments) return DISP_E_BADPARAMCOUNT;
    give(result, ask(link_, Request{member->operation, number_, argumentsOf(*parameters)}));
    return S_OK;
  });
}

}  // namespace

ComPtr<IDispatch> boundObject(std::string_view path) {
  const Value object =
      DirectoryObject::ask(HostLink::current(), Request{Operation::kBind, 0, {std::string(path)}});
  const Variant variant = variantOf(object);
  V_DISPATCH(&variant.get())->AddRef();
  return ComPtr<IDispatch>(V_DISPATCH(&variant.get()));
}

}  // namespace trelvin::test
