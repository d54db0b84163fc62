#include "platform/system_platform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "core/err.h"
#include "fakes/temp_folder.h"
#include "platform/linux/paths.h"
#include "platform/platform.h"

namespace trelvin {
namespace {

class SystemPlatformTest : public testing::Test {
 protected:
  void SetUp() override {
    ::setenv("TRELVIN_NETWORK", network_.path().c_str(), 1);
    std::array<char*, 3> arguments{program_.data(), argument_.data(), nullptr};
    useSystemPlatform(2, arguments.data(), [](std::string_view) {});
  }
  void TearDown() override {
    platform() = Platform();
    ::unsetenv("TRELVIN_NETWORK");
  }

  test::TempFolder network_;
  std::string program_ = "trelvin";
  std::string argument_ = "-D";
};

TEST_F(SystemPlatformTest, TheProgramFolderIsTheExecutables) {
  EXPECT_EQ(platform().application->path(), windowsPath(executableFolder()));
  EXPECT_EQ(platform().application->commandLine(), "-D");
  EXPECT_TRUE(platform().files->fileExists(platform().application->path() + "\\platform_tests"));
}

TEST_F(SystemPlatformTest, SharesLieInTheNetworkFolderForFilesAndJobs) {
  network_.write("web1/C$/jobs/Backup.job", "[Job Details]\r\nSites=2\r\n");
  EXPECT_TRUE(platform().files->fileExists("\\\\WEB1\\c$\\Jobs\\backup.job"));
  std::string buffer(10, ' ');
  EXPECT_EQ(
      platform().profile->getString("Job Details", "Sites", "", buffer, 10, "\\\\web1\\C$\\jobs\\Backup.job"),
      1U);
  EXPECT_EQ(buffer.substr(0, 1), "2");
}

TEST_F(SystemPlatformTest, AServerWithoutAMetabaseFileCannotBeReached) {
  network_.makeFolder("web1/C$");
  std::int32_t number = 0;
  try {
    platform().metabase->getObject("IIS://web1/W3SVC");
  } catch (const Failure& failure) {
    number = failure.number();
  }
  EXPECT_EQ(number, error_number::kServerUnavailable);
}

TEST_F(SystemPlatformTest, ADatabaseIsNamedByItsPathInTheProgramsForm) {
  const std::unique_ptr<Connection> connection = platform().databases->createConnection();
  const std::string file = windowsPath((network_ / "missing.mdb").string());
  std::string description;
  try {
    connection->open("DBQ=" + file + ";Driver={Microsoft Access Driver (*.mdb)};");
  } catch (const Failure& failure) {
    description = failure.description();
  }
  EXPECT_NE(description.find("missing.mdb"), std::string::npos) << description;
}

}  // namespace
}  // namespace trelvin
