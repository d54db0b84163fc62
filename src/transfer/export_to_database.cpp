// Selected sites of a server into the data database: one row of Sites, and one row of Data for each property
// on each node that holds it.
#include <utility>

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/applications.h"
#include "metabase/mapping_display.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "transfer/export_frame.h"
#include "transfer/property_list.h"
#include "transfer/tree_to_database.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// What one run keeps from site to site and from property to property. A statement that fails leaves its
// variable as it was, so that the value of the property or the node before is used again.
class ToDatabaseRun {
 public:
  // Whether the run went through; false when it was aborted.
  bool exportSelection();
  // The last site's number in the database; the progress bar ends on it.
  [[nodiscard]] std::int16_t lastNumber() const { return iW3SVCNum_; }

 private:
  static void dumpDirectories();
  void exportSite(std::int32_t index);
  void addSiteRow(std::int32_t index);
  void storeTreeAndNames(std::int32_t index);
  void storeProperties(std::int32_t index);
  void storeProperty(std::int32_t index);
  // False when the property is given up: its value is an object.
  bool storePath(std::int32_t index, const std::string& path);
  void storeRow(std::int32_t index);
  void readValue();
  void readApplication();
  void setLocalName(std::int32_t index);
  [[nodiscard]] statements::PropertyRow row() const;
  void reportPathFailure() const;
  void storeBindings(const ListControl& list, const char* property, const char* announcement,
                     const char* failure);

  std::int16_t siteCounter_ = 1;
  std::int16_t iW3SVCNum_ = 0;
  NodeHandle objSite_;
  std::string name_;
  std::vector<std::string> paths_;
  std::string sLocation_;
  NodeHandle objProperty_;
  std::int32_t iVarType_ = 0;
  Value vValue_;
  Value vAppRoot_;
  std::string sLocalName_;
  std::string sAppPath_;
  // Counter of the loops over new bindings, empty until one has run. It is also what the warning of a corrupt
  // metabase shows in the place of a site's name.
  Value bindingCounter_;
};

bool ToDatabaseRun::exportSelection() {
  if (run.bDebug) dumpDirectories();
  const std::int32_t last = frmMain.lstSites.listCount() - 1;
  for (std::int32_t index = 0; index <= last; ++index) {
    attempt([] { platform().events->doEvents(); });
    if (!holdsOrFails([&] { return frmMain.lstSites.selected(index); })) continue;
    announceSite(siteCounter_, index);
    attempt([&] { frmMain.iCurrentSite = integerOf(index); });
    Err.clear();
    loadSiteLists(frmMain.iCurrentSite);
    NodeHandle source;
    attempt([&] { source = getObject(frmMain.lstSiteIndexes.list(index)); });
    testForCorruptMetabase(source, bindingCounter_);
    if (run.bExportCancelled) return false;
    exportSite(index);
    closeSite(siteCounter_);
  }
  return true;
}

void ToDatabaseRun::dumpDirectories() {
  for (std::int32_t index = 0; index < frmMain.lstSites.listCount(); ++index) {
    attempt([] { platform().events->doEvents(); });
    attempt([&] { writeLog("Site " + std::to_string(index) + " directories"); });
    attempt([&] { displayDirectories(true, integerOf(index)); });
    for (std::int32_t i = 0; i < frmMain.lstFolders(0).listCount(); ++i) {
      attempt([&] {
        writeLog("Dir " + std::to_string(i) + " - " + frmMain.lstFolders(0).list(i) + " - " +
                 frmMain.lstDirectories(0).list(i));
      });
    }
  }
  if (!Err.isSet()) return;
  attempt([] { writeLog("Error enuming directories - " + errTextWithDash()); });
  Err.clear();
}

void ToDatabaseRun::exportSite(std::int32_t index) {
  addSiteRow(index);
  storeTreeAndNames(index);
  storeProperties(index);
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount()); });
  attempt([&] { frmMain.ProgressBar1.setValue(iW3SVCNum_); });
  attempt([] { showLastLine(); });
  attempt([] { writeLog("Saving IPs..."); });
  storeBindings(frmMain.lstNewIPs(0), "ServerBindings", "Storing New IP addresses", "Error setting IP's");
  attempt([] { writeLog("Saving SSL IPs..."); });
  storeBindings(frmMain.lstNewSSLIPs(0), "SecureBindings", "Storing New SSL IP addresses",
                "Error setting SSL IP's");
  attempt([] { showLastLine(); });
  attempt([&] { frmMain.ProgressBar1.setValue(siteCounter_); });
}

// The last row of the table is taken to be the one just added: the program is its only writer.
void ToDatabaseRun::addSiteRow(std::int32_t index) {
  buildAndExecuteOnData(
      [&] { return statements::addSite(frmMain.lstSites.list(index), frmMain.sExportSiteType); });
  attempt([] { openDataRows(statements::allSites()); });
  attempt([] { bound(frmMain.rsData).moveLast(); });
  attempt([&] { iW3SVCNum_ = bound(frmMain.rsData).field("ID").toInteger(); });
  attempt([&] { debugLog("W3SVCNUM = " + std::to_string(iW3SVCNum_)); });
  attempt([] { bound(frmMain.rsData).close(); });
  Err.clear();
}

void ToDatabaseRun::storeTreeAndNames(std::int32_t index) {
  attempt([&] { objSite_ = getObject(frmMain.lstSiteIndexes.list(index)); });
  attempt([&] { exportSiteTree(objSite_, "", std::to_string(iW3SVCNum_)); });
  completePropertyList(objSite_);
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstPropsToExport.listCount()); });
  attempt([] { frmMain.ProgressBar1.setValue(0); });
}

// Names outside, paths inside: the rows of one node are scattered over the run.
void ToDatabaseRun::storeProperties(std::int32_t index) {
  const std::int32_t last = frmMain.lstPropsToExport.listCount() - 1;
  for (std::int32_t i = 0; i <= last; ++i) {
    attempt([&] { name_ = frmMain.lstPropsToExport.list(i); });
    if (trimmed(name_).empty()) continue;
    storeProperty(index);
    attempt([&] { frmMain.ProgressBar1.setValue(i); });
  }
}

void ToDatabaseRun::storeProperty(std::int32_t index) {
  attempt([&] { debugLog("Propname = " + name_); });
  // The second argument is a variable that is never given a value: every path that holds the property,
  // whether it is inheritable or not.
  const bool hasPaths = attempt([&] { paths_ = bound(objSite_).getDataPaths(name_, Value()); });
  // The list still has the names of sites of other servers; one that this server doesn't know is on no path.
  const bool isUnknown = !hasPaths && Err.number == error_number::kAdsPropertyNotSupported;
  attempt([] { debugLogIfErr("After Pathlist"); });
  if (isUnknown) {
    paths_.clear();
    Err.clear();
  }
  for (const std::string& path : std::vector<std::string>(paths_)) {
    if (!storePath(index, path)) {
      attempt([&] { reportProgress(name_ + " cannot be stored in database"); });
      return;
    }
  }
}

bool ToDatabaseRun::storePath(std::int32_t index, const std::string& path) {
  sLocalName_.clear();
  sAppPath_.clear();
  attempt([] { debugLogIfErr("After Path"); });
  attempt([&] { sLocation_ = relativeToSite(path); });
  const std::string node = frmMain.lstSiteIndexes.list(index) + sLocation_;
  attempt([&] { debugLog("Reading " + node); });
  attempt([&] { objProperty_ = getObject(node); });
  if (Err.isSet()) attempt([] { debugLog("After impObj"); });
  attempt([&] { iVarType_ = bound(objProperty_).get(name_).varType(); });
  if (Err.isSet()) attempt([] { debugLog("After vartype"); });
  if (iVarType_ == kVarObject) return false;
  // An empty list gets no row.
  const bool isEmptyList =
      iVarType_ == kVarList && holdsOrFails([&] { return bound(objProperty_).get(name_).upperBound() < 0; });
  if (!isEmptyList) storeRow(index);
  if (Err.isSet()) reportPathFailure();
  return true;
}

void ToDatabaseRun::storeRow(std::int32_t index) {
  readValue();
  readApplication();
  setLocalName(index);
  buildAndExecuteOnData([&] { return statements::addPropertyRow(row()); });
}

void ToDatabaseRun::readValue() {
  attempt([&] { vValue_ = bound(objProperty_).get(name_); });
  if (iVarType_ == kVarList) {
    std::string lines;
    attempt([&] {
      for (const Value& element : vValue_.list()) {
        attempt([&] { lines += applyFindReplace(element) + "\r\n"; });
      }
    });
    vValue_ = std::move(lines);
  } else if (iVarType_ == kVarText) {
    attempt([&] { vValue_ = applyFindReplace(vValue_); });
  }
}

void ToDatabaseRun::readApplication() {
  attempt([&] { vAppRoot_ = bound(objProperty_).get("AppRoot"); });
  // Read for the sake of the error state alone: a node without them is reported with its row.
  attempt([&] { static_cast<void>(bound(objProperty_).get("AppIsolated")); });
  attempt([&] { static_cast<void>(bound(objProperty_).get("AppPoolID")); });
  const bool isApplication =
      holdsOrFails([&] { return isApplicationRoot(vAppRoot_, bound(objProperty_).name()); });
  if (isApplication) {
    attempt([&] { sAppPath_ = "/" + bound(objProperty_).name(); });
  } else {
    attempt([&] {
      debugLog("App Path not set - " + vAppRoot_.toText() + " Could be /" + bound(objProperty_).name());
    });
  }
}

// The node of the site itself is told by two characters exactly, so that a site with a two-digit number is
// known and all others keep their number as a name. Stores depend on it.
void ToDatabaseRun::setLocalName(std::int32_t index) {
  attempt([&] { sLocalName_ = bound(objProperty_).name(); });
  const bool isSiteNode =
      holdsOrFails([&] { return lastCharacters(frmMain.lstSiteIndexes.list(index), 2) == sLocalName_; });
  if (isSiteNode) sLocalName_.clear();
}

statements::PropertyRow ToDatabaseRun::row() const {
  statements::PropertyRow row{.site = iW3SVCNum_,
                              .location = sLocation_,
                              .name = name_,
                              .nodeClass = bound(objProperty_).className(),
                              .dataType = iVarType_,
                              .localPath = sLocalName_,
                              .appPath = sAppPath_,
                              .column = {},
                              .value = {}};
  switch (iVarType_) {
    case kVarLong:
      row.column = "NumberValue";
      row.value = vValue_.toText();
      break;
    case kVarText:
      row.column = "StringValue";
      row.value = statements::quotedLiteral(vValue_);
      break;
    case kVarBoolean:
      row.column = "BooleanValue";
      row.value = vValue_.toBoolean() ? "1" : "0";
      break;
    case kVarList:
      row.column = "ObjectValue";
      row.value = statements::quotedLiteral(vValue_);
      break;
    default:
      break;  // no column and no value: the database refuses the statement, and that is how it is reported
  }
  return row;
}

void ToDatabaseRun::reportPathFailure() const {
  attempt([&] {
    writeLog("Error transfering Property " + name_ + "Error " + errText() + " " + hexOf(Err.number));
  });
  Err.clear();
}

// The rows get the location of the last path of the last property that was read.
void ToDatabaseRun::storeBindings(const ListControl& list, const char* property, const char* announcement,
                                  const char* failure) {
  if (list.listCount() <= 0) return;
  attempt([&] { addOutput(announcement); });
  std::string bindings;
  attempt([&] { bindings = rewrittenBindings(list, bindingCounter_); });
  buildAndExecuteOnData(
      [&] { return statements::addStoredBindings(iW3SVCNum_, sLocation_, property, bindings); });
  if (!Err.isSet()) return;
  attempt([&] { writeLog(std::string(failure) + "Error " + std::to_string(Err.number) + Err.description); });
  Err.clear();
}

}  // namespace

void cmdExportFile_Click() {
  frmMain.optExportServer.setValue(false);
  frmMain.optExportFile.setValue(true);
  if (acceptAbortClick(frmMain.cmdExportFile)) return;
  ToDatabaseRun exportRun;
  if (anySiteSelected()) {
    showExportWarnings();
    if (leaveWhenCancelled()) return;
    suggestSystemDirectory();
    if (leaveWhenCancelled()) return;
    attempt([] { giveUpDataRows(); });
    beginRun(frmMain.cmdExportFile, "Exporting to file");
    if (!exportRun.exportSelection()) {
      endAbortedRun();
      return;
    }
  }
  endRun(exportRun.lastNumber());
}

}  // namespace trelvin
