#include "contract/facilities.h"

#include <poll.h>
#include <sys/xattr.h>

#include "platform/linux/access_driver.h"
#include "platform/linux/access_lists.h"
#include "platform/linux/file_system.h"
#include "platform/linux/locale_clock.h"
#include "platform/linux/metabase/metabase_file.h"
#include "platform/linux/paths.h"
#include "platform/linux/profile_files.h"
#include "platform/linux/program_opener.h"
#include "platform/linux/registry_file.h"
#include "platform/linux/tree_copy.h"
#include "platform/shared/odbc/odbc_databases.h"

namespace trelvin::test {

namespace {

PathMapping toNative() {
  return [](std::string_view path) { return Paths("/nowhere").nativePath(path); };
}

}  // namespace

std::unique_ptr<FileSystem> systemFiles() {
  return makeFileSystem(toNative());
}

std::unique_ptr<ProfileFiles> systemProfileFiles() {
  return makeProfileFiles(toNative());
}

std::unique_ptr<Registry> systemRegistry(const TempFolder& folder) {
  return makeRegistryFile((folder / "Registry.reg").string());
}

std::unique_ptr<Clock> systemClock() {
  return makeLocaleClock();
}

std::unique_ptr<Databases> systemDatabases() {
  return makeOdbcDatabases(
      [map = toNative()](std::string_view text) { return accessDriverString(text, map); });
}

std::unique_ptr<Metabase> systemMetabase(const TempFolder& network) {
  return makeFileMetabase([paths = Paths(network.path().string())](std::string_view server) {
    return paths.metabaseFileOf(server);
  });
}

std::unique_ptr<NtfsControl> systemAccessLists() {
  return makeAccessLists(toNative());
}

std::string pathWithAccessList(const TempFolder& folder, std::string_view name) {
  const std::filesystem::path file = folder.write(name, "");
  const bool keepsLists = ::setxattr(file.c_str(), "user.trelvin.try", "x", 1, 0) == 0;
  return keepsLists ? programForm(file) : std::string();
}

std::unique_ptr<Shell> systemShell() {
  return makeTreeCopy(toNative(), {}, {});
}

bool tellsMissingSource(std::int32_t number) {
  return number == 0x402;
}

std::unique_ptr<Opener> systemOpener() {
  return makeProgramOpener(toNative());
}

std::filesystem::path writeProgram(const TempFolder& folder) {
  const std::filesystem::path program =
      folder.write("Upgrade.exe", "#!/bin/sh\ncd '" + folder.path().string() + "'\necho > started\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  return program;
}

std::string programForm(const std::filesystem::path& native) {
  return windowsPath(native.string());
}

bool isSignalled(std::intptr_t handle) {
  pollfd asked{.fd = static_cast<int>(handle), .events = POLLIN, .revents = 0};
  return ::poll(&asked, 1, 0) == 1;
}

bool tellsResetFromClose() {
  return true;
}

}  // namespace trelvin::test
