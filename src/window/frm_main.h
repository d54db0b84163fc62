// The main window: its controls, which are the program's data model, and the members that belong to the form.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/database.h"
#include "window/controls.h"

namespace trelvin {

class FrmMain : public Form {
 public:
  FrmMain();

  // Import.
  Frame fraImportType;
  TabStrip TabImportType;
  TextBox txtImportServer;
  ListControl lstIMIISVer;
  Button cmdPopulate;

  // Site type.
  Frame Frame4;
  OptionButton optExportWeb;
  OptionButton optExportFTP;

  // Sites; lstSiteIndexes runs parallel to lstSites.
  Frame Frame1;
  ListControl lstSites;
  ListControl lstSiteIndexes;

  // Export. The two hidden options hold the choice of TabExportType.
  Frame fraExportSettings;
  TabStrip TabExportType;
  OptionButton optExportServer;
  OptionButton optExportFile;
  Frame fraExportServer;
  Label lblExportServer;
  TextBox txtExportServer;
  ListControl lstEXIISVer;
  OptionButton optCreateWebs;
  OptionButton optOverwriteWebs;
  OptionButton optOverwritePreserve;
  Button cmdExportServer;
  Frame fraExportFile;
  Label lblExportFile;
  Button cmdExportFile;

  // Preferences.
  Frame fraPreferences;
  Label lblExportOnly;
  CheckBox chkCopyFiles;
  CheckBox chkSetFilePerms;
  CheckBox chkFastPermissions;
  CheckBox chkCopyIIS;
  CheckBox chkRunSilent;
  CheckBox chkStartWebs;

  // Mapping: what changes on a site's way. The per-site lists are views of tmpSettings.
  Frame fraNewValues;
  TabStrip tabNewValues;
  Frame fraFolders;
  ControlArray<ListControl> lstFolders;
  Frame fraNewDirectory;
  ControlArray<ListControl> lstDirectories;
  Frame fraOldIPs;
  ControlArray<ListControl> lstOldIPs;
  Frame fraNewIPs;
  ControlArray<ListControl> lstNewIPs;
  Button cmdAddIP;
  Frame fraOldSSLIPs;
  ControlArray<ListControl> lstOldSSLIPs;
  Frame fraNewSSLIPs;
  ControlArray<ListControl> lstNewSSLIPs;
  Button cmdAddSSLIP;
  Frame fraOldxValues;
  ListControl lstOldValues;
  Frame fraNewxValues;
  ListControl lstNewValues;
  Button cmdAddNewValue;

  // Exclusions, and the hidden sorted list of the properties that travel.
  Frame fraExclude;
  ListControl lstExclude;
  Label lblAddExclusion;
  TextBox txtAddExclusion;
  Button cmdAddExclusion;
  ListControl lstPropsToExport;

  // Reporting.
  Label lblOutput;
  ListControl lstOutput;
  StatusBar StatusBar1;
  ProgressBar ProgressBar1;

  // Hidden workers.
  ControlArray<ListControl> lstFilesToCopy;
  ControlArray<ListControl> lstCheckCopy;
  Timer timExit;
  Timer syncPermTimer;
  Timer timAd1;  // never switched on; a check for updates switches it off
  SocketControl wsck1;
  NtfsControlHost NTFSCtl1;  // of the source
  NtfsControlHost NTFSCtl2;  // of the target

  // Menus.
  MenuEntry mnuFile;
  MenuEntry mnuSaveBackup;
  MenuEntry mnuLoadBackup;
  MenuEntry mnuDBLoc;
  MenuEntry mnuChkUpdates;
  MenuEntry mnuExit;
  MenuEntry mnuTools;
  MenuEntry mnuCheckMetabase;
  MenuEntry mnuFixMetabase;
  MenuEntry mnuProxyServer;
  MenuEntry mnuHelp;
  MenuEntry mnuAbout;
  MenuEntry mnuDocumentation;
  MenuEntry mnuHomePage;
  MenuEntry mnuCredits;

  // Members of the form.
  std::string sImportType = "Server";   // source of the site list: "Server" or "Database"
  std::string sExportSiteType = "Web";  // kind of site: "Web" or "Ftp", set with sService
  std::string sService = "W3SVC";       // service node: "W3SVC" or "MSFTPSVC"
  std::unique_ptr<Connection> DBSettings;
  std::unique_ptr<RecordSet> rsSettings;
  std::unique_ptr<Connection> DBData;
  std::unique_ptr<RecordSet> rsData;
  std::string sSql;  // every statement is built here before it is run
  std::string sSettingsConnection;
  std::string sDataConnection;
  std::int16_t iSiteCount = 0;             // lines in lstSites
  std::int16_t iCurrentSite = 0;           // line of lstSites in hand; SiteID and ListNum of the tmp tables
  std::int32_t iRowIndex = 0;              // next ListIndex of the rows being written
  std::vector<bool> abDetailsRead{false};  // whether the details of a line are in the tmp tables
  std::vector<bool> abHadDirectories;  // whether a line showed directories when its details were last shown

  // The update check's conversation over wsck1.
  std::string sSocketState;      // what it is about: CheckUpdate, GetUpdate, DLUpdate, GetAdvert, ...
  std::string sReceived;         // all bytes that came since the last connect
  std::string sRedirect;         // address of the last redirect answer
  std::int32_t lDownloaded = 0;  // bytes received in the state DLUpdate

  std::int32_t windowState = 0;  // 0 normal, 1 minimized, 2 maximized
  // Size in twips; a change runs the resize.
  void setSize(std::int32_t newWidth, std::int32_t newHeight);
  std::int32_t width = 0;
  std::int32_t height = 0;
  Event onResize;
};

inline FrmMain frmMain;

// Puts a form back into the state in which it is made: what unloading does to it.
template <typename AnyForm>
void renew(AnyForm& form) {
  std::destroy_at(&form);
  std::construct_at(&form);
}

}  // namespace trelvin
