// What moving so many sites from one server to another costs, each with ten virtual directories and a dozen
// properties a node. Prints, within one run:
//   ratio     time of the export, the target's file included, against the bare time of parsing the source's
//             file and writing the target's with the XML library (at most 10),
//   exponent  how time grows from one size to the next (1 is linear).
// Sizes are arguments; without any, 100, 300 and 1000.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "measured_sites.h"
#include "metabase/site_listing.h"
#include "platform/linux/access_driver.h"
#include "platform/linux/console.h"
#include "platform/linux/file_system.h"
#include "platform/linux/linux_platform.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/platform.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "transfer/export_frame.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;

// A program folder, a server with so many sites and one with none, gone with the object.
class Machines {
 public:
  explicit Machines(int sites)
      : folder_(fs::temp_directory_path() / ("trelvin-move-" + std::to_string(sites))) {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    for (const char* name : {"Trelvin.mdb", "TrelvinData.mdb"}) {
      fs::copy_file(fs::path(TRELVIN_DATABASES) / name, folder_ / name);
    }
    writeMetabase(source(), sites);
    writeMetabase(target(), 0);
    fs::current_path(folder_);
  }
  Machines(const Machines&) = delete;
  Machines& operator=(const Machines&) = delete;
  ~Machines() {
    fs::current_path("/");
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  void use() const {
    const auto toNative = [folder = folder_.string()](std::string_view path) {
      return folder + "/" + std::string(path.substr(path.rfind('\\') + 1));
    };
    platform().databases =
        makeOdbcDatabases([toNative](std::string_view text) { return accessDriverString(text, toNative); });
    platform().files = makeFileSystem(toNative);
    platform().metabase = makeFileMetabase(
        [this](std::string_view server) {
          return std::optional(server == "source" ? source().string() : target().string());
        },
        kMetabasePatience);
    platform().dialogs = makeConsoleDialogs(std::cerr);
  }

  [[nodiscard]] fs::path source() const { return folder_ / "Source.xml"; }
  [[nodiscard]] fs::path target() const { return folder_ / "Target.xml"; }
  [[nodiscard]] fs::path bare() const { return folder_ / "Bare.xml"; }

 private:
  fs::path folder_;
};

struct Times {
  int sites = 0;
  std::size_t values = 0;  // in the target's file
  Spent exporting;
  Spent bare;
};

std::size_t valuesOf(const pugi::xml_document& document) {
  std::size_t count = 0;
  for (const pugi::xml_node element : document.document_element().child("MBProperty").children()) {
    for ([[maybe_unused]] const pugi::xml_attribute attribute : element.attributes()) ++count;
    --count;  // the location
  }
  return count;
}

Times measure(int sites) {
  const Machines machines(sites);
  machines.use();
  renew(frmMain);
  run = RunState{};
  showMainWindow();
  run.bRunSilent = true;
  frmMain.txtImportServer.text = "source";
  frmMain.txtExportServer.text = "target";
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.lstEXIISVer.setListIndex(2);
  frmMain.TabExportType.select(1);
  cmdPopulate_Click();
  for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) frmMain.lstSites.setSelected(i, true);
  run.bCopyFiles = false;

  Times times;
  times.sites = sites;
  // The provider goes with the work, so that the target's file is whole when the clock stops.
  times.exporting = spentOn([] {
    cmdExportServer_Click();
    platform().metabase.reset();
  });
  pugi::xml_document written;
  if (!written.load_file(machines.target().c_str())) throw Failure(error_number::kMetabaseUnreadable);
  times.values = valuesOf(written);
  times.bare = spentOn([&] {
    pugi::xml_document parsed;
    if (!parsed.load_file(machines.source().c_str())) throw Failure(error_number::kMetabaseUnreadable);
    if (!written.save_file(machines.bare().c_str())) throw Failure(error_number::kDiskFull);
  });
  frmMain_Unload();
  return times;
}

void print(const Times& times) {
  std::printf("%d sites, %zu values\n", times.sites, times.values);
  print("exporting", times.exporting);
  print("bare", times.bare);
  std::printf("  ratio         %8.2f                  %8.2f\n",
              times.exporting.processor / times.bare.processor, times.exporting.wall / times.bare.wall);
}

void measureAll(const std::vector<int>& sizes) {
  std::vector<Times> all;
  for (const int size : sizes) {
    all.push_back(measure(size));
    print(all.back());
    if (all.size() < 2) continue;
    const Times& smaller = all[all.size() - 2];
    const Times& larger = all.back();
    std::printf("  exponent      %8.2f\n", exponent(smaller.exporting, larger.exporting,
                                                    static_cast<double>(larger.sites) / smaller.sites));
  }
}

}  // namespace
}  // namespace trelvin

int main(int argc, char** argv) {
  trelvin::useLinuxPlatform(argc, argv, [](std::string_view line) { std::cerr << line << '\n'; });
  std::vector<int> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  if (sizes.empty()) sizes = {100, 300, 1000};
  try {
    trelvin::measureAll(sizes);
    return 0;
  } catch (const trelvin::Failure& failure) {
    std::cerr << failure.description() << '\n';
    return 1;
  }
}
