#include "platform/shared/console.h"

#include <ostream>

namespace trelvin {

namespace {

constexpr const char* kProgramName = "Trelvin";

struct Refusal {
  Answer answer;
  const char* caption;
};

Refusal refusalOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOk:
      return {Answer::kOk, "OK"};
    case Buttons::kYesNo:
      return {Answer::kNo, "No"};
    case Buttons::kAbortRetryIgnore:
      return {Answer::kAbort, "Abort"};
    case Buttons::kOkCancel:
    case Buttons::kYesNoCancel:
      break;
  }
  return {Answer::kCancel, "Cancel"};
}

class ConsoleDialogs final : public Dialogs {
 public:
  explicit ConsoleDialogs(std::ostream& stream) : stream_(stream) {}

  Answer showMessage(const Message& message) override {
    const Refusal refusal = refusalOf(message.buttons);
    ask(message.title, message.text, refusal.caption);
    return refusal.answer;
  }

  std::string inputBox(std::string_view title, std::string_view prompt,
                       std::string_view /*defaultText*/) override {
    ask(title, prompt, "Cancel");
    return {};
  }

  std::optional<std::string> chooseFileToSave(const FileChoice& choice) override { return refused(choice); }
  std::optional<std::string> chooseFileToOpen(const FileChoice& choice) override { return refused(choice); }

 private:
  std::optional<std::string> refused(const FileChoice& choice) {
    ask(choice.title, choice.path, "Cancel");
    return std::nullopt;
  }

  void ask(std::string_view title, std::string_view text, std::string_view answer) {
    stream_ << (title.empty() ? kProgramName : title) << ": " << text << '\n';
    stream_ << kProgramName << ": answered with " << answer << ", since there is no window to ask in."
            << std::endl;
  }

  std::ostream& stream_;
};

class ConsoleEvents final : public Events {
 public:
  void doEvents() override {}
  // A scheduler would mail the control character.
  void beep() override {}
};

}  // namespace

std::unique_ptr<Dialogs> makeConsoleDialogs(std::ostream& stream) {
  return std::make_unique<ConsoleDialogs>(stream);
}

std::unique_ptr<Events> makeConsoleEvents() {
  return std::make_unique<ConsoleEvents>();
}

}  // namespace trelvin
