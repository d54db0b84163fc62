// Every SQL statement of the program, and running them. Texts pass through quoteSql here; numbers are placed
// bare.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/value.h"
#include "platform/database.h"

namespace trelvin {

// Run sSql after putting the statement there and, with bDebug, into the log. A failure goes to the caller.
void executeOnSettings(std::string sql);
void executeOnData(std::string sql);
// Open rsSettings or rsData on the statement, with a static cursor.
void openSettingsRows(std::string sql);
void openDataRows(std::string sql);

// A cancelled export leaves its rows open in rsData. What begins anew closes them first, or it would go
// through the rows of another site; rows that an export is still walking are left alone.
void giveUpDataRows();

// For routines that ignore failures: building and running are statements of their own there. When the
// building fails, the former text is still in sSql and runs again.
void buildAndExecuteOnData(const std::function<std::string()>& build);
void buildAndExecuteOnSettings(const std::function<std::string()>& build);
void buildAndOpenDataRows(const std::function<std::string()>& build);

namespace statements {

// The class filter: rows of these classes are stored, and no reader takes them. A Null class passes.
extern const char* const kReadableClasses;

// Exclusions.
std::string excludedParameters();

// Working rows of the sites selected at the moment.
std::string clearSettings();
std::string clearFilesToCopy();
std::string directoryRows(std::int16_t site);
std::string bindingRows(std::int16_t site);
std::string sslBindingRows(std::int16_t site);
std::string addDirectoryRow(std::int16_t site, std::int32_t row, const Value& folder, const Value& directory);
std::string addBindingRow(std::int16_t site, std::int32_t row, const Value& binding);
std::string addSslBindingRow(std::int16_t site, std::int32_t row, const Value& binding);
// The same out of a stored site; these end in a blank.
std::string addStoredBindingRow(std::int16_t site, std::int32_t row, const Value& binding);
std::string addStoredSslBindingRow(std::int16_t site, std::int32_t row, const Value& binding);
std::string addFileToCopy(std::int16_t site, std::int32_t number, const Value& file,
                          const std::string& copyFlag);

std::string filesToCopy(std::int16_t site);

// What an edit of the mapping lists changes: a binding that the source doesn't have, a new value, and a row
// that goes. A row is found by its number and by its kind.
std::string addNewBindingRow(std::int16_t site, const Value& binding, std::int32_t row);
std::string addNewSslBindingRow(std::int16_t site, const Value& binding, std::int32_t row);
std::string changeDirectory(std::int16_t site, std::int32_t row, const Value& directory);
std::string changeBinding(std::int16_t site, std::int32_t row, const Value& binding);
std::string changeSslBinding(std::int16_t site, std::int32_t row, const Value& binding);
std::string deleteBinding(std::int16_t site, std::int32_t row);
std::string deleteSslBinding(std::int16_t site, std::int32_t row);

// Stored sites. Names of the value columns and of types are in transfer/.
std::string addSite(const Value& name, const Value& type);
std::string allSites();
std::string sitesOfType(const Value& type);
std::string pathRows(const std::string& storedSite);
std::string storedBindingRows(const std::string& storedSite, const char* property);
// The rows of the site's own node that tell its number on the server that it came from.
std::string siteNodeRows(const std::string& storedSite);
// All readable rows of a site: its own node first, then each node behind its parent, and of a node's rows
// those first that say how it is made.
std::string siteRows(const std::string& storedSite);

// One value of one node. The value is SQL already: bare, or quoted by quotedLiteral. An empty column and an
// empty value give a statement that the database refuses.
struct PropertyRow {
  std::int16_t site = 0;
  std::string location;
  std::string name;
  Value nodeClass;
  std::int32_t dataType = 0;
  std::string localPath;
  std::string appPath;
  std::string column;
  std::string value;
};
std::string addPropertyRow(const PropertyRow& row);
std::string quotedLiteral(const Value& text);

// New bindings of a site; the property is ServerBindings or SecureBindings.
std::string addStoredBindings(std::int16_t site, const std::string& location, const char* property,
                              const std::string& bindings);

// The directory of a node. The in-process value is SQL already.
struct TreeRow {
  std::string site;
  std::string location;
  std::string localPath;
  std::string appPath;
  std::string inProcess;
  Value nodeClass;
  std::string directory;
  std::string pool;
};
std::string addDirectoryTreeRow(const TreeRow& row);
std::string addVirtualDirectoryTreeRow(const TreeRow& row);
// Names ten columns and gives nine values, the application's path being the one left out: the database
// refuses it. That is how virtual directories found by the second search have always been lost; stores depend
// on it.
std::string addLateVirtualDirectoryTreeRow(const TreeRow& row);

}  // namespace statements

}  // namespace trelvin
