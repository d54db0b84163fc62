// What the metabase file provider costs. Absolute times say little on a shared machine; compare within one
// run:
//   LoadMetabase against ParseAlone (at most three times as long; the counter times_file is its memory in
//   file sizes,
//     at most 6),
//   SetInfo/100000 against SetInfo/100 (at most 1.5 times as long),
//   ListSites per item at 10000 against 100 (linear).

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "core/text.h"
#include "platform/linux/metabase/metabase_file.h"

namespace trelvin {

namespace {

namespace fs = std::filesystem;

// One site as a server writes it, with # for its number: about 2,000 bytes in 4 elements.
constexpr const char* kSite = R"(<IIsWebServer	Location ="/LM/W3SVC/#"
		AppPoolId="DefaultAppPool"
		AuthFlags="AuthAnonymous | AuthNTLM"
		LogPluginClsid="{FF160663-DE82-11CF-BC0A-00AA006111E0}"
		MaxConnections="4294967295"
		ServerAutoStart="TRUE"
		ServerBindings=":80:www#.example.com"
		ServerComment="Site number #"
		ServerSize="1"
	>
</IIsWebServer>
<IIsFilters	Location ="/LM/W3SVC/#/Filters"
		FilterLoadOrder=""
	>
</IIsFilters>
<IIsWebVirtualDir	Location ="/LM/W3SVC/#/ROOT"
		AccessFlags="AccessRead | AccessScript"
		AppFriendlyName="Default Application"
		AppIsolated="2"
		AppRoot="/LM/W3SVC/#/ROOT"
		DirBrowseFlags="DirBrowseShowDate | DirBrowseShowTime | DirBrowseShowSize | EnableDefaultDoc"
		HttpCustomHeaders="X-Powered-By: example
			X-Site: #"
		HttpErrors="400,*,FILE,d:\help\400.htm
			404,*,FILE,d:\help\404.htm
			500,100,URL,/error.asp"
		Path="d:\sites\#"
	>
</IIsWebVirtualDir>
<IIsWebVirtualDir	Location ="/LM/W3SVC/#/ROOT/shop"
		AccessFlags="AccessRead | AccessScript"
		AppFriendlyName="Shop"
		AppIsolated="2"
		AppRoot="/LM/W3SVC/#/ROOT/shop"
		DirBrowseFlags="DirBrowseShowDate | DirBrowseShowTime | DirBrowseShowSize | EnableDefaultDoc"
		HttpCustomHeaders="X-Powered-By: example"
		HttpErrors="400,*,FILE,d:\help\400.htm
			404,*,FILE,d:\help\404.htm"
		Path="d:\sites\#\shop"
	>
</IIsWebVirtualDir>
)";

std::string siteText(int number) {
  return replaceAll(kSite, "#", std::to_string(number));
}

constexpr const char* kHead =
    "<?xml version =\"1.0\"?>\n<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\">\n"
    "<MBProperty>\n<IIS_ROOT\tLocation =\"/\"\n\t>\n</IIS_ROOT>\n<IIsComputer\tLocation =\"/LM\"\n\t>\n"
    "</IIsComputer>\n<IIsWebService\tLocation "
    "=\"/LM/W3SVC\"\n\t\tMaxConnections=\"100\"\n\t>\n</IIsWebService>\n";
constexpr const char* kFoot = "</MBProperty>\n</configuration>\n";

// A metabase file of so many sites, for as long as the object lives.
class BenchServer {
 public:
  explicit BenchServer(int sites)
      : folder_(fs::temp_directory_path() /
                ("trelvin-bench-" + std::to_string(sites) + "-" + std::to_string(++count_))) {
    fs::create_directories(folder_);
    std::ofstream file(path(), std::ios::binary);
    file << kHead;
    for (int i = 1; i <= sites; ++i) file << siteText(i);
    file << kFoot;
  }
  BenchServer(const BenchServer&) = delete;
  BenchServer& operator=(const BenchServer&) = delete;
  ~BenchServer() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  [[nodiscard]] std::string path() const { return (folder_ / "MetaBase.xml").string(); }
  [[nodiscard]] std::unique_ptr<Metabase> open() const {
    return makeFileMetabase([path = path()](std::string_view) { return std::optional(path); });
  }
  // With the file read already.
  [[nodiscard]] std::unique_ptr<Metabase> openLoaded() const {
    std::unique_ptr<Metabase> metabase = open();
    metabase->getObject("IIS://x/W3SVC");
    return metabase;
  }

 private:
  inline static int count_ = 0;
  fs::path folder_;
};

std::size_t heapInUse() {
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

constexpr int kSitesOf100Megabytes = 78'000;

void ParseAlone(benchmark::State& state) {
  const BenchServer server(kSitesOf100Megabytes);
  std::size_t size = 0;
  for (auto _ : state) {
    std::ifstream file(server.path(), std::ios::binary);
    std::vector<char> text(fs::file_size(server.path()));
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    size = text.size();
    pugi::xml_document document;
    benchmark::DoNotOptimize(
        document.load_buffer_inplace(text.data(), text.size(), pugi::parse_minimal | pugi::parse_escapes));
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}
BENCHMARK(ParseAlone)->Unit(benchmark::kMillisecond)->UseRealTime();

void LoadMetabase(benchmark::State& state) {
  const BenchServer server(kSitesOf100Megabytes);
  const std::size_t size = fs::file_size(server.path());
  for (auto _ : state) {
    const std::size_t before = heapInUse();
    const std::unique_ptr<Metabase> metabase = server.open();
    benchmark::DoNotOptimize(metabase->getObject("IIS://x/W3SVC/1"));
    state.counters["times_file"] = static_cast<double>(heapInUse() - before) / static_cast<double>(size);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}
BENCHMARK(LoadMetabase)->Unit(benchmark::kMillisecond)->UseRealTime();

// Bind, put, setInfo, as the program does it for each property. 4 nodes a site.
void SetInfo(benchmark::State& state) {
  const BenchServer server(static_cast<int>(state.range(0)) / 4);
  const std::unique_ptr<Metabase> metabase = server.openLoaded();
  std::int32_t number = 0;
  for (auto _ : state) {
    const NodeHandle node = metabase->getObject("IIS://x/W3SVC/7/ROOT");
    node->put("AspScriptTimeout", ++number);
    node->setInfo();
  }
}
BENCHMARK(SetInfo)->Arg(100)->Arg(100'000)->UseRealTime();

void ListSites(benchmark::State& state) {
  const BenchServer server(static_cast<int>(state.range(0)));
  const std::unique_ptr<Metabase> metabase = server.openLoaded();
  for (auto _ : state) {
    metabase->getObject("IIS://x/W3SVC")->forEachChild([](const NodeHandle& site) {
      benchmark::DoNotOptimize(site->get("ServerComment"));
    });
  }
  state.SetItemsProcessed(state.range(0) * state.iterations());
}
BENCHMARK(ListSites)->Arg(100)->Arg(1000)->Arg(10'000);

void Bind(benchmark::State& state) {
  const BenchServer server(1000);
  const std::unique_ptr<Metabase> metabase = server.openLoaded();
  for (auto _ : state) benchmark::DoNotOptimize(metabase->getObject("IIS://x/W3SVC/500/ROOT/shop"));
}
BENCHMARK(Bind);

void Get(benchmark::State& state, const char* property) {
  const BenchServer server(1000);
  const std::unique_ptr<Metabase> metabase = server.open();
  const NodeHandle node = metabase->getObject("IIS://x/W3SVC/500/ROOT/shop");
  for (auto _ : state) benchmark::DoNotOptimize(node->get(property));
}
BENCHMARK_CAPTURE(Get, own_text, "Path");
BENCHMARK_CAPTURE(Get, own_flag, "AccessScript");
BENCHMARK_CAPTURE(Get, own_list, "HttpErrors");
BENCHMARK_CAPTURE(Get, inherited, "AuthNTLM");
BENCHMARK_CAPTURE(Get, schema_default, "AspScriptTimeout");

// Of a site with 14 nodes.
void DataPaths(benchmark::State& state) {
  const BenchServer server(1000);
  const std::unique_ptr<Metabase> metabase = server.open();
  for (int i = 0; i < 10; ++i) {
    metabase->getObject("IIS://x/W3SVC/500/ROOT")->create("IIsWebDirectory", std::to_string(i))->setInfo();
  }
  const NodeHandle site = metabase->getObject("IIS://x/W3SVC/500");
  for (auto _ : state) benchmark::DoNotOptimize(site->getDataPaths("AccessFlags", Value()));
}
BENCHMARK(DataPaths);

}  // namespace

}  // namespace trelvin

BENCHMARK_MAIN();
