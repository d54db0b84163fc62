// What moving so many sites from one server to another costs, each with ten virtual directories and a dozen
// properties a node. Prints, within one run:
//   ratio     time of the export, the target's file included, against the bare time of parsing the source's
//             file and writing the target's with the XML library (the aim is 10; it is not reached, as six
//             reads of the settings database for each site cost 9 by themselves and its 17 lines of the log,
//             each with the file opened and closed, 4; the values cost 12, the directories 5, the new file
//             2),
//   exponent  how time grows from one size to the next (1 is linear).
// Sizes are arguments; without any, 100, 300 and 1000.
#include <cstdio>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "core/err.h"
#include "metabase/site_listing.h"
#include "scratch_servers.h"
#include "transfer/export_frame.h"

namespace trelvin {
namespace {

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
  const ScratchServers servers("trelvin-move-" + std::to_string(sites));
  servers.addServer("source", sites);
  servers.addServer("target", 0);
  servers.open();
  frmMain.txtImportServer.text = "source";
  frmMain.txtExportServer.text = "target";
  cmdPopulate_Click();
  selectEverySite();
  run.bCopyFiles = false;

  Times times;
  times.sites = sites;
  // The provider goes with the work, so that the target's file is whole when the clock stops.
  times.exporting = spentOn([] {
    cmdExportServer_Click();
    platform().metabase.reset();
  });
  pugi::xml_document written;
  if (!written.load_file(servers.fileOf("target").c_str())) throw Failure(error_number::kMetabaseUnreadable);
  times.values = valuesOf(written);
  times.bare = spentOn([&] {
    pugi::xml_document parsed;
    if (!parsed.load_file(servers.fileOf("source").c_str())) throw Failure(error_number::kMetabaseUnreadable);
    if (!written.save_file(servers.fileOf("bare").c_str())) throw Failure(error_number::kDiskFull);
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

}  // namespace
}  // namespace trelvin

int main(int argc, char** argv) {
  return trelvin::measureSizes(argc, argv, {100, 300, 1000}, [](const std::vector<int>& sizes) {
    trelvin::measureGrowth(sizes, trelvin::measure, &trelvin::Times::exporting);
  });
}
