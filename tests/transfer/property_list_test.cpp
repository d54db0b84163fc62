#include "transfer/property_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "core/err.h"
#include "core/helpers.h"
#include "core/run_state.h"
#include "fakes/export_test.h"
#include "fakes/schema_class.h"
#include "metabase/paths.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

class Exclusions : public ExportTest {};

TEST_F(Exclusions, AreReadFromTheirTableInItsOrderWithoutTheNullRows) {
  executeOn("Trelvin.mdb", "DELETE FROM ExcludedExportParameters");
  for (const char* name : {"'ServerSize'", "NULL", "'AppRoot'", "'Path'"}) {
    executeOn("Trelvin.mdb",
              std::string("INSERT INTO ExcludedExportParameters (PName) VALUES (") + name + ")");
  }
  openWindow();
  EXPECT_THAT(entriesOf(frmMain.lstExclude), ElementsAre("ServerSize", "AppRoot", "Path"));
}

TEST_F(Exclusions, LogTheirStatementInADebugRunOnly) {
  start("-D");
  EXPECT_TRUE(hasLogged("Select * FROM ExcludedExportParameters"));
}

TEST_F(Exclusions, AreNotWrittenBackWhenAPersonAddsOne) {
  openWindow();
  const auto before = query("Trelvin.mdb", "SELECT PName AS a FROM ExcludedExportParameters ORDER BY rowid");
  frmMain.lstExclude.addItem("DefaultDoc");
  EXPECT_EQ(query("Trelvin.mdb", "SELECT PName AS a FROM ExcludedExportParameters ORDER BY rowid"), before);
}

TEST_F(Exclusions, MatchANameInAnyCase) {
  frmMain.lstExclude.addItem("AppRoot");
  EXPECT_TRUE(isExcluded("AppRoot"));
  EXPECT_TRUE(isExcluded("APPROOT"));
  EXPECT_TRUE(isExcluded("approot"));
}

TEST_F(Exclusions, MatchWholeNamesOnly) {
  frmMain.lstExclude.addItem("AppRoot");
  EXPECT_FALSE(isExcluded("App"));
  EXPECT_FALSE(isExcluded("AppRoot2"));
  EXPECT_FALSE(isExcluded("MyAppRoot"));
}

TEST_F(Exclusions, AreNotTrimmed) {
  frmMain.lstExclude.addItem("AppRoot ");
  EXPECT_FALSE(isExcluded("AppRoot"));
  EXPECT_TRUE(isExcluded("approot "));
}

TEST_F(Exclusions, AreNoPatterns) {
  frmMain.lstExclude.addItem("App*");
  frmMain.lstExclude.addItem("App?oot");
  EXPECT_FALSE(isExcluded("AppRoot"));
}

TEST_F(Exclusions, CountFromTheFirstToTheLast) {
  for (const char* name : {"A", "B", "C"}) frmMain.lstExclude.addItem(name);
  EXPECT_TRUE(isExcluded("a"));
  EXPECT_TRUE(isExcluded("c"));
}

TEST_F(Exclusions, ExcludeNothingWhenThereAreNone) {
  EXPECT_FALSE(isExcluded("AppRoot"));
}

TEST_F(Exclusions, MayBeGivenTwice) {
  frmMain.lstExclude.addItem("AppRoot");
  frmMain.lstExclude.addItem("AppRoot");
  EXPECT_TRUE(isExcluded("AppRoot"));
}

class SchemaNames : public ExportTest {
 protected:
  SchemaNames() {
    frmMain.lstPropsToExport.onAddItem = [this](const std::string& name) { added.push_back(name); };
  }
  static std::shared_ptr<SchemaClassObject> schemaOf(std::vector<std::string> mandatory,
                                                     std::vector<std::string> optional) {
    auto object = std::make_shared<SchemaClassObject>();
    object->mandatory = std::move(mandatory);
    object->optional = std::move(optional);
    return object;
  }
  static std::vector<std::string> list() { return entriesOf(frmMain.lstPropsToExport); }

  std::vector<std::string> added;
};

TEST_F(SchemaNames, AreTakenFromTheMandatoryOnesFirstAndThenFromTheOptionalOnes) {
  addSchemaNames(schemaOf({"KeyType", "Path"}, {"AccessFlags", "DefaultDoc"}));
  EXPECT_THAT(added, ElementsAre("KeyType", "Path", "AccessFlags", "DefaultDoc"));
}

TEST_F(SchemaNames, StandSortedInTheList) {
  addSchemaNames(schemaOf({"KeyType"}, {"DefaultDoc", "AccessFlags"}));
  EXPECT_THAT(list(), ElementsAre("AccessFlags", "DefaultDoc", "KeyType"));
}

TEST_F(SchemaNames, KeepTheCaseThatTheSchemaGives) {
  addSchemaNames(schemaOf({}, {"CGITimeout", "appPoolID"}));
  EXPECT_THAT(list(), ElementsAre("appPoolID", "CGITimeout"));
}

TEST_F(SchemaNames, StayOutWhenTheyAreExcluded) {
  frmMain.lstExclude.addItem("keytype");
  frmMain.lstExclude.addItem("DEFAULTDOC");
  addSchemaNames(schemaOf({"KeyType", "Path"}, {"DefaultDoc", "AccessFlags"}));
  EXPECT_THAT(list(), ElementsAre("AccessFlags", "Path"));
}

TEST_F(SchemaNames, StayInWhenTheyAreExcludedLaterOn) {
  addSchemaNames(schemaOf({}, {"DefaultDoc"}));
  frmMain.lstExclude.addItem("DefaultDoc");
  addSchemaNames(schemaOf({}, {"DefaultDoc", "AccessFlags"}));
  EXPECT_THAT(list(), ElementsAre("AccessFlags", "DefaultDoc"));
}

TEST_F(SchemaNames, StandOnceAfterDuplicatesWereRemoved) {
  addSchemaNames(schemaOf({"KeyType"}, {"DefaultDoc", "KeyType", "AccessFlags"}));
  addSchemaNames(schemaOf({"KeyType"}, {"DefaultDoc"}));
  removeDuplicates(frmMain.lstPropsToExport);
  EXPECT_THAT(list(), ElementsAre("AccessFlags", "DefaultDoc", "KeyType"));
}

TEST_F(SchemaNames, OfATreeStandOnceBehindEachNode) {
  TreeNames names;
  names.collect(schemaOf({"KeyType"}, {"DefaultDoc", "KeyType"}));
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "KeyType"));
  names.collect(schemaOf({"KeyType"}, {"DefaultDoc", "AccessFlags"}));
  EXPECT_THAT(list(), ElementsAre("AccessFlags", "DefaultDoc", "KeyType"));
}

TEST_F(SchemaNames, OfATreeAreAddedOnceForEachClass) {
  TreeNames names;
  for (int node = 0; node < 3; ++node) names.collect(schemaOf({"KeyType"}, {"DefaultDoc"}));
  EXPECT_THAT(added, ElementsAre("KeyType", "DefaultDoc"));
}

TEST_F(SchemaNames, OfATreeStayOutWhenTheyAreExcluded) {
  frmMain.lstExclude.addItem("keytype");
  TreeNames names;
  names.collect(schemaOf({"KeyType"}, {"DefaultDoc"}));
  EXPECT_THAT(list(), ElementsAre("DefaultDoc"));
}

// Trees one after the other, as a run goes through its sites.
class NamesOfTrees : public SchemaNames {
 protected:
  void begin() {
    frmMain.lstPropsToExport.clear();
    added.clear();
    names.begin();
  }
  void walk(const std::vector<NodeHandle>& classes) {
    begin();
    for (const NodeHandle& schemaClass : classes) names.collect(schemaClass);
  }

  TreeNames names;
  NodeHandle directory = schemaOf({"KeyType"}, {"Path", "DefaultDoc"});
  NodeHandle filter = schemaOf({}, {"FilterPath", "KeyType"});
  NodeHandle server = schemaOf({"KeyType"}, {"ServerComment", "Path"});
};

TEST_F(NamesOfTrees, AreTheSameForTheSameClassesWithoutBeingAddedAnew) {
  for (int tree = 0; tree < 3; ++tree) {
    walk({directory, filter, directory});
    EXPECT_THAT(list(), ElementsAre("DefaultDoc", "FilterPath", "KeyType", "Path"));
    EXPECT_EQ(added.empty(), tree > 0);
  }
}

TEST_F(NamesOfTrees, AreThoseOfTheirOwnClasses) {
  walk({directory, filter});
  walk({directory, server});
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "KeyType", "Path", "ServerComment"));
  walk({server});
  EXPECT_THAT(list(), ElementsAre("KeyType", "Path", "ServerComment"));
  walk({server, filter, directory});
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "FilterPath", "KeyType", "Path", "ServerComment"));
  walk({});
  EXPECT_THAT(list(), ::testing::IsEmpty());
}

TEST_F(NamesOfTrees, StopAtTheClassesThatAreReached) {
  walk({directory, filter});
  walk({directory});
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "KeyType", "Path"));
}

TEST_F(NamesOfTrees, HeedAnExclusionThatCameMeanwhile) {
  walk({directory});
  frmMain.lstExclude.addItem("defaultdoc");
  walk({directory});
  EXPECT_THAT(list(), ElementsAre("KeyType", "Path"));
  frmMain.lstExclude.removeItem(frmMain.lstExclude.listCount() - 1);
  walk({directory});
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "KeyType", "Path"));
}

TEST_F(NamesOfTrees, JoinWhatIsInTheListAlready) {
  walk({directory});
  frmMain.lstPropsToExport.clear();
  frmMain.lstPropsToExport.addItem("Former");
  names.begin();
  names.collect(directory);
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "Former", "KeyType", "Path"));
  walk({directory});
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "KeyType", "Path"));
}

TEST_F(SchemaNames, OfAnUnboundClassAddNothingAndLeaveTheFailureBehind) {
  frmMain.lstPropsToExport.addItem("Former");
  addSchemaNames(nullptr);
  EXPECT_THAT(list(), ElementsAre("Former"));
  EXPECT_EQ(Err.number, error_number::kObjectNotSet);
}

TEST_F(SchemaNames, ComeFromTheOptionalOnesWhenTheMandatoryOnesCantBeRead) {
  const auto schema = schemaOf({"KeyType"}, {"DefaultDoc"});
  schema->mandatoryFailsWith = error_number::kAdsPropertyNotSupported;
  addSchemaNames(schema);
  EXPECT_THAT(list(), ElementsAre("DefaultDoc"));
  EXPECT_EQ(Err.number, error_number::kAdsPropertyNotSupported);
}

TEST_F(SchemaNames, ComeFromTheMandatoryOnesWhenTheOptionalOnesCantBeRead) {
  const auto schema = schemaOf({"KeyType"}, {"DefaultDoc"});
  schema->optionalFailsWith = error_number::kAdsPropertyNotSupported;
  addSchemaNames(schema);
  EXPECT_THAT(list(), ElementsAre("KeyType"));
}

class SiteNames : public SchemaNames {
 protected:
  void open() {
    openOn(webService(plainSite(1, "Shop")));
    output.clear();
  }
  [[nodiscard]] static NodeHandle site() { return getObject("IIS://WEB1/W3SVC/1"); }
};

TEST_F(SiteNames, AreThoseOfTheSitesClass) {
  open();
  frmMain.lstExclude.clear();
  completePropertyList(site());
  const NodeHandle schemaClass = getObject(site()->schema());
  std::vector<std::string> expected = schemaClass->mandatoryProperties().texts();
  for (const std::string& name : schemaClass->optionalProperties()) expected.push_back(name);
  std::vector<std::string> found = list();
  std::sort(expected.begin(), expected.end());
  std::sort(found.begin(), found.end());
  EXPECT_GT(found.size(), 50U);
  EXPECT_EQ(found, expected);
}

TEST_F(SiteNames, JoinTheOnesThatWereThereWithoutDuplicates) {
  open();
  transferOnly({"ServerComment", "ServerBindings"});
  frmMain.lstPropsToExport.addItem("ServerComment");
  frmMain.lstPropsToExport.addItem("Path");
  completePropertyList(site());
  EXPECT_THAT(list(), ElementsAre("Path", "ServerBindings", "ServerComment"));
}

TEST_F(SiteNames, AreAnnouncedInOutputAndLog) {
  open();
  completePropertyList(site());
  EXPECT_THAT(output, ElementsAre("Building property transfer list", "Transferring properties..."));
  EXPECT_EQ(frmMain.lstOutput.text(), "Transferring properties...");
  EXPECT_EQ(timesLogged("Transferring properties..."), 1);
  EXPECT_FALSE(hasLogged("Building property transfer list"));
}

TEST_F(SiteNames, AreAnnouncedInStepWithTheList) {
  open();
  transferOnly({"ServerComment"});
  std::int32_t namesWhenBuilding = 0;
  std::int32_t namesWhenTransferring = 0;
  frmMain.lstPropsToExport.addItem("ServerComment");
  frmMain.lstOutput.onAddItem = [&](const std::string& line) {
    (line.starts_with("Building") ? namesWhenBuilding : namesWhenTransferring) =
        frmMain.lstPropsToExport.listCount();
  };
  completePropertyList(site());
  EXPECT_EQ(namesWhenBuilding, 2) << "names are added ahead of the announcement";
  EXPECT_EQ(namesWhenTransferring, 1) << "and duplicates go behind it";
}

TEST_F(SiteNames, GiveWayToEventsOnce) {
  open();
  events->yields = 0;
  completePropertyList(site());
  EXPECT_EQ(events->yields, 1);
}

TEST_F(SiteNames, RefreshTheListAtTheEnd) {
  open();
  int refreshes = 0;
  frmMain.lstPropsToExport.onRefresh = [&] { ++refreshes; };
  completePropertyList(site());
  EXPECT_EQ(refreshes, 1);
}

TEST_F(SiteNames, AreMissingWithoutAWordWhenTheSchemaCantBeRead) {
  open();
  frmMain.lstPropsToExport.addItem("Former");
  metabase->failOn("Schema", "/W3SVC/1", "", error_number::kAccessDenied);
  completePropertyList(site());
  EXPECT_THAT(list(), ElementsAre("Former"));
  EXPECT_TRUE(Err.isSet()) << "the failure stays for the next test";
  EXPECT_FALSE(hasLogged("After init"));
}

TEST_F(SiteNames, TellOfAnUnreadableSchemaInADebugRun) {
  openForDebugOn(webService(plainSite(1, "Shop")));
  metabase->failOn("GetObject", "IIsWebServer", "", error_number::kAccessDenied);
  completePropertyList(site());
  EXPECT_EQ(timesLogged("After init"), 1);
  EXPECT_EQ(timesLogged("After master list"), 1) << "an unbound class object has no names either";
  EXPECT_FALSE(Err.isSet());
}

TEST_F(SiteNames, TellOfUnreadableNamesInADebugRun) {
  openForDebugOn(webService(plainSite(1, "Shop")));
  metabase->failOn("OptionalProperties", "", "", error_number::kAccessDenied);
  completePropertyList(site());
  EXPECT_FALSE(hasLogged("After init"));
  EXPECT_EQ(timesLogged("After master list"), 1);
  EXPECT_FALSE(Err.isSet());
}

TEST_F(SiteNames, TellOfNothingInADebugRunThatGoesWell) {
  openForDebugOn(webService(plainSite(1, "Shop")));
  completePropertyList(site());
  EXPECT_FALSE(hasLogged("After init"));
  EXPECT_FALSE(hasLogged("After master list"));
}

class TransferList : public ExportTest {
 protected:
  void open() {
    openOn(webService(webSite(1, "Shop", {{"ServerSize", "1"}}) +
                      virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}, {"DefaultDoc", "a.htm"}}) +
                      plainSite(2, "Wiki")));
  }
  static std::vector<std::string> list() { return entriesOf(frmMain.lstPropsToExport); }
};

TEST_F(TransferList, IsTheUnionOfTheClassesOfAllNodes) {
  open();
  transferOnly({"ServerSize", "DefaultDoc", "Path", "FilterLoadOrder"});
  select({0});
  exportToDatabase();
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "Path", "ServerSize"))
      << "names of the site's and the directory's class, each once, and none of a class that isn't there";
}

TEST_F(TransferList, IsNotClearedBetweenRuns) {
  open();
  select({0});
  transferOnly({"ServerSize"});
  exportToDatabase();
  transferOnly({"DefaultDoc"});
  exportToDatabase();
  EXPECT_THAT(list(), ElementsAre("DefaultDoc", "ServerSize"));
}

TEST_F(TransferList, StillHoldsWhatWasExcludedAfterIt) {
  open();
  select({0});
  transferOnly({"ServerSize", "DefaultDoc"});
  exportToDatabase();
  frmMain.lstExclude.addItem("DefaultDoc");
  exportToDatabase();
  EXPECT_EQ(data("Name AS a", "SiteNumber = 2 AND Name = 'DefaultDoc'").size(), 1U);
}

TEST_F(TransferList, GivesALaterSiteNoRowsForNamesThatItLacks) {
  openOn(webService(plainSite(1, "Shop") +
                    element("IIsFilters", "/LM/W3SVC/1/Filters", {{"FilterLoadOrder", "a"}}) +
                    plainSite(2, "Wiki")));
  transferOnly({"FilterLoadOrder"});
  select({0, 1});
  exportToDatabase();
  EXPECT_THAT(list(), Contains("FilterLoadOrder"));
  EXPECT_EQ(data("Name AS a", "SiteNumber = 1 AND Name = 'FilterLoadOrder'").size(), 1U);
  EXPECT_TRUE(data("Name AS a", "SiteNumber = 2 AND Name = 'FilterLoadOrder'").empty());
  EXPECT_THAT(logStartingWith("Error transfering Property FilterLoadOrder"), ::testing::SizeIs(1))
      << "the filters' own row alone: that class knows no application";
}

TEST_F(TransferList, LeavesOutWhatTheInstalledExclusionsName) {
  openOn(webService(webSite(1, "Shop") + virtualDir(1, "/ROOT",
                                                    {{"Path", "C:\\shop"},
                                                     {"AppRoot", "/LM/W3SVC/1/ROOT"},
                                                     {"AppIsolated", "2"},
                                                     {"DefaultDoc", "a.htm"}})));
  select({0});
  exportToDatabase();
  EXPECT_THAT(namesOfRows(), Contains("DefaultDoc"));
  EXPECT_THAT(list(), Not(Contains("AppRoot")));
  EXPECT_THAT(namesOfRows(), Not(Contains("AppRoot")));
  EXPECT_THAT(namesOfRows(), Not(Contains("AppIsolated")));
  EXPECT_EQ(data("Name AS a", "Name = 'Path'").size(), 1U) << "that of the directory tree alone";
}

TEST_F(TransferList, MakesNoRowsWhenEverythingIsExcluded) {
  open();
  select({0});
  transferOnly({});
  exportToDatabase();
  EXPECT_TRUE(list().empty());
  EXPECT_THAT(namesOfRows(), ElementsAre("Path"));
  EXPECT_TRUE(hasOutput("Done!"));
}

}  // namespace
}  // namespace trelvin::test
