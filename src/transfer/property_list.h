// Which properties travel: the names that the metabase's own schema gives, less the exclusions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/metabase.h"

namespace trelvin {

// Whether a name stands in lstExclude, in any case, as a whole.
bool isExcluded(const std::string& sName);

// Adds the names of a schema class object that are not excluded to lstPropsToExport, the mandatory ones
// first. Failures are ignored: what can't be read adds nothing.
void addSchemaNames(const NodeHandle& schemaClass);

// The same for the classes of a tree's nodes, one after the other, each followed by removeDuplicates. A tree
// has many nodes and few classes: names that were added already are not added again only to be removed. And
// the classes of one tree are mostly those of the next: what their names made of an empty list is kept from
// tree to tree and put there as it was.
class TreeNames {
 public:
  // Ahead of each tree. From here on neither the list nor the exclusions may change otherwise.
  void begin();
  void collect(const NodeHandle& schemaClass);
  void add(const NameList& names);

 private:
  struct Step {
    NameList names;
    std::vector<std::string> list;  // what lstPropsToExport held then
  };

  std::vector<Step> steps_;  // of this tree, and behind them those of the tree before
  std::size_t taken_ = 0;    // of this tree
  bool fromEmptyList_ = false;
  std::uint64_t exclusions_ = 0;
};

// Which names are excluded, looked at once for many names.
class Exclusions {
 public:
  Exclusions();
  [[nodiscard]] bool hold(const std::string& name) const;

 private:
  std::vector<std::string> upperNames_;  // in order
};

// Completes the list of a site that goes to the database with the names of the site's own class.
void completePropertyList(const NodeHandle& site);

}  // namespace trelvin
