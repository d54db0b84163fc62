#include <string>

#include "core/err.h"
#include "core/helpers.h"
#include "core/ini_settings.h"
#include "core/registry_strings.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "jobs/job_file.h"
#include "jobs/run_backup.h"
#include "metabase/site_listing.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "window/frm_main.h"
#include "window/preferences.h"

namespace trelvin {

namespace {

constexpr std::int32_t kServerTab = 1;
constexpr std::int32_t kDatabaseTab = 2;

std::string jobDetail(const char* key) {
  return returnIniSetting(kJobDetails, key);
}

bool jobDetailIs(const char* key, const char* upperCaseWord) {
  return upperCase(jobDetail(key)) == upperCaseWord;
}

bool wantsDatabaseOfItsOwn() {
  return trimmed(readProgramValue("ODBCDSN")).empty() && trimmed(run.sCmdConnection).empty() &&
         run.bRunBackup && jobDetailIs("ExportServer", "DATABASE");
}

// Year, month and day, "-", hour and minute: two runs in one minute share a file, and the later one replaces
// it.
std::string perRunPath(const std::string& folder) {
  const std::tm now = platform().clock->now().parts;
  return folder + "\\BackupJobs\\" + std::to_string(now.tm_year + 1900) + padTwoDigits(now.tm_mon + 1) +
         padTwoDigits(now.tm_mday) + "-" + padTwoDigits(now.tm_hour) + padTwoDigits(now.tm_min) + ".mdb";
}

void copyTemplate(const std::string& folder, const std::string& perRun) {
  debugLog("Copying " + folder + "\\ForBackups.mdb to " + perRun);
  platform().files->copyFile(folder + "\\ForBackups.mdb", perRun);
  debugLog("Copied");
  // A read-only template must not give a read-only database.
  debugLog("Removing attributes");
  platform().files->setAttributes(perRun, 0);
}

// Makes a dated copy of the template and opens it as the data database. False when there is no template.
bool openDatabaseOfTheRun() {
  const std::string folder = platform().application->path();
  debugLog("Past registry settings");
  debugLog("Looking for file " + folder + "\\ForBackups.mdb");
  if (!platform().files->fileExists(folder + "\\ForBackups.mdb")) {
    writeLog(folder + "\\ForBackups.mdb could not be found. Backup job failed.");
    return false;
  }
  if (!platform().files->folderExists(folder + "\\BackupJobs")) {
    debugLog("Creating BackupJobs directory");
    platform().files->createFolder(folder + "\\BackupJobs");
  }
  debugLog("Copying forbackups");
  const std::string perRun = perRunPath(folder);
  copyTemplate(folder, perRun);
  frmMain.sDataConnection = fileConnectionString(perRun);
  bound(frmMain.DBData).close();
  debugLog("Opening Data database " + frmMain.sDataConnection);
  bound(frmMain.DBData).open(frmMain.sDataConnection);
  return true;
}

// A job moves configuration only, whatever was set when it was saved.
void forcePreferences() {
  run.bCopyFiles = false;
  run.bCopyIIS = true;
  run.bFastPerms = true;
  run.bStartWebs = false;
  frmMain.chkCopyFiles.setValue(false);
  frmMain.chkCopyIIS.setValue(true);
  frmMain.chkFastPermissions.setValue(true);
}

void setImport() {
  debugLog("Reading more settings");
  if (jobDetailIs("ImportServer", "DATABASE")) {
    frmMain.TabImportType.select(kDatabaseTab);
    frmMain.sImportType = "Database";
    return;
  }
  debugLog("About to setup server settings");
  frmMain.TabImportType.select(kServerTab);
  frmMain.sImportType = "Server";
  debugLog("Getting import server");
  frmMain.txtImportServer.text = jobDetail("ImportServer");
}

void setAutoStart() {
  const bool start = jobDetailIs("AutoStartSites", "TRUE");
  run.bStartWebs = start;
  frmMain.chkStartWebs.setValue(start);
}

void setSiteKind() {
  debugLog("setting types");
  if (frmMain.sService == "W3SVC") {
    frmMain.sExportSiteType = "Web";
    frmMain.optExportFTP.setValue(false);
    frmMain.optExportWeb.setValue(true);
  } else {
    // The option's click puts the words right that a misspelt type left behind.
    frmMain.sExportSiteType = "FTP";
    frmMain.optExportFTP.setValue(true);
    frmMain.optExportWeb.setValue(false);
  }
}

void setCreationMode() {
  debugLog("creation mode");
  const std::string mode = upperCase(jobDetail("SiteCreationMode"));
  const bool overwrite = mode == "OVERWRITE";
  const bool preserve = mode == "OVERWRITE PRESERVE";
  frmMain.optOverwriteWebs.setValue(overwrite);
  frmMain.optOverwritePreserve.setValue(preserve);
  frmMain.optCreateWebs.setValue(!overwrite && !preserve);
}

void setFindAndReplace() {
  debugLog("Find and replace");
  frmMain.lstOldValues.clear();
  frmMain.lstNewValues.clear();
  const std::int16_t count = integerOf(jobDetail("FindReplaceCount"));
  for (std::int32_t n = 0; n < count; ++n) {
    const std::string section = pairSection(n);
    frmMain.lstOldValues.addItem(returnIniSetting(section, "Find"));
    frmMain.lstNewValues.addItem(returnIniSetting(section, "Replace"));
  }
}

void setExport() {
  debugLog("export server");
  if (jobDetailIs("ExportServer", "DATABASE")) {
    // The choice of import may have taken the tab away.
    if (frmMain.TabExportType.tabCount() < 2) {
      addDatabaseExportTab();
      TabExportType_Click();
    }
    frmMain.TabExportType.select(kDatabaseTab);
    frmMain.optExportFile.setValue(true);
    frmMain.optExportServer.setValue(false);
    return;
  }
  frmMain.TabExportType.select(kServerTab);
  frmMain.txtExportServer.text = jobDetail("ExportServer");
  frmMain.optExportFile.setValue(false);
  frmMain.optExportServer.setValue(true);
}

// Without an equal entry the selection stays as it was.
void selectVersion(ListControl& list, const char* key) {
  for (std::int32_t i = 0; i < list.listCount(); ++i) {
    if (list.list(i) == jobDetail(key)) list.setListIndex(i);
  }
}

void setVersions() {
  debugLog("Setting IIS Versions");
  selectVersion(frmMain.lstIMIISVer, "ImportVersion");
  selectVersion(frmMain.lstEXIISVer, "ExportVersion");
}

void listSites() {
  debugLog("About to populate list of sites");
  cmdPopulate_Click();
  platform().events->doEvents();
  debugLog("Finished populating sites");
}

bool isWanted(std::int32_t numberInJob, const std::string& siteIndex) {
  const std::string name = returnIniSetting(siteSection(numberInJob), "SiteName");
  return name == siteIndex || jobDetailIs("BackupAllSites", "TRUE");
}

void selectSites() {
  const std::int32_t count = frmMain.lstSiteIndexes.listCount();
  for (std::int32_t i = 0; i < count; ++i) {
    const std::int16_t sitesOfJob = integerOf(jobDetail("Sites"));
    for (std::int32_t j = 1; j <= sitesOfJob; ++j) {
      if (isWanted(j, frmMain.lstSiteIndexes.list(i))) frmMain.lstSites.setSelected(i, true);
    }
  }
  platform().events->doEvents();
  debugLog("Finished selecting sites");
}

}  // namespace

void SelectSitesFromBackup() {
  handled("frmMain SelectSitesFromBackup Error ", [] {
    if (!platform().files->fileExists(run.sBackupJob)) {
      writeLog("Error - " + run.sBackupJob + " not found");
      return;
    }
    writeLog("Got file");
    if (wantsDatabaseOfItsOwn() && !openDatabaseOfTheRun()) return;
    forcePreferences();
    setImport();
    frmMain.sService = jobDetail("Type");
    debugLog(frmMain.sService);
    debugLog("auto start");
    setAutoStart();
    setSiteKind();
    setCreationMode();
    setFindAndReplace();
    setExport();
    setVersions();
    listSites();
    selectSites();
  });
}

}  // namespace trelvin
