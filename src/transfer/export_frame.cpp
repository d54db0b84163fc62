#include "transfer/export_frame.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/mapping_display.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "transfer/export_from_database.h"
#include "transfer/export_to_server.h"
#include "window/frm_main.h"
#include "window/switching.h"

namespace trelvin {

namespace {

bool windowsFolderIsMapped() {
  const ListControl& oldValues = frmMain.lstOldValues;
  for (std::int32_t i = 0; i < oldValues.listCount(); ++i) {
    const std::string entry = upperCase(oldValues.list(i));
    if (entry == "WINNT" || entry == "C:\\WINNT") return true;
  }
  return false;
}

constexpr const char* kLongWarning =
    "You are about to export web sites, this may take a long time\r\n"
    "The program may appear to have locked up, but will\r\n"
    "probably just be busy. During this procedure you will\r\n"
    "not be able to use any of the other functions of this\r\n"
    "program. You can abort the process, but may have to\r\n"
    "wait until the program comes to a convenient place to\r\n"
    "stop. Please do not CTRL-ALT-DEL the program\r\n"
    "unless you are sure it has actually stopped responding.\r\n"
    "\r\n"
    "NOTE ON REPLICATING FILE PERMISSIONS\r\n"
    "This feature is very slow and is not the recommended\r\n"
    "way of replicating files with their NTFS permissions\r\n"
    "and is only included for convenience. Consult the\r\n"
    "documentation for better ways.";

void warnOfCorruptMetabase(const std::string& site) {
  const std::string warning =
      "WARNING - The site " + site + " has an incorrectly configured metabase on the source server. ";
  if (run.bRunSilent) {
    const std::string line =
        warning + "The export may fail to run on your target server. Silent mode on so export continues...";
    attempt([&] { addOutput(line); });
    attempt([&] { writeLog(line); });
    attempt([] { showLastLine(); });
    return;
  }
  Answer answer = Answer::kNo;
  attempt([&] {
    answer = platform().dialogs->showMessage({.text = warning +
                                                      "Proceeding with the export may damage your target "
                                                      "server. You should take a backup of the metabase "
                                                      "and then run the fix option from the tools menu of "
                                                      "Trelvin. \r\n\r\nDo you want to abort transfer?",
                                              .buttons = Buttons::kYesNo,
                                              .title = "WARNING - Corrupt source metabase detected"});
  });
  if (answer == Answer::kYes) run.bExportCancelled = true;
}

}  // namespace

bool acceptAbortClick(const Button& button) {
  if (button.caption != "Abort") return false;
  run.bExportCancelled = true;
  run.bCancelPerms = true;
  frmMain.cmdExportFile.caption = "Export";
  frmMain.cmdExportServer.caption = "Export";
  EnableOptions();
  return true;
}

bool anySiteSelected() {
  if (frmMain.lstSites.selCount() >= 1) return true;
  tellUser("Please select a site to export");
  return false;
}

void showExportWarnings() {
  if (run.bRunSilent) return;
  const Answer answer =
      platform().dialogs->showMessage({.text = kLongWarning, .buttons = Buttons::kOkCancel});
  run.bExportCancelled = answer == Answer::kCancel;
}

void putButtonsBack() {
  attempt([] { frmMain.cmdExportFile.caption = "Export"; });
  attempt([] { frmMain.cmdExportServer.caption = "Export"; });
  attempt([] { EnableOptions(); });
}

bool leaveWhenCancelled() {
  if (!run.bExportCancelled) return false;
  putButtonsBack();
  return true;
}

void suggestSystemDirectory() {
  if (run.dblEXIISVer != 6.0 || run.dblIMIISVer == run.dblEXIISVer) return;
  if (windowsFolderIsMapped() || run.bRunSilent) return;
  const Answer answer = platform().dialogs->showMessage(
      {.text = "Starting with Windows Server 2003, the default directory for WINNT is not Windows. We "
               "suggest you add "
               "this as a find and replace option, would you like to do that?",
       .buttons = Buttons::kYesNoCancel});
  run.bExportCancelled = answer == Answer::kCancel;
  if (answer == Answer::kYes) {
    frmMain.lstOldValues.addItem("WINNT");
    frmMain.lstNewValues.addItem("Windows");
  }
}

void beginRun(Button& button, const std::string& logLine) {
  run.bExportCancelled = false;
  run.bCancelPerms = false;
  button.caption = "Abort";
  frmMain.lstOutput.clear();
  frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount());
  frmMain.ProgressBar1.setValue(0);
  for (const char* line : {"Begining the export", "This may take some time", "This program may appear to ",
                           "have stopped responding", "Watch this list for", "progress reports"}) {
    addOutput(line);
  }
  showLastLine();
  writeLog(logLine);
  Err.clear();
}

std::string siteStatus(std::int16_t siteCounter, std::int32_t index) {
  return "Exporting site (" + std::to_string(siteCounter) + " of " +
         std::to_string(frmMain.lstSites.selCount()) + ") " + frmMain.lstSites.list(index) + "...";
}

void announceSite(std::int16_t siteCounter, std::int32_t index) {
  attempt([&] { setStatus(siteStatus(siteCounter, index)); });
  attempt([&] { writeLog(siteStatus(siteCounter, index)); });
}

void loadSiteLists(std::int16_t site) {
  attempt([&] { displayDirectories(true, site); });
  attempt([&] { displayIPs(true, site); });
  attempt([&] { displaySSLIPs(true, site); });
  attempt([&] { ShowList(site); });
  attempt([] { platform().events->doEvents(); });
}

void testForCorruptMetabase(const NodeHandle& site, const Value& counterInPlaceOfName) {
  NodeHandle root;
  attempt([&] { root = getObject(bound(site).adsPath() + "/Root"); });
  // A root that can't be read counts as a bad one; FTP sites are never tested.
  const bool isCorrupt = holdsOrFails([&] {
    return equalsIgnoringCase(frmMain.sService, "W3SVC") &&
           !equalsIgnoringCase(bound(root).get("KeyType").toText(), "IISWEBVIRTUALDIR");
  });
  if (isCorrupt) warnOfCorruptMetabase(counterInPlaceOfName.toText());
}

void closeSite(std::int16_t& siteCounter) {
  attempt([] { writeLog("Completed"); });
  attempt([&] { siteCounter = integerOf(siteCounter + 1.0); });
  attempt([] { platform().events->doEvents(); });
}

void endRun(double lastProgress) {
  putButtonsBack();
  attempt([] { setStatus("Ready"); });
  attempt([&] { frmMain.ProgressBar1.setValue(lastProgress); });
  attempt([] { platform().events->beep(); });
  if (!run.bRunSilent) attempt([] { platform().dialogs->showMessage({.text = "Done!"}); });
  attempt([] { addOutput("Done!"); });
  attempt([] { showLastLine(); });
}

void endAbortedRun() {
  putButtonsBack();
  attempt([] { addOutput("Transfer aborted"); });
  attempt([] { showLastLine(); });
}

void cmdExportServer_Click() {
  handled("frmMain_cmdExportServer_Click Error ", [] {
    frmMain.optExportServer.setValue(true);
    frmMain.optExportFile.setValue(false);
    // Read before the run, which lets a person change the choice meanwhile.
    const bool isDatabase = frmMain.sImportType == "Database";
    if (frmMain.sImportType == "Server") exportToServerFromServer();
    if (isDatabase) exportToServerFromFile();
  });
}

}  // namespace trelvin
