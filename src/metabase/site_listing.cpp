#include "metabase/site_listing.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/mapping_display.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

void enableExportButtons(bool enabled) {
  frmMain.cmdExportFile.enabled = enabled;
  frmMain.cmdExportServer.enabled = enabled;
}

// Both buttons come back on however a listing ends.
struct ExportButtonsOff {
  ExportButtonsOff() { enableExportButtons(false); }
  ExportButtonsOff(const ExportButtonsOff&) = delete;
  ExportButtonsOff& operator=(const ExportButtonsOff&) = delete;
  ~ExportButtonsOff() { enableExportButtons(true); }
};

void clearSiteLists() {
  frmMain.lstSites.clear();
  frmMain.lstSiteIndexes.clear();
}

// Both take the way in which the routine logs, since it says what becomes of a failure to do so.
template <typename LogActivity>
void beginListing(const std::string& activity, LogActivity&& logActivity) {
  setStatus(activity);
  logActivity(activity);
  enableExportButtons(false);
  clearSiteLists();
}

template <typename LogDone>
void endListing(LogDone&& logDone) {
  setStatus("Ready");
  logDone("Done");
  enableExportButtons(true);
}

void closeFormerListing() {
  if (frmMain.iSiteCount > 0) CloseDownLists();
}

void growDetailsRead(std::int16_t n) {
  frmMain.abDetailsRead.resize(static_cast<std::size_t>(n) + 1);
  frmMain.abDetailsRead.back() = false;
}

// Counters are 16 bits wide, as everything that counts sites is.
void countOn(std::int16_t& counter) {
  counter = integerOf(counter + 1.0);
}

void reportBindFailure() {
  const std::string cause = std::to_string(Err.number) + " " + hexOf(Err.number) + " " + Err.description;
  attempt([&] { tellUser("Error - " + cause); });
  attempt([&] { writeLog("frmMain_populateFromServer Error AL " + cause); });
}

void reportNoProvider() {
  attempt([] {
    tellUser("Sorry, could not connect to that server. Ensure you can see it on the local network.");
  });
  attempt([] { writeLog("Import server not found while trying to list sites"); });
}

// Binds the service node of the import server; null when it can't be reached, which has been reported then.
NodeHandle bindImportService() {
  const std::string server = frmMain.txtImportServer.text;
  NodeHandle service;
  warmUpProvider();
  attempt([&] { service = getObject(servicePath(server, frmMain.sService)); });
  if (Err.number == error_number::kCannotCreateObject) {
    reportNoProvider();
    return nullptr;
  }
  if (Err.number == error_number::kMetabasePathNotFound) {
    // Some servers know the service by its lower-case name only.
    Err.clear();
    attempt([&] { service = getObject(servicePath(server, lowerCase(frmMain.sService))); });
  }
  if (Err.isSet()) {
    reportBindFailure();
    return nullptr;
  }
  return service;
}

void forgetFormerListing() {
  attempt([] { closeFormerListing(); });
  frmMain.iSiteCount = 0;
  buildAndExecuteOnSettings(statements::clearSettings);
  buildAndExecuteOnSettings(statements::clearFilesToCopy);
  frmMain.abDetailsRead.assign(1, false);
}

void listChild(const NodeHandle& child, std::int16_t& n) {
  attempt([] { platform().events->doEvents(); });
  attempt([&] { debugLog("Found " + child->className() + " - " + std::to_string(n)); });
  if (!holdsOrFails([&] { return isClass(child->className(), "Server"); })) return;
  attempt([&] { debugLog("Adding " + child->className() + " - " + std::to_string(n)); });
  attempt([&] {
    if (run.bDebug) writeLog(child->get("ServerComment").toText());
  });
  attempt([&] { growDetailsRead(n); });
  attempt([&] { frmMain.lstSiteIndexes.addItem(child->adsPath()); });
  attempt([&] { frmMain.lstSites.addItem(child->get("ServerComment").toText()); });
  attempt([] { frmMain.lstSites.refresh(); });
  // The first site isn't tested.
  if (n > 0 && Err.isSet()) {
    attempt([] { writeLog("Error during populateFromServer " + errTextWithDash()); });
    Err.clear();
  }
  attempt([] { countOn(frmMain.iSiteCount); });
  attempt([&] { countOn(n); });
}

void listSitesOf(const NodeHandle& service) {
  std::int16_t n = 0;
  attempt([&] { bound(service).forEachChild([&](const NodeHandle& child) { listChild(child, n); }); });
}

}  // namespace

void cmdPopulate_Click() {
  const ExportButtonsOff off;
  if (frmMain.sImportType == "Server") populateFromServer();
  if (frmMain.sImportType == "Database") populateFromDatabase();
}

void populateFromServer() {
  beginListing("Getting list of web sites from host...", writeLog);
  if (frmMain.txtImportServer.text.empty()) {
    tellUser("You must enter a server to import from first!");
    endListing(writeLog);
    return;
  }
  const NodeHandle service = bindImportService();
  if (!service) return;  // the status panel stays as it is
  forgetFormerListing();
  listSitesOf(service);
  endListing([](const char* done) { attempt([&] { writeLog(done); }); });
}

namespace {

constexpr const char* kDatabaseListingLabel = "frmMain_populateFromDatabase Error ";

// One statement of the database listing: its handler logs and goes on.
template <typename Statement>
void step(Statement&& statement) {
  resumed(kDatabaseListingLabel, std::forward<Statement>(statement));
}

void logStep(const std::string& message) {
  step([&] { writeLog(message); });
}

void logMarker(const char* marker) {
  if (run.bDebug && Err.isSet()) logStep(marker);
}

std::string storedSiteLine(RecordSet& rows) {
  const Value moment = rows.field("DateTime");
  const Value name = rows.field("SiteName");
  std::string line = (name.isNull() ? "" : name.toText()) + " ";
  if (moment.varType() != kVarDate) return line + moment.toText();
  return line + platform().clock->shortDate(moment.date()) + " " + platform().clock->shortTime(moment.date());
}

void listStoredSites(RecordSet& rows) {
  std::int16_t n = 0;
  while (!rows.eof()) {
    step([&] { growDetailsRead(n); });
    step([&] { frmMain.lstSiteIndexes.addItem(rows.field("ID").toText()); });
    step([&] { frmMain.lstSites.addItem(storedSiteLine(rows)); });
    step([] { frmMain.lstSites.refresh(); });
    step([] { countOn(frmMain.iSiteCount); });
    step([&] { countOn(n); });
    if (!attempt([&] { rows.moveNext(); })) {
      // A set that can't move on would be read for ever.
      logFailure(kDatabaseListingLabel, Failure(Err.number, Err.description));
      return;
    }
    logMarker("during loop");
  }
}

}  // namespace

void populateFromDatabase() {
  beginListing("Getting list of web sites from database...", logStep);
  step([] { giveUpDataRows(); });
  step([] { openDataRows(statements::sitesOfType(frmMain.sExportSiteType)); });
  logMarker("After initial");
  step([] { closeFormerListing(); });
  frmMain.iSiteCount = 0;
  bool isEmpty = true;
  step([&] { isEmpty = bound(frmMain.rsData).bof() && bound(frmMain.rsData).eof(); });
  if (isEmpty) {
    step([] { tellUserAndLog("No sites were found in the database"); });
    step([] { bound(frmMain.rsData).close(); });
    return;  // the buttons stay off until cmdPopulate_Click turns them on
  }
  step([] { bound(frmMain.rsData).moveFirst(); });
  logMarker("After movefirst");
  // Only this table: a stored site has no content, and tmpFilesToCopy is not looked at.
  step([] { executeOnSettings(statements::clearSettings()); });
  frmMain.abDetailsRead.resize(1);
  step([] { listStoredSites(bound(frmMain.rsData)); });
  step([] { bound(frmMain.rsData).close(); });
  if (Err.isSet()) logStep("at end");
  step([] { platform().events->beep(); });
  endListing(logStep);
}

}  // namespace trelvin
