// A form that was made to show the progress of a permission walk. No routine opens it, and nothing fills its
// count and path; the main window's status bar shows the walk instead.
#pragma once

#include "window/controls.h"

namespace trelvin {

class FrmPermProgress : public Form {
 public:
  FrmPermProgress();

  Button cmdCancel;
  Timer Timer1;
  Label filesCompleted;  // first panel of the form's status bar
  Label currentPath;     // second panel
};

inline FrmPermProgress frmPermProgress;

// Stops the walk at its next test and takes the form down.
void frmPermProgress_cmdCancel_Click();

}  // namespace trelvin
