// What is asked of a person. A run without a window is answered by refusal and never waits.
#pragma once

#include <string>
#include <string_view>

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
};

}  // namespace trelvin
