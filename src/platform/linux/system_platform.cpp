#include "platform/system_platform.h"

#include <clocale>
#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/access_driver.h"
#include "platform/linux/access_lists.h"
#include "platform/linux/file_system.h"
#include "platform/linux/locale_clock.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "platform/linux/profile_files.h"
#include "platform/linux/program_opener.h"
#include "platform/linux/program_process.h"
#include "platform/linux/registry_file.h"
#include "platform/linux/tree_copy.h"
#include "platform/platform.h"
#include "platform/shared/console.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/shared/tcp_sockets.h"

namespace trelvin {

void useSystemPlatform(int argc, char** argv, const Log& log) {
  // Whoever read the output may go away; the run must not go with him.
  std::signal(SIGPIPE, SIG_IGN);
  const std::string folder = executableFolder();
  const auto paths = std::make_shared<const Paths>(Paths::ofProgram(folder));
  const PathMapping toNative = [paths](std::string_view path) { return paths->nativePath(path); };

  Platform& set = platform();
  // The link leads to the file that runs, even when another one took its name meanwhile.
  set.application = makeApplication({.folder = folder, .executable = "/proc/self/exe"}, argc, argv);
  set.clock = makeLocaleClock();
  set.databases = makeOdbcDatabases([toNative](std::string_view connectionString) {
    return accessDriverString(connectionString, toNative);
  });
  set.dialogs = makeConsoleDialogs(std::cerr);
  set.events = makeConsoleEvents();
  set.sockets = makeTcpSockets();
  set.files = makeFileSystem(toNative);
  set.metabase = makeFileMetabase([paths](std::string_view server) { return paths->metabaseFileOf(server); },
                                  kMetabasePatience);
  set.opener = makeProgramOpener(toNative);
  set.profile = makeProfileFiles(toNative);
  set.shell =
      makeTreeCopy(toNative, log, [](std::string_view title, std::uint64_t done, std::uint64_t found) {
        platform().events->showProgress(title, done, found);
      });
  set.createNtfsControl = [toNative] { return makeAccessLists(toNative); };
  set.registry = makeRegistryFile(folder + "/Registry.reg");
}

void useLanguageOfUser() {
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_TIME, "");
  std::setlocale(LC_MESSAGES, "");
}

}  // namespace trelvin
