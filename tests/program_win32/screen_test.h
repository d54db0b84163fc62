// Trelvin.exe with its windows on a screen, as a person starts it.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "program_win32/person.h"
#include "windows/installed_program_test.h"

namespace trelvin::test {

class ScreenTest : public InstalledProgramTest {
 protected:
  // Two sites on WEB1.
  ScreenTest();

  // The program with its main window, ready for use. The current program is the one started last.
  void openProgram(const std::string& arguments = "-F");
  // Starts it; its first window may not be up yet.
  void startProgram(const std::string& arguments);
  [[nodiscard]] Person& person() const { return *person_; }
  [[nodiscard]] ProgramProcess& program() const { return *program_; }

  // Windows of the main window's controls; fails the test when it isn't up.
  [[nodiscard]] HWND main(const std::string& control) const;
  [[nodiscard]] HWND mainWindow() const;
  [[nodiscard]] std::vector<std::string> entries(const std::string& list) const;
  [[nodiscard]] std::string text(const std::string& control) const;
  [[nodiscard]] bool waitForEntries(const std::string& list, const std::vector<std::string>& wanted) const;
  [[nodiscard]] bool waitForFocus(const std::string& control) const;
  // Until the box with that beginning is up.
  [[nodiscard]] bool waitForBox(const std::string& beginning) const;
  [[nodiscard]] bool waitForNoBox() const;

  void typeByMouse(const std::string& textBox, const std::string& wanted) const;
  // An entry of a drop-down that stands at its first one.
  void chooseByKeys(const std::string& dropDown, int entry) const;
  // As what the export goes into.
  void chooseDatabaseByMouse() const;

  // Waits for the end that was asked for, and expects it in order.
  void expectEndInOrder() const;

 private:
  std::unique_ptr<Metabase> servers_;
  std::vector<std::unique_ptr<ProgramProcess>> started_;
  ProgramProcess* program_ = nullptr;
  std::unique_ptr<Person> person_;
};

}  // namespace trelvin::test
