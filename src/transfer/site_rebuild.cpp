#include "transfer/site_rebuild.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/applications.h"
#include "metabase/paths.h"
#include "metabase/site_details.h"
#include "platform/platform.h"
#include "transfer/property_list.h"
#include "transfer/stored_value.h"
#include "transfer/target_server.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

// The classes that a row can create, and what is said about it.
struct NodeWords {
  const char* suffix;  // of the class word
  const char* creating;
  const char* creationLine;  // in front of the class word
  const char* creationError;
  const char* pathError;
  const char* applicationError;
  bool isVirtual;
};

namespace {

constexpr NodeWords kDirectory{.suffix = "Directory",
                               .creating = "Creating directory ",
                               .creationLine = "Creating dir ",
                               .creationError = "Error creating directory ",
                               .pathError = "Error setting path for directory ",
                               .applicationError = "Error creating Application for directory ",
                               .isVirtual = false};
constexpr NodeWords kVirtualDirectory{.suffix = "VirtualDir",
                                      .creating = "Creating virtual directory ",
                                      .creationLine = "Creating ",
                                      .creationError = "Error creating vdir ",
                                      .pathError = "Error setting path for virtual directory ",
                                      .applicationError = "Error creating Application for virtual directory ",
                                      .isVirtual = true};

// A turn for events at each row would slow the loop; none at all would leave the Abort button dead for the
// length of a site.
constexpr std::int16_t kRowsBetweenYields = 51;

RecordSet& rows() {
  return bound(frmMain.rsData);
}

// The platform has no other name for an object that is bound late.
std::string typeNameOf(const NodeHandle& node) {
  return node ? "Object" : "Nothing";
}

template <typename Text>
void logAndClearIfErr(Text&& text) {
  if (!Err.isSet()) return;
  attempt([&] { writeLog(text()); });
  Err.clear();
}

}  // namespace

void tellUnreadableRows() {
  logAndClearIfErr([] { return "Error reading the stored rows of the site " + errorAndCause(); });
}

bool SiteRebuild::writeRows(std::int16_t siteNumber) {
  siteNumber_ = siteNumber;
  sLocation_.clear();
  rowPosition_ = 0;
  if (!rows().isOpen()) return true;
  bool isCancelled = false;
  const bool isWhole = attempt([&] {
    while (!rows().eof()) {
      isCancelled = run.bExportCancelled;
      if (isCancelled) return;
      readRow();
      writeRow();
      rows().moveNext();
      countRow();
    }
  });
  // Passing over a set that can't be read would never end, and writing what the row before left would ruin
  // properties: the rows are over then, and that is told.
  if (!isWhole) tellUnreadableRows();
  return !isCancelled;
}

std::string SiteRebuild::nodePath() const {
  return targetSitePath(siteNumber_) + sLocation_;
}

// A row as a whole or, with a failure that goes to the caller, not at all.
void SiteRebuild::readRow() {
  const RecordSet& row = rows();
  row_ = {.name = textOfField(row, "Name"),
          .location = textOfField(row, "Location"),
          .localPath = textOfField(row, "LocalPath"),
          .nodeClass = textOfField(row, "Class"),
          .appPath = textOfField(row, "AppPath")};
}

void SiteRebuild::writeRow() {
  attempt([&] { debugLog("PropName = " + row_.name); });
  openNode();
  // The row that opens a node has done so by now, even when its own property stays behind.
  if (!isExcluded(row_.name)) putProperty();
}

void SiteRebuild::countRow() {
  ++rowsSinceYield_;
  ++rowPosition_;
  attempt([&] { frmMain.ProgressBar1.setValue(rowPosition_); });
  if (rowsSinceYield_ < kRowsBetweenYields) return;
  attempt([] { platform().events->doEvents(); });
  rowsSinceYield_ = 0;
}

void SiteRebuild::openNode() {
  if (row_.location == sLocation_) return;
  sLocation_ = row_.location;
  // A node of any other class has to be there already.
  if (isClass(row_.nodeClass, kDirectory.suffix)) {
    createNode(kDirectory);
  } else if (isClass(row_.nodeClass, kVirtualDirectory.suffix)) {
    createNode(kVirtualDirectory);
  }
}

void SiteRebuild::createNode(const NodeWords& words) {
  attempt([&] { reportProgress(words.creating + sLocation_); });
  attempt([&] { writeLog(words.creating + sLocation_); });
  bindParent(words);
  removeExisting(words);
  create(words);
  setPath(words);
  if (!row_.appPath.empty()) makeApplication(words);
}

// The parent's path is found by lengths: the node's own, less its name and the slash before it.
void SiteRebuild::bindParent(const NodeWords& words) {
  attempt([&] {
    const std::size_t length = characterCount(sLocation_);
    const std::size_t own = characterCount(row_.localPath) + 1;
    if (own > length) throw Failure(error_number::kInvalidProcedureCall);
    sParent_ = firstCharacters(sLocation_, length - own);
  });
  Err.clear();
  attempt([&] { oParent_ = getObject(targetSitePath(siteNumber_) + sParent_); });
  if (!words.isVirtual) return;
  if (Err.isSet()) {
    attempt([] { writeLog("Error getting expobj"); });
  } else {
    attempt([&] { writeLog("ExpObj = " + bound(oParent_).adsPath()); });
  }
  Err.clear();
}

void SiteRebuild::removeExisting(const NodeWords& words) {
  Err.clear();
  attempt([&] { oNode_ = getObject(nodePath()); });
  if (!Err.isSet()) {
    attempt([&] { bound(oParent_).deleteChild(classWord(words.suffix), row_.localPath); });
  }
  Err.clear();
}

void SiteRebuild::create(const NodeWords& words) {
  attempt([&] { writeLog(words.creationLine + classWord(words.suffix) + ", " + row_.localPath); });
  attempt([&] { oNode_ = bound(oParent_).create(classWord(words.suffix), row_.localPath); });
  attempt([&] { bound(oNode_).setInfo(); });
  logAndClearIfErr([&] { return words.creationError + errText(); });
}

// The mapping is asked anew each time, as a debug log shows.
void SiteRebuild::setPath(const NodeWords& words) {
  if (!words.isVirtual) {
    attempt([] { writeLog("Calling GetDir "); });
    attempt([&] { writeLog(getNewDir(sLocation_)); });
  }
  if (holdsOrFails([&] { return !getNewDir(sLocation_).empty(); })) {
    attempt([&] { bound(oNode_).put("Path", applyFindReplace(getNewDir(sLocation_))); });
    attempt([&] { bound(oNode_).setInfo(); });
  }
  logAndClearIfErr([&] {
    const std::string line = words.pathError + sLocation_ + errorAndCause();
    return words.isVirtual ? line + " - " + typeNameOf(oNode_) : line;
  });
}

// The rows of plain directories have neither of the two columns: nought then, which is in process for IIS 5
// and 6 and out of process for IIS 4, and the pool that is inherited.
void SiteRebuild::makeApplication(const NodeWords& words) {
  attempt([&] { oNode_ = getObject(nodePath()); });
  attempt([&] {
    const Value stored = rows().field("AppInOutProc");
    const Value inProcess = stored.isNull() ? Value(false) : stored;
    createApplication(oNode_, inProcess, textOfField(rows(), "AppPoolName"), inProcess);
  });
  logAndClearIfErr([&] { return words.applicationError + sLocation_ + errorAndCause(); });
}

// Each row has a bind and a commit of its own, so that a failure is its own too. Where the bind fails, the
// node before gets the value, and the line tells it.
void SiteRebuild::putProperty() {
  Err.clear();
  const Value value = storedValue(rows(), row_.name);
  const std::string path = nodePath();
  Err.clear();
  attempt([&] { oTarget_ = getObject(path); });
  attempt([&] { bound(oTarget_).put(row_.name, value); });
  attempt([&] { bound(oTarget_).setInfo(); });
  logAndClearIfErr(
      [&] { return "Error transfering Prop " + row_.name + errorAndCause() + path + row_.name; });
}

}  // namespace trelvin
