// Handles on nodes of a metabase.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/metabase.h"
#include "store.h"

namespace trelvin {

// A handle stands on its node for as long as that exists, also when the file was read anew meanwhile; its
// class stays what it was when the handle was bound. get answers from the metabase as it is now, under what
// this handle has put and not yet committed.
class FileNode final : public MetabaseNode {
 public:
  // On a node of the tree.
  FileNode(std::shared_ptr<MetabaseStore> store, std::shared_ptr<Tree> tree, Node& node, std::string adsPath);
  // On a child, the last part of the path, which setInfo is to make below the node.
  FileNode(std::shared_ptr<MetabaseStore> store, std::shared_ptr<Tree> tree, Node& parent,
           const SchemaClass& schemaClass, std::string adsPath);

  [[nodiscard]] std::string className() const override;
  [[nodiscard]] std::string name() const override;
  [[nodiscard]] std::string adsPath() const override { return adsPath_; }
  [[nodiscard]] std::string schema() const override;
  void forEachChild(const std::function<void(const NodeHandle& child)>& visit) override;
  [[nodiscard]] NameList mandatoryProperties() const override;
  [[nodiscard]] NameList optionalProperties() const override;
  [[nodiscard]] Value get(std::string_view propertyName) const override;
  void put(std::string_view propertyName, const Value& value) override;
  void setInfo() override;
  NodeHandle create(std::string_view className, std::string_view childName) override;
  void deleteChild(std::string_view className, std::string_view childName) override;
  [[nodiscard]] std::vector<std::string> getDataPaths(std::string_view propertyName,
                                                      const Value& attribute) const override;
  void appCreate(bool inProcess) override;
  void appCreate2(std::int32_t isolation) override;
  void appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) override;
  void start() override;

 private:
  struct Pending {
    PropertyIndex property;
    std::string text;
  };

  // Which nodes, at and below this one, hold which properties themselves.
  struct Holder {
    PropertyIndex property;
    const Node* node;
  };
  struct Holders {
    const Tree* tree = nullptr;
    std::uint64_t commits = 0;
    std::vector<Holder> all;  // by property, and then in the order of paths
  };

  [[nodiscard]] const Schema& schemaInForce() const { return tree_->schema(); }
  // Makes node_ and tree_ those of the metabase as it is now. 0x80070003 when the node is gone.
  void settle() const;
  void moveTo(const std::shared_ptr<Tree>& tree, Node& node) const;
  [[nodiscard]] std::string location() const;
  [[nodiscard]] const std::vector<Holder>& holders() const;
  void collectHolders(Node& node) const;
  [[nodiscard]] const Property& propertyNamed(std::string_view propertyName) const;
  // The text in force for this handle; nothing when neither the metabase nor the schema says anything.
  [[nodiscard]] std::string_view textInForce(const Property& property) const;
  [[nodiscard]] const std::string* pendingText(PropertyIndex property) const;
  [[nodiscard]] std::uint32_t wordInForce(const Property& word) const;

  void setPending(const Property& property, std::string text);
  void putKeyType(const Value& value);
  void putFlag(const Property& flag, const Value& value);
  void putSecret(const Property& property, const Value& value);
  [[nodiscard]] NodeChange pendingChange() const;
  void requireExisting() const;
  void commit(const Commit& commit);
  [[nodiscard]] Commit applicationCommit(std::int32_t isolation) const;
  void addPool(std::string_view pool, bool createPool, Commit& commit) const;
  void commitApplication(const Commit& application);
  void requireApplications(int leastVersion) const;

  std::shared_ptr<MetabaseStore> store_;
  mutable std::shared_ptr<Tree> tree_;  // where the node lies
  mutable Node* node_;                  // of a node to be made the one above
  mutable const SchemaClass* class_;
  std::string adsPath_;
  mutable std::string_view keyType_;  // in the tree or its schema, or kept here from a former tree
  mutable std::string formerKeyType_;
  bool isNew_ = false;
  mutable Holders holders_;
  std::vector<Pending> pending_;
  std::optional<std::string> newKeyType_;
};

// A class or a property of the schema, bound by a Schema path.
class SchemaObject final : public MetabaseNode {
 public:
  SchemaObject(std::shared_ptr<Tree> tree, const SchemaClass* schemaClass, const Property* property,
               std::string adsPath);

  [[nodiscard]] std::string className() const override { return class_ != nullptr ? "Class" : "Property"; }
  [[nodiscard]] std::string name() const override {
    return class_ != nullptr ? class_->name : property_->name;
  }
  [[nodiscard]] std::string adsPath() const override { return adsPath_; }
  [[nodiscard]] std::string schema() const override { return {}; }
  void forEachChild(const std::function<void(const NodeHandle& child)>&) override {}
  [[nodiscard]] NameList mandatoryProperties() const override;
  [[nodiscard]] NameList optionalProperties() const override;
  // Of a property object: Syntax. Of a class object: MandatoryProperties, OptionalProperties, Containment,
  // Container.
  [[nodiscard]] Value get(std::string_view propertyName) const override;
  // The schema can't be changed: all of these fail with 438.
  void put(std::string_view propertyName, const Value& value) override;
  void setInfo() override;
  NodeHandle create(std::string_view className, std::string_view childName) override;
  void deleteChild(std::string_view className, std::string_view childName) override;
  [[nodiscard]] std::vector<std::string> getDataPaths(std::string_view propertyName,
                                                      const Value& attribute) const override;
  void appCreate(bool inProcess) override;
  void appCreate2(std::int32_t isolation) override;
  void appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) override;
  void start() override;

 private:
  std::shared_ptr<Tree> tree_;  // keeps the schema
  const SchemaClass* class_;
  const Property* property_;
  std::string adsPath_;
};

}  // namespace trelvin
