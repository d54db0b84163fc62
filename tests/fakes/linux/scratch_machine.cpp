#include "fakes/scratch_machine.h"

#include <cstdint>

#include "platform/linux/access_driver.h"
#include "platform/linux/access_lists.h"
#include "platform/linux/file_system.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "platform/linux/profile_files.h"
#include "platform/linux/registry_file.h"
#include "platform/linux/tree_copy.h"
#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin::test {

void useScratchMachine(Platform& set, const ScratchMachine& machine) {
  const PathMapping toNative = [paths = Paths(machine.network.string())](std::string_view path) {
    return paths.nativePath(path);
  };
  set.files = makeFileSystem(toNative);
  set.profile = makeProfileFiles(toNative);
  set.shell =
      makeTreeCopy(toNative, machine.onCopyReport, [](std::string_view, std::uint64_t, std::uint64_t) {});
  set.createNtfsControl = [toNative] { return makeAccessLists(toNative); };
  set.registry = makeRegistryFile((machine.programFolder / "Registry.reg").string());
  set.databases =
      makeOdbcDatabases([toNative](std::string_view text) { return accessDriverString(text, toNative); });
}

std::unique_ptr<Metabase> scratchMetabase(const std::filesystem::path& network) {
  return makeFileMetabase(
      [paths = Paths(network.string())](std::string_view server) { return paths.metabaseFileOf(server); });
}

std::unique_ptr<Metabase> scratchReader(const std::filesystem::path& network) {
  return scratchMetabase(network);
}

std::string programForm(const std::filesystem::path& native) {
  return windowsPath(native.string());
}

}  // namespace trelvin::test
