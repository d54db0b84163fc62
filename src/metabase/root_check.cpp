#include "metabase/root_check.h"

#include <string>
#include <string_view>
#include <utility>

#include "core/err.h"
#include "core/reporting.h"
#include "core/text.h"
#include "metabase/paths.h"
#include "metabase/site_listing.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

constexpr std::string_view kSoundType = "IIsWebVirtualDir";

// A web site with the node that its content hangs on.
struct SiteRoot {
  std::string path;
  NodeHandle root;
  bool isSound = false;
  std::string comment;
  std::string line;  // what all reports on it begin with
};

void showBox(const std::string& text) {
  platform().dialogs->showMessage({.text = text});
}

// Null when the error state is set behind a bind that went through, which has been shown then. The state is
// cleared first: what went wrong in the window before says nothing about this server.
NodeHandle connectToSource() {
  Err.clear();
  NodeHandle service = getObject(servicePath(frmMain.txtImportServer.text, "w3svc"));
  if (!Err.isSet()) return service;
  showBox("Error connecting to source server " + errText());
  return nullptr;
}

SiteRoot readRoot(const MetabaseNode& site) {
  SiteRoot read;
  read.path = site.adsPath() + "/Root";
  read.root = getObject(read.path);
  const std::string keyType = read.root->get("KeyType").toText();
  read.isSound = equalsIgnoringCase(keyType, kSoundType);
  read.comment = site.get("ServerComment").toText();
  read.line = site.name() + " - " + keyType + " - " + read.comment;
  return read;
}

// Logs every sound root and gives the others to the visitor.
template <typename Visit>
void forEachFaultyRoot(MetabaseNode& service, Visit&& visit) {
  service.forEachChild([&](const NodeHandle& child) {
    if (!equalsIgnoringCase(child->className(), "IIsWebServer")) return;
    const SiteRoot site = readRoot(*child);
    if (!site.isSound) return visit(site);
    writeLog(site.line + " - passed");
    writeLog("Path = " + site.root->get("Path").toText());
  });
}

void logAndShow(const std::string& line) {
  writeLog(line);
  reportProgress(line);
}

void checkRoots(MetabaseNode& service) {
  writeLog("Checking metabase on " + frmMain.txtImportServer.text + " for common mis-configurations.");
  setStatus("Checking...");
  platform().events->doEvents();
  bool isFaulty = false;
  forEachFaultyRoot(service, [&](const SiteRoot& site) {
    logAndShow(site.line + " - failed");
    isFaulty = true;
  });
  platform().events->doEvents();
  platform().events->beep();
  showBox(
      isFaulty
          ? "Your source metabase contains one or more sites that have been incorrectly configured (a list "
            "is displayed in the output window). Transferring these sites will most likely cause your "
            "target server to fail. Take a full backup of the metabase using the backup utility in the "
            "Internet Service Manager, then run the fix tool in Trelvin."
          : "Check complete, no problems found");
  setStatus("");
}

bool userHasBackup() {
  const Answer answer = platform().dialogs->showMessage(
      {.text = "Have you backed up the source metabase using the Internet Service Manager?",
       .buttons = Buttons::kYesNo});
  if (answer == Answer::kYes) return true;
  showBox("Please do so first.");
  return false;
}

void fixRoot(const SiteRoot& site) {
  logAndShow(site.line + " - failed");
  setStatus("Fixing " + site.comment);
  platform().events->doEvents();
  logAndShow(site.line + " - setting");
  site.root->put("KeyType", std::string(kSoundType));
  site.root->setInfo();
  const NodeHandle asStored = getObject(site.path);
  logAndShow("Verifying - Type now = " + asStored->get("KeyType").toText());
  setStatus("Fixing...");
}

void fixRoots(MetabaseNode& service) {
  setStatus("Fixing...");
  platform().events->doEvents();
  writeLog("Fixing metabase on " + frmMain.txtImportServer.text + ".");
  forEachFaultyRoot(service, fixRoot);
  platform().events->doEvents();
  platform().events->beep();
  showBox(
      "Trelvin has finished fixing your metabase for common mis-configurations. Please verify success by "
      "running the check tool again.");
  showBox(
      "Your sites will now be re-enumerated, if you made any changes to their configuration you will have to "
      "do it again.");
  cmdPopulate_Click();
  setStatus("");
}

}  // namespace

void mnuCheckMetabase_Click() {
  handled("mnuCheckMetabase_Click Error ", [] {
    const NodeHandle service = connectToSource();
    if (service) checkRoots(*service);
  });
}

void mnuFixMetabase_Click() {
  handled("mnuFixMetabase_Click Error ", [] {
    const NodeHandle service = connectToSource();
    if (service && userHasBackup()) fixRoots(*service);
  });
}

}  // namespace trelvin
