#include "jobs/job_file.h"

#include <optional>

#include "core/err.h"
#include "core/ini_settings.h"
#include "core/run_state.h"
#include "core/value.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// One record serves both menu entries, so that the chooser of a file to load bears the title of saving too.
FileChoice choiceOfJob() {
  return {.title = "Save Backup Job",
          .filters = {{"All Files", "*.*"}, {"Backup Jobs", "*.job"}},
          .filterIndex = 2,
          .path = run.sBackupJob,
          .defaultExtension = "job",
          .flags = chooser_flag::kExplorer | chooser_flag::kLongNames | chooser_flag::kHideReadOnly |
                   chooser_flag::kOverwritePrompt};
}

// The chosen path comes in a buffer that a NUL ends.
void takeJob(const std::string& chosen) {
  run.sBackupJob = chosen.substr(0, chosen.find('\0'));
}

void saveDetail(const char* key, const std::string& value) {
  saveIniSetting(kJobDetails, key, value);
}

std::string creationMode() {
  if (frmMain.optOverwriteWebs.value()) return "Overwrite";
  if (frmMain.optOverwritePreserve.value()) return "Overwrite Preserve";
  return "Create New";
}

void saveDetails() {
  const bool fromServer = frmMain.sImportType == "Server";
  const bool toServer = frmMain.optExportServer.value();
  saveDetail("Sites", std::to_string(frmMain.lstSites.selCount()));
  saveDetail("ImportServer", fromServer ? frmMain.txtImportServer.text : "Database");
  saveDetail("ExportServer", toServer ? frmMain.txtExportServer.text : "Database");
  saveDetail("ImportVersion", frmMain.lstIMIISVer.text());
  saveDetail("ExportVersion", frmMain.lstEXIISVer.text());
  saveDetail("Type", frmMain.sService);
  saveDetail("AutoStartSites", textOf(run.bStartWebs));
  saveDetail("SiteCreationMode", creationMode());
  saveDetail("FindReplaceCount", std::to_string(frmMain.lstNewValues.listCount()));
}

void savePairs() {
  for (std::int32_t n = 0; n < frmMain.lstNewValues.listCount(); ++n) {
    saveIniSetting(pairSection(n), "Find", frmMain.lstOldValues.list(n));
    saveIniSetting(pairSection(n), "Replace", frmMain.lstNewValues.list(n));
  }
}

// A site is saved by its identifier, not by the name that the window shows: the name may change. Returns
// whether all sites are selected.
bool saveSites() {
  bool all = true;
  std::int32_t number = 0;
  for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) {
    if (frmMain.lstSites.selected(i)) {
      saveIniSetting(siteSection(++number), "SiteName", frmMain.lstSiteIndexes.list(i));
    } else {
      all = false;
    }
  }
  return all;
}

bool wantsFutureSites() {
  return platform().dialogs->showMessage(
             {.text = "You have selected all sites. Would you like any sites you add to this server to be "
                      "automatically backed up?",
              .buttons = Buttons::kYesNo,
              .title = "Add future sites to the backup too?"}) == Answer::kYes;
}

}  // namespace

std::string pairSection(std::int32_t number) {
  return std::to_string(number) + "FindReplace";
}

std::string siteSection(std::int32_t number) {
  return std::to_string(number) + "Site";
}

void mnuSaveBackup_Click() {
  handled("frmMain mnuSaveBackup_Click Error ", [] {
    const std::optional<std::string> chosen = platform().dialogs->chooseFileToSave(choiceOfJob());
    if (!chosen) return;
    takeJob(*chosen);
    if (frmMain.lstSites.selCount() == 0) {
      platform().dialogs->showMessage({.text = "Please select site(s) to back up"});
      return;
    }
    if (platform().files->fileExists(run.sBackupJob)) platform().files->deleteFile(run.sBackupJob);
    saveDetails();
    savePairs();
    const bool all = saveSites();
    saveDetail("BackupAllSites", textOf(all && wantsFutureSites()));
  });
}

void mnuLoadBackup_Click() {
  handled("frmMain mnuLoadBackup_Click Error ", [] {
    const std::optional<std::string> chosen = platform().dialogs->chooseFileToOpen(choiceOfJob());
    if (chosen) takeJob(*chosen);
  });
}

}  // namespace trelvin
