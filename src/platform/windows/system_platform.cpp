#include "platform/system_platform.h"

#include <iostream>
#include <memory>
#include <string>

#include "platform/platform.h"
#include "platform/shared/console.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/shared/tcp_sockets.h"
#include "platform/windows/access_lists.h"
#include "platform/windows/adsi/adsi_metabase.h"
#include "platform/windows/file_system.h"
#include "platform/windows/locale_clock.h"
#include "platform/windows/profile_files.h"
#include "platform/windows/program_opener.h"
#include "platform/windows/program_process.h"
#include "platform/windows/shell_copy.h"
#include "platform/windows/system_registry.h"
#include "platform/windows/windows_api.h"

namespace trelvin {

namespace {

// It is in the main window that documents are asked for.
std::intptr_t windowOfPerson() {
  return reinterpret_cast<std::intptr_t>(::GetActiveWindow());
}

}  // namespace

// Windows itself knows how the program was called, and the shell tells a person what it could not copy.
void useSystemPlatform(int /*argc*/, char** /*argv*/, const Log& /*log*/) {
  Platform& set = platform();
  set.application = makeApplication();
  set.clock = makeLocaleClock();
  set.databases = makeOdbcDatabases([](std::string_view text) { return std::string(text); });
  set.dialogs = makeConsoleDialogs(std::cerr);
  set.events = makeConsoleEvents();
  set.files = makeFileSystem();
  set.metabase = makeAdsiMetabase();
  set.opener = makeProgramOpener(windowOfPerson);
  set.profile = makeProfileFiles();
  set.shell = makeShellCopy();
  set.sockets = makeTcpSockets();
  set.createNtfsControl = [] { return makeAccessLists(makeFileSecurity()); };
  set.registry = makeSystemRegistry();
}

// The clock asks Windows for the forms of the user, and so does everything that Windows says itself.
void useLanguageOfUser() {}

}  // namespace trelvin
