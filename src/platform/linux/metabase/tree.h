// A metabase in memory. The parsed file stays behind it as it is: a node's values are looked at when they are
// first asked for, so that a large metabase costs little more than its parse.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <memory_resource>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "change.h"
#include "schema.h"

namespace trelvin {

struct StoredValue {
  PropertyIndex property = kNoProperty;
  bool changed = false;   // differs from the file
  bool removed = false;   // was in the file and is to go
  std::string_view text;  // in the file's text, or kept by the tree
};

struct Node {
  Node* parent = nullptr;
  std::string_view location;  // as stored
  const SchemaClass* schemaClass =
      nullptr;               // IIsObject when there is no key type or the schema lacks the class
  std::string_view keyType;  // empty for none
  pugi::xml_node element;    // null for what isn't in the file
  std::vector<Node*> children;
  std::vector<StoredValue> values;  // by property, once they were read
  bool valuesRead = false;
  bool childrenInOrder = true;
  bool implied = false;  // stands only because something lies below it
  bool changed = false;  // differs from the file
  bool classChanged = false;
  bool gone = false;

  [[nodiscard]] std::string_view name() const { return location.substr(location.rfind('/') + 1); }
};

// The location above: /LM for /LM/W3SVC, "/" for /LM, nothing for "/".
std::string_view parentLocation(std::string_view location);

class Tree {
 public:
  Tree() = default;
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() = default;

  // While it is loaded: room for about so many nodes.
  void expect(std::size_t count) { index_.reserve(count); }
  // The node of an element, or null when the location is taken by another element.
  Node* addElement(std::string_view location, pugi::xml_node element);
  void adoptSchema(std::shared_ptr<const Schema> schema);

  [[nodiscard]] const Schema& schema() const { return *schema_; }
  // Any case; null when there is none.
  [[nodiscard]] Node* find(std::string_view location) const;
  [[nodiscard]] Node* root() const { return root_; }

  // In order of their names.
  const std::vector<Node*>& children(Node& node) const;
  // What the node itself holds; null for nothing.
  const StoredValue* stored(Node& node, PropertyIndex property) const;
  // What is in force at the node: its own, or for an inheritable property that of the nearest node above.
  const StoredValue* effective(Node& node, const Property& property) const;
  const std::vector<StoredValue>& values(Node& node) const;

  // A commit that was checked, or comes from the journal. Throws 0x800CC819 when it does not fit the tree.
  void apply(const Commit& commit);

  // Grows with every commit.
  [[nodiscard]] std::uint64_t commits() const { return commits_; }

  // Elements of the file whose nodes are gone.
  [[nodiscard]] const std::vector<pugi::xml_node>& removedElements() const { return removedElements_; }

  // The text that the elements point into.
  std::vector<char> buffer;
  pugi::xml_document document;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view location) const { return foldedHash(location); }
    std::size_t operator()(const Node* node) const { return foldedHash(node->location); }
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const Node* left, const Node* right) const {
      return equalsIgnoringCase(left->location, right->location);
    }
    bool operator()(const Node* left, std::string_view right) const {
      return equalsIgnoringCase(left->location, right);
    }
    bool operator()(std::string_view left, const Node* right) const {
      return equalsIgnoringCase(left, right->location);
    }
  };

  Node& newNode(std::string_view location);
  Node* parentFor(std::string_view location);
  void linkBelow(Node& parent, Node& child) const;
  void setClass(Node& node, std::string_view keyType);
  void readValues(Node& node) const;
  void readCustom(Node& node, const pugi::xml_node& custom) const;
  void change(Node& node, const ValueChange& value);
  void create(const NodeChange& change);
  void remove(Node& node);
  std::string_view keep(std::string_view text);

  std::shared_ptr<const Schema> schema_;
  std::deque<Node> nodes_;
  // Locations, class names and values that are not the file's. What is replaced stays until the tree goes,
  // which is when the journal, where it lies too, has become a new file.
  std::pmr::monotonic_buffer_resource texts_;
  // The entries lie side by side in the order of the file, which is the order in which they are mostly
  // wanted.
  std::pmr::monotonic_buffer_resource indexMemory_;
  std::pmr::unordered_set<Node*, Hash, Equal> index_{&indexMemory_};
  std::vector<pugi::xml_node> removedElements_;
  std::uint64_t commits_ = 0;
  Node* root_ = nullptr;
  Node* lastAdded_ = nullptr;
};

}  // namespace trelvin
