#include "transfer/target_server.h"

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failures.h"
#include "metabase/paths.h"
#include "server_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kStamp = "Trelvin: This web site was exported using Trelvin v4.1";

class TargetServer : public ServerToServer {
 protected:
  // A target with those elements below its service.
  void openTarget(const std::string& elements) {
    open(webService(plainSite(7, "Shop")), webService(elements));
  }
  [[nodiscard]] static std::int16_t firstNumber() { return firstSiteNumber(getObject(targetServicePath())); }
  // Puts other bindings into the mapping of a line.
  void setNewBindings(int line, const std::string& column, std::initializer_list<const char*> bindings) {
    const std::string site = std::to_string(line);
    const std::string other = "Old" + column.substr(3);
    executeOn("Trelvin.mdb",
              "DELETE FROM tmpSettings WHERE SiteID = " + site + " AND " + other + " IS NOT NULL");
    int index = 0;
    for (const char* binding : bindings) {
      executeOn("Trelvin.mdb", "INSERT INTO tmpSettings (SiteID, ListIndex, " + other + ", " + column +
                                   ") VALUES (" + site + "," + std::to_string(index++) + ",'x','" + binding +
                                   "')");
    }
  }
};

// Paths.

TEST_F(TargetServer, FormsThePathsOfTheTargetFromTheBoxAndTheService) {
  openTarget("");
  frmMain.txtExportServer.text = "Web-9";
  EXPECT_EQ(targetServicePath(), "IIS://Web-9/W3SVC");
  EXPECT_EQ(targetSitePath(12), "IIS://Web-9/W3SVC/12");
  frmMain.sService = "MSFTPSVC";
  EXPECT_EQ(targetSitePath(3), "IIS://Web-9/MSFTPSVC/3");
}

// The number of the first site.

TEST_F(TargetServer, BeginsWithOneOnATargetWithoutSites) {
  openTarget("");
  EXPECT_EQ(firstNumber(), 1);
}

TEST_F(TargetServer, GoesOnBehindTheHighestNumber) {
  openTarget(plainSite(2, "a") + plainSite(19, "b") + plainSite(3, "c"));
  EXPECT_EQ(firstNumber(), 20);
}

TEST_F(TargetServer, LooksAtSitesOnlyForTheHighestNumber) {
  openTarget(plainSite(2, "a") + element("IIsFilters", "/LM/W3SVC/90") +
             element("IIsWebInfo", "/LM/W3SVC/91") + element("IIsFtpServer", "/LM/W3SVC/92"));
  EXPECT_EQ(firstNumber(), 3);
}

TEST_F(TargetServer, KnowsSitesByTheirClassInAnyCase) {
  openTarget(element("IISWEBSERVER", "/LM/W3SVC/4"));
  EXPECT_EQ(firstNumber(), 5);
}

TEST_F(TargetServer, PassesOverSitesWhoseNumberItCannotHold) {
  openTarget(plainSite(2, "a") + element("IIsWebServer", "/LM/W3SVC/32768") +
             element("IIsWebServer", "/LM/W3SVC/1876543210") + element("IIsWebServer", "/LM/W3SVC/Extra"));
  EXPECT_EQ(firstNumber(), 3);
}

TEST_F(TargetServer, FailsBehindTheLastNumberThereIs) {
  openTarget(plainSite(32767, "a"));
  EXPECT_EQ(numberOfFailure([] { return firstNumber(); }), error_number::kOverflow);
}

TEST_F(TargetServer, LooksForTheHighestNumberWhenNumbersArePreservedToo) {
  openTarget(plainSite(19, "a"));
  frmMain.optOverwritePreserve.setValue(true);
  EXPECT_EQ(firstNumber(), 20);
}

TEST_F(TargetServer, BeginsWithOneWhenSitesAreOverwritten) {
  openTarget(plainSite(19, "a"));
  frmMain.optOverwriteWebs.setValue(true);
  EXPECT_EQ(firstNumber(), 1);
}

TEST_F(TargetServer, BeginsWithOneWithoutATarget) {
  openTarget("");
  EXPECT_EQ(firstSiteNumber(nullptr), 1);
}

// The three creation modes.

TEST_F(TargetServer, AddsNewSitesBehindThoseThatAreThere) {
  open(webService(plainSite(1, "Shop") + plainSite(2, "Wiki")),
       webService(plainSite(1, "Old") + plainSite(4, "Keep")));
  exportSites({0, 1});
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Old");
  EXPECT_EQ(stored("/W3SVC/4", "ServerComment"), "Keep");
  EXPECT_EQ(stored("/W3SVC/5", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/6", "ServerComment"), "Wiki");
  EXPECT_THAT(callsOf({"Delete"}), IsEmpty());
}

TEST_F(TargetServer, CountsAnewInEachRun) {
  open(webService(plainSite(1, "Shop")));
  exportSites({0});
  press();
  EXPECT_THAT(childrenOf("/W3SVC"), ElementsAre("1", "2"));
}

TEST_F(TargetServer, OverwritesFromOneOnInTheOrderOfTheSelection) {
  open(webService(plainSite(5, "Shop") + plainSite(9, "Wiki")),
       webService(plainSite(1, "a") + plainSite(2, "b") + plainSite(3, "c")));
  frmMain.optOverwriteWebs.setValue(true);
  exportSites({0, 1});
  EXPECT_THAT(childrenOf("/W3SVC"), ElementsAre("1", "2", "3"));
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/2", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/3", "ServerComment"), "c");
}

TEST_F(TargetServer, KeepsEachNumberOfTheSourceWhenAskedTo) {
  open(webService(plainSite(5, "Shop") + plainSite(9, "Wiki")),
       webService(plainSite(1, "a") + plainSite(5, "b") + plainSite(7, "c")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1});
  EXPECT_THAT(childrenOf("/W3SVC"), ElementsAre("1", "5", "7", "9"));
  EXPECT_EQ(stored("/W3SVC/5", "ServerComment"), "Shop");
  EXPECT_EQ(stored("/W3SVC/9", "ServerComment"), "Wiki");
  EXPECT_EQ(stored("/W3SVC/1", "ServerComment"), "a");
  EXPECT_EQ(stored("/W3SVC/7", "ServerComment"), "c");
  EXPECT_THAT(callsOf({"Delete"}), ElementsAre("Delete /W3SVC 5"));
}

TEST_F(TargetServer, TellsThePreservedNumberInADebugLogAheadOfTheStatus) {
  openForDebug(webService(plainSite(5, "Shop")));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  const std::vector<std::string> lines = runLog();
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[1], "Existing W3SVCNum = 5");
  EXPECT_EQ(lines[2], "Exporting site (1 of 1) Shop...");
}

TEST_F(TargetServer, FallsBackToTheNextNumberForASiteWhoseNumberItCannotHold) {
  openForDebug(webService(plainSite(5, "Shop") + webSite(87257621, "Big") +
                          virtualDir(87257621, "/ROOT", {{"Path", "C:\\big"}})));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0, 1});
  EXPECT_THAT(childrenOf("/W3SVC"), ElementsAre("5", "6"));
  EXPECT_EQ(stored("/W3SVC/6", "ServerComment"), "Big");
  EXPECT_TRUE(hasLogged("Existing W3SVCNum = 6"));
}

TEST_F(TargetServer, NeverConfusesAWebSiteWithAnFtpSiteOfItsNumber) {
  openFtp(ftpService(ftpSite(3, "Files") + ftpDir(3, "/ROOT", {{"Path", "C:\\f"}})),
          webService(plainSite(3, "Web three")) + ftpService(ftpSite(3, "Old") + ftpSite(4, "Keep")));
  const std::string before = metabaseOf("NEW1");
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  EXPECT_EQ(stored("/MSFTPSVC/3", "ServerComment"), "Files");
  const std::string after = closedTargetFile();
  for (const char* location : {"/LM/W3SVC/3", "/LM/W3SVC/3/ROOT", "/LM/MSFTPSVC/4"})
    EXPECT_EQ(elementAt(after, location), elementAt(before, location)) << location;
}

// New bindings.

TEST_F(TargetServer, WritesTheNewBindingsOverThoseOfTheSource) {
  open(webService(webSite(1, "Shop", {{"ServerBindings", ":80:old"}, {"SecureBindings", ":443:"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}})));
  select({0});
  setNewBindings(0, "NewIP", {"10.0.0.1:80:a", ":8080:"});
  setNewBindings(0, "NewSSLIP", {"10.0.0.1:443:"});
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), "10.0.0.1:80:a|:8080:");
  EXPECT_EQ(stored("/W3SVC/1", "SecureBindings"), "10.0.0.1:443:");
}

TEST_F(TargetServer, RewritesTheNewBindings) {
  open(webService(
      webSite(1, "Shop", {{"ServerBindings", "10.0.0.1:80:shop"}, {"SecureBindings", "10.0.0.1:443:"}}) +
      virtualDir(1, "/ROOT", {{"Path", "C:\\s"}})));
  transferOnly({});
  map("10.0.0.1", "192.0.2.7");
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), "192.0.2.7:80:shop");
  EXPECT_EQ(stored("/W3SVC/1", "SecureBindings"), "192.0.2.7:443:");
}

TEST_F(TargetServer, LeavesTheBindingsOfTheSourceWhenTheMappingHasNone) {
  open(webService(webSite(1, "Shop", {{"ServerBindings", ":80:old"}, {"SecureBindings", ":443:"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}})));
  select({0});
  setNewBindings(0, "NewIP", {});
  setNewBindings(0, "NewSSLIP", {});
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:old");
  EXPECT_EQ(stored("/W3SVC/1", "SecureBindings"), ":443:");
  EXPECT_FALSE(hasOutput("Setting New IP addresses"));
  EXPECT_FALSE(hasOutput("Setting New SSL IP addresses"));
  EXPECT_TRUE(hasLogged("Transferring IP addresses..."));
  EXPECT_TRUE(hasLogged("Transferring SSL IP addresses..."));
}

TEST_F(TargetServer, LogsBindingsThatItCouldNotSet) {
  open(webService(webSite(1, "Shop", {{"ServerBindings", ":80:"}, {"SecureBindings", ":443:"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}})));
  transferOnly({});
  metabase->failOn("Put", "/W3SVC/1", "ServerBindings", error_number::kAdsBadParameter);
  metabase->failOn("Put", "/W3SVC/1", "SecureBindings", error_number::kAdsBadParameter);
  exportSites({0});
  const std::string cause = describeError(error_number::kAdsBadParameter);
  EXPECT_THAT(failureLines(), ElementsAre("Error setting IP'sError -2147463160 " + cause + " 80005008",
                                          "Error setting SSL IP'sError -2147463160" + cause));
}

TEST_F(TargetServer, CountsAProgressBeyondTheBarAsAFailureOfTheBindings) {
  open(webService(webSite(7, "Shop", {{"ServerBindings", ":80:"}}) +
                  virtualDir(7, "/ROOT", {{"Path", "C:\\s"}})));
  frmMain.optOverwritePreserve.setValue(true);
  exportSites({0});
  EXPECT_THAT(failureLines(), ElementsAre("Error setting IP'sError 380 " +
                                          describeError(error_number::kInvalidPropertyValue) + " 17C"))
      << "nothing clears the failure before the next test";
  EXPECT_EQ(stored("/W3SVC/7", "ServerBindings"), ":80:") << "the bindings are there all the same";
}

TEST_F(TargetServer, CountsProgressInSitesWhileBindingsAreSet) {
  open(webService(webSite(1, "Shop", {{"ServerBindings", ":80:"}}) +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}}) + plainSite(2, "Wiki")));
  transferOnly({});
  double max = 0;
  double value = -1;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Put" && call.argument == "ServerBindings") {
      max = frmMain.ProgressBar1.max();
      value = frmMain.ProgressBar1.value();
    }
    return std::nullopt;
  };
  exportSites({0, 1});
  EXPECT_EQ(max, 2);
  EXPECT_EQ(value, 0) << "one less than the number of the site";
}

TEST_F(TargetServer, LeavesTheCounterOfBindingsAsALoopLeavesIt) {
  openTarget(plainSite(1, "Old"));
  ListControl& list = frmMain.lstNewIPs(0);
  list.clear();
  list.addItem(":80:");
  list.addItem(":81:");
  Value counter;
  putBindings(getObject("IIS://NEW1/W3SVC/1"), list, "ServerBindings", counter);
  EXPECT_EQ(counter.toLong(), 2);
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:|:81:");
}

// The marker header.

TEST_F(TargetServer, MarksTheRootOfTheNewSite) {
  open(webService(plainSite(1, "Shop")));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), kStamp);
  EXPECT_EQ(stored("/W3SVC/1", "HttpCustomHeaders"), kUnset);
}

TEST_F(TargetServer, PutsTheMarkBehindTheHeadersThatAreThere) {
  open(webService(
      webSite(1, "Shop") +
      virtualDir(1, "/ROOT",
                 {{"Path", "C:\\s"}, {"HttpCustomHeaders", std::string("A: 1") + kNextEntry + "B: 2"}})));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), std::string("A: 1|B: 2|") + kStamp);
}

TEST_F(TargetServer, PutsTheMarkBehindTheHeadersThatTheRootInherits) {
  open(webService(plainSite(1, "Shop")),
       element("IIsWebService", "/LM/W3SVC", {{"HttpCustomHeaders", "X-Powered-By: ASP.NET"}}));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), std::string("X-Powered-By: ASP.NET|") + kStamp);
}

TEST_F(TargetServer, MarksASiteAgainThatCarriesAMark) {
  open(webService(webSite(1, "Shop") +
                  virtualDir(1, "/ROOT", {{"Path", "C:\\s"}, {"HttpCustomHeaders", kStamp}})));
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), std::string(kStamp) + "|" + kStamp);
}

TEST_F(TargetServer, MarksSitesInEveryMode) {
  open(webService(plainSite(1, "Shop")));
  for (OptionButton* mode :
       {&frmMain.optCreateWebs, &frmMain.optOverwriteWebs, &frmMain.optOverwritePreserve}) {
    mode->setValue(true);
    metabase->calls.clear();
    exportSites({0});
    EXPECT_THAT(callsOf({"Put"}), testing::Contains(testing::EndsWith("/ROOT HttpCustomHeaders")))
        << mode->name;
  }
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), kStamp);
}

TEST_F(TargetServer, MarksSitesWhenTheCommandLineAsksNotTo) {
  addServer("WEB1", metabaseFile(webService(plainSite(1, "Shop"))));
  addServer("NEW1", metabaseFile(webService("")));
  start("-SKIPHEADERS");
  frmMain.txtImportServer.text = "WEB1";
  frmMain.txtExportServer.text = "NEW1";
  frmMain.cmdPopulate.onClick();
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), kStamp);
}

TEST_F(TargetServer, MarksNoSiteWhoseHeadersItCannotRead) {
  openTarget("");
  metabase->failOn("Get", "NEW1/W3SVC/1/ROOT", "HttpCustomHeaders", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "HttpCustomHeaders"), kUnset);
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_EQ(shownOutput().back(), "Done!");
}

TEST_F(TargetServer, SaysNothingOfAMarkThatFailed) {
  openTarget("");
  metabase->failOn("Put", "NEW1/W3SVC/1/ROOT", "HttpCustomHeaders", error_number::kAccessDenied);
  exportSites({0});
  EXPECT_THAT(failureLines(), IsEmpty());
  EXPECT_EQ(timesLogged("Completed"), 1);
}

TEST_F(TargetServer, KeepsTheFailureOfAMarkInTheErrorState) {
  openTarget(plainSite(1, "Old"));
  metabase->failOn("Get", "NEW1/W3SVC/1/ROOT", "HttpCustomHeaders", error_number::kAccessDenied);
  Err.clear();
  NodeHandle target;
  stampSite(target, 1);
  EXPECT_EQ(Err.number, error_number::kAccessDenied);
}

TEST_F(TargetServer, MarksNothingWhenTheSiteHasNoRoot) {
  openTarget(webSite(1, "Rootless"));
  Err.clear();
  NodeHandle target;
  stampSite(target, 1);
  EXPECT_EQ(stored("/W3SVC/1", "HttpCustomHeaders"), kUnset);
  EXPECT_TRUE(Err.isSet());
}

// The start.

TEST_F(TargetServer, LogsTheStartBeforeIt) {
  openTarget(plainSite(1, "Old"));
  frmMain.chkStartWebs.setValue(true);
  bool wasLogged = false;
  metabase->rule = [&](const MetabaseCall& call) -> std::optional<std::int32_t> {
    if (call.operation == "Start") wasLogged = hasLogged("Starting site...");
    return std::nullopt;
  };
  startSite(1);
  EXPECT_TRUE(wasLogged);
}

TEST_F(TargetServer, StartsNothingWhenThereIsNoSuchSite) {
  openTarget("");
  frmMain.chkStartWebs.setValue(true);
  metabase->calls.clear();
  startSite(1);
  EXPECT_THAT(callsOf({"Start"}), IsEmpty());
  EXPECT_TRUE(hasLogged("Starting site..."));
}

// FTP.

TEST_F(TargetServer, SendsAnFtpSiteWithoutMarkAndApplication) {
  openFtp(ftpService(ftpSite(2, "Files", {{"ServerBindings", ":21:"}, {"MaxConnections", "50"}}) +
                     ftpDir(2, "/ROOT", {{"Path", "C:\\f"}, {"AccessFlags", "3"}}) +
                     ftpDir(2, "/ROOT/pub", {{"Path", "C:\\p"}})));
  frmMain.chkStartWebs.setValue(true);
  exportSites({0});
  EXPECT_THAT(boxes(), SizeIs(2)) << "the warning and Done!, and nothing about a corrupt root";
  EXPECT_EQ(classOf("/MSFTPSVC/1"), "IIsFtpServer");
  EXPECT_EQ(classOf("/MSFTPSVC/1/ROOT/pub"), "IIsFtpVirtualDir");
  EXPECT_EQ(stored("/MSFTPSVC/1", "ServerComment"), "Files");
  EXPECT_EQ(stored("/MSFTPSVC/1", "ServerBindings"), ":21:");
  EXPECT_EQ(stored("/MSFTPSVC/1", "MaxConnections"), "50");
  EXPECT_EQ(stored("/MSFTPSVC/1/ROOT", "Path"), "C:\\f");
  EXPECT_EQ(stored("/MSFTPSVC/1/ROOT", "AccessFlags"), "3");
  EXPECT_THAT(callsOf({"AppCreate", "AppCreate2", "AppCreate3", "Start"}), ElementsAre("Start /MSFTPSVC/1"));
  EXPECT_EQ(closedTargetFile().find("exported using"), std::string::npos);
}

TEST_F(TargetServer, LogsTheStepsOfAnFtpSite) {
  openFtp(ftpService(ftpSite(2, "Files") + ftpDir(2, "/ROOT", {{"Path", "C:\\f"}})));
  exportSites({0});
  EXPECT_THAT(runLog(), ElementsAre("Exporting from IIS6 to IIS6", "Exporting site (1 of 1) Files...",
                                    "Checking to see if MSFTPSVC1 exists..", "Creating Web Site MSFTPSVC1",
                                    "Setting up metabase structure...", "Creating virtual directory 1/ROOT",
                                    "Transferring properties...", "Transferring IP addresses...",
                                    "Transferring SSL IP addresses...", "Completed"));
}

}  // namespace
}  // namespace trelvin::test
