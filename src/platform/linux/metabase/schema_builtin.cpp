// Puts the schema of a version together from the tables in data/.
//
// Where the tables say nothing about a version they are read as follows. IIS 6: the lists as they stand. IIS
// 4: its own lists with KeyType in front, which every class has; a class without a list of its own has what
// IIS 6 lists for it, as far as that is known to be so old. IIS 5: the IIS 4 list and what came with 5 for
// the class.

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

#include "schema.h"
#include "schema_data.h"

namespace trelvin {

namespace {

using Row = std::vector<std::string>;

// One line of comma separated cells, quotes around those that hold a comma.
Row cellsOf(std::string_view line) {
  Row cells(1);
  bool quoted = false;
  for (const char byte : line) {
    if (byte == '"') {
      quoted = !quoted;
    } else if (byte == ',' && !quoted) {
      cells.emplace_back();
    } else {
      cells.back() += byte;
    }
  }
  return cells;
}

std::vector<std::string> wordsOf(std::string_view list, char separator) {
  std::vector<std::string> words;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(separator), list.size());
    words.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return words;
}

// The lines below the heading.
std::vector<Row> rowsOf(std::string_view table) {
  std::vector<Row> rows;
  for (const std::string& line : wordsOf(table, '\n')) rows.push_back(cellsOf(line));
  rows.erase(rows.begin());
  return rows;
}

int versionOf(const std::string& cell) {
  return cell.empty() ? 0 : cell[0] - '0';
}

std::uint32_t bitOf(std::string_view cell) {
  std::uint32_t bit = 0;
  if (cell.size() > 2) std::from_chars(cell.data() + 2, cell.data() + cell.size(), bit, 16);
  return bit;
}

struct Tables {
  struct PropertyRow {
    Property property;
    std::string flagOf;
    std::vector<std::string> classes;
  };
  std::vector<PropertyRow> properties;
  std::vector<Row> defaults = rowsOf(embedded::kMetabaseDefaults);
  std::vector<Row> classes = rowsOf(embedded::kMetabaseClasses);
  std::map<std::pair<std::string, int>, std::vector<std::string>> lists;  // by class and version
  std::set<std::string> inLists6;

  Tables() {
    for (const Row& row : rowsOf(embedded::kMetabaseProperties)) properties.push_back(propertyRow(row));
    for (const Row& row : rowsOf(embedded::kMetabaseClassProperties)) {
      std::vector<std::string> names = wordsOf(row[2], ';');
      if (versionOf(row[1]) == 6) inLists6.insert(names.begin(), names.end());
      lists[{row[0], versionOf(row[1])}] = std::move(names);
    }
  }

  static PropertyRow propertyRow(const Row& row) {
    PropertyRow result;
    Property& property = result.property;
    property.name = row[0];
    property.type = propertyTypeOf(row[1]);
    property.id = row[2];
    property.userType = row[3];
    property.inherit = row[4].find("INHERIT") != std::string::npos;
    property.secure = row[4].find("SECURE") != std::string::npos;
    property.reference = row[4].find("REFERENCE") != std::string::npos;
    property.isVolatile = row[4].find("VOLATILE") != std::string::npos;
    property.defaultText = row[5];
    if (property.type == PropertyType::kTexts) {
      std::replace(property.defaultText.begin(), property.defaultText.end(), ';', '\n');
    }
    property.firstVersion = versionOf(row[6]);
    result.flagOf = row[7];
    property.bit = bitOf(row[8]);
    result.classes = wordsOf(row[9], ';');
    return result;
  }

  [[nodiscard]] const std::vector<std::string>* list(const std::string& name, int version) const {
    const auto found = lists.find({name, version});
    return found == lists.end() ? nullptr : &found->second;
  }

  // Whether a server of that version has the property at all.
  [[nodiscard]] bool knows(const PropertyRow& row, int version) const {
    const int first = row.property.firstVersion;
    if (version < 6) return first != 0 && first <= version;
    const bool dropped = (first == 4 || first == 5) && !inLists6.contains(row.property.name);
    return !dropped;
  }
};

void addProperties(Schema& schema, const Tables& tables) {
  std::map<std::string, std::uint32_t> bitsOnByDefault;
  for (const Tables::PropertyRow& row : tables.properties) {
    if (!tables.knows(row, schema.version())) continue;
    Property property = row.property;
    if (!row.flagOf.empty()) {
      const Property* word = schema.findProperty(row.flagOf);
      if (word == nullptr) continue;
      property.flagOf = schema.indexOf(*word);
      if (property.defaultText == "TRUE") bitsOnByDefault[row.flagOf] |= property.bit;
    }
    schema.define(std::move(property));
  }
  // Some words are known by their flags' defaults only.
  for (const auto& [word, bits] : bitsOnByDefault) {
    if (schema.findProperty(word)->defaultText.empty()) schema.setDefault(word, std::to_string(bits));
  }
  for (const Row& row : tables.defaults) {
    if (versionOf(row[1]) == schema.version()) schema.setDefault(row[0], row[2]);
  }
}

std::vector<std::string> namesFor(const Tables& tables, const std::string& name, int version) {
  const std::vector<std::string>* own = tables.list(name, version == 6 ? 6 : 4);
  if (own == nullptr) own = tables.list(name, 6);
  std::vector<std::string> names;
  if (version < 6) names.emplace_back("KeyType");
  if (own != nullptr) names.insert(names.end(), own->begin(), own->end());
  if (version != 5) return names;
  for (const Tables::PropertyRow& row : tables.properties) {
    if (row.property.firstVersion != 5) continue;
    if (std::find(row.classes.begin(), row.classes.end(), name) != row.classes.end())
      names.push_back(row.property.name);
  }
  return names;
}

void addClasses(Schema& schema, const Tables& tables) {
  for (const Row& row : tables.classes) {
    if (row[0] == "IIsConfigObject" || versionOf(row[3]) > schema.version()) continue;
    SchemaClass& added = schema.defineClass(row[0]);
    added.container = row[1] == "1";
    added.children = wordsOf(row[2], ';');
    for (const std::string& name : namesFor(tables, row[0], schema.version())) {
      if (const Property* property = schema.findProperty(name)) added.addProperty(schema.indexOf(*property));
    }
  }
}

// The file names the flags of a word in the order in which the classes list them.
void orderAllFlags(Schema& schema, const Tables& tables) {
  std::map<PropertyIndex, std::vector<PropertyIndex>> order;
  for (const auto& [key, names] : tables.lists) {
    if (key.second != 6) continue;
    for (const std::string& name : names) {
      const Property* flag = schema.findProperty(name);
      if (flag != nullptr && flag->flagOf != kNoProperty)
        order[flag->flagOf].push_back(schema.indexOf(*flag));
    }
  }
  for (const auto& [word, flags] : order) schema.orderFlags(word, flags);
}

std::shared_ptr<const Schema> makeSchema(int version) {
  static const Tables tables;
  auto schema = std::make_shared<Schema>(version);
  addProperties(*schema, tables);
  addClasses(*schema, tables);
  orderAllFlags(*schema, tables);
  return schema;
}

}  // namespace

std::shared_ptr<const Schema> builtInSchema(int version) {
  static const std::shared_ptr<const Schema> schema4 = makeSchema(4);
  static const std::shared_ptr<const Schema> schema5 = makeSchema(5);
  static const std::shared_ptr<const Schema> schema6 = makeSchema(6);
  if (version <= 4) return schema4;
  return version == 5 ? schema5 : schema6;
}

}  // namespace trelvin
