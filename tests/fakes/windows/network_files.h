// A file system whose network is as that of Windows: a server is no folder, and nobody makes a share by
// making a folder. The emulator takes both for folders.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "core/err.h"
#include "fakes/failing_files.h"

namespace trelvin::test {

class NetworkFiles final : public FailingFiles {
 public:
  using FailingFiles::FailingFiles;

  [[nodiscard]] bool folderExists(std::string_view path) const override {
    return !isRoot(path, kServer) && FailingFiles::folderExists(path);
  }
  void createFolder(std::string_view path) override {
    if (isRoot(path, kServer) || isRoot(path, kShare)) throw Failure(error_number::kPathNotFound);
    FailingFiles::createFolder(path);
  }

 private:
  // How many backslashes there are in \\server and \\server\share.
  static constexpr std::ptrdiff_t kServer = 2;
  static constexpr std::ptrdiff_t kShare = 3;
  static bool isRoot(std::string_view path, std::ptrdiff_t backslashes) {
    return path.starts_with("\\\\") && std::ranges::count(path, '\\') == backslashes;
  }
};

}  // namespace trelvin::test
