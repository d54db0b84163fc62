// What the database layer adds to the driver's own cost. Compare, within one run:
//   storing: execute against a bare loop of SQLExecDirect over the same statements; the difference is the
//   layer. reading: RecordSet against a bare loop of SQLFetchScroll and SQLGetData over the same rows and
//   columns.
// Each run works on a fresh database, made like the installed one.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bare_odbc.h"
#include "platform/linux/access_driver.h"
#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;

constexpr int kRows = 20000;
constexpr const char* kSelect =
    "SELECT * FROM DATA WHERE SiteNumber = 1 ORDER BY Location, LocalPath DESC, ID ";

std::vector<std::string> statements() {
  std::vector<std::string> texts;
  for (int row = 0; row < kRows; ++row) {
    const std::string node = "dir" + std::to_string(row % 500);
    texts.push_back(
        "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, StringValue) "
        "Values (1, '/ROOT/" +
        node + "', 'AnonymousUserName', 'IIsWebDirectory', 8, '" + node + "', '', 'IUSR_WEB" +
        std::to_string(row) + "') ");
  }
  return texts;
}

// A copy of the installed database in a folder of its own.
class Store {
 public:
  Store() {
    std::string pattern = (fs::temp_directory_path() / "trelvin-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    folder_ = pattern;
    fs::copy_file(fs::path(TRELVIN_DATABASES) / "TrelvinData.mdb", file());
  }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;
  ~Store() { fs::remove_all(folder_); }

  [[nodiscard]] fs::path file() const { return folder_ / "TrelvinData.mdb"; }
  [[nodiscard]] std::string connectionString() const {
    return "DBQ=" + file().string() + ";Driver={Microsoft Access Driver (*.mdb)};";
  }
  [[nodiscard]] std::string driverString() const {
    return accessDriverString(connectionString(), [](std::string_view path) { return std::string(path); })
        .connectionString;
  }

 private:
  fs::path folder_;
};

std::unique_ptr<Databases> databases() {
  return makeOdbcDatabases([](std::string_view text) {
    return accessDriverString(text, [](std::string_view path) { return std::string(path); });
  });
}

void storeThroughTheLayer(benchmark::State& state) {
  const auto texts = statements();
  for ([[maybe_unused]] auto run : state) {
    state.PauseTiming();
    {
      const Store store;
      const auto maker = databases();
      auto connection = maker->createConnection();
      connection->open(store.connectionString());
      state.ResumeTiming();
      for (const std::string& text : texts) connection->execute(text);
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

void storeByTheDriverAlone(benchmark::State& state) {
  const auto texts = statements();
  for ([[maybe_unused]] auto run : state) {
    state.PauseTiming();
    {
      const Store store;
      Bare bare(store.driverString());
      state.ResumeTiming();
      for (const std::string& text : texts) bare.execute(text);
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

void fill(const Store& store) {
  const auto maker = databases();
  auto connection = maker->createConnection();
  connection->open(store.connectionString());
  connection->execute("BEGIN");
  for (const std::string& text : statements()) connection->execute(text);
  connection->execute("COMMIT");
}

// All columns of every row, as a transfer reads them.
void readThroughTheLayer(benchmark::State& state) {
  const Store store;
  fill(store);
  const auto maker = databases();
  auto connection = maker->createConnection();
  connection->open(store.connectionString());
  for ([[maybe_unused]] auto run : state) {
    auto rows = maker->createRecordSet();
    for (rows->open(kSelect, *connection, kStaticCursor); !rows->eof(); rows->moveNext()) {
      for (const char* name :
           {"Location", "Name", "Class", "DataType", "LocalPath", "AppPath", "StringValue"}) {
        benchmark::DoNotOptimize(rows->field(name));
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

void readByTheDriverAlone(benchmark::State& state) {
  const Store store;
  fill(store);
  Bare bare(store.driverString());
  SQLSetStmtAttr(bare.statement(), SQL_ATTR_CURSOR_TYPE, asPointer(SQL_CURSOR_STATIC), 0);
  for ([[maybe_unused]] auto run : state) {
    bare.execute(kSelect);
    SQLSMALLINT columns = 0;
    SQLNumResultCols(bare.statement(), &columns);
    while (SQL_SUCCEEDED(SQLFetchScroll(bare.statement(), SQL_FETCH_NEXT, 0))) {
      for (SQLSMALLINT column = 1; column <= columns; ++column) {
        std::array<char, 1024> buffer;
        SQLLEN length = 0;
        SQLGetData(bare.statement(), static_cast<SQLUSMALLINT>(column), SQL_C_CHAR, buffer.data(),
                   buffer.size(), &length);
        benchmark::DoNotOptimize(buffer);
      }
    }
    SQLFreeStmt(bare.statement(), SQL_CLOSE);
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(storeByTheDriverAlone)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(storeThroughTheLayer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readByTheDriverAlone)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readThroughTheLayer)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace trelvin

BENCHMARK_MAIN();
