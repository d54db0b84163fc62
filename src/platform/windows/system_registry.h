// The registry of this machine.
#pragma once

#include <memory>

#include "platform/registry.h"

namespace trelvin {

// Texts pass in UTF-8, without a NUL, and are stored wide; data of other types pass as they are stored.
std::unique_ptr<Registry> makeSystemRegistry();

}  // namespace trelvin
