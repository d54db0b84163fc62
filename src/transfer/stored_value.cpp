#include "transfer/stored_value.h"

#include "core/err.h"
#include "core/run_state.h"
#include "core/text.h"
#include "transfer/value_rewriting.h"

namespace trelvin {

namespace {

using Rewrite = std::string (*)(const std::string&);

std::string replaced(const std::string& item) {
  return applyFindReplace(item);
}

// The swap ends in a find and replace of its own; the second one is meant.
std::string swapped(const std::string& item) {
  return applyFindReplace(swapScriptMapVerbs(item));
}

// The items of a text that ends each of them with CR LF. What stands behind the last line end is lost, and a
// text without any gives one empty item.
Value listOf(const std::string& text, Rewrite rewrite) {
  Value::List list{Value("")};
  std::size_t counter = 0;
  std::size_t begin = 0;
  for (std::size_t end = text.find("\r\n"); end != std::string::npos; end = text.find("\r\n", begin)) {
    list.resize(counter + 1);
    attempt([&] { list[counter] = rewrite(text.substr(begin, end - begin)); });
    begin = end + 2;
    ++counter;
  }
  return list;
}

void readList(const RecordSet& row, Rewrite rewrite, Value& value) {
  attempt([&] { value = listOf(textOfField(row, "ObjectValue"), rewrite); });
}

// The type of the row, 0 for what is no number.
std::int32_t typeOf(const RecordSet& row) {
  std::int32_t type = kVarEmpty;
  attempt([&] { type = row.field("DataType").toLong(); });
  return type;
}

// Only 0 is False; Null isn't 0.
bool isTrue(const Value& number) {
  return number.isNull() || number.toDouble() != 0;
}

void readByType(const RecordSet& row, Value& value) {
  switch (typeOf(row)) {
    case kVarLong:
      attempt([&] { value = row.field("NumberValue"); });
      break;
    case kVarText:
      attempt([&] { value = applyFindReplace(row.field("StringValue")); });
      break;
    case kVarBoolean:
      attempt([&] { value = isTrue(row.field("BooleanValue")); });
      break;
    case kVarList:
      readList(row, replaced, value);
      break;
    default:
      break;
  }
}

// Servers up to IIS 4 list the verbs that are shut out, later ones those that are let in. From IIS 6
// downwards the value stands as it was read, where a transfer between servers writes nothing.
void readScriptMaps(const RecordSet& row, Value& value) {
  const double import = run.dblIMIISVer;
  const double target = run.dblEXIISVer;
  if (import == target) {
    readList(row, replaced, value);
  } else if (import == 4.0) {
    if (typeOf(row) == kVarList) readList(row, swapped, value);
  } else if (import == 5.0) {
    readList(row, target == 4.0 ? swapped : replaced, value);
  }
}

}  // namespace

std::string textOfField(const RecordSet& row, const char* column) {
  const Value value = row.field(column);
  return value.isNull() ? std::string() : value.toText();
}

Value storedValue(const RecordSet& row, const std::string& name) {
  Value value("");
  readByType(row, value);
  if (equalsIgnoringCase(name, "ScriptMaps")) readScriptMaps(row, value);
  return value;
}

}  // namespace trelvin
