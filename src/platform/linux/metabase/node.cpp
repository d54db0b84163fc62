#include "node.h"

#include <algorithm>

#include "core/err.h"
#include "core/text.h"
#include "value_forms.h"

namespace trelvin {

namespace {

constexpr std::size_t kSchemeLength = 6;   // of "IIS://"
constexpr std::size_t kLongestName = 255;  // characters of a node's name
constexpr std::string_view kPlainClass = "IIsObject";
constexpr std::int32_t kNoSessionKey = static_cast<std::int32_t>(0x800CC81DU);

std::string_view lastPart(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

Failure pathNotFound(std::string_view location) {
  return {error_number::kMetabasePathNotFound, "There is no " + std::string(location) + " in the metabase."};
}

Failure notSupported(std::string_view className, std::string_view property) {
  return {error_number::kAdsPropertyNotSupported,
          "The class " + std::string(className) + " has no property " + std::string(property) + "."};
}

void requireName(std::string_view name) {
  requireWritable("The name of a node", name);
  const bool control =
      std::any_of(name.begin(), name.end(), [](char byte) { return byte >= 0 && byte < ' '; });
  const bool fits = !name.empty() && name.find('/') == std::string_view::npos && !control;
  if (!fits || characterCount(name) > kLongestName) {
    throw Failure(error_number::kAdsBadParameter, "\"" + std::string(name) + "\" is no name for a node.");
  }
}

}  // namespace

FileNode::FileNode(std::shared_ptr<MetabaseStore> store, std::shared_ptr<Tree> tree, Node& node,
                   std::string adsPath)
    : store_(std::move(store)),
      tree_(std::move(tree)),
      node_(&node),
      class_(node.schemaClass),
      adsPath_(std::move(adsPath)),
      keyType_(node.keyType) {}

FileNode::FileNode(std::shared_ptr<MetabaseStore> store, std::shared_ptr<Tree> tree, Node& parent,
                   const SchemaClass& schemaClass, std::string adsPath)
    : store_(std::move(store)),
      tree_(std::move(tree)),
      node_(&parent),
      class_(&schemaClass),
      adsPath_(std::move(adsPath)),
      keyType_(schemaClass.name == kPlainClass ? std::string_view() : schemaClass.name),
      isNew_(true) {}

std::string FileNode::className() const {
  return std::string(keyType_.empty() ? kPlainClass : keyType_);
}

std::string FileNode::name() const {
  return std::string(lastPart(adsPath_));
}

std::string FileNode::schema() const {
  return adsPath_.substr(0, adsPath_.find('/', kSchemeLength)) + "/schema/" + className();
}

std::string FileNode::location() const {
  const std::string at(node_->location);
  return isNew_ ? at + "/" + name() : at;
}

void FileNode::settle() const {
  const bool stale = store_->tree() != tree_;
  if (!stale && !node_->gone) return;
  const std::shared_ptr<Tree> tree = store_->tree() != nullptr ? store_->tree() : store_->refresh();
  Node* found = tree->find(node_->location);
  if (found == nullptr) throw pathNotFound(node_->location);
  moveTo(tree, *found);
}

// The class stays what it was, in the new tree's words.
void FileNode::moveTo(const std::shared_ptr<Tree>& tree, Node& node) const {
  if (tree != tree_) {
    if (formerKeyType_.empty()) formerKeyType_ = keyType_;
    keyType_ = formerKeyType_;
    const SchemaClass* known = tree->schema().findClass(className());
    class_ = known != nullptr ? known : &tree->schema().plainClass();
    holders_ = {};
  }
  node_ = &node;
  tree_ = tree;
}

void FileNode::requireExisting() const {
  settle();
  if (isNew_) throw pathNotFound(location());
}

void FileNode::forEachChild(const std::function<void(const NodeHandle& child)>& visit) {
  requireExisting();
  const std::shared_ptr<Tree> tree = tree_;
  const std::vector<Node*> children = tree->children(*node_);
  for (Node* child : children) {
    visit(std::make_shared<FileNode>(store_, tree, *child, adsPath_ + "/" + std::string(child->name())));
  }
}

NameList FileNode::mandatoryProperties() const {
  throw notSupported(className(), "MandatoryProperties");
}

NameList FileNode::optionalProperties() const {
  throw notSupported(className(), "OptionalProperties");
}

const Property& FileNode::propertyNamed(std::string_view propertyName) const {
  const Property* property = schemaInForce().findProperty(propertyName);
  if (property == nullptr || !class_->hasProperty(schemaInForce().indexOf(*property))) {
    throw notSupported(className(), propertyName);
  }
  return *property;
}

const std::string* FileNode::pendingText(PropertyIndex property) const {
  for (const Pending& pending : pending_) {
    if (pending.property == property) return &pending.text;
  }
  return nullptr;
}

std::string_view FileNode::textInForce(const Property& property) const {
  if (const std::string* pending = pendingText(schemaInForce().indexOf(property))) return *pending;
  const StoredValue* value = nullptr;
  if (!isNew_ || property.inherit) value = tree_->effective(*node_, property);
  return value != nullptr ? value->text : std::string_view(property.defaultText);
}

std::uint32_t FileNode::wordInForce(const Property& word) const {
  return bitsOf(schemaInForce(), word, textInForce(word)).value_or(0);
}

Value FileNode::get(std::string_view propertyName) const {
  settle();
  const Property& property = propertyNamed(propertyName);
  if (schemaInForce().indexOf(property) == schemaInForce().keyType()) {
    if (newKeyType_) return *newKeyType_;
    return std::string(isNew_ ? keyType_ : node_->keyType);
  }
  if (property.flagOf != kNoProperty) {
    return (wordInForce(schemaInForce().property(property.flagOf)) & property.bit) != 0;
  }
  return valueOf(schemaInForce(), property, textInForce(property), store_->path());
}

void FileNode::put(std::string_view propertyName, const Value& value) {
  settle();
  const Property& property = propertyNamed(propertyName);
  if (schemaInForce().indexOf(property) == schemaInForce().keyType()) {
    putKeyType(value);
  } else if (property.flagOf != kNoProperty) {
    putFlag(property, value);
  } else if (property.secure) {
    putSecret(property, value);
  } else {
    setPending(property, textOf(schemaInForce(), property, value));
  }
}

void FileNode::setPending(const Property& property, std::string text) {
  const PropertyIndex index = schemaInForce().indexOf(property);
  for (Pending& pending : pending_) {
    if (pending.property == index) {
      pending.text = std::move(text);
      return;
    }
  }
  pending_.push_back({index, std::move(text)});
}

void FileNode::putKeyType(const Value& value) {
  const std::string wanted = value.varType() == kVarText ? value.toText() : std::string();
  if (wanted == (isNew_ ? keyType_ : node_->keyType)) {
    newKeyType_.reset();
    return;
  }
  const SchemaClass* known = schemaInForce().findClass(wanted);
  if (known == nullptr || known->name == kPlainClass) {
    throw Failure(error_number::kAdsBadParameter,
                  "KeyType: \"" + wanted + "\" is no class of this metabase.");
  }
  newKeyType_ = known->name;
}

// A bit can't be stored by itself: the whole word is, so that none of its flags is inherited any more.
void FileNode::putFlag(const Property& flag, const Value& value) {
  const Property& word = schemaInForce().property(flag.flagOf);
  const bool on = textOf(schemaInForce(), flag, value) == "TRUE";
  const std::uint32_t bits = wordInForce(word);
  setPending(word, textOfBits(schemaInForce(), word, on ? bits | flag.bit : bits & ~flag.bit));
}

// Only the server's own machine can encrypt a secret. What a get has answered for one may be put all the same
// and leaves the secret as it is; so a copy of all properties does no harm.
void FileNode::putSecret(const Property& property, const Value& value) {
  const std::string text = textOf(schemaInForce(), property, value);
  if (text.empty() || text == textInForce(property)) return;
  if (property.type == PropertyType::kAccessList) {
    const auto& object = dynamic_cast<const OpaqueObject&>(*value.object());
    if (object.origin() == store_->path()) {
      setPending(property, text);
      return;
    }
  }
  throw Failure(kNoSessionKey, property.name +
                                   " can't be set: it is stored encrypted, and the key for that never leaves "
                                   "the server. Set it on the server itself.");
}

NodeChange FileNode::pendingChange() const {
  NodeChange change;
  change.kind = isNew_ ? NodeChange::Kind::kCreate : NodeChange::Kind::kUpdate;
  change.location = location();
  if (newKeyType_) {
    change.keyType = newKeyType_;
  } else if (isNew_) {
    change.keyType = keyType_;
  }
  for (const Pending& pending : pending_) {
    const StoredValue* stored = isNew_ ? nullptr : tree_->stored(*node_, pending.property);
    if (stored != nullptr && stored->text == pending.text) continue;
    change.values.push_back({schemaInForce().property(pending.property).name, pending.text});
  }
  return change;
}

void FileNode::setInfo() {
  if (!isNew_ && pending_.empty() && !newKeyType_) return;
  store_->prepareCommit();
  settle();
  if (isNew_) {
    const Node* taken = tree_->find(location());
    if (taken != nullptr && !taken->implied) {
      throw Failure(error_number::kAdsObjectExists, location() + " exists already.");
    }
  }
  Commit changes(1);
  changes.front() = pendingChange();
  if (isNew_ || changes.front().keyType || !changes.front().values.empty()) commit(changes);
  pending_.clear();
  newKeyType_.reset();
}

// Commits, and stands on the node itself afterwards, also when it is new or the file was written anew.
void FileNode::commit(const Commit& commit) {
  store_->commit(commit);
  if (!isNew_ && store_->tree() == tree_ && !node_->gone) return;
  const std::string at = location();
  const std::shared_ptr<Tree> tree = store_->tree() != nullptr ? store_->tree() : store_->refresh();
  Node* found = tree->find(at);
  if (found == nullptr) throw pathNotFound(at);
  moveTo(tree, *found);
  isNew_ = false;
}

NodeHandle FileNode::create(std::string_view className, std::string_view childName) {
  requireExisting();
  requireName(childName);
  const SchemaClass* schemaClass = schemaInForce().findClass(className);
  if (schemaClass == nullptr || !class_->mayHold(schemaClass->name)) {
    throw Failure(error_number::kAdsBadParameter, "No " + std::string(className) + " can be made below " +
                                                      location() + ", which is an " + this->className() +
                                                      ".");
  }
  return std::make_shared<FileNode>(store_, tree_, *node_, *schemaClass,
                                    adsPath_ + "/" + std::string(childName));
}

void FileNode::deleteChild(std::string_view className, std::string_view childName) {
  requireExisting();
  store_->prepareCommit();
  settle();
  const std::string at = location() + "/" + std::string(childName);
  const Node* child = childName.find('/') == std::string_view::npos ? tree_->find(at) : nullptr;
  if (child == nullptr) throw pathNotFound(at);
  const std::string_view stored = child->keyType.empty() ? kPlainClass : child->keyType;
  if (!className.empty() && !equalsIgnoringCase(className, stored)) {
    throw Failure(error_number::kMetabasePathNotFound,
                  at + " is an " + std::string(stored) + ", no " + std::string(className) + ".");
  }
  NodeChange change;
  change.kind = NodeChange::Kind::kRemove;
  change.location = child->location;
  commit({change});
}

// A property that the node's class does not list is kept as a custom one, and those nobody sees.
void FileNode::collectHolders(Node& node) const {
  if (!node.keyType.empty()) holders_.all.push_back({schemaInForce().keyType(), &node});
  for (const StoredValue& value : tree_->values(node)) {
    const bool isSeen = !value.removed && node.schemaClass->hasProperty(value.property);
    if (isSeen) holders_.all.push_back({value.property, &node});
  }
}

// A run asks a site for one property of the schema after the other, a few hundred times. One walk answers all
// of it.
const std::vector<FileNode::Holder>& FileNode::holders() const {
  if (holders_.tree == tree_.get() && holders_.commits == tree_->commits()) return holders_.all;
  holders_.all.clear();
  std::vector<Node*> left{node_};
  while (!left.empty()) {
    Node* at = left.back();
    left.pop_back();
    collectHolders(*at);
    const std::vector<Node*>& children = tree_->children(*at);
    left.insert(left.end(), children.rbegin(), children.rend());
  }
  std::stable_sort(holders_.all.begin(), holders_.all.end(),
                   [](const Holder& one, const Holder& other) { return one.property < other.property; });
  holders_.tree = tree_.get();
  holders_.commits = tree_->commits();
  return holders_.all;
}

std::vector<std::string> FileNode::getDataPaths(std::string_view propertyName, const Value& attribute) const {
  requireExisting();
  const Schema& schema = schemaInForce();
  const Property* property = schema.findProperty(propertyName);
  if (property == nullptr) {
    throw Failure(error_number::kAdsPropertyNotSupported,
                  "The schema has no property " + std::string(propertyName) + ".");
  }
  const bool inheritableOnly = attribute.varType() != kVarEmpty && attribute.toLong() == 1;
  if (inheritableOnly && !property->inherit) {
    throw Failure(error_number::kMetabaseDataNotFound, property->name + " is not inheritable.");
  }
  const PropertyIndex index = property->flagOf != kNoProperty ? property->flagOf : schema.indexOf(*property);
  const std::vector<Holder>& all = holders();
  auto holder = std::lower_bound(all.begin(), all.end(), index, [](const Holder& each, PropertyIndex wanted) {
    return each.property < wanted;
  });
  std::vector<std::string> paths;
  for (; holder != all.end() && holder->property == index; ++holder)
    paths.push_back(adsPath_ + std::string(holder->node->location.substr(node_->location.size())));
  return paths;
}

}  // namespace trelvin
