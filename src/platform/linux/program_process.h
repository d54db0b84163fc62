// The process itself: where its program lies, how it was called, whether it is the only one.
#pragma once

#include <memory>
#include <string>

#include "platform/application.h"

namespace trelvin {

struct ProgramPlace {
  std::string folder;      // native; what path() tells in the program's own form
  std::string executable;  // native; one instance of it runs when a process holds a lock on it
};

// The arguments are joined by single blanks, as Windows hands a command line over: one that holds blanks
// comes out as several words.
//
// The claim of prevInstance is an advisory lock. It goes with the process, however that ends, and no started
// program takes it over. The executable itself is locked, read only, so that a program folder without the
// right to write will do; where that can't be (an executable that may be run and not read, a network file
// system that locks only what is open for writing) Trelvin.lock in the folder serves. Where neither can be
// locked no other instance is seen.
std::unique_ptr<Application> makeApplication(ProgramPlace place, int argc, const char* const* argv);

}  // namespace trelvin
