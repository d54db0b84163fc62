#include "window/frm_splash.h"

namespace trelvin {

FrmSplash::FrmSplash()
    : lblAbout(*this, "lblAbout"),
      cmdContinue(*this, "cmdContinue", "Continue ->"),
      cmdExit(*this, "cmdExit", "Exit") {
  caption = "Welcome to the Trelvin Utility";
}

}  // namespace trelvin
