#include "platform/linux/registry_file.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "platform/linux/file_text.h"
#include "platform/linux/native_file.h"
#include "platform/linux/registry_text.h"

namespace trelvin {

namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr std::string_view kNarrowHeader = "REGEDIT4";

// The system's own numbers on Windows.
constexpr std::int32_t kNotFound = 2;
constexpr std::int32_t kAccessDenied = 5;
constexpr std::int32_t kInvalidData = 13;
constexpr std::int32_t kOutOfMemory = 14;
constexpr std::int32_t kDiskFull = 112;
constexpr std::int32_t kInvalidParameter = 87;
constexpr std::int32_t kRegistryIoFailed = 1016;

std::int32_t codeOf(int systemNumber) {
  switch (systemNumber) {
    case ENOENT:
      return kNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return kAccessDenied;
    case ENOSPC:
    case EDQUOT:
      return kDiskFull;
    default:
      return kRegistryIoFailed;
  }
}

std::string fullName(RegistryRoot root, std::string_view subKey) {
  switch (root) {
    case RegistryRoot::kLocalMachine:
      break;
  }
  while (subKey.ends_with('\\')) subKey.remove_suffix(1);
  return "HKEY_LOCAL_MACHINE" + (subKey.empty() ? std::string() : "\\" + std::string(subKey));
}

// Names lie in lines of their own; no name may begin another one.
bool breaksLines(std::string_view name) {
  return name.find_first_of(std::string_view("\0\r\n", 3)) != std::string_view::npos;
}

FileText newRegistry() {
  FileText registry;
  registry.text = std::string(registry_text::kHeader) + "\r\n";
  return registry;
}

FileText readOrNew(const std::string& path) {
  try {
    FileText registry = FileText::fromBytes(readFile(path));
    return registry.text.empty() ? newRegistry() : registry;
  } catch (const std::system_error& failed) {
    if (failed.code().value() != ENOENT) throw;
  }
  return newRegistry();
}

void putIn(FileText& registry, const std::string& key, std::string_view valueName, const std::string& data) {
  const registry_text::Found found = registry_text::find(registry.text, key, valueName);
  const std::string end(registry.lineEnd());
  if (found.data) {
    registry.text.replace(found.data->begin, found.data->end - found.data->begin, data);
    return;
  }
  const std::size_t place = found.newValuePlace.value_or(registry.text.size());
  std::string lines = registry_text::formatName(valueName) + "=" + data + end;
  if (!found.newValuePlace) lines.insert(0, end + "[" + key + "]" + end);
  const bool isOpen = place > 0 && registry.text[place - 1] != '\n';
  registry.text.insert(place, (isOpen ? end : std::string()) + lines);
}

void writeRegistry(const std::string& path, const FileText& registry) {
  Replacement replacement(path, kOwnerOnly);
  replacement.setMode(kOwnerOnly);
  writeAll(replacement.file(), registry.toBytes());
  replacement.commit();
}

// Runs an operation and gives its code, or the one for how it failed.
template <typename Operation>
std::int32_t coded(Operation&& operation) noexcept {
  try {
    return operation();
  } catch (const std::system_error& failed) {
    return codeOf(failed.code().value());
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (...) {
    return kRegistryIoFailed;
  }
}

class RegistryFile final : public Registry {
 public:
  explicit RegistryFile(std::string path) : path_(std::move(path)) {}

  QueryResult queryValue(RegistryRoot root, std::string_view subKey, std::string_view valueName) override {
    QueryResult result;
    result.code = coded([&] { return query(fullName(root, subKey), valueName, result); });
    return result;
  }

  std::int32_t setValue(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                        std::uint32_t type, std::string_view data) override {
    if (breaksLines(subKey) || breaksLines(valueName)) return kInvalidParameter;
    return coded([&] {
      FileText registry = readOrNew(path_);
      putIn(registry, fullName(root, subKey), valueName,
            registry_text::formatData({type, std::string(data)}));
      writeRegistry(path_, registry);
      return 0;
    });
  }

 private:
  std::int32_t query(const std::string& key, std::string_view valueName, QueryResult& result) const {
    const FileText registry = FileText::fromBytes(readFile(path_));
    const registry_text::Found found = registry_text::find(registry.text, key, valueName);
    if (!found.data) return kNotFound;
    const std::string_view data =
        std::string_view(registry.text).substr(found.data->begin, found.data->end - found.data->begin);
    const bool areTextsWide = !registry.text.starts_with(kNarrowHeader);
    std::optional<registry_text::Typed> value = registry_text::parseData(data, areTextsWide);
    if (!value) return kInvalidData;
    result.type = value->type;
    result.data = std::move(value->data);
    return 0;
  }

  std::string path_;
};

}  // namespace

std::unique_ptr<Registry> makeRegistryFile(std::string nativePath) {
  return std::make_unique<RegistryFile>(std::move(nativePath));
}

}  // namespace trelvin
