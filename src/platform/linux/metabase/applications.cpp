// Application roots, and the state of a site.

#include "core/err.h"
#include "core/text.h"
#include "node.h"
#include "value_forms.h"

namespace trelvin {

namespace {

constexpr std::string_view kWebService = "/LM/W3SVC";
constexpr std::string_view kPools = "/LM/W3SVC/AppPools";
constexpr std::int32_t kMostIsolation = 2;  // 0 in process, 1 a process of its own, 2 pooled
constexpr std::string_view kStarted = "2";

Failure noMethod(std::string_view method, const std::string& path) {
  return {error_number::kNotSupportedByObject, path + " has no method " + std::string(method) + "."};
}

}  // namespace

void FileNode::requireApplications(int leastVersion) const {
  settle();
  const bool canBeRoot = class_->name == "IIsWebVirtualDir" || class_->name == "IIsWebDirectory";
  if (!canBeRoot) throw noMethod("AppCreate", adsPath_);
  if (schemaInForce().version() < leastVersion) {
    throw Failure(
        error_number::kNotSupportedByObject,
        adsPath_ + ": this way to make an application needs IIS " + std::to_string(leastVersion) + ".");
  }
}

// The key and its definition. A key that isn't there yet is made, without a key type, just as the server does
// it for one who calls this before setInfo.
Commit FileNode::applicationCommit(std::int32_t isolation) const {
  if (isolation < 0 || isolation > kMostIsolation) {
    throw Failure(error_number::kAdsBadParameter, "There is no isolation " + std::to_string(isolation) + ".");
  }
  const std::string at = location();
  Node* key = isNew_ ? tree_->find(at) : node_;
  Commit commit;
  if (key == nullptr) commit.push_back({NodeChange::Kind::kCreate, at, std::nullopt, {}});
  NodeChange& change = commit.emplace_back();
  change.location = at;
  const Schema& schema = schemaInForce();
  const auto indexOf = [&](std::string_view name) { return schema.indexOf(*schema.findProperty(name)); };
  const StoredValue* root = key != nullptr ? tree_->stored(*key, indexOf("AppRoot")) : nullptr;
  const Property& mode = *schema.findProperty("AppIsolated");
  const bool sameMode = wordInForce(mode) == static_cast<std::uint32_t>(isolation);
  if (root != nullptr && equalsIgnoringCase(root->text, at) && sameMode) return commit;
  change.values.push_back({"AppRoot", at});
  change.values.push_back({"AppIsolated", std::to_string(isolation)});
  // What belonged to the former definition. A package of its own is made by a running server only.
  for (const char* name : {"AppPackageID", "AppPackageName", "AppWamClsid"}) {
    if (key != nullptr && tree_->stored(*key, indexOf(name)) != nullptr)
      change.values.push_back({name, std::nullopt});
  }
  return commit;
}

// Puts the pool into the definition. Without a name it is the one that the node has inherited so far.
void FileNode::addPool(std::string_view pool, bool createPool, Commit& commit) const {
  const Property& property = *schemaInForce().findProperty("AppPoolId");
  std::string name(pool);
  if (name.empty()) {
    const StoredValue* inherited = tree_->effective(isNew_ ? *node_ : *node_->parent, property);
    name = inherited != nullptr ? std::string(inherited->text) : property.defaultText;
  } else {
    requireWritable("The name of a pool", name);
    const std::string at = std::string(kPools) + "/" + name;
    const bool missing = tree_->find(at) == nullptr;
    if (missing &&
        (!createPool || name.find('/') != std::string::npos || tree_->find(kWebService) == nullptr)) {
      throw Failure(error_number::kMetabasePathNotFound, "There is no application pool " + name + ".");
    }
    if (missing && tree_->find(kPools) == nullptr) {
      commit.push_back({NodeChange::Kind::kCreate, std::string(kPools), "IIsApplicationPools", {}});
    }
    if (missing) commit.push_back({NodeChange::Kind::kCreate, at, "IIsApplicationPool", {}});
  }
  const std::string key = location();
  const StoredValue* stored = isNew_ ? nullptr : tree_->stored(*node_, schemaInForce().indexOf(property));
  if (stored != nullptr && stored->text == name) return;
  for (NodeChange& change : commit) {
    if (change.kind == NodeChange::Kind::kUpdate && change.location == key)
      change.values.push_back({"AppPoolId", name});
  }
}

void FileNode::commitApplication(const Commit& application) {
  const bool wasNew = isNew_;
  const bool empty = application.size() == 1 && application.front().values.empty();
  if (empty) return;
  if (!wasNew) {
    commit(application);
    return;
  }
  // The handle is still to be committed itself, and will find the key made.
  store_->commit(application);
}

void FileNode::appCreate(bool inProcess) {
  requireApplications(4);
  store_->prepareCommit();
  settle();
  commitApplication(applicationCommit(inProcess ? 0 : 1));
}

void FileNode::appCreate2(std::int32_t isolation) {
  requireApplications(5);
  store_->prepareCommit();
  settle();
  commitApplication(applicationCommit(isolation));
}

void FileNode::appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) {
  requireApplications(6);
  store_->prepareCommit();
  settle();
  Commit application = applicationCommit(isolation);
  addPool(pool, createPool, application);
  commitApplication(application);
}

// A file has no server that would run. The state is kept as a server keeps it, in memory alone.
void FileNode::start() {
  requireExisting();
  if (class_->name != "IIsWebServer" && class_->name != "IIsFtpServer") throw noMethod("Start", adsPath_);
  NodeChange change;
  change.location = location();
  change.values.push_back({"ServerState", std::string(kStarted)});
  store_->commit({change});
}

}  // namespace trelvin
