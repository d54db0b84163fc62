#include "metabase/site_details.h"

#include <functional>

#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/mapping_display.h"
#include "metabase/paths.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

const std::string& currentIndex() {
  return frmMain.lstSiteIndexes.list(frmMain.iCurrentSite);
}

void addDirectory(const NodeHandle& child, const Value& path) {
  Err.clear();
  const std::string& site = currentIndex();
  attempt([&] {
    debugLog("Detecting path - dirObj ADSPath = " + child->adsPath() + ", " + site + " - " +
             std::to_string(characterCount(site)));
  });
  std::string folder;
  attempt([&] { folder = behindCharacters(child->adsPath(), characterCount(site)); });
  buildAndExecuteOnSettings(
      [&] { return statements::addDirectoryRow(frmMain.iCurrentSite, frmMain.iRowIndex, folder, path); });
  ++frmMain.iRowIndex;
  if (Err.isSet()) attempt([] { debugLog("POP Err " + errTextWithDash()); });
  attempt([&] { frmMain.lstFilesToCopy(0).addItem(path.toText()); });
  attempt([] { frmMain.lstCheckCopy(0).addItem("True"); });
}

void reportUnreadablePath(const NodeHandle& child) {
  const std::string cause = errText();
  attempt([] {
    tellUser("Could not retreive directory information from IIS for this site - this export will fail");
  });
  attempt([&] { writeLog("Error during popdir " + cause + " " + child->adsPath()); });
}

void visitVirtualDirectory(const NodeHandle& child) {
  Err.clear();
  Value path;
  if (attempt([&] { path = child->get("Path"); })) {
    addDirectory(child, path);
  } else {
    reportUnreadablePath(child);
  }
}

// A directory that lies below another one of the site comes along with it. The test asks for a part of the
// text, not of the path, equal paths cancel each other, and one that is cancelled still cancels others.
void cancelCoveredDirectories() {
  const ListControl& files = frmMain.lstFilesToCopy(0);
  for (std::int32_t j = 0; j < files.listCount(); ++j) {
    if (files.list(j) == "False") continue;
    for (std::int32_t k = 0; k < files.listCount(); ++k) {
      if (k == j || trimmed(files.list(k)).empty()) continue;
      if (containsIgnoringCase(files.list(k), files.list(j))) frmMain.lstCheckCopy(0).setList(k, "False");
    }
  }
}

void storeFilesToCopy() {
  const ListControl& files = frmMain.lstFilesToCopy(0);
  for (std::int32_t j = 0; j < files.listCount(); ++j) {
    if (trimmed(files.list(j)).empty()) {
      writeLog("Error, a virtual directory was found without a path set");
      continue;
    }
    const std::string flag = textOf(Value(frmMain.lstCheckCopy(0).list(j)).toBoolean());
    executeOnSettings(statements::addFileToCopy(frmMain.iCurrentSite, j, files.list(j), flag));
  }
}

using AddRow = std::string (*)(std::int16_t, std::int32_t, const Value&);

void storeBindings(const NodeHandle& site, const char* property, AddRow addRow) {
  frmMain.iRowIndex = 0;
  Value bindings;
  // A site whose bindings can't be read has none to map.
  if (!attempt([&] { bindings = site->get(property); }) || bindings.varType() != kVarList) return;
  for (const Value& binding : bindings.list()) {
    executeOnSettings(addRow(frmMain.iCurrentSite, frmMain.iRowIndex, binding));
    ++frmMain.iRowIndex;
  }
}

void readSiteFromServer(std::int16_t i) {
  debugLog("Initialisting " + std::to_string(i) + " selected");
  NodeHandle site = getObject(frmMain.lstSiteIndexes.list(i));
  frmMain.lstFolders(0).clear();
  frmMain.lstDirectories(0).clear();
  frmMain.iRowIndex = 0;
  frmMain.lstFilesToCopy(0).clear();
  frmMain.lstCheckCopy(0).clear();
  populateDirectories(site);
  cancelCoveredDirectories();
  storeFilesToCopy();

  site = getObject(frmMain.lstSiteIndexes.list(i));
  frmMain.lstNewIPs(0).clear();
  frmMain.lstOldIPs(0).clear();
  storeBindings(site, "ServerBindings", statements::addBindingRow);
  frmMain.lstNewSSLIPs(0).clear();
  frmMain.lstOldSSLIPs(0).clear();
  frmMain.iRowIndex = 0;
  // FTP sites have no SSL bindings.
  if (frmMain.sExportSiteType != "Ftp") storeBindings(site, "SecureBindings", statements::addSslBindingRow);
}

// The rows of a set that is open, from the first on.
void forEachRow(const std::function<void(RecordSet&)>& visit) {
  RecordSet& rows = bound(frmMain.rsData);
  if (!(rows.bof() && rows.eof())) rows.moveFirst();
  for (; !rows.eof(); rows.moveNext()) visit(rows);
}

// Runs a statement that may fail, and says so in a debug line only.
void tryRow(std::string sql) {
  Err.clear();
  attempt([&] { executeOnSettings(std::move(sql)); });
  ++frmMain.iRowIndex;
  if (Err.isSet()) debugLog("POP Err " + errTextWithDash());
}

void storeBindingList(const std::string& list, AddRow addRow) {
  std::size_t begin = 0;
  for (std::size_t end = list.find("\r\n"); end != std::string::npos; end = list.find("\r\n", begin)) {
    tryRow(addRow(frmMain.iCurrentSite, frmMain.iRowIndex, list.substr(begin, end - begin)));
    begin = end + 2;
  }
}

// The bindings in the rows that are open.
void storeOpenBindings(const char* property, AddRow addRow) {
  frmMain.iRowIndex = 0;
  forEachRow([&](RecordSet& rows) {
    if (rows.field("Name").toText() != property) return;
    const Value list = rows.field("ObjectValue");
    storeBindingList(list.isNull() ? "" : list.toText(), addRow);
  });
  bound(frmMain.rsData).close();
}

void readSiteFromDatabase(std::int16_t i) {
  const std::string site = frmMain.lstSiteIndexes.list(i);
  setStatus("Retrieving current settings for web site");
  giveUpDataRows();
  openDataRows(statements::pathRows(site));
  frmMain.lstFolders(0).clear();
  frmMain.lstDirectories(0).clear();
  frmMain.iRowIndex = 0;
  forEachRow([](RecordSet& rows) {
    tryRow(statements::addDirectoryRow(frmMain.iCurrentSite, frmMain.iRowIndex, rows.field("Location"),
                                       rows.field("StringValue")));
  });
  bound(frmMain.rsData).close();
  openDataRows(statements::storedBindingRows(site, "ServerBindings"));
  for (ControlArray<ListControl>* list :
       {&frmMain.lstNewIPs, &frmMain.lstOldIPs, &frmMain.lstNewSSLIPs, &frmMain.lstOldSSLIPs}) {
    (*list)(0).clear();
  }
  storeOpenBindings("ServerBindings", statements::addStoredBindingRow);
  openDataRows(statements::storedBindingRows(site, "SecureBindings"));
  storeOpenBindings("SecureBindings", statements::addStoredSslBindingRow);
}

// A flag of abDetailsRead; fails with 9 for a line that no listing made.
std::vector<bool>::reference detailsRead(std::int16_t site) {
  const auto entry = static_cast<std::size_t>(site);
  if (entry >= frmMain.abDetailsRead.size()) throw Failure(error_number::kSubscriptOutOfRange);
  return frmMain.abDetailsRead[entry];
}

// Whether showing a line can't be noticed: it was shown before and had directories then, so that it has
// nothing to tell, and a later line takes the lists in the same breath. Without this a selection of n sites
// made one by one would read the tables n * n times. A debug log shows every statement, so there nothing is
// left out.
bool isShownInVain(std::int16_t site, std::int32_t lastSelected) {
  if (run.bDebug || site == lastSelected) return false;
  return static_cast<std::size_t>(site) < frmMain.abHadDirectories.size() &&
         frmMain.abHadDirectories[static_cast<std::size_t>(site)];
}

void showSite(std::int16_t site) {
  ShowList(site);
  if (frmMain.abHadDirectories.size() != frmMain.abDetailsRead.size()) {
    frmMain.abHadDirectories.resize(frmMain.abDetailsRead.size());
  }
  frmMain.abHadDirectories[static_cast<std::size_t>(site)] = frmMain.lstFolders(0).listCount() > 0;
}

std::int32_t lastSelectedLine() {
  std::int32_t last = frmMain.lstSites.listCount() - 1;
  while (last >= 0 && !frmMain.lstSites.selected(last)) --last;
  return last;
}

// Goes through the selected lines, reads those that were not read yet, and shows each in turn, so that the
// lists end up showing the last of them.
void readSelectedSites(void (*readSite)(std::int16_t)) {
  const std::int32_t last = lastSelectedLine();
  for (std::int32_t line = 0; line <= last; ++line) {
    if (!frmMain.lstSites.selected(line)) continue;
    const std::int16_t i = integerOf(line);
    if (frmMain.sImportType == "Server") debugLog("Site " + std::to_string(i) + " selected");
    frmMain.ProgressBar1.setValue(frmMain.ProgressBar1.value() + 1);
    frmMain.iCurrentSite = i;
    const bool wasRead = detailsRead(i);
    if (!wasRead) readSite(i);
    detailsRead(i) = true;
    if (!wasRead || !isShownInVain(i, last)) showSite(i);
  }
}

void startProgress() {
  setStatus("Retrieving current settings for selected web sites...");
  frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount());
  frmMain.ProgressBar1.setValue(0);
}

}  // namespace

void lstSites_Click() {
  if (frmMain.sImportType == "Server") getDetailsFromServer();
  if (frmMain.sImportType == "Database") getDetailsFromDatabase();
}

void getDetailsFromServer() {
  if (frmMain.lstSites.selCount() > 0) {
    startProgress();
    debugLog("Retrieving current settings for selected web sites... " +
             std::to_string(frmMain.lstSites.listCount()));
    frmMain.cmdExportServer.enabled = false;
    frmMain.cmdExportFile.enabled = false;
    readSelectedSites(readSiteFromServer);
    frmMain.cmdExportServer.enabled = true;
    frmMain.cmdExportFile.enabled = true;
    frmMain.ProgressBar1.setValue(0);
  }
  setStatus("Ready");
}

void getDetailsFromDatabase() {
  if (frmMain.lstSites.selCount() > 0) {
    startProgress();
    readSelectedSites(readSiteFromDatabase);
    frmMain.ProgressBar1.setValue(0);
  }
  setStatus("Ready");
}

void populateDirectories(const NodeHandle& parent) {
  attempt([&] {
    parent->forEachChild([](const NodeHandle& child) {
      Err.clear();
      if (holdsOrFails([&] { return isClass(child->className(), "VirtualDir"); }))
        visitVirtualDirectory(child);
      attempt([&] { populateDirectories(child); });
    });
  });
}

std::string getNewDir(const std::string& folder) {
  std::string directory;
  handled("frmMain_getNewDir Error ", [&] {
    debugLog("GetNewDir " + folder);
    const ListControl& folders = frmMain.lstFolders(0);
    for (std::int32_t i = 0; i < folders.listCount(); ++i) {
      if (folders.list(i) == folder) directory = frmMain.lstDirectories(0).list(i);
    }
  });
  return directory;
}

}  // namespace trelvin
