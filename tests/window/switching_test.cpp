// What is switched on and off, and when.
#include "window/switching.h"

#include <gtest/gtest.h>

#include <set>

#include "core/run_state.h"
#include "fakes/program_test.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using Names = std::set<std::string>;

const Names kBusySet{"chkStartWebs",       "chkCopyFiles",    "chkCopyIIS",    "chkSetFilePerms",
                     "chkFastPermissions", "cmdAddExclusion", "lstSites",      "txtAddExclusion",
                     "lstExclude",         "TabImportType",   "TabExportType", "optCreateWebs",
                     "optOverwriteWebs",   "optExportWeb",    "optExportFTP",  "txtImportServer",
                     "txtExportServer",    "lstIMIISVer",     "lstEXIISVer",   "cmdPopulate"};

class SwitchingTest : public ProgramTest {
 protected:
  static void setAll(bool enabled) {
    for (Control* control : frmMain.controls()) control->enabled = enabled;
  }
  static Names enabledControls() {
    Names names;
    for (const Control* control : frmMain.controls()) {
      if (control->enabled) names.insert(control->name);
    }
    return names;
  }
  static void choose(OptionButton* choice) {
    frmMain.optExportServer.setValue(choice == &frmMain.optExportServer);
    frmMain.optExportFile.setValue(choice == &frmMain.optExportFile);
  }
};

TEST_F(SwitchingTest, WithAServerAsTargetTheServersControlsAreOn) {
  setAll(false);
  choose(&frmMain.optExportServer);
  RefreshForm();
  EXPECT_EQ(enabledControls(), (Names{"txtExportServer", "cmdExportServer", "optOverwriteWebs",
                                      "optCreateWebs", "chkCopyFiles", "chkCopyIIS"}));
}

TEST_F(SwitchingTest, WithAServerAsTargetTheDatabasesButtonIsOff) {
  choose(&frmMain.optExportServer);
  RefreshForm();
  EXPECT_FALSE(frmMain.cmdExportFile.enabled);
}

TEST_F(SwitchingTest, PermissionsNeedTheCopyAndTheFastModeNeedsPermissions) {
  choose(&frmMain.optExportServer);
  for (const bool copies : {false, true}) {
    for (const bool permissions : {false, true}) {
      run.bCopyFiles = copies;
      run.bSetFilePerms = permissions;
      RefreshForm();
      EXPECT_EQ(frmMain.chkSetFilePerms.enabled, copies);
      EXPECT_EQ(frmMain.chkFastPermissions.enabled, permissions);
    }
  }
}

TEST_F(SwitchingTest, WithAServerAsTargetFlagsAndValuesStay) {
  choose(&frmMain.optExportServer);
  run.bCopyFiles = run.bSetFilePerms = run.bFastPerms = true;
  frmMain.chkCopyFiles.setValue(true);
  RefreshForm();
  EXPECT_TRUE(run.bCopyFiles && run.bSetFilePerms && run.bFastPerms);
  EXPECT_TRUE(frmMain.chkCopyFiles.value());
}

TEST_F(SwitchingTest, WithADatabaseAsTargetOnlyItsButtonAndTheConfigurationAreOn) {
  for (const bool before : {false, true}) {
    for (const char* name :
         {"txtExportServer", "cmdExportServer", "cmdExportFile", "optOverwriteWebs", "optCreateWebs",
          "chkCopyFiles", "chkCopyIIS", "chkSetFilePerms", "chkFastPermissions"}) {
      frmMain.control(name)->enabled = before;
    }
    choose(&frmMain.optExportFile);
    RefreshForm();
    EXPECT_FALSE(frmMain.txtExportServer.enabled);
    EXPECT_FALSE(frmMain.cmdExportServer.enabled);
    EXPECT_TRUE(frmMain.cmdExportFile.enabled);
    EXPECT_FALSE(frmMain.optOverwriteWebs.enabled);
    EXPECT_FALSE(frmMain.optCreateWebs.enabled);
    EXPECT_FALSE(frmMain.chkCopyFiles.enabled);
    EXPECT_TRUE(frmMain.chkCopyIIS.enabled);
    EXPECT_FALSE(frmMain.chkSetFilePerms.enabled);
    EXPECT_FALSE(frmMain.chkFastPermissions.enabled);
  }
}

TEST_F(SwitchingTest, WithADatabaseAsTargetContentAndPermissionsAreCleared) {
  openWindow();
  for (CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions}) {
    box->setValue(true);
  }
  ASSERT_TRUE(run.bCopyFiles && run.bSetFilePerms && run.bFastPerms);
  choose(&frmMain.optExportFile);
  RefreshForm();
  EXPECT_FALSE(run.bCopyFiles || run.bSetFilePerms || run.bFastPerms);
  for (const CheckBox* box : {&frmMain.chkCopyFiles, &frmMain.chkSetFilePerms, &frmMain.chkFastPermissions}) {
    EXPECT_FALSE(box->value()) << box->name;
    EXPECT_FALSE(box->enabled) << box->name;
  }
  EXPECT_TRUE(run.bCopyIIS);
}

TEST_F(SwitchingTest, FlagsAreClearedEvenWhereTheBoxIsOffAlready) {
  choose(&frmMain.optExportFile);
  run.bCopyFiles = run.bSetFilePerms = run.bFastPerms = true;
  RefreshForm();
  EXPECT_FALSE(run.bCopyFiles || run.bSetFilePerms || run.bFastPerms);
}

TEST_F(SwitchingTest, WithNoTargetNothingCanBeExported) {
  choose(nullptr);
  for (const bool permissions : {false, true}) {
    setAll(true);
    run.bSetFilePerms = permissions;
    run.bCopyFiles = false;
    RefreshForm();
    EXPECT_FALSE(frmMain.txtExportServer.enabled);
    EXPECT_FALSE(frmMain.cmdExportServer.enabled);
    EXPECT_FALSE(frmMain.cmdExportFile.enabled);
    EXPECT_FALSE(frmMain.optOverwriteWebs.enabled);
    EXPECT_FALSE(frmMain.optCreateWebs.enabled);
    EXPECT_TRUE(frmMain.chkCopyFiles.enabled);
    EXPECT_TRUE(frmMain.chkCopyIIS.enabled);
    EXPECT_TRUE(frmMain.chkSetFilePerms.enabled);
    EXPECT_EQ(frmMain.chkFastPermissions.enabled, permissions);
  }
}

TEST_F(SwitchingTest, WithNoTargetWhatIsOffComesOn) {
  choose(nullptr);
  setAll(false);
  RefreshForm();
  EXPECT_EQ(enabledControls(), (Names{"chkCopyFiles", "chkCopyIIS", "chkSetFilePerms"}));
}

TEST_F(SwitchingTest, BusySwitchesOffExactlyWhatCouldStartOrChangeSomething) {
  setAll(true);
  const Names before = enabledControls();
  DisableOptions();
  const Names after = enabledControls();
  Names switchedOff;
  for (const std::string& name : before) {
    if (!after.contains(name)) switchedOff.insert(name);
  }
  EXPECT_EQ(switchedOff, kBusySet);
}

TEST_F(SwitchingTest, BusyLeavesTheExportButtonsForTheirAbort) {
  setAll(true);
  DisableOptions();
  EXPECT_TRUE(frmMain.cmdExportFile.enabled);
  EXPECT_TRUE(frmMain.cmdExportServer.enabled);
}

TEST_F(SwitchingTest, TheSameSetComesOnAgainFromServerToServer) {
  choose(&frmMain.optExportServer);
  frmMain.sImportType = "Server";
  run.bCopyFiles = run.bSetFilePerms = true;
  setAll(false);
  EnableOptions();
  EXPECT_EQ(enabledControls(), kBusySet);
}

TEST_F(SwitchingTest, FromServerToServerPermissionsFollowTheirFlags) {
  choose(&frmMain.optExportServer);
  frmMain.sImportType = "Server";
  for (const bool copies : {false, true}) {
    for (const bool permissions : {false, true}) {
      run.bCopyFiles = copies;
      run.bSetFilePerms = permissions;
      EnableOptions();
      EXPECT_TRUE(frmMain.chkCopyFiles.enabled);
      EXPECT_EQ(frmMain.chkSetFilePerms.enabled, copies);
      EXPECT_EQ(frmMain.chkFastPermissions.enabled, permissions);
    }
  }
}

class UntouchedContentTest : public SwitchingTest {
 protected:
  // The three boxes stay as they are, on or off.
  static void expectUntouched() {
    run.bCopyFiles = run.bSetFilePerms = true;
    Names rest = kBusySet;
    for (const char* name : {"chkCopyFiles", "chkSetFilePerms", "chkFastPermissions"}) rest.erase(name);
    setAll(false);
    EnableOptions();
    EXPECT_EQ(enabledControls(), rest);
    run.bCopyFiles = run.bSetFilePerms = false;
    setAll(true);
    EnableOptions();
    EXPECT_TRUE(frmMain.chkSetFilePerms.enabled);
    EXPECT_TRUE(frmMain.chkFastPermissions.enabled);
  }
};

TEST_F(UntouchedContentTest, WithADatabaseAsSource) {
  choose(&frmMain.optExportServer);
  frmMain.sImportType = "Database";
  expectUntouched();
}

TEST_F(UntouchedContentTest, WithADatabaseAsTarget) {
  choose(&frmMain.optExportFile);
  frmMain.sImportType = "Server";
  expectUntouched();
}

TEST_F(UntouchedContentTest, WithNoTarget) {
  choose(nullptr);
  frmMain.sImportType = "Server";
  expectUntouched();
}

}  // namespace
}  // namespace trelvin::test
