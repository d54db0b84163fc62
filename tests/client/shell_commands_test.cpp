#include "client/shell_commands.h"

#include <gtest/gtest.h>

#include <string>

#include "client/endpoints.h"
#include "core/err.h"
#include "core/registry_strings.h"
#include "core/run_state.h"
#include "fakes/failing_files.h"
#include "fakes/program_test.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

class ShellCommandsTest : public test::ProgramTest {
 protected:
  ShellCommandsTest() { openWindow(); }
};

TEST_F(ShellCommandsTest, ALocationIsOpenedForTheMainWindowAndTheAnswerComesBack) {
  opener->result = 31;
  EXPECT_EQ(OpenLocation("mailto:x", 3), 31);
  opener->result = 42;
  EXPECT_EQ(OpenLocation("Z:\\a.htm", 3), 42);
  ASSERT_EQ(opener->opened.size(), 2U);
  EXPECT_EQ(opener->opened[0].file, "mailto:x");
  EXPECT_EQ(opener->opened[0].showCommand, 3);
  EXPECT_TRUE(opener->opened[0].ownedByMainWindow);
}

TEST_F(ShellCommandsTest, ALocationThatCannotBeHandedOverIsLogged) {
  opener->onOpen = [](const OpenOperation&) { throw Failure(error_number::kOutOfMemory); };
  EXPECT_EQ(OpenLocation("http://update.trelvin.example/", 10), 0);
  EXPECT_EQ(logLines().back(), "frmMain_OpenLocation Error 7 Out of memory");
}

TEST_F(ShellCommandsTest, TheHomePageIsOnTheUpdateEndpoint) {
  frmMain.mnuHomePage.onClick();
  ASSERT_EQ(opener->opened.size(), 1U);
  EXPECT_EQ(opener->opened[0].file, "http://" + updateHost() + "/Trelvin");
  EXPECT_EQ(opener->opened[0].showCommand, 10);
}

TEST_F(ShellCommandsTest, TheDocumentationLiesInTheProgramFolder) {
  frmMain.mnuDocumentation.onClick();
  ASSERT_EQ(opener->opened.size(), 1U);
  EXPECT_EQ(opener->opened[0].file, programPath() + "/Documentation/Index.htm");
  EXPECT_EQ(opener->opened[0].showCommand, 10);
}

TEST_F(ShellCommandsTest, ARefusalOfTheShellIsNotToldAnybody) {
  opener->result = 2;
  frmMain.mnuHomePage.onClick();
  frmMain.mnuDocumentation.onClick();
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(logLines().back(), "Loading complete");
}

TEST_F(ShellCommandsTest, AFailureOfEachCommandHasItsLine) {
  // Opening has a handler of its own, so that only what fails in that one comes through.
  opener->onOpen = [](const OpenOperation&) { throw Failure(error_number::kOutOfMemory); };
  test::watchFiles().refuses = [](const std::string& line) {
    return line.find("OpenLocation") != std::string::npos;
  };
  frmMain.mnuHomePage.onClick();
  EXPECT_TRUE(logLines().back().starts_with("frmMain_mnuHomePage Error 75 ")) << logLines().back();
  frmMain.mnuDocumentation.onClick();
  EXPECT_TRUE(logLines().back().starts_with("frmMain_mnuDocumentation Error 75 ")) << logLines().back();
}

TEST_F(ShellCommandsTest, TheProxyBoxShowsTheSettingAndStoresTheAnswer) {
  run.sProxyServer = "old:8080";
  dialogs->inputs = {"new proxy, as it was typed"};
  frmMain.mnuProxyServer.onClick();
  EXPECT_EQ(dialogs->asked,
            std::vector<std::string>{"Proxy server|Enter your proxy server as proxy:port|old:8080"});
  EXPECT_EQ(run.sProxyServer, "new proxy, as it was typed");
  EXPECT_EQ(readProgramValue("ProxyServer"), "new proxy, as it was typed");
}

TEST_F(ShellCommandsTest, CancelInTheProxyBoxClearsTheSetting) {
  writeProgramValue("ProxyServer", "old:8080");
  run.sProxyServer = "old:8080";
  frmMain.mnuProxyServer.onClick();
  EXPECT_EQ(run.sProxyServer, "");
  EXPECT_EQ(readProgramValue("ProxyServer"), "");
  const Registry::QueryResult stored = platform().registry->queryValue(
      RegistryRoot::kLocalMachine, "Software\\Morvane\\Trelvin", "ProxyServer");
  EXPECT_EQ(stored.code, 0) << "the value is there, and empty";
  EXPECT_EQ(stored.type, kRegString);
}

TEST_F(ShellCommandsTest, TheProxySettingIsThereAtTheNextStart) {
  dialogs->inputs = {"proxy:3128"};
  frmMain.mnuProxyServer.onClick();
  renew(frmMain);
  run.sProxyServer.clear();
  openWindow();
  EXPECT_EQ(run.sProxyServer, "proxy:3128");
}

TEST_F(ShellCommandsTest, TheProxyIsNeverAskedByTheUpdateCheck) {
  dialogs->inputs = {"proxy:3128"};
  frmMain.mnuProxyServer.onClick();
  frmMain.mnuChkUpdates.onClick();
  EXPECT_EQ(sockets->meant, std::vector<std::string>{updateHost() + ":80"});
}

}  // namespace
}  // namespace trelvin
