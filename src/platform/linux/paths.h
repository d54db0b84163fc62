// Where the program's Windows paths lie on this machine. Nothing else knows.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace trelvin {

// The native path of a path of the program.
using PathMapping = std::function<std::string(std::string_view)>;

// The native folder that the running executable lies in. Fails with 76 on a machine without /proc.
std::string executableFolder();

// Z:\x for a native absolute path /x, and \ for / in a relative one. A native name that holds a backslash has
// no form of its own and can't be reached.
std::string windowsPath(std::string_view nativePath);

// Whether a file of that name is a program, as on Windows its name alone tells: it ends in .exe, in any case.
bool isProgramName(std::string_view path);

class Paths {
 public:
  // Both native. The network folder holds one folder for each server, and that one folder for each share.
  explicit Paths(std::string networkFolder) : networkFolder_(std::move(networkFolder)) {}
  // The network folder that TRELVIN_NETWORK names, else Network in the program folder.
  static Paths ofProgram(const std::string& programFolder);

  // Z:\x, and \x without a drive, is /x; \\server\share\x lies below the network folder; any other drive
  // D:\x is \\Localhost\D$\x; every other name lies in the current directory and stays relative. A slash
  // counts as a backslash. A component that isn't there as written stands for one that differs in case only;
  // where there is none either, it stays as written. "." and ".." are taken out first, and ".." never leaves
  // a share or the root. Symbolic links and mounts below a share are followed: they are the administrator's
  // own. Fails with 52 for the empty path, one that holds a NUL, and a server or share that is no name.
  [[nodiscard]] std::string nativePath(std::string_view windowsPath) const;

  // The native path of the metabase file of a server: MetaBase.xml in system32\inetsrv of C$\WINDOWS, else of
  // C$\WINNT. None when there is no such file or the text is no server's name.
  [[nodiscard]] std::optional<std::string> metabaseFileOf(std::string_view server) const;

 private:
  std::string networkFolder_;
};

}  // namespace trelvin
