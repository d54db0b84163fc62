#include "fakes/scratch_machine.h"

#include "fakes/windows/directory_service.h"
#include "fakes/windows/network_files.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/access_lists.h"
#include "platform/windows/adsi/adsi_metabase.h"
#include "platform/windows/file_system.h"
#include "platform/windows/profile_files.h"
#include "platform/windows/shell_copy.h"
#include "platform/windows/system_registry.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

// The registry is that of all tests, so each begins without the program's key.
void useScratchMachine(Platform& set, const ScratchMachine& /*machine*/) {
  ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Morvane");
  set.files = std::make_unique<NetworkFiles>(makeFileSystem());
  set.profile = makeProfileFiles();
  set.createNtfsControl = [] { return makeAccessLists(makeFileSecurity()); };
  set.shell = makeShellCopy();
  set.registry = makeSystemRegistry();
  set.databases = makeOdbcDatabases([](std::string_view text) { return std::string(text); });
}

std::unique_ptr<Metabase> scratchMetabase(const std::filesystem::path& network) {
  return makeDirectoryService(network);
}

// There is one directory service on a machine; its servers are those of the program's own metabase.
std::unique_ptr<Metabase> scratchReader(const std::filesystem::path& /*network*/) {
  return makeAdsiMetabase();
}

std::string programForm(const std::filesystem::path& native) {
  return utf8Text(native.wstring());
}

}  // namespace trelvin::test
