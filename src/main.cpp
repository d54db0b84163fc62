// Picks the platform set, then runs the job that is asked for, without a window, or opens the window.
#include <iostream>

#include "core/err.h"
#include "core/main_window.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/start_up.h"
#include "desktop/run_desktop.h"
#include "platform/platform.h"
#include "platform/system_platform.h"
#include "window/frm_main.h"

namespace {

using namespace trelvin;

constexpr int kFailed = 1;

// A scheduler's mail shows what the output list would show.
void mirrorOutputList() {
  frmMain.lstOutput.onAddItem = [](const std::string& line) { std::cout << line << std::endl; };
}

// A job runs within the load of the welcome form and takes all forms down when it is done.
int runJob() {
  mirrorOutputList();
  loadWelcomeForm();
  if (!anyFormLoaded()) return 0;
  std::cerr << "trelvin: the job could not be run; Trelvin.log in the current folder tells why\n";
  const bool jobWasReached = run.bRunSilent;
  unloadForm(frmMain);
  // A job that was run ends with 0 whatever came of it: its log is what tells.
  return jobWasReached ? 0 : kFailed;
}

int runWindow(char** argv) {
  if (!desktop::hasDisplay()) {
    std::cerr << "trelvin: there is no display to open a window on, and no job was asked for (-RUNBACKUP)\n";
    return kFailed;
  }
  return desktop::runDesktop(argv);
}

}  // namespace

int main(int argc, char** argv) {
  useLanguageOfUser();
  useSystemPlatform(argc, argv, [](std::string_view line) { attempt([&] { writeLog(line); }); });
  try {
    return asksForJob(platform().application->commandLine()) ? runJob() : runWindow(argv);
  } catch (const Failure& failure) {
    std::cerr << "Run-time error '" << failure.number() << "': " << failure.description() << '\n';
    return kFailed;
  }
}
