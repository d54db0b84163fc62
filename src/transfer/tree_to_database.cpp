#include "transfer/tree_to_database.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "metabase/applications.h"
#include "metabase/paths.h"
#include "stores/statements.h"
#include "transfer/property_list.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// One level of the walk. What could not be read of a child keeps the value of the child before it.
class TreeLevel {
 public:
  TreeLevel(const std::string& parentPath, const std::string& siteNumber, TreeNames& names)
      : sParentPath_(parentPath), sSiteNumber_(siteNumber), names_(names) {}

  void walk(const NodeHandle& node) {
    attempt([&] { bound(node).forEachChild([&](const NodeHandle& child) { visit(child); }); });
  }

 private:
  void visit(const NodeHandle& child) {
    child_ = child;
    sLocalName_.clear();
    sAppPath_.clear();
    if (holdsOrFails([&] { return isClass(child_->className(), "VirtualDir"); })) {
      storeVirtualDirectory();
    } else if (holdsOrFails([&] { return isClass(child_->className(), "Directory"); })) {
      storeDirectory();
    }
    collectPropertyNames();
    attempt([&] {
      const std::string below = path();
      TreeLevel(below, sSiteNumber_, names_).walk(child_);
    });
  }

  [[nodiscard]] std::string path() const { return sParentPath_ + "/" + child_->name(); }

  void readApplication(const char* kindOfDirectory) {
    attempt([&] { addOutput(std::string("Exporting ") + kindOfDirectory + " " + path()); });
    attempt([&] { writeLog(std::string("Exporting ") + kindOfDirectory + " " + path()); });
    attempt([&] { sLocalName_ = child_->name(); });
    attempt([&] { vAppRoot_ = child_->get("AppRoot"); });
    attempt([&] { lAppIsolated_ = child_->get("AppIsolated").toLong(); });
    attempt([&] { sAppPoolID_ = child_->get("AppPoolID").toText(); });
    bInProcess_ = lAppIsolated_ == 0;
    if (holdsOrFails([&] { return isApplicationRoot(vAppRoot_, child_->name()); })) {
      attempt([&] { sAppPath_ = path(); });
    } else {
      attempt([&] { debugLog("App Path not set - " + vAppRoot_.toText() + " Could be " + path()); });
    }
    vDirectory_.clear();
  }

  [[nodiscard]] statements::TreeRow row() const {
    return {.site = sSiteNumber_,
            .location = path(),
            .localPath = sLocalName_,
            .appPath = sAppPath_,
            .inProcess = inProcessValue(),
            .nodeClass = child_->className(),
            .directory = vDirectory_,
            .pool = poolName()};
  }

  // A server of IIS 4 knows in process or not; later ones have a number for it.
  [[nodiscard]] std::string inProcessValue() const {
    return applicationCall() == ApplicationCall::kAppCreate ? textOf(bInProcess_)
                                                            : std::to_string(lAppIsolated_);
  }

  [[nodiscard]] std::string poolName() const {
    return applicationCall() == ApplicationCall::kAppCreate3 ? sAppPoolID_ : std::string();
  }

  void takeDirectory(std::int32_t i) {
    attempt([&] { vDirectory_ = applyFindReplace(frmMain.lstDirectories(0).list(i)); });
  }

  // The last entry that equals the path counts, and a directory without one is stored with none.
  void storeDirectory() {
    readApplication("directory");
    const ListControl& folders = frmMain.lstFolders(0);
    for (std::int32_t i = 0; i < folders.listCount(); ++i) {
      if (holdsOrFails([&] { return folders.list(i) == path(); })) takeDirectory(i);
    }
    buildAndExecuteOnData([&] { return statements::addDirectoryTreeRow(row()); });
  }

  void storeVirtualDirectory() {
    readApplication("virtual directory");
    searchDirectory();
    if (!vDirectory_.empty()) {
      buildAndExecuteOnData([&] { return statements::addVirtualDirectoryTreeRow(row()); });
    } else {
      storeVirtualDirectoryFoundLate();
    }
  }

  // The first entry that equals the path counts.
  void searchDirectory() {
    const ListControl& folders = frmMain.lstFolders(0);
    attempt([&] { writeLog("Searching for path for " + path()); });
    attempt([&] { writeLog(std::to_string(folders.listCount()) + " directories to look through"); });
    for (std::int32_t i = 0; i < folders.listCount(); ++i) {
      attempt([&] { logTry("Trying ", folders.list(i)); });
      if (!holdsOrFails([&] { return folders.list(i) == path(); })) continue;
      takeDirectory(i);
      return;
    }
  }

  // Entries without their leading slash are looked for too, yet the statement for them is one that no
  // database takes.
  void storeVirtualDirectoryFoundLate() {
    attempt([&] { debugLog("Could not find a directory " + path()); });
    attempt([] { debugLog("Trying again..."); });
    const ListControl& folders = frmMain.lstFolders(0);
    for (std::int32_t i = 0; i < folders.listCount(); ++i) {
      attempt([&] { logTry("Trying /", folders.list(i)); });
      if (holdsOrFails([&] { return "/" + folders.list(i) == path(); })) takeDirectory(i);
    }
    if (vDirectory_.empty()) {
      attempt([] { debugLog("Failed, giving up"); });
      return;
    }
    buildAndExecuteOnData([&] { return statements::addLateVirtualDirectoryTreeRow(row()); });
    attempt([] { debugLog("Success"); });
  }

  void logTry(const std::string& words, const std::string& entry) const {
    if (!run.bDebug) return;
    writeLog(words + entry + " = " + path());
    const std::string slash = words.ends_with('/') ? "/" : "";
    writeLog(textOf(slash + entry == path()));
  }

  void collectPropertyNames() {
    attempt([&] { schemaClass_ = getObject(child_->schema()); });
    names_.collect(schemaClass_);
    attempt([] { showLastLine(); });
  }

  const std::string& sParentPath_;
  const std::string& sSiteNumber_;
  TreeNames& names_;
  NodeHandle child_;
  NodeHandle schemaClass_;
  std::string sLocalName_;
  std::string sAppPath_;
  Value vAppRoot_;
  std::int32_t lAppIsolated_ = 0;
  std::string sAppPoolID_;
  bool bInProcess_ = false;
  std::string vDirectory_;
};

}  // namespace

void exportSiteTree(const NodeHandle& objParent, const std::string& sParentPath,
                    const std::string& sSiteNumber) {
  TreeNames names;
  names.begin();
  TreeLevel(sParentPath, sSiteNumber, names).walk(objParent);
}

}  // namespace trelvin
