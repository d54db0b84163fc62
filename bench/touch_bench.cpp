// What a person waits for after a touch of the mapping, with 10,000 sites listed and one selected that has
// 1,000 directories and 1,000 bindings. Each figure is the time of one touch; all are to stay under 10 ms.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "metabase/mapping_display.h"
#include "platform/platform.h"
#include "platform/system_platform.h"
#include "scratch_servers.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

constexpr std::int32_t kSites = 10000;
constexpr std::int32_t kRows = 1000;
constexpr const char* kAnswer = "10.0.0.1:80:www.example.com";

// A person who answers every question with the same text.
class SameAnswer : public Dialogs {
 public:
  Answer showMessage(const Message& message) override {
    throw std::runtime_error("nobody is here to read: " + message.text);
  }
  std::string inputBox(std::string_view, std::string_view, std::string_view) override { return kAnswer; }
  std::optional<std::string> chooseFileToSave(const FileChoice&) override { return std::nullopt; }
  std::optional<std::string> chooseFileToOpen(const FileChoice&) override { return std::nullopt; }
};

// Every site has a root; the last one of the list has all the rows. Sites come in the order of their numbers'
// texts, so that is 9999.
void writeSites(const std::filesystem::path& file) {
  std::ofstream out(file, std::ios::binary);
  out << "<?xml version =\"1.0\"?>\n<configuration>\n<MBProperty>\n"
      << element("IIS_ROOT", "/", "") << element("IIsComputer", "/LM", "")
      << element("IIsWebService", "/LM/W3SVC", "");
  for (std::int32_t number = 1; number <= kSites; ++number) {
    const std::string location = "/LM/W3SVC/" + std::to_string(number);
    std::string bindings = ":80:site" + std::to_string(number);
    const std::int32_t rows = number == kSites - 1 ? kRows : 1;
    for (std::int32_t row = 1; row < rows; ++row) bindings += "\n\t\t\t:80:host" + std::to_string(row);
    out << element("IIsWebServer", location,
                   "\t\tServerBindings=\"" + bindings + "\"\n\t\tServerComment=\"Site\"\n")
        << element("IIsWebVirtualDir", location + "/ROOT", "\t\tPath=\"D:\\web\"\n");
    for (std::int32_t row = 1; row < rows; ++row) {
      const std::string name = "v" + std::to_string(row);
      out << element("IIsWebVirtualDir", location + "/ROOT/" + name, "\t\tPath=\"D:\\" + name + "\"\n");
    }
  }
  out << "</MBProperty>\n</configuration>\n";
}

// The window with the sites listed and the last one selected.
class Desk {
 public:
  Desk() {
    writeSites(servers_.fileOf("bench"));
    servers_.open();
    platform().dialogs = std::make_unique<SameAnswer>();
    frmMain.txtImportServer.text = "bench";
    frmMain.cmdPopulate.onClick();
    frmMain.lstSites.setSelected(kSites - 1, true);
    if (frmMain.lstDirectories(0).listCount() != kRows || frmMain.lstNewIPs(0).listCount() != kRows) {
      throw std::runtime_error("the site has other rows than it should");
    }
  }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;
  ~Desk() { renew(frmMain); }

 private:
  ScratchServers servers_{"trelvin-touch"};
};

// Selects one entry and no other, and touches it.
void touchEntry(ListControl& list, std::int32_t entry, const std::function<void()>& touch) {
  list.choose({entry}, entry);
  touch();
}

// A touch that failed would be quick: the rows have to hold what the lists show.
void checkRows(benchmark::State& state, const ListControl& list, std::int32_t count) {
  ShowList(frmMain.iCurrentSite);
  if (list.listCount() != count || list.list(count - 1) != kAnswer)
    state.SkipWithError("the rows are not as edited");
}

void editEntry(benchmark::State& state, ListControl& list) {
  for ([[maybe_unused]] auto touch : state) touchEntry(list, kRows - 1, list.onDblClick);
  checkRows(state, list, kRows);
}

void editDirectory(benchmark::State& state) {
  editEntry(state, frmMain.lstDirectories(0));
}

void editBinding(benchmark::State& state) {
  editEntry(state, frmMain.lstNewIPs(0));
}

void addBinding(benchmark::State& state) {
  const std::int32_t before = frmMain.lstNewIPs(0).listCount();
  for ([[maybe_unused]] auto touch : state) frmMain.cmdAddIP.onClick();
  checkRows(state, frmMain.lstNewIPs(0), before + static_cast<std::int32_t>(state.iterations()));
}

void deleteBinding(benchmark::State& state) {
  ListControl& list = frmMain.lstNewIPs(0);
  const auto press = [&] { list.onKeyUp(key::kDelete); };
  const std::int32_t before = list.listCount();
  for ([[maybe_unused]] auto touch : state) touchEntry(list, list.listCount() - 1, press);
  ShowList(frmMain.iCurrentSite);
  if (list.listCount() != before - static_cast<std::int32_t>(state.iterations())) {
    state.SkipWithError("the rows have not gone");
  }
}

// One pair goes, another comes.
void replacePair(benchmark::State& state) {
  while (frmMain.lstOldValues.listCount() < kRows) frmMain.cmdAddNewValue.onClick();
  const auto press = [] { frmMain.lstNewValues.onKeyUp(key::kDelete); };
  for ([[maybe_unused]] auto touch : state) {
    touchEntry(frmMain.lstNewValues, 0, press);
    frmMain.cmdAddNewValue.onClick();
  }
}

void showTab(benchmark::State& state) {
  std::int32_t tab = frmMain.tabNewValues.selectedTab();
  for ([[maybe_unused]] auto touch : state) {
    tab = tab % frmMain.tabNewValues.tabCount() + 1;
    frmMain.tabNewValues.select(tab);
  }
}

void selectSite(benchmark::State& state) {
  for ([[maybe_unused]] auto touch : state) {
    frmMain.lstSites.choose({}, kSites - 1);
    frmMain.lstSites.choose({kSites - 1}, kSites - 1);
  }
}

// All other sites stay selected. They are taken for read and shown, which would take the server a while.
void selectTheLastOfAll(benchmark::State& state) {
  const std::vector<bool> read = frmMain.abDetailsRead;
  const std::vector<bool> shown = frmMain.abHadDirectories;
  frmMain.abDetailsRead.assign(kSites, true);
  frmMain.abHadDirectories.assign(kSites, true);
  std::vector<std::int32_t> all(kSites);
  std::iota(all.begin(), all.end(), 0);
  frmMain.lstSites.choose(all, kSites - 1);
  for ([[maybe_unused]] auto touch : state) {
    frmMain.lstSites.setSelected(kSites - 2, false);
    frmMain.lstSites.setSelected(kSites - 2, true);
  }
  frmMain.lstSites.choose({kSites - 1}, kSites - 1);
  frmMain.abDetailsRead = read;
  frmMain.abHadDirectories = shown;
}

// What adds or deletes does so a fixed number of times, so that the lists stay near their size.
constexpr int kFewTouches = 100;

BENCHMARK(editDirectory)->Unit(benchmark::kMillisecond);
BENCHMARK(editBinding)->Unit(benchmark::kMillisecond);
BENCHMARK(replacePair)->Unit(benchmark::kMillisecond);
BENCHMARK(showTab)->Unit(benchmark::kMillisecond);
BENCHMARK(selectSite)->Unit(benchmark::kMillisecond);
BENCHMARK(selectTheLastOfAll)->Unit(benchmark::kMillisecond);
BENCHMARK(deleteBinding)->Unit(benchmark::kMillisecond)->Iterations(kFewTouches);
BENCHMARK(addBinding)->Unit(benchmark::kMillisecond)->Iterations(kFewTouches);

}  // namespace
}  // namespace trelvin

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  trelvin::useSystemPlatform(argc, argv, [](std::string_view line) { std::cerr << line << '\n'; });
  const trelvin::Desk desk;
  benchmark::RunSpecifiedBenchmarks();
}
