#include "contract/facilities.h"

#include "fakes/windows/directory_service.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/access_lists.h"
#include "platform/windows/file_system.h"
#include "platform/windows/locale_clock.h"
#include "platform/windows/profile_files.h"
#include "platform/windows/program_opener.h"
#include "platform/windows/shell_copy.h"
#include "platform/windows/system_registry.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

std::unique_ptr<FileSystem> systemFiles() {
  return makeFileSystem();
}

std::unique_ptr<ProfileFiles> systemProfileFiles() {
  return makeProfileFiles();
}

std::unique_ptr<Registry> systemRegistry(const TempFolder& /*folder*/) {
  ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Trelvin Tests");
  return makeSystemRegistry();
}

std::unique_ptr<Clock> systemClock() {
  return makeLocaleClock();
}

std::unique_ptr<Databases> systemDatabases() {
  return makeOdbcDatabases([](std::string_view text) { return std::string(text); });
}

std::unique_ptr<Metabase> systemMetabase(const TempFolder& network) {
  return makeDirectoryService(network.path());
}

// Of keys, whose lists are kept everywhere; Wine keeps none with files.
std::unique_ptr<NtfsControl> systemAccessLists() {
  return makeAccessLists(makeKeySecurity());
}

std::string pathWithAccessList(const TempFolder& folder, std::string_view name) {
  // Of a name that nobody else has, since a key that lost its list may be hard to remove; it stays until the
  // machine is switched off.
  const std::string path =
      "Software\\Trelvin Tests\\" + utf8Text(folder.path().filename().wstring()) + " " + std::string(name);
  HKEY key = nullptr;
  ::RegCreateKeyExW(HKEY_CURRENT_USER, wideText(path).c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                    KEY_ALL_ACCESS, nullptr, &key, nullptr);
  ::RegCloseKey(key);
  return path;
}

std::unique_ptr<Shell> systemShell() {
  return makeShellCopy();
}

// 0x402 was the number up to Windows Server 2003; newer ones have others, and more than one.
bool tellsMissingSource(std::int32_t number) {
  return number != 0;
}

std::unique_ptr<Opener> systemOpener() {
  return makeProgramOpener([] { return std::intptr_t{0}; });
}

std::filesystem::path writeProgram(const TempFolder& folder) {
  return folder.write("Upgrade.cmd", "@echo off\r\necho. > \"" + folder.path().string() + "\\started\"\r\n");
}

std::string programForm(const std::filesystem::path& native) {
  return utf8Text(native.wstring());
}

bool isSignalled(std::intptr_t handle) {
  return ::WaitForSingleObject(reinterpret_cast<HANDLE>(handle), 0) == WAIT_OBJECT_0;
}

// Windows does; Wine loses the cause on its way.
bool tellsResetFromClose() {
  return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}

}  // namespace trelvin::test
