#include "window/switching.h"

#include "core/err.h"
#include "core/run_state.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

void switchOffAndClear(CheckBox& box, bool& flag) {
  box.enabled = false;
  box.setValue(false);
  flag = false;
}

void switchSettings(bool enabled) {
  for (Control* control : std::initializer_list<Control*>{
           &frmMain.chkStartWebs, &frmMain.chkCopyIIS, &frmMain.cmdAddExclusion, &frmMain.lstSites,
           &frmMain.txtAddExclusion, &frmMain.lstExclude, &frmMain.TabImportType, &frmMain.TabExportType,
           &frmMain.optCreateWebs, &frmMain.optOverwriteWebs, &frmMain.optExportWeb, &frmMain.optExportFTP,
           &frmMain.txtImportServer, &frmMain.txtExportServer, &frmMain.lstIMIISVer, &frmMain.lstEXIISVer,
           &frmMain.cmdPopulate}) {
    control->enabled = enabled;
  }
}

void refreshForServer() {
  frmMain.chkCopyFiles.enabled = true;
  frmMain.chkSetFilePerms.enabled = run.bCopyFiles;
  frmMain.chkFastPermissions.enabled = run.bSetFilePerms;
}

// A database takes the configuration only: no content, no permissions.
void refreshForFile() {
  switchOffAndClear(frmMain.chkCopyFiles, run.bCopyFiles);
  switchOffAndClear(frmMain.chkSetFilePerms, run.bSetFilePerms);
  switchOffAndClear(frmMain.chkFastPermissions, run.bFastPerms);
}

void refreshForNeither() {
  frmMain.chkCopyFiles.enabled = true;
  frmMain.chkSetFilePerms.enabled = true;
  frmMain.chkFastPermissions.enabled = run.bSetFilePerms;
}

}  // namespace

void RefreshForm() {
  handled("frmMain_RefreshForm Error ", [] {
    const bool toServer = frmMain.optExportServer.value();
    const bool toFile = !toServer && frmMain.optExportFile.value();
    frmMain.txtExportServer.enabled = toServer;
    frmMain.cmdExportServer.enabled = toServer;
    frmMain.cmdExportFile.enabled = toFile;
    frmMain.optOverwriteWebs.enabled = toServer;
    frmMain.optCreateWebs.enabled = toServer;
    frmMain.chkCopyIIS.enabled = true;
    if (toServer) {
      refreshForServer();
    } else if (toFile) {
      refreshForFile();
    } else {
      refreshForNeither();
    }
  });
}

void DisableOptions() {
  switchSettings(false);
  frmMain.chkCopyFiles.enabled = false;
  frmMain.chkSetFilePerms.enabled = false;
  frmMain.chkFastPermissions.enabled = false;
}

void EnableOptions() {
  switchSettings(true);
  if (!frmMain.optExportServer.value() || frmMain.sImportType != "Server") return;
  refreshForServer();
}

}  // namespace trelvin
