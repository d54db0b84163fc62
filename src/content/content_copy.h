// A site's web content, from share to share.
#pragma once

#include <string>

namespace trelvin {

// The administrative-share path of a server's local path: every ":" becomes "$", and the server stands in
// front.
std::string sharePath(const std::string& server, const std::string& localPath);

// Copies the source folder into the parent of the target path, under the source's own last name: when the two
// last names differ, the content lands beside the target. Makes the target's missing folders first. A failure
// is logged, and the caller goes on.
void copyFolder(const std::string& sSource, const std::string& sTarget, const std::string& sTitle = {});

// Whether to go on: the folder is there, or a person, or a silent run, goes on without it. False asks to try
// again. Abort sets bExportCancelled and goes on. The kind is "Source" or "Target".
bool checkFolder(const std::string& sPath, const std::string& sKind);

}  // namespace trelvin
