// What a touch of the preferences, the version lists, the site kind and the tabs does.
#pragma once

#include <cstdint>

namespace trelvin {

void chkCopyFiles_Click();
void chkSetFilePerms_Click();
void chkFastPermissions_Click();
void chkCopyIIS_Click();
void chkRunSilent_Click();
void chkStartWebs_Click();

// Click and key-up of the version lists; any key, since it may have chosen another line.
void lstIMIISVer_Click();
void lstEXIISVer_Click();
void lstIMIISVer_KeyUp(std::int32_t keyCode);
void lstEXIISVer_KeyUp(std::int32_t keyCode);

void optExportWeb_Click();
void optExportFTP_Click();
void optCreateWebs_Click();
void optOverwriteWebs_Click();
void optExportServer_Click();
void optExportFile_Click();

void TabImportType_Click();
void TabExportType_Click();
void tabNewValues_Click();

// Puts the tab "Database" back behind the tabs of TabExportType.
void addDatabaseExportTab();

}  // namespace trelvin
