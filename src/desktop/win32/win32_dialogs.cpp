#include "desktop/win32/win32_dialogs.h"

#include <commdlg.h>

#include <array>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

constexpr const char* kProgramName = "Trelvin";

UINT buttonsOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOkCancel:
      return MB_OKCANCEL;
    case Buttons::kYesNo:
      return MB_YESNO;
    case Buttons::kYesNoCancel:
      return MB_YESNOCANCEL;
    case Buttons::kAbortRetryIgnore:
      return MB_ABORTRETRYIGNORE;
    case Buttons::kOk:
      break;
  }
  return MB_OK;
}

// The box that asks for a text.
class InputForm final : public Form {
 public:
  Label lblPrompt{*this, "lblPrompt"};
  TextBox txtAnswer{*this, "txtAnswer"};
  Button cmdOk{*this, "cmdOk", "OK"};
  Button cmdCancel{*this, "cmdCancel", "Cancel"};
};

WindowLayout inputLayout() {
  const Place gap{.kind = Place::Kind::kGap, .share = 1};
  return {.body = {.kind = Place::Kind::kColumn,
                   .places = {{.control = "lblPrompt"},
                              {.control = "txtAnswer", .characters = 60},
                              {.kind = Place::Kind::kRow,
                               .places = {gap, {.control = "cmdOk"}, {.control = "cmdCancel"}}}}},
          .returnPresses = "cmdOk",
          .escapePresses = "cmdCancel",
          .isFixed = true};
}

// Captions and patterns, each with a NUL behind it, and one more at the end.
std::wstring filtersOf(const FileChoice& choice) {
  std::wstring filters;
  for (const FileChoice::Filter& each : choice.filters) {
    filters += wideText(each.caption) + L'\0' + wideText(each.pattern) + L'\0';
  }
  return filters + L'\0';
}

// What the chooser starts on. The folder belongs into the path: one that is named apart counts less than the
// one that was chosen the time before. A folder that isn't there is left out; the chooser could refuse to
// open.
std::wstring startOf(const std::string& path) {
  const std::filesystem::path whole = wideText(path);
  std::error_code ignored;
  return std::filesystem::is_directory(whole.parent_path(), ignored) ? whole.wstring()
                                                                     : whole.filename().wstring();
}

class Win32Dialogs final : public Dialogs {
 public:
  explicit Win32Dialogs(Win32Desktop& desktop) : desktop_(desktop) {}

  Answer showMessage(const Message& message) override {
    const std::wstring text = wideText(message.text);
    const std::wstring title = wideText(message.title.empty() ? kProgramName : message.title);
    const UINT icon = message.icon == Icon::kExclamation ? MB_ICONEXCLAMATION : 0;
    return static_cast<Answer>(desktop_.showBox([&](HWND owner) {
      return MessageBoxW(owner, text.c_str(), title.c_str(), buttonsOf(message.buttons) | icon);
    }));
  }

  std::string inputBox(std::string_view title, std::string_view prompt,
                       std::string_view defaultText) override {
    InputForm form;
    form.caption = title.empty() ? kProgramName : title;
    form.lblPrompt.caption = prompt;
    form.txtAnswer.text = defaultText;
    std::string answer;
    form.cmdOk.onClick = [&] {
      answer = form.txtAnswer.text;
      form.visible = false;
    };
    form.cmdCancel.onClick = [&] { form.visible = false; };
    desktop_.showWindow(form, inputLayout(), form.cmdCancel.onClick);
    return answer;
  }

  std::optional<std::string> chooseFileToSave(const FileChoice& choice) override {
    return choose(choice, GetSaveFileNameW);
  }
  std::optional<std::string> chooseFileToOpen(const FileChoice& choice) override {
    return choose(choice, GetOpenFileNameW);
  }

 private:
  std::optional<std::string> choose(const FileChoice& choice, BOOL(WINAPI* chooser)(OPENFILENAMEW*)) {
    const std::wstring title = wideText(choice.title);
    const std::wstring filters = filtersOf(choice);
    const std::wstring extension = wideText(choice.defaultExtension);
    const std::wstring start = startOf(choice.path);
    std::array<wchar_t, 0x8000> path{};
    start.copy(path.data(), path.size() - 1);
    OPENFILENAMEW record{};
    record.lStructSize = sizeof record;
    record.lpstrFilter = choice.filters.empty() ? nullptr : filters.c_str();
    record.nFilterIndex = static_cast<DWORD>(choice.filterIndex);
    record.lpstrFile = path.data();
    record.nMaxFile = static_cast<DWORD>(path.size());
    record.lpstrTitle = title.empty() ? nullptr : title.c_str();
    record.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
    // Where the process stands is the program's own affair. The flag alone doesn't bind the chooser that
    // opens.
    record.Flags = choice.flags | OFN_NOCHANGEDIR;
    const std::filesystem::path current = std::filesystem::current_path();
    const int hasChosen = desktop_.showBox([&](HWND owner) {
      record.hwndOwner = owner;
      return chooser(&record);
    });
    std::filesystem::current_path(current);
    if (hasChosen == 0) return std::nullopt;
    return utf8Text(path.data());
  }

  Win32Desktop& desktop_;
};

class Win32Events final : public Events {
 public:
  explicit Win32Events(Win32Desktop& desktop) : desktop_(desktop) {}
  void doEvents() override { desktop_.yield(); }
  void beep() override { MessageBeep(MB_OK); }
  void showProgress(std::string_view title, std::uint64_t done, std::uint64_t found) override {
    desktop_.showProgress(title, done, found);
  }

 private:
  Win32Desktop& desktop_;
};

}  // namespace

std::unique_ptr<Dialogs> makeWin32Dialogs(Win32Desktop& desktop) {
  return std::make_unique<Win32Dialogs>(desktop);
}

std::unique_ptr<Events> makeWin32Events(Win32Desktop& desktop) {
  return std::make_unique<Win32Events>(desktop);
}

}  // namespace trelvin::desktop
