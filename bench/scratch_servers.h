// Servers and databases in a folder of their own, and the window on them, for runs that are measured as a
// whole.
#pragma once

#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "measured_sites.h"
#include "platform/linux/access_driver.h"
#include "platform/linux/file_system.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/platform.h"
#include "platform/shared/console.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "window/frm_main.h"

namespace trelvin {

// A program folder whose servers are files of their names, gone with the object.
class ScratchServers {
 public:
  explicit ScratchServers(const std::string& name) : folder_(std::filesystem::temp_directory_path() / name) {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    for (const char* database : {"Trelvin.mdb", "TrelvinData.mdb"}) {
      std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / database, folder_ / database);
    }
    std::filesystem::current_path(folder_);
  }
  ScratchServers(const ScratchServers&) = delete;
  ScratchServers& operator=(const ScratchServers&) = delete;
  ~ScratchServers() {
    std::filesystem::current_path("/");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  void addServer(const std::string& name, int sites) const { writeMetabase(fileOf(name), sites); }
  [[nodiscard]] std::filesystem::path fileOf(std::string_view server) const {
    return folder_ / (std::string(server) + ".xml");
  }

  // Makes the platform one of these servers and shows the window, silent and with IIS 6 on both sides.
  void open() const {
    const auto toNative = [folder = folder_.string()](std::string_view path) {
      return folder + "/" + std::string(path.substr(path.rfind('\\') + 1));
    };
    platform().databases =
        makeOdbcDatabases([toNative](std::string_view text) { return accessDriverString(text, toNative); });
    platform().files = makeFileSystem(toNative);
    platform().dialogs = makeConsoleDialogs(std::cerr);
    useMetabases();
    renew(frmMain);
    run = RunState{};
    Err.clear();
    showMainWindow();
    run.bRunSilent = true;
    frmMain.lstIMIISVer.setListIndex(2);
    frmMain.lstEXIISVer.setListIndex(2);
    frmMain.TabExportType.select(1);
  }

  void useMetabases() const {
    platform().metabase =
        makeFileMetabase([this](std::string_view server) { return std::optional(fileOf(server).string()); },
                         kMetabasePatience);
  }

 private:
  std::filesystem::path folder_;
};

inline void selectEverySite() {
  for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) frmMain.lstSites.setSelected(i, true);
}

}  // namespace trelvin
