// Opens what the system knows how to open: addresses and documents through xdg-open, programs themselves.
#pragma once

#include <memory>

#include "platform/linux/paths.h"
#include "platform/shell.h"

namespace trelvin {

// A text with a scheme and "://" is an address. A name that ends in .exe, in any case, is a program, as it is
// on Windows; it is started as it stands and never by a command line. Every other file is a document. What is
// started has neither this process's streams nor its terminal and lives on when it ends. How a window is to
// show is for the desktop to say.
std::unique_ptr<Opener> makeProgramOpener(PathMapping toNative);

}  // namespace trelvin
