// Reading what can change on a site's way: directories, bindings, what is to be copied. Each site is read
// once per listing, into tmpSettings and tmpFilesToCopy.
#pragma once

#include <string>

#include "platform/metabase.h"

namespace trelvin {

// The selection has changed: reads the sites that were not read yet and shows the last selected one.
void lstSites_Click();

// From the source server, and from the data database. Neither has a handler: a failure goes to the caller.
void getDetailsFromServer();
void getDetailsFromDatabase();

// Walks the children of a node, depth first in the provider's order, and writes a row for each virtual
// directory. Failures are ignored.
void populateDirectories(const NodeHandle& parent);

// The new directory of a folder, which must equal an entry of lstFolders exactly. The last match wins;
// without one the result is empty.
std::string getNewDir(const std::string& folder);

}  // namespace trelvin
