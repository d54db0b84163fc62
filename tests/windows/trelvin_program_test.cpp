// The built program as a process of its own, as a scheduler starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/text.h"
#include "fakes/temp_folder.h"
#include "fakes/windows/directory_service.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr DWORD kPatience = 60'000;  // milliseconds for anything that is bound to end

constexpr const char* kMetabaseStart =
    "<?xml version =\"1.0\"?>\r\n<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\">\r\n"
    "<MBProperty>\r\n<IIS_ROOT\tLocation =\"/\">\r\n</IIS_ROOT>\r\n<IIsComputer\tLocation =\"/LM\">\r\n"
    "</IIsComputer>\r\n<IIsWebService\tLocation =\"/LM/W3SVC\">\r\n</IIsWebService>\r\n";
constexpr const char* kMetabaseEnd = "</MBProperty>\r\n</configuration>\r\n";
constexpr const char* kShop =
    "<IIsWebServer\tLocation =\"/LM/W3SVC/1\" ServerComment=\"Bob's shop\" ServerBindings=\":80:\" "
    "MaxConnections=\"2000\">\r\n</IIsWebServer>\r\n"
    "<IIsWebVirtualDir\tLocation =\"/LM/W3SVC/1/ROOT\" Path=\"C:\\site\" AppRoot=\"/LM/W3SVC/1/ROOT\">\r\n"
    "</IIsWebVirtualDir>\r\n"
    "<IIsWebVirtualDir\tLocation =\"/LM/W3SVC/1/ROOT/images\" "
    "Path=\"D:\\images\">\r\n</IIsWebVirtualDir>\r\n";

struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines = split(replaceAll(text, "\r\n", "\n"), '\n');
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

// What comes of a job: its status and what it has written.
struct Outcome {
  DWORD status = ~DWORD{0};
  std::vector<std::string> output;
  std::string error;
};

class TrelvinProgramTest : public testing::Test {
 protected:
  TrelvinProgramTest() {
    fs::copy(TRELVIN_PROGRAM_FOLDER, folder_ / "program", fs::copy_options::recursive);
    folder_.makeFolder("work");
    addServer("WEB1", kShop);
    addServer("WEB2", "");
  }

  void addServer(const std::string& name, const std::string& sites) {
    folder_.write("network/" + name + "/C$/WINDOWS/system32/inetsrv/MetaBase.xml",
                  kMetabaseStart + sites + kMetabaseEnd);
  }

  // A file for a stream of the program, which gets the handle.
  [[nodiscard]] Handle fileForProgram(const char* name) const {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return Handle(::CreateFileW((folder_ / name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  }

  // Runs a program of the program folder to its end, in a current folder of its own.
  Outcome runProgram(const std::string& arguments, const char* name = "Trelvin.exe") {
    const std::unique_ptr<Metabase> service = makeDirectoryService(folder_ / "network");
    Outcome outcome;
    {
      const Handle output = fileForProgram("output");
      const Handle error = fileForProgram("error");
      outcome.status = statusOf(start(name, arguments, output.get(), error.get()));
    }
    outcome.output = linesOf(folder_.read("output"));
    outcome.error = folder_.read("error");
    return outcome;
  }

  Outcome runJob(const std::string& text, const std::string& furtherArguments = {}) {
    const fs::path job = folder_.write("j.job", text);
    return runProgram("-RUNBACKUP -B " + utf8Text(job.wstring()) + furtherArguments);
  }

  // A job of WEB1's first site or, for the source "Database", of the first one that is stored.
  static std::string jobText(const std::string& from, const std::string& to) {
    const std::string site = from == "Database" ? "1" : "IIS://" + from + "/W3SVC/1";
    return "[Job Details]\r\nSites=1\r\nImportServer=" + from + "\r\nExportServer=" + to +
           "\r\nImportVersion=IIS6\r\nExportVersion=IIS6\r\nType=W3SVC\r\nAutoStartSites=False\r\n"
           "SiteCreationMode=Create New\r\nFindReplaceCount=0\r\nBackupAllSites=False\r\n"
           "[1Site]\r\nSiteName=" +
           site + "\r\n";
  }

  [[nodiscard]] std::string log() const { return folder_.read("work/Trelvin.log"); }

  // The database that a job has made for itself.
  [[nodiscard]] fs::path databaseOfRun() const {
    for (const auto& entry : fs::directory_iterator(folder_ / "program/BackupJobs")) {
      if (entry.path().extension() == ".mdb") return entry.path();
    }
    throw std::runtime_error("the run made no database");
  }
  static std::string connectionTo(const fs::path& database) {
    return "Driver={Microsoft Access Driver (*.mdb)};DBQ=" + utf8Text(database.wstring()) + ";";
  }
  static std::vector<std::string> column(const fs::path& database, const std::string& sql) {
    const std::unique_ptr<Databases> databases =
        makeOdbcDatabases([](std::string_view text) { return std::string(text); });
    const std::unique_ptr<Connection> connection = databases->createConnection();
    connection->open(connectionTo(database));
    const std::unique_ptr<RecordSet> rows = databases->createRecordSet();
    rows->open(sql, *connection, kStaticCursor);
    std::vector<std::string> texts;
    for (; !rows->eof(); rows->moveNext()) texts.push_back(rows->field("a").toText());
    return texts;
  }

  // A property of a node of the servers, as it is now.
  [[nodiscard]] std::string propertyOf(const std::string& path, const std::string& name) const {
    const std::unique_ptr<Metabase> service = makeDirectoryService(folder_ / "network");
    return service->getObject(path)->get(name).toText();
  }

  TempFolder folder_;

 private:
  Handle start(const char* name, const std::string& arguments, HANDLE output, HANDLE error) const {
    const fs::path program = folder_ / "program" / name;
    std::wstring line = L"\"" + program.wstring() + L"\" " + wideText(arguments);
    STARTUPINFOW streams{};
    streams.cb = sizeof(streams);
    streams.dwFlags = STARTF_USESTDHANDLES;
    streams.hStdOutput = output;
    streams.hStdError = error;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          (folder_ / "work").c_str(), &streams, &process)) {
      throw std::runtime_error("the program can't be started");
    }
    ::CloseHandle(process.hThread);
    return Handle(process.hProcess);
  }

  static DWORD statusOf(const Handle& process) {
    if (::WaitForSingleObject(process.get(), kPatience) != WAIT_OBJECT_0) {
      ::TerminateProcess(process.get(), ~UINT{0});
      throw std::runtime_error("the program does not end");
    }
    DWORD status = 0;
    ::GetExitCodeProcess(process.get(), &status);
    return status;
  }
};

TEST_F(TrelvinProgramTest, AJobFromServerToServerMakesItsSiteThere) {
  const Outcome outcome = runJob(jobText("WEB1", "WEB2"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.error, "");
  EXPECT_THAT(outcome.output, Contains("Done!"));
  EXPECT_THAT(log(), HasSubstr("Closing complete"));
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "MaxConnections"), "2000");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT/images", "Path"), "D:\\images");
}

TEST_F(TrelvinProgramTest, AJobIntoTheDatabaseStoresItsSiteInOneOfItsOwn) {
  const Outcome outcome = runJob(jobText("WEB1", "Database"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, Contains("Exporting virtual directory /ROOT/images"));
  EXPECT_THAT(column(databaseOfRun(), "SELECT SiteName AS a FROM Sites"), ElementsAre("Bob's shop"));
  EXPECT_THAT(column(databaseOfRun(), "SELECT StringValue AS a FROM Data WHERE Name = 'Path' ORDER BY ID"),
              ElementsAre("C:\\site", "D:\\images"));
  EXPECT_THAT(column(folder_ / "program/TrelvinData.mdb", "SELECT SiteName AS a FROM Sites"), IsEmpty());
}

TEST_F(TrelvinProgramTest, AJobOutOfADatabaseRebuildsItsSiteOnAServer) {
  ASSERT_EQ(runJob(jobText("WEB1", "Database")).status, 0U);
  const Outcome outcome = runJob(jobText("Database", "WEB2"), " -C " + connectionTo(databaseOfRun()));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1", "ServerComment"), "Bob's shop");
  EXPECT_EQ(propertyOf("IIS://WEB2/W3SVC/1/ROOT", "Path"), "C:\\site");
}

TEST_F(TrelvinProgramTest, AServerThatIsNotThereIsReportedLineByLine) {
  const Outcome outcome = runJob(jobText("WEB9", "WEB2"));
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_THAT(outcome.output, Contains(StartsWith("Error - ")));
  EXPECT_THAT(outcome.output, Each(Not(HasSubstr("\r"))));
  EXPECT_THAT(log(), HasSubstr("Closing complete"));
}

TEST_F(TrelvinProgramTest, WithoutASettingsDatabaseNoJobRunsAndTheStatusTellsSo) {
  fs::remove(folder_ / "program/Trelvin.mdb");
  const Outcome outcome = runJob(jobText("WEB1", "WEB2"));
  EXPECT_EQ(outcome.status, 1U);
  EXPECT_THAT(outcome.error, HasSubstr("Trelvin.log"));
  EXPECT_THAT(log(), HasSubstr("frmSplash_Load Error "));
  EXPECT_FALSE(folder_.has("program/BackupJobs"));
}

// Wine's installer of data sources makes no databases, as on a machine without the driver.
TEST_F(TrelvinProgramTest, TheSetupSaysWhatIsMissingAndTouchesNoDatabaseThatIsThere) {
  if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr) {
    GTEST_SKIP() << "this machine may have the Access driver";
  }
  fs::copy_file(TRELVIN_SETUP, folder_ / "program/TrelvinSetup.exe");
  fs::remove(folder_ / "program/Trelvin.mdb");
  const std::string data = folder_.read("program/TrelvinData.mdb");
  const Outcome outcome = runProgram("", "TrelvinSetup.exe");
  EXPECT_EQ(outcome.status, 1U);
  EXPECT_THAT(
      outcome.output,
      ElementsAre(AllOf(StartsWith("Trelvin.mdb can't be made: the driver"), HasSubstr("32-bit driver")),
                  "TrelvinData.mdb is there already and stays as it is.",
                  "ForBackups.mdb is there already and stays as it is.", "Trelvin can't run yet."));
  EXPECT_FALSE(folder_.has("program/Trelvin.mdb"));
  EXPECT_EQ(folder_.read("program/TrelvinData.mdb"), data);
}

TEST_F(TrelvinProgramTest, TheFileBringsIconManifestAndVersionAlong) {
  const fs::path program = folder_ / "program" / "Trelvin.exe";
  const HMODULE image = ::LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(image, nullptr);
  EXPECT_NE(::FindResourceW(image, MAKEINTRESOURCEW(1), reinterpret_cast<LPCWSTR>(RT_GROUP_ICON)), nullptr);
  EXPECT_NE(::FindResourceW(image, MAKEINTRESOURCEW(1), reinterpret_cast<LPCWSTR>(RT_MANIFEST)), nullptr);
  ::FreeLibrary(image);
  DWORD ignored = 0;
  std::vector<char> info(::GetFileVersionInfoSizeW(program.c_str(), &ignored));
  ASSERT_TRUE(::GetFileVersionInfoW(program.c_str(), 0, static_cast<DWORD>(info.size()), info.data()));
  void* found = nullptr;
  UINT length = 0;
  ASSERT_TRUE(::VerQueryValueW(info.data(), L"\\", &found, &length));
  const auto* version = static_cast<const VS_FIXEDFILEINFO*>(found);
  EXPECT_EQ(version->dwFileVersionMS, DWORD{MAKELONG(TRELVIN_VERSION_MINOR, TRELVIN_VERSION_MAJOR)});
}

TEST_F(TrelvinProgramTest, TheProgramOpensNoConsoleAndNeedsNothingThatWindowsDoesNotBring) {
  const std::string bytes = folder_.read("program/Trelvin.exe");
  IMAGE_DOS_HEADER start{};
  IMAGE_NT_HEADERS headers{};
  std::memcpy(&start, bytes.data(), sizeof(start));
  std::memcpy(&headers, bytes.data() + start.e_lfanew, sizeof(headers));
  EXPECT_EQ(headers.OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
  for (const char* library : {"libstdc++", "libgcc_s", "libwinpthread"}) {
    EXPECT_EQ(bytes.find(library + std::string("-")), std::string::npos) << library;
  }
}

}  // namespace
}  // namespace trelvin::test
