#include "stores/database_selection.h"

#include <string>

#include "core/main_window.h"
#include "core/registry_strings.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/wiring.h"

namespace trelvin {

namespace {

// A form that is loaded begins empty, whatever a former showing left in it.
void clearFields() {
  frmDatabaseSelect.optDefault.setValue(false);
  frmDatabaseSelect.optODBC.setValue(false);
  frmDatabaseSelect.lstODBC.clear();
  frmDatabaseSelect.txtUser.text.clear();
  frmDatabaseSelect.txtPassword.text.clear();
}

}  // namespace

void mnuDBLoc_Click() {
  if (!frmDatabaseSelect.loaded) {
    wireDatabaseSelect();
    clearFields();
    frmDatabaseSelect.loaded = true;
    frmDatabaseSelect_Load();
  }
  frmDatabaseSelect.owner = &frmMain;
  frmDatabaseSelect.visible = true;
}

void frmDatabaseSelect_Load() {
  if (trimmed(readProgramValue("ODBCDSN")).empty()) {
    frmDatabaseSelect.optDefault.setValue(true);
  } else {
    frmDatabaseSelect.optODBC.setValue(true);
    frmDatabaseSelect.txtUser.text = readProgramValue("ODBCUID");
    frmDatabaseSelect.txtPassword.text = readProgramValue("ODBCPWD");
  }
  fillDataSources(frmDatabaseSelect.lstODBC);
}

void fillDataSources(ListControl& list) {
  const std::string stored = readProgramValue("ODBCDSN");
  std::int32_t index = 0;
  for (const std::string& source : platform().databases->systemDataSources()) {
    list.addItem(source);
    if (source == stored) list.setListIndex(index);
    ++index;
  }
}

void frmDatabaseSelect_cmdSave_Click() {
  if (frmDatabaseSelect.optDefault.value()) {
    // User and password stay for the day the source is chosen again; nobody reads them until then.
    writeProgramValue("ODBCDSN", "");
  } else {
    const ListControl& sources = frmDatabaseSelect.lstODBC;
    writeProgramValue("ODBCDSN", sources.list(sources.listIndex()));
    writeProgramValue("ODBCUID", frmDatabaseSelect.txtUser.text);
    writeProgramValue("ODBCPWD", frmDatabaseSelect.txtPassword.text);
  }
  unloadForm(frmDatabaseSelect);
}

}  // namespace trelvin
