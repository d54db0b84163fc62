#include "load.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "schema_file.h"
#include "utf8.h"

namespace trelvin {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kGlobalLocation = ".";

std::size_t positionOf(const pugi::xml_node& node) {
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(node.offset_debug(), 1)) - 1;
}

// What stands in quotes behind "encoding" in the XML declaration; empty for none.
std::string_view declaredEncoding(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  if (!text.starts_with("<?xml")) return {};
  const std::string_view declaration = text.substr(0, std::min(text.find("?>"), text.size()));
  const std::size_t word = declaration.find("encoding");
  const std::size_t open =
      declaration.find_first_of("\"'", word == std::string_view::npos ? declaration.size() : word);
  if (open == std::string_view::npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  return close == std::string_view::npos ? std::string_view()
                                         : declaration.substr(open + 1, close - open - 1);
}

// An attribute that stands twice makes XML ill-formed, and nobody could tell which one counts. The attributes
// are mostly in order behind the location, so that a comparison with the one before is enough.
bool hasDoubleAttribute(const pugi::xml_node& element) {
  constexpr const char* kLocation = "Location";
  const pugi::xml_attribute first = element.first_attribute();
  bool ordered = std::strcmp(first.name(), kLocation) == 0;
  const char* before = "";
  for (pugi::xml_attribute attribute = first.next_attribute(); attribute && ordered;
       attribute = attribute.next_attribute()) {
    const char* name = attribute.name();
    ordered = std::strcmp(before, name) < 0 && std::strcmp(name, kLocation) != 0;
    before = name;
  }
  if (ordered) return false;
  std::vector<std::string_view> names;
  for (const pugi::xml_attribute attribute : element.attributes()) names.emplace_back(attribute.name());
  std::sort(names.begin(), names.end());
  return std::adjacent_find(names.begin(), names.end()) != names.end();
}

bool isLocation(std::string_view text) {
  if (text == "/") return true;
  return text.size() > 1 && text.front() == '/' && text.back() != '/' &&
         text.find("//") == std::string_view::npos;
}

// Whether "&" at the position begins a reference that XML knows.
bool isReference(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position + 1, 12);
  const std::string_view name = rest.substr(0, std::min(rest.find(';'), rest.size()));
  if (name.size() == rest.size()) return false;
  if (name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos") return true;
  const bool hex = name.starts_with("#x");
  const std::string_view digits = name.substr(std::min<std::size_t>(hex ? 2 : 1, name.size()));
  const std::string_view allowed = hex ? "0123456789abcdefABCDEF" : "0123456789";
  return name.starts_with('#') && !digits.empty() &&
         digits.find_first_not_of(allowed) == std::string_view::npos;
}

// In comments, instructions and CDATA sections "&" means nothing.
bool isInAside(std::string_view text, std::size_t position) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kAsides{
      {{"<!--", "-->"}, {"<?", "?>"}, {"<![CDATA[", "]]>"}}};
  return std::any_of(kAsides.begin(), kAsides.end(), [&](const auto& marks) {
    const std::size_t open = text.rfind(marks.first, position);
    return open != std::string_view::npos && text.find(marks.second, open) > position;
  });
}

// The parser passes over what it does not know, such as "&nbsp;" or a bare "&", and a rewrite would have to
// guess.
void requireReferences(const std::string& path, std::string_view text) {
  for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
    if (!isReference(text, at) && !isInAside(text, at)) refuseFile(path, at, "\"&\" begins no reference");
  }
}

// Adds the elements of the file to the tree.
class Loader {
 public:
  Loader(const std::string& path, Tree& tree) : path_(path), tree_(tree) {}

  void addAll() {
    // A node takes some hundred bytes of text and more; an index that is too large costs little.
    constexpr std::size_t kTextOfNode = 300;
    tree_.expect(tree_.buffer.size() / kTextOfNode);
    const pugi::xml_node root = tree_.document.document_element();
    if (std::string_view(root.name()) != "configuration") {
      refuse(root, "the root element is " + std::string(root.name()) + " in place of configuration");
    }
    const pugi::xml_node properties = root.child("MBProperty");
    if (!properties) refuse(root, "there is no MBProperty element below the root");
    for (pugi::xml_node node = root.next_sibling(); node; node = node.next_sibling()) {
      if (node.type() == pugi::node_element) refuse(node, "there is a second root element");
    }
    for (const pugi::xml_node element : properties.children()) {
      if (element.type() == pugi::node_element) add(element);
    }
  }

 private:
  void add(const pugi::xml_node& element) {
    const pugi::xml_attribute attribute = element.attribute("Location");
    if (!attribute) refuse(element, std::string(element.name()) + " has no Location");
    if (hasDoubleAttribute(element)) refuse(element, std::string(element.name()) + " has an attribute twice");
    const std::string_view location = attribute.value();
    if (location == kGlobalLocation) {
      if (globalSeen_) refuse(element, "a second element has the Location .");
      globalSeen_ = true;
      return;
    }
    if (!isLocation(location)) refuse(element, "the Location \"" + std::string(location) + "\" is no path");
    if (tree_.addElement(location, element) == nullptr) {
      refuse(element, "a second element has the Location " + std::string(location));
    }
  }

  [[noreturn]] void refuse(const pugi::xml_node& node, std::string_view cause) const {
    refuseFile(path_, positionOf(node), cause);
  }

  const std::string& path_;
  Tree& tree_;
  bool globalSeen_ = false;
};

// The version of IIS that wrote the metabase; one without a statement is from IIS 6, the only one to write
// XML.
int versionOf(const Tree& tree) {
  for (const std::string_view location : {"/LM/W3SVC/Info", "/LM/MSFTPSVC/Info"}) {
    const Node* node = tree.find(location);
    if (node == nullptr) continue;
    const int version = node->element.attribute("MajorIIsVersionNumber").as_int(0);
    if (version > 0) return std::clamp(version, 4, 6);
  }
  return 6;
}

}  // namespace

std::string placeOf(std::string_view text, std::size_t position) {
  const std::string_view before = text.substr(0, std::min(position, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // nought for the first line
  std::string_view inLine = before.substr(lineStart);
  if (inLine.starts_with(kByteOrderMark)) inLine.remove_prefix(kByteOrderMark.size());
  return "line " + std::to_string(line) + ", column " + std::to_string(characterCount(inLine) + 1);
}

// The parse has changed the text in memory, so that the place is counted in the file itself.
void refuseFile(const std::string& path, std::size_t position, std::string_view cause) {
  const std::vector<char> text = readWhole(path);
  throw Failure(
      error_number::kMetabaseUnreadable,
      path + ", " + placeOf({text.data(), text.size()}, position) + ": " + std::string(cause) + ".");
}

void requireUtf8(const std::string& path, std::string_view text) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    refuseFile(path, 0, "the text is UTF-16; a metabase file is UTF-8");
  }
  const std::string_view encoding = declaredEncoding(text);
  if (!encoding.empty() && !equalsIgnoringCase(encoding, "UTF-8") &&
      !equalsIgnoringCase(encoding, "US-ASCII")) {
    refuseFile(path, 0, "the encoding is " + std::string(encoding) + "; a metabase file is UTF-8");
  }
  const std::size_t foreign = findNoUtf8(text);
  if (foreign != std::string_view::npos) refuseFile(path, foreign, "the text is not UTF-8");
  const std::size_t zero = text.find('\0');
  if (zero != std::string_view::npos) refuseFile(path, zero, "there is a byte 0 in the text");
}

void parseXml(const std::string& path, std::vector<char>& text, pugi::xml_document& document) {
  const std::string_view whole(text.data(), text.size());
  requireUtf8(path, whole);
  requireReferences(path, whole);
  const std::size_t end = whole.find_last_not_of(" \t\r\n");
  if (end == std::string_view::npos) refuseFile(path, 0, "the file is empty");
  const bool closed = whole[end] == '>';
  const std::size_t behindLastTag = whole.find_first_not_of(" \t\r\n", whole.rfind('>') + 1);
  const pugi::xml_parse_result result = document.load_buffer_inplace(
      text.data(), text.size(), pugi::parse_minimal | pugi::parse_escapes, pugi::encoding_utf8);
  if (!result) refuseFile(path, static_cast<std::size_t>(result.offset), result.description());
  if (!closed) refuseFile(path, behindLastTag, "there is text behind the last element");
}

LoadedMetabase loadMetabase(const std::string& path) {
  LoadedMetabase loaded;
  loaded.tree = std::make_shared<Tree>();
  Tree& tree = *loaded.tree;
  const Descriptor file = openMetabaseFile(path, O_RDONLY);
  loaded.identity = identityOfOpen(file);
  tree.buffer = readWhole(file, path);
  loaded.state = {tree.buffer.size(), fingerprintOf({tree.buffer.data(), tree.buffer.size()})};
  parseXml(path, tree.buffer, tree.document);
  Loader(path, tree).addAll();
  tree.adoptSchema(schemaFor(versionOf(tree), path));
  return loaded;
}

}  // namespace trelvin
