#include "element_writer.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <vector>

#include "value_forms.h"

namespace trelvin {

namespace {

constexpr std::string_view kNoKeyType = "IIsConfigObject";

void append(std::string& text, std::initializer_list<std::string_view> parts) {
  for (const std::string_view part : parts) text += part;
}

// A property as it will stand in an element.
struct Written {
  std::string_view name;
  std::string raw;
  const Property* property = nullptr;
  bool isNew = false;
};

// Text of one node's element.
class ElementWriter {
 public:
  ElementWriter(const Tree& tree, Node& node, std::string_view lineEnd)
      : tree_(tree), schema_(tree.schema()), node_(node), lineEnd_(lineEnd) {}

  std::string newElement() {
    for (const StoredValue& value : tree_.values(node_)) place(value);
    return text(escaped(node_.location), {});
  }

  std::string changedElement(const ElementText& old) {
    std::string location;
    for (const ElementText::Attribute& attribute : old.attributes) {
      if (attribute.name == "Location") {
        location = attribute.raw;
      } else {
        keepAttribute(attribute);
      }
    }
    std::vector<std::string> pieces = keptPieces(old.inner);
    for (const StoredValue& value : tree_.values(node_)) {
      if (value.changed) place(value);
    }
    return text(location, std::move(pieces));
  }

 private:
  [[nodiscard]] bool isAttribute(const Property& property) const {
    return !node_.keyType.empty() && node_.schemaClass->hasProperty(schema_.indexOf(property));
  }

  const StoredValue* changedValue(const Property& property) const {
    const PropertyIndex index = schema_.indexOf(property);
    for (const StoredValue& value : tree_.values(node_)) {
      if (value.property == index) return value.changed ? &value : nullptr;
    }
    return nullptr;
  }

  // Items of lists go on lines of their own, three tabs in.
  [[nodiscard]] std::string rawOf(const Property& property, std::string_view value) const {
    if (property.type != PropertyType::kTexts && property.type != PropertyType::kMimeMap)
      return escaped(value);
    std::string raw;
    for (const std::string_view item : itemsOf(value)) {
      if (!raw.empty()) append(raw, {lineEnd_, "\t\t\t"});
      raw += escaped(item);
    }
    return raw;
  }

  void place(const StoredValue& value) {
    const Property& property = schema_.property(value.property);
    if (value.removed || property.isVolatile) return;
    put(property, rawOf(property, value.text));
  }

  void put(const Property& property, std::string raw) {
    (isAttribute(property) ? attributes_ : customs_)
        .push_back({property.name, std::move(raw), &property, true});
  }

  // An attribute that is in the file: kept unless it has a new value. One that the new class doesn't list,
  // moves.
  void keepAttribute(const ElementText::Attribute& attribute) {
    const Property* property = schema_.findProperty(attribute.name);
    const bool known =
        property != nullptr && property->name == attribute.name && property->flagOf == kNoProperty;
    if (!known) {
      attributes_.push_back({attribute.name, attribute.raw, nullptr, false});
    } else if (changedValue(*property) == nullptr) {
      if (node_.classChanged && !isAttribute(*property)) {
        put(*property, attribute.raw);
      } else {
        attributes_.push_back({attribute.name, attribute.raw, property, false});
      }
    }
  }

  const Property* propertyOf(const ElementText& custom) const {
    const Property* byId = nullptr;
    for (const ElementText::Attribute& attribute : custom.attributes) {
      if (attribute.name == "Name") {
        if (const Property* byName = schema_.findProperty(attribute.raw)) return byName;
      }
      if (attribute.name == "ID") byId = schema_.findId(attribute.raw);
    }
    return byId;
  }

  // The inside of the old element, cut before each Custom element that stays.
  std::vector<std::string> keptPieces(std::string_view inner) {
    std::vector<std::string> pieces(1);
    std::size_t done = 0;
    for (std::size_t at = nextElement(inner, 0); at != std::string_view::npos;
         at = nextElement(inner, done)) {
      const ElementText custom = elementAt(inner, at);
      if (leaves(custom)) {
        const std::size_t lead = std::min(inner.substr(0, at).find_last_not_of(" \t") + 1, at);
        pieces.back() += inner.substr(done, std::max(lead, done) - done);
        done = custom.end;
        done += lineEndLength(inner.substr(done));
        continue;
      }
      pieces.back() += inner.substr(done, at - done);
      std::string& piece = pieces.emplace_back(inner.substr(at, custom.end - at));
      names_.push_back(nameOf(custom));
      done = custom.end;
      const std::size_t rest = lineEndLength(inner.substr(done));
      piece += inner.substr(done, rest);
      done += rest;
    }
    pieces.back() += inner.substr(done);
    return pieces;
  }

  static std::size_t lineEndLength(std::string_view text) {
    if (text.starts_with("\r\n")) return 2;
    return text.starts_with("\n") ? 1 : 0;
  }

  static std::string nameOf(const ElementText& custom) {
    for (const ElementText::Attribute& attribute : custom.attributes) {
      if (attribute.name == "Name") return attribute.raw;
    }
    return {};
  }

  // Whether a Custom element goes: its value is replaced, taken away, or becomes an attribute of the new
  // class.
  bool leaves(const ElementText& custom) {
    if (custom.name != "Custom") return false;
    const Property* property = propertyOf(custom);
    if (property == nullptr) return false;
    if (changedValue(*property) != nullptr) return true;
    const bool twice = std::any_of(attributes_.begin(), attributes_.end(),
                                   [&](const Written& attribute) { return attribute.property == property; });
    const bool holdsIt = !twice && tree_.stored(node_, schema_.indexOf(*property)) != nullptr;
    if (!node_.classChanged || !holdsIt || !isAttribute(*property)) return false;
    for (const ElementText::Attribute& attribute : custom.attributes) {
      if (attribute.name == "Value") put(*property, attribute.raw);
    }
    return true;
  }

  [[nodiscard]] std::string customText(const Written& custom) const {
    const Property& property = *custom.property;
    std::string attributes;
    const auto add = [&](bool set, std::string_view word) {
      if (set) append(attributes, {attributes.empty() ? "" : " | ", word});
    };
    add(property.inherit, "INHERIT");
    add(property.secure, "SECURE");
    add(property.reference, "REFERENCE");
    std::string text("<Custom");
    text += lineEnd_;
    const auto line = [&](std::string_view name, std::string_view raw) {
      append(text, {"\t\t", name, "=\"", raw, "\"", lineEnd_});
    };
    line("Name", property.name);
    line("ID", property.id);
    line("Value", custom.raw);
    line("Type", wordOf(property.type));
    line("UserType", property.userType.empty() ? "IIS_MD_UT_SERVER" : property.userType);
    line("Attributes", attributes.empty() ? "NO_ATTRIBUTES" : attributes);
    append(text, {"\t/>", lineEnd_});
    return text;
  }

  // New attributes go to their place in the order of names; those of the file stay in the file's order.
  void orderAttributes() {
    const auto isNew = [](const Written& attribute) { return attribute.isNew; };
    const auto firstNew = std::stable_partition(attributes_.begin(), attributes_.end(), std::not_fn(isNew));
    std::vector<Written> ordered;
    ordered.reserve(attributes_.size());
    std::move(attributes_.begin(), firstNew, std::back_inserter(ordered));
    for (auto next = firstNew; next != attributes_.end(); ++next) {
      Written& attribute = *next;
      const auto place = std::find_if(ordered.begin(), ordered.end(),
                                      [&](const Written& other) { return other.name > attribute.name; });
      ordered.insert(place, std::move(attribute));
    }
    attributes_ = std::move(ordered);
  }

  [[nodiscard]] std::string innerText(std::vector<std::string> pieces) {
    if (pieces.empty() || (pieces.size() == 1 && pieces[0].empty())) pieces = {std::string(lineEnd_)};
    for (const Written& custom : customs_) {
      const auto next = std::find_if(names_.begin(), names_.end(),
                                     [&](const std::string& name) { return name > custom.name; });
      const auto index = next - names_.begin();
      names_.emplace(next, custom.name);
      // What is in front of the piece ends with its indent, which serves the new one.
      std::string& before = pieces[static_cast<std::size_t>(index)];
      if (before.empty() || before.back() != '\t') before += '\t';
      std::string added = customText(custom);
      if (static_cast<std::size_t>(index) + 1 < pieces.size()) added += '\t';
      pieces.insert(pieces.begin() + index + 1, std::move(added));
    }
    std::string inner;
    for (const std::string& piece : pieces) inner += piece;
    return inner;
  }

  std::string text(std::string_view location, std::vector<std::string> pieces) {
    const std::string_view name = node_.keyType.empty() ? kNoKeyType : node_.keyType;
    orderAttributes();
    std::string result;
    append(result, {"<", name, "\tLocation =\"", location, "\""});
    for (const Written& attribute : attributes_)
      append(result, {lineEnd_, "\t\t", attribute.name, "=\"", attribute.raw, "\""});
    append(result, {lineEnd_, "\t>", innerText(std::move(pieces)), "</", name, ">"});
    return result;
  }

  const Tree& tree_;
  const Schema& schema_;
  Node& node_;
  std::string_view lineEnd_;
  std::vector<Written> attributes_;
  std::vector<Written> customs_;  // to be written anew
  std::vector<std::string>
      names_;  // of the Custom elements in the pieces, but for what stands before the first
};

}  // namespace

std::string newElement(const Tree& tree, Node& node, std::string_view lineEnd) {
  return ElementWriter(tree, node, lineEnd).newElement();
}

std::string changedElement(const Tree& tree, Node& node, const ElementText& old, std::string_view lineEnd) {
  return ElementWriter(tree, node, lineEnd).changedElement(old);
}

}  // namespace trelvin
