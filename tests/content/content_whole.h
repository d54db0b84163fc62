// Two servers with files and access lists, and a run from one to the other.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "fakes/export_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {

// Has the platform's controls find the access lists that they have set. Some machines keep none with their
// files; on an emulated Windows, which never does, they are kept in memory instead. False where there are
// none at all.
bool provideAccessLists(const std::filesystem::path& probe);

inline constexpr std::int32_t kFilesAndFoldersInherit = 3;
inline constexpr std::int32_t kRead = 0x001200A9;

// A run as a person starts it.
class ContentWhole : public ExportTest {
 protected:
  void SetUp() override {
    if (!provideAccessLists(folder.write("network/probe", ""))) {
      GTEST_SKIP() << "the file system of " << folder.path() << " keeps no access lists";
    }
    openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "D:\\sites\\shop"}})));
    addServer("WEB2", metabaseFile(webService("")));
    folder.write("network/WEB1/D$/sites/shop/index.htm", "welcome");
    folder.write("network/WEB1/D$/sites/shop/img/logo.gif", "GIF89a");
    folder.makeFolder("network/WEB2/D$");
    frmMain.TabExportType.select(1);
    frmMain.txtExportServer.text = "WEB2";
    frmMain.chkCopyFiles.setValue(true);
    frmMain.chkSetFilePerms.setValue(true);
    transferOnly({"Path", "ServerComment", "KeyType"});
    select({0});
  }

  void transfer() {
    dialogs->answers.assign(1, Answer::kOk);
    frmMain.cmdExportServer.onClick();
  }
  static void setList(const std::string& path, const std::vector<std::string>& accounts) {
    const std::unique_ptr<NtfsControl> control = platform().createNtfsControl();
    control->setFileOrDirectory(path);
    const std::unique_ptr<AccessList> list = control->getAccounts();
    for (const std::string& account : accounts) {
      AccessEntry& entry = list->addAccount();
      entry.setAccountName(account);
      entry.setAccessValue(2, kFilesAndFoldersInherit);
      entry.setAccessValue(3, kRead);
    }
    list->writeAccounts();
  }
  // The accounts of a path, each with its mask in front.
  static std::vector<std::string> listOf(const std::string& path) {
    const std::unique_ptr<NtfsControl> control = platform().createNtfsControl();
    control->setFileOrDirectory(path);
    std::vector<std::string> entries;
    control->getAccounts()->forEachAccount([&](const AccessEntry& entry) {
      entries.push_back(std::to_string(entry.accessValue(3)) + " " + entry.accountName());
    });
    return entries;
  }
  static std::string entry(const std::string& account) { return std::to_string(kRead) + " " + account; }
};

}  // namespace trelvin::test
