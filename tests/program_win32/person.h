// A person in front of the program's own process: looks at its windows through what Windows tells of any
// program's, and uses the mouse and the keys of the screen (xdotool).
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/windows/windows_api.h"
#include "window/controls.h"

namespace trelvin::test {

class Person {
 public:
  // Looks at one process alone. The folder is for what has to be noted meanwhile.
  Person(DWORD process, std::filesystem::path notes);

  // Waits until something holds; false after a time that is far too long.
  [[nodiscard]] static bool waitFor(const std::function<bool()>& holds);

  // The window with that title; null when it isn't up.
  [[nodiscard]] HWND window(const std::string& title) const;
  // The window of a control; null when its form isn't up.
  [[nodiscard]] HWND see(const Form& form, const std::string& control) const;
  // The text of a message box with that title; empty when none is up.
  [[nodiscard]] std::string boxText(const std::string& title = "Trelvin") const;
  // Whether a click or a key would reach it: it can be seen, is switched on, and no other window lies over
  // it.
  [[nodiscard]] static bool canReach(HWND window);
  // What the keys go to.
  [[nodiscard]] HWND focus() const;

  // These wait until what they are for can be reached, and throw when it can't. What comes of them is for the
  // caller to wait for.
  void click(HWND window);
  void clickEntry(HWND list, int entry, bool isDouble = false);
  void clickTab(HWND strip, int index);
  // The button of a message box, by its number.
  void clickInBox(int button, const std::string& title = "Trelvin");
  // The cross in the caption.
  void clickClose(HWND window);
  // By their names, with blanks between: "alt+f x". Goes to the window in front, which has to be that one.
  void keys(const std::string& names, HWND inFront);
  void type(const std::string& text, HWND inFront);

  // Saves what a window looks like, without a pointer over it, to a file of the machine beneath
  // (ImageMagick).
  void takePicture(HWND window, const std::string& file);

 private:
  void clickAt(HWND window, POINT place, bool isDouble = false);
  void waitForFront(HWND window) const;
  // Run to their end. Throw when it fails.
  void xdotool(const std::string& arguments);
  void runBeneath(const std::string& command);

  DWORD process_;
  std::filesystem::path notes_;
};

}  // namespace trelvin::test
