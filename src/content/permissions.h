// NTFS access lists, from one tree to another.
#pragma once

#include <cstdint>
#include <string>

namespace trelvin {

class FrmMain;

// Makes the access lists of the target's folders and, unless the fast mode is on, files equal those of the
// source. Walks both trees side by side; what exists on one side only is passed over. In account names the
// old name is replaced by the new one, in any case. Failures are logged.
void synchPermissions(FrmMain& oForm, const std::string& vSource, const std::string& vTarget,
                      const std::string& vOldName, const std::string& sNewName);

// The same for one path, a folder or a file. A failure partway leaves the target's list as far as it got.
void setPerms(FrmMain& oForm, const std::string& vSource, const std::string& vTarget,
              const std::string& vOldName, const std::string& sNewName);

// Shows the count of a walk in hand once a second.
void syncPermTimer_Timer();

}  // namespace trelvin
