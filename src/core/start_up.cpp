#include "core/start_up.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "core/err.h"
#include "core/helpers.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_splash.h"
#include "window/wiring.h"

namespace trelvin {

namespace {

constexpr std::string_view kLoadLabel = "frmSplash_Load Error ";

enum class Mode { kNormal, kConnectionString, kBackupJob };

// Whether a token is a switch: its word behind "-" or "/", in any case.
bool isSwitch(std::string_view token, std::string_view word) {
  return !token.empty() && (token[0] == '-' || token[0] == '/') && equalsIgnoringCase(token.substr(1), word);
}

// A name is taken as it stands only when a drive begins it. A UNC path has no ":" in that place and is put
// behind the program folder like any relative name.
std::string jobPath(const std::string& token) {
  if (token.size() > 1 && lastCharacters(firstCharacters(token, 2), 1) == ":") return token;
  return platform().application->path() + "\\" + token;
}

// A value belongs to the last "-C" or "-B" before it.
void takeValue(const std::string& token, Mode mode) {
  if (mode == Mode::kConnectionString) run.sCmdConnection += token + " ";
  if (mode == Mode::kBackupJob) run.sBackupJob = jobPath(token);
}

bool isRunBackup(const std::string& token) {
  return isSwitch(token, "RUNBACKUP") || equalsIgnoringCase(token, "RUNBACKUP");
}

void takeToken(const std::string& token, Mode& mode) {
  if (isRunBackup(token)) {
    run.bRunBackup = true;
  } else if (isSwitch(token, "C")) {
    mode = Mode::kConnectionString;
  } else if (isSwitch(token, "B")) {
    mode = Mode::kBackupJob;
  } else if (isSwitch(token, "D")) {
    run.bDebug = true;
  } else if (isSwitch(token, "F")) {
    run.bSkipFilters = false;
  } else if (isSwitch(token, "SKIPHEADERS")) {
    run.bAddHeaders = false;  // which it is already: the marker header is always written
  } else {
    takeValue(token, mode);
  }
}

void parse(const std::string& commandLine) {
  run.bRunBackup = false;
  run.sCmdConnection.clear();
  Mode mode = Mode::kNormal;
  for (const std::string& token : split(commandLine, ' ')) {
    resumed(kLoadLabel, [&] { takeToken(token, mode); });
  }
}

void openMainWindow() {
  // No switch names an import or an export type, so that both words are empty here.
  const std::string importType;
  const std::string exportType;
  if (equalsIgnoringCase(importType, "DATABASE") && equalsIgnoringCase(exportType, "DATABASE")) {
    platform().dialogs->showMessage(
        {.text = "You cannot import from and export to a database. You must specify an IIS "
                 "server for either import or export"});
    return;
  }
  showMainWindow();
}

}  // namespace

void loadWelcomeForm() {
  wireWelcomeForm();
  frmSplash.loaded = true;
  resumed(kLoadLabel, [] { frmSplash.lblAbout.caption = "Trelvin Utility v" + programVersion(); });
  run.bSkipFilters = true;
  std::string commandLine;
  resumed(kLoadLabel, [&] { commandLine = platform().application->commandLine(); });
  if (commandLine.empty()) {
    frmSplash.visible = true;
    return;
  }
  parse(commandLine);
  resumed(kLoadLabel, [] { openMainWindow(); });
  resumed(kLoadLabel, [] { unloadForm(frmSplash); });
}

bool asksForJob(std::string_view commandLine) {
  const auto tokens = split(commandLine, ' ');
  return std::any_of(tokens.begin(), tokens.end(), isRunBackup);
}

void cmdContinue_Click() {
  handled("frmSplash_cmdContinue Error ", [] {
    showMainWindow();
    unloadForm(frmSplash);
  });
}

void cmdExit_Click() {
  unloadForm(frmSplash);
}

}  // namespace trelvin
