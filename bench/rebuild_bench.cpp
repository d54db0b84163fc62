// What rebuilding so many stored sites on a server costs, each with ten virtual directories and a dozen
// properties a node. Prints, within one run:
//   ratio     time of the way out of the database, the target's file included, against that of moving the
//             same sites from server to server (the aim is 2; the rows' way through the database's driver
//             alone takes more than half of the time, and weighs the more the quicker the straight way is),
//   exponent  how time grows from one size to the next (1 is linear),
//   memory    the most that the process has held by then: the way out holds the rows of one site at a time,
//             so that it adds the same little to what the straight way held, however many there are.
// Sizes are arguments; without any, 100, 300 and 1000.
#include <sys/resource.h>

#include <cstdio>
#include <fstream>
#include <sstream>
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
  Spent straight;
  Spent storing;
  Spent selecting;
  Spent rebuilding;
  double straightPeak = 0;  // in MB
  double rebuildingPeak = 0;
};

double peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

// A run that failed would be a fast one.
std::size_t nodesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  const std::string text = bytes.str();
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find("Location =", at)) != std::string::npos; ++at) ++count;
  return count;
}

// The provider goes with the work, so that the target's file is whole when the clock stops.
Spent spentOnExportTo(const std::string& target) {
  frmMain.txtExportServer.text = target;
  return spentOn([] {
    cmdExportServer_Click();
    platform().metabase.reset();
  });
}

Times measure(int sites) {
  const ScratchServers servers("trelvin-rebuild-" + std::to_string(sites));
  servers.addServer("source", sites);
  servers.addServer("straight", 0);
  servers.addServer("rebuilt", 0);
  servers.open();
  frmMain.txtImportServer.text = "source";
  cmdPopulate_Click();
  selectEverySite();

  Times times;
  times.sites = sites;
  times.straight = spentOnExportTo("straight");
  times.straightPeak = peakMemory();
  servers.useMetabases();
  frmMain.TabExportType.select(2);
  times.storing = spentOn([] { cmdExportFile_Click(); });
  frmMain.TabImportType.select(2);
  cmdPopulate_Click();
  times.selecting = spentOn([] { selectEverySite(); });
  times.rebuilding = spentOnExportTo("rebuilt");
  times.rebuildingPeak = peakMemory();
  const std::size_t nodes = nodesOf(servers.fileOf("straight"));
  if (nodes < nodesOf(servers.fileOf("source")) || nodes != nodesOf(servers.fileOf("rebuilt"))) {
    throw Failure(error_number::kUnspecified, "The targets do not hold what the source holds.");
  }
  frmMain_Unload();
  return times;
}

void print(const Times& times) {
  std::printf("%d sites\n", times.sites);
  print("straight", times.straight);
  print("storing", times.storing);
  print("selecting", times.selecting);
  print("rebuilding", times.rebuilding);
  std::printf("  ratio         %8.2f                  %8.2f\n",
              times.rebuilding.processor / times.straight.processor,
              times.rebuilding.wall / times.straight.wall);
  std::printf("  memory        %8.1f MB behind the straight way, %.1f MB at the end\n", times.straightPeak,
              times.rebuildingPeak);
}

}  // namespace
}  // namespace trelvin

int main(int argc, char** argv) {
  return trelvin::measureSizes(argc, argv, {100, 300, 1000}, [](const std::vector<int>& sizes) {
    trelvin::measureGrowth(sizes, trelvin::measure, &trelvin::Times::rebuilding);
  });
}
