// TrelvinSetup.exe as a process of its own, beside an installer of data sources that makes databases.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "windows/installed_program_test.h"
// clang-format off
#include <sddl.h>  // stands on Windows' own header
// clang-format on

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kSetup = "TrelvinSetup.exe";
constexpr std::array<const char*, 3> kDatabases{"Trelvin.mdb", "TrelvinData.mdb", "ForBackups.mdb"};

// Environment of the processes that are started meanwhile.
class WithoutDriver {
 public:
  WithoutDriver() { ::SetEnvironmentVariableW(kName, L"1"); }
  WithoutDriver(const WithoutDriver&) = delete;
  WithoutDriver& operator=(const WithoutDriver&) = delete;
  ~WithoutDriver() { ::SetEnvironmentVariableW(kName, nullptr); }

 private:
  static constexpr const wchar_t* kName = L"TRELVIN_NO_ACCESS_DRIVER";
};

// Nobody may write into it meanwhile; an administrator of the machine beneath Wine can't be kept from it.
class ReadOnlyFolder {
 public:
  explicit ReadOnlyFolder(fs::path folder) : folder_(std::move(folder)) { give(L"D:P(A;OICI;FRFX;;;WD)"); }
  ReadOnlyFolder(const ReadOnlyFolder&) = delete;
  ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;
  ~ReadOnlyFolder() { give(L"D:P(A;OICI;FA;;;WD)"); }

  [[nodiscard]] bool canBeWrittenInto() const {
    const HANDLE tried = ::CreateFileW((folder_ / "tried").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                       FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (tried == INVALID_HANDLE_VALUE) return false;
    ::CloseHandle(tried);
    return true;
  }

 private:
  void give(const wchar_t* rights) const {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr);
    ::SetFileSecurityW(folder_.c_str(), DACL_SECURITY_INFORMATION, descriptor);
    ::LocalFree(descriptor);
  }

  fs::path folder_;
};

class SetupProgramTest : public InstalledProgramTest {
 protected:
  // As it comes out of the zip: without databases.
  explicit SetupProgramTest(std::wstring_view programFolder = L"program")
      : InstalledProgramTest(programFolder) {
    fs::copy_file(TRELVIN_SETUP, inProgram(kSetup));
    fs::copy_file(TRELVIN_INSTALLER, installer());
    for (const char* each : kDatabases) fs::remove(inProgram(each));
  }

  [[nodiscard]] fs::path installer() const { return inProgram("odbccp32.dll"); }
  Outcome setUp() { return start("", kSetup)->outcome(); }
  static std::vector<std::string> tablesOf(const fs::path& database) {
    return column(database,
                  "SELECT name AS a FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' "
                  "ORDER BY name");
  }
  void expectAllMade() const {
    EXPECT_THAT(tablesOf(inProgram("Trelvin.mdb")),
                ElementsAre("ExcludedExportParameters", "tmpFilesToCopy", "tmpSettings"));
    EXPECT_THAT(tablesOf(inProgram("TrelvinData.mdb")), ElementsAre("Data", "Sites"));
    EXPECT_THAT(tablesOf(inProgram("ForBackups.mdb")), ElementsAre("Data", "Sites"));
  }
  [[nodiscard]] bool hasAny() const {
    return std::any_of(kDatabases.begin(), kDatabases.end(),
                       [this](const char* each) { return fs::exists(inProgram(each)); });
  }
};

class SetupInAForeignFolderTest : public SetupProgramTest {
 protected:
  SetupInAForeignFolderTest() : SetupProgramTest(L"Für die Server im Büro") {}
};

TEST_F(SetupProgramTest, TheDatabasesAreMadeFromNothing) {
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.error, "");
  EXPECT_THAT(outcome.output, ElementsAre("Trelvin.mdb is made.", "TrelvinData.mdb is made.",
                                          "ForBackups.mdb is made.", "Trelvin is ready."));
  expectAllMade();
  const std::string exclusions = "SELECT PName AS a FROM ExcludedExportParameters";
  EXPECT_EQ(column(inProgram("Trelvin.mdb"), exclusions),
            column(fs::path(TRELVIN_DATABASES) / "Trelvin.mdb", exclusions));
}

TEST_F(SetupProgramTest, TheProgramRunsJobsWithTheDatabasesThatItMakes) {
  ASSERT_EQ(setUp().status, 0U);
  const Outcome outcome =
      runJob(jobText("WEB1", "Database"), " -C " + connectionTo(inProgram("TrelvinData.mdb")));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.error, "");
  const fs::path data = inProgram("TrelvinData.mdb");
  EXPECT_THAT(column(data, "SELECT SiteName AS a FROM Sites WHERE ID = 1 AND DateTime > '2000'"),
              ElementsAre("Bob's shop"));
  EXPECT_THAT(column(data, "SELECT StringValue AS a FROM Data WHERE Name = 'Path' ORDER BY ID"),
              ElementsAre("C:\\site", "D:\\images"));

  EXPECT_EQ(runJob(jobText("Database", "WEB2"), " -C " + connectionTo(data)).status, 0U);
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT", "Path"), "C:\\site");
}

TEST_F(SetupProgramTest, ADatabaseThatIsThereStaysAsItIs) {
  folder_.write("program/TrelvinData.mdb", "somebody's sites");
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output,
              ElementsAre("Trelvin.mdb is made.", "TrelvinData.mdb is there already and stays as it is.",
                          "ForBackups.mdb is made.", "Trelvin is ready."));
  EXPECT_EQ(folder_.read("program/TrelvinData.mdb"), "somebody's sites");
}

TEST_F(SetupProgramTest, ASecondRunChangesNothing) {
  ASSERT_EQ(setUp().status, 0U);
  const std::string settings = folder_.read("program/Trelvin.mdb");
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, AllOf(SizeIs(4), ::testing::Contains("Trelvin is ready.")));
  EXPECT_EQ(folder_.read("program/Trelvin.mdb"), settings);
}

TEST_F(SetupProgramTest, WithoutTheDriverItSaysWhatTheInstallerSaysAndLeavesNothingBehind) {
  const WithoutDriver without;
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 1U);
  ASSERT_THAT(outcome.output, SizeIs(4));
  EXPECT_THAT(outcome.output[0],
              AllOf(StartsWith("Trelvin.mdb can't be made: the driver \"Microsoft Access Driver (*.mdb)\""),
                    HasSubstr("(Component not found in the registry)"), HasSubstr("32-bit driver")));
  EXPECT_EQ(outcome.output[3], "Trelvin can't run yet.");
  EXPECT_FALSE(hasAny());
}

// Wine's installer of data sources makes no databases and gives no reason either.
TEST_F(SetupProgramTest, WithTheInstallerOfWineItSaysSoToo) {
  if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr) {
    GTEST_SKIP() << "this machine may have the Access driver";
  }
  fs::remove(installer());
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 1U);
  ASSERT_THAT(outcome.output, SizeIs(4));
  EXPECT_THAT(outcome.output[0], StartsWith("Trelvin.mdb can't be made: the driver"));
  EXPECT_FALSE(hasAny());
}

TEST_F(SetupProgramTest, OneThatCanNotBeMadeIsNamedAndTheOthersAreMade) {
  fs::create_directory(inProgram("TrelvinData.mdb"));  // a place where no file can be
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 1U);
  EXPECT_THAT(outcome.output,
              ElementsAre("Trelvin.mdb is made.",
                          AllOf(StartsWith("TrelvinData.mdb can't be made: "), HasSubstr("already exists.")),
                          "ForBackups.mdb is made.", "Trelvin can't run yet."));
}

TEST_F(SetupProgramTest, AFolderThatMayNotBeWrittenIntoIsTold) {
  const ReadOnlyFolder folder(programFolder());
  if (folder.canBeWrittenInto()) GTEST_SKIP() << "whoever runs this may write everywhere";
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 1U);
  ASSERT_THAT(outcome.output, SizeIs(4));
  EXPECT_THAT(outcome.output[0],
              AllOf(HasSubstr("No permission."), EndsWith("may you write into the folder?")));
  EXPECT_FALSE(hasAny());
}

TEST_F(SetupInAForeignFolderTest, BlanksAndLettersOfAnyKindInItsNameAreNoObstacle) {
  const Outcome outcome = setUp();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, ::testing::Contains("Trelvin is ready."));
  expectAllMade();
  EXPECT_EQ(runJob(jobText("WEB1", "WEB2")).status, 0U);
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
}

}  // namespace
}  // namespace trelvin::test
