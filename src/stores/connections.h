// The two databases: where they are, and opening them.
#pragma once

#include <string>

namespace trelvin {

// Connection string of a database file, whose path is in the program's own form.
std::string fileConnectionString(const std::string& path);
// The data source of the registry if one is named there, else TrelvinData.mdb beside the program.
std::string dataConnectionString();
// Always Trelvin.mdb beside the program: only the data database can be moved.
std::string settingsConnectionString();

// Makes DBSettings, rsSettings, DBData and rsData, all closed.
void createStores();
// Opens DBSettings with sSettingsConnection. The test behind it reaches its message only when an error number
// stands over from before the call, since a failing open leaves the routine.
void openSettingsDatabase();
// Opens DBData with the string given.
void openDataDatabase(const std::string& connectionString);

// Points the program to the current data source. Nothing calls it: a change of source takes effect at the
// next start.
void ReLoadDB();

}  // namespace trelvin
