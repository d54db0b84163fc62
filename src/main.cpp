// Picks the platform set, starts the welcome form and stays as long as a form is up.
#include <clocale>
#include <cstdio>
#include <iostream>

#include "core/err.h"
#include "core/main_window.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/start_up.h"
#include "platform/linux/linux_platform.h"
#include "window/frm_main.h"

namespace {

using namespace trelvin;

constexpr int kFailed = 1;

// A scheduler's mail shows what the output list would show.
void mirrorOutputList() {
  frmMain.lstOutput.onAddItem = [](const std::string& line) { std::cout << line << std::endl; };
}

// What a window's loop would do: without one nobody can ever touch the forms that are still up.
int endWithoutWindow() {
  if (!anyFormLoaded()) return 0;
  if (!run.bRunBackup) {
    unloadForm(frmMain);
    std::cerr << "trelvin: there is no display to open a window on, and no job was asked for (-RUNBACKUP)\n";
    return kFailed;
  }
  std::cerr << "trelvin: the job could not be run; Trelvin.log in the current folder tells why\n";
  const bool jobWasReached = run.bRunSilent;
  unloadForm(frmMain);
  // A job that was run ends with 0 whatever came of it: its log is what tells.
  return jobWasReached ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  // Dates and messages in the user's language; numbers stay as the program and its databases write them.
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_TIME, "");
  std::setlocale(LC_MESSAGES, "");
  useLinuxPlatform(argc, argv, [](std::string_view line) { attempt([&] { writeLog(line); }); });
  mirrorOutputList();
  try {
    loadWelcomeForm();
    return endWithoutWindow();
  } catch (const Failure& failure) {
    std::cerr << "Run-time error '" << failure.number() << "': " << failure.description() << '\n';
    return kFailed;
  }
}
