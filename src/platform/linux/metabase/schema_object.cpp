#include "core/err.h"
#include "core/text.h"
#include "node.h"

namespace trelvin {

namespace {

// The directory service has words of its own for the types.
std::string_view syntaxOf(PropertyType type) {
  switch (type) {
    case PropertyType::kText:
      return "STRING";
    case PropertyType::kExpandText:
      return "EXPANDSZ";
    case PropertyType::kNumber:
      return "INTEGER";
    case PropertyType::kTruth:
      return "BOOLEAN";
    case PropertyType::kTexts:
      return "LIST";
    case PropertyType::kMimeMap:
      return "MIMEMAPLIST";
    case PropertyType::kIpSecurity:
      return "IPSEC";
    case PropertyType::kAccessList:
      return "NTACL";
    case PropertyType::kBytes:
      return "BINARY";
  }
  return "STRING";
}

Value listOf(const std::vector<std::string>& names) {
  Value::List list;
  for (const std::string& name : names) list.emplace_back(name);
  return list;
}

[[noreturn]] void refuse() {
  throw Failure(error_number::kNotSupportedByObject, "The schema can be read only.");
}

}  // namespace

SchemaObject::SchemaObject(std::shared_ptr<Tree> tree, const SchemaClass* schemaClass,
                           const Property* property, std::string adsPath)
    : tree_(std::move(tree)), class_(schemaClass), property_(property), adsPath_(std::move(adsPath)) {}

NameList SchemaObject::mandatoryProperties() const {
  if (class_ == nullptr) throw Failure(error_number::kAdsPropertyNotSupported);
  return tree_->schema().mandatoryNames(*class_);
}

NameList SchemaObject::optionalProperties() const {
  if (class_ == nullptr) throw Failure(error_number::kAdsPropertyNotSupported);
  return tree_->schema().optionalNames(*class_);
}

Value SchemaObject::get(std::string_view propertyName) const {
  if (class_ == nullptr) {
    if (equalsIgnoringCase(propertyName, "Syntax")) return std::string(syntaxOf(property_->type));
  } else {
    if (equalsIgnoringCase(propertyName, "MandatoryProperties")) return listOf(mandatoryProperties().texts());
    if (equalsIgnoringCase(propertyName, "OptionalProperties")) return listOf(optionalProperties().texts());
    if (equalsIgnoringCase(propertyName, "Containment")) return listOf(class_->children);
    if (equalsIgnoringCase(propertyName, "Container")) return class_->container;
  }
  throw Failure(error_number::kAdsPropertyNotSupported,
                "A schema object has no property " + std::string(propertyName) + ".");
}

void SchemaObject::put(std::string_view, const Value&) {
  refuse();
}
void SchemaObject::setInfo() {
  refuse();
}
NodeHandle SchemaObject::create(std::string_view, std::string_view) {
  refuse();
}
void SchemaObject::deleteChild(std::string_view, std::string_view) {
  refuse();
}
std::vector<std::string> SchemaObject::getDataPaths(std::string_view, const Value&) const {
  refuse();
}
void SchemaObject::appCreate(bool) {
  refuse();
}
void SchemaObject::appCreate2(std::int32_t) {
  refuse();
}
void SchemaObject::appCreate3(std::int32_t, std::string_view, bool) {
  refuse();
}
void SchemaObject::start() {
  refuse();
}

}  // namespace trelvin
