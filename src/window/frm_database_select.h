// The dialog that chooses where the data database is.
#pragma once

#include "window/controls.h"

namespace trelvin {

class FrmDatabaseSelect : public Form {
 public:
  FrmDatabaseSelect();

  Frame fraDBSetup;
  OptionButton optDefault;
  OptionButton optODBC;
  ListControl lstODBC;  // the data sources
  TextBox txtUser;
  TextBox txtPassword;  // in plain text
  Button cmdSave;
};

inline FrmDatabaseSelect frmDatabaseSelect;

}  // namespace trelvin
