// Where the program begins: the welcome form and the command line.
#pragma once

#include <string_view>

namespace trelvin {

// Loads the welcome form. An empty command line leaves it up; any other is parsed, opens the main window and
// with it runs the job that it asks for, and takes the form down again. Failures are logged and the next
// statement runs.
void loadWelcomeForm();

// Whether a command line asks for a job, which never needs a window.
bool asksForJob(std::string_view commandLine);

void cmdContinue_Click();
void cmdExit_Click();

}  // namespace trelvin
