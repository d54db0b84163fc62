#include "window/frm_main.h"

namespace trelvin {

namespace {

// The lists that lose entries by a key take a selection of several, as the list of sites does.
constexpr auto kMultiple = ListControl::Selection::kMultiple;
constexpr auto kSingle = ListControl::Selection::kSingle;

std::vector<TabStrip::Tab> mappingTabs() {
  return {{"&Directories",
           "If the paths for your sites directories are in a different location on the target server, change "
           "them here"},
          {"&IP Addresses",
           "If the IP address for the target server is going to be different to that of the sites current "
           "address, "
           "change it here"},
          {"&SSL IP Addresses",
           "If the SSL IP address for the target server is going to be different to that of the sites "
           "current address, "
           "change it here"},
          {"&Find && Replace", "Find and Replace IP addresses or directory paths"}};
}

void fillVersions(ListControl& list) {
  for (const char* version : {"IIS4", "IIS5", "IIS6"}) list.addItem(version);
}

}  // namespace

FrmMain::FrmMain()
    : fraImportType(*this, "fraImportType", "Import from :", "Select the location to import sites from"),
      TabImportType(*this, "TabImportType",
                    {{"An IIS Server", "Import sites from an IIS server"},
                     {"Database", "Import sites from the database"}}),
      txtImportServer(*this, "txtImportServer", "",
                      "Type the machine name, host name or IP address of the import server"),
      lstIMIISVer(*this, "lstIMIISVer"),
      cmdPopulate(*this, "cmdPopulate", "List Sites"),
      Frame4(*this, "Frame4", "Type of site", "Select the type of site you want to export"),
      optExportWeb(*this, "optExportWeb", "Web", "Click this option if you want to export web sites"),
      optExportFTP(*this, "optExportFTP", "FTP", "Click this option if you want to export ftp sites"),
      Frame1(*this, "Frame1", "Available Sites", "Below are the available sites for export"),
      lstSites(*this, "lstSites", kMultiple, "This is the list of sites available for export"),
      lstSiteIndexes(*this, "lstSiteIndexes"),
      fraExportSettings(*this, "fraExportSettings",
                        "Export to :", "Choose where you want to export your site to"),
      TabExportType(*this, "TabExportType",
                    {{"Another IIS Server", "Export your sites to another IIS server"},
                     {"Database", "Export your sites to a database"}}),
      optExportServer(*this, "optExportServer"),
      optExportFile(*this, "optExportFile"),
      fraExportServer(*this, "fraExportServer", "Export to another IIS Server"),
      lblExportServer(*this, "lblExportServer", "Export Server"),
      txtExportServer(*this, "txtExportServer"),
      lstEXIISVer(*this, "lstEXIISVer"),
      optCreateWebs(*this, "optCreateWebs", "Create as new webs"),
      optOverwriteWebs(*this, "optOverwriteWebs", "Overwrite existing webs"),
      optOverwritePreserve(*this, "optOverwritePreserve", "Overwrite - Preserve Numbers"),
      cmdExportServer(*this, "cmdExportServer", "Export"),
      fraExportFile(*this, "fraExportFile", "Export to Database"),
      lblExportFile(*this, "lblExportFile",
                    "The site will be exported to the TrelvinData.mdb file for later use."),
      cmdExportFile(*this, "cmdExportFile", "Export"),
      fraPreferences(*this, "fraPreferences", "Preferences"),
      lblExportOnly(*this, "lblExportOnly", "Export only options"),
      chkCopyFiles(*this, "chkCopyFiles", "Replicate Files"),
      chkSetFilePerms(*this, "chkSetFilePerms", "Replicate File Permissions"),
      chkFastPermissions(*this, "chkFastPermissions", "Fast File permissions"),
      chkCopyIIS(*this, "chkCopyIIS", "Replicate IIS configuration"),
      chkRunSilent(*this, "chkRunSilent", "Run silently"),
      chkStartWebs(*this, "chkStartWebs", "Auto Start Sites"),
      fraNewValues(*this, "fraNewValues", "New Values",
                   "Some settings may need to be changed before transferring to another server"),
      tabNewValues(*this, "tabNewValues", mappingTabs()),
      fraFolders(*this, "fraFolders", "Old Folder"),
      lstFolders(*this, "lstFolders"),
      fraNewDirectory(*this, "fraNewDirectory", "New Directories"),
      lstDirectories(*this, "lstDirectories"),
      fraOldIPs(*this, "fraOldIPs", "Old IP Addresses"),
      lstOldIPs(*this, "lstOldIPs"),
      fraNewIPs(*this, "fraNewIPs", "New IP Addresses"),
      lstNewIPs(*this, "lstNewIPs", kMultiple),
      cmdAddIP(*this, "cmdAddIP", "Add"),
      fraOldSSLIPs(*this, "fraOldSSLIPs", "Old SSL IP Addresses"),
      lstOldSSLIPs(*this, "lstOldSSLIPs"),
      fraNewSSLIPs(*this, "fraNewSSLIPs", "New SSL IP Addresses"),
      lstNewSSLIPs(*this, "lstNewSSLIPs", kMultiple),
      cmdAddSSLIP(*this, "cmdAddSSLIP", "Add"),
      fraOldxValues(*this, "fraOldxValues", "Old Values"),
      lstOldValues(*this, "lstOldValues", kMultiple),
      fraNewxValues(*this, "fraNewxValues", "New Values"),
      lstNewValues(*this, "lstNewValues", kMultiple),
      cmdAddNewValue(*this, "cmdAddNewValue", "Add"),
      fraExclude(*this, "fraExclude", "Properties to Exclude"),
      lstExclude(*this, "lstExclude", kMultiple),
      lblAddExclusion(*this, "lblAddExclusion", "Additional Exclusions"),
      txtAddExclusion(*this, "txtAddExclusion", "", "Type in parameters to exclude and press add"),
      cmdAddExclusion(*this, "cmdAddExclusion", "Add", "Press this button to add your own exclusions"),
      lstPropsToExport(*this, "lstPropsToExport"),
      lblOutput(*this, "lblOutput", "Output"),
      lstOutput(*this, "lstOutput", kSingle, "Watch this space for status reports"),
      StatusBar1(*this, "StatusBar1"),
      ProgressBar1(*this, "ProgressBar1"),
      lstFilesToCopy(*this, "lstFilesToCopy"),
      lstCheckCopy(*this, "lstCheckCopy"),
      timExit(*this, "timExit", 1000),
      syncPermTimer(*this, "syncPermTimer", 1000),
      timAd1(*this, "timAd1", 1000),
      wsck1(*this, "wsck1"),
      NTFSCtl1(*this, "NTFSCtl1"),
      NTFSCtl2(*this, "NTFSCtl2"),
      mnuFile(*this, "mnuFile", "&File"),
      mnuSaveBackup(*this, "mnuSaveBackup", "&Save Backup Job"),
      mnuLoadBackup(*this, "mnuLoadBackup", "&Load Backup Job"),
      mnuDBLoc(*this, "mnuDBLoc", "Choose &Database Location"),
      mnuChkUpdates(*this, "mnuChkUpdates", "Check for &Update"),
      mnuExit(*this, "mnuExit", "E&xit"),
      mnuTools(*this, "mnuTools", "&Tools"),
      mnuCheckMetabase(*this, "mnuCheckMetabase", "&Check source metabase"),
      mnuFixMetabase(*this, "mnuFixMetabase", "&Fix source metabase"),
      mnuProxyServer(*this, "mnuProxyServer", "&Proxy Server"),
      mnuHelp(*this, "mnuHelp", "&Help"),
      mnuAbout(*this, "mnuAbout", "&About"),
      mnuDocumentation(*this, "mnuDocumentation", "&Documentation"),
      mnuHomePage(*this, "mnuHomePage", "&Home Page"),
      mnuCredits(*this, "mnuCredits", "Contributors") {
  caption = "Trelvin Utility";
  txtImportServer.text = "Localhost";
  fillVersions(lstIMIISVer);
  fillVersions(lstEXIISVer);
  lstPropsToExport.sorted = true;

  OptionButton::group({&optExportWeb, &optExportFTP});
  OptionButton::group({&optExportServer, &optExportFile});
  OptionButton::group({&optCreateWebs, &optOverwriteWebs, &optOverwritePreserve});
  // The one creation mode that deletes nothing on the target is the one to start with.
  optCreateWebs.setValue(true);

  for (Control* hidden :
       std::initializer_list<Control*>{&lstSiteIndexes, &optExportServer, &optExportFile, &fraExportFile,
                                       &lstPropsToExport, &lstFilesToCopy(0), &lstCheckCopy(0), &timExit,
                                       &syncPermTimer, &timAd1, &wsck1, &NTFSCtl1, &NTFSCtl2}) {
    hidden->visible = false;
  }
  // The mapping opens on its first tab, the directories.
  for (Control* behindOtherTabs : std::initializer_list<Control*>{
           &fraOldIPs, &lstOldIPs(0), &fraNewIPs, &lstNewIPs(0), &cmdAddIP, &fraOldSSLIPs, &lstOldSSLIPs(0),
           &fraNewSSLIPs, &lstNewSSLIPs(0), &cmdAddSSLIP, &fraOldxValues, &lstOldValues, &fraNewxValues,
           &lstNewValues, &cmdAddNewValue}) {
    behindOtherTabs->visible = false;
  }
}

void FrmMain::setSize(std::int32_t newWidth, std::int32_t newHeight) {
  if (newWidth == width && newHeight == height) return;
  width = newWidth;
  height = newHeight;
  if (onResize) onResize();
}

}  // namespace trelvin
