// The program with its real windows on the scratch machine, and a person in front of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "desktop/qt/qt_desktop.h"
#include "desktop_qt/person.h"
#include "fakes/export_test.h"

namespace trelvin::test {

class DesktopTest : public ExportTest {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  // Starts the program as with no command line, goes on from the welcome form, and waits for the main window.
  void openProgram();
  // Two servers: WEB1 with two sites and NEW1 without any.
  void addServers();
  // Lists the sites of WEB1, IIS 6.
  void listWeb1();

  static std::vector<std::string> shownEntries(const std::string& list);
  [[nodiscard]] std::string metabaseTextOf(const std::string& server) const { return metabaseOf(server); }

  desktop::QtDesktop desktop;
  Person person;
};

}  // namespace trelvin::test
