#include "transfer/export_from_database.h"

#include <functional>
#include <string>

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "transfer/export_frame.h"
#include "transfer/site_rebuild.h"
#include "transfer/target_server.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// What one run keeps from site to site. A statement that fails leaves its variable as it was.
class DatabaseToServerRun {
 public:
  // False when the run is to end without a word.
  bool exportSelection();
  // The progress bar ends on the number that the next site would have got.
  [[nodiscard]] std::int16_t nextNumber() const { return iSiteNumber_; }

 private:
  bool exportSite(std::int32_t index);
  bool takeOriginalNumber(std::int32_t index);
  void beginSite(std::int32_t index);
  void removeSite();
  void createSite(std::int32_t index);
  static void openRows(std::int32_t index);
  void finishRows();
  void stampRoot();
  void setBindings(const char* what, const ListControl& list, const char* property);

  std::int16_t siteCounter_ = 1;
  std::int16_t iSiteNumber_ = 0;
  NodeHandle oSite_;
  NodeHandle oNewSite_;
  SiteRebuild rebuild_;
};

RecordSet& rows() {
  return bound(frmMain.rsData);
}

bool rowsAreEmpty() {
  return rows().bof() && rows().eof();
}

// The reason of a failure is told here, before the routine clears it: all that follows from it would only say
// that the set is closed.
void openStored(const std::function<std::string()>& statement) {
  buildAndOpenDataRows(statement);
  if (!rows().isOpen()) tellUnreadableRows();
}

void addAndLog(const std::string& text) {
  attempt([&] { addOutput(text); });
  attempt([&] { writeLog(text); });
}

bool DatabaseToServerRun::exportSelection() {
  if (!beginAtTarget(iSiteNumber_)) return false;
  const std::int32_t last = frmMain.lstSites.listCount() - 1;
  for (std::int32_t index = 0; index <= last; ++index) {
    attempt([] { platform().events->doEvents(); });
    if (leaveWhenCancelled()) return false;
    if (!holdsOrFails([&] { return frmMain.lstSites.selected(index); })) continue;
    if (!exportSite(index)) return false;
    leaveSite(iSiteNumber_, siteCounter_);
  }
  return true;
}

bool DatabaseToServerRun::exportSite(std::int32_t index) {
  if (frmMain.optOverwritePreserve.value() && !takeOriginalNumber(index)) return false;
  attempt([] { writeLog(textOf(frmMain.optOverwritePreserve.value())); });
  beginSite(index);
  removeSite();
  createSite(index);
  openRows(index);
  if (!rebuild_.writeRows(iSiteNumber_)) {
    putButtonsBack();
    return false;
  }
  finishRows();
  attempt([&] { rebuild_.target() = getObject(targetSitePath(iSiteNumber_)); });
  setBindings("IP", frmMain.lstNewIPs(0), "ServerBindings");
  setBindings("SSL IP", frmMain.lstNewSSLIPs(0), "SecureBindings");
  stampRoot();
  startSite(iSiteNumber_);
  return true;
}

// A stored site without a row that could tell its number ends the run: any number would be a guess, and the
// site that stands there would be deleted. A row whose text is no number leaves the number as it was.
bool DatabaseToServerRun::takeOriginalNumber(std::int32_t index) {
  attempt([] { writeLog("Overwrite"); });
  const std::string& storedSite = frmMain.lstSiteIndexes.list(index);
  openStored([&] { return statements::siteNodeRows(storedSite); });
  if (holdsOrFails(rowsAreEmpty)) {
    const std::string text = "Could not retreive a W3SVCNumber for the web site with DB ID " + storedSite;
    attempt([&] { writeLog(text); });
    if (!run.bRunSilent) attempt([&] { platform().dialogs->showMessage({.text = text}); });
    attempt([] { rows().close(); });
    putButtonsBack();
    return false;
  }
  attempt([&] { iSiteNumber_ = rows().field("LocalPath").toInteger(); });
  attempt([] { rows().close(); });
  return true;
}

// A site without a root gets no mark: its own node, which is bound until now, must not get it instead.
void DatabaseToServerRun::stampRoot() {
  NodeHandle root;
  stampSite(root, iSiteNumber_);
  if (root) rebuild_.target() = root;
}

void DatabaseToServerRun::beginSite(std::int32_t index) {
  std::int16_t site = frmMain.iCurrentSite;
  attempt([&] { site = integerOf(index); });
  loadSiteLists(site);
  attempt([&] { setStatus(siteStatus(siteCounter_, index)); });
  frmMain.iCurrentSite = site;
}

void DatabaseToServerRun::removeSite() {
  const std::string site = frmMain.sService + std::to_string(iSiteNumber_);
  addAndLog("Checking to see if " + site + " exists..");
  Err.clear();
  attempt([&] { oSite_ = getObject(targetSitePath(iSiteNumber_)); });
  if (!Err.isSet()) {
    addAndLog("Deleteing existing web " + site);
    attempt([&] { oSite_ = getObject(targetServicePath()); });
    attempt([&] { bound(oSite_).deleteChild(classWord("Server"), std::to_string(iSiteNumber_)); });
  }
  Err.clear();
}

void DatabaseToServerRun::createSite(std::int32_t index) {
  addAndLog("Creating Web Site " + frmMain.sService + std::to_string(iSiteNumber_));
  attempt([&] { addOutput(frmMain.lstSites.list(index)); });
  Err.clear();
  attempt([&] { oSite_ = getObject(targetServicePath()); });
  attempt([&] { oNewSite_ = bound(oSite_).create(classWord("Server"), std::to_string(iSiteNumber_)); });
  attempt([&] { bound(oNewSite_).setInfo(); });
  if (Err.isSet()) {
    attempt([&] {
      writeLog("Error creating web site " + classWord("Server") + std::to_string(iSiteNumber_) + " " +
               errorAndCause());
    });
  }
  Err.clear();
  attempt([] { reportProgress("Transferring properties..."); });
  attempt([] { writeLog("Transferring Properties..."); });
  Err.clear();
}

void DatabaseToServerRun::openRows(std::int32_t index) {
  openStored([&] { return statements::siteRows(frmMain.lstSiteIndexes.list(index)); });
  Err.clear();
  if (holdsOrFails([] { return !rowsAreEmpty(); })) attempt([] { rows().moveFirst(); });
  attempt([] { frmMain.ProgressBar1.setMax(rows().recordCount()); });
  attempt([] { frmMain.ProgressBar1.setValue(0); });
}

void DatabaseToServerRun::finishRows() {
  attempt([] { rows().close(); });
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount()); });
  attempt([&] { frmMain.ProgressBar1.setValue(iSiteNumber_); });
  attempt([] { showLastLine(); });
}

// Without new bindings those stand that the rows wrote.
void DatabaseToServerRun::setBindings(const char* what, const ListControl& list, const char* property) {
  const std::string kind = what;
  attempt([&] { writeLog("Setting New " + kind + " Addresses..."); });
  if (list.listCount() == 0) return;
  attempt([&] { reportProgress("Setting New " + kind + " addresses"); });
  Value counter;
  putBindings(rebuild_.target(), list, property, counter);
  if (Err.isSet()) attempt([&] { writeLog("Error setting " + kind + "'s" + errorAndCause()); });
  Err.clear();
}

}  // namespace

void exportToServerFromFile() {
  if (holdsOrFails([] { return acceptAbortClick(frmMain.cmdExportServer); })) return;
  DatabaseToServerRun exportRun;
  bool isReady = false;
  attempt([&] { isReady = anySiteSelected() && targetServerNamed(); });
  if (isReady) {
    attempt([] { showExportWarnings(); });
    if (leaveWhenCancelled()) return;
    attempt([] { suggestSystemDirectory(); });
    if (leaveWhenCancelled()) return;
    attempt([] { giveUpDataRows(); });
    attempt([] { beginRun(frmMain.cmdExportServer, "Exporting to server from file"); });
    Err.clear();
    if (!exportRun.exportSelection()) return;
  }
  endRun(exportRun.nextNumber());
}

}  // namespace trelvin
