#include "stores/statements.h"

#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

const std::string& prepared(std::string sql) {
  frmMain.sSql = std::move(sql);
  debugLog(frmMain.sSql);
  return frmMain.sSql;
}

}  // namespace

void executeOnSettings(std::string sql) {
  bound(frmMain.DBSettings).execute(prepared(std::move(sql)));
}

void executeOnData(std::string sql) {
  bound(frmMain.DBData).execute(prepared(std::move(sql)));
}

void openSettingsRows(std::string sql) {
  bound(frmMain.rsSettings).open(prepared(std::move(sql)), bound(frmMain.DBSettings), kStaticCursor);
}

void openDataRows(std::string sql) {
  bound(frmMain.rsData).open(prepared(std::move(sql)), bound(frmMain.DBData), kStaticCursor);
}

void giveUpDataRows() {
  const bool isExporting = frmMain.cmdExportServer.caption == "Abort";
  if (!isExporting && frmMain.rsData && frmMain.rsData->isOpen()) frmMain.rsData->close();
}

namespace {

void prepare(const std::function<std::string()>& build) {
  attempt([&] { frmMain.sSql = build(); });
  attempt([] { debugLog(frmMain.sSql); });
}

void buildAndExecute(const std::unique_ptr<Connection>& database, const std::function<std::string()>& build) {
  prepare(build);
  attempt([&] { bound(database).execute(frmMain.sSql); });
}

}  // namespace

void buildAndExecuteOnData(const std::function<std::string()>& build) {
  buildAndExecute(frmMain.DBData, build);
}

void buildAndExecuteOnSettings(const std::function<std::string()>& build) {
  buildAndExecute(frmMain.DBSettings, build);
}

void buildAndOpenDataRows(const std::function<std::string()>& build) {
  prepare(build);
  attempt([] { bound(frmMain.rsData).open(frmMain.sSql, bound(frmMain.DBData), kStaticCursor); });
}

namespace statements {

const char* const kReadableClasses =
    "((Class <> 'IIsCertMapper' AND Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null)";

namespace {

std::string rowsOfSite(std::int16_t site, const char* column) {
  return "SELECT * FROM tmpSettings WHERE (SiteID = " + std::to_string(site) + " AND " + column +
         " IS NOT NULL) ORDER BY ListIndex";
}

std::string addRow(const char* columns, std::int16_t site, std::int32_t row, const Value& first,
                   const Value& second, const char* end) {
  return std::string("INSERT INTO tmpSettings (SiteID, ListIndex, ") + columns + ") VALUES (" +
         std::to_string(site) + "," + std::to_string(row) + ",'" + quoteSql(first) + "','" +
         quoteSql(second) + end;
}

std::string addNewRow(const char* columns, std::int16_t site, const Value& binding, std::int32_t row) {
  return std::string("INSERT INTO tmpSettings (SiteID, ") + columns + ", ListIndex) VALUES ('" +
         std::to_string(site) + "','New','" + quoteSql(binding) + "', " + std::to_string(row) + ")";
}

// Which row of a site an edit means; the column says of which kind.
std::string whereRow(std::int16_t site, const char* column, std::int32_t row) {
  return " WHERE SiteID = " + std::to_string(site) + " AND (" + column +
         " IS NOT NULL) AND ListIndex = " + std::to_string(row) + " ";
}

std::string changeRow(const char* column, const Value& newValue, const std::string& where) {
  return std::string("UPDATE tmpSettings SET ") + column + " = '" + quoteSql(newValue) + "'" + where;
}

}  // namespace

std::string excludedParameters() {
  return "Select * FROM ExcludedExportParameters";
}

std::string clearSettings() {
  return "DELETE FROM tmpSettings";
}
std::string clearFilesToCopy() {
  return "DELETE FROM tmpFilesToCopy";
}

std::string directoryRows(std::int16_t site) {
  return rowsOfSite(site, "Folder");
}
std::string bindingRows(std::int16_t site) {
  return rowsOfSite(site, "OldIP");
}
std::string sslBindingRows(std::int16_t site) {
  return rowsOfSite(site, "OldSSLIP");
}

std::string addDirectoryRow(std::int16_t site, std::int32_t row, const Value& folder,
                            const Value& directory) {
  return addRow("Folder, Directory", site, row, folder, directory, "') ");
}

std::string addBindingRow(std::int16_t site, std::int32_t row, const Value& binding) {
  return addRow("OldIP, NewIP", site, row, binding, binding, "')");
}

std::string addSslBindingRow(std::int16_t site, std::int32_t row, const Value& binding) {
  return addRow("OldSSLIP, NewSSLIP", site, row, binding, binding, "')");
}

std::string addStoredBindingRow(std::int16_t site, std::int32_t row, const Value& binding) {
  return addBindingRow(site, row, binding) + " ";
}

std::string addStoredSslBindingRow(std::int16_t site, std::int32_t row, const Value& binding) {
  return addSslBindingRow(site, row, binding) + " ";
}

std::string addFileToCopy(std::int16_t site, std::int32_t number, const Value& file,
                          const std::string& copyFlag) {
  return "INSERT INTO tmpFilesToCopy (ListNum, DirNum, FileName, Copy) VALUES (" + std::to_string(site) +
         "," + std::to_string(number) + ",'" + quoteSql(file) + "', " + copyFlag + ") ";
}

std::string filesToCopy(std::int16_t site) {
  return "SELECT * FROM tmpFilesToCopy  WHERE ListNum = " + std::to_string(site) + "  ORDER BY DirNum ";
}

std::string addNewBindingRow(std::int16_t site, const Value& binding, std::int32_t row) {
  return addNewRow("OldIP, NewIP", site, binding, row);
}

std::string addNewSslBindingRow(std::int16_t site, const Value& binding, std::int32_t row) {
  return addNewRow("OldSSLIP, NewSSLIP", site, binding, row);
}

std::string changeDirectory(std::int16_t site, std::int32_t row, const Value& directory) {
  return changeRow("Directory", directory, whereRow(site, "Folder", row));
}

std::string changeBinding(std::int16_t site, std::int32_t row, const Value& binding) {
  return changeRow("NewIP", binding, whereRow(site, "OldIP", row));
}

std::string changeSslBinding(std::int16_t site, std::int32_t row, const Value& binding) {
  return changeRow("NewSSLIP", binding, whereRow(site, "OldSSLIP", row));
}

std::string deleteBinding(std::int16_t site, std::int32_t row) {
  return "DELETE FROM tmpSettings" + whereRow(site, "OldIP", row);
}

std::string deleteSslBinding(std::int16_t site, std::int32_t row) {
  return "DELETE FROM tmpSettings" + whereRow(site, "OldSSLIP", row);
}

std::string addSite(const Value& name, const Value& type) {
  return "INSERT INTO Sites (SiteName, Type) Values('" + quoteSql(name) + "','" + quoteSql(type) + "')";
}

std::string allSites() {
  return "SELECT * FROM Sites";
}

std::string sitesOfType(const Value& type) {
  return "SELECT * FROM SITES WHERE (Type = '" + quoteSql(type) + "') ";
}

std::string pathRows(const std::string& storedSite) {
  return "SELECT * FROM DATA WHERE (SiteNumber = " + storedSite +
         " AND Name = 'Path' AND StringValue <> '' AND " + kReadableClasses + ")";
}

std::string storedBindingRows(const std::string& storedSite, const char* property) {
  return "SELECT * FROM DATA WHERE (SiteNumber = " + storedSite + " AND (Name = '" + property + "') AND " +
         kReadableClasses + ")";
}

std::string siteNodeRows(const std::string& storedSite) {
  return std::string("SELECT * FROM DATA WHERE Location = '' AND LocalPath IS NOT NULL AND ") +
         kReadableClasses + " AND SiteNumber = " + storedSite;
}

std::string siteRows(const std::string& storedSite) {
  return "SELECT * FROM DATA WHERE (SiteNumber = " + storedSite + " AND " + kReadableClasses +
         ") ORDER BY Location, LocalPath DESC, ID ";
}

std::string quotedLiteral(const Value& text) {
  return "'" + quoteSql(text) + "'";
}

std::string addPropertyRow(const PropertyRow& row) {
  return "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, " + row.column +
         ") Values (" + std::to_string(row.site) + ", '" + quoteSql(row.location) + "', '" +
         quoteSql(row.name) + "', '" + quoteSql(row.nodeClass) + "', " + std::to_string(row.dataType) +
         ", '" + quoteSql(row.localPath) + "', '" + quoteSql(row.appPath) + "', " + row.value + ") ";
}

std::string addStoredBindings(std::int16_t site, const std::string& location, const char* property,
                              const std::string& bindings) {
  return "INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (" +
         std::to_string(site) + ", '" + quoteSql(location) + "', '" + property + "', '" + quoteSql(bindings) +
         "', 8204)";
}

std::string addDirectoryTreeRow(const TreeRow& row) {
  return "INSERT INTO DATA (SiteNumber, Location, LocalPath, AppPath, Name, class, DataType, StringValue) "
         "VALUES (" +
         quoteSql(row.site) + ", '" + quoteSql(row.location) + "', '" + quoteSql(row.localPath) + "', '" +
         quoteSql(row.appPath) + "', 'Path', '" + quoteSql(row.nodeClass) + "', 8, '" +
         quoteSql(row.directory) + "')";
}

std::string addVirtualDirectoryTreeRow(const TreeRow& row) {
  return "INSERT INTO Data (SiteNumber , Location, LocalPath, AppPath, AppInOutProc, Name, Class, DataType, "
         "StringValue, AppPoolName) Values(" +
         quoteSql(row.site) + ", '" + quoteSql(row.location) + "', '" + quoteSql(row.localPath) + "','" +
         quoteSql(row.appPath) + "'," + quoteSql(row.inProcess) + ", 'Path', '" + quoteSql(row.nodeClass) +
         "', 8, '" + quoteSql(row.directory) + "', '" + quoteSql(row.pool) + "') ";
}

std::string addLateVirtualDirectoryTreeRow(const TreeRow& row) {
  return "INSERT INTO Data (SiteNumber, Location, LocalPath, AppPath, AppInOutProc, Name, Class, DataType, "
         "StringValue, AppPoolName) Values(" +
         quoteSql(row.site) + ",'" + quoteSql(row.location) + "','" + quoteSql(row.localPath) + "', " +
         quoteSql(row.inProcess) + ", 'Path', '" + quoteSql(row.nodeClass) + "', 8, '" +
         quoteSql(row.directory) + "', '" + quoteSql(row.pool) + "')";
}

}  // namespace statements

}  // namespace trelvin
