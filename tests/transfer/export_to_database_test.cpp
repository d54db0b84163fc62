// One site into the data database, statement by statement.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/export_test.h"
#include "platform/platform.h"
#include "transfer/export_frame.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr std::int32_t kUnsupported = error_number::kAdsPropertyNotSupported;
constexpr std::int32_t kDenied = error_number::kAccessDenied;

std::string failureLine(const std::string& property, std::int32_t number) {
  return "Error transfering Property " + property + "Error " + std::to_string(number) + " " +
         describeError(number) + " " + hexOf(number);
}

class ToDatabase : public ExportTest {
 protected:
  // A site with one root.
  void open(const Properties& ofSite, const Properties& ofRoot = {}, const std::string& further = {}) {
    openOn(webService(siteAndRoot(ofSite, ofRoot) + further));
    select({0});
  }
  void openDebug(const Properties& ofSite, const Properties& ofRoot = {}, const std::string& further = {}) {
    openForDebugOn(webService(siteAndRoot(ofSite, ofRoot) + further));
    select({0});
  }
  static std::string siteAndRoot(const Properties& ofSite, Properties ofRoot) {
    ofRoot.emplace_back("Path", "C:\\shop");
    return webSite(1, "Shop", ofSite) + virtualDir(1, "/ROOT", ofRoot);
  }
  [[nodiscard]] std::vector<std::string> failureLines() const {
    return logStartingWith("Error transfering Property");
  }
  [[nodiscard]] Rows storedSites() const {
    return query("TrelvinData.mdb", "SELECT ID AS a, SiteName AS b, Type AS c FROM Sites ORDER BY ID");
  }
  // Inserts into Data that hold a property, in their order.
  [[nodiscard]] std::vector<std::string> insertsOf(const std::string& name) const {
    std::vector<std::string> found;
    for (const std::string& sql : databases.textsOf("Execute")) {
      if (sql.find("'" + name + "'") != std::string::npos) found.push_back(sql);
    }
    return found;
  }
  void failWhenInserting(const std::string& part, std::int32_t number = error_number::kUnspecified) {
    databases.rule = [part, number](const DatabaseCall& call) -> std::optional<std::int32_t> {
      const bool hit = call.operation == "Execute" && call.text.starts_with("INSERT INTO") &&
                       call.text.find(part) != std::string::npos;
      return hit ? std::optional(number) : std::nullopt;
    };
  }
  void healed() {
    databases.rule = nullptr;
    metabase->rule = nullptr;
  }
};

// The site's own row.

TEST_F(ToDatabase, AddsARowForEachSiteWithItsKind) {
  openOn(webService(plainSite(1, "Shop") + plainSite(2, "Wiki")));
  select({0, 1});
  exportToDatabase();
  EXPECT_EQ(storedSites(), (Rows{{"1", "Shop", "Web"}, {"2", "Wiki", "Web"}}));
}

TEST_F(ToDatabase, LeavesTheMomentToTheDatabase) {
  open({});
  exportToDatabase();
  const Rows moments = query("TrelvinData.mdb", "SELECT DateTime AS a FROM Sites");
  ASSERT_THAT(moments, SizeIs(1));
  EXPECT_NE(moments[0][0], "<Null>");
  EXPECT_THAT(databases.textsOf("Execute"),
              Contains("INSERT INTO Sites (SiteName, Type) Values('Shop','Web')"));
}

TEST_F(ToDatabase, QuotesTheNameOfASite) {
  openOn(webService(plainSite(1, "Bob's 'shop'")));
  select({0});
  exportToDatabase();
  EXPECT_EQ(storedSites(), (Rows{{"1", "Bob's 'shop'", "Web"}}));
}

TEST_F(ToDatabase, StoresAnFtpSiteAsSuch) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(
          element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}, {"MaxConnections", "9"}}) +
          element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}))));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listSites();
  select({0});
  transferOnly({"MaxConnections"});
  exportToDatabase();
  EXPECT_EQ(storedSites(), (Rows{{"1", "Files", "Ftp"}}));
  EXPECT_EQ(data("Location AS a, Name AS b, Class AS c", "Name <> 'Path'"),
            (Rows{{"", "MaxConnections", "IIsFtpServer"}}));
  EXPECT_EQ(data("Class AS a, StringValue AS b", "Name = 'Path'"), (Rows{{"IIsFtpVirtualDir", "C:\\ftp"}}));
}

TEST_F(ToDatabase, ReportsTheApplicationThatAnFtpNodeLacksWithEveryRowThatItStores) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(
          element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}, {"MaxConnections", "9"}}) +
          element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}))));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listSites();
  select({0});
  transferOnly({"MaxConnections", "ServerComment"});
  exportToDatabase();
  EXPECT_THAT(namesOfRows(), ElementsAre("Path", "MaxConnections", "ServerComment"));
  ASSERT_THAT(failureLines(), SizeIs(2));
  EXPECT_THAT(failureLines()[0], StartsWith("Error transfering Property MaxConnectionsError " +
                                            std::to_string(kUnsupported) + " "));
  EXPECT_THAT(failureLines()[0], ::testing::EndsWith(" 80005006"));
}

TEST_F(ToDatabase, StoresASiteOnceMoreForEveryRun) {
  open({});
  transferOnly({"ServerComment"});
  exportToDatabase();
  exportToDatabase();
  EXPECT_EQ(storedSites(), (Rows{{"1", "Shop", "Web"}, {"2", "Shop", "Web"}}));
  EXPECT_EQ(data("SiteNumber AS a, Name AS b"),
            (Rows{{"1", "Path"}, {"1", "ServerComment"}, {"2", "Path"}, {"2", "ServerComment"}}));
}

TEST_F(ToDatabase, TakesTheLastRowOfTheTableForTheOneJustAdded) {
  open({});
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (41, 'old', 'Web')");
  transferOnly({"ServerComment"});
  exportToDatabase();
  EXPECT_EQ(data("SiteNumber AS a"), (Rows{{"42"}, {"42"}}));
}

TEST_F(ToDatabase, StoresUnderTheFormerSiteWhereTheSitesRowIsRefused) {
  open({});
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (41, 'old', 'Web')");
  transferOnly({"ServerComment"});
  failWhenInserting("INTO Sites");
  exportToDatabase();
  healed();
  EXPECT_EQ(data("SiteNumber AS a, Name AS b"), (Rows{{"41", "Path"}, {"41", "ServerComment"}}));
  EXPECT_THAT(failureLines(), IsEmpty()) << "the error is cleared behind the reading of the number";
}

TEST_F(ToDatabase, StoresUnderNumberZeroWhereThereIsNoSitesRowAtAll) {
  open({});
  transferOnly({"ServerComment"});
  failWhenInserting("INTO Sites");
  exportToDatabase();
  healed();
  EXPECT_EQ(data("SiteNumber AS a"), (Rows{{"0"}, {"0"}}));
}

TEST_F(ToDatabase, KeepsTheFormerNumberWhereASitesNumberIsTooLarge) {
  openOn(webService(plainSite(1, "Shop") + plainSite(2, "Wiki")));
  select({0, 1});
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (32766, 'old', 'Web')");
  transferOnly({});
  exportToDatabase();
  EXPECT_EQ(data("SiteNumber AS a, Location AS b"), (Rows{{"32767", "/ROOT"}, {"32767", "/ROOT"}}));
}

TEST_F(ToDatabase, OpensTheRowsWithAStaticCursorAndClosesThem) {
  open({});
  databases.calls.clear();
  exportToDatabase();
  auto at = std::find_if(databases.calls.begin(), databases.calls.end(),
                         [](const DatabaseCall& call) { return call.text == "SELECT * FROM Sites"; });
  ASSERT_LT(at - databases.calls.begin(), std::ssize(databases.calls) - 3);
  EXPECT_EQ(at->operation, "OpenRows");
  EXPECT_EQ(at->cursorType, 3);
  EXPECT_EQ((++at)->operation, "MoveLast");
  EXPECT_EQ((++at)->text, "ID");
  EXPECT_EQ((++at)->operation, "CloseRows");
}

// Values by their type.

TEST_F(ToDatabase, StoresANumber) {
  open({{"MaxConnections", "2000"}});
  transferOnly({"MaxConnections"});
  exportToDatabase();
  EXPECT_EQ(data("DataType AS a, NumberValue AS b, StringValue AS c, BooleanValue AS d, ObjectValue AS e",
                 "Name = 'MaxConnections'"),
            (Rows{{"3", "2000", "<Null>", "<Null>", "<Null>"}}));
  EXPECT_THAT(
      insertsOf("MaxConnections"),
      ElementsAre(
          "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, NumberValue) "
          "Values (1, '', 'MaxConnections', 'IIsWebServer', 3, '1', '', 2000) "));
}

TEST_F(ToDatabase, StoresANumberThatHasAMinus) {
  open({{"MaxConnections", "4294967295"}});
  transferOnly({"MaxConnections"});
  exportToDatabase();
  EXPECT_EQ(propertyRows("MaxConnections"), (Rows{{"", "-1"}}));
}

TEST_F(ToDatabase, NeverRewritesANumber) {
  open({{"MaxConnections", "2000"}});
  transferOnly({"MaxConnections"});
  frmMain.lstOldValues.addItem("2000");
  frmMain.lstNewValues.addItem("3000");
  exportToDatabase();
  EXPECT_EQ(propertyRows("MaxConnections"), (Rows{{"", "2000"}}));
}

TEST_F(ToDatabase, StoresAText) {
  open({}, {{"DefaultDoc", "a.htm,b.htm"}});
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("DataType AS a, StringValue AS b, NumberValue AS c, BooleanValue AS d, ObjectValue AS e",
                 "Name = 'DefaultDoc'"),
            (Rows{{"8", "a.htm,b.htm", "<Null>", "<Null>", "<Null>"}}));
  EXPECT_THAT(
      insertsOf("DefaultDoc"),
      ElementsAre(
          "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, StringValue) "
          "Values (1, '/ROOT', 'DefaultDoc', 'IIsWebVirtualDir', 8, 'ROOT', '', 'a.htm,b.htm') "));
}

TEST_F(ToDatabase, StoresATextWithQuotesWhole) {
  open({}, {{"DefaultDoc", "Bob's.htm,'x'"}});
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(propertyRows("DefaultDoc"), (Rows{{"/ROOT", "Bob's.htm,'x'"}}));
}

TEST_F(ToDatabase, RewritesATextAheadOfQuotingIt) {
  open({}, {{"DefaultDoc", "old.htm"}});
  transferOnly({"DefaultDoc"});
  frmMain.lstOldValues.addItem("OLD");
  frmMain.lstNewValues.addItem("Bob's");
  exportToDatabase();
  EXPECT_EQ(propertyRows("DefaultDoc"), (Rows{{"/ROOT", "Bob's.htm"}}));
}

TEST_F(ToDatabase, StoresAnEmptyTextForBlanks) {
  open({}, {{"DefaultDoc", "   "}});
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(propertyRows("DefaultDoc"), (Rows{{"/ROOT", ""}}));
}

TEST_F(ToDatabase, StoresTruthAsOneAndZero) {
  open({{"ServerAutoStart", "TRUE"}}, {{"AspAllowSessionState", "FALSE"}});
  transferOnly({"ServerAutoStart", "AspAllowSessionState"});
  exportToDatabase();
  EXPECT_EQ(data("Name AS a, DataType AS b, BooleanValue AS c, NumberValue AS d", "DataType = 11"),
            (Rows{{"AspAllowSessionState", "11", "0", "<Null>"}, {"ServerAutoStart", "11", "1", "<Null>"}}));
  EXPECT_THAT(insertsOf("ServerAutoStart").front(),
              HasSubstr("BooleanValue) Values (1, '', 'ServerAutoStart', 'IIsWebServer', 11, '1', '', 1) "));
}

TEST_F(ToDatabase, StoresAListWithALineEndBehindEachEntry) {
  open({}, {{"HttpCustomHeaders", std::string("X-A: 1") + kNextEntry + "X-B: 2"}});
  transferOnly({"HttpCustomHeaders"});
  exportToDatabase();
  EXPECT_EQ(data("DataType AS a, ObjectValue AS b, StringValue AS c", "Name = 'HttpCustomHeaders'"),
            (Rows{{"8204", "X-A: 1\r\nX-B: 2\r\n", "<Null>"}}));
}

TEST_F(ToDatabase, StoresAListOfOneEntryWithItsLineEnd) {
  open({}, {{"HttpCustomHeaders", "X-A: 1"}});
  transferOnly({"HttpCustomHeaders"});
  exportToDatabase();
  EXPECT_EQ(propertyRows("HttpCustomHeaders"), (Rows{{"/ROOT", "X-A: 1\r\n"}}));
}

TEST_F(ToDatabase, RewritesEachEntryOfAListAndQuotesIt) {
  open({}, {{"ScriptMaps",
             std::string(".a,C:\\WINNT\\Bob's.dll,1,GET") + kNextEntry + ".b,c:\\winnt\\b.dll,1,GET"}});
  transferOnly({"ScriptMaps"});
  frmMain.lstOldValues.addItem("WINNT");
  frmMain.lstNewValues.addItem("Windows");
  exportToDatabase();
  EXPECT_EQ(propertyRows("ScriptMaps"),
            (Rows{{"/ROOT", ".a,C:\\Windows\\Bob's.dll,1,GET\r\n.b,c:\\Windows\\b.dll,1,GET\r\n"}}))
      << "and the verbs of script maps stay as they are";
}

TEST_F(ToDatabase, StoresNoRowForAnEmptyList) {
  open({}, {{"HttpCustomHeaders", ""}});
  transferOnly({"HttpCustomHeaders"});
  exportToDatabase();
  EXPECT_THAT(propertyRows("HttpCustomHeaders"), IsEmpty());
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_TRUE(std::any_of(metabase->calls.begin(), metabase->calls.end(), [](const MetabaseCall& call) {
    return call.operation == "GetDataPaths" && call.argument == "HttpCustomHeaders";
  }));
}

TEST_F(ToDatabase, GivesUpAnObjectWithItsRemainingPaths) {
  open({}, {{"IPSecurity", ""}}, virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"IPSecurity", ""}}));
  transferOnly({"IPSecurity", "Path"});
  metabase->calls.clear();
  exportToDatabase();
  EXPECT_THAT(propertyRows("IPSecurity"), IsEmpty());
  EXPECT_EQ(std::count(output.begin(), output.end(), "IPSecurity cannot be stored in database"), 1);
  EXPECT_EQ(std::count_if(metabase->calls.begin(), metabase->calls.end(),
                          [](const MetabaseCall& call) {
                            return call.argument == "IPSecurity" && call.operation == "Get";
                          }),
            1)
      << "no further path is read";
  EXPECT_EQ(data("ID AS a", "Name = 'Path'").size(), 4U) << "the next name follows";
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(ToDatabase, ShowsTheLineOfAnObject) {
  open({}, {{"IPSecurity", ""}});
  transferOnly({"IPSecurity"});
  std::string shown;
  frmMain.lstOutput.onRefresh = [&] {
    if (frmMain.lstOutput.text().starts_with("IPSecurity")) shown = frmMain.lstOutput.text();
  };
  exportToDatabase();
  EXPECT_EQ(shown, "IPSecurity cannot be stored in database");
  EXPECT_FALSE(hasLogged(shown));
}

TEST_F(ToDatabase, IsRefusedForAValueOfAnotherTypeAndReportsIt) {
  open({{"SSLCertHash", "00ff10ab"}});
  transferOnly({"SSLCertHash"});
  exportToDatabase();
  EXPECT_THAT(propertyRows("SSLCertHash"), IsEmpty());
  EXPECT_THAT(
      insertsOf("SSLCertHash"),
      ElementsAre("INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, ) "
                  "Values (1, '', 'SSLCertHash', 'IIsWebServer', 8209, '1', '', ) "));
  ASSERT_THAT(failureLines(), SizeIs(1));
  EXPECT_THAT(failureLines()[0], StartsWith("Error transfering Property SSLCertHashError " +
                                            std::to_string(error_number::kSqlError) + " "));
  EXPECT_THAT(failureLines()[0], ::testing::EndsWith(" 80040E14"));
}

TEST_F(ToDatabase, StoresAListOfObjectsEmptyAndReportsIt) {
  open({}, {{"MimeMap", std::string(".a,text/a") + kNextEntry + ".b,text/b"}});
  transferOnly({"MimeMap"});
  exportToDatabase();
  EXPECT_EQ(data("DataType AS a, ObjectValue AS b", "Name = 'MimeMap'"), (Rows{{"8204", ""}}));
  EXPECT_THAT(failureLines(), ElementsAre(StartsWith("Error transfering Property MimeMapError 438 ")));
}

// Places.

TEST_F(ToDatabase, StoresEachPathOfEachNameNamesOutside) {
  open({{"AccessFlags", "1"}}, {{"AccessFlags", "513"}, {"DefaultDoc", "r.htm"}},
       directory(1, "/ROOT/bin", {{"AccessFlags", "0"}}) +
           virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"DefaultDoc", "i.htm"}}));
  transferOnly({"AccessFlags", "DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("Name AS a, Location AS b, LocalPath AS c, Class AS d", "Name <> 'Path'"),
            (Rows{{"AccessFlags", "", "1", "IIsWebServer"},
                  {"AccessFlags", "/ROOT", "ROOT", "IIsWebVirtualDir"},
                  {"AccessFlags", "/ROOT/bin", "bin", "IIsWebDirectory"},
                  {"DefaultDoc", "/ROOT", "ROOT", "IIsWebVirtualDir"},
                  {"DefaultDoc", "/ROOT/images", "images", "IIsWebVirtualDir"}}));
}

TEST_F(ToDatabase, StoresTheDirectoriesAheadOfTheProperties) {
  open({{"ServerSize", "1"}}, {}, virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}}));
  transferOnly({"ServerSize"});
  exportToDatabase();
  EXPECT_THAT(namesOfRows(), ElementsAre("Path", "Path", "ServerSize"));
}

TEST_F(ToDatabase, AsksForAllPathsWhetherInheritableOrNot) {
  open({{"ServerBindings", ":80:"}});
  transferOnly({"ServerBindings"});
  exportToDatabase();
  EXPECT_THAT(propertyRows("ServerBindings"), Not(IsEmpty())) << "a property that does not inherit";
}

TEST_F(ToDatabase, SaysNothingOfANameOnNoPath) {
  open({});
  transferOnly({"HttpErrors"});
  exportToDatabase();
  EXPECT_THAT(propertyRows("HttpErrors"), IsEmpty());
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ToDatabase, ReadsNodesByTheSitesOwnPath) {
  open({}, {}, directory(1, "/ROOT/bin", {{"AccessFlags", "1"}}));
  transferOnly({"AccessFlags"});
  metabase->calls.clear();
  exportToDatabase();
  EXPECT_TRUE(std::any_of(metabase->calls.begin(), metabase->calls.end(), [](const MetabaseCall& call) {
    return call.operation == "GetObject" && call.path == "IIS://WEB1/W3SVC/1/ROOT/bin";
  }));
}

TEST_F(ToDatabase, QuotesLocationsAndNames) {
  open({}, {}, directory(1, "/ROOT/Bob's", {{"AccessFlags", "1"}, {"AppRoot", "/LM/W3SVC/1/ROOT/Bob's"}}));
  transferOnly({"AccessFlags"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a, LocalPath AS b, AppPath AS c", "Name = 'AccessFlags'"),
            (Rows{{"/ROOT/Bob's", "Bob's", "/Bob's"}}));
}

TEST_F(ToDatabase, PassesOverANameOfBlanksAndLeavesTheBarWhereItIs) {
  open({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  frmMain.lstPropsToExport.addItem("  ");
  metabase->calls.clear();
  exportToDatabase();
  std::vector<std::string> asked;
  for (const MetabaseCall& call : metabase->calls) {
    if (call.operation == "GetDataPaths") asked.push_back(call.argument);
  }
  EXPECT_THAT(asked, ElementsAre("ServerSize"));
  EXPECT_EQ(data("ID AS a", "Name = 'ServerSize'").size(), 1U);
}

// Local names.

TEST_F(ToDatabase, ClearsTheNameOfTheSiteNodeForATwoDigitNumber) {
  openOn(webService(webSite(12, "Shop", {{"ServerSize", "1"}}) + virtualDir(12, "/ROOT", {{"Path", "x"}})));
  select({0});
  transferOnly({"ServerSize"});
  exportToDatabase();
  EXPECT_EQ(data("LocalPath AS a", "Name = 'ServerSize'"), (Rows{{""}}));
}

TEST_F(ToDatabase, KeepsTheNameOfTheSiteNodeForAnyOtherNumber) {
  openOn(webService(webSite(1, "A", {{"ServerSize", "1"}}) + webSite(112, "B", {{"ServerSize", "1"}})));
  select({0, 1});
  transferOnly({"ServerSize"});
  exportSilently();
  EXPECT_EQ(data("LocalPath AS a", "Name = 'ServerSize'"), (Rows{{"1"}, {"112"}}));
}

TEST_F(ToDatabase, ClearsTheNameOfANodeBelowThatReadsLikeTheNumber) {
  openOn(webService(webSite(12, "Shop") + virtualDir(12, "/ROOT", {{"Path", "x"}}) +
                    directory(12, "/ROOT/12", {{"AccessFlags", "1"}})));
  select({0});
  transferOnly({"AccessFlags"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a, LocalPath AS b", "Name = 'AccessFlags'"), (Rows{{"/ROOT/12", ""}}));
}

// Applications.

TEST_F(ToDatabase, KnowsAnApplicationByTheNodesNameInAnyCase) {
  open({}, {{"AppRoot", "/LM/W3SVC/1/Root"}, {"DefaultDoc", "x"}});
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("AppPath AS a", "Name = 'DefaultDoc'"), (Rows{{"/ROOT"}}));
}

TEST_F(ToDatabase, KeepsNoParentPathInFrontOfAnApplication) {
  open({}, {},
       virtualDir(1, "/ROOT/app", {{"Path", "x"}, {"AppRoot", "/LM/W3SVC/1/ROOT/app"}, {"DefaultDoc", "x"}}));
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a, AppPath AS b", "Name = 'DefaultDoc'"), (Rows{{"/ROOT/app", "/app"}}));
}

TEST_F(ToDatabase, StoresNoApplicationForANodeThatIsNone) {
  open({{"ServerSize", "1"}}, {{"AppRoot", "/LM/W3SVC/1/ROOT"}},
       directory(1, "/ROOT/bin", {{"AccessFlags", "1"}}));
  transferOnly({"ServerSize", "AccessFlags"});
  exportToDatabase();
  EXPECT_EQ(data("Name AS a, AppPath AS b", "Name <> 'Path'"),
            (Rows{{"AccessFlags", ""}, {"ServerSize", ""}}));
}

TEST_F(ToDatabase, StoresARowAndReportsANodeWhoseClassKnowsNoApplication) {
  open({}, {}, element("IIsFilters", "/LM/W3SVC/1/Filters", {{"FilterLoadOrder", "a,b"}}));
  transferOnly({"FilterLoadOrder"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a, Class AS b, AppPath AS c, StringValue AS d", "Name = 'FilterLoadOrder'"),
            (Rows{{"/Filters", "IIsFilters", "", "a,b"}}));
  EXPECT_THAT(failureLines(), SizeIs(1));
}

// Bindings.

TEST_F(ToDatabase, AddsTheNewBindingsBehindThePropertiesRows) {
  open({{"ServerBindings", std::string(":80:") + kNextEntry + "10.0.0.1:81:shop"},
        {"SecureBindings", ":443:"}});
  transferOnly({"ServerBindings", "SecureBindings"});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET NewIP = '10.9.9.9:80:' WHERE OldIP = ':80:'");
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET NewSSLIP = ':444:' WHERE OldSSLIP = ':443:'");
  exportToDatabase();
  EXPECT_EQ(data("Name AS a, ObjectValue AS b, DataType AS c, Class AS d", "Name LIKE '%Bindings'"),
            (Rows{{"SecureBindings", ":443:\r\n", "8204", "IIsWebServer"},
                  {"ServerBindings", ":80:\r\n10.0.0.1:81:shop\r\n", "8204", "IIsWebServer"},
                  {"ServerBindings", "10.9.9.9:80:\r\n10.0.0.1:81:shop\r\n", "8204", "<Null>"},
                  {"SecureBindings", ":444:\r\n", "8204", "<Null>"}}));
}

TEST_F(ToDatabase, BuildsTheStatementsOfTheBindings) {
  open({{"ServerBindings", ":80:Bob's"}, {"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  exportToDatabase();
  EXPECT_THAT(
      insertsOf("ServerBindings"),
      ElementsAre("INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (1, '', "
                  "'ServerBindings', ':80:Bob''s\r\n', 8204)"));
  EXPECT_THAT(
      insertsOf("SecureBindings"),
      ElementsAre("INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (1, '', "
                  "'SecureBindings', ':443:\r\n', 8204)"));
}

TEST_F(ToDatabase, RewritesTheBindings) {
  open({{"ServerBindings", "10.0.0.1:80:"}, {"SecureBindings", "10.0.0.1:443:"}});
  transferOnly({"ServerComment"});
  frmMain.lstOldValues.addItem("10.0.0.1");
  frmMain.lstNewValues.addItem("10.0.0.2");
  exportToDatabase();
  EXPECT_EQ(data("ObjectValue AS a", "DataType = 8204"), (Rows{{"10.0.0.2:80:\r\n"}, {"10.0.0.2:443:\r\n"}}));
}

TEST_F(ToDatabase, StoresNoBindingsOfItsOwnForAnEmptyList) {
  open({{"ServerBindings", ":80:"}});
  transferOnly({"ServerBindings"});
  executeOn("Trelvin.mdb", "DELETE FROM tmpSettings WHERE OldIP IS NOT NULL");
  exportToDatabase();
  EXPECT_EQ(data("ObjectValue AS a, Class AS b", "DataType = 8204"), (Rows{{":80:\r\n", "IIsWebServer"}}));
  EXPECT_FALSE(hasOutput("Storing New IP addresses"));
  EXPECT_FALSE(hasOutput("Storing New SSL IP addresses"));
}

TEST_F(ToDatabase, TellsOfTheBindingsInOutputAndLog) {
  open({{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  exportToDatabase();
  EXPECT_THAT(logBehind("Transferring properties..."),
              ElementsAre("Saving IPs...", "Saving SSL IPs...", "Completed"));
  const std::vector<std::string> lines = shownOutput();
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[lines.size() - 3], "Storing New IP addresses");
  EXPECT_EQ(lines[lines.size() - 2], "Storing New SSL IP addresses");
}

TEST_F(ToDatabase, TellsOfTheSavingEvenWithoutBindings) {
  open({});
  transferOnly({"ServerComment"});
  exportToDatabase();
  EXPECT_THAT(logBehind("Transferring properties..."),
              ElementsAre("Saving IPs...", "Saving SSL IPs...", "Completed"));
}

TEST_F(ToDatabase, PutsTheBindingsWhereTheLastPathOfTheLastNameLay) {
  open({{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}, {{"DefaultDoc", "x"}},
       virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"DefaultDoc", "i.htm"}}));
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a, Name AS b", "DataType = 8204"),
            (Rows{{"/ROOT/images", "ServerBindings"}, {"/ROOT/images", "SecureBindings"}}));
}

TEST_F(ToDatabase, PutsTheBindingsAtTheSiteAfterANameOfTheSite) {
  open({{"ServerBindings", ":80:"}, {"ServerSize", "1"}}, {{"DefaultDoc", "x"}});
  transferOnly({"DefaultDoc", "ServerSize"});
  exportToDatabase();
  EXPECT_EQ(data("Location AS a", "DataType = 8204"), (Rows{{""}}));
}

TEST_F(ToDatabase, CarriesTheLocationOverToASiteWithoutAnyPath) {
  openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT", {{"Path", "x"}, {"DefaultDoc", "x"}}) +
                    webSite(2, "Wiki", {{"ServerBindings", ":80:"}}) +
                    virtualDir(2, "/ROOT", {{"Path", "x"}})));
  select({0, 1});
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_EQ(data("SiteNumber AS a, Location AS b", "DataType = 8204"), (Rows{{"2", "/ROOT"}}));
}

TEST_F(ToDatabase, ReportsBindingsThatAreRefused) {
  open({{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  failWhenInserting("8204)");
  exportToDatabase();
  healed();
  const std::string cause =
      std::to_string(error_number::kUnspecified) + describeError(error_number::kUnspecified);
  EXPECT_THAT(logBehind("Transferring properties..."),
              ElementsAre("Saving IPs...", "Error setting IP'sError " + cause, "Saving SSL IPs...",
                          "Error setting SSL IP'sError " + cause, "Completed"));
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(ToDatabase, ReportsAnEmptyListOfNamesWithTheBindings) {
  open({{"ServerBindings", ":80:"}});
  transferOnly({});
  exportToDatabase();
  EXPECT_THAT(logBehind("Saving IPs..."), ElementsAre("Error setting IP'sError 380" + describeError(380),
                                                      "Saving SSL IPs...", "Completed"))
      << "the bar takes no maximum of 0";
}

TEST_F(ToDatabase, ReportsAProgressBeyondItsMaximumWithTheBindings) {
  open({{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (7, 'old', 'Web')");
  exportToDatabase();
  EXPECT_THAT(logBehind("Saving IPs..."), ElementsAre("Error setting IP'sError 380" + describeError(380),
                                                      "Saving SSL IPs...", "Completed"));
  EXPECT_EQ(data("ID AS a", "DataType = 8204").size(), 2U) << "the rows went in all the same";
}

TEST_F(ToDatabase, ReportsAProgressBeyondItsMaximumWithTheSecureBindingsAlone) {
  open({{"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (7, 'old', 'Web')");
  exportToDatabase();
  EXPECT_THAT(
      logBehind("Saving IPs..."),
      ElementsAre("Saving SSL IPs...", "Error setting SSL IP'sError 380" + describeError(380), "Completed"));
}

TEST_F(ToDatabase, BringsTheLastLineIntoViewBehindPropertiesAndBindings) {
  open({{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}});
  transferOnly({"ServerComment"});
  std::vector<std::string> steps;
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    for (const char* name : {"ServerComment", "ServerBindings", "SecureBindings"}) {
      if (call.operation == "Execute" && call.text.find(std::string("'") + name + "'") != std::string::npos) {
        steps.emplace_back(name);
      }
    }
    return std::nullopt;
  };
  frmMain.lstOutput.onRefresh = [&] {
    if (!steps.empty()) steps.push_back(frmMain.lstOutput.text());
  };
  exportToDatabase();
  healed();
  EXPECT_THAT(steps, ElementsAre("ServerComment", "Transferring properties...", "ServerBindings",
                                 "SecureBindings", "Storing New SSL IP addresses", "Done!"));
}

// Progress.

TEST_F(ToDatabase, MovesTheBarThroughTheNames) {
  open({{"ServerSize", "1"}}, {{"DefaultDoc", "x"}, {"AccessFlags", "1"}});
  transferOnly({"AccessFlags", "DefaultDoc", "ServerSize"});
  std::vector<std::pair<double, double>> seen;
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Execute" &&
        call.text.starts_with("INSERT INTO Data (SiteNumber, Location, Name")) {
      seen.emplace_back(frmMain.ProgressBar1.value(), frmMain.ProgressBar1.max());
    }
    return std::nullopt;
  };
  exportToDatabase();
  healed();
  EXPECT_THAT(seen, ElementsAre(std::pair(0.0, 3.0), std::pair(0.0, 3.0), std::pair(1.0, 3.0)))
      << "the bar follows the index of the name before";
}

TEST_F(ToDatabase, SetsTheBarToTheSitesBehindTheProperties) {
  openOn(webService(webSite(1, "Shop", {{"ServerBindings", ":80:"}}) +
                    webSite(2, "Wiki", {{"ServerBindings", ":80:"}})));
  select({0, 1});
  transferOnly({"ServerComment"});
  std::vector<std::pair<double, double>> seen;
  databases.rule = [&](const DatabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Execute" && call.text.find("'ServerBindings'") != std::string::npos) {
      seen.emplace_back(frmMain.ProgressBar1.value(), frmMain.ProgressBar1.max());
    }
    return std::nullopt;
  };
  exportSilently();
  healed();
  EXPECT_THAT(seen, ElementsAre(std::pair(1.0, 2.0), std::pair(2.0, 2.0)))
      << "the site's number in the database";
}

TEST_F(ToDatabase, EndsASiteOnItsCounter) {
  openOn(webService(plainSite(1, "Shop") + plainSite(2, "Wiki")));
  executeOn("TrelvinData.mdb", "INSERT INTO Sites (ID, SiteName, Type) VALUES (40, 'old', 'Web')");
  select({0, 1});
  transferOnly({});
  std::vector<double> atYield;
  events->onYield = [&](int) {
    if (timesLogged("Completed") > static_cast<int>(atYield.size()))
      atYield.push_back(frmMain.ProgressBar1.value());
  };
  exportToDatabase();
  EXPECT_THAT(atYield, ElementsAre(1.0, 2.0));
}

// Failing statements and those behind them.

class FailingExport : public ToDatabase {};

TEST_F(FailingExport, LosesARefusedRowAloneAndReportsIt) {
  open({{"ServerSize", "1"}, {"MaxConnections", "5"}});
  transferOnly({"ServerSize", "MaxConnections", "ServerComment"});
  failWhenInserting("'ServerComment'", error_number::kNoSuchTable);
  exportToDatabase();
  healed();
  EXPECT_THAT(namesOfRows(), ElementsAre("Path", "MaxConnections", "ServerSize"));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("ServerComment", error_number::kNoSuchTable)));
}

TEST_F(FailingExport, ReadsTheFormerNodeWhereOneCantBeBound) {
  open({}, {{"DefaultDoc", "root.htm"}},
       virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"DefaultDoc", "images.htm"}}));
  transferOnly({"DefaultDoc"});
  metabase->failOn("GetObject", "/ROOT/images", "", kDenied);
  exportToDatabase();
  healed();
  EXPECT_EQ(data("Location AS a, LocalPath AS b, StringValue AS c", "Name = 'DefaultDoc'"),
            (Rows{{"/ROOT", "ROOT", "root.htm"}, {"/ROOT/images", "ROOT", "root.htm"}}))
      << "the place is the new one, the rest the former node's";
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("DefaultDoc", kDenied)));
}

TEST_F(FailingExport, HasNoNodeAtAllWhereTheFirstOneCantBeBound) {
  open({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  int binds = 0;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    // The test for a corrupt source and the walk bind the site too; the third time it is the property's node.
    const bool site = call.operation == "GetObject" && call.path == "IIS://WEB1/W3SVC/1";
    return site && ++binds == 3 ? std::optional(kDenied) : std::nullopt;
  };
  exportToDatabase();
  healed();
  EXPECT_EQ(binds, 3);
  ASSERT_THAT(failureLines(), SizeIs(1));
  EXPECT_THAT(failureLines()[0], StartsWith("Error transfering Property ServerSizeError 91 "))
      << "every use of the unset object fails in its turn, and the latest failure is told";
}

TEST_F(FailingExport, KeepsTheTypeOfTheFormerValueWhereOneCantBeRead) {
  open({{"ServerSize", "1"}}, {{"DefaultDoc", "x.htm"}});
  transferOnly({"DefaultDoc", "ServerSize"});
  metabase->failOn("Get", "/W3SVC/1", "ServerSize", kDenied);
  exportToDatabase();
  healed();
  EXPECT_EQ(data("Name AS a, Location AS b, DataType AS c, StringValue AS d", "Name <> 'Path'"),
            (Rows{{"DefaultDoc", "/ROOT", "8", "x.htm"}, {"ServerSize", "", "8", "x.htm"}}))
      << "and its value with it";
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("ServerSize", kDenied)));
}

TEST_F(FailingExport, TakesAValueThatCantBeReadForAnObjectBehindAnObject) {
  open({{"ServerSize", "1"}}, {{"IPSecurity", ""}});
  transferOnly({"IPSecurity", "ServerSize"});
  metabase->failOn("Get", "/W3SVC/1", "ServerSize", kDenied);
  exportToDatabase();
  EXPECT_TRUE(hasOutput("IPSecurity cannot be stored in database"));
  EXPECT_TRUE(hasOutput("ServerSize cannot be stored in database"));
}

TEST_F(FailingExport, RunsTheFormerStatementAgainWhereOneCantBeBuilt) {
  open({{"ServerSize", "1"}}, {{"DefaultDoc", "x.htm"}});
  transferOnly({"DefaultDoc", "ServerSize"});
  metabase->failOn("Class", "/W3SVC/1", "", kDenied);
  exportToDatabase();
  healed();
  EXPECT_THAT(namesOfRows(), ElementsAre("Path", "DefaultDoc", "DefaultDoc"));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("ServerSize", kDenied)));
}

TEST_F(FailingExport, GoesThroughThePathsOfTheFormerNameWhereThoseOfANameCantBeRead) {
  open({{"AccessFlags", "1"}, {"DefaultDoc", "x.htm"}}, {{"AccessFlags", "513"}});
  transferOnly({"AccessFlags", "DefaultDoc"});
  metabase->failOn("GetDataPaths", "/W3SVC/1", "DefaultDoc", kDenied);
  exportToDatabase();
  healed();
  EXPECT_EQ(propertyRows("DefaultDoc"), (Rows{{"", "x.htm"}, {"/ROOT", "x.htm"}}));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("DefaultDoc", kDenied)))
      << "the stale failure is told with the first row, which went in";
}

TEST_F(FailingExport, ReportsAFailureBehindAnObjectWithTheNextName) {
  open({{"ServerSize", "1"}}, {{"AccessFlags", "1"}},
       virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"IPSecurity", ""}}));
  transferOnly({"AccessFlags", "IPSecurity", "ServerSize"});
  // The former node, the root, has an object to give in the place of the one that can't be bound.
  metabase->failOn("GetObject", "/ROOT/images", "", kDenied);
  exportToDatabase();
  healed();
  EXPECT_TRUE(hasOutput("IPSecurity cannot be stored in database"));
  EXPECT_THAT(namesOfRows(), Contains("ServerSize"));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("ServerSize", kDenied)));
}

TEST_F(FailingExport, ReportsAnErrorThatTheWalkLeftBehindWithTheFirstRow) {
  open({{"MaxConnections", "5"}, {"ServerSize", "1"}});
  transferOnly({"MaxConnections", "ServerSize"});
  failWhenInserting("'Path'", error_number::kUnspecified);
  exportToDatabase();
  healed();
  EXPECT_THAT(namesOfRows(), ElementsAre("MaxConnections", "ServerSize"));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("MaxConnections", error_number::kUnspecified)));
}

TEST_F(FailingExport, ReportsTheLateFoundDirectoryWithTheFirstRow) {
  open({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  executeOn("Trelvin.mdb", "UPDATE tmpSettings SET Folder = 'ROOT' WHERE Folder = '/ROOT'");
  exportToDatabase();
  EXPECT_THAT(namesOfRows(), ElementsAre("ServerSize"));
  ASSERT_THAT(failureLines(), SizeIs(1));
  EXPECT_THAT(failureLines()[0], StartsWith("Error transfering Property ServerSizeError "));
}

TEST_F(FailingExport, SkipsAListWhoseLengthCantBeTold) {
  open({}, {{"HttpCustomHeaders", "X-A: 1"}});
  transferOnly({"HttpCustomHeaders"});
  int reads = 0;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    return call.operation == "Get" && call.argument == "HttpCustomHeaders" && ++reads == 2
               ? std::optional(kDenied)
               : std::nullopt;
  };
  exportToDatabase();
  healed();
  EXPECT_EQ(reads, 2);
  EXPECT_THAT(propertyRows("HttpCustomHeaders"), IsEmpty());
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("HttpCustomHeaders", kDenied)));
}

TEST_F(FailingExport, StoresTheFormerValueWhereAValueCantBeReadAnyMore) {
  open({{"ServerSize", "1"}, {"MaxConnections", "5"}});
  transferOnly({"MaxConnections", "ServerSize"});
  int reads = 0;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    return call.operation == "Get" && call.argument == "ServerSize" && ++reads == 2 ? std::optional(kDenied)
                                                                                    : std::nullopt;
  };
  exportToDatabase();
  healed();
  EXPECT_EQ(propertyRows("ServerSize"), (Rows{{"", "5"}}));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("ServerSize", kDenied)));
}

TEST_F(FailingExport, TakesANodeWithoutAReadableNameForAnApplicationAndKeepsNoName) {
  open({}, {{"DefaultDoc", "x.htm"}});
  transferOnly({"DefaultDoc"});
  metabase->rule = [](const MetabaseCall& call) -> std::optional<std::int32_t> {
    return call.operation == "Name" && call.path.ends_with("/ROOT") ? std::optional(kDenied) : std::nullopt;
  };
  exportToDatabase();
  healed();
  EXPECT_EQ(data("LocalPath AS a, AppPath AS b", "Name = 'DefaultDoc'"), (Rows{{"", ""}}));
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("DefaultDoc", kDenied)));
}

TEST_F(FailingExport, ReportsAnApplicationThatCantBeReadWithARowThatWentIn) {
  open({}, {{"DefaultDoc", "x.htm"}});
  transferOnly({"DefaultDoc"});
  for (const char* property : {"AppRoot", "AppIsolated", "AppPoolID"}) {
    metabase->rule = nullptr;
    metabase->failOn("Get", "/ROOT", property, kUnsupported);
    const std::size_t before = failureLines().size();
    exportToDatabase();
    EXPECT_EQ(failureLines().size(), before + 1) << property;
  }
  healed();
  EXPECT_EQ(propertyRows("DefaultDoc").size(), 3U);
}

TEST_F(FailingExport, LeavesTheServerAsItWas) {
  open({{"ServerBindings", ":80:"}, {"ServerSize", "1"}}, {{"DefaultDoc", "x"}});
  const std::string before = metabaseOf("WEB1");
  metabase->calls.clear();
  exportToDatabase();
  EXPECT_EQ(metabaseOf("WEB1"), before);
  for (const MetabaseCall& call : metabase->calls) {
    EXPECT_THAT(call.operation,
                ::testing::AnyOf("GetObject", "Get", "Class", "Name", "ADsPath", "Schema", "enumerate",
                                 "MandatoryProperties", "OptionalProperties", "GetDataPaths"));
  }
}

TEST_F(FailingExport, GoesToItsEndWhenTheServerIsGone) {
  open({{"ServerSize", "1"}});
  metabase->rule = [](const MetabaseCall&) { return std::optional(error_number::kServerUnavailable); };
  exportSilently();
  healed();
  EXPECT_EQ(storedSites().size(), 1U);
  EXPECT_THAT(namesOfRows(), IsEmpty());
  EXPECT_TRUE(hasOutput("Done!"));
}

TEST_F(FailingExport, GoesToItsEndWhenTheDatabaseIsGone) {
  open({{"ServerSize", "1"}, {"ServerBindings", ":80:"}});
  frmMain.DBData->close();
  exportToDatabase();
  EXPECT_TRUE(hasOutput("Done!"));
  EXPECT_THAT(logStartingWith("Error setting IP'sError 3704"), SizeIs(1));
  EXPECT_THAT(failureLines(), Contains(StartsWith("Error transfering Property ServerSizeError 3704 ")));
  EXPECT_EQ(query("TrelvinData.mdb", "SELECT ID AS a FROM Sites").size(), 0U);
}

// Every line of a debug run.

class DebugExport : public ToDatabase {
 protected:
  [[nodiscard]] std::vector<std::string> linesBehind(const std::string& line) const {
    return logBehind(line);
  }
};

TEST_F(DebugExport, LogsEveryStepOfASite) {
  openDebug({{"ServerBindings", ":80:"}, {"ServerSize", "1"}},
            {{"AppRoot", "/LM/W3SVC/1/ROOT"}, {"DefaultDoc", "d.htm"}});
  transferOnly({"DefaultDoc", "ServerSize"});
  frmMain.lstOldValues.addItem("C:");
  frmMain.lstNewValues.addItem("D:");
  exportToDatabase();
  EXPECT_THAT(
      logBehind("Exporting site (1 of 1) Shop..."),
      ElementsAre(
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND Folder IS NOT NULL) ORDER BY ListIndex",
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldIP IS NOT NULL) ORDER BY ListIndex",
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldSSLIP IS NOT NULL) ORDER BY ListIndex",
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND Folder IS NOT NULL) ORDER BY ListIndex",
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldIP IS NOT NULL) ORDER BY ListIndex",
          "SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldSSLIP IS NOT NULL) ORDER BY ListIndex",
          "INSERT INTO Sites (SiteName, Type) Values('Shop','Web')",       //
          "SELECT * FROM Sites",                                           //
          "W3SVCNUM = 1",                                                  //
          "Exporting virtual directory /ROOT",                             //
          "Searching for path for /ROOT",                                  //
          "1 directories to look through",                                 //
          "Trying /ROOT = /ROOT",                                          //
          "True",                                                          //
          "Replace checking @C:\\shop@ for @C:@ to be replaced by @D:@ ",  //
          "New value D:\\shop",
          "INSERT INTO Data (SiteNumber , Location, LocalPath, AppPath, AppInOutProc, Name, Class, DataType, "
          "StringValue, AppPoolName) Values(1, '/ROOT', 'ROOT','/ROOT',False, 'Path', 'IIsWebVirtualDir', 8, "
          "'D:\\shop', '') ",
          "Transferring properties...",                                 //
          "Propname = DefaultDoc",                                      //
          "Reading IIS://WEB1/W3SVC/1/ROOT",                            //
          "Replace checking @d.htm@ for @C:@ to be replaced by @D:@ ",  //
          "New value d.htm",
          "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, StringValue) "
          "Values (1, "
          "'/ROOT', 'DefaultDoc', 'IIsWebVirtualDir', 8, 'ROOT', '/ROOT', 'd.htm') ",
          "Propname = ServerSize",            //
          "Reading IIS://WEB1/W3SVC/1",       //
          "App Path not set -  Could be /1",  //
          "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, AppPath, NumberValue) "
          "Values (1, "
          "'', 'ServerSize', 'IIsWebServer', 3, '1', '', 1) ",
          "Saving IPs...",                                             //
          "Replace checking @:80:@ for @C:@ to be replaced by @D:@ ",  //
          "New value :80:",
          "INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (1, '', "
          "'ServerBindings', "
          "':80:\r\n', 8204)",
          "Saving SSL IPs...", "Completed"));
}

TEST_F(DebugExport, TellsAndForgetsAFailureOfTheWalkBehindTheSchema) {
  openDebug({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  failWhenInserting("'Path'");
  exportToDatabase();
  healed();
  EXPECT_EQ(timesLogged("After init"), 1);
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(DebugExport, TellsAndForgetsPathsThatCantBeRead) {
  openDebug({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  metabase->failOn("GetDataPaths", "/W3SVC/1", "ServerSize", kDenied);
  exportToDatabase();
  healed();
  EXPECT_THAT(logBehind("Propname = ServerSize"),
              ElementsAre("After Pathlist", "Saving IPs...", "Saving SSL IPs...", "Completed"));
}

TEST_F(DebugExport, TellsANodeThatCantBeBoundTwiceAndKeepsTheFailure) {
  openDebug({{"ServerSize", "1"}}, {{"DefaultDoc", "x"}},
            virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"DefaultDoc", "i"}}));
  transferOnly({"DefaultDoc"});
  metabase->failOn("GetObject", "/ROOT/images", "", kDenied);
  exportToDatabase();
  healed();
  std::vector<std::string> lines = logBehind("Reading IIS://WEB1/W3SVC/1/ROOT/images");
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[0], "After impObj");
  EXPECT_EQ(lines[1], "After vartype");
  EXPECT_THAT(failureLines(), ElementsAre(failureLine("DefaultDoc", kDenied)));
}

TEST_F(DebugExport, TellsAValueThatCantBeRead) {
  openDebug({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  metabase->failOn("Get", "/W3SVC/1", "ServerSize", kDenied);
  exportToDatabase();
  healed();
  EXPECT_FALSE(hasLogged("After impObj"));
  EXPECT_EQ(timesLogged("After vartype"), 1);
  EXPECT_THAT(failureLines(), SizeIs(1));
}

TEST_F(DebugExport, TellsAFailureBehindAnObjectWithThePathsOfTheNextName) {
  openDebug({{"ServerSize", "1"}}, {{"AccessFlags", "1"}},
            virtualDir(1, "/ROOT/images", {{"Path", "D:\\i"}, {"IPSecurity", ""}}));
  transferOnly({"AccessFlags", "IPSecurity", "ServerSize"});
  metabase->failOn("GetObject", "/ROOT/images", "", kDenied);
  exportToDatabase();
  healed();
  EXPECT_EQ(logBehind("Propname = ServerSize").front(), "After Pathlist");
  EXPECT_FALSE(hasLogged("After Path"));
  EXPECT_THAT(failureLines(), IsEmpty());
}

TEST_F(DebugExport, MarksNothingInARunThatGoesWell) {
  openDebug({{"ServerSize", "1"}}, {{"DefaultDoc", "x"}});
  transferOnly({"DefaultDoc", "ServerSize"});
  exportToDatabase();
  EXPECT_THAT(logStartingWith("After"), IsEmpty());
}

TEST_F(DebugExport, IsTheOnlyRunThatMarksFailures) {
  open({{"ServerSize", "1"}});
  transferOnly({"ServerSize"});
  metabase->failOn("Get", "/W3SVC/1", "ServerSize", kDenied);
  exportToDatabase();
  EXPECT_THAT(logStartingWith("After"), IsEmpty());
  EXPECT_THAT(logStartingWith("Propname"), IsEmpty());
  EXPECT_THAT(logStartingWith("Reading"), IsEmpty());
  EXPECT_THAT(logStartingWith("INSERT"), IsEmpty());
  EXPECT_THAT(logStartingWith("W3SVCNUM"), IsEmpty());
}

}  // namespace
}  // namespace trelvin::test
