#include "transfer/export_to_server.h"

#include <utility>
#include <vector>

#include "content/content_copy.h"
#include "content/permissions.h"
#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "transfer/export_frame.h"
#include "transfer/property_list.h"
#include "transfer/target_server.h"
#include "transfer/tree_to_server.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

enum class End { kNormal, kAborted, kSilent };

// What one run keeps from site to site and from property to property. A statement that fails leaves its
// variable as it was, so that a handle still holds the node before, and what follows works on that one.
class ServerToServerRun {
 public:
  End exportSelection();
  // The progress bar ends on the number that the next site would have got.
  [[nodiscard]] std::int16_t nextNumber() const { return iSiteNumber_; }

 private:
  void beginSite(std::int32_t index);
  End exportSite(std::int32_t index);

  void copyContent();
  void readFilesToCopy();
  static void copyDirectory(std::int32_t i);
  static void copyPermissions(const std::string& source, const std::string& target);

  void copyConfiguration(std::int32_t index);
  void replaceSite();
  void buildStructure(std::int32_t index);
  void readSchema();
  void addNames(const NameList& names, const char* failure);
  static void addNamesAndTell(const NameList& names);
  static void finishPropertyList();

  void transferProperties(std::int32_t index);
  void transferProperty(std::int32_t index, const std::string& name);
  void transferPath(std::int32_t index, const std::string& name, const std::string& path);
  void putValue(const std::string& name);
  void putScriptMaps(const std::string& name, const Value& value);
  void put(const std::string& name, const Value& value);

  void transferBindings();

  std::int16_t siteCounter_ = 1;
  std::int16_t iSiteNumber_ = 0;
  NodeHandle oSite_;    // the source site; during the existence test and the creation, the target
  NodeHandle oTarget_;  // the node that a property is written to
  NodeHandle oNewSite_;
  NodeHandle oSource_;
  NodeHandle oSchema_;
  std::string sSchemaPath_;
  NameList mandatory_;
  NameList optional_;
  TreeNames names_;
  std::vector<std::string> paths_;
  // Counter of the loops over new bindings; see the warning of a corrupt metabase.
  Value bindingCounter_;
};

void report(const std::string& text) {
  attempt([&] { reportProgress(text); });
}

void reportAndLog(const std::string& text) {
  report(text);
  attempt([&] { writeLog(text); });
}

// "number description", as the debug failures of this direction have it behind their words.
void debugFailure(const char* words) {
  attempt([&] { debugLogIfErr(words + errText()); });
}

template <typename Rewrite>
Value rewrittenList(const Value& source, Rewrite rewrite) {
  Value::List list(source.list().size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    attempt([&] { list[i] = rewrite(source.list()[i]); });
  }
  return list;
}

// Texts and lists of texts pass through find and replace; anything else travels as it is.
Value rewritten(const Value& value) {
  if (value.varType() == kVarText) return applyFindReplace(value);
  if (value.varType() == kVarList) return rewrittenList(value, applyFindReplace);
  return value;
}

End ServerToServerRun::exportSelection() {
  if (!beginAtTarget(iSiteNumber_)) return End::kSilent;
  const std::int32_t last = frmMain.lstSites.listCount() - 1;
  for (std::int32_t index = 0; index <= last; ++index) {
    attempt([] { platform().events->doEvents(); });
    if (run.bExportCancelled) return End::kAborted;
    if (!holdsOrFails([&] { return frmMain.lstSites.selected(index); })) continue;
    beginSite(index);
    if (run.bExportCancelled) return End::kAborted;
    const End end = exportSite(index);
    if (end != End::kNormal) return end;
    leaveSite(iSiteNumber_, siteCounter_);
  }
  return End::kNormal;
}

void ServerToServerRun::beginSite(std::int32_t index) {
  if (frmMain.optOverwritePreserve.value()) {
    attempt([&] { iSiteNumber_ = integerOf(siteNumberFromPath(frmMain.lstSiteIndexes.list(index))); });
    attempt([&] { debugLog("Existing W3SVCNum = " + std::to_string(iSiteNumber_)); });
  }
  frmMain.lstPropsToExport.clear();
  announceSite(siteCounter_, index);
  attempt([&] { debugLog("Site Name " + frmMain.lstSites.list(index)); });
  attempt([] { debugLog("From " + frmMain.txtImportServer.text); });
  attempt([] { debugLog("To " + frmMain.txtExportServer.text); });
  attempt([&] { frmMain.iCurrentSite = integerOf(index); });
  Err.clear();
  attempt([&] { addOutput(frmMain.lstSites.list(index)); });
  loadSiteLists(frmMain.iCurrentSite);
  attempt([&] { oSite_ = getObject(frmMain.lstSiteIndexes.list(index)); });
  debugFailure("Failed to connect to the web site");
  testForCorruptMetabase(oSite_, bindingCounter_);
}

End ServerToServerRun::exportSite(std::int32_t index) {
  if (run.bCopyFiles) copyContent();
  if (leaveWhenCancelled()) return End::kSilent;
  if (run.bCopyIIS) copyConfiguration(index);
  startSite(iSiteNumber_);
  return End::kNormal;
}

// Content first, so that it is there before any configuration. An Abort does not end the loop; all rows run.
void ServerToServerRun::copyContent() {
  readFilesToCopy();
  const ListControl& wanted = frmMain.lstCheckCopy(0);
  for (std::int32_t i = 0; i < wanted.listCount(); ++i) {
    if (holdsOrFails([&] { return wanted.list(i) == "True"; })) copyDirectory(i);
  }
}

void ServerToServerRun::readFilesToCopy() {
  frmMain.lstCheckCopy(0).clear();
  frmMain.lstFilesToCopy(0).clear();
  attempt([] { openSettingsRows(statements::filesToCopy(frmMain.iCurrentSite)); });
  attempt([] {
    RecordSet& rows = bound(frmMain.rsSettings);
    for (; !rows.eof(); rows.moveNext()) {
      // A flag that can't be read counts as one that is off, so that the rows stay in step with the lists.
      const bool isOff = holdsOrFails([&] {
        const Value copy = rows.field("Copy");
        return !copy.isNull() && copy.toDouble() == 0;
      });
      attempt([&] { frmMain.lstCheckCopy(0).addItem(textOf(!isOff)); });
      attempt([&] { frmMain.lstFilesToCopy(0).addItem(rows.field("FileName").toText()); });
    }
  });
  attempt([] { bound(frmMain.rsSettings).close(); });
}

// The rows of the table and of the mapping lists are paired by position alone.
void ServerToServerRun::copyDirectory(std::int32_t i) {
  std::string source;
  std::string target;
  attempt([&] { source = sharePath(frmMain.txtImportServer.text, frmMain.lstFilesToCopy(0).list(i)); });
  attempt([&] {
    target = sharePath(frmMain.txtExportServer.text, applyFindReplace(frmMain.lstDirectories(0).list(i)));
  });
  attempt([&] { writeLog("Copying from " + source); });
  attempt([&] { writeLog("Copying to   " + target); });
  const std::string activity = "Copying web content " + frmMain.lstFolders(0).list(i) + "...";
  attempt([&] { setStatus(activity); });
  report(activity);
  attempt([&] { copyFolder(source, target, "Copying web content..."); });
  if (run.bSetFilePerms) copyPermissions(source, target);
}

void ServerToServerRun::copyPermissions(const std::string& source, const std::string& target) {
  attempt([] { setStatus("Setting file permissions..."); });
  attempt([] { addOutput("Setting file permissions...."); });
  report("This can take a long time...");
  run.bCancelPerms = false;
  run.lPermsSet = 0;
  frmMain.syncPermTimer.enabled = true;
  // Taken now: the walk lets a person type into the boxes.
  const std::string oldName = frmMain.txtImportServer.text;
  const std::string newName = frmMain.txtExportServer.text;
  attempt([&] { synchPermissions(frmMain, source, target, oldName, newName); });
  frmMain.syncPermTimer.enabled = false;
}

void ServerToServerRun::copyConfiguration(std::int32_t index) {
  attempt([&] { setStatus(siteStatus(siteCounter_, index)); });
  replaceSite();
  buildStructure(index);
  transferProperties(index);
  transferBindings();
  stampSite(oTarget_, iSiteNumber_);
}

void ServerToServerRun::replaceSite() {
  const std::string site = frmMain.sService + std::to_string(iSiteNumber_);
  reportAndLog("Checking to see if " + site + " exists..");
  Err.clear();
  attempt([&] { oSite_ = getObject(targetSitePath(iSiteNumber_)); });
  if (!Err.isSet()) {
    reportAndLog("Deleteing existing web " + site);
    Err.clear();
    attempt([&] { oSite_ = getObject(targetServicePath()); });
    attempt([&] { bound(oSite_).deleteChild(classWord("Server"), std::to_string(iSiteNumber_)); });
    if (Err.isSet()) attempt([] { writeLog(errText()); });
    Err.clear();
  }
  reportAndLog("Creating Web Site " + site);
  attempt([&] { oSite_ = getObject(targetServicePath()); });
  attempt([&] { oNewSite_ = bound(oSite_).create(classWord("Server"), std::to_string(iSiteNumber_)); });
  attempt([&] { bound(oNewSite_).setInfo(); });
  // A creation that failed is told nowhere here; every write that follows tells it.
  Err.clear();
}

void ServerToServerRun::buildStructure(std::int32_t index) {
  attempt([] { writeLog("Setting up metabase structure..."); });
  attempt([&] { oSite_ = getObject(frmMain.lstSiteIndexes.list(index)); });
  debugFailure("Failed to connect to the web site");
  const std::string number = std::to_string(iSiteNumber_);
  attempt([&] { copyTreeToServer(oSite_, number, number, names_); });
  removeDuplicates(frmMain.lstPropsToExport);
  debugFailure("Failed to remove duplicates ");
  readSchema();
  finishPropertyList();
}

// The older of the two versions decides, so that what it doesn't know is never sent.
void ServerToServerRun::readSchema() {
  const auto digitOf = [](const ListControl& versions) {
    return numberOf(std::string(lastCharacters(versions.text(), 1)));
  };
  const bool targetIsOlder =
      holdsOrFails([&] { return digitOf(frmMain.lstIMIISVer) > digitOf(frmMain.lstEXIISVer); });
  attempt([&] { sSchemaPath_ = bound(targetIsOlder ? oNewSite_ : oSite_).schema(); });
  oNewSite_.reset();
  debugFailure("Failed to set schema ");
  attempt([&] { oSchema_ = getObject(sSchemaPath_); });
  debugFailure("Failed to create schema object");
  attempt([&] { mandatory_ = bound(oSchema_).mandatoryProperties(); });
  debugFailure("Failed to retrieve mprops");
  addNames(mandatory_, "Error occured during enumeration of MProps ");
  attempt([&] { optional_ = bound(oSchema_).optionalProperties(); });
  attempt([] { debugLogIfErr("Failed to set OProps"); });
  addNames(optional_, "Error occured during enumeration of OProps");
}

// A debug run tells each name, and later how many there are with those that stand twice.
void ServerToServerRun::addNames(const NameList& names, const char* failure) {
  if (run.bDebug) {
    addNamesAndTell(names);
  } else {
    names_.add(names);
  }
  debugFailure(failure);
}

void ServerToServerRun::addNamesAndTell(const NameList& names) {
  const Exclusions exclusions;
  for (const std::string& name : names) {
    if (exclusions.hold(name)) continue;
    attempt([&] { writeLog("Adding " + name + " to the list"); });
    attempt([&] { frmMain.lstPropsToExport.addItem(name); });
  }
}

void ServerToServerRun::finishPropertyList() {
  const auto countLessOne = [] { return std::to_string(frmMain.lstPropsToExport.listCount() - 1); };
  report("Building property transfer list");
  attempt([&] { debugLog(countLessOne() + " properties to export before remdupes"); });
  removeDuplicates(frmMain.lstPropsToExport);
  debugFailure("Error occured while removing duplicates ");
  attempt([] { frmMain.lstPropsToExport.refresh(); });
  reportAndLog("Transferring properties...");
  attempt([] { platform().events->doEvents(); });
  attempt([&] { debugLog(countLessOne() + " properties to export"); });
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstPropsToExport.listCount() - 1); });
  attempt([] { frmMain.ProgressBar1.setValue(0); });
}

void ServerToServerRun::transferProperties(std::int32_t index) {
  const std::int32_t last = frmMain.lstPropsToExport.listCount() - 1;
  for (std::int32_t i = 0; i <= last; ++i) {
    const std::string name = frmMain.lstPropsToExport.list(i);
    if (trimmed(name).empty()) continue;
    transferProperty(index, name);
    attempt([&] { frmMain.ProgressBar1.setValue(i); });
  }
}

void ServerToServerRun::transferProperty(std::int32_t index, const std::string& name) {
  if (run.bDebug) attempt([&] { writeLog("Propname = " + name); });
  Err.clear();
  if (!attempt([&] { paths_ = bound(oSite_).getDataPaths(name, Value()); })) {
    attempt([] { debugLog("Error during getdatapaths " + errText()); });
  }
  for (const std::string& path : paths_) transferPath(index, name, path);
}

void ServerToServerRun::transferPath(std::int32_t index, const std::string& name, const std::string& path) {
  const std::string relative = relativeToSite(path);
  const std::string source = frmMain.lstSiteIndexes.list(index) + relative;
  if (run.bDebug) attempt([&] { writeLog("Reading " + source); });
  attempt([&] { oSource_ = getObject(source); });
  const bool isSkipped = holdsOrFails([&] {
    const std::string className = bound(oSource_).className();
    return run.bSkipFilters &&
           (equalsIgnoringCase(className, "IISFILTERS") || equalsIgnoringCase(className, "IISFILTER"));
  });
  if (isSkipped) {
    attempt([] { debugLog("Skipping IIsFilters"); });
  } else {
    // A node that isn't there leaves the one before bound: the value lands on that one, and the line below
    // tells it.
    attempt([&] { oTarget_ = getObject(targetSitePath(iSiteNumber_) + relative); });
    putValue(name);
  }
  if (!Err.isSet()) return;
  attempt([&] {
    writeLog("Error transfering Property " + name + "Error " + errText() + " " + hexOf(Err.number));
  });
  Err.clear();
}

void ServerToServerRun::put(const std::string& name, const Value& value) {
  bound(oTarget_).put(name, value);
}

// A value that can't be read is left alone; the commit runs all the same.
void ServerToServerRun::putValue(const std::string& name) {
  Value value;
  if (attempt([&] { value = bound(oSource_).get(name); })) {
    if (equalsIgnoringCase(name, "ScriptMaps")) {
      putScriptMaps(name, value);
    } else {
      attempt([&] { put(name, rewritten(value)); });
    }
  }
  attempt([&] { bound(oTarget_).setInfo(); });
}

// Servers up to IIS 4 list the verbs that are shut out, later ones those that are let in.
void ServerToServerRun::putScriptMaps(const std::string& name, const Value& value) {
  const double import = run.dblIMIISVer;
  const double target = run.dblEXIISVer;
  const bool isSame = import == target;
  if (!isSame && import != 4.0 && import != 5.0) return;  // from IIS 6 downwards nothing is put
  if (value.varType() != kVarList) {
    if (isSame || import == 5.0) attempt([&] { put(name, value); });
    return;
  }
  const bool swaps = !isSame && (import == 4.0 || target == 4.0);
  // The swap ends in a find and replace of its own; the second one is meant.
  const auto swapped = [](const Value& entry) {
    return applyFindReplace(swapScriptMapVerbs(entry.toText()));
  };
  attempt([&] { put(name, swaps ? rewrittenList(value, swapped) : rewritten(value)); });
}

void ServerToServerRun::transferBindings() {
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount()); });
  attempt([&] { frmMain.ProgressBar1.setValue(iSiteNumber_ - 1.0); });
  attempt([] { showLastLine(); });
  attempt([&] { oTarget_ = getObject(targetSitePath(iSiteNumber_)); });
  attempt([] { writeLog("Transferring IP addresses..."); });
  if (frmMain.lstNewIPs(0).listCount() > 0) {
    report("Setting New IP addresses");
    putBindings(oTarget_, frmMain.lstNewIPs(0), "ServerBindings", bindingCounter_);
    if (Err.isSet()) {
      attempt([] { writeLog("Error setting IP'sError " + errText() + " " + hexOf(Err.number)); });
      Err.clear();
    }
  }
  attempt([] { writeLog("Transferring SSL IP addresses..."); });
  if (frmMain.lstNewSSLIPs(0).listCount() > 0) {
    report("Setting New SSL IP addresses");
    putBindings(oTarget_, frmMain.lstNewSSLIPs(0), "SecureBindings", bindingCounter_);
    if (Err.isSet()) {
      // Without blanks, and without the hexadecimal number: this line differs from the one above.
      attempt([] { writeLog("Error setting SSL IP's" + errorAndCause()); });
      Err.clear();
    }
  }
}

}  // namespace

void exportToServerFromServer() {
  if (acceptAbortClick(frmMain.cmdExportServer)) return;
  ServerToServerRun exportRun;
  if (anySiteSelected() && targetServerNamed()) {
    showExportWarnings();
    if (leaveWhenCancelled()) return;
    suggestSystemDirectory();
    if (leaveWhenCancelled()) return;
    beginRun(frmMain.cmdExportServer, "Exporting to server from server");
    const End end = exportRun.exportSelection();
    if (end == End::kAborted) endAbortedRun();
    if (end != End::kNormal) return;
  }
  endRun(exportRun.nextNumber());
}

}  // namespace trelvin
