// What a touch of the preferences, the version lists, the site kind and the tabs does.
#include "window/preferences.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_databases.h"
#include "fakes/failing_files.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

class PreferencesTest : public ProgramTest {
 protected:
  PreferencesTest() : databases_(watchDatabases()) { openWindow(); }

  // Lists so many sites by hand, each with a directory, a binding and a secure binding.
  static void listSites(std::int16_t count) {
    for (std::int16_t site = 0; site < count; ++site) {
      const std::string name = "site " + std::to_string(site);
      frmMain.lstSites.addItem(name);
      frmMain.lstSiteIndexes.addItem("IIS://web1/W3SVC/" + std::to_string(site));
      executeOnSettings(statements::addDirectoryRow(site, 0, "/ROOT", "d:\\" + name));
      executeOnSettings(statements::addBindingRow(site, 0, name + ":80:"));
      executeOnSettings(statements::addSslBindingRow(site, 0, name + ":443:"));
    }
    frmMain.iSiteCount = count;
    frmMain.abDetailsRead.assign(static_cast<std::size_t>(count), true);
  }
  // Whether a listing has been thrown away: the two lists, and what the listing had on display.
  static void expectNoListing() {
    EXPECT_EQ(frmMain.lstSites.listCount(), 0);
    EXPECT_EQ(frmMain.lstSiteIndexes.listCount(), 0);
    EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
  }

  FailingDatabases& databases_;
};

struct Preference {
  CheckBox& box;
  bool& flag;
};

std::vector<Preference> plainPreferences() {
  return {{frmMain.chkCopyIIS, run.bCopyIIS},     {frmMain.chkFastPermissions, run.bFastPerms},
          {frmMain.chkRunSilent, run.bRunSilent}, {frmMain.chkStartWebs, run.bStartWebs},
          {frmMain.chkCopyFiles, run.bCopyFiles}, {frmMain.chkSetFilePerms, run.bSetFilePerms}};
}

TEST_F(PreferencesTest, EachBoxStoresItsStateInItsFlag) {
  for (const Preference& preference : plainPreferences()) {
    for (const bool value : {true, false, true}) {
      preference.box.setValue(value);
      EXPECT_EQ(preference.flag, value) << preference.box.name;
    }
  }
}

TEST_F(PreferencesTest, EachBoxTouchesItsOwnFlagOnly) {
  run.bCopyIIS = false;
  frmMain.chkStartWebs.setValue(true);
  EXPECT_FALSE(run.bCopyIIS || run.bFastPerms || run.bRunSilent || run.bCopyFiles || run.bSetFilePerms);
}

TEST_F(PreferencesTest, CheckingTheCopyEnablesPermissionsAndTheFastModeOnlyWithThem) {
  frmMain.chkCopyFiles.setValue(true);
  EXPECT_TRUE(frmMain.chkSetFilePerms.enabled);
  EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
  frmMain.chkCopyFiles.setValue(false);
  run.bSetFilePerms = true;
  frmMain.chkCopyFiles.setValue(true);
  EXPECT_TRUE(frmMain.chkFastPermissions.enabled);
}

TEST_F(PreferencesTest, UncheckingTheCopyDisablesBothAndLeavesTheirValuesAndFlags) {
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkSetFilePerms.setValue(true);
  frmMain.chkFastPermissions.setValue(true);
  frmMain.chkCopyFiles.setValue(false);
  EXPECT_FALSE(frmMain.chkSetFilePerms.enabled);
  EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
  EXPECT_TRUE(frmMain.chkSetFilePerms.value());
  EXPECT_TRUE(frmMain.chkFastPermissions.value());
  EXPECT_TRUE(run.bSetFilePerms);
  EXPECT_TRUE(run.bFastPerms);
}

TEST_F(PreferencesTest, TheFastModeIsAvailableExactlyWithPermissions) {
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkSetFilePerms.setValue(true);
  EXPECT_TRUE(frmMain.chkFastPermissions.enabled);
  frmMain.chkSetFilePerms.setValue(false);
  EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
}

TEST_F(PreferencesTest, TheVersionListsSetTheVersionNumbers) {
  frmMain.lstIMIISVer.setListIndex(2);
  EXPECT_EQ(run.dblIMIISVer, 6);
  EXPECT_EQ(run.dblEXIISVer, 4);
  frmMain.lstIMIISVer.setListIndex(1);
  EXPECT_EQ(run.dblIMIISVer, 5);
  frmMain.lstEXIISVer.setListIndex(2);
  EXPECT_EQ(run.dblEXIISVer, 6);
  EXPECT_EQ(run.dblIMIISVer, 5);
  frmMain.lstEXIISVer.setListIndex(0);
  EXPECT_EQ(run.dblEXIISVer, 4);
}

TEST_F(PreferencesTest, AnyOtherVersionWordCountsAsTheOldest) {
  run.dblIMIISVer = run.dblEXIISVer = 6;
  frmMain.lstIMIISVer.addItem("IIS7");
  frmMain.lstIMIISVer.setListIndex(3);
  EXPECT_EQ(run.dblIMIISVer, 4);
  frmMain.lstEXIISVer.setListIndex(-1);
  EXPECT_EQ(run.dblEXIISVer, 4);
}

TEST_F(PreferencesTest, AKeyThatIsLetGoInAVersionListSetsTheVersionNumber) {
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.lstEXIISVer.setListIndex(1);
  run.dblIMIISVer = run.dblEXIISVer = 0;
  constexpr std::int32_t kDownKey = 40;
  frmMain.lstIMIISVer.onKeyUp(kDownKey);
  EXPECT_EQ(run.dblIMIISVer, 6);
  EXPECT_EQ(run.dblEXIISVer, 0);
  frmMain.lstEXIISVer.onKeyUp(kDownKey);
  EXPECT_EQ(run.dblEXIISVer, 5);
}

TEST_F(PreferencesTest, ChoosingFtpSitesSetsBothWordsAndBothOptions) {
  frmMain.optExportFTP.setValue(true);
  EXPECT_EQ(frmMain.sExportSiteType, "Ftp");
  EXPECT_EQ(frmMain.sService, "MSFTPSVC");
  EXPECT_TRUE(frmMain.optExportFTP.value());
  EXPECT_FALSE(frmMain.optExportWeb.value());
}

TEST_F(PreferencesTest, ChoosingWebSitesSetsBothWordsAndBothOptions) {
  frmMain.optExportFTP.setValue(true);
  optExportWeb_Click();
  EXPECT_EQ(frmMain.sExportSiteType, "Web");
  EXPECT_EQ(frmMain.sService, "W3SVC");
  EXPECT_TRUE(frmMain.optExportWeb.value());
  EXPECT_FALSE(frmMain.optExportFTP.value());
}

TEST_F(PreferencesTest, SwitchingTheKindOfSiteEmptiesTheListing) {
  listSites(1);
  frmMain.optExportFTP.setValue(true);
  expectNoListing();
  listSites(1);
  frmMain.optExportWeb.setValue(true);
  expectNoListing();
}

TEST_F(PreferencesTest, WithNoSiteListedNothingIsTakenDown) {
  frmMain.lstFolders(0).addItem("stays");
  frmMain.optExportFTP.setValue(true);
  frmMain.optExportWeb.setValue(true);
  frmMain.TabImportType.select(2);
  frmMain.TabImportType.select(1);
  EXPECT_EQ(entriesOf(frmMain.lstFolders(0)), (Texts{"stays"}));
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(logLines().back(), "Loading complete");
}

TEST_F(PreferencesTest, OverwriteAndCreateExcludeEachOther) {
  optOverwriteWebs_Click();
  EXPECT_TRUE(frmMain.optOverwriteWebs.value());
  EXPECT_FALSE(frmMain.optCreateWebs.value());
  optCreateWebs_Click();
  EXPECT_TRUE(frmMain.optCreateWebs.value());
  EXPECT_FALSE(frmMain.optOverwriteWebs.value());
}

TEST_F(PreferencesTest, TheExportOptionsExcludeEachOtherAndRefreshTheWindow) {
  optExportFile_Click();
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.optExportServer.value());
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
  EXPECT_FALSE(frmMain.cmdExportServer.enabled);
  optExportServer_Click();
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.cmdExportFile.enabled);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

TEST_F(PreferencesTest, AnExportOptionThatIsOnAlreadyRefreshesTheWindowAllTheSame) {
  frmMain.cmdExportServer.enabled = false;
  optExportServer_Click();
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

TEST_F(PreferencesTest, TheSecondExportTabChoosesTheDatabase) {
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.TabExportType.select(2);
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.fraExportServer.visible);
  EXPECT_TRUE(frmMain.fraExportFile.visible);
}

TEST_F(PreferencesTest, ADatabaseTakesTheVersionOfTheSource) {
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.TabExportType.select(2);
  EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS6");
  EXPECT_EQ(run.dblEXIISVer, 6);
}

TEST_F(PreferencesTest, TheFirstExportTabChoosesTheServerAndLeavesTheVersions) {
  frmMain.TabExportType.select(2);
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.TabExportType.select(1);
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_TRUE(frmMain.fraExportServer.visible);
  EXPECT_FALSE(frmMain.fraExportFile.visible);
  EXPECT_EQ(frmMain.lstEXIISVer.text(), "IIS4");
}

TEST_F(PreferencesTest, ADatabaseAsSourceTakesTheExportTabForADatabaseAway) {
  frmMain.TabImportType.select(2);
  EXPECT_EQ(frmMain.sImportType, "Database");
  EXPECT_FALSE(frmMain.txtImportServer.visible);
  EXPECT_EQ(frmMain.TabExportType.tabCount(), 1);
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 1);
  EXPECT_EQ(frmMain.TabExportType.tab(1).caption, "Another IIS Server");
}

TEST_F(PreferencesTest, ADatabaseAsSourceFallsBackToAServerAsTarget) {
  frmMain.TabExportType.select(2);
  frmMain.TabImportType.select(2);
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
  EXPECT_TRUE(frmMain.fraExportServer.visible);
  EXPECT_FALSE(frmMain.fraExportFile.visible);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_FALSE(frmMain.cmdExportFile.enabled);
}

TEST_F(PreferencesTest, ADatabaseAsSourceHasNoContentAndNoPermissions) {
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkSetFilePerms.setValue(true);
  frmMain.chkFastPermissions.setValue(true);
  frmMain.TabImportType.select(2);
  for (const CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions}) {
    EXPECT_FALSE(box->value()) << box->name;
    EXPECT_FALSE(box->enabled) << box->name;
  }
  EXPECT_FALSE(run.bCopyFiles || run.bSetFilePerms || run.bFastPerms);
  EXPECT_TRUE(run.bCopyIIS);
}

TEST_F(PreferencesTest, AChangeOfTheSourceRefreshesTheTargetsControls) {
  frmMain.cmdExportServer.enabled = false;
  frmMain.fraExportServer.visible = false;
  frmMain.TabImportType.select(2);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.fraExportServer.visible);
  frmMain.cmdExportServer.enabled = false;
  frmMain.fraExportServer.visible = false;
  frmMain.TabImportType.select(1);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
  EXPECT_TRUE(frmMain.fraExportServer.visible);
}

TEST_F(PreferencesTest, ASourceThatIsADatabaseTwiceOverKeepsOneExportTab) {
  frmMain.TabImportType.select(2);
  TabImportType_Click();
  EXPECT_EQ(frmMain.TabExportType.tabCount(), 1);
}

TEST_F(PreferencesTest, ReturningToAServerAddsTheExportTabAtTheEndAndKeepsTheServerAsTarget) {
  frmMain.TabExportType.select(2);
  frmMain.TabImportType.select(2);
  frmMain.TabImportType.select(1);
  EXPECT_EQ(frmMain.sImportType, "Server");
  EXPECT_TRUE(frmMain.txtImportServer.visible);
  ASSERT_EQ(frmMain.TabExportType.tabCount(), 2);
  EXPECT_EQ(frmMain.TabExportType.tab(1).caption, "Another IIS Server");
  EXPECT_EQ(frmMain.TabExportType.tab(2).caption, "Database");
  EXPECT_EQ(frmMain.TabExportType.tab(2).tooltip, "Export your sites to a database");
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 1);
  EXPECT_TRUE(frmMain.optExportServer.value());
  EXPECT_FALSE(frmMain.optExportFile.value());
}

TEST_F(PreferencesTest, ReturningToAServerMakesTheCopyAvailableAgain) {
  frmMain.TabImportType.select(2);
  frmMain.chkCopyIIS.enabled = false;
  frmMain.TabImportType.select(1);
  EXPECT_TRUE(frmMain.chkCopyFiles.enabled);
  EXPECT_FALSE(frmMain.chkSetFilePerms.enabled);
  EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
  EXPECT_TRUE(frmMain.chkCopyIIS.enabled);
}

TEST_F(PreferencesTest, WithAServerAsSourcePermissionsFollowTheirFlags) {
  for (const bool copies : {false, true}) {
    for (const bool permissions : {false, true}) {
      run.bCopyFiles = copies;
      run.bSetFilePerms = permissions;
      TabImportType_Click();
      EXPECT_EQ(frmMain.chkSetFilePerms.enabled, copies);
      EXPECT_EQ(frmMain.chkFastPermissions.enabled, permissions);
    }
  }
  EXPECT_TRUE(run.bCopyFiles && run.bSetFilePerms) << "the click leaves the flags";
}

TEST_F(PreferencesTest, FromServerToDatabaseTheClickOfTheImportTabClearsContentAndPermissions) {
  frmMain.TabExportType.select(2);
  for (CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions}) {
    box->enabled = true;
    box->setValue(true);
  }
  frmMain.chkCopyIIS.enabled = false;
  TabImportType_Click();
  for (const CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions}) {
    EXPECT_FALSE(box->value()) << box->name;
    EXPECT_FALSE(box->enabled) << box->name;
  }
  EXPECT_FALSE(run.bCopyFiles || run.bSetFilePerms || run.bFastPerms);
  EXPECT_TRUE(frmMain.chkCopyIIS.enabled);
  EXPECT_EQ(frmMain.TabExportType.selectedTab(), 2);
}

TEST_F(PreferencesTest, ChangingTheSourceEmptiesTheListing) {
  listSites(1);
  frmMain.TabImportType.select(2);
  expectNoListing();
  listSites(1);
  frmMain.TabImportType.select(1);
  expectNoListing();
}

TEST_F(PreferencesTest, AFailureOfAnImportTabIsLogged) {
  listSites(1);
  frmMain.TabExportType.remove(2);
  frmMain.TabExportType.remove(1);
  frmMain.TabImportType.select(2);
  EXPECT_EQ(logLines().back(), "frmMain_TabImportType Error 35600 Index out of bounds");
  EXPECT_EQ(frmMain.lstSites.listCount(), 1) << "the routine was left where it failed";
}

TEST_F(PreferencesTest, AFailureOfAnExportTabIsLogged) {
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.lstEXIISVer.clear();
  frmMain.TabExportType.select(2);
  EXPECT_EQ(logLines().back(), "frmMain_TabExportType Error 380 Invalid property value");
  EXPECT_TRUE(frmMain.fraExportFile.visible);
}

TEST_F(PreferencesTest, AFailureOfTheKindOfSiteIsLoggedUnderTheOptionsLabel) {
  listSites(1);
  // Taking the listing down has a handler of its own, so that only what fails in that one comes through.
  databases_.failOn("OpenRows", "Folder IS NOT NULL", error_number::kUnspecified);
  watchFiles().refuses = [](const std::string& line) {
    return line.find("CloseDownLists") != std::string::npos;
  };
  frmMain.optExportFTP.setValue(true);
  EXPECT_TRUE(logLines().back().starts_with("frmMain_optExportFTP Error 75 ")) << logLines().back();
  frmMain.optExportWeb.setValue(true);
  EXPECT_TRUE(logLines().back().starts_with("frmMain_optExportWeb Error 75 ")) << logLines().back();
}

// An event routine that can't be carried out.
void fail() {
  throw Failure(error_number::kInvalidProcedureCall);
}

TEST_F(PreferencesTest, AFailureOfTheChoiceOfAServerIsLogged) {
  optExportFile_Click();
  frmMain.optExportServer.onClick = fail;
  optExportServer_Click();
  EXPECT_EQ(logLines().back(), "frmMain_optExportServer Error 5 Invalid procedure call or argument");
}

TEST_F(PreferencesTest, AFailureOfTheRefreshIsLoggedAndTheChoiceStands) {
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkCopyFiles.onClick = fail;
  optExportFile_Click();
  EXPECT_EQ(logLines().back(), "frmMain_RefreshForm Error 5 Invalid procedure call or argument");
  EXPECT_TRUE(frmMain.optExportFile.value());
  EXPECT_FALSE(frmMain.optExportServer.value());
}

TEST_F(PreferencesTest, OptionsWithoutAHandlerLetAFailureThrough) {
  optOverwriteWebs_Click();
  for (OptionButton* option : {&frmMain.optExportFile, &frmMain.optCreateWebs, &frmMain.optOverwriteWebs}) {
    option->onClick = fail;
  }
  const std::size_t logged = logLines().size();
  EXPECT_EQ(numberOfFailure([] { optExportFile_Click(); }), error_number::kInvalidProcedureCall);
  EXPECT_EQ(numberOfFailure([] { optCreateWebs_Click(); }), error_number::kInvalidProcedureCall);
  EXPECT_EQ(numberOfFailure([] { optOverwriteWebs_Click(); }), error_number::kInvalidProcedureCall);
  EXPECT_EQ(logLines().size(), logged);
}

// Which of the four groups of the mapping is to be seen.
std::string visibleGroups() {
  std::string groups;
  const auto add = [&](const char* name, std::initializer_list<const Control*> group) {
    std::size_t visible = 0;
    for (const Control* control : group) visible += control->visible ? 1U : 0U;
    if (visible == group.size()) groups += std::string(name) + " ";
    if (visible != 0 && visible != group.size()) groups += "part of " + std::string(name) + " ";
  };
  add("directories",
      {&frmMain.fraFolders, &frmMain.fraNewDirectory, &frmMain.lstFolders(0), &frmMain.lstDirectories(0)});
  add("bindings", {&frmMain.fraOldIPs, &frmMain.fraNewIPs, &frmMain.lstOldIPs(0), &frmMain.lstNewIPs(0),
                   &frmMain.cmdAddIP});
  add("ssl", {&frmMain.fraOldSSLIPs, &frmMain.fraNewSSLIPs, &frmMain.lstOldSSLIPs(0),
              &frmMain.lstNewSSLIPs(0), &frmMain.cmdAddSSLIP});
  add("values", {&frmMain.fraOldxValues, &frmMain.fraNewxValues, &frmMain.lstOldValues, &frmMain.lstNewValues,
                 &frmMain.cmdAddNewValue});
  return groups;
}

class MappingTabTest : public PreferencesTest {
 protected:
  MappingTabTest() {
    listSites(2);
    frmMain.lstSites.setSelected(1, true);
  }
};

TEST_F(MappingTabTest, EachTabShowsItsGroupAndHidesTheOthers) {
  frmMain.tabNewValues.select(2);
  EXPECT_EQ(visibleGroups(), "bindings ");
  frmMain.tabNewValues.select(3);
  EXPECT_EQ(visibleGroups(), "ssl ");
  frmMain.tabNewValues.select(4);
  EXPECT_EQ(visibleGroups(), "values ");
  frmMain.tabNewValues.select(1);
  EXPECT_EQ(visibleGroups(), "directories ");
}

TEST_F(MappingTabTest, TheListsAreThoseOfTheLineInHand) {
  frmMain.tabNewValues.select(2);
  EXPECT_EQ(entriesOf(frmMain.lstFolders(0)), (Texts{"/ROOT"}));
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"d:\\site 1"}));
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{"site 1:80:"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewSSLIPs(0)), (Texts{"site 1:443:"}));
}

TEST_F(MappingTabTest, WithSeveralLinesSelectedTheLineInHandDecides) {
  frmMain.lstSites.setSelected(0, true);
  frmMain.tabNewValues.select(2);
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{"site 0:80:"}));
}

TEST_F(MappingTabTest, WithNothingSelectedTheThreeGroupsAreHidden) {
  frmMain.lstSites.setSelected(1, false);
  for (const std::int32_t tab : {2, 3, 1}) {
    frmMain.tabNewValues.select(tab);
    EXPECT_EQ(visibleGroups(), "") << tab;
  }
}

TEST_F(MappingTabTest, PairsToFindAndReplaceNeedNoSite) {
  frmMain.lstSites.setSelected(1, false);
  frmMain.tabNewValues.select(4);
  EXPECT_EQ(visibleGroups(), "values ");
  frmMain.tabNewValues.select(1);
  EXPECT_EQ(visibleGroups(), "");
}

TEST_F(MappingTabTest, AFailureToReadTheDirectoriesIsLoggedUnderTheTabsLabelAndLeavesTheRoutine) {
  databases_.failOn("OpenRows", "Folder IS NOT NULL", error_number::kUnspecified);
  frmMain.tabNewValues.select(4);
  EXPECT_EQ(logLines().back(), "frmMain_tabNewValues Error -2147467259 Unspecified error");
  EXPECT_FALSE(frmMain.fraOldxValues.visible) << "the routine was left where it failed";
}

}  // namespace
}  // namespace trelvin::test
