// The two directions towards a server.
#pragma once

namespace trelvin {

// Selected sites of a live source server: content, permissions, structure, properties, bindings, stamp,
// start.
void exportToServerFromServer();

}  // namespace trelvin
