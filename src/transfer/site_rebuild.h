// The rows of a stored site, put on a server one by one.
#pragma once

#include <cstdint>
#include <string>

#include "platform/metabase.h"

namespace trelvin {

struct NodeWords;

// Logs the failure in Err as one of the database, and clears it: what could not be read is missing on the
// target.
void tellUnreadableRows();

// What a run keeps from row to row and from site to site. A bind that fails leaves its handle on the node
// before, and what follows works on that one.
class SiteRebuild {
 public:
  // Goes through the rows that are open in rsData: creates the nodes that they open, and writes their
  // properties, below the site of that number. Rows that could not be opened are none. False when the run was
  // cancelled in the middle.
  bool writeRows(std::int16_t siteNumber);

  // The node that was written to last.
  NodeHandle& target() { return oTarget_; }

 private:
  void readRow();
  void writeRow();
  void countRow();

  void openNode();
  void createNode(const NodeWords& words);
  void bindParent(const NodeWords& words);
  void removeExisting(const NodeWords& words);
  void create(const NodeWords& words);
  void setPath(const NodeWords& words);
  void makeApplication(const NodeWords& words);

  void putProperty();
  [[nodiscard]] std::string nodePath() const;

  std::int16_t siteNumber_ = 0;
  std::int16_t rowsSinceYield_ = 0;
  std::int32_t rowPosition_ = 0;
  std::string sLocation_;  // of the node in hand

  struct Row {
    std::string name;
    std::string location;
    std::string localPath;
    std::string nodeClass;
    std::string appPath;
  } row_;

  std::string sParent_;  // path of the parent below the site
  NodeHandle oParent_;
  NodeHandle oNode_;    // what a row creates
  NodeHandle oTarget_;  // what a row writes to
};

}  // namespace trelvin
