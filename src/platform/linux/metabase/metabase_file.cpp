#include "metabase_file.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "core/err.h"
#include "core/text.h"
#include "node.h"
#include "store.h"

namespace trelvin {

namespace {

constexpr std::string_view kScheme = "IIS://";
constexpr std::string_view kTop = "/LM";  // what IIS://server stands for
constexpr std::string_view kSchemaFolder = "/schema/";

// A path, cut where it concerns us. The views are into the text that was parsed.
struct ParsedPath {
  std::string_view whole;  // without a slash at the end
  std::string_view server;
  std::string_view below;  // "" or "/W3SVC/1"
};

ParsedPath parsePath(std::string_view path) {
  const auto bad = [&] {
    return Failure(error_number::kAdsBadPath, "\"" + std::string(path) + "\" is no IIS:// path.");
  };
  if (!equalsIgnoringCase(path.substr(0, kScheme.size()), kScheme)) throw bad();
  ParsedPath parsed{path, path.substr(kScheme.size()), {}};
  // One slash at the end says no more than none.
  if (parsed.server.ends_with('/')) {
    parsed.whole.remove_suffix(1);
    parsed.server.remove_suffix(1);
  }
  const std::size_t slash = parsed.server.find('/');
  if (slash != std::string_view::npos) {
    parsed.below = parsed.server.substr(slash);
    parsed.server = parsed.server.substr(0, slash);
  }
  const bool emptyPart = parsed.below.find("//") != std::string_view::npos || parsed.below.ends_with('/');
  if (parsed.server.empty() || emptyPart) throw bad();
  return parsed;
}

class FileMetabase final : public Metabase {
 public:
  FileMetabase(LocateMetabase locate, std::chrono::microseconds patience)
      : locate_(std::move(locate)), patience_(patience) {}
  FileMetabase(const FileMetabase&) = delete;
  FileMetabase& operator=(const FileMetabase&) = delete;
  ~FileMetabase() override {
    // Handles may outlive the provider, but what was committed belongs into the file now.
    for (const auto& [path, store] : stores_) store->close();
  }

  NodeHandle getObject(std::string_view path) override {
    const ParsedPath parsed = parsePath(path);
    const std::shared_ptr<MetabaseStore>& store = freshStore(parsed.server);
    const std::shared_ptr<Tree>& tree = store->tree();
    if (equalsIgnoringCase(parsed.below.substr(0, kSchemaFolder.size()), kSchemaFolder))
      return schemaObject(parsed, tree);
    location_.assign(kTop);
    location_.append(parsed.below);
    Node* node = tree->find(location_);
    if (node == nullptr) throw notFound(parsed);
    return std::make_shared<FileNode>(store, tree, *node, std::string(parsed.whole));
  }

 private:
  static Failure notFound(const ParsedPath& parsed) {
    return {error_number::kMetabasePathNotFound, "There is no " + std::string(parsed.whole) + "."};
  }

  static NodeHandle schemaObject(const ParsedPath& parsed, const std::shared_ptr<Tree>& tree) {
    const std::string_view name = parsed.below.substr(kSchemaFolder.size());
    const SchemaClass* schemaClass = tree->schema().findClass(name);
    const Property* property = schemaClass == nullptr ? tree->schema().findProperty(name) : nullptr;
    if (schemaClass == nullptr && property == nullptr) throw notFound(parsed);
    return std::make_shared<SchemaObject>(tree, schemaClass, property, std::string(parsed.whole));
  }

  // Where a server's file lies is asked again only after it went away.
  const std::shared_ptr<MetabaseStore>& freshStore(std::string_view server) {
    const auto known = byServer_.find(server);
    if (known != byServer_.end()) {
      if (known->second->refreshIfThere()) return known->second;
      byServer_.erase(known);
    }
    const std::shared_ptr<MetabaseStore>& store = locatedStore(server);
    store->refresh();
    return store;
  }

  const std::shared_ptr<MetabaseStore>& locatedStore(std::string_view server) {
    const std::optional<std::string> found = locate_(server);
    std::error_code error;
    const std::string path = found ? std::filesystem::canonical(*found, error).string() : std::string();
    if (!found || error) {
      throw Failure(error_number::kServerUnavailable,
                    "The server " + std::string(server) + " can't be reached.");
    }
    // The same file under two names is one metabase.
    std::shared_ptr<MetabaseStore>& store = stores_[path];
    if (store == nullptr) store = std::make_shared<MetabaseStore>(path, patience_);
    return byServer_.emplace(server, store).first->second;
  }

  LocateMetabase locate_;
  std::chrono::microseconds patience_;
  std::map<std::string, std::shared_ptr<MetabaseStore>> stores_;  // by canonical path
  std::map<std::string, std::shared_ptr<MetabaseStore>, std::less<>> byServer_;
  std::string location_;  // kept, so that a bind doesn't allocate for its look-up
};

}  // namespace

std::unique_ptr<Metabase> makeFileMetabase(LocateMetabase locate, std::chrono::microseconds patience) {
  return std::make_unique<FileMetabase>(std::move(locate), patience);
}

}  // namespace trelvin
