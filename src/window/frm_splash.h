// The welcome form.
#pragma once

#include "window/controls.h"

namespace trelvin {

class FrmSplash : public Form {
 public:
  FrmSplash();

  Label lblAbout;
  Button cmdContinue;
  Button cmdExit;
};

inline FrmSplash frmSplash;

}  // namespace trelvin
