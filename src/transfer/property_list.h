// Which properties travel: the names that the metabase's own schema gives, less the exclusions.
#pragma once

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
// has many nodes and few classes: names that were added already are not added again only to be removed. For
// one walk over one tree, in which neither the list nor the exclusions change otherwise.
class TreeNames {
 public:
  void collect(const NodeHandle& schemaClass);

 private:
  using Names = std::vector<std::string>;
  void add(Names names);

  std::vector<Names> added_;
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
