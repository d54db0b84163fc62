#include "windows/installed_program_test.h"

#include <stdexcept>

#include "fakes/windows/directory_service.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/wide_text.h"

namespace trelvin::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMetabaseStart =
    "<?xml version =\"1.0\"?>\r\n<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\">\r\n"
    "<MBProperty>\r\n<IIS_ROOT\tLocation =\"/\">\r\n</IIS_ROOT>\r\n<IIsComputer\tLocation =\"/LM\">\r\n"
    "</IIsComputer>\r\n<IIsWebService\tLocation =\"/LM/W3SVC\">\r\n</IIsWebService>\r\n";
constexpr const char* kMetabaseEnd = "</MBProperty>\r\n</configuration>\r\n";

}  // namespace

InstalledProgramTest::InstalledProgramTest(std::wstring_view programFolder)
    : program_(folder_.path() / programFolder) {
  fs::copy(TRELVIN_PROGRAM_FOLDER, program_, fs::copy_options::recursive);
  folder_.makeFolder("work");
  // The registry is that of all tests.
  ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Morvane");
  addServer("WEB1", webSite(1, "Bob's shop"));
  addServer("WEB2", "");
}

void InstalledProgramTest::addServer(const std::string& name, const std::string& sites) const {
  folder_.write("network/" + name + "/C$/WINDOWS/system32/inetsrv/MetaBase.xml",
                kMetabaseStart + sites + kMetabaseEnd);
}

std::string InstalledProgramTest::webSite(int number, const std::string& name) {
  const std::string path = "/LM/W3SVC/" + std::to_string(number);
  return "<IIsWebServer\tLocation =\"" + path + "\" ServerComment=\"" + name +
         "\" ServerBindings=\":80:\" MaxConnections=\"2000\">\r\n</IIsWebServer>\r\n"
         "<IIsWebVirtualDir\tLocation =\"" +
         path + "/ROOT\" Path=\"C:\\site\" AppRoot=\"" + path + "/ROOT\">\r\n</IIsWebVirtualDir>\r\n" +
         "<IIsWebVirtualDir\tLocation =\"" + path +
         "/ROOT/images\" Path=\"D:\\images\">\r\n</IIsWebVirtualDir>\r\n";
}

std::unique_ptr<ProgramProcess> InstalledProgramTest::start(std::string_view arguments, const char* name) {
  return std::make_unique<ProgramProcess>(inProgram(name), arguments, folder_ / "work",
                                          folder_ / ("streams" + std::to_string(++started_)));
}

std::unique_ptr<Metabase> InstalledProgramTest::servers() const {
  return makeDirectoryService(folder_ / "network");
}

Outcome InstalledProgramTest::runProgram(std::string_view arguments, const char* name) {
  const std::unique_ptr<Metabase> service = servers();
  return start(arguments, name)->outcome();
}

Outcome InstalledProgramTest::runJob(const std::string& text, const std::string& furtherArguments) {
  const fs::path job = folder_.write("j.job", text);
  return runProgram("-RUNBACKUP -B " + utf8Text(job.wstring()) + furtherArguments);
}

std::string InstalledProgramTest::jobText(const std::string& from, const std::string& to) {
  const std::string site = from == "Database" ? "1" : "IIS://" + from + "/W3SVC/1";
  return "[Job Details]\r\nSites=1\r\nImportServer=" + from + "\r\nExportServer=" + to +
         "\r\nImportVersion=IIS6\r\nExportVersion=IIS6\r\nType=W3SVC\r\nAutoStartSites=False\r\n"
         "SiteCreationMode=Create New\r\nFindReplaceCount=0\r\nBackupAllSites=False\r\n"
         "[1Site]\r\nSiteName=" +
         site + "\r\n";
}

std::string InstalledProgramTest::log() const {
  return folder_.has("work/Trelvin.log") ? folder_.read("work/Trelvin.log") : std::string();
}

fs::path InstalledProgramTest::databaseOfRun() const {
  for (const auto& entry : fs::directory_iterator(inProgram("BackupJobs"))) {
    if (entry.path().extension() == ".mdb") return entry.path();
  }
  throw std::runtime_error("the run made no database");
}

std::string InstalledProgramTest::connectionTo(const fs::path& database) {
  return "Driver={Microsoft Access Driver (*.mdb)};DBQ=" + utf8Text(database.wstring()) + ";";
}

std::vector<std::string> InstalledProgramTest::column(const fs::path& database, const std::string& sql) {
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

std::string InstalledProgramTest::propertyOf(const std::string& path, const std::string& name) const {
  const std::unique_ptr<Metabase> service = servers();
  return service->getObject(path)->get(name).toText();
}

}  // namespace trelvin::test
