// The windows under Windows' own controls, over forms without the routines that hang on them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "desktop/win32/win32_desktop.h"
#include "desktop_win32/hand.h"
#include "window/controls.h"

namespace trelvin::test {

class DesktopWin32Test : public ::testing::Test {
 protected:
  explicit DesktopWin32Test(std::shared_ptr<desktop::Annotations> annotations = desktop::makeAnnotations());
  ~DesktopWin32Test() override;
  DesktopWin32Test(const DesktopWin32Test&) = delete;
  DesktopWin32Test& operator=(const DesktopWin32Test&) = delete;

  void show(Form& form);
  // Counts instead of what the control does.
  template <typename Kind>
  void count(Kind& control) {
    control.onClick = [this, name = control.name] { clicked.push_back(name); };
  }
  [[nodiscard]] static HWND main(const std::string& control);

  desktop::Win32Desktop desktop;
  Hand hand;
  std::vector<std::string> clicked;
};

}  // namespace trelvin::test
