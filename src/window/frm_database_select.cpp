#include "window/frm_database_select.h"

namespace trelvin {

FrmDatabaseSelect::FrmDatabaseSelect()
    : fraDBSetup(*this, "fraDBSetup", "Select Database"),
      optDefault(*this, "optDefault", "Default Trelvin.mdb and TrelvinData.mdb"),
      optODBC(*this, "optODBC", "ODBC Data Source"),
      lstODBC(*this, "lstODBC"),
      txtUser(*this, "txtUser", "User Name"),
      txtPassword(*this, "txtPassword", "Password"),
      cmdSave(*this, "cmdSave", "&Save") {
  caption = "Database Setup";
  OptionButton::group({&optDefault, &optODBC});
}

}  // namespace trelvin
