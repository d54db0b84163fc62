#include "tree.h"

#include <algorithm>
#include <cstring>

#include "core/err.h"
#include "core/text.h"
#include "value_forms.h"

namespace trelvin {

namespace {

constexpr std::string_view kNoKeyType = "IIsConfigObject";

bool byProperty(const StoredValue& value, PropertyIndex property) {
  return value.property < property;
}

auto lowerBound(std::vector<StoredValue>& values, PropertyIndex property) {
  return std::lower_bound(values.begin(), values.end(), property, byProperty);
}

bool byName(const Node* left, const Node* right) {
  return sortsBefore(left->name(), right->name());
}

[[noreturn]] void doesNotFit(const NodeChange& change, std::string_view why) {
  throw Failure(error_number::kMetabaseUnreadable,
                "A change of " + change.location + " does not fit the metabase: " + std::string(why) + ".");
}

}  // namespace

std::string_view parentLocation(std::string_view location) {
  if (location.size() <= 1) return {};
  const std::size_t slash = location.rfind('/');
  return slash == 0 ? location.substr(0, 1) : location.substr(0, slash);
}

std::string_view Tree::keep(std::string_view text) {
  if (text.empty()) return {};
  auto* place = static_cast<char*>(texts_.allocate(text.size(), 1));
  std::memcpy(place, text.data(), text.size());
  return {place, text.size()};
}

Node& Tree::newNode(std::string_view location) {
  Node& node = nodes_.emplace_back();
  node.location = location;
  index_.insert(&node);
  return node;
}

void Tree::linkBelow(Node& parent, Node& child) const {
  child.parent = &parent;
  if (!parent.children.empty() && !byName(parent.children.back(), &child)) parent.childrenInOrder = false;
  parent.children.push_back(&child);
}

// The node above a location. What is missing on the way up is implied. The file is written depth first, so
// that the node above is mostly the one that was added last, or one above that.
Node* Tree::parentFor(std::string_view location) {
  const std::string_view above = parentLocation(location);
  if (above.empty()) return nullptr;
  for (Node* near = lastAdded_; near != nullptr && near->location.size() >= above.size();
       near = near->parent) {
    if (near->location == above) return near;
  }
  Node* found = find(above);
  if (found != nullptr) return found;
  found = &newNode(above);
  found->implied = true;
  Node* child = found;
  for (std::string_view next = parentLocation(above); !next.empty(); next = parentLocation(next)) {
    Node* parent = find(next);
    const bool known = parent != nullptr;
    if (!known) {
      parent = &newNode(next);
      parent->implied = true;
    }
    linkBelow(*parent, *child);
    if (known) return found;
    child = parent;
  }
  root_ = child;
  return found;
}

Node* Tree::addElement(std::string_view location, pugi::xml_node element) {
  // Put in at once, because looking first would search the index twice.
  Node& node = nodes_.emplace_back();
  node.location = location;
  node.element = element;
  const auto [place, isNew] = index_.insert(&node);
  if (!isNew) {
    nodes_.pop_back();
    Node* taken = *place;
    if (!taken->implied) return nullptr;
    taken->implied = false;
    taken->location = location;
    taken->element = element;
    return taken;
  }
  Node* parent = parentFor(location);
  if (parent == nullptr) {
    root_ = &node;
  } else {
    linkBelow(*parent, node);
  }
  lastAdded_ = &node;
  return &node;
}

void Tree::adoptSchema(std::shared_ptr<const Schema> schema) {
  schema_ = std::move(schema);
  std::string_view lastName;
  const Node* last = nullptr;
  for (Node& node : nodes_) {
    const std::string_view name = node.element ? std::string_view(node.element.name()) : kNoKeyType;
    if (last != nullptr && name == lastName) {
      node.keyType = last->keyType;
      node.schemaClass = last->schemaClass;
    } else {
      setClass(node, name == kNoKeyType ? std::string_view() : name);
    }
    lastName = name;
    last = &node;
  }
}

void Tree::setClass(Node& node, std::string_view keyType) {
  const SchemaClass* known = keyType.empty() ? nullptr : schema_->findClass(keyType);
  node.keyType = keyType;
  node.schemaClass = known != nullptr ? known : &schema_->plainClass();
}

Node* Tree::find(std::string_view location) const {
  const auto found = index_.find(location);
  return found == index_.end() ? nullptr : *found;
}

const std::vector<Node*>& Tree::children(Node& node) const {
  if (!node.childrenInOrder) {
    std::erase_if(node.children, [](const Node* child) { return child->gone; });
    std::sort(node.children.begin(), node.children.end(), byName);
    node.childrenInOrder = true;
  }
  return node.children;
}

// A property that the class does not list, or any of a node without a class, is written as a Custom element.
// It is data of the node like any other: whether a client sees it depends on the class alone.
void Tree::readCustom(Node& node, const pugi::xml_node& custom) const {
  const Property* property = schema_->findProperty(custom.attribute("Name").value());
  if (property == nullptr) property = schema_->findId(custom.attribute("ID").value());
  if (property == nullptr || property->flagOf != kNoProperty) return;
  const std::string_view text = custom.attribute("Value").value();
  if (!isValidText(*schema_, *property, text)) return;
  const PropertyIndex index = schema_->indexOf(*property);
  const bool asAttribute = std::any_of(node.values.begin(), node.values.end(),
                                       [&](const StoredValue& value) { return value.property == index; });
  if (!asAttribute) node.values.push_back({index, false, false, text});
}

// What is unknown or of the wrong form is left alone, as the server does, and stays in the file.
void Tree::readValues(Node& node) const {
  node.valuesRead = true;
  for (const pugi::xml_attribute attribute : node.element.attributes()) {
    const Property* property = schema_->findProperty(attribute.name());
    if (property == nullptr || property->flagOf != kNoProperty || property->name != attribute.name())
      continue;
    const PropertyIndex index = schema_->indexOf(*property);
    const std::string_view text = attribute.value();
    if (index == schema_->keyType() || !isValidText(*schema_, *property, text)) continue;
    node.values.push_back({index, false, false, text});
  }
  for (const pugi::xml_node custom : node.element.children("Custom")) readCustom(node, custom);
  std::sort(node.values.begin(), node.values.end(),
            [](const StoredValue& left, const StoredValue& right) { return left.property < right.property; });
}

const std::vector<StoredValue>& Tree::values(Node& node) const {
  if (!node.valuesRead) readValues(node);
  return node.values;
}

const StoredValue* Tree::stored(Node& node, PropertyIndex property) const {
  if (!node.valuesRead) readValues(node);
  const auto found = lowerBound(node.values, property);
  return found != node.values.end() && found->property == property && !found->removed ? &*found : nullptr;
}

const StoredValue* Tree::effective(Node& node, const Property& property) const {
  const PropertyIndex index = schema_->indexOf(property);
  for (Node* at = &node; at != nullptr; at = at->parent) {
    if (const StoredValue* found = stored(*at, index)) return found;
    if (!property.inherit) return nullptr;
  }
  return nullptr;
}

void Tree::change(Node& node, const ValueChange& value) {
  const Property* property = schema_->findProperty(value.property);
  if (property == nullptr) {
    throw Failure(error_number::kMetabaseUnreadable, "A change of " + std::string(node.location) + " names " +
                                                         value.property + ", which the schema lacks.");
  }
  const PropertyIndex index = schema_->indexOf(*property);
  if (!node.valuesRead) readValues(node);
  auto place = lowerBound(node.values, index);
  if (place == node.values.end() || place->property != index)
    place = node.values.insert(place, StoredValue{});
  place->property = index;
  place->changed = true;
  place->removed = !value.text.has_value();
  place->text = value.text ? keep(*value.text) : std::string_view();
  if (!property->isVolatile) node.changed = true;
}

void Tree::create(const NodeChange& change) {
  Node* node = find(change.location);
  if (node != nullptr && !node->implied) doesNotFit(change, "it exists");
  if (node == nullptr) {
    Node* parent = find(parentLocation(change.location));
    if (parent == nullptr) doesNotFit(change, "the node above is missing");
    node = &newNode(keep(change.location));
    linkBelow(*parent, *node);
  }
  node->implied = false;
  node->changed = true;
  setClass(*node, {});
}

// Its memory stays until the tree goes, so that handles which stand on it find out.
void Tree::remove(Node& top) {
  if (top.parent != nullptr) top.parent->childrenInOrder = false;
  std::vector<Node*> left{&top};
  while (!left.empty()) {
    Node* node = left.back();
    left.pop_back();
    if (node->gone) continue;
    left.insert(left.end(), node->children.begin(), node->children.end());
    index_.erase(node);
    node->gone = true;
    if (node->element) removedElements_.push_back(node->element);
  }
}

void Tree::apply(const Commit& commit) {
  ++commits_;
  for (const NodeChange& change : commit) {
    if (change.kind == NodeChange::Kind::kCreate) create(change);
    Node* node = find(change.location);
    if (node == nullptr) doesNotFit(change, "there is no such node");
    if (change.kind == NodeChange::Kind::kRemove) {
      remove(*node);
      continue;
    }
    if (change.keyType) {
      setClass(*node, keep(*change.keyType));
      node->changed = node->classChanged = true;
    }
    for (const ValueChange& value : change.values) this->change(*node, value);
    // A node that was implied is one of its own from its first value on.
    if (node->changed) node->implied = false;
  }
}

}  // namespace trelvin
