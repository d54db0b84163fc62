#include "window/frm_main.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace trelvin {
namespace {

class FrmMainTest : public ::testing::Test {
 protected:
  void SetUp() override { renew(frmMain); }
  void TearDown() override { renew(frmMain); }
};

TEST_F(FrmMainTest, HoldsEveryControlOnceUnderItsName) {
  const std::set<std::string> expected{"fraImportType",
                                       "TabImportType",
                                       "txtImportServer",
                                       "lstIMIISVer",
                                       "cmdPopulate",
                                       "Frame4",
                                       "optExportWeb",
                                       "optExportFTP",
                                       "Frame1",
                                       "lstSites",
                                       "lstSiteIndexes",
                                       "fraExportSettings",
                                       "TabExportType",
                                       "optExportServer",
                                       "optExportFile",
                                       "fraExportServer",
                                       "lblExportServer",
                                       "txtExportServer",
                                       "lstEXIISVer",
                                       "optCreateWebs",
                                       "optOverwriteWebs",
                                       "optOverwritePreserve",
                                       "cmdExportServer",
                                       "fraExportFile",
                                       "lblExportFile",
                                       "cmdExportFile",
                                       "fraPreferences",
                                       "lblExportOnly",
                                       "chkCopyFiles",
                                       "chkSetFilePerms",
                                       "chkFastPermissions",
                                       "chkCopyIIS",
                                       "chkRunSilent",
                                       "chkStartWebs",
                                       "fraNewValues",
                                       "tabNewValues",
                                       "fraFolders",
                                       "lstFolders",
                                       "fraNewDirectory",
                                       "lstDirectories",
                                       "fraOldIPs",
                                       "lstOldIPs",
                                       "fraNewIPs",
                                       "lstNewIPs",
                                       "cmdAddIP",
                                       "fraOldSSLIPs",
                                       "lstOldSSLIPs",
                                       "fraNewSSLIPs",
                                       "lstNewSSLIPs",
                                       "cmdAddSSLIP",
                                       "fraOldxValues",
                                       "lstOldValues",
                                       "fraNewxValues",
                                       "lstNewValues",
                                       "cmdAddNewValue",
                                       "fraExclude",
                                       "lstExclude",
                                       "lblAddExclusion",
                                       "txtAddExclusion",
                                       "cmdAddExclusion",
                                       "lstPropsToExport",
                                       "lblOutput",
                                       "lstOutput",
                                       "StatusBar1",
                                       "ProgressBar1",
                                       "lstFilesToCopy",
                                       "lstCheckCopy",
                                       "timExit",
                                       "syncPermTimer",
                                       "timAd1",
                                       "wsck1",
                                       "NTFSCtl1",
                                       "NTFSCtl2",
                                       "mnuFile",
                                       "mnuSaveBackup",
                                       "mnuLoadBackup",
                                       "mnuDBLoc",
                                       "mnuChkUpdates",
                                       "mnuExit",
                                       "mnuTools",
                                       "mnuCheckMetabase",
                                       "mnuFixMetabase",
                                       "mnuProxyServer",
                                       "mnuHelp",
                                       "mnuAbout",
                                       "mnuDocumentation",
                                       "mnuHomePage",
                                       "mnuCredits"};
  std::multiset<std::string> found;
  for (const Control* control : frmMain.controls()) found.insert(control->name);
  EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected);
  EXPECT_EQ(found.size(), expected.size());
}

TEST_F(FrmMainTest, CarriesTheCaptionsOfTheSystem) {
  const std::map<std::string, std::string> captions{
      {"fraImportType", "Import from :"},
      {"cmdPopulate", "List Sites"},
      {"Frame4", "Type of site"},
      {"Frame1", "Available Sites"},
      {"fraExportSettings", "Export to :"},
      {"fraExportServer", "Export to another IIS Server"},
      {"lblExportServer", "Export Server"},
      {"optCreateWebs", "Create as new webs"},
      {"optOverwriteWebs", "Overwrite existing webs"},
      {"optOverwritePreserve", "Overwrite - Preserve Numbers"},
      {"cmdExportServer", "Export"},
      {"fraExportFile", "Export to Database"},
      {"cmdExportFile", "Export"},
      {"lblExportFile", "The site will be exported to the TrelvinData.mdb file for later use."},
      {"fraPreferences", "Preferences"},
      {"chkCopyFiles", "Replicate Files"},
      {"chkSetFilePerms", "Replicate File Permissions"},
      {"chkFastPermissions", "Fast File permissions"},
      {"chkCopyIIS", "Replicate IIS configuration"},
      {"chkRunSilent", "Run silently"},
      {"chkStartWebs", "Auto Start Sites"},
      {"lblExportOnly", "Export only options"},
      {"fraNewValues", "New Values"},
      {"fraFolders", "Old Folder"},
      {"fraNewDirectory", "New Directories"},
      {"fraOldIPs", "Old IP Addresses"},
      {"fraNewIPs", "New IP Addresses"},
      {"fraOldSSLIPs", "Old SSL IP Addresses"},
      {"fraNewSSLIPs", "New SSL IP Addresses"},
      {"fraOldxValues", "Old Values"},
      {"fraNewxValues", "New Values"},
      {"fraExclude", "Properties to Exclude"},
      {"lblAddExclusion", "Additional Exclusions"},
      {"lblOutput", "Output"},
      {"mnuFile", "&File"},
      {"mnuSaveBackup", "&Save Backup Job"},
      {"mnuLoadBackup", "&Load Backup Job"},
      {"mnuDBLoc", "Choose &Database Location"},
      {"mnuChkUpdates", "Check for &Update"},
      {"mnuExit", "E&xit"},
      {"mnuTools", "&Tools"},
      {"mnuCheckMetabase", "&Check source metabase"},
      {"mnuFixMetabase", "&Fix source metabase"},
      {"mnuProxyServer", "&Proxy Server"},
      {"mnuHelp", "&Help"},
      {"mnuAbout", "&About"},
      {"mnuDocumentation", "&Documentation"},
      {"mnuHomePage", "&Home Page"},
      {"mnuCredits", "Contributors"}};
  for (const auto& [name, caption] : captions) {
    ASSERT_NE(frmMain.control(name), nullptr) << name;
    EXPECT_EQ(frmMain.control(name)->caption, caption) << name;
  }
  EXPECT_EQ(frmMain.caption, "Trelvin Utility");
}

TEST_F(FrmMainTest, CarriesTheTooltipsOfTheSystem) {
  const std::map<std::string, std::string> tooltips{
      {"fraImportType", "Select the location to import sites from"},
      {"txtImportServer", "Type the machine name, host name or IP address of the import server"},
      {"Frame4", "Select the type of site you want to export"},
      {"optExportWeb", "Click this option if you want to export web sites"},
      {"optExportFTP", "Click this option if you want to export ftp sites"},
      {"Frame1", "Below are the available sites for export"},
      {"lstSites", "This is the list of sites available for export"},
      {"fraExportSettings", "Choose where you want to export your site to"},
      {"fraNewValues", "Some settings may need to be changed before transferring to another server"},
      {"txtAddExclusion", "Type in parameters to exclude and press add"},
      {"cmdAddExclusion", "Press this button to add your own exclusions"},
      {"lstOutput", "Watch this space for status reports"}};
  for (const auto& [name, tooltip] : tooltips) {
    ASSERT_NE(frmMain.control(name), nullptr) << name;
    EXPECT_EQ(frmMain.control(name)->tooltip, tooltip) << name;
  }
}

TEST_F(FrmMainTest, HasItsTabsInOrderWithTheirTooltips) {
  ASSERT_EQ(frmMain.TabImportType.tabCount(), 2);
  EXPECT_EQ(frmMain.TabImportType.tab(1).caption, "An IIS Server");
  EXPECT_EQ(frmMain.TabImportType.tab(1).tooltip, "Import sites from an IIS server");
  EXPECT_EQ(frmMain.TabImportType.tab(2).caption, "Database");
  EXPECT_EQ(frmMain.TabImportType.tab(2).tooltip, "Import sites from the database");
  ASSERT_EQ(frmMain.TabExportType.tabCount(), 2);
  EXPECT_EQ(frmMain.TabExportType.tab(1).caption, "Another IIS Server");
  EXPECT_EQ(frmMain.TabExportType.tab(1).tooltip, "Export your sites to another IIS server");
  EXPECT_EQ(frmMain.TabExportType.tab(2).caption, "Database");
  EXPECT_EQ(frmMain.TabExportType.tab(2).tooltip, "Export your sites to a database");
  ASSERT_EQ(frmMain.tabNewValues.tabCount(), 4);
  EXPECT_EQ(frmMain.tabNewValues.tab(1).caption, "&Directories");
  EXPECT_EQ(
      frmMain.tabNewValues.tab(1).tooltip,
      "If the paths for your sites directories are in a different location on the target server, change them "
      "here");
  EXPECT_EQ(frmMain.tabNewValues.tab(2).caption, "&IP Addresses");
  EXPECT_EQ(frmMain.tabNewValues.tab(2).tooltip,
            "If the IP address for the target server is going to be different to that of the sites current "
            "address, "
            "change it here");
  EXPECT_EQ(frmMain.tabNewValues.tab(3).caption, "&SSL IP Addresses");
  EXPECT_EQ(
      frmMain.tabNewValues.tab(3).tooltip,
      "If the SSL IP address for the target server is going to be different to that of the sites current "
      "address, change it here");
  EXPECT_EQ(frmMain.tabNewValues.tab(4).caption, "&Find && Replace");
  EXPECT_EQ(frmMain.tabNewValues.tab(4).tooltip, "Find and Replace IP addresses or directory paths");
}

TEST_F(FrmMainTest, StartsWithTheLocalServerAndTheThreeVersions) {
  EXPECT_EQ(frmMain.txtImportServer.text, "Localhost");
  for (const ListControl* list : {&frmMain.lstIMIISVer, &frmMain.lstEXIISVer}) {
    ASSERT_EQ(list->listCount(), 3);
    EXPECT_EQ(list->list(0), "IIS4");
    EXPECT_EQ(list->list(1), "IIS5");
    EXPECT_EQ(list->list(2), "IIS6");
  }
}

TEST_F(FrmMainTest, HidesWhatHoldsDataOnly) {
  for (const char* name :
       {"lstSiteIndexes", "optExportServer", "optExportFile", "lstPropsToExport", "lstFilesToCopy",
        "lstCheckCopy", "timExit", "syncPermTimer", "timAd1", "wsck1", "NTFSCtl1", "NTFSCtl2"}) {
    EXPECT_FALSE(frmMain.control(name)->visible) << name;
  }
  EXPECT_TRUE(frmMain.lstSites.visible);
  EXPECT_EQ(frmMain.syncPermTimer.interval, 1000);
}

TEST_F(FrmMainTest, SortsThePropertiesAndNeverTheSites) {
  EXPECT_TRUE(frmMain.lstPropsToExport.sorted);
  EXPECT_FALSE(frmMain.lstSites.sorted);
  EXPECT_FALSE(frmMain.lstSiteIndexes.sorted);
}

TEST_F(FrmMainTest, TakesSeveralSitesAndSeveralEntriesThatAKeyDeletes) {
  for (ListControl* list : {&frmMain.lstSites, &frmMain.lstExclude, &frmMain.lstOldValues,
                            &frmMain.lstNewValues, &frmMain.lstNewIPs(0), &frmMain.lstNewSSLIPs(0)}) {
    for (const char* entry : {"a", "b"}) list->addItem(entry);
    for (const std::int32_t entry : {0, 1}) list->setSelected(entry, true);
    EXPECT_EQ(list->selCount(), 2) << list->name;
  }
}

TEST_F(FrmMainTest, OpensTheMappingOnItsDirectories) {
  EXPECT_EQ(frmMain.tabNewValues.selectedTab(), 1);
  for (const char* name : {"fraFolders", "lstFolders", "fraNewDirectory", "lstDirectories"}) {
    EXPECT_TRUE(frmMain.control(name)->visible) << name;
  }
  for (const char* name : {"fraOldIPs", "lstOldIPs", "fraNewIPs", "lstNewIPs", "cmdAddIP", "fraOldSSLIPs",
                           "lstOldSSLIPs", "fraNewSSLIPs", "lstNewSSLIPs", "cmdAddSSLIP", "fraOldxValues",
                           "lstOldValues", "fraNewxValues", "lstNewValues", "cmdAddNewValue"}) {
    EXPECT_FALSE(frmMain.control(name)->visible) << name;
  }
}

TEST_F(FrmMainTest, LetsExactlyOneCreationModeBeOn) {
  EXPECT_TRUE(frmMain.optCreateWebs.value());
  frmMain.optOverwritePreserve.setValue(true);
  EXPECT_FALSE(frmMain.optCreateWebs.value());
  EXPECT_FALSE(frmMain.optOverwriteWebs.value());
}

}  // namespace
}  // namespace trelvin
