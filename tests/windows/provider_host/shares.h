// The administrative shares of a network folder's servers, for the programs of an emulated Windows.
#pragma once

#include <string>

namespace trelvin::test {

// \\server\D$ leads to the folder server/D$ of this network folder from now on. The emulator looks such names
// up below a link, whose place the environment variable TRELVIN_SHARES_LINK tells; without it nothing
// happens. Throws when the link can't be made.
void placeShares(const std::string& networkFolder);

}  // namespace trelvin::test
