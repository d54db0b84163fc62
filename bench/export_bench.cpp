// What an unattended run costs as a whole: listing, selecting and exporting so many sites of one server, each
// with ten virtual directories and a dozen properties a node. Prints, within one run:
//   ratio     rows a second of the export against a bare loop of SQLExecDirect over the same statements (at
//   least 0.6), exponent  how time grows from one size to the next (1 is linear).
// Sizes are arguments; without any, 100 and 1000.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "bare_odbc.h"
#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "measured_sites.h"
#include "metabase/site_listing.h"
#include "platform/linux/access_driver.h"
#include "platform/linux/file_system.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/platform.h"
#include "platform/shared/console.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "stores/statements.h"
#include "transfer/export_frame.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;

// A program folder and a server with so many sites, gone with the object.
class Machine {
 public:
  explicit Machine(int sites)
      : folder_(fs::temp_directory_path() / ("trelvin-export-" + std::to_string(sites))) {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    for (const char* name : {"Trelvin.mdb", "TrelvinData.mdb"}) {
      fs::copy_file(fs::path(TRELVIN_DATABASES) / name, folder_ / name);
    }
    fs::copy_file(fs::path(TRELVIN_DATABASES) / "TrelvinData.mdb", folder_ / "Bare.mdb");
    writeMetabase(folder_ / "MetaBase.xml", sites);
    fs::current_path(folder_);
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine() {
    fs::current_path("/");
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  void use() const {
    const auto toNative = [folder = folder_.string()](std::string_view path) {
      const std::size_t slash = path.rfind('\\');
      return slash == std::string_view::npos ? std::string(path)
                                             : folder + "/" + std::string(path.substr(slash + 1));
    };
    platform().databases =
        makeOdbcDatabases([toNative](std::string_view text) { return accessDriverString(text, toNative); });
    platform().files = makeFileSystem(toNative);
    platform().metabase =
        makeFileMetabase([file = (folder_ / "MetaBase.xml").string()](std::string_view server) {
          return server == "bench" ? std::optional(file) : std::nullopt;
        });
    platform().dialogs = makeConsoleDialogs(std::cerr);
  }

  [[nodiscard]] std::string bareDriverString() const {
    return accessDriverString("DBQ=Bare.mdb;Driver={Microsoft Access Driver (*.mdb)};",
                              [&](std::string_view name) { return (folder_ / name).string(); })
        .connectionString;
  }

 private:
  fs::path folder_;
};

struct Times {
  int sites = 0;
  Spent listing;
  Spent selecting;
  Spent exporting;
  Spent bare;
  std::size_t rows = 0;
};

// The statements that gave the rows of the database, in their order.
std::vector<std::string> statementsOfRows() {
  std::vector<std::string> texts;
  RecordSet& rows = bound(frmMain.rsData);
  rows.open("SELECT * FROM Data ORDER BY ID", bound(frmMain.DBData), kStaticCursor);
  const auto text = [&](const char* name) {
    return rows.field(name).isNull() ? "" : rows.field(name).toText();
  };
  for (; !rows.eof(); rows.moveNext()) {
    statements::PropertyRow row{.site = rows.field("SiteNumber").toInteger(),
                                .location = text("Location"),
                                .name = text("Name"),
                                .nodeClass = rows.field("Class"),
                                .dataType = rows.field("DataType").toLong(),
                                .localPath = text("LocalPath"),
                                .appPath = text("AppPath"),
                                .column = "StringValue",
                                .value = statements::quotedLiteral(rows.field("StringValue"))};
    if (row.dataType == kVarLong) row.column = "NumberValue", row.value = text("NumberValue");
    if (row.dataType == kVarBoolean) row.column = "BooleanValue", row.value = text("BooleanValue");
    if (row.dataType == kVarList) {
      row.column = "ObjectValue";
      row.value = statements::quotedLiteral(rows.field("ObjectValue"));
    }
    texts.push_back(statements::addPropertyRow(row));
  }
  rows.close();
  return texts;
}

Times measure(int sites) {
  const Machine machine(sites);
  machine.use();
  renew(frmMain);
  run = RunState{};
  showMainWindow();
  run.bRunSilent = true;
  frmMain.txtImportServer.text = "bench";
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.TabExportType.select(2);

  Times times;
  times.sites = sites;
  times.listing = spentOn([] { cmdPopulate_Click(); });
  times.selecting = spentOn([] {
    for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) frmMain.lstSites.setSelected(i, true);
  });
  times.exporting = spentOn([] { cmdExportFile_Click(); });

  const std::vector<std::string> texts = statementsOfRows();
  times.rows = texts.size();
  Bare bare(machine.bareDriverString());
  times.bare = spentOn([&] {
    for (const std::string& text : texts) bare.execute(text);
  });
  frmMain_Unload();
  return times;
}

void print(const Times& times) {
  std::printf("%d sites, %zu rows\n", times.sites, times.rows);
  print("listing", times.listing);
  print("selecting", times.selecting);
  print("exporting", times.exporting);
  print("bare inserts", times.bare);
  std::printf("  ratio         %8.2f                  %8.2f\n",
              times.bare.processor / times.exporting.processor, times.bare.wall / times.exporting.wall);
}

void measureAll(const std::vector<int>& sizes) {
  std::vector<Times> all;
  for (const int size : sizes) {
    all.push_back(measure(size));
    print(all.back());
    if (all.size() < 2) continue;
    const Times& smaller = all[all.size() - 2];
    const Times& larger = all.back();
    const double growth = static_cast<double>(larger.sites) / smaller.sites;
    std::printf("  exponents: listing %.2f, selecting %.2f, exporting %.2f\n",
                exponent(smaller.listing, larger.listing, growth),
                exponent(smaller.selecting, larger.selecting, growth),
                exponent(smaller.exporting, larger.exporting, growth));
  }
}

}  // namespace
}  // namespace trelvin

int main(int argc, char** argv) {
  return trelvin::measureSizes(argc, argv, {100, 1000}, trelvin::measureAll);
}
