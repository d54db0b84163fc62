#include "stores/connections.h"

#include "core/err.h"
#include "core/registry_strings.h"
#include "core/reporting.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

std::string programFile(const char* name) {
  return platform().application->path() + "\\" + name;
}

void showErrorLeftOver() {
  if (!Err.isSet()) return;
  platform().dialogs->showMessage({.text = errTextWithDash()});
}

}  // namespace

std::string fileConnectionString(const std::string& path) {
  return "DBQ=" + path + ";Driver={Microsoft Access Driver (*.mdb)};";
}

std::string dataConnectionString() {
  if (trimmed(readProgramValue("ODBCDSN")).empty())
    return fileConnectionString(programFile("TrelvinData.mdb"));
  std::string connection = "DSN=" + readProgramValue("ODBCDSN") + ";";
  const std::string user = readProgramValue("ODBCUID");
  const std::string password = readProgramValue("ODBCPWD");
  if (!user.empty()) connection += "User Id=" + user + ";";
  if (!password.empty()) connection += "PASSWORD=" + password + ";";
  return connection;
}

std::string settingsConnectionString() {
  return fileConnectionString(programFile("Trelvin.mdb"));
}

void createStores() {
  frmMain.DBSettings = platform().databases->createConnection();
  frmMain.rsSettings = platform().databases->createRecordSet();
  frmMain.DBData = platform().databases->createConnection();
  frmMain.rsData = platform().databases->createRecordSet();
}

void openSettingsDatabase() {
  bound(frmMain.DBSettings).open(frmMain.sSettingsConnection);
  debugLog("Opening Settings database " + frmMain.sSettingsConnection);
  if (!Err.isSet()) return;
  showErrorLeftOver();
  writeLog("Error after DBSettings.open " + errTextWithDash());
}

void openDataDatabase(const std::string& connectionString) {
  bound(frmMain.DBData).open(connectionString);
  debugLog("Opening Data database " + connectionString);
}

void ReLoadDB() {
  handled("frmMain ReLoadDB Error ", [] {
    bound(frmMain.DBSettings).close();
    bound(frmMain.DBData).close();
    frmMain.sDataConnection = dataConnectionString();
    frmMain.sSettingsConnection = settingsConnectionString();
    bound(frmMain.DBSettings).open(frmMain.sSettingsConnection);
    showErrorLeftOver();
    openDataDatabase(frmMain.sDataConnection);
  });
}

}  // namespace trelvin
