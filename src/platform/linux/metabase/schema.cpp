#include "schema.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/text.h"

namespace trelvin {

namespace {

constexpr std::array<std::pair<std::string_view, PropertyType>, 9> kTypeWords{{
    {"STRING", PropertyType::kText},
    {"EXPANDSZ", PropertyType::kExpandText},
    {"DWORD", PropertyType::kNumber},
    {"BOOL", PropertyType::kTruth},
    {"MULTISZ", PropertyType::kTexts},
    {"MIMEMAP", PropertyType::kMimeMap},
    {"IPSECLIST", PropertyType::kIpSecurity},
    {"NTACL", PropertyType::kAccessList},
    {"BINARY", PropertyType::kBytes},
}};

template <typename Map>
auto findIn(const Map& map, std::string_view name) {
  const auto found = map.find(name);
  return found == map.end() ? typename Map::mapped_type{} : found->second;
}

}  // namespace

PropertyType propertyTypeOf(std::string_view word) {
  for (const auto& [name, type] : kTypeWords) {
    if (name == word) return type;
  }
  return PropertyType::kText;
}

std::string_view wordOf(PropertyType type) {
  for (const auto& [name, candidate] : kTypeWords) {
    if (candidate == type) return name;
  }
  return "STRING";
}

bool SchemaClass::mayHold(std::string_view childClass) const {
  return std::any_of(children.begin(), children.end(),
                     [&](const std::string& child) { return equalsIgnoringCase(child, childClass); });
}

void SchemaClass::addProperty(PropertyIndex property) {
  if (hasProperty(property)) return;
  if (has.size() <= property) has.resize(property + std::size_t{1});
  has[property] = true;
  properties.push_back(property);
}

// One property is mostly asked for several times in a row: where it is set, read, put and committed.
const Property* Schema::findProperty(std::string_view name) const {
  if (lastFound_ != nullptr && lastFound_->name == name) return lastFound_;
  const auto found = propertyByName_.find(name);
  if (found == propertyByName_.end()) return nullptr;
  lastFound_ = &properties_[found->second];
  return lastFound_;
}

const Property* Schema::findId(std::string_view id) const {
  const auto found = propertyById_.find(id);
  return found == propertyById_.end() ? nullptr : &properties_[found->second];
}

const SchemaClass* Schema::findClass(std::string_view name) const {
  return findIn(classByName_, name);
}

const NameList& Schema::mandatoryNames(const SchemaClass& schemaClass) const {
  const auto [place, isNew] = mandatoryNames_.try_emplace(&schemaClass);
  if (isNew) {
    std::vector<std::string> names;
    for (const PropertyIndex index : schemaClass.mandatory) names.push_back(property(index).name);
    place->second = std::move(names);
  }
  return place->second;
}

const NameList& Schema::optionalNames(const SchemaClass& schemaClass) const {
  const auto [place, isNew] = optionalNames_.try_emplace(&schemaClass);
  if (isNew) {
    const std::vector<PropertyIndex>& mandatory = schemaClass.mandatory;
    std::vector<std::string> names;
    for (const PropertyIndex index : schemaClass.properties) {
      if (std::find(mandatory.begin(), mandatory.end(), index) == mandatory.end())
        names.push_back(property(index).name);
    }
    place->second = std::move(names);
  }
  return place->second;
}

PropertyIndex Schema::define(Property property) {
  lastFound_ = nullptr;
  const auto known = propertyByName_.find(property.name);
  const PropertyIndex index =
      known != propertyByName_.end() ? known->second : static_cast<PropertyIndex>(properties_.size());
  if (property.flagOf != kNoProperty) {
    std::vector<PropertyIndex>& flags = properties_[property.flagOf].flags;
    if (std::find(flags.begin(), flags.end(), index) == flags.end()) flags.push_back(index);
  }
  if (!property.id.empty()) propertyById_[property.id] = index;
  if (known == propertyByName_.end()) {
    propertyByName_[property.name] = index;
    if (property.name == "KeyType") keyType_ = index;
    properties_.push_back(std::move(property));
    return index;
  }
  if (property.flags.empty()) property.flags = properties_[index].flags;
  property.name = properties_[index].name;
  properties_[index] = std::move(property);
  return index;
}

SchemaClass& Schema::defineClass(std::string_view name) {
  if (SchemaClass* known = findIn(classByName_, name)) return *known;
  SchemaClass& added = *classes_.emplace_back(std::make_unique<SchemaClass>());
  added.name = name;
  classByName_[added.name] = &added;
  return added;
}

void Schema::setDefault(std::string_view name, std::string_view text) {
  const auto found = propertyByName_.find(name);
  if (found != propertyByName_.end()) properties_[found->second].defaultText = text;
}

void Schema::orderFlags(PropertyIndex word, const std::vector<PropertyIndex>& order) {
  const auto rank = [&](PropertyIndex flag) {
    return std::find(order.begin(), order.end(), flag) - order.begin();
  };
  std::stable_sort(properties_[word].flags.begin(), properties_[word].flags.end(),
                   [&](PropertyIndex left, PropertyIndex right) { return rank(left) < rank(right); });
}

std::shared_ptr<Schema> Schema::clone() const {
  auto copy = std::make_shared<Schema>(version_);
  copy->properties_ = properties_;
  copy->propertyByName_ = propertyByName_;
  copy->propertyById_ = propertyById_;
  copy->keyType_ = keyType_;
  for (const std::unique_ptr<SchemaClass>& original : classes_) copy->defineClass(original->name) = *original;
  return copy;
}

}  // namespace trelvin
