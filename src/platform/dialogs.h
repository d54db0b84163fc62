// What is asked of a person. A run without a window is answered by refusal and never waits.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

enum class Buttons { kOk, kOkCancel, kYesNo, kYesNoCancel, kAbortRetryIgnore };
enum class Answer { kOk = 1, kCancel = 2, kAbort = 3, kRetry = 4, kIgnore = 5, kYes = 6, kNo = 7 };
enum class Icon { kNone, kExclamation };

struct Message {
  std::string text;
  Buttons buttons = Buttons::kOk;
  std::string title{};  // empty: the system's default, the program's name
  Icon icon = Icon::kNone;
};

// What a file chooser shows, after the platform's open-file record.
struct FileChoice {
  struct Filter {
    std::string caption;
    std::string pattern;
  };
  std::string title;
  std::vector<Filter> filters;
  std::int32_t filterIndex = 1;    // the filter in force at first, counted from 1
  std::string path;                // where it starts, in the program's own form; the file need not be there
  std::string defaultExtension{};  // without a dot; goes behind a name that is typed without one
  std::uint32_t flags = 0;
};
// The platform's flags of a chooser.
namespace chooser_flag {
inline constexpr std::uint32_t kOverwritePrompt = 0x2;  // only a chooser for saving asks
inline constexpr std::uint32_t kHideReadOnly = 0x4;     // no box that says "Open as read-only"
inline constexpr std::uint32_t kExplorer = 0x80000;
inline constexpr std::uint32_t kLongNames = 0x200000;
}  // namespace chooser_flag

class Dialogs {
 public:
  Dialogs() = default;
  Dialogs(const Dialogs&) = delete;
  Dialogs& operator=(const Dialogs&) = delete;
  virtual ~Dialogs() = default;

  // Blocks until it is answered. Always one of the buttons that were offered.
  virtual Answer showMessage(const Message& message) = 0;
  // The text typed in; empty for Cancel.
  virtual std::string inputBox(std::string_view title, std::string_view prompt,
                               std::string_view defaultText) = 0;
  // The path of one file in the program's own form, as far as its first NUL; nothing for Cancel. Neither
  // makes or changes a file, and a file to open need not be there.
  virtual std::optional<std::string> chooseFileToSave(const FileChoice& choice) = 0;
  virtual std::optional<std::string> chooseFileToOpen(const FileChoice& choice) = 0;
};

}  // namespace trelvin
