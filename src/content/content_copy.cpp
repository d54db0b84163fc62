#include "content/content_copy.h"

#include <vector>

#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/platform.h"

namespace trelvin {

namespace {

// What stands before the last backslash; the text itself, shortened by nothing, when there is none.
std::string parentOf(const std::string& path) {
  const std::string backwards = ReverseString(path);
  const std::size_t behind = backwards.find('\\');
  if (behind == std::string::npos) return path;
  return path.substr(0, path.size() - behind - 1);
}

// Whether there is a folder to look for: the two backslashes before a server's name are none.
bool leadsFurtherUp(const std::string& path) {
  return path.find('\\') != std::string::npos && path.find_first_not_of('\\') != std::string::npos;
}

void createMissingFolders(const std::string& target) {
  std::vector<std::string> missing;
  std::string working = target;
  while (!platform().files->folderExists(working)) {
    missing.push_back(working);
    working = parentOf(working);
    if (!leadsFurtherUp(working)) break;
  }
  if (!leadsFurtherUp(working)) return;
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder)
    platform().files->createFolder(*folder);
}

// An Abort ends the asking and not the copy, which the shell refuses on its own terms.
void askUntilThere(const std::string& path, const char* kind) {
  while (!checkFolder(path, kind)) {
    if (run.bExportCancelled) return;
  }
}

void copyTree(const std::string& source, const std::string& target, const std::string& title) {
  const std::string parent = parentOf(target);
  if (!platform().files->folderExists(target)) createMissingFolders(target);
  askUntilThere(source, "Source");
  askUntilThere(target, "Target");
  // What the shell says is not looked at.
  bound(platform().shell)
      .copy({.from = source,
             .to = parent,
             .progressTitle = trimmed(title).empty() ? "Copying files..." : title});
}

void reportCopyFailure(const Failure& failure, const std::string& source, const std::string& target) {
  if (failure.number() != error_number::kBadFileName) {
    writeLog("Failed copying files from " + source + " to " + target + " Err " +
             std::to_string(failure.number()) + " " +
             std::to_string(platform().shell ? platform().shell->lastSystemError() : 0));
    return;
  }
  const std::string text = "Failed while trying to re-create the directory structure for " + target +
                           " check that the drive exists and suitable permissions are available.";
  writeLog(text);
  if (!run.bRunSilent) platform().dialogs->showMessage({.text = text});
}

}  // namespace

std::string sharePath(const std::string& server, const std::string& localPath) {
  return "\\\\" + server + "\\" + replaceAll(localPath, ":", "$");
}

void copyFolder(const std::string& sSource, const std::string& sTarget, const std::string& sTitle) {
  handledBy([&](const Failure& failure) { reportCopyFailure(failure, sSource, sTarget); },
            [&] { copyTree(sSource, sTarget, sTitle); });
}

bool checkFolder(const std::string& sPath, const std::string& sKind) {
  if (platform().files->folderExists(sPath)) return true;
  writeLog("Could not find " + sKind + " folder " + sPath);
  if (run.bRunSilent) return true;
  const Answer answer = platform().dialogs->showMessage(
      {.text =
           "Directory " + sPath +
           " could not be read, you may not have created the share. Click Abort to stop the entire transfer, "
           "ignore to continue or create the share now and press retry. ",
       .buttons = Buttons::kAbortRetryIgnore,
       .title = sKind + " directory not found"});
  if (answer == Answer::kAbort) run.bExportCancelled = true;
  return answer != Answer::kRetry;
}

}  // namespace trelvin
