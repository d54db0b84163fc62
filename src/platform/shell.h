// The shell's two calls: its file operation, and the opening of what it knows how to open.
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

  // Copies a tree without asking whether a file may be overwritten; leaves what only the target has, keeps
  // time stamps. Returns 0, else the system's number: for a source that isn't there 0x402, or another
  // number of a newer system. Never throws.
  virtual std::int32_t copy(const FileOperation& operation) = 0;

  // The number that the last call left behind, on a system that keeps one apart from the result.
  [[nodiscard]] virtual std::int32_t lastSystemError() const { return 0; }
};

// One call with the verb "open", without parameters and without a directory.
struct OpenOperation {
  std::string file;               // a document, a program, or an address such as http://host/page
  std::int32_t showCommand = 0;   // how its window is to show, by the system's numbers
  bool ownedByMainWindow = true;  // else the number 1, which is no window, stands in the owner's place
};

class Opener {
 public:
  Opener() = default;
  Opener(const Opener&) = delete;
  Opener& operator=(const Opener&) = delete;
  virtual ~Opener() = default;

  // Hands the file to the program that is meant for it, or starts it when it is a program, and does not wait
  // for that. Returns a number above 32, else why it was not opened: 2 no such file, 3 no such folder, 5
  // without the right, 8 out of memory, 11 no program of this machine, 31 nothing is meant for it. Never
  // throws.
  virtual std::int32_t open(const OpenOperation& operation) = 0;
};

}  // namespace trelvin
