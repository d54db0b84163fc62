#include "content/permissions.h"

#include <array>
#include <vector>

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// The order in which the values of an entry have always been copied.
constexpr std::array kValueOrder{14, 13, 12, 1, 10, 15, 11, 8, 7, 6, 2, 3, 4, 9, 5};
constexpr int kMostReplacements = 1000;
constexpr std::int16_t kFilesBetweenYields = 20;

std::string pathsForLog(const std::string& source, const std::string& target) {
  return " @S=" + source + "@ @T=" + target + "@";
}

std::string renamed(const std::string& account, const std::string& oldName, const std::string& newName) {
  if (trimmed(oldName).empty()) return account;
  return replaceIgnoringCase(account, oldName, newName, kMostReplacements);
}

// One entry at a time, written after each.
void emptyList(AccessList& list) {
  std::int32_t count = 0;
  list.forEachAccount([&](const AccessEntry&) { ++count; });
  for (std::int32_t i = 0; i < count; ++i) {
    list.removeAccount(1);
    list.writeAccounts();
  }
}

void copyEntries(const AccessList& source, AccessList& target, const std::string& oldName,
                 const std::string& newName) {
  source.forEachAccount([&](const AccessEntry& entry) {
    AccessEntry& added = target.addAccount();
    added.setAccountName(renamed(entry.accountName(), oldName, newName));
    for (const int value : kValueOrder) added.setAccessValue(value, entry.accessValue(value));
  });
  target.writeAccounts();
}

void applyList(FrmMain& form, const AccessList& source, const std::string& targetPath, bool secondFlag,
               const std::string& oldName, const std::string& newName) {
  bound(form.NTFSCtl2.object).setFileOrDirectory(targetPath);
  const std::unique_ptr<AccessList> target = bound(form.NTFSCtl2.object).getAccounts();
  bound(target).setFirstApplyFlag(false);
  bound(target).setSecondApplyFlag(secondFlag);
  emptyList(*target);
  copyEntries(source, *target, oldName, newName);
}

void copyList(FrmMain& form, const std::string& sourcePath, const std::string& targetPath,
              const std::string& oldName, const std::string& newName) {
  bound(form.NTFSCtl1.object).setFileOrDirectory(sourcePath);
  const std::unique_ptr<AccessList> source = bound(form.NTFSCtl1.object).getAccounts();
  applyList(form, bound(source), targetPath, false, oldName, newName);
  // The second pass stands in for the visit to each file, which the fast mode leaves out.
  if (run.bFastPerms) applyList(form, bound(source), targetPath, true, oldName, newName);
  ++run.lPermsSet;
}

// One folder of the walk. Its failures are logged and the next statement runs, but one that the control
// raised, which ends the whole walk.
class FolderWalk {
 public:
  FolderWalk(FrmMain& form, const std::string& source, const std::string& target, const std::string& oldName,
             const std::string& newName)
      : form_(form), vSource_(source), vTarget_(target), vOldName_(oldName), sNewName_(newName) {}

  void go() {
    std::vector<std::string> folders;
    step([&] { folders = platform().files->folderNames(vSource_); });
    step([] { ++run.lPermsSet; });
    setFolder();
    if (!run.bFastPerms) setFiles();
    walkFolders(folders);
  }

 private:
  template <typename Statement>
  void step(Statement&& statement) {
    if (hasQuit_) return;
    handledBy([&](const Failure& failure) { logAndMaybeQuit(failure); }, std::forward<Statement>(statement));
  }

  void logAndMaybeQuit(const Failure& failure) {
    writeLog("synchPermissions Error " + std::to_string(failure.number()) + " " + failure.description() +
             pathsForLog(vSource_, vTarget_));
    if (failure.number() != error_number::kControlException) return;
    writeLog(
        "Quitting permission setter due to missing files, copy file procedure may have been aborted by user");
    run.bCancelPerms = true;
    hasQuit_ = true;
  }

  void setFolder() {
    step([&] {
      if (!bothAreFolders(vSource_, vTarget_)) return;
      setPerms(form_, vSource_, vTarget_, vOldName_, sNewName_);
      if (run.bFastPerms) platform().events->doEvents();
    });
  }

  void setFiles() {
    std::vector<std::string> names;
    step([&] { names = platform().files->fileNames(vSource_); });
    for (const std::string& name : names) {
      step([&] { countFile(); });
      if (run.bCancelPerms || hasQuit_) return;
      step([&] {
        const std::string source = vSource_ + "\\" + name;
        const std::string target = vTarget_ + "\\" + name;
        if (platform().files->fileExists(source) && platform().files->fileExists(target)) {
          setPerms(form_, source, target, vOldName_, sNewName_);
        }
      });
    }
  }

  static void countFile() {
    ++run.iFileTick;
    if (run.iFileTick <= kFilesBetweenYields) return;
    platform().events->doEvents();
    run.iFileTick = 0;
  }

  void walkFolders(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      if (run.bCancelPerms || hasQuit_) return;
      step([&] {
        const std::string source = vSource_ + "\\" + name;
        const std::string target = vTarget_ + "\\" + name;
        if (bothAreFolders(source, target)) synchPermissions(form_, source, target, vOldName_, sNewName_);
      });
    }
  }

  static bool bothAreFolders(const std::string& source, const std::string& target) {
    return platform().files->folderExists(source) && platform().files->folderExists(target);
  }

  FrmMain& form_;
  const std::string& vSource_;
  const std::string& vTarget_;
  const std::string& vOldName_;
  const std::string& sNewName_;
  bool hasQuit_ = false;
};

}  // namespace

void synchPermissions(FrmMain& oForm, const std::string& vSource, const std::string& vTarget,
                      const std::string& vOldName, const std::string& sNewName) {
  FolderWalk(oForm, vSource, vTarget, vOldName, sNewName).go();
}

void setPerms(FrmMain& oForm, const std::string& vSource, const std::string& vTarget,
              const std::string& vOldName, const std::string& sNewName) {
  const auto report = [&](const Failure& failure) {
    writeLog("setPerms Error " + std::to_string(failure.number()) + " " + failure.description() +
             pathsForLog(vSource, vTarget));
    writeLog(oForm.NTFSCtl1.object ? oForm.NTFSCtl1.object->lastError() : std::string());
    if (failure.number() == error_number::kControlException) run.bCancelPerms = true;
  };
  handledBy(report, [&] { copyList(oForm, vSource, vTarget, vOldName, sNewName); });
}

void syncPermTimer_Timer() {
  setStatus(std::to_string(run.lPermsSet) + " file permissions set");
}

}  // namespace trelvin
