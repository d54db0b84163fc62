// Jobs into a server's database and out of it, beside the same jobs with the program's own file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/registry_strings.h"
#include "fakes/scoped_variable.h"
#include "platform/platform.h"
#include "servers/server_fixture.h"
#include "stores/connections.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

using Texts = std::vector<std::string>;

constexpr const char* kTargetFile = "network/NEW6/C$/WINDOWS/system32/inetsrv/MetaBase.xml";

// The sample servers, a file and a server to store their sites in, and a data source for the server.
class ServerStore : public ScenarioTest, public ::testing::WithParamInterface<const char*> {
 protected:
  ServerStore() {
    fs::copy(fs::path(TRELVIN_SOURCE_DIR) / "samples/servers", folder / "network",
             fs::copy_options::recursive);
    fs::copy_file(fs::path(TRELVIN_DATABASES) / "TrelvinData.mdb", programFolder() / "Own.mdb");
    std::string source = "[" + dataSource() + "]\n";
    for (const std::string& attribute : subject_.missing.empty() ? attributes() : Texts()) {
      source += attribute + "\n";
    }
    folder.write("odbc.ini", source);
  }
  void SetUp() override { TRELVIN_SKIP_WITHOUT(subject_); }

  [[nodiscard]] std::string server() const { return subject_.server.connectionString(subject_.database); }
  [[nodiscard]] std::string own() const { return fileConnectionString(programPath() + "\\Own.mdb"); }
  [[nodiscard]] Texts attributes() const { return subject_.server.attributesOf(subject_.database); }
  // A name of its own for each test: the driver manager remembers for a while what it read of another.
  [[nodiscard]] std::string dataSource() const {
    return std::string(GetParam()) + " with " + subject_.database;
  }
  // Chooses the data source, as the database dialog does.
  void chooseDataSource() const {
    writeProgramValue("ODBCDSN", dataSource());
    writeProgramValue("ODBCUID", DatabaseServer::kUser);
    writeProgramValue("ODBCPWD", DatabaseServer::kPassword);
  }

  void storeAll(const std::string& source, const std::string& version, const std::string& service,
                const std::string& connection) {
    addJobText(jobText({{"ImportServer", source},
                        {"ImportVersion", version},
                        {"Type", service},
                        {"BackupAllSites", "True"}}));
    run(connection);
  }
  void restoreAll(const std::string& connection) {
    addJobText(jobText({{"ImportServer", "Database"},
                        {"ExportServer", "NEW6"},
                        {"SiteCreationMode", "Overwrite"},
                        {"BackupAllSites", "True"}}));
    run(connection);
  }
  // Runs the job with -C, unless there is nothing to give it.
  void run(const std::string& connection) {
    const ProcessResult result = runJob(connection.empty() ? Texts() : words(connection));
    ASSERT_EQ(result.exitCode, 0) << result.standardError;
    ASSERT_THAT(linesOf(result.standardOutput), Contains("Done!"));
  }
  Texts takeLog() const {
    Texts lines = log();
    fs::remove(workFolder() / "Trelvin.log");
    return lines;
  }

  // Every row of both tables, but for the moments.
  [[nodiscard]] Texts rowsOf(const std::string& connectionString) const {
    const std::unique_ptr<Connection> connection = platform().databases->createConnection();
    connection->open(connectionString);
    Texts all;
    for (const auto& [table, columns] :
         std::map<std::string, Texts>{{"Sites", {"ID", "SiteName", "Type"}},
                                      {"Data",
                                       {"ID", "SiteNumber", "Location", "Name", "Class", "DataType",
                                        "LocalPath", "AppPath", "AppInOutProc", "AppPoolName", "NumberValue",
                                        "StringValue", "BooleanValue", "ObjectValue"}}}) {
      const std::unique_ptr<RecordSet> rows = platform().databases->createRecordSet();
      for (rows->open("SELECT * FROM " + table, *connection, kStaticCursor); !rows->eof(); rows->moveNext()) {
        std::string row = table;
        for (const std::string& column : columns) row += "|" + shown(column, rows->field(column));
        all.push_back(row);
      }
    }
    return all;
  }
  // PostgreSQL keeps the empty text for a Null in this column, so that its order is that of the others.
  static std::string shown(const std::string& column, const Value& value) {
    if (value.isNull()) return column == "LocalPath" ? "" : "Null";
    return value.toText();
  }

  ServerUnderTest subject_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Servers, ServerStore, ::testing::Values(kMariaDb, kPostgreSql),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_P(ServerStore, GetsTheRowsThatTheProgramsOwnFileGets) {
  for (const auto& [source, version, service] :
       {std::array{"WEB6", "IIS6", "W3SVC"}, std::array{"WEB5", "IIS5", "W3SVC"},
        std::array{"WEB5", "IIS4", "W3SVC"}, std::array{"WEB6", "IIS6", "MSFTPSVC"}}) {
    SCOPED_TRACE(std::string(source) + " as " + version + ", " + service);
    storeAll(source, version, service, own());
    const Texts logOfFile = takeLog();
    storeAll(source, version, service, server());
    EXPECT_EQ(takeLog(), logOfFile) << "nothing fails on one that doesn't fail on the other";
  }
  const Texts rows = rowsOf(own());
  EXPECT_GT(rows.size(), 500U);
  EXPECT_EQ(rowsOf(server()), rows);
}

TEST_P(ServerStore, GetsTheSitesOfAJobThroughTheDataSourceThatWasChosen) {
  const ScopedVariable dataSources("ODBCINI", (folder / "odbc.ini").string());
  chooseDataSource();
  storeAll("WEB6", "IIS6", "W3SVC", "");
  EXPECT_THAT(perRunDatabases(), IsEmpty());
  EXPECT_THAT(storedNames("TrelvinData.mdb"), IsEmpty());
  takeLog();
  storeAll("WEB6", "IIS6", "W3SVC", own());
  const Texts rows = rowsOf(own());
  EXPECT_GT(rows.size(), 100U);
  EXPECT_EQ(rowsOf(server()), rows);
}

TEST_P(ServerStore, GivesTheSitesThatTheProgramsOwnFileGives) {
  const std::string target = folder.read(kTargetFile);
  std::map<std::string, Texts> logs;
  std::map<std::string, std::string> targets;
  for (const std::string& connection : {own(), server()}) {
    folder.write(kTargetFile, target);
    storeAll("WEB6", "IIS6", "W3SVC", connection);
    const Texts stored = rowsOf(connection);
    takeLog();
    restoreAll(connection);
    EXPECT_EQ(rowsOf(connection), stored) << "a restore changes nothing in the database";
    logs[connection] = takeLog();
    targets[connection] = folder.read(kTargetFile);
  }
  EXPECT_NE(targets[own()], target);
  EXPECT_EQ(targets[server()], targets[own()]);
  EXPECT_EQ(logs[server()], logs[own()]);
}

TEST_P(ServerStore, GivesSitesThroughTheDataSourceThatWasChosen) {
  const ScopedVariable dataSources("ODBCINI", (folder / "odbc.ini").string());
  chooseDataSource();
  storeAll("WEB5", "IIS5", "W3SVC", "");
  restoreAll("");
  EXPECT_THAT(folder.read(kTargetFile), HasSubstr("Kundendienst"));
}

TEST_P(ServerStore, ThatIsDownEndsAJobWithALineInItsLog) {
  subject_.server.stop();
  addJobText(jobText({{"ImportServer", "WEB6"}, {"BackupAllSites", "True"}}));
  const ProcessResult result = runJob(words(server()));
  subject_.server.start();
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(log(), Contains(AllOf(StartsWith("frmMain RunBackup Error -2147467259 "),
                                    Not(HasSubstr("gave no reason")))));
  EXPECT_THAT(log(), Not(Contains("About to run")));
}

TEST_P(ServerStore, ThatIsDownEndsAProgramWhoseDataSourceItIs) {
  const ScopedVariable dataSources("ODBCINI", (folder / "odbc.ini").string());
  chooseDataSource();
  subject_.server.stop();
  addJobText(jobText());
  const ProcessResult result = runJob();
  subject_.server.start();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(log(), Contains(StartsWith("frmSplash_Load Error -2147467259 ")));
}

// By hand, in this process, so that something can happen between two statements.

class ServerInUse : public ServerStore {
 protected:
  ServerInUse() : dataSources_("ODBCINI", (folder / "odbc.ini").string()) {}
  void SetUp() override {
    ServerStore::SetUp();
    if (!IsSkipped() && !HasFatalFailure()) chooseDataSource();
  }
  void openOnSites() {
    std::string nodes;
    for (int i = 0; i < 50; ++i) {
      nodes += virtualDir(1, "/ROOT/d" + std::to_string(i), {{"Path", "D:\\new\\table" + std::to_string(i)}});
    }
    openOn(webService(webSite(1, "Bob's shop", {{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}) +
                      virtualDir(1, "/ROOT", {{"Path", "C:\\site"}}) + nodes + plainSite(2, "Wiki")));
  }
  // Stops the server ahead of the statement of that number which has the part.
  void stopAt(const std::string& operation, const std::string& part, int number) {
    databases.rule = [this, operation, part, number,
                      seen = 0](const DatabaseCall& call) mutable -> std::optional<std::int32_t> {
      if (call.operation == operation && call.text.find(part) != std::string::npos && ++seen == number) {
        subject_.server.stop();
      }
      return std::nullopt;
    };
  }
  void listStored() {
    frmMain.TabExportType.select(1);
    frmMain.TabImportType.select(2);
    frmMain.cmdPopulate.onClick();
  }

  ScopedVariable dataSources_;
};

INSTANTIATE_TEST_SUITE_P(Servers, ServerInUse, ::testing::Values(kMariaDb, kPostgreSql),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_P(ServerInUse, ListsItsSitesAndShowsTheirDirectoriesAndBindings) {
  openOnSites();
  select({0, 1});
  exportSilently();
  exportSilently();
  listStored();
  ASSERT_EQ(frmMain.lstSites.listCount(), 4) << "a site that is stored again is listed twice";
  EXPECT_THAT(frmMain.lstSites.list(0), StartsWith("Bob's shop "));
  EXPECT_THAT(frmMain.lstSites.list(3), StartsWith("Wiki "));
  EXPECT_EQ(entriesOf(frmMain.lstSiteIndexes), (Texts{"1", "2", "3", "4"}));
  select({0});
  EXPECT_EQ(frmMain.lstFolders(0).listCount(), 51);
  EXPECT_EQ(frmMain.lstFolders(0).list(0), "/ROOT");
  EXPECT_THAT(entriesOf(frmMain.lstDirectories(0)), AllOf(Contains("C:\\site"), Contains("D:\\new\\table7")));
  EXPECT_EQ(entriesOf(frmMain.lstNewIPs(0)), (Texts{":80:", ":80:"})) << "of the source, and new ones";
  EXPECT_EQ(entriesOf(frmMain.lstNewSSLIPs(0)), (Texts{":443:", ":443:"}));
}

TEST_P(ServerInUse, ThatGoesAwayInTheMiddleOfStoringIsToldOfForEachProperty) {
  openOnSites();
  select({0});
  stopAt("Execute", "'ServerComment'", 1);
  exportSilently();
  EXPECT_TRUE(hasOutput("Done!"));
  const Texts lines = logStartingWith("Error transfering Property ServerCommentError -2147467259 ");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_GT(lines[0].size(),
            std::string("Error transfering Property ServerCommentError -2147467259  80004005").size() + 10)
      << "the driver's reason is missing: " << lines[0];
  listStored();
  EXPECT_THAT(logStartingWith("frmMain_populateFromDatabase Error "), Not(IsEmpty()));
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  subject_.server.start();
  Texts stored = rowsOf(server());
  EXPECT_THAT(stored, Contains(StartsWith("Sites|1|Bob's shop|Web")));
  EXPECT_GT(stored.size(), 50U) << "what was stored before is there";
}

TEST_P(ServerInUse, ThatGoesAwayInTheMiddleOfARestoreEndsItWithoutACrash) {
  openOnSites();
  select({0, 1});
  exportSilently();
  const Texts stored = rowsOf(server());
  ASSERT_GT(stored.size(), 50U);
  listStored();
  frmMain.txtExportServer.text = "NEW6";
  frmMain.chkRunSilent.setValue(true);
  select({0, 1});
  stopAt("MoveNext", "", 60);
  frmMain.cmdExportServer.onClick();
  EXPECT_TRUE(hasOutput("Done!"));
  EXPECT_THAT(logStartingWith("Error reading the stored rows of the site Error"), Not(IsEmpty()));
  subject_.server.start();
  EXPECT_EQ(rowsOf(server()), stored);
}

}  // namespace
}  // namespace trelvin::test
