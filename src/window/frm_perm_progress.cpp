#include "window/frm_perm_progress.h"

#include "core/main_window.h"
#include "core/run_state.h"

namespace trelvin {

FrmPermProgress::FrmPermProgress()
    : cmdCancel(*this, "cmdCancel", "Cancel"),
      Timer1(*this, "Timer1", 3000),
      filesCompleted(*this, "filesCompleted", "Files completed 0..."),
      currentPath(*this, "currentPath", "Current file / directory") {
  cmdCancel.onClick = frmPermProgress_cmdCancel_Click;
}

void frmPermProgress_cmdCancel_Click() {
  run.bCancelPerms = true;
  unloadForm(frmPermProgress);
}

}  // namespace trelvin
