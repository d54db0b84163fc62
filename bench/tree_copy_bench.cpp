// The shell's copy against `cp -a` over the same tree. Compare, within one run, the counter ratio: the copy's
// median time in times of that of `cp -a`, at most 1.0. The two take turns, so that both meet the same
// machine.
//
// Every copy goes to a new folder and nothing is deleted before the end: some file systems create files far
// more slowly for minutes after a great deletion. Needs about 24 GB below the temporary folder, or below
// TRELVIN_BENCH_FOLDER.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/tree_copy.h"

namespace trelvin {

namespace {

namespace fs = std::filesystem;
using Seconds = std::chrono::duration<double>;

constexpr int kRounds = 5;

// Source trees and copies, gone with the program.
class Place {
 public:
  Place() {
    const char* const named = std::getenv("TRELVIN_BENCH_FOLDER");
    std::string pattern =
        (named != nullptr ? fs::path(named) : fs::temp_directory_path()) / "trelvin-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    folder_ = pattern;
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  ~Place() { fs::remove_all(folder_); }

  fs::path newFolder() {
    fs::path folder = folder_ / std::to_string(++count_);
    fs::create_directory(folder);
    return folder;
  }

 private:
  fs::path folder_;
  int count_ = 0;
};

Place& place() {
  static Place instance;
  return instance;
}

void writeFile(const fs::path& file, std::size_t size) {
  static const std::vector<char> block(std::size_t{1} << 20U, 'x');
  std::ofstream stream(file, std::ios::binary);
  for (std::size_t rest = size; rest > 0;) {
    const std::size_t count = std::min(rest, block.size());
    stream.write(block.data(), static_cast<std::streamsize>(count));
    rest -= count;
  }
}

// 200 folders of 100 files of 0 to 8 KB.
const fs::path& smallFiles() {
  static const fs::path tree = [] {
    fs::path root = place().newFolder() / "small";
    for (std::size_t folder = 0; folder < 200; ++folder) {
      const fs::path parent = root / ("folder" + std::to_string(folder));
      fs::create_directories(parent);
      for (std::size_t file = 0; file < 100; ++file) {
        writeFile(parent / ("page" + std::to_string(file) + ".htm"), (file * 83) % 8192);
      }
    }
    return root;
  }();
  return tree;
}

// 2 GB in 8 files.
const fs::path& largeFiles() {
  static const fs::path tree = [] {
    fs::path root = place().newFolder() / "large";
    fs::create_directory(root);
    for (int file = 0; file < 8; ++file) {
      writeFile(root / ("video" + std::to_string(file)), std::size_t{256} << 20U);
    }
    return root;
  }();
  return tree;
}

template <typename Action>
Seconds timeOf(Action&& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - begin;
}

void copyByShell(const fs::path& tree, const fs::path& to) {
  const auto shell = makeTreeCopy([](std::string_view path) { return std::string(path); }, {}, {});
  if (shell->copy({tree.string(), to.string(), ""}) != 0) std::abort();
}

void copyByCp(const fs::path& tree, const fs::path& to) {
  if (std::system(("cp -a '" + tree.string() + "' '" + to.string() + "'").c_str()) != 0) std::abort();
}

// A disk that stalls for once must not decide.
Seconds medianOf(std::vector<Seconds> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

void compare(benchmark::State& state, const fs::path& tree) {
  // What still waits to be written is not to slow one of them down.
  const auto timed = [&](void (*copy)(const fs::path&, const fs::path&)) {
    const fs::path to = place().newFolder();
    if (std::system("sync") != 0) std::abort();
    return timeOf([&] { copy(tree, to); });
  };
  timed(copyByCp);
  std::vector<Seconds> byShell;
  std::vector<Seconds> byCp;
  for (auto _ : state) {
    const bool isShellFirst = byCp.size() % 2 == 0;
    if (isShellFirst) byShell.push_back(timed(copyByShell));
    byCp.push_back(timed(copyByCp));
    if (!isShellFirst) byShell.push_back(timed(copyByShell));
    state.SetIterationTime(byShell.back().count());
  }
  state.counters["ratio"] = medianOf(byShell) / medianOf(byCp);
}

void ShellCopySmallFiles(benchmark::State& state) {
  compare(state, smallFiles());
}
BENCHMARK(ShellCopySmallFiles)->UseManualTime()->Iterations(kRounds)->Unit(benchmark::kMillisecond);

void ShellCopyLargeFiles(benchmark::State& state) {
  compare(state, largeFiles());
}
BENCHMARK(ShellCopyLargeFiles)->UseManualTime()->Iterations(kRounds)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace trelvin

BENCHMARK_MAIN();
