// Directory objects behind IIS:// paths: the whole of what the program asks of a metabase.
// Every operation that fails throws Failure with ADSI's number and leaves things as they were.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/value.h"

namespace trelvin {

// Names that never change once they were given. A copy is the same names and not new ones, so that it costs
// next to nothing to take, to keep and to compare with another copy.
class NameList {
 public:
  using value_type = std::string;
  using const_iterator = std::vector<std::string>::const_iterator;

  NameList() : NameList(std::vector<std::string>()) {}
  NameList(std::vector<std::string> names)  // NOLINT(google-explicit-constructor)
      : names_(std::make_shared<const std::vector<std::string>>(std::move(names))) {}

  [[nodiscard]] const_iterator begin() const { return names_->begin(); }
  [[nodiscard]] const_iterator end() const { return names_->end(); }
  [[nodiscard]] std::size_t size() const { return names_->size(); }
  [[nodiscard]] bool empty() const { return names_->empty(); }
  [[nodiscard]] const std::vector<std::string>& texts() const { return *names_; }
  bool operator==(const NameList& other) const { return names_ == other.names_ || *names_ == *other.names_; }

 private:
  std::shared_ptr<const std::vector<std::string>> names_;
};

class MetabaseNode;
// A handle on a bound node. Binding anew gives a new handle; the old one stays valid.
using NodeHandle = std::shared_ptr<MetabaseNode>;

// A node, or a schema class object when it was bound by a Schema path.
class MetabaseNode {
 public:
  MetabaseNode() = default;
  MetabaseNode(const MetabaseNode&) = delete;
  MetabaseNode& operator=(const MetabaseNode&) = delete;
  virtual ~MetabaseNode() = default;

  // Read-only texts of every object.
  [[nodiscard]] virtual std::string className() const = 0;
  [[nodiscard]] virtual std::string name() const = 0;     // last segment of the path
  [[nodiscard]] virtual std::string adsPath() const = 0;  // as bound, then the stored names
  [[nodiscard]] virtual std::string schema() const = 0;   // path of the class object, bindable as it stands

  // Direct children, each once, in the provider's order. The children are found when the call is made; the
  // visit may bind and change whatever it likes.
  virtual void forEachChild(const std::function<void(const NodeHandle& child)>& visit) = 0;

  // Of a schema class object: names of the class's properties, in schema order. 0x80005006 on any other
  // object.
  [[nodiscard]] virtual NameList mandatoryProperties() const = 0;
  [[nodiscard]] virtual NameList optionalProperties() const = 0;

  // The value set here, else inherited from the nearest node above, else the schema's default.
  // 0x80005006 when the node's class does not have the property. Types: text 8, number 3, flag or truth value
  // 11, list 8204, IPSecurity and AdminACL 9, MimeMap a list of objects, binary 8209.
  [[nodiscard]] virtual Value get(std::string_view propertyName) const = 0;
  // Changes this handle's copy; nothing reaches the metabase before setInfo. 0x80005006 as for get,
  // 0x80005008 for a value that does not fit the property's type.
  virtual void put(std::string_view propertyName, const Value& value) = 0;
  // Commits the copy. When it returns, the change survives a killed process.
  virtual void setInfo() = 0;

  // A new child; it is in the metabase only after setInfo on it. An existing name is refused there.
  virtual NodeHandle create(std::string_view className, std::string_view childName) = 0;
  // Removes the child with all that lies below it. (delete is a word of the language.)
  virtual void deleteChild(std::string_view className, std::string_view childName) = 0;

  // Full paths of all nodes at or below this one that hold the property themselves, this one first. An
  // attribute that is empty or 0 asks for any property, 1 for inheritable ones only (0x800CC801 when it
  // isn't). 0x80005006 for a name that the schema does not know at all.
  [[nodiscard]] virtual std::vector<std::string> getDataPaths(std::string_view propertyName,
                                                              const Value& attribute) const = 0;

  // Make the node an application root. appCreate3 needs IIS 6, appCreate2 IIS 5 or later.
  virtual void appCreate(bool inProcess) = 0;
  virtual void appCreate2(std::int32_t isolation) = 0;
  virtual void appCreate3(std::int32_t isolation, std::string_view pool, bool createPool) = 0;

  // Starts a site.
  virtual void start() = 0;
};

class Metabase {
 public:
  Metabase() = default;
  Metabase(const Metabase&) = delete;
  Metabase& operator=(const Metabase&) = delete;
  virtual ~Metabase() = default;

  // Binds a path (GetObject). 0x800706BA when the server can't be reached, 0x80070003 when there is no such
  // node, 0x800CC819 when its metabase can't be read, 0x80005000 for what is no IIS:// path.
  virtual NodeHandle getObject(std::string_view path) = 0;
};

}  // namespace trelvin
