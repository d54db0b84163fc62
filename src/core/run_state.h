// The program-wide run state: what the command line, the preferences and a run in progress have set.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace trelvin {

struct RunState {
  bool bCopyFiles = false;     // copy the web content with the site
  bool bSetFilePerms = false;  // replicate NTFS permissions with the content
  bool bCopyIIS = false;       // copy the IIS configuration of the site; on from the window's load on
  bool bRunSilent = false;     // no message boxes: what would be shown goes to the output list and the log
  bool bStartWebs = false;     // start each site on the target after its creation
  bool bFastPerms = false;     // the quick permission copy

  bool bExportCancelled = false;  // the run in progress is to stop
  bool bCancelPerms = false;      // permission replication is to stop

  std::int32_t lPermsSet = 0;  // folders and lists that the permission walk in hand has done
  std::int16_t iFileTick = 0;  // files since the walk last gave way to events; kept from run to run

  double dblEXIISVer = 0;  // IIS version of the export side: 4, 5 or 6
  double dblIMIISVer = 0;  // of the import side

  std::array<std::string, 7> asHttpVerbs;  // the full verb list that script maps are inverted with

  std::string sBackupJob;   // path of the job file
  bool bRunBackup = false;  // run the job at the end of the main window's load
  std::string
      sCmdConnection;   // data connection string of the command line; replaces sDataConnection in a job run
  bool bDebug = false;  // write the extra log lines
  bool bSkipFilters = false;  // leave out filter objects from server to server; on from the welcome form on
  bool bAddHeaders = false;   // never set: the marker header is always written
  std::string sProxyServer;   // held and edited, read by no other routine
};

inline RunState run;

}  // namespace trelvin
