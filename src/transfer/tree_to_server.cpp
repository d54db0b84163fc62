#include "transfer/tree_to_server.h"

#include "core/err.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "metabase/applications.h"
#include "metabase/paths.h"
#include "metabase/site_details.h"
#include "transfer/target_server.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

// One level of the walk. What could not be read of a child keeps the value of the child before it.
class TreeLevel {
 public:
  TreeLevel(const std::string& path, const std::string& base, TreeNames& names)
      : sPath_(path), sBase_(base), names_(names) {}

  void walk(const NodeHandle& node) {
    attempt([&] { bound(node).forEachChild([&](const NodeHandle& child) { visit(child); }); });
  }

 private:
  void visit(const NodeHandle& child) {
    child_ = child;
    if (holdsOrFails([&] { return isClass(child_->className(), "VirtualDir"); })) {
      createVirtualDirectory();
      createApplicationOf("virtual directory");
    } else if (holdsOrFails([&] { return isClass(child_->className(), "Directory"); })) {
      createDirectory();
      createApplicationOf("directory");
    }
    collectPropertyNames();
    attempt([&] {
      const std::string below = targetName();
      TreeLevel(below, sBase_, names_).walk(child_);
    });
  }

  // The child's path on the target below the service, and its path below the site.
  [[nodiscard]] std::string targetName() const { return sPath_ + "/" + child_->name(); }
  [[nodiscard]] std::string relative() const { return sPath_.substr(sBase_.size()) + "/" + child_->name(); }
  [[nodiscard]] std::string targetOf(const std::string& name) const {
    return targetServicePath() + "/" + name;
  }

  void bindParentAndChild() {
    attempt([&] { oParent_ = getObject(targetOf(sPath_)); });
    Err.clear();
    attempt([&] { oChild_ = getObject(targetOf(targetName())); });
  }

  void announce(const char* what) {
    attempt([&] { reportProgress(std::string("Creating ") + what + " " + targetName()); });
    attempt([&] { writeLog(std::string("Creating ") + what + " " + targetName()); });
  }

  void create(const char* suffix) {
    attempt([&] { oChild_ = bound(oParent_).create(classWord(suffix), child_->name()); });
    attempt([&] { bound(oChild_).setInfo(); });
    Err.clear();
  }

  void createVirtualDirectory() {
    bindParentAndChild();
    if (!Err.isSet()) {
      attempt([&] { writeLog("Deleting virtual directory " + targetName()); });
      attempt([&] { bound(oParent_).deleteChild(classWord("VirtualDir"), child_->name()); });
      Err.clear();
    }
    announce("virtual directory");
    create("VirtualDir");
    // The lookup has always been made four times; only a debug log shows it.
    for (int lookup = 1; run.bDebug && lookup < 4; ++lookup) attempt([&] { getNewDir(relative()); });
    // A directory that the mapping doesn't know gets the empty path.
    attempt([&] { bound(oChild_).put("Path", applyFindReplace(getNewDir(relative()))); });
    attempt([&] { bound(oChild_).setInfo(); });
    logAndClear("Error setting path for virtual directory ");
  }

  void createDirectory() {
    bindParentAndChild();
    // Unlike a virtual directory, one that is there stays.
    if (Err.isSet()) {
      announce("directory");
      create("Directory");
    }
    Err.clear();
    if (!attempt([&] { static_cast<void>(child_->get("Path")); })) return;
    // The parent gets the path, not the child: that is how directories have always travelled.
    attempt([&] { bound(oParent_).put("Path", applyFindReplace(getNewDir(relative()))); });
    attempt([&] { bound(oParent_).setInfo(); });
    logAndClear("Error setting path for directory ");
  }

  void createApplicationOf(const char* what) {
    attempt([&] { vAppRoot_ = child_->get("AppRoot"); });
    attempt([&] { lAppIsolated_ = child_->get("AppIsolated").toLong(); });
    attempt([&] { sAppPoolID_ = child_->get("AppPoolID").toText(); });
    bInProc_ = lAppIsolated_ == 0;
    if (!holdsOrFails([&] { return isApplicationRoot(vAppRoot_, child_->name()); })) return;
    attempt([&] { oChild_ = getObject(targetOf(targetName())); });
    attempt([&] { createApplication(oChild_, lAppIsolated_, sAppPoolID_, bInProc_); });
    logAndClear(std::string("Error creating Application for ") + what + " ");
  }

  void logAndClear(const std::string& words) {
    if (!Err.isSet()) return;
    const std::string cause = errorAndCause();
    attempt([&] { writeLog(words + targetName() + cause); });
    Err.clear();
  }

  void collectPropertyNames() {
    Err.clear();
    attempt([&] { schemaClass_ = getObject(child_->schema()); });
    names_.collect(schemaClass_);
    attempt([] { showLastLine(); });
  }

  const std::string& sPath_;
  const std::string& sBase_;
  TreeNames& names_;
  NodeHandle child_;
  NodeHandle oParent_;
  NodeHandle oChild_;
  NodeHandle schemaClass_;
  Value vAppRoot_;
  std::int32_t lAppIsolated_ = 0;
  std::string sAppPoolID_;
  bool bInProc_ = false;
};

}  // namespace

void copyTreeToServer(const NodeHandle& oNode, const std::string& sPath, const std::string& sBase,
                      TreeNames& names) {
  names.begin();
  TreeLevel(sPath, sBase, names).walk(oNode);
}

}  // namespace trelvin
