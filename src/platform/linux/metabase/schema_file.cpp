#include "schema_file.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <pugixml.hpp>
#include <vector>

#include "disk.h"
#include "load.h"
#include "tree.h"
#include "value_forms.h"

namespace trelvin {

namespace {

constexpr std::string_view kSchemaFile = "MBSchema.xml";
constexpr std::string_view kAllProperties = "IIsConfigObject";
constexpr std::string_view kBaseClass = "MetabaseBaseClass";

bool holdsWord(const pugi::xml_attribute& attribute, std::string_view word) {
  return std::string_view(attribute.value()).find(word) != std::string_view::npos;
}

class SchemaFile {
 public:
  SchemaFile(std::string path, Schema& schema)
      : path_(std::move(path)), schema_(schema), text_(readWhole(path_)) {
    parseXml(path_, text_, document_);
  }

  void addAll() {
    const pugi::xml_node root = document_.document_element();
    const pugi::xml_node meta = root.child("DatabaseMeta");
    if (std::string_view(root.name()) != "MetaData" || !meta) {
      refuse(root, "this is no schema file: MetaData with DatabaseMeta below is wanted");
    }
    for (const pugi::xml_node collection : meta.children("Collection")) addProperties(collection);
    for (const pugi::xml_node collection : meta.children("Collection")) addClass(collection);
  }

 private:
  [[noreturn]] void refuse(const pugi::xml_node& node, std::string_view cause) const {
    refuseFile(path_, static_cast<std::size_t>(std::max<std::ptrdiff_t>(node.offset_debug(), 1)) - 1, cause);
  }

  std::string nameOf(const pugi::xml_node& node) const {
    std::string name = node.attribute("InternalName").value();
    if (name.empty()) refuse(node, std::string(node.name()) + " has no InternalName");
    return name;
  }

  // What the element does not say stays as it is known already.
  Property definitionOf(const pugi::xml_node& element) const {
    const std::string name = nameOf(element);
    const Property* known = schema_.findProperty(name);
    Property property = known != nullptr ? *known : Property{};
    property.name = name;
    if (const auto id = element.attribute("ID")) property.id = id.value();
    if (const auto type = element.attribute("Type")) property.type = propertyTypeOf(type.value());
    if (const auto userType = element.attribute("UserType")) property.userType = userType.value();
    if (const auto value = element.attribute("DefaultValue")) property.defaultText = value.value();
    if (const auto attributes = element.attribute("Attributes")) {
      property.inherit = holdsWord(attributes, "INHERIT");
      property.secure = holdsWord(attributes, "SECURE");
      property.reference = holdsWord(attributes, "REFERENCE");
      property.isVolatile = holdsWord(attributes, "VOLATILE");
    }
    return property;
  }

  void addFlags(const pugi::xml_node& element, PropertyIndex word) {
    std::vector<PropertyIndex> order;
    for (const pugi::xml_node flagElement : element.children("Flag")) {
      Property flag = schema_.property(word);
      flag.name = nameOf(flagElement);
      flag.id = flagElement.attribute("ID").value();
      flag.type = PropertyType::kTruth;
      flag.flags.clear();
      flag.defaultText.clear();
      flag.flagOf = word;
      flag.bit = flagElement.attribute("Value").as_uint();
      order.push_back(schema_.define(std::move(flag)));
    }
    if (!order.empty()) schema_.orderFlags(word, order);
  }

  void addProperties(const pugi::xml_node& collection) {
    if (std::string_view(collection.attribute("InternalName").value()) != kAllProperties) return;
    for (const pugi::xml_node element : collection.children("Property")) {
      const PropertyIndex word = schema_.define(definitionOf(element));
      addFlags(element, word);
      const Property& property = schema_.property(word);
      if (!isValidText(schema_, property, property.defaultText) && !property.defaultText.empty()) {
        refuse(element, "the default of " + property.name + " is not of its type");
      }
    }
  }

  void addClass(const pugi::xml_node& collection) {
    const std::string name = nameOf(collection);
    if (name == kAllProperties || name == kBaseClass) return;
    SchemaClass& schemaClass = schema_.defineClass(name);
    if (const auto flags = collection.attribute("MetaFlagsEx")) {
      schemaClass.container = schemaClass.container || holdsWord(flags, "CONTAINERCLASS");
    }
    addChildClasses(schemaClass, collection.attribute("ContainerClassList").value());
    for (const pugi::xml_node element : collection.children("Property")) addToClass(schemaClass, element);
  }

  static void addChildClasses(SchemaClass& schemaClass, std::string_view list) {
    while (!list.empty()) {
      const std::size_t end = std::min(list.find(','), list.size());
      std::string child(list.substr(0, end));
      std::erase_if(child,
                    [](char byte) { return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n'; });
      if (!child.empty() && !schemaClass.mayHold(child)) schemaClass.children.push_back(child);
      list.remove_prefix(std::min(end + 1, list.size()));
    }
  }

  // A class names a property by InheritsPropertiesFrom="IIsConfigObject:Name".
  void addToClass(SchemaClass& schemaClass, const pugi::xml_node& element) {
    const std::string_view reference = element.attribute("InheritsPropertiesFrom").value();
    const std::size_t colon = reference.find(':');
    if (colon == std::string_view::npos)
      refuse(element, "the property of " + schemaClass.name + " names no definition");
    const std::string_view name = reference.substr(colon + 1);
    const Property* property = schema_.findProperty(name);
    if (property == nullptr)
      refuse(element, schemaClass.name + " has a property without definition: " + std::string(name));
    const PropertyIndex index = schema_.indexOf(*property);
    schemaClass.addProperty(index);
    for (const PropertyIndex flag : property->flags) schemaClass.addProperty(flag);
    if (!holdsWord(element.attribute("MetaFlagsEx"), "MANDATORY")) return;
    if (std::find(schemaClass.mandatory.begin(), schemaClass.mandatory.end(), index) ==
        schemaClass.mandatory.end()) {
      schemaClass.mandatory.push_back(index);
    }
  }

  std::string path_;
  Schema& schema_;
  std::vector<char> text_;
  pugi::xml_document document_;
};

}  // namespace

std::shared_ptr<const Schema> schemaFor(int version, const std::string& metabasePath) {
  std::shared_ptr<const Schema> builtIn = builtInSchema(version);
  const std::string path = (std::filesystem::path(metabasePath).parent_path() / kSchemaFile).string();
  if (!identityOf(path)) return builtIn;
  std::shared_ptr<Schema> schema = builtIn->clone();
  SchemaFile(path, *schema).addAll();
  return schema;
}

}  // namespace trelvin
