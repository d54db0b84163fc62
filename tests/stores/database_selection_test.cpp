// Choosing where the data database is, with the real driver manager and a real registry file.
#include "stores/database_selection.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/main_window.h"
#include "core/registry_strings.h"
#include "fakes/data_sources.h"
#include "fakes/failing_databases.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

class DatabaseSelectionTest : public ProgramTest {
 protected:
  DatabaseSelectionTest() {
    dataSources.clear();
    openWindow();
    dataSources.setSystem(sqliteSource("Sites") + sqliteSource("Archive") + sqliteSource("Spare"));
  }
  ~DatabaseSelectionTest() override { dataSources.clear(); }

  static void choose(const std::string& source, const std::string& user, const std::string& password) {
    writeProgramValue("ODBCDSN", source);
    writeProgramValue("ODBCUID", user);
    writeProgramValue("ODBCPWD", password);
  }
  static void openDialog() { frmMain.mnuDBLoc.onClick(); }
  static void pressSave() { frmDatabaseSelect.cmdSave.onClick(); }
  static Texts stored() {
    return {readProgramValue("ODBCDSN"), readProgramValue("ODBCUID"), readProgramValue("ODBCPWD")};
  }
};

TEST_F(DatabaseSelectionTest, TheMenuShowsTheDialogModalOverTheMainWindow) {
  EXPECT_FALSE(frmDatabaseSelect.loaded);
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.loaded);
  EXPECT_TRUE(frmDatabaseSelect.visible);
  EXPECT_EQ(frmDatabaseSelect.owner, &frmMain);
  EXPECT_TRUE(frmMain.visible);
}

TEST_F(DatabaseSelectionTest, TheControlsHaveTheirNamesAndCaptions) {
  EXPECT_EQ(frmDatabaseSelect.caption, "Database Setup");
  const std::vector<std::pair<const char*, const char*>> expected{
      {"fraDBSetup", "Select Database"},
      {"optDefault", "Default Trelvin.mdb and TrelvinData.mdb"},
      {"optODBC", "ODBC Data Source"},
      {"lstODBC", ""},
      {"txtUser", "User Name"},
      {"txtPassword", "Password"},
      {"cmdSave", "&Save"}};
  ASSERT_EQ(frmDatabaseSelect.controls().size(), expected.size());
  for (const auto& [name, caption] : expected) {
    ASSERT_NE(frmDatabaseSelect.control(name), nullptr) << name;
    EXPECT_EQ(frmDatabaseSelect.control(name)->caption, caption) << name;
  }
}

TEST_F(DatabaseSelectionTest, WithoutAStoredSourceTheDefaultIsSetAndNobodyNamed) {
  choose("", "me", "secret");
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.optDefault.value());
  EXPECT_FALSE(frmDatabaseSelect.optODBC.value());
  EXPECT_EQ(frmDatabaseSelect.txtUser.text, "");
  EXPECT_EQ(frmDatabaseSelect.txtPassword.text, "");
  EXPECT_EQ(entriesOf(frmDatabaseSelect.lstODBC), (Texts{"Sites", "Archive", "Spare"}));
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listIndex(), -1);
}

TEST_F(DatabaseSelectionTest, AStoredSourceOfBlanksCountsAsNone) {
  choose("  ", "me", "secret");
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.optDefault.value());
  EXPECT_EQ(frmDatabaseSelect.txtUser.text, "");
}

TEST_F(DatabaseSelectionTest, AStoredSourceIsSelectedWithItsUserAndPasswordInPlainText) {
  choose("Archive", "me", "secret");
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.optODBC.value());
  EXPECT_FALSE(frmDatabaseSelect.optDefault.value());
  EXPECT_EQ(frmDatabaseSelect.txtUser.text, "me");
  EXPECT_EQ(frmDatabaseSelect.txtPassword.text, "secret");
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listIndex(), 1);
  EXPECT_EQ(frmDatabaseSelect.lstODBC.text(), "Archive");
}

TEST_F(DatabaseSelectionTest, AStoredSourceIsRecognisedByItsExactNameOnly) {
  choose("ARCHIVE", "me", "");
  openDialog();
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listIndex(), -1);
}

TEST_F(DatabaseSelectionTest, AStoredSourceThatIsGoneLeavesNoSelectionAndTheFieldsFilled) {
  choose("Gone", "me", "secret");
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.optODBC.value());
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listIndex(), -1);
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listCount(), 3);
  EXPECT_EQ(frmDatabaseSelect.txtUser.text, "me");
  EXPECT_EQ(frmDatabaseSelect.txtPassword.text, "secret");
}

TEST_F(DatabaseSelectionTest, OnlySystemSourcesAreOffered) {
  dataSources.setUser(sqliteSource("Mine"));
  openDialog();
  EXPECT_EQ(entriesOf(frmDatabaseSelect.lstODBC), (Texts{"Sites", "Archive", "Spare"}));
}

TEST_F(DatabaseSelectionTest, WithoutSystemSourcesTheDefaultCanStillBeSaved) {
  choose("Gone", "me", "secret");
  dataSources.clear();
  openDialog();
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listCount(), 0);
  EXPECT_TRUE(dialogs->shown.empty());
  frmDatabaseSelect.optDefault.setValue(true);
  pressSave();
  EXPECT_EQ(stored(), (Texts{"", "me", "secret"}));
}

TEST_F(DatabaseSelectionTest, SavingTheDefaultKeepsUserAndPasswordAsTheyAre) {
  choose("Archive", "me", "secret");
  openDialog();
  frmDatabaseSelect.txtUser.text = "somebody else";
  frmDatabaseSelect.txtPassword.text = "other";
  frmDatabaseSelect.optDefault.setValue(true);
  pressSave();
  EXPECT_EQ(stored(), (Texts{"", "me", "secret"}));
  EXPECT_EQ(platform().registry->queryValue(RegistryRoot::kLocalMachine, kRegistryKey, "ODBCDSN").code, 0)
      << "an empty value, not a missing one";
  EXPECT_FALSE(frmDatabaseSelect.loaded);
  EXPECT_FALSE(frmDatabaseSelect.visible);
}

TEST_F(DatabaseSelectionTest, SavingASourceStoresItWithUserAndPassword) {
  openDialog();
  frmDatabaseSelect.optODBC.setValue(true);
  frmDatabaseSelect.lstODBC.setListIndex(2);
  frmDatabaseSelect.txtUser.text = "me";
  frmDatabaseSelect.txtPassword.text = " pass\"word\\ ";
  pressSave();
  EXPECT_EQ(stored(), (Texts{"Spare", "me", " pass\"word\\ "}));
  EXPECT_FALSE(frmDatabaseSelect.loaded);
  EXPECT_TRUE(frmMain.loaded);
}

TEST_F(DatabaseSelectionTest, EmptyUserAndPasswordReplaceTheStoredOnes) {
  choose("Archive", "me", "secret");
  openDialog();
  frmDatabaseSelect.txtUser.text = "";
  frmDatabaseSelect.txtPassword.text = "";
  pressSave();
  EXPECT_EQ(stored(), (Texts{"Archive", "", ""}));
}

TEST_F(DatabaseSelectionTest, ASourceThatIsNotSelectedFailsToTheCallerAndStoresNothing) {
  choose("Gone", "me", "secret");
  openDialog();
  frmDatabaseSelect.txtUser.text = "somebody else";
  EXPECT_EQ(numberOfFailure([] { pressSave(); }), error_number::kInvalidPropertyArrayIndex);
  EXPECT_EQ(stored(), (Texts{"Gone", "me", "secret"}));
  EXPECT_TRUE(frmDatabaseSelect.loaded);
  EXPECT_TRUE(frmDatabaseSelect.visible);
}

TEST_F(DatabaseSelectionTest, TheChoiceTakesEffectAtTheNextStart) {
  const std::string before = frmMain.sDataConnection;
  dataSources.setSystem(sqliteSource("Sites", programFolder() / "ForBackups.mdb"));
  openDialog();
  frmDatabaseSelect.optODBC.setValue(true);
  frmDatabaseSelect.lstODBC.setListIndex(0);
  pressSave();
  EXPECT_EQ(frmMain.sDataConnection, before);
  EXPECT_TRUE(frmMain.DBData->isOpen());

  unloadForm(frmMain);
  executeOn("ForBackups.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('Stored there', 'Web')");
  openWindow();
  EXPECT_EQ(frmMain.sDataConnection, "DSN=Sites;");
  frmMain.rsData->open("SELECT * FROM Sites", *frmMain.DBData, kStaticCursor);
  EXPECT_EQ(frmMain.rsData->field("SiteName").toText(), "Stored there");
}

TEST_F(DatabaseSelectionTest, ASecondShowingBeginsAfresh) {
  choose("Archive", "me", "secret");
  openDialog();
  frmDatabaseSelect.optDefault.setValue(true);
  pressSave();
  openDialog();
  EXPECT_TRUE(frmDatabaseSelect.optDefault.value());
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listCount(), 3);
  EXPECT_EQ(frmDatabaseSelect.lstODBC.listIndex(), -1);
  EXPECT_EQ(frmDatabaseSelect.txtUser.text, "");
  EXPECT_EQ(frmDatabaseSelect.txtPassword.text, "");
}

TEST_F(DatabaseSelectionTest, TheExitOfTheProgramTakesTheDialogWithIt) {
  openDialog();
  frmMain.mnuExit.onClick();
  EXPECT_FALSE(frmDatabaseSelect.loaded);
  EXPECT_FALSE(frmDatabaseSelect.visible);
  EXPECT_FALSE(anyFormLoaded());
}

}  // namespace
}  // namespace trelvin::test
