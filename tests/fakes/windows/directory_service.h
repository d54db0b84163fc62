// The directory service's client of the program, on a directory service that the tests bring along.
#pragma once

#include <filesystem>
#include <memory>

#include "platform/metabase.h"

namespace trelvin::test {

// The servers of a network folder, through COM, with their shares: from now on \\server\D$ is the folder
// server/D$ in it, for every program under the same Wine. Registers the provider, which has to lie beside the
// test program and needs its host (scripts/run_under_wine.sh); throws when that is not there. One at a time.
// When it goes, an object that was not let go of fails the test.
std::unique_ptr<Metabase> makeDirectoryService(const std::filesystem::path& networkFolder);

// How many objects of the directory service somebody refers to.
long liveDirectoryObjects();

// How many times they were asked for the number of a member's name.
long directoryNameLookups();

// Whether there is such a directory service on the machine; without one a bind has nobody to ask.
void registerDirectoryService();
void removeDirectoryService();

}  // namespace trelvin::test
