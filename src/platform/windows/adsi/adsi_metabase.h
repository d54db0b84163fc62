// IIS:// paths on Windows: the directory service's own objects, late bound.
#pragma once

#include <memory>

#include "platform/metabase.h"

namespace trelvin {

// Numbers and descriptions of failures are the directory service's own; a bind fails with 429 on a machine
// without its provider. One thread only: the one that makes
// it.
std::unique_ptr<Metabase> makeAdsiMetabase();

}  // namespace trelvin
