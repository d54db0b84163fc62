#include "platform/system_platform.h"

#include <gtest/gtest.h>

#include "contract/facilities.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

class SystemPlatformContract : public testing::Test {
 protected:
  SystemPlatformContract() {
    std::string program = "trelvin";
    char* arguments[] = {program.data(), nullptr};
    useSystemPlatform(1, arguments, [](std::string_view) {});
  }
  ~SystemPlatformContract() override { platform() = Platform(); }
};

TEST_F(SystemPlatformContract, EveryFacilityIsThere) {
  EXPECT_TRUE(platform().application);
  EXPECT_TRUE(platform().clock);
  EXPECT_TRUE(platform().databases);
  EXPECT_TRUE(platform().dialogs);
  EXPECT_TRUE(platform().events);
  EXPECT_TRUE(platform().files);
  EXPECT_TRUE(platform().metabase);
  EXPECT_TRUE(platform().opener);
  EXPECT_TRUE(platform().profile);
  EXPECT_TRUE(platform().registry);
  EXPECT_TRUE(platform().shell);
  EXPECT_TRUE(platform().sockets);
  ASSERT_TRUE(platform().createNtfsControl);
  EXPECT_TRUE(platform().createNtfsControl());
}

TEST_F(SystemPlatformContract, FilesAndJobsAreNamedInTheProgramsForm) {
  const TempFolder folder;
  folder.write("Backup.job", "[Job Details]\r\nSites=2\r\n");
  const std::string file = programForm(folder / "Backup.job");
  EXPECT_TRUE(platform().files->fileExists(file));
  std::string buffer(10, ' ');
  EXPECT_EQ(platform().profile->getString("Job Details", "Sites", "", buffer, 10, file), 1U);
  EXPECT_EQ(buffer.substr(0, 1), "2");
}

TEST_F(SystemPlatformContract, TheProgramFolderIsTheExecutables) {
  const std::string folder = platform().application->path();
  EXPECT_TRUE(platform().files->folderExists(folder));
  EXPECT_TRUE(platform().files->fileExists(folder + "\\contract_tests") ||
              platform().files->fileExists(folder + "\\contract_tests.exe"))
      << folder;
}

TEST_F(SystemPlatformContract, NobodyIsAskedWithoutAWindow) {
  testing::internal::CaptureStderr();
  const Answer answer = platform().dialogs->showMessage({.text = "Shall I?", .buttons = Buttons::kYesNo});
  EXPECT_NE(testing::internal::GetCapturedStderr().find("Trelvin: Shall I?"), std::string::npos);
  EXPECT_EQ(answer, Answer::kNo);
}

}  // namespace
}  // namespace trelvin::test
