#include "jobs/run_backup.h"

#include "core/err.h"
#include "core/main_window.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/platform.h"
#include "transfer/export_frame.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

void openDatabaseOfCommandLine() {
  if (trimmed(run.sCmdConnection).empty()) return;
  debugLog("Opening Data database " + run.sCmdConnection);
  bound(frmMain.DBData).close();
  bound(frmMain.DBData).open(run.sCmdConnection);
}

void pressExportButton() {
  writeLog("About to run");
  if (frmMain.optExportFile.value()) {
    writeLog("ExportFile");
    cmdExportFile_Click();
  } else {
    writeLog("ExportServer");
    cmdExportServer_Click();
  }
}

}  // namespace

void RunBackup() {
  handled("frmMain RunBackup Error ", [] {
    run.bRunSilent = true;
    frmMain.chkRunSilent.setValue(true);
    openDatabaseOfCommandLine();
    SelectSitesFromBackup();
    platform().events->doEvents();
    pressExportButton();
    unloadForm(frmMain);
  });
}

}  // namespace trelvin
