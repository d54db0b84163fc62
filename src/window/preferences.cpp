#include "window/preferences.h"

#include "core/err.h"
#include "core/run_state.h"
#include "metabase/mapping_display.h"
#include "window/frm_main.h"
#include "window/switching.h"

namespace trelvin {

namespace {

constexpr std::int32_t kServerTab = 1;
constexpr std::int32_t kDatabaseTab = 2;

double versionOf(const std::string& word) {
  if (word == "IIS6") return 6;
  if (word == "IIS5") return 5;
  return 4;
}

void clearListing() {
  frmMain.lstSites.clear();
  frmMain.lstSiteIndexes.clear();
  if (frmMain.iSiteCount > 0) CloseDownLists();
}

void switchOffContent() {
  for (CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkFastPermissions, &frmMain.chkSetFilePerms}) {
    box->enabled = false;
    box->setValue(false);
  }
  run.bCopyFiles = false;
  run.bFastPerms = false;
  run.bSetFilePerms = false;
}

void chooseServerImport() {
  frmMain.txtImportServer.visible = true;
  frmMain.sImportType = "Server";
  if (frmMain.TabExportType.tabCount() == 1) {
    addDatabaseExportTab();
    TabExportType_Click();
  }
  if (frmMain.optExportFile.value()) {
    switchOffContent();
  } else {
    frmMain.chkCopyFiles.enabled = true;
    frmMain.chkSetFilePerms.enabled = run.bCopyFiles;
    frmMain.chkFastPermissions.enabled = run.bSetFilePerms;
  }
  frmMain.chkCopyIIS.enabled = true;
}

// With a database as source the export tab for a database is gone, so that no run goes from one into the
// other.
void chooseDatabaseImport() {
  frmMain.txtImportServer.visible = false;
  frmMain.sImportType = "Database";
  frmMain.TabExportType.select(kServerTab);
  if (frmMain.TabExportType.tabCount() == 2) frmMain.TabExportType.remove(kDatabaseTab);
  TabExportType_Click();
  switchOffContent();
}

}  // namespace

void chkCopyFiles_Click() {
  run.bCopyFiles = frmMain.chkCopyFiles.value();
  frmMain.chkSetFilePerms.enabled = run.bCopyFiles;
  frmMain.chkFastPermissions.enabled = run.bCopyFiles && run.bSetFilePerms;
}

void chkSetFilePerms_Click() {
  run.bSetFilePerms = frmMain.chkSetFilePerms.value();
  frmMain.chkFastPermissions.enabled = run.bSetFilePerms;
}

void chkFastPermissions_Click() {
  run.bFastPerms = frmMain.chkFastPermissions.value();
}
void chkCopyIIS_Click() {
  run.bCopyIIS = frmMain.chkCopyIIS.value();
}
void chkRunSilent_Click() {
  run.bRunSilent = frmMain.chkRunSilent.value();
}
void chkStartWebs_Click() {
  run.bStartWebs = frmMain.chkStartWebs.value();
}

void lstIMIISVer_Click() {
  run.dblIMIISVer = versionOf(frmMain.lstIMIISVer.text());
}
void lstEXIISVer_Click() {
  run.dblEXIISVer = versionOf(frmMain.lstEXIISVer.text());
}

void lstIMIISVer_KeyUp(std::int32_t /*keyCode*/) {
  lstIMIISVer_Click();
}
void lstEXIISVer_KeyUp(std::int32_t /*keyCode*/) {
  lstEXIISVer_Click();
}

void optExportWeb_Click() {
  handled("frmMain_optExportWeb Error ", [] {
    frmMain.sExportSiteType = "Web";
    frmMain.sService = "W3SVC";
    frmMain.optExportFTP.setValue(false);
    frmMain.optExportWeb.setValue(true);
    clearListing();
  });
}

void optExportFTP_Click() {
  handled("frmMain_optExportFTP Error ", [] {
    frmMain.sExportSiteType = "Ftp";
    frmMain.sService = "MSFTPSVC";
    frmMain.optExportWeb.setValue(false);
    frmMain.optExportFTP.setValue(true);
    clearListing();
  });
}

void optCreateWebs_Click() {
  frmMain.optCreateWebs.setValue(true);
  frmMain.optOverwriteWebs.setValue(false);
}

void optOverwriteWebs_Click() {
  frmMain.optOverwriteWebs.setValue(true);
  frmMain.optCreateWebs.setValue(false);
}

void optExportServer_Click() {
  handled("frmMain_optExportServer Error ", [] {
    frmMain.optExportServer.setValue(true);
    frmMain.optExportFile.setValue(false);
    RefreshForm();
  });
}

void optExportFile_Click() {
  frmMain.optExportFile.setValue(true);
  frmMain.optExportServer.setValue(false);
  RefreshForm();
}

void addDatabaseExportTab() {
  frmMain.TabExportType.add(kDatabaseTab, {"Database", "Export your sites to a database"});
}

void TabExportType_Click() {
  handled("frmMain_TabExportType Error ", [] {
    if (frmMain.TabExportType.selectedTab() == kServerTab) {
      optExportServer_Click();
      frmMain.fraExportServer.visible = true;
      frmMain.fraExportFile.visible = false;
    } else {
      optExportFile_Click();
      frmMain.fraExportServer.visible = false;
      frmMain.fraExportFile.visible = true;
      // A database stores the form of the source.
      frmMain.lstEXIISVer.setListIndex(frmMain.lstIMIISVer.listIndex());
    }
  });
}

void TabImportType_Click() {
  handled("frmMain_TabImportType Error ", [] {
    if (frmMain.TabImportType.selectedTab() == kServerTab) {
      chooseServerImport();
    } else {
      chooseDatabaseImport();
    }
    clearListing();
  });
}

void tabNewValues_Click() {
  handled("frmMain_tabNewValues Error ", [] {
    const std::int32_t tab = frmMain.tabNewValues.selectedTab();
    if (frmMain.lstSites.selCount() > 0) {
      displayMapping(static_cast<std::int16_t>(frmMain.lstSites.listIndex()));
    } else {
      HideLists();
    }
    constexpr std::int32_t kFindAndReplaceTab = 4;
    displayNewValues(tab == kFindAndReplaceTab);
  });
}

}  // namespace trelvin
