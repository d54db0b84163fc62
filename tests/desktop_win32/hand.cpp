#include "desktop_win32/hand.h"

#include <commctrl.h>

#include <array>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/windows/wide_text.h"

namespace trelvin::test {

namespace {

constexpr const wchar_t* kBoxClass = L"#32770";

// Windows gives a timer of a thread no word of its owner.
Hand* watching = nullptr;

std::vector<HWND> windowsOfProgram() {
  std::vector<HWND> found;
  EnumThreadWindows(
      GetCurrentThreadId(),
      [](HWND window, LPARAM list) -> BOOL {
        if (IsWindowVisible(window) != FALSE) reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&found));
  return found;
}

std::wstring classOf(HWND window) {
  std::array<wchar_t, 64> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return name.data();
}

LPARAM pointOf(POINT place) {
  return MAKELPARAM(static_cast<WORD>(place.x), static_cast<WORD>(place.y));
}

HWND tipsOf(HWND owner) {
  for (HWND each = nullptr; (each = FindWindowExW(nullptr, each, TOOLTIPS_CLASSW, nullptr)) != nullptr;) {
    if (GetWindow(each, GW_OWNER) == owner) return each;
  }
  return nullptr;
}

}  // namespace

Hand::Hand(desktop::Win32Desktop& desktop) : desktop_(desktop), timer_(SetTimer(nullptr, 0, 20, watch)) {
  watching = this;
}

Hand::~Hand() {
  KillTimer(nullptr, timer_);
  watching = nullptr;
}

void Hand::look() {
  for (int i = 0; i < 3; ++i) desktop_.turn(false);
}

bool Hand::waitFor(const std::function<bool()>& holds) {
  for (int i = 0; i < 500; ++i) {
    look();
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

HWND Hand::window(const std::string& title) {
  for (HWND each : windowsOfProgram()) {
    if (textOf(each) == title) return each;
  }
  return nullptr;
}

HWND Hand::see(const Form& form, const std::string& control) {
  const Control* const wanted = form.control(control);
  if (wanted == nullptr) return nullptr;
  for (HWND each : windowsOfProgram()) {
    if (textOf(each) != form.caption || classOf(each) != L"TrelvinWindow") continue;
    const int number = desktop::numberOf(form, *wanted);
    if (const HWND found = GetDlgItem(each, number)) return found;
    for (HWND bar = nullptr; (bar = FindWindowExW(each, bar, STATUSCLASSNAMEW, nullptr)) != nullptr;) {
      if (const HWND found = GetDlgItem(bar, number)) return found;
    }
  }
  return nullptr;
}

bool Hand::canSee(const Form& form, const std::string& control) {
  return IsWindowVisible(see(form, control)) != FALSE;
}

std::string Hand::textOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return utf8Text(text);
}

std::vector<std::string> Hand::entriesOf(HWND list) {
  const bool isDropDown = classOf(list) == L"ComboBox";
  std::vector<std::string> entries;
  const LRESULT count = SendMessageW(list, isDropDown ? CB_GETCOUNT : LB_GETCOUNT, 0, 0);
  for (LRESULT i = 0; i < count; ++i) {
    const auto index = static_cast<WPARAM>(i);
    const LRESULT length = SendMessageW(list, isDropDown ? CB_GETLBTEXTLEN : LB_GETTEXTLEN, index, 0);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    SendMessageW(list, isDropDown ? CB_GETLBTEXT : LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    entries.push_back(utf8Text(text));
  }
  return entries;
}

std::string Hand::tipAt(HWND control, POINT place) {
  SendMessageW(control, WM_MOUSEMOVE, 0, pointOf(place));
  const HWND top = GetAncestor(control, GA_ROOT);
  std::array<wchar_t, 1024> text{};
  TTTOOLINFOW tool{};
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_IDISHWND;
  tool.hwnd = top;
  tool.uId = reinterpret_cast<UINT_PTR>(control);
  tool.lpszText = text.data();
  SendMessageW(tipsOf(top), TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
  return utf8Text(text.data());
}

void Hand::click(HWND control) {
  RECT room{};
  GetClientRect(control, &room);
  clickAt(control, {room.right / 2, room.bottom / 2});
}

// Windows sends none of this to what is switched off.
void Hand::clickAt(HWND control, POINT place, WPARAM keys) {
  if (IsWindowEnabled(control) == FALSE || IsWindowEnabled(GetAncestor(control, GA_ROOT)) == FALSE) return;
  PostMessageW(control, WM_LBUTTONDOWN, keys, pointOf(place));
  PostMessageW(control, WM_LBUTTONUP, keys & ~static_cast<WPARAM>(MK_LBUTTON), pointOf(place));
  look();
}

void Hand::clickEntry(HWND list, int entry, bool isDouble) {
  RECT room{};
  SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(&room));
  const POINT place{room.left + 30, (room.top + room.bottom) / 2};
  clickAt(list, place);
  if (!isDouble) return;
  PostMessageW(list, WM_LBUTTONDBLCLK, MK_LBUTTON, pointOf(place));
  PostMessageW(list, WM_LBUTTONUP, 0, pointOf(place));
  look();
}

void Hand::clickTab(HWND strip, int index) {
  RECT room{};
  SendMessageW(strip, TCM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&room));
  clickAt(strip, {(room.left + room.right) / 2, (room.top + room.bottom) / 2});
}

void Hand::key(WPARAM code) {
  PostMessageW(GetFocus(), WM_KEYDOWN, code, 1);
  PostMessageW(GetFocus(), WM_KEYUP, code, static_cast<LPARAM>(0xC0000001));
  look();
}

void Hand::type(const std::string& text) {
  for (const wchar_t each : wideText(text)) PostMessageW(GetFocus(), WM_CHAR, each, 1);
  look();
}

void Hand::accessKey(char letter) {
  PostMessageW(GetFocus(), WM_SYSCHAR, static_cast<WPARAM>(letter), 0x20000001);
  look();
}

void Hand::focus(HWND control) {
  SetFocus(control);
  look();
}

void Hand::willDo(std::function<void(HWND)> whatToDo) {
  answers_.push_back(std::move(whatToDo));
}

void Hand::willPress(int button) {
  willDo([button](HWND box) { PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0); });
}

void CALLBACK Hand::watch(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*time*/) {
  if (watching != nullptr) watching->answer();
}

void Hand::answer() {
  for (HWND each : windowsOfProgram()) {
    if (classOf(each) != kBoxClass || each == answered_ || answers_.empty()) continue;
    answered_ = each;
    const auto whatToDo = std::move(answers_.front());
    answers_.erase(answers_.begin());
    whatToDo(each);
    return;
  }
}

}  // namespace trelvin::test
