// The shell's file operation: a folder with all that is in it goes to another place.
#pragma once

#include <memory>

#include "platform/shell.h"

namespace trelvin {

// By the shell itself, with its own window for the progress. It stops at the first item that can't be copied
// and asks the person at the machine what is to become of it, as it does for every copy of a folder.
std::unique_ptr<Shell> makeShellCopy();

}  // namespace trelvin
