#include "fakes/failing_metabase.h"

#include "core/text.h"

namespace trelvin::test {

namespace {

class WatchedNode : public MetabaseNode {
 public:
  WatchedNode(FailingMetabase& metabase, NodeHandle real) : metabase_(metabase), real_(std::move(real)) {}

  [[nodiscard]] std::string className() const override { return note("Class"), real_->className(); }
  [[nodiscard]] std::string name() const override { return note("Name"), real_->name(); }
  [[nodiscard]] std::string adsPath() const override { return note("ADsPath"), real_->adsPath(); }
  [[nodiscard]] std::string schema() const override { return note("Schema"), real_->schema(); }
  void forEachChild(const std::function<void(const NodeHandle&)>& visit) override {
    note("enumerate");
    real_->forEachChild([&](const NodeHandle& child) { visit(watched(child)); });
  }
  [[nodiscard]] NameList mandatoryProperties() const override {
    return note("MandatoryProperties"), real_->mandatoryProperties();
  }
  [[nodiscard]] NameList optionalProperties() const override {
    return note("OptionalProperties"), real_->optionalProperties();
  }
  [[nodiscard]] Value get(std::string_view property) const override {
    return note("Get", property), real_->get(property);
  }
  void put(std::string_view property, const Value& value) override {
    note("Put", property), real_->put(property, value);
  }
  void setInfo() override { note("SetInfo"), real_->setInfo(); }
  NodeHandle create(std::string_view className, std::string_view child) override {
    note("Create", child);
    return watched(real_->create(className, child));
  }
  void deleteChild(std::string_view className, std::string_view child) override {
    note("Delete", child), real_->deleteChild(className, child);
  }
  [[nodiscard]] std::vector<std::string> getDataPaths(std::string_view property,
                                                      const Value& attribute) const override {
    return note("GetDataPaths", property), real_->getDataPaths(property, attribute);
  }
  void appCreate(bool inProcess) override {
    note("AppCreate", inProcess ? "True" : "False"), real_->appCreate(inProcess);
  }
  void appCreate2(std::int32_t isolation) override {
    note("AppCreate2", std::to_string(isolation)), real_->appCreate2(isolation);
  }
  void appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) override {
    note("AppCreate3", std::to_string(isolation) + " " + std::string(pool)),
        real_->appCreate3(isolation, pool, createPool);
  }
  void start() override { note("Start"), real_->start(); }

 private:
  void note(const char* operation, std::string_view argument = {}) const {
    metabase_.note(operation, real_->adsPath(), argument);
  }
  [[nodiscard]] NodeHandle watched(NodeHandle node) const {
    return std::make_shared<WatchedNode>(metabase_, std::move(node));
  }

  FailingMetabase& metabase_;
  NodeHandle real_;
};

}  // namespace

NodeHandle FailingMetabase::getObject(std::string_view path) {
  note("GetObject", std::string(path), {});
  return std::make_shared<WatchedNode>(*this, real_->getObject(path));
}

void FailingMetabase::note(const char* operation, const std::string& path, std::string_view argument) {
  calls.push_back({operation, path, std::string(argument)});
  if (!rule) return;
  if (const std::optional<std::int32_t> number = rule(calls.back())) throw Failure(*number);
}

void FailingMetabase::failOn(std::string operation, std::string pathEnd, std::string argument,
                             std::int32_t number) {
  rule = [=, former = rule](const MetabaseCall& call) -> std::optional<std::int32_t> {
    const bool matches = call.operation == operation && call.path.ends_with(pathEnd) &&
                         (argument.empty() || equalsIgnoringCase(call.argument, argument));
    if (matches) return number;
    return former ? former(call) : std::nullopt;
  };
}

}  // namespace trelvin::test
