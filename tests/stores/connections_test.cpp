// Where the two databases are, and opening them.
#include "stores/connections.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "core/registry_strings.h"
#include "core/run_state.h"
#include "fakes/failing_databases.h"
#include "fakes/failures.h"
#include "fakes/program_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using Texts = std::vector<std::string>;

class ConnectionsTest : public ProgramTest {
 protected:
  [[nodiscard]] std::string fileString(const std::string& name) const {
    return "DBQ=" + programPath() + "\\" + name + ";Driver={Microsoft Access Driver (*.mdb)};";
  }
};

TEST_F(ConnectionsTest, TheSettingsAreAlwaysTheFileBesideTheProgram) {
  EXPECT_EQ(settingsConnectionString(), fileString("Trelvin.mdb"));
  writeProgramValue("ODBCDSN", "Sites");
  EXPECT_EQ(settingsConnectionString(), fileString("Trelvin.mdb"));
}

TEST_F(ConnectionsTest, TheDataAreTheFileBesideTheProgramUnlessASourceIsNamed) {
  EXPECT_EQ(dataConnectionString(), fileString("TrelvinData.mdb"));
}

TEST_F(ConnectionsTest, ASourceOfBlanksCountsAsNone) {
  writeProgramValue("ODBCDSN", "   ");
  writeProgramValue("ODBCUID", "me");
  EXPECT_EQ(dataConnectionString(), fileString("TrelvinData.mdb"));
}

TEST_F(ConnectionsTest, ASourceThatIsNoTextCountsAsNone) {
  platform().registry->setValue(RegistryRoot::kLocalMachine, kRegistryKey, "ODBCDSN", kRegDword,
                                std::string("\x01\x00\x00\x00", 4));
  EXPECT_EQ(dataConnectionString(), fileString("TrelvinData.mdb"));
}

TEST_F(ConnectionsTest, ASourceAloneGivesItsNameAndNothingMore) {
  writeProgramValue("ODBCDSN", "Sites");
  writeProgramValue("ODBCUID", "");
  writeProgramValue("ODBCPWD", "");
  EXPECT_EQ(dataConnectionString(), "DSN=Sites;");
}

TEST_F(ConnectionsTest, UserAndPasswordFollowTheSourceWhereTheyAreSet) {
  writeProgramValue("ODBCDSN", "Sites");
  writeProgramValue("ODBCUID", "me");
  EXPECT_EQ(dataConnectionString(), "DSN=Sites;User Id=me;");
  writeProgramValue("ODBCPWD", "secret");
  EXPECT_EQ(dataConnectionString(), "DSN=Sites;User Id=me;PASSWORD=secret;");
  writeProgramValue("ODBCUID", "");
  EXPECT_EQ(dataConnectionString(), "DSN=Sites;PASSWORD=secret;");
}

TEST_F(ConnectionsTest, BlanksOfASourceAreKept) {
  writeProgramValue("ODBCDSN", " My Sites ");
  EXPECT_EQ(dataConnectionString(), "DSN= My Sites ;");
}

TEST_F(ConnectionsTest, AStringForAFileNamesFileAndDriver) {
  EXPECT_EQ(fileConnectionString("D:\\a b\\x.mdb"),
            "DBQ=D:\\a b\\x.mdb;Driver={Microsoft Access Driver (*.mdb)};");
}

TEST_F(ConnectionsTest, FreshStoresAreClosed) {
  createStores();
  EXPECT_FALSE(frmMain.DBSettings->isOpen());
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
  EXPECT_FALSE(frmMain.DBData->isOpen());
  EXPECT_FALSE(frmMain.rsData->isOpen());
}

class ReloadTest : public ConnectionsTest {
 protected:
  ReloadTest() {
    openWindow();
    frmMain.lstSites.addItem("kept");
  }
};

TEST_F(ReloadTest, BothDatabasesAreClosedBeforeTheyAreOpenedAnew) {
  frmMain.DBSettings.reset();
  const FailingDatabases& databases = watchDatabases();
  createStores();
  openSettingsDatabase();
  openDataDatabase(dataConnectionString());
  const std::size_t before = databases.calls.size();
  ReLoadDB();
  Texts order;
  for (std::size_t i = before; i < databases.calls.size(); ++i) {
    order.push_back(databases.calls[i].operation + " " + databases.calls[i].text);
  }
  EXPECT_EQ(order, (Texts{"Close ", "Close ", "Open " + fileString("Trelvin.mdb"),
                          "Open " + fileString("TrelvinData.mdb")}));
}

TEST_F(ReloadTest, NothingInTheWindowChanges) {
  ReLoadDB();
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"kept"}));
  EXPECT_TRUE(frmMain.DBSettings->isOpen());
  EXPECT_TRUE(frmMain.DBData->isOpen());
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(ReloadTest, TheSourceIsReadAnewFromTheRegistry) {
  frmMain.sDataConnection = "old";
  frmMain.sSettingsConnection = "old";
  writeProgramValue("ODBCDSN", "NoSuchSource");
  ReLoadDB();
  EXPECT_EQ(frmMain.sDataConnection, "DSN=NoSuchSource;");
  EXPECT_EQ(frmMain.sSettingsConnection, fileString("Trelvin.mdb"));
  EXPECT_TRUE(logLines().back().starts_with("frmMain ReLoadDB Error -2147467259 ")) << logLines().back();
}

TEST_F(ReloadTest, OnlyTheDataDatabaseHasADebugLine) {
  run.bDebug = true;
  ReLoadDB();
  EXPECT_EQ(logLines().back(), "Opening Data database " + fileString("TrelvinData.mdb"));
  EXPECT_EQ(timesLogged("Opening Settings database " + fileString("Trelvin.mdb")), 0);
}

TEST_F(ReloadTest, AnErrorLeftOverIsShown) {
  Err.set(Failure(6));
  ReLoadDB();
  ASSERT_EQ(dialogs->shown.size(), 1U);
  EXPECT_EQ(dialogs->shown[0].text, "6 - Overflow");
  EXPECT_TRUE(frmMain.DBData->isOpen());
}

TEST_F(ReloadTest, ADatabaseThatIsClosedAlreadyEndsInTheHandler) {
  frmMain.DBSettings->close();
  ReLoadDB();
  EXPECT_EQ(logLines().back(),
            "frmMain ReLoadDB Error 3704 Operation is not allowed when the object is closed.");
  EXPECT_TRUE(frmMain.DBData->isOpen()) << "the routine was left where it failed";
}

}  // namespace
}  // namespace trelvin::test
