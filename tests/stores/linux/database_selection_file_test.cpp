// Choosing where the data database is, and the file that keeps the choice.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/registry_strings.h"
#include "fakes/data_sources.h"
#include "fakes/program_test.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

class RegistryFileOfDatabaseSelection : public ProgramTest {
 protected:
  RegistryFileOfDatabaseSelection() {
    openWindow();
    dataSources.setSystem(sqliteSource("Sites"));
  }
  ~RegistryFileOfDatabaseSelection() override { dataSources.clear(); }

  // Shows the dialog and takes its first source.
  static void choose() {
    frmMain.mnuDBLoc.onClick();
    frmDatabaseSelect.optODBC.setValue(true);
    frmDatabaseSelect.lstODBC.setListIndex(0);
  }
};

TEST_F(RegistryFileOfDatabaseSelection, TheFileWithThePasswordIsReadableByItsOwnerOnly) {
  folder.write("program/Registry.reg", "");
  fs::permissions(programFolder() / "Registry.reg", fs::perms(0666));
  choose();
  frmDatabaseSelect.txtPassword.text = "secret";
  frmDatabaseSelect.cmdSave.onClick();
  EXPECT_NE(folder.read("program/Registry.reg").find("secret"), std::string::npos);
  EXPECT_EQ(fs::status(programFolder() / "Registry.reg").permissions(), fs::perms(0600));
}

TEST_F(RegistryFileOfDatabaseSelection, AWriteThatIsRefusedIsSilentAndTheDialogGoes) {
  folder.write("program/Registry.reg", "Windows Registry Editor Version 5.00\r\n");
  fs::permissions(programFolder() / "Registry.reg", fs::perms(0400));
  choose();
  const auto before = logLines();
  frmDatabaseSelect.cmdSave.onClick();
  EXPECT_EQ(readProgramValue("ODBCDSN"), "");
  EXPECT_EQ(logLines(), before);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_FALSE(frmDatabaseSelect.loaded);
}

}  // namespace
}  // namespace trelvin::test
