#include "platform/windows/adsi/adsi_metabase.h"

#include <utility>

#include "core/err.h"
#include "platform/windows/adsi/com.h"
#include "platform/windows/adsi/late_bound.h"
#include "platform/windows/adsi/variant_value.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

class AdsiNode final : public MetabaseNode {
 public:
  explicit AdsiNode(LateBound object) : object_(std::move(object)) {}

  [[nodiscard]] std::string className() const override { return object_.property("Class").toText(); }
  [[nodiscard]] std::string name() const override { return object_.property("Name").toText(); }
  [[nodiscard]] std::string adsPath() const override { return object_.property("ADsPath").toText(); }
  [[nodiscard]] std::string schema() const override { return object_.property("Schema").toText(); }

  void forEachChild(const std::function<void(const NodeHandle& child)>& visit) override {
    for (LateBound& child : object_.children()) visit(std::make_shared<AdsiNode>(std::move(child)));
  }

  [[nodiscard]] NameList mandatoryProperties() const override {
    return namesIn(object_.property("MandatoryProperties"));
  }
  [[nodiscard]] NameList optionalProperties() const override {
    return namesIn(object_.property("OptionalProperties"));
  }

  [[nodiscard]] Value get(std::string_view propertyName) const override {
    return object_.call("Get", {std::string(propertyName)});
  }
  void put(std::string_view propertyName, const Value& value) override {
    object_.call("Put", {std::string(propertyName), value});
  }
  void setInfo() override { object_.call("SetInfo"); }

  NodeHandle create(std::string_view className, std::string_view childName) override {
    return std::make_shared<AdsiNode>(
        object_.callForObject("Create", {std::string(className), std::string(childName)}));
  }
  void deleteChild(std::string_view className, std::string_view childName) override {
    object_.call("Delete", {std::string(className), std::string(childName)});
  }

  [[nodiscard]] std::vector<std::string> getDataPaths(std::string_view propertyName,
                                                      const Value& attribute) const override {
    return namesIn(object_.call("GetDataPaths", {std::string(propertyName), attribute}));
  }

  void appCreate(bool inProcess) override { object_.call("AppCreate", {inProcess}); }
  void appCreate2(std::int32_t isolation) override { object_.call("AppCreate2", {isolation}); }
  void appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) override {
    object_.call("AppCreate3", {isolation, std::string(pool), createPool});
  }

  void start() override { object_.call("Start"); }

 private:
  LateBound object_;
};

// Whether this machine knows what IIS:// means.
bool hasProvider() {
  CLSID provider;
  return SUCCEEDED(::CLSIDFromProgID(L"IIS", &provider));
}

class AdsiMetabase final : public Metabase {
 public:
  NodeHandle getObject(std::string_view path) override {
    ComPtr<IDispatch> object;
    const HRESULT found =
        ::ADsGetObject(wideText(path).c_str(), IID_IDispatch, reinterpret_cast<void**>(object.put()));
    if (FAILED(found) && !hasProvider()) throw Failure(error_number::kCannotCreateObject);
    requireSuccess(found);
    return std::make_shared<AdsiNode>(LateBound(std::move(object)));
  }

 private:
  Apartment apartment_;
};

}  // namespace

std::unique_ptr<Metabase> makeAdsiMetabase() {
  return std::make_unique<AdsiMetabase>();
}

}  // namespace trelvin
