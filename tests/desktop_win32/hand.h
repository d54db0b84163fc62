// A person in front of Windows' own windows: finds controls by their names, and uses mouse and keys as
// Windows would send them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "desktop/win32/win32_desktop.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

class Hand {
 public:
  explicit Hand(desktop::Win32Desktop& desktop);
  ~Hand();
  Hand(const Hand&) = delete;
  Hand& operator=(const Hand&) = delete;

  // Lets the windows deal with everything that has happened so far.
  void look();
  // Looks until something holds; false after a time that is far too long.
  bool waitFor(const std::function<bool()>& holds);

  // The window with that title among those of this program; null when it isn't up.
  [[nodiscard]] static HWND window(const std::string& title);
  // The window of a control; null when its form isn't up.
  [[nodiscard]] static HWND see(const Form& form, const std::string& control);
  [[nodiscard]] static bool canSee(const Form& form, const std::string& control);
  [[nodiscard]] static std::string textOf(HWND window);
  [[nodiscard]] static std::vector<std::string> entriesOf(HWND list);
  // What is told at a place of a control, once the pointer rests there.
  [[nodiscard]] std::string tipAt(HWND control, POINT place);

  void click(HWND control);
  void clickAt(HWND control, POINT place, WPARAM keys = MK_LBUTTON);
  void clickEntry(HWND list, int entry, bool isDouble = false);
  void clickTab(HWND strip, int index);
  void key(WPARAM code);
  void type(const std::string& text);
  // Alt with a letter.
  void accessKey(char letter);
  void focus(HWND control);

  // What the next box that comes up is answered with, be it in the middle of what a click does. It is called
  // with the box, and has to take it away.
  void willDo(std::function<void(HWND box)> whatToDo);
  void willPress(int button);

 private:
  static void CALLBACK watch(HWND window, UINT message, UINT_PTR timer, DWORD time);
  void answer();

  desktop::Win32Desktop& desktop_;
  std::vector<std::function<void(HWND)>> answers_;
  UINT_PTR timer_;
  HWND answered_ = nullptr;
};

}  // namespace trelvin::test
