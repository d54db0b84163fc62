// What the access lists cost above the bare calls of the system that they come down to. Each benchmark does
// both, one after the other over the same files, and prints times_bare: the layer's time divided by that of
// the bare calls. It is to stay below 3.
#include <benchmark/benchmark.h>
#include <sys/xattr.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/access_lists.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 20'000;
constexpr int kFilesInAFolder = 100;
constexpr const char* kAttribute = "user.trelvin.acl";

// Five entries, as a folder of a site has them.
constexpr std::array<std::string_view, 5> kLines{
    "allow;OICI;0x001f01ff;;BUILTIN\\Administrators\n", "allow;OICI;0x001f01ff;;NT AUTHORITY\\SYSTEM\n",
    "allow;OICI;0x001200a9;;WEB1\\IUSR_WEB1\n", "allow;OICI;0x001301bf;;WEB1\\editors\n",
    "deny;OI;0x00010000;;Everyone\n"};

std::string linesFrom(std::size_t first) {
  std::string text;
  for (std::size_t line = first; line < kLines.size(); ++line) text += kLines[line];
  return text;
}

void refuse(int result, const std::string& path) {
  if (result >= 0) return;
  std::perror(path.c_str());
  std::exit(1);
}

void readBare(const std::string& native) {
  std::array<char, 1024> bytes;
  refuse(static_cast<int>(::getxattr(native.c_str(), kAttribute, bytes.data(), bytes.size())), native);
  benchmark::DoNotOptimize(bytes);
}

void writeBare(const std::string& native, const std::string& text) {
  refuse(::setxattr(native.c_str(), kAttribute, text.data(), text.size(), 0), native);
}

// The files of a site, each with a list, for as long as the object lives.
class Site {
 public:
  Site() {
    for (int file = 0; file < kFiles; ++file) {
      const std::string relative =
          "site/folder" + std::to_string(file / kFilesInAFolder) + "/page" + std::to_string(file) + ".htm";
      const fs::path native = network_ / "WEB1/C$" / relative;
      fs::create_directories(native.parent_path());
      std::ofstream(native) << "page";
      writeBare(native, linesFrom(0));
      natives_.push_back(native);
      paths_.push_back("\\\\WEB1\\C$\\" + replaceSlashes(relative));
    }
  }
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;
  ~Site() {
    std::error_code ignored;
    fs::remove_all(network_, ignored);
  }

  [[nodiscard]] const std::vector<std::string>& natives() const { return natives_; }
  [[nodiscard]] const std::vector<std::string>& paths() const { return paths_; }
  [[nodiscard]] std::unique_ptr<NtfsControl> control() const {
    return makeAccessLists(
        [paths = Paths(network_.string())](std::string_view path) { return paths.nativePath(path); });
  }

 private:
  static std::string replaceSlashes(std::string path) {
    for (char& letter : path) letter = letter == '/' ? '\\' : letter;
    return path;
  }

  fs::path network_ =
      fs::temp_directory_path() / ("trelvin-bench-lists-" + std::to_string(std::random_device()()));
  std::vector<std::string> natives_;
  std::vector<std::string> paths_;
};

template <typename Work>
double secondsOf(Work&& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// Measures the layer's work on every path and the bare work on every native path. They take turns file by
// file, so that whatever else the machine does meets both.
template <typename Layer, typename Bare>
void compare(benchmark::State& state, Layer&& layer, Bare&& bare) {
  const Site site;
  const std::unique_ptr<NtfsControl> control = site.control();
  double allLayerSeconds = 0;
  double allBareSeconds = 0;
  for ([[maybe_unused]] auto run : state) {
    double layerSeconds = 0;
    for (std::size_t file = 0; file < site.paths().size(); ++file) {
      allBareSeconds += secondsOf([&] { bare(site.natives()[file]); });
      layerSeconds += secondsOf([&] { layer(*control, site.paths()[file]); });
    }
    allLayerSeconds += layerSeconds;
    state.SetIterationTime(layerSeconds);
  }
  state.SetItemsProcessed(state.iterations() * kFiles);
  state.counters["times_bare"] = allLayerSeconds / allBareSeconds;
}

void readAndWrite(benchmark::State& state) {
  const auto layer = [](NtfsControl& control, const std::string& path) {
    control.setFileOrDirectory(path);
    control.getAccounts()->writeAccounts();
  };
  const auto bare = [](const std::string& native) {
    readBare(native);
    writeBare(native, linesFrom(0));
  };
  compare(state, layer, bare);
}

// What one file costs when permissions are replicated: two lists are read, the target's is emptied with a
// write after each entry, and written with the source's entries.
void replicate(benchmark::State& state) {
  const auto layer = [](NtfsControl& control, const std::string& path) {
    control.setFileOrDirectory(path);
    const auto source = control.getAccounts();
    control.setFileOrDirectory(path);
    const auto target = control.getAccounts();
    for (std::size_t entry = 0; entry < kLines.size(); ++entry) {
      target->removeAccount(1);
      target->writeAccounts();
    }
    source->forEachAccount([&](const AccessEntry& from) {
      AccessEntry& to = target->addAccount();
      to.setAccountName(from.accountName());
      for (int index = 1; index <= AccessEntry::kValueCount; ++index) {
        to.setAccessValue(index, from.accessValue(index));
      }
    });
    target->writeAccounts();
  };
  const auto bare = [](const std::string& native) {
    readBare(native);
    readBare(native);
    for (std::size_t left = 1; left < kLines.size(); ++left) writeBare(native, linesFrom(left));
    refuse(::removexattr(native.c_str(), kAttribute), native);
    writeBare(native, linesFrom(0));
  };
  compare(state, layer, bare);
}

BENCHMARK(readAndWrite)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(replicate)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace trelvin

BENCHMARK_MAIN();
