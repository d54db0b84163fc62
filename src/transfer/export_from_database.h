// Out of the data database onto a server.
#pragma once

namespace trelvin {

// Rebuilds the selected stored sites on the export server from their rows alone. Failures are ignored
// statement by statement; what becomes of them is in the log.
void exportToServerFromFile();

}  // namespace trelvin
