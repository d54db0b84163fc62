#include "core/reporting.h"

#include "core/err.h"
#include "core/run_state.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

void writeLog(std::string_view message) {
  std::string line = "\"";
  line += platform().clock->generalText(platform().clock->now());
  line += ' ';
  line += message;
  line += "\"\r\n";
  platform().files->appendText("Trelvin.log", line);
}

void debugLog(std::string_view message) {
  if (run.bDebug) writeLog(message);
}

void logFailure(std::string_view label, const Failure& failure) {
  writeLog(std::string(label) + std::to_string(failure.number()) + " " + failure.description());
}

void tellUser(const std::string& message) {
  if (run.bRunSilent) {
    addOutput(message);
  } else {
    platform().dialogs->showMessage({.text = message});
  }
}

void tellUserAndLog(const std::string& message) {
  tellUser(message);
  writeLog(message);
}

void addOutput(const std::string& line) {
  frmMain.lstOutput.addItem(line);
}

void showLastLine() {
  frmMain.lstOutput.setListIndex(frmMain.lstOutput.listCount() - 1);
  frmMain.lstOutput.refresh();
}

void reportProgress(const std::string& line) {
  addOutput(line);
  showLastLine();
}

void setStatus(const std::string& text) {
  frmMain.StatusBar1.panel = text;
  frmMain.StatusBar1.refresh();
}

std::string errText() {
  return std::to_string(Err.number) + " " + Err.description;
}
std::string errTextWithDash() {
  return std::to_string(Err.number) + " - " + Err.description;
}

void debugLogIfErr(std::string_view text) {
  if (!run.bDebug || !Err.isSet()) return;
  writeLog(text);
  Err.clear();
}

void lstOutput_DblClick() {
  if (!run.bRunSilent) platform().dialogs->showMessage({.text = frmMain.lstOutput.text()});
}

}  // namespace trelvin
