#include "window/wiring.h"

#include "client/shell_commands.h"
#include "client/update_check.h"
#include "content/permissions.h"
#include "core/main_window.h"
#include "core/reporting.h"
#include "core/start_up.h"
#include "jobs/job_file.h"
#include "metabase/root_check.h"
#include "metabase/site_details.h"
#include "metabase/site_listing.h"
#include "stores/database_selection.h"
#include "transfer/export_frame.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"
#include "window/help_menu.h"
#include "window/mapping_editing.h"
#include "window/preferences.h"

namespace trelvin {

namespace {

void wireMappingEditing() {
  frmMain.cmdAddExclusion.onClick = cmdAddExclusion_Click;
  frmMain.cmdAddNewValue.onClick = cmdAddNewValue_Click;
  frmMain.cmdAddIP.onClick = cmdAddIP_Click;
  frmMain.cmdAddSSLIP.onClick = cmdAddSSLIP_Click;
  frmMain.lstDirectories(0).onDblClick = lstDirectories_DblClick;
  frmMain.lstNewIPs(0).onDblClick = lstNewIPs_DblClick;
  frmMain.lstNewSSLIPs(0).onDblClick = lstNewSSLIPs_DblClick;
  frmMain.lstExclude.onKeyPress = lstExclude_KeyPress;
  frmMain.lstExclude.onKeyUp = lstExclude_KeyUp;
  frmMain.lstOldValues.onKeyPress = lstOldValues_KeyPress;
  frmMain.lstOldValues.onKeyUp = lstOldValues_KeyUp;
  frmMain.lstNewValues.onKeyPress = lstNewValues_KeyPress;
  frmMain.lstNewValues.onKeyUp = lstNewValues_KeyUp;
  frmMain.lstNewIPs(0).onKeyPress = lstNewIPs_KeyPress;
  frmMain.lstNewIPs(0).onKeyUp = lstNewIPs_KeyUp;
  frmMain.lstNewSSLIPs(0).onKeyPress = lstNewSSLIPs_KeyPress;
  frmMain.lstNewSSLIPs(0).onKeyUp = lstNewSSLIPs_KeyUp;
}

}  // namespace

void wireMainWindow() {
  frmMain.chkCopyFiles.onClick = chkCopyFiles_Click;
  frmMain.chkSetFilePerms.onClick = chkSetFilePerms_Click;
  frmMain.chkFastPermissions.onClick = chkFastPermissions_Click;
  frmMain.chkCopyIIS.onClick = chkCopyIIS_Click;
  frmMain.chkRunSilent.onClick = chkRunSilent_Click;
  frmMain.chkStartWebs.onClick = chkStartWebs_Click;
  frmMain.lstIMIISVer.onClick = lstIMIISVer_Click;
  frmMain.lstEXIISVer.onClick = lstEXIISVer_Click;
  frmMain.lstIMIISVer.onKeyUp = lstIMIISVer_KeyUp;
  frmMain.lstEXIISVer.onKeyUp = lstEXIISVer_KeyUp;
  frmMain.optExportWeb.onClick = optExportWeb_Click;
  frmMain.optExportFTP.onClick = optExportFTP_Click;
  frmMain.optCreateWebs.onClick = optCreateWebs_Click;
  frmMain.optOverwriteWebs.onClick = optOverwriteWebs_Click;
  frmMain.optExportServer.onClick = optExportServer_Click;
  frmMain.optExportFile.onClick = optExportFile_Click;
  frmMain.TabImportType.onClick = TabImportType_Click;
  frmMain.TabExportType.onClick = TabExportType_Click;
  frmMain.tabNewValues.onClick = tabNewValues_Click;
  wireMappingEditing();
  frmMain.cmdPopulate.onClick = cmdPopulate_Click;
  frmMain.lstSites.onClick = lstSites_Click;
  frmMain.lstOutput.onDblClick = lstOutput_DblClick;
  frmMain.cmdExportFile.onClick = cmdExportFile_Click;
  frmMain.cmdExportServer.onClick = cmdExportServer_Click;
  frmMain.mnuSaveBackup.onClick = mnuSaveBackup_Click;
  frmMain.mnuLoadBackup.onClick = mnuLoadBackup_Click;
  frmMain.mnuDBLoc.onClick = mnuDBLoc_Click;
  frmMain.mnuChkUpdates.onClick = mnuChkUpdates_Click;
  frmMain.mnuExit.onClick = mnuExit_Click;
  frmMain.mnuCheckMetabase.onClick = mnuCheckMetabase_Click;
  frmMain.mnuFixMetabase.onClick = mnuFixMetabase_Click;
  frmMain.mnuProxyServer.onClick = mnuProxyServer_Click;
  frmMain.mnuAbout.onClick = mnuAbout_Click;
  frmMain.mnuDocumentation.onClick = mnuDocumentation_Click;
  frmMain.mnuHomePage.onClick = mnuHomePage_Click;
  frmMain.mnuCredits.onClick = mnuCredits_Click;
  frmMain.wsck1.onConnect = wsck1_Connect;
  frmMain.wsck1.onDataArrival = wsck1_DataArrival;
  frmMain.wsck1.onClose = wsck1_Close;
  frmMain.wsck1.onError = wsck1_Error;
  frmMain.timExit.onTimer = timExit_Timer;
  frmMain.syncPermTimer.onTimer = syncPermTimer_Timer;
  frmMain.onResize = frmMain_Resize;
}

void wireWelcomeForm() {
  frmSplash.cmdContinue.onClick = cmdContinue_Click;
  frmSplash.cmdExit.onClick = cmdExit_Click;
}

void wireDatabaseSelect() {
  frmDatabaseSelect.cmdSave.onClick = frmDatabaseSelect_cmdSave_Click;
}

}  // namespace trelvin
