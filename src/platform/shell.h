// The shell's file operation.
#pragma once

#include <cstdint>
#include <string>

namespace trelvin {

// Fields of the shell's own record, as far as the program fills them.
struct FileOperation {
  std::string from;  // a folder
  std::string to;    // the folder that gets it, under its own last name
  std::string progressTitle;
};

class Shell {
 public:
  Shell() = default;
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;
  virtual ~Shell() = default;

  // Copies a tree without asking: overwrites, leaves what only the target has, keeps time stamps. A file has
  // its name at the target only when it is whole. Items that can't be copied are left out and the rest still
  // travels. Returns 0, else the system's number; 0x402 for a source that isn't there. Never throws.
  virtual std::int32_t copy(const FileOperation& operation) = 0;

  // The number that the last call left behind, on a system that keeps one apart from the result.
  [[nodiscard]] virtual std::int32_t lastSystemError() const { return 0; }
};

}  // namespace trelvin
