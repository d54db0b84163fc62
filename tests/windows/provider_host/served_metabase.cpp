#include "windows/provider_host/served_metabase.h"

#include <optional>
#include <utility>
#include <vector>

#include "core/err.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "windows/provider_host/shares.h"

namespace trelvin::test {

namespace {

// A node on its way through the wire.
class HeldNode final : public ValueObject {
 public:
  explicit HeldNode(NodeHandle held) : node(std::move(held)) {}
  // An object of the schema has no class in the schema.
  [[nodiscard]] std::string typeName() const override {
    return node->schema().empty() ? kSchemaTypeName : kNodeTypeName;
  }
  const NodeHandle node;
};

std::unique_ptr<Metabase> metabaseOf(const std::string& networkFolder) {
  return makeFileMetabase(
      [paths = Paths(networkFolder)](std::string_view server) { return paths.metabaseFileOf(server); });
}

Value listOf(const std::vector<std::string>& texts) {
  return Value::List(texts.begin(), texts.end());
}

// The arguments that a request must bring.
class Arguments {
 public:
  explicit Arguments(const Value::List& given) : given_(given) {}
  [[nodiscard]] const Value& at(std::size_t position) const {
    if (position >= given_.size()) throw Failure(error_number::kAdsBadParameter);
    return given_[position];
  }
  [[nodiscard]] std::string text(std::size_t position) const { return at(position).toText(); }

 private:
  const Value::List& given_;
};

}  // namespace

std::string ServedMetabase::answer(std::string_view request) {
  const auto numberIt = [this](const Value::Object& object) { return numberOf(object); };
  Reply reply;
  try {
    reply.result = perform(requestOf(request, [this](ObjectNumber number, const std::string&) {
      const auto known = objects_.find(number);
      return known == objects_.end() ? Value::Object() : known->second;
    }));
  } catch (const Failure& failure) {
    reply.failure = failure.number();
    reply.description = failure.description();
  }
  return bytesOf(reply, numberIt);
}

Value ServedMetabase::perform(const Request& request) {
  switch (request.operation) {
    case Operation::kServe:
      metabase_ = metabaseOf(Arguments(request.arguments).text(0));
      placeShares(Arguments(request.arguments).text(0));
      return {};
    case Operation::kBind:
      if (!metabase_) throw Failure(error_number::kServerUnavailable);
      return keep(metabase_->getObject(Arguments(request.arguments).text(0)));
    case Operation::kRelease:
      objects_.erase(request.object);
      return {};
    default:
      return performOn(nodeOf(request.object), request);
  }
}

Value ServedMetabase::performOn(MetabaseNode& node, const Request& request) {
  const Arguments given(request.arguments);
  Value::List children;
  switch (request.operation) {
    case Operation::kClass:
      return node.className();
    case Operation::kName:
      return node.name();
    case Operation::kAdsPath:
      return node.adsPath();
    case Operation::kSchema:
      return node.schema();
    case Operation::kChildren:
      node.forEachChild([&](const NodeHandle& child) { children.push_back(keep(child)); });
      return children;
    case Operation::kMandatoryProperties:
      return listOf(node.mandatoryProperties().texts());
    case Operation::kOptionalProperties:
      return listOf(node.optionalProperties().texts());
    case Operation::kGet:
      return node.get(given.text(0));
    case Operation::kPut:
      node.put(given.text(0), given.at(1));
      return {};
    case Operation::kSetInfo:
      node.setInfo();
      return {};
    case Operation::kCreate:
      return keep(node.create(given.text(0), given.text(1)));
    case Operation::kDelete:
      node.deleteChild(given.text(0), given.text(1));
      return {};
    case Operation::kGetDataPaths:
      return listOf(node.getDataPaths(given.text(0), given.at(1)));
    case Operation::kAppCreate:
      node.appCreate(given.at(0).toBoolean());
      return {};
    case Operation::kAppCreate2:
      node.appCreate2(given.at(0).toLong());
      return {};
    case Operation::kAppCreate3:
      node.appCreate3(given.at(0).toLong(), given.text(1), given.at(2).toBoolean());
      return {};
    case Operation::kStart:
      node.start();
      return {};
    default:
      throw Failure(error_number::kNotSupportedByObject);
  }
}

MetabaseNode& ServedMetabase::nodeOf(ObjectNumber number) const {
  const auto known = objects_.find(number);
  const auto* held = known == objects_.end() ? nullptr : dynamic_cast<const HeldNode*>(known->second.get());
  if (held == nullptr) throw Failure(error_number::kNotSupportedByObject);
  return *held->node;
}

Value ServedMetabase::keep(NodeHandle node) {
  return Value::Object(std::make_shared<HeldNode>(std::move(node)));
}

// Each time that an object goes over the wire it gets a number of its own, which the other side releases.
ObjectNumber ServedMetabase::numberOf(const Value::Object& object) {
  objects_.emplace(++lastNumber_, object);
  return lastNumber_;
}

}  // namespace trelvin::test
