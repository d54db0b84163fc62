// The main window comes up and goes down.
#pragma once

namespace trelvin {

class Failure;
class Form;

// Loads the main window if it isn't loaded, and shows it. A job that was asked for runs within the load, and
// its end unloads the window again, which is then never shown. The load has no handler: a failure goes to the
// caller.
void showMainWindow();

// Runs the form's unload and marks it as gone.
void unloadForm(Form& form);
bool anyFormLoaded();
// What becomes of a failure that no handler has met: the platform's message, and the end of the process with
// status 1.
void endWithRunTimeError(const Failure& failure);

void frmMain_Load();
void frmMain_Resize();
void frmMain_Unload();
void mnuExit_Click();
void timExit_Timer();

}  // namespace trelvin
