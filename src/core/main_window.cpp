#include "core/main_window.h"

#include <algorithm>
#include <array>

#include "core/err.h"
#include "core/registry_strings.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "jobs/run_backup.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "stores/statements.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"
#include "window/frm_splash.h"
#include "window/switching.h"
#include "window/wiring.h"

namespace trelvin {

namespace {

constexpr std::int32_t kWindowWidth = 11040;
constexpr std::int32_t kWindowHeight = 7500;

void refuseSecondInstance() {
  if (!platform().application->prevInstance()) return;
  // bRunSilent is set later only, so that a job's start is stopped by the box too.
  if (!run.bRunSilent) {
    platform().dialogs->showMessage({.text = "This program is already running!", .icon = Icon::kExclamation});
  }
  writeLog("The user attempted to run the program while another copy was still running");
  platform().application->end(0);
}

void setDefault(bool& flag, CheckBox& box, bool value) {
  flag = value;
  box.setValue(value);
}

void setDefaultPreferences() {
  setDefault(run.bCopyFiles, frmMain.chkCopyFiles, false);
  setDefault(run.bCopyIIS, frmMain.chkCopyIIS, true);
  setDefault(run.bRunSilent, frmMain.chkRunSilent, false);
  setDefault(run.bStartWebs, frmMain.chkStartWebs, false);
  setDefault(run.bFastPerms, frmMain.chkFastPermissions, false);
  setDefault(run.bSetFilePerms, frmMain.chkSetFilePerms, false);
  frmMain.chkFastPermissions.enabled = false;
  frmMain.chkSetFilePerms.enabled = false;
}

void setDefaultVersions() {
  run.dblIMIISVer = 4;
  run.dblEXIISVer = 4;
  frmMain.lstIMIISVer.setListIndex(0);
  frmMain.lstEXIISVer.setListIndex(0);
}

void setDefaultJob() {
  if (trimmed(run.sBackupJob).empty()) run.sBackupJob = platform().application->path() + "\\Backup.job";
  debugLog("Backup job name " + run.sBackupJob);
}

void openDatabases() {
  createStores();
  frmMain.sDataConnection = dataConnectionString();
  frmMain.sSettingsConnection = settingsConnectionString();
  debugLog("Data Connection String = " + frmMain.sDataConnection);
  debugLog("Settings Connection String = " + frmMain.sSettingsConnection);
  openSettingsDatabase();
  openDataDatabase(frmMain.sDataConnection);
}

void setDefaultSource() {
  frmMain.sImportType = "Server";
  RefreshForm();
  frmMain.iSiteCount = 0;
  frmMain.sExportSiteType = "Web";
  frmMain.sService = "W3SVC";
  frmMain.optExportFTP.setValue(false);
  frmMain.optExportWeb.setValue(true);
}

void loadExclusions() {
  frmMain.sSql = statements::excludedParameters();
  debugLog(frmMain.sSql);
  RecordSet& rows = bound(frmMain.rsData);
  rows.open(frmMain.sSql, bound(frmMain.DBSettings), kStaticCursor);
  for (; !rows.eof(); rows.moveNext()) {
    const Value name = rows.field("PName");
    if (!name.isNull()) frmMain.lstExclude.addItem(name.toText());
  }
  rows.close();
}

void openForUse() {
  EnableOptions();
  setStatus("Ready");
  frmMain.TabImportType.select(1);
  frmMain.TabExportType.select(1);
  frmMain.optExportServer.setValue(true);
  frmMain.optExportFile.setValue(false);
}

// The controls of the machine that stand on the form from the beginning.
void placeControls() {
  if (platform().sockets) frmMain.wsck1.place(*platform().sockets);
  if (!platform().createNtfsControl) return;
  frmMain.NTFSCtl1.object = platform().createNtfsControl();
  frmMain.NTFSCtl2.object = platform().createNtfsControl();
}

std::array<Form*, 4> allForms() {
  return {&frmSplash, &frmMain, &frmPermProgress, &frmDatabaseSelect};
}

// The connections die with the form.
void dropStores() {
  frmMain.rsSettings.reset();
  frmMain.rsData.reset();
  frmMain.DBSettings.reset();
  frmMain.DBData.reset();
}

}  // namespace

void frmMain_Load() {
  writeLog("Loading...");
  refuseSecondInstance();
  DisableOptions();
  run.sProxyServer = readProgramValue("ProxyServer");
  setDefaultPreferences();
  setDefaultVersions();
  run.asHttpVerbs = {"GET", "POST", "HEAD", "TRACE", "PUT", "DELETE", "OPTIONS"};
  setDefaultJob();
  openDatabases();
  setDefaultSource();
  loadExclusions();
  frmMain.setSize(kWindowWidth, kWindowHeight);
  openForUse();
  writeLog("Loading complete");
  if (run.bRunBackup) {
    writeLog("Running backup job");
    RunBackup();
  }
}

void showMainWindow() {
  if (!frmMain.loaded) {
    wireMainWindow();
    placeControls();
    frmMain.loaded = true;
    frmMain_Load();
  }
  if (frmMain.loaded) frmMain.visible = true;
}

void frmMain_Resize() {
  handled("frmMain_Resize Error ", [] {
    // The bottom right corner, over the status bar.
    frmMain.ProgressBar1.left = frmMain.width - 2940;
    frmMain.ProgressBar1.top = frmMain.height - 856;
  });
}

void frmMain_Unload() {
  handled("frmMain_Unload Error ", [] {
    writeLog("Closing...");
    if (frmMain.wsck1.state() != kSocketClosed) frmMain.wsck1.close();
    for (Form* form : allForms()) {
      form->loaded = false;
      form->visible = false;
    }
    dropStores();
    writeLog("Closing complete");
  });
}

void unloadForm(Form& form) {
  if (!form.loaded) return;
  if (&form == &frmMain) {
    frmMain_Unload();
    dropStores();  // also when the unload failed on its way: the form goes all the same
  }
  form.loaded = false;
  form.visible = false;
}

bool anyFormLoaded() {
  const auto forms = allForms();
  return std::any_of(forms.begin(), forms.end(), [](const Form* form) { return form->loaded; });
}

void endWithRunTimeError(const Failure& failure) {
  platform().dialogs->showMessage(
      {.text = "Run-time error '" + std::to_string(failure.number()) + "':\r\n\r\n" + failure.description(),
       .icon = Icon::kExclamation});
  platform().application->end(1);
}

void mnuExit_Click() {
  handled("frmMain_mnuExit Error ", [] {
    for (Form* form : allForms()) unloadForm(*form);
  });
}

void timExit_Timer() {
  mnuExit_Click();
}

}  // namespace trelvin
