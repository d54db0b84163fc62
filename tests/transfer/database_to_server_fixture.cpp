#include "database_to_server_fixture.h"

#include "core/err.h"
#include "core/helpers.h"
#include "window/frm_main.h"

namespace trelvin::test {

namespace {

constexpr const char* kDataDatabase = "TrelvinData.mdb";

const char* columnOf(int type) {
  switch (type) {
    case kVarLong:
      return "NumberValue";
    case kVarBoolean:
      return "BooleanValue";
    case kVarList:
      return "ObjectValue";
    default:
      return "StringValue";
  }
}

std::string nameOf(const std::string& location) {
  return location.substr(location.rfind('/') + 1);
}

}  // namespace

std::string DatabaseToServer::text(const std::string& content) {
  return "'" + quoteSql(content) + "'";
}

std::string DatabaseToServer::list(const std::vector<std::string>& items) {
  std::string value = "''";
  for (const std::string& item : items) value += " || " + text(item) + " || char(13, 10)";
  return value;
}

StoredRow DatabaseToServer::ofSite(const std::string& name, const std::string& content,
                                   const std::string& number) {
  return {.name = name, .nodeClass = "IIsWebServer", .value = text(content), .localPath = text(number)};
}

StoredRow DatabaseToServer::ofDirectory(const std::string& location, const std::string& path) {
  return {.location = location,
          .name = "Path",
          .nodeClass = "IIsWebDirectory",
          .value = text(path),
          .localPath = text(nameOf(location))};
}

StoredRow DatabaseToServer::ofVirtualDirectory(const std::string& location, const std::string& path) {
  StoredRow row = ofDirectory(location, path);
  row.nodeClass = "IIsWebVirtualDir";
  return row;
}

StoredRow DatabaseToServer::withApplication(StoredRow row, const std::string& inProcess,
                                            const std::string& pool) {
  row.appPath = text(row.location);
  row.inProcess = inProcess;
  row.pool = pool;
  return row;
}

StoredRow DatabaseToServer::ofNode(const std::string& location, const std::string& name, int type,
                                   const std::string& value) {
  return {.location = location,
          .name = name,
          .nodeClass = "IIsWebVirtualDir",
          .type = type,
          .value = value,
          .localPath = text(nameOf(location))};
}

void DatabaseToServer::TearDown() {
  databases.rule = nullptr;
  metabase->rule = nullptr;
  if (before_.empty()) return;
  EXPECT_EQ(everyStoredRow(), before_) << "the run changed what is stored";
}

int DatabaseToServer::storeSite(const std::string& name, const std::vector<StoredRow>& rows,
                                const std::string& type) {
  executeOn(kDataDatabase, "INSERT INTO Sites (SiteName, Type) VALUES (" + text(name) + ", '" + type + "')");
  ++sites_;
  for (const StoredRow& row : rows) storeRow(sites_, row);
  return sites_;
}

void DatabaseToServer::storeRow(int site, const StoredRow& row) const {
  const std::string nodeClass = row.nodeClass.empty() ? "Null" : text(row.nodeClass);
  executeOn(
      kDataDatabase,
      "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, AppInOutProc, "
      "AppPoolName, " +
          std::string(columnOf(row.columnType != 0 ? row.columnType : row.type)) + ") VALUES (" +
          std::to_string(site) + ", " + text(row.location) + ", " + text(row.name) + ", " + nodeClass + ", " +
          std::to_string(row.type) + ", " + row.localPath + ", " + row.appPath + ", " + row.inProcess + ", " +
          row.pool + ", " + row.value + ")");
}

int DatabaseToServer::storePlainSite(const std::string& name, const std::string& number) {
  return storeSite(name, {ofSite("ServerComment", name, number), ofVirtualDirectory("/ROOT", "C:\\" + name)});
}

void DatabaseToServer::openStored(const std::string& target, int from, int to) {
  addServer("NEW1", metabaseFile(target));
  openWindow();
  listStored(from, to);
}

void DatabaseToServer::openStoredForDebug(const std::string& target, int from, int to) {
  addServer("NEW1", metabaseFile(target));
  start("-D");
  listStored(from, to);
}

void DatabaseToServer::openStoredFtp(const std::string& target) {
  addServer("NEW1", metabaseFile(target));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listStored(6, 6);
}

void DatabaseToServer::listStored(int from, int to) {
  frmMain.TabImportType.select(2);
  frmMain.txtExportServer.text = "NEW1";
  chooseVersions(from, to);
  frmMain.cmdPopulate.onClick();
  before_ = everyStoredRow();
  metabase->calls.clear();
  databases.calls.clear();
  output.clear();
  dialogs->shown.clear();
  events->beeps = 0;
}

void DatabaseToServer::expectStoredRowsToHaveGrown() {
  const Rows now = everyStoredRow();
  EXPECT_GT(now.size(), before_.size());
  for (const auto& row : before_) EXPECT_THAT(now, ::testing::Contains(row));
  before_ = now;
}

Rows DatabaseToServer::everyStoredRow() const {
  Rows all = query(kDataDatabase,
                   "SELECT ID AS a, SiteNumber AS b, Location AS c, Name AS d, Class AS e, DataType AS f, "
                   "LocalPath AS g, AppPath AS h, AppInOutProc AS i, AppPoolName AS j, NumberValue AS k, "
                   "StringValue AS l, BooleanValue AS m, ObjectValue AS n FROM Data ORDER BY ID");
  const Rows sites =
      query(kDataDatabase, "SELECT ID AS a, SiteName AS b, Type AS c, DateTime AS d FROM Sites ORDER BY ID");
  all.insert(all.end(), sites.begin(), sites.end());
  return all;
}

}  // namespace trelvin::test
