// The mapping lists as views of the working rows.
#include "metabase/mapping_display.h"

#include <gtest/gtest.h>

#include "fakes/failures.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

constexpr const char* kNoDirectories =
    "Could not retreive directory information from the DB for this site - this export will fail";

class MappingDisplayTest : public SitesTest {
 protected:
  MappingDisplayTest() {
    for (const std::int16_t site : {std::int16_t{0}, std::int16_t{1}}) {
      const std::string name = "site" + std::to_string(site);
      executeOnSettings(statements::addDirectoryRow(site, 1, "/ROOT/b", name + "\\b"));
      executeOnSettings(statements::addDirectoryRow(site, 0, "/ROOT", name));
      executeOnSettings(statements::addBindingRow(site, 0, name + ":80:"));
      executeOnSettings(statements::addSslBindingRow(site, 0, name + ":443:"));
    }
    executeOnSettings("UPDATE tmpSettings SET NewIP = 'new', NewSSLIP = 'newssl' WHERE SiteID = 1");
  }

  static std::vector<const Control*> directoryGroup() {
    return {&frmMain.fraFolders, &frmMain.fraNewDirectory, &frmMain.lstFolders(0),
            &frmMain.lstDirectories(0)};
  }
  static std::vector<const Control*> bindingGroup() {
    return {&frmMain.fraNewIPs, &frmMain.fraOldIPs, &frmMain.lstNewIPs(0), &frmMain.lstOldIPs(0),
            &frmMain.cmdAddIP};
  }
  static std::vector<const Control*> sslGroup() {
    return {&frmMain.fraNewSSLIPs, &frmMain.fraOldSSLIPs, &frmMain.lstNewSSLIPs(0), &frmMain.lstOldSSLIPs(0),
            &frmMain.cmdAddSSLIP};
  }
  static std::vector<const Control*> valueGroup() {
    return {&frmMain.fraOldxValues, &frmMain.fraNewxValues, &frmMain.lstOldValues, &frmMain.lstNewValues,
            &frmMain.cmdAddNewValue};
  }
  static void expectVisible(const std::vector<const Control*>& group, bool visible) {
    for (const Control* control : group) EXPECT_EQ(control->visible, visible) << control->name;
  }
  static std::vector<ListControl*> perSiteLists() {
    return {&frmMain.lstFolders(0),     &frmMain.lstDirectories(0), &frmMain.lstOldIPs(0),
            &frmMain.lstNewIPs(0),      &frmMain.lstOldSSLIPs(0),   &frmMain.lstNewSSLIPs(0),
            &frmMain.lstFilesToCopy(0), &frmMain.lstCheckCopy(0)};
  }
};

TEST_F(MappingDisplayTest, DirectoriesComeInTheOrderOfTheirIndex) {
  displayDirectories(true, 1);
  EXPECT_EQ(entriesOf(frmMain.lstFolders(0)), (Texts{"/ROOT", "/ROOT/b"}));
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"site1", "site1\\b"}));
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
}

TEST_F(MappingDisplayTest, BindingsShowTheOldAndTheNewOnes) {
  displayIPs(true, 1);
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{"site1:80:"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewIPs(0)), (Texts{"new"}));
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
}

TEST_F(MappingDisplayTest, SecureBindingsShowTheOldAndTheNewOnes) {
  displaySSLIPs(true, 1);
  EXPECT_EQ(entriesOf(frmMain.lstOldSSLIPs(0)), (Texts{"site1:443:"}));
  EXPECT_EQ(entriesOf(frmMain.lstNewSSLIPs(0)), (Texts{"newssl"}));
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
}

TEST_F(MappingDisplayTest, EachRoutineSwitchesTheWholeOfItsGroupAndNoOther) {
  for (const bool visible : {true, false}) {
    displayDirectories(visible, 0);
    displayIPs(visible, 0);
    displaySSLIPs(visible, 0);
    displayNewValues(visible);
    for (const auto& group : {directoryGroup(), bindingGroup(), sslGroup(), valueGroup()}) {
      expectVisible(group, visible);
    }
  }
  displayIPs(true, 0);
  expectVisible(directoryGroup(), false);
  expectVisible(bindingGroup(), true);
  expectVisible(sslGroup(), false);
  expectVisible(valueGroup(), false);
}

TEST_F(MappingDisplayTest, HidingAGroupRefillsItAllTheSame) {
  for (ListControl* list : perSiteLists()) list->addItem("stale");
  displayDirectories(false, 1);
  displayIPs(false, 1);
  displaySSLIPs(false, 1);
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"site1", "site1\\b"}));
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{"site1:80:"}));
  EXPECT_EQ(entriesOf(frmMain.lstOldSSLIPs(0)), (Texts{"site1:443:"}));
}

TEST_F(MappingDisplayTest, AFormerSitesEntriesAreCleared) {
  displayDirectories(true, 0);
  displayDirectories(true, 1);
  EXPECT_EQ(frmMain.lstFolders(0).listCount(), 2);
}

TEST_F(MappingDisplayTest, ASiteWithoutDirectoriesIsToldAndLogged) {
  displayDirectories(true, 7);
  EXPECT_EQ(boxes(), (Texts{kNoDirectories}));
  EXPECT_EQ(newLogLines(), (Texts{kNoDirectories}));
  EXPECT_EQ(frmMain.lstFolders(0).listCount(), 0);
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
}

TEST_F(MappingDisplayTest, HidingASiteWithoutDirectoriesTellsItToo) {
  run.bRunSilent = true;
  displayDirectories(false, 7);
  EXPECT_EQ(output, (Texts{kNoDirectories}));
  EXPECT_TRUE(dialogs->shown.empty());
}

TEST_F(MappingDisplayTest, ASiteWithoutBindingsIsNotTold) {
  displayIPs(true, 7);
  displaySSLIPs(true, 7);
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_TRUE(newLogLines().empty());
  EXPECT_EQ(frmMain.lstOldIPs(0).listCount(), 0);
  EXPECT_FALSE(frmMain.rsSettings->isOpen());
}

TEST_F(MappingDisplayTest, TheStatementIsKeptAndLoggedWithTheDebugFlag) {
  run.bDebug = true;
  displayDirectories(true, 1);
  displayIPs(true, 1);
  displaySSLIPs(true, 1);
  EXPECT_EQ(newLogLines(),
            (Texts{statements::directoryRows(1), statements::bindingRows(1), statements::sslBindingRows(1)}));
  EXPECT_EQ(frmMain.sSql, statements::sslBindingRows(1));
}

TEST_F(MappingDisplayTest, AFailureOfTheDirectoriesGoesToTheCaller) {
  databases.failOn("OpenRows", "Folder", error_number::kUnspecified);
  EXPECT_EQ(numberOfFailure([] { displayDirectories(true, 0); }), error_number::kUnspecified);
  EXPECT_TRUE(newLogLines().empty());
  expectVisible(directoryGroup(), true);
}

TEST_F(MappingDisplayTest, AFailureOfTheBindingsIsLogged) {
  databases.failOn("OpenRows", "", error_number::kUnspecified);
  displayIPs(true, 0);
  displaySSLIPs(true, 0);
  EXPECT_EQ(newLogLines(), (Texts{"frmMain_displayIPs Error -2147467259 Unspecified error",
                                  "frmMain_displaySSLIPs Error -2147467259 Unspecified error"}));
  expectVisible(bindingGroup(), true);
  expectVisible(sslGroup(), true);
}

TEST_F(MappingDisplayTest, AFailureWithinTheRowsLeavesTheListsHalfFilledAndTheSetOpenForTheNextToStumbleOn) {
  executeOnSettings("UPDATE tmpSettings SET NewIP = Null WHERE SiteID = 0");
  displayIPs(true, 0);
  EXPECT_EQ(entriesOf(frmMain.lstOldIPs(0)), (Texts{"site0:80:"}));
  EXPECT_EQ(frmMain.lstNewIPs(0).listCount(), 0);
  EXPECT_TRUE(frmMain.rsSettings->isOpen());
  displaySSLIPs(true, 0);
  EXPECT_EQ(newLogLines(),
            (Texts{"frmMain_displayIPs Error 94 Invalid use of Null",
                   "frmMain_displaySSLIPs Error 3705 Operation is not allowed when the object is open."}));
}

TEST_F(MappingDisplayTest, TheTabInUseDecidesWhichGroupASiteShows) {
  frmMain.tabNewValues.onClick = nullptr;
  for (const std::int32_t tab : {1, 2, 3, 4}) {
    frmMain.tabNewValues.select(tab);
    ShowList(1);
    expectVisible(directoryGroup(), tab == 1);
    expectVisible(bindingGroup(), tab == 2);
    expectVisible(sslGroup(), tab == 3);
    EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"site1", "site1\\b"})) << tab;
    EXPECT_EQ(entriesOf(frmMain.lstNewIPs(0)), (Texts{"new"})) << tab;
    EXPECT_EQ(entriesOf(frmMain.lstNewSSLIPs(0)), (Texts{"newssl"})) << tab;
  }
}

TEST_F(MappingDisplayTest, ShowingASiteLeavesTheFindAndReplaceGroupAlone) {
  displayNewValues(true);
  ShowList(0);
  expectVisible(valueGroup(), true);
}

TEST_F(MappingDisplayTest, AFailureOfShowingASiteIsLoggedUnderItsLabelAndLeavesTheRest) {
  databases.failOn("OpenRows", "Folder", error_number::kUnspecified);
  ShowList(0);
  EXPECT_EQ(newLogLines(), (Texts{"frmMain_ShowList Error -2147467259 Unspecified error"}));
  EXPECT_EQ(databases.textsOf("OpenRows").back(), statements::directoryRows(0))
      << "the bindings were not reached";
}

TEST_F(MappingDisplayTest, HidingTheListsHidesTheThreeGroupsAndReadsTheFirstLinesRows) {
  displayDirectories(true, 1);
  displayIPs(true, 1);
  displaySSLIPs(true, 1);
  HideLists();
  for (const auto& group : {directoryGroup(), bindingGroup(), sslGroup()}) expectVisible(group, false);
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"site0", "site0\\b"}));
}

TEST_F(MappingDisplayTest, AFailureOfHidingIsLogged) {
  databases.failOn("OpenRows", "Folder", error_number::kUnspecified);
  HideLists();
  EXPECT_EQ(newLogLines(), (Texts{"frmMain_HideLists Error -2147467259 Unspecified error"}));
}

TEST_F(MappingDisplayTest, TakingDownAListingOfOneSiteClearsAndHidesItsLists) {
  for (ListControl* list : perSiteLists()) list->addItem("stale");
  displayDirectories(true, 0);
  frmMain.iSiteCount = 1;
  frmMain.abDetailsRead = {true};
  CloseDownLists();
  for (const auto& group : {directoryGroup(), bindingGroup(), sslGroup()}) expectVisible(group, false);
  EXPECT_EQ(frmMain.lstFilesToCopy(0).listCount(), 0);
  EXPECT_EQ(frmMain.lstCheckCopy(0).listCount(), 0);
  EXPECT_EQ(entriesOf(frmMain.lstDirectories(0)), (Texts{"site0", "site0\\b"})) << "hiding reads the rows";
  EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
}

TEST_F(MappingDisplayTest, TakingDownAListingOfSeveralSitesLeavesTheListsAsTheyAre) {
  for (const std::int16_t count : {std::int16_t{2}, std::int16_t{5}}) {
    for (ListControl* list : perSiteLists()) {
      list->clear();
      list->addItem("kept");
    }
    frmMain.fraFolders.visible = true;
    frmMain.iSiteCount = count;
    frmMain.abDetailsRead.assign(static_cast<std::size_t>(count), true);
    CloseDownLists();
    for (const ListControl* list : perSiteLists()) EXPECT_EQ(entriesOf(*list), (Texts{"kept"})) << list->name;
    EXPECT_TRUE(frmMain.fraFolders.visible);
    EXPECT_EQ(frmMain.abDetailsRead, (std::vector<bool>{false}));
  }
}

TEST_F(MappingDisplayTest, AFailureOfTakingDownIsLogged) {
  databases.failOn("OpenRows", "Folder", error_number::kUnspecified);
  frmMain.iSiteCount = 1;
  CloseDownLists();
  EXPECT_EQ(newLogLines(), (Texts{"frmMain_CloseDownLists Error -2147467259 Unspecified error"}));
}

}  // namespace
}  // namespace trelvin::test
