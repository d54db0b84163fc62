#include "platform/linux/paths.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "core/err.h"
#include "core/text.h"

namespace trelvin {

namespace {

using Components = std::vector<std::string>;

constexpr std::string_view kRootDrive = "Z:";
constexpr std::string_view kThisServer = "Localhost";
constexpr std::array kMetabaseFiles{R"(C$\WINDOWS\system32\inetsrv\MetaBase.xml)",
                                    R"(C$\WINNT\system32\inetsrv\MetaBase.xml)"};

struct CloseListing {
  void operator()(DIR* listing) const { ::closedir(listing); }
};

bool isThere(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

std::string joined(const std::string& folder, std::string_view name) {
  if (folder.empty()) return std::string(name);
  return folder.back() == '/' ? folder + std::string(name) : folder + "/" + std::string(name);
}

// The entry of a folder that differs from a name in case only. Of several the first in byte order, so that
// the answer does not hang on the order in which a file system lists them.
std::optional<std::string> entryInAnyCase(const std::string& folder, std::string_view name) {
  const char* const listed = folder.empty() ? "." : folder.c_str();
  const std::unique_ptr<DIR, CloseListing> listing(::opendir(listed));
  std::optional<std::string> found;
  if (!listing) return found;
  while (const dirent* entry = ::readdir(listing.get())) {
    const std::string_view candidate = entry->d_name;
    if (!equalsIgnoringCase(candidate, name)) continue;
    if (!found || candidate < *found) found = candidate;
  }
  return found;
}

// The path of the components below a folder, each in the case in which it is there.
std::string resolve(const std::string& folder, const Components& components) {
  std::string asWritten = folder;
  for (const std::string& component : components) asWritten = joined(asWritten, component);
  // Nearly every path is written as it is.
  if (isThere(asWritten)) return asWritten;

  std::string path = folder;
  bool isLost = false;
  for (const std::string& component : components) {
    std::string next = joined(path, component);
    if (!isLost && !isThere(next)) {
      const std::optional<std::string> entry = entryInAnyCase(path, component);
      isLost = !entry;
      if (entry) next = joined(path, *entry);
    }
    path = std::move(next);
  }
  return path;
}

[[noreturn]] void refuse(std::string_view path) {
  throw Failure(error_number::kBadFileName,
                describeError(error_number::kBadFileName) + ": '" + std::string(path) + "'");
}

Components componentsOf(std::string_view path) {
  Components components;
  for (std::string& component : split(path, '\\')) {
    if (!component.empty()) components.push_back(std::move(component));
  }
  return components;
}

// Takes "." and ".." out as Windows does, by the text alone. With a fixed root ".." stops there; a relative
// path keeps those that lead out of it.
Components withoutDots(const Components& components, bool hasRoot) {
  Components kept;
  for (const std::string& component : components) {
    if (component == ".") continue;
    const bool leadsUp = component == "..";
    if (leadsUp && !kept.empty() && kept.back() != "..") {
      kept.pop_back();
    } else if (!leadsUp || !hasRoot) {
      kept.push_back(component);
    }
  }
  return kept;
}

// Names of servers and shares come from text boxes and files; none of them may lead out of the network
// folder.
bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\\\0", 3)) == name.npos;
}

bool hasDrive(std::string_view path) {
  const auto isLetter = [](char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
  };
  return path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
}

std::string inShare(const std::string& networkFolder, std::string_view server, std::string_view share,
                    const Components& rest) {
  Components below{std::string(server), std::string(share)};
  const Components inside = withoutDots(rest, true);
  below.insert(below.end(), inside.begin(), inside.end());
  return resolve(networkFolder, below);
}

// \\server\share\...
std::string onNetwork(const std::string& networkFolder, std::string_view path) {
  Components components = componentsOf(path);
  if (components.size() < 2 || !isPlainName(components[0]) || !isPlainName(components[1])) refuse(path);
  return inShare(networkFolder, components[0], components[1], {components.begin() + 2, components.end()});
}

std::string onDrive(const std::string& networkFolder, std::string_view path) {
  const Components components = componentsOf(path.substr(2));
  if (equalsIgnoringCase(path.substr(0, 2), kRootDrive)) return resolve("/", withoutDots(components, true));
  const std::string share = upperCase(path.substr(0, 1)) + "$";
  return inShare(networkFolder, kThisServer, share, components);
}

std::string inCurrentDirectory(std::string_view path) {
  const Components components = withoutDots(componentsOf(path), false);
  return components.empty() ? "." : resolve("", components);
}

}  // namespace

std::string executableFolder() {
  std::error_code failed;
  // The link is there for every process, and still names the folder when the file was replaced meanwhile.
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", failed);
  if (failed)
    throw Failure(error_number::kPathNotFound, "can't tell the program's folder: " + failed.message());
  return executable.parent_path().string();
}

bool isProgramName(std::string_view path) {
  return equalsIgnoringCase(lastCharacters(path, 4), ".exe");
}

std::string windowsPath(std::string_view nativePath) {
  const bool isAbsolute = nativePath.starts_with('/');
  while (nativePath.size() > 1 && nativePath.ends_with('/')) nativePath.remove_suffix(1);
  return (isAbsolute ? std::string(kRootDrive) : std::string()) + replaceAll(nativePath, "/", "\\");
}

Paths Paths::ofProgram(const std::string& programFolder) {
  const char* const named = std::getenv("TRELVIN_NETWORK");
  return Paths(named != nullptr && *named != '\0' ? named : joined(programFolder, "Network"));
}

std::string Paths::nativePath(std::string_view windowsPath) const {
  if (windowsPath.empty() || windowsPath.find('\0') != windowsPath.npos) refuse(windowsPath);
  const std::string path = replaceAll(windowsPath, "/", "\\");
  if (path.starts_with("\\\\")) return onNetwork(networkFolder_, path);
  if (hasDrive(path)) return onDrive(networkFolder_, path);
  if (path.starts_with('\\')) return resolve("/", withoutDots(componentsOf(path), true));
  return inCurrentDirectory(path);
}

std::optional<std::string> Paths::metabaseFileOf(std::string_view server) const {
  if (!isPlainName(server)) return std::nullopt;
  for (const char* const file : kMetabaseFiles) {
    std::string path = nativePath("\\\\" + std::string(server) + "\\" + file);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) return path;
  }
  return std::nullopt;
}

}  // namespace trelvin
