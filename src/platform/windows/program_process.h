// The process itself: where its program lies, how it was called, whether it is the only one.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/application.h"

namespace trelvin {

// What stands in a command line behind the program's name, which may be quoted, and the blank that ends it.
// The shell puts such a blank behind a name that nothing follows, too.
std::string argumentsOf(std::wstring_view line);

// The claim of prevInstance is a mutex named after the executable, in any case of its path, for all users of
// the machine: the window that somebody left open must not meet the nightly job. It goes with the process,
// however that ends.
std::unique_ptr<Application> makeApplication();

}  // namespace trelvin
