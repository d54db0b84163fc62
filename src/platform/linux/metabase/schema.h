// What the metabase knows about its properties and classes: types, defaults, inheritance, and which class has
// what.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fold.h"
#include "platform/metabase.h"

namespace trelvin {

using PropertyIndex = std::uint16_t;
inline constexpr PropertyIndex kNoProperty = std::numeric_limits<PropertyIndex>::max();

enum class PropertyType : std::uint8_t {
  kText,
  kExpandText,  // text with %variables%, which are never expanded
  kNumber,
  kTruth,
  kTexts,
  kMimeMap,
  kIpSecurity,
  kAccessList,
  kBytes,
};
// The schema's own words: STRING, EXPANDSZ, DWORD, BOOL, MULTISZ, MIMEMAP, IPSECLIST, NTACL, BINARY.
// An unknown word is taken for STRING, which carries anything through.
PropertyType propertyTypeOf(std::string_view word);
std::string_view wordOf(PropertyType type);

struct Property {
  std::string name;
  PropertyType type = PropertyType::kText;
  std::string id;        // decimal; empty for a few that only documents know
  std::string userType;  // such as IIS_MD_UT_FILE
  bool inherit = false;
  bool secure = false;  // stored encrypted only
  bool reference = false;
  bool isVolatile = false;             // lives in the running server alone, never in the file
  std::string defaultText;             // in the form of the file
  int firstVersion = 0;                // 0: not known
  PropertyIndex flagOf = kNoProperty;  // the word whose bit this flag is
  std::uint32_t bit = 0;
  std::vector<PropertyIndex> flags;  // of a word of flags, in the order in which the file names them
};

struct SchemaClass {
  std::string name;
  bool container = false;
  std::vector<std::string> children;      // classes that may stand below
  std::vector<PropertyIndex> properties;  // in schema order, each word of flags followed by its flags
  std::vector<PropertyIndex> mandatory;
  std::vector<bool> has;  // by property

  [[nodiscard]] bool hasProperty(PropertyIndex property) const {
    return property < has.size() && has[property];
  }
  [[nodiscard]] bool mayHold(std::string_view childClass) const;
  void addProperty(PropertyIndex property);
};

class Schema {
 public:
  // IIS 4, 5 or 6.
  explicit Schema(int version) : version_(version) {}

  [[nodiscard]] int version() const { return version_; }

  // Any case; null for a name that this version does not know.
  [[nodiscard]] const Property* findProperty(std::string_view name) const;
  [[nodiscard]] const SchemaClass* findClass(std::string_view name) const;
  [[nodiscard]] const Property* findId(std::string_view id) const;
  [[nodiscard]] const Property& property(PropertyIndex index) const { return properties_[index]; }
  [[nodiscard]] PropertyIndex indexOf(const Property& property) const {
    return static_cast<PropertyIndex>(&property - properties_.data());
  }
  // The class of nodes without a key type; it has KeyType and nothing else.
  [[nodiscard]] const SchemaClass& plainClass() const { return *findClass("IIsObject"); }
  [[nodiscard]] PropertyIndex keyType() const { return keyType_; }
  // Names of a class's properties in schema order: those that its nodes must have, and the rest. Only of a
  // schema that is put together.
  [[nodiscard]] const NameList& mandatoryNames(const SchemaClass& schemaClass) const;
  [[nodiscard]] const NameList& optionalNames(const SchemaClass& schemaClass) const;

  // While a schema is put together. A definition replaces that of the same name; flags must come after their
  // word.
  PropertyIndex define(Property property);
  SchemaClass& defineClass(std::string_view name);
  void setDefault(std::string_view name, std::string_view text);
  // Puts a word's flags into the given order; what isn't mentioned follows in the order of definition.
  void orderFlags(PropertyIndex word, const std::vector<PropertyIndex>& order);
  [[nodiscard]] std::vector<Property>& properties() { return properties_; }
  [[nodiscard]] std::vector<std::unique_ptr<SchemaClass>>& classes() { return classes_; }

  // A schema to go on from: an own copy.
  [[nodiscard]] std::shared_ptr<Schema> clone() const;

 private:
  int version_;
  std::vector<Property> properties_;
  std::vector<std::unique_ptr<SchemaClass>> classes_;
  std::unordered_map<std::string, PropertyIndex, FoldedHash, FoldedEqual> propertyByName_;
  std::unordered_map<std::string, PropertyIndex, FoldedHash, FoldedEqual> propertyById_;
  std::unordered_map<std::string, SchemaClass*, FoldedHash, FoldedEqual> classByName_;
  PropertyIndex keyType_ = kNoProperty;
  mutable const Property* lastFound_ = nullptr;
  // Made when they are first asked for, which is once for each node of a site that is moved.
  using NamesOfClass = std::unordered_map<const SchemaClass*, NameList>;
  mutable NamesOfClass mandatoryNames_;
  mutable NamesOfClass optionalNames_;
};

// The schema that a server of that version brings, 4, 5 or 6. Made once and shared.
std::shared_ptr<const Schema> builtInSchema(int version);

}  // namespace trelvin
