#include "window/help_menu.h"

#include "core/err.h"
#include "core/start_up.h"
#include "platform/platform.h"
#include "window/frm_splash.h"

namespace trelvin {

void mnuAbout_Click() {
  handled("frmMain_mnuAbout Error ", [] {
    // A form that is up keeps its state and is only shown.
    if (!frmSplash.loaded) loadWelcomeForm();
    frmSplash.visible = frmSplash.loaded;
  });
}

void mnuCredits_Click() {
  platform().dialogs->showMessage(
      {.text =
           "Trelvin was tested by its authors and by the administrators who moved their own sites with it "
           "and told what they found. Thank you."});
}

}  // namespace trelvin
