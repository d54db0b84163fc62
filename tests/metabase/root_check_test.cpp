// The check and the repair of a source metabase, on metabase files with sound and faulty roots.
#include "metabase/root_check.h"

#include <gtest/gtest.h>

#include <optional>

#include "fakes/scratch_machine.h"
#include "metabase/site_listing.h"
#include "platform/platform.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

constexpr const char* kFaultsFound =
    "Your source metabase contains one or more sites that have been incorrectly configured (a list is "
    "displayed "
    "in the output window). Transferring these sites will most likely cause your target server to fail. Take "
    "a "
    "full backup of the metabase using the backup utility in the Internet Service Manager, then run the fix "
    "tool in Trelvin.";
constexpr const char* kNoFaults = "Check complete, no problems found";
constexpr const char* kHaveBackup =
    "Have you backed up the source metabase using the Internet Service Manager?";
constexpr const char* kFinished =
    "Trelvin has finished fixing your metabase for common mis-configurations. Please verify success by "
    "running "
    "the check tool again.";
constexpr const char* kListedAnew =
    "Your sites will now be re-enumerated, if you made any changes to their configuration you will have to "
    "do "
    "it again.";

class RootCheckTest : public SitesTest {
 protected:
  // A site with a root of that type.
  static std::string site(const std::string& number, const std::string& comment,
                          const std::string& rootType) {
    return webSite(number, {{"ServerComment", comment}}) + root(number, rootType);
  }
  static std::string root(const std::string& number, const std::string& type) {
    return element(type, "/LM/W3SVC/" + number + "/ROOT",
                   {{"AccessFlags", "AccessRead | AccessScript"}, {"HttpRedirect", "/new, PERMANENT"}});
  }
  static std::string soundSite(const std::string& number, const std::string& comment) {
    return webSite(number, {{"ServerComment", comment}}) + webDirectory(number + "/ROOT", "d:\\" + comment);
  }
  static void pressCheck() { frmMain.mnuCheckMetabase.onClick(); }

  // What the metabase file holds once the program has let go of it.
  [[nodiscard]] std::string closedFile() {
    platform().metabase.reset();
    metabase = nullptr;
    return metabaseOf("web1");
  }
  // The status panel at each of its yields.
  void watchStatus() {
    events->onYield = [this](int) { statusAtYield.push_back(frmMain.StatusBar1.panel); };
  }
  // Sets the error state at the next bind, which goes through all the same.
  void setErrorWithoutFailing(std::int32_t number) const {
    metabase->rule = [number](const MetabaseCall& call) -> std::optional<std::int32_t> {
      if (call.operation == "GetObject") Err.set(Failure(number));
      return std::nullopt;
    };
  }
  [[nodiscard]] int timesChanged() const {
    int times = 0;
    for (const MetabaseCall& call : metabase->calls) {
      if (call.operation == "Put" || call.operation == "SetInfo" || call.operation == "Delete" ||
          call.operation == "Create") {
        ++times;
      }
    }
    return times;
  }

  Texts statusAtYield;
};

TEST_F(RootCheckTest, SoundRootsGiveOneBoxAndNoOutput) {
  addWebServer(soundSite("1", "One") + soundSite("2", "Two"));
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_TRUE(output.empty());
  EXPECT_EQ(newLogLines(), (Texts{"Checking metabase on web1 for common mis-configurations.",
                                  "1 - IIsWebVirtualDir - One - passed", "Path = d:\\One",
                                  "2 - IIsWebVirtualDir - Two - passed", "Path = d:\\Two"}));
}

TEST_F(RootCheckTest, AFaultyRootIsLoggedAndListedAndToldAtTheEnd) {
  addWebServer(soundSite("1", "One") + site("2", "Two", "IIsWebDirectory") + soundSite("3", "Three"));
  pressCheck();
  EXPECT_EQ(output, (Texts{"2 - IIsWebDirectory - Two - failed"}));
  EXPECT_EQ(frmMain.lstOutput.listIndex(), 0);
  EXPECT_EQ(boxes(), (Texts{kFaultsFound}));
  EXPECT_EQ(newLogLines(), (Texts{"Checking metabase on web1 for common mis-configurations.",
                                  "1 - IIsWebVirtualDir - One - passed", "Path = d:\\One",
                                  "2 - IIsWebDirectory - Two - failed",
                                  "3 - IIsWebVirtualDir - Three - passed", "Path = d:\\Three"}));
}

TEST_F(RootCheckTest, EveryFaultyRootIsListedAndTheLastOneIsInView) {
  addWebServer(site("1", "One", "IIsWebDirectory") + site("2", "Two", "IIsConfigObject"));
  pressCheck();
  EXPECT_EQ(output, (Texts{"1 - IIsWebDirectory - One - failed", "2 -  - Two - failed"}));
  EXPECT_EQ(frmMain.lstOutput.listIndex(), 1);
  EXPECT_EQ(boxes(), (Texts{kFaultsFound})) << "one box, however many there are";
}

TEST_F(RootCheckTest, TheTypeMayBeWrittenInAnyCase) {
  addWebServer(site("1", "One", "IISWEBVIRTUALDIR"));
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
  EXPECT_TRUE(output.empty());
}

TEST_F(RootCheckTest, TheClassOfASiteMayBeWrittenInAnyCase) {
  addWebServer(element("IISWEBSERVER", "/LM/W3SVC/1", {{"ServerComment", "One"}}) +
               root("1", "IIsWebDirectory"));
  pressCheck();
  EXPECT_EQ(output, (Texts{"1 - IIsWebDirectory - One - failed"}));
}

TEST_F(RootCheckTest, AServerWithFtpSitesOnlyHasNoLineAndNoProblem) {
  addServer("web1", metabaseFile(webService() + ftpService() + ftpSite("1", {{"ServerComment", "Files"}})));
  frmMain.optExportFTP.setValue(true);
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
  EXPECT_EQ(newLogLines(), (Texts{"Checking metabase on web1 for common mis-configurations."}));
  EXPECT_EQ(boundPaths(), (Texts{"IIS://web1/w3svc"}));
}

TEST_F(RootCheckTest, OtherChildrenOfTheServiceAreNotLookedAt) {
  addWebServer(element("IIsWebInfo", "/LM/W3SVC/Info") + element("IIsFilters", "/LM/W3SVC/Filters") +
               soundSite("1", "One"));
  pressCheck();
  EXPECT_EQ(boundPaths(), (Texts{"IIS://web1/w3svc", "IIS://web1/w3svc/1/Root"}));
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
}

TEST_F(RootCheckTest, WebSitesAreCheckedWhateverKindIsChosen) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  frmMain.optExportFTP.setValue(true);
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kFaultsFound}));
}

TEST_F(RootCheckTest, TheStatusTellsOfTheCheckAndIsEmptyAfterIt) {
  addWebServer(soundSite("1", "One"));
  watchStatus();
  dialogs->onMessage = [this](const Message&) {
    EXPECT_EQ(events->beeps, 1) << "the beep comes before the box";
    EXPECT_EQ(frmMain.StatusBar1.panel, "Checking...");
  };
  pressCheck();
  EXPECT_EQ(statusAtYield, (Texts{"Checking...", "Checking..."}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "");
  EXPECT_EQ(events->beeps, 1);
}

TEST_F(RootCheckTest, TheCheckReadsOnly) {
  addWebServer(site("1", "One", "IIsWebDirectory") + soundSite("2", "Two"));
  const std::string before = metabaseOf("web1");
  pressCheck();
  EXPECT_EQ(timesChanged(), 0);
  EXPECT_EQ(closedFile(), before);
}

TEST_F(RootCheckTest, TheBoxComesInASilentRunToo) {
  run.bRunSilent = true;
  addWebServer(soundSite("1", "One"));
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
  EXPECT_TRUE(output.empty());
}

TEST_F(RootCheckTest, AServerThatCannotBeReachedIsALineOfTheLogAndNothingElse) {
  frmMain.txtImportServer.text = "nowhere";
  const std::string status = frmMain.StatusBar1.panel;
  pressCheck();
  EXPECT_TRUE(dialogs->shown.empty());
  ASSERT_EQ(newLogLines().size(), 1U);
  EXPECT_EQ(newLogLines()[0].substr(0, 41), "mnuCheckMetabase_Click Error -2147023174 ");
  EXPECT_EQ(frmMain.StatusBar1.panel, status);
  EXPECT_EQ(events->beeps, 0);
}

TEST_F(RootCheckTest, AnErrorThatABindSetsWithoutFailingIsShownAndEndsTheCheck) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  setErrorWithoutFailing(error_number::kPermissionDenied);
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{"Error connecting to source server 70 Permission denied"}));
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kOk);
  EXPECT_TRUE(newLogLines().empty());
  EXPECT_TRUE(output.empty());
}

TEST_F(RootCheckTest, AServerThatAnswersAfterOneThatDidNotIsChecked) {
  addWebServer(soundSite("1", "One"));
  frmMain.txtImportServer.text = "nowhere";
  pressCheck();
  frmMain.txtImportServer.text = "web1";
  pressCheck();
  EXPECT_EQ(boxes(), (Texts{kNoFaults}));
}

TEST_F(RootCheckTest, AFailureInTheMiddleEndsTheCheckAtThatSite) {
  addWebServer(site("1", "One", "IIsWebDirectory") + webSite("2", {{"ServerComment", "Two"}}) +
               soundSite("3", "Three"));
  pressCheck();
  EXPECT_EQ(output, (Texts{"1 - IIsWebDirectory - One - failed"}));
  EXPECT_TRUE(dialogs->shown.empty());
  EXPECT_EQ(frmMain.StatusBar1.panel, "Checking...");
  EXPECT_EQ(events->beeps, 0);
  EXPECT_TRUE(logLines().back().starts_with("mnuCheckMetabase_Click Error -2147024893 "))
      << logLines().back();
  EXPECT_FALSE(hasLogged("3 - IIsWebVirtualDir - Three - passed"));
}

class RootFixTest : public RootCheckTest {
 protected:
  // Presses the command with that answer to the question about the backup.
  void pressFix(Answer hasBackup = Answer::kYes) {
    dialogs->answers.push_back(hasBackup);
    frmMain.mnuFixMetabase.onClick();
  }
  // The type of a root as a fresh reader finds it on disk.
  [[nodiscard]] std::string typeOnDisk(const std::string& number) const {
    const auto reader = scratchReader(folder / "network");
    return reader->getObject("IIS://web1/W3SVC/" + number + "/ROOT")->get("KeyType").toText();
  }
  // The file with another element name for the root of a site.
  static std::string withType(std::string file, const std::string& number, const std::string& from,
                              const std::string& to) {
    const std::string start = "<" + from + "\tLocation =\"/LM/W3SVC/" + number + "/ROOT\"";
    const std::size_t at = file.find(start);
    EXPECT_NE(at, std::string::npos);
    file.replace(at + 1, from.size(), to);
    const std::size_t end = file.find("</" + from + ">", at);
    EXPECT_NE(end, std::string::npos);
    return file.replace(end + 2, from.size(), to);
  }
};

TEST_F(RootFixTest, AnswerNoAsksForABackupAndChangesNothing) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  const std::string before = metabaseOf("web1");
  const std::string status = frmMain.StatusBar1.panel;
  pressFix(Answer::kNo);
  EXPECT_EQ(boxes(), (Texts{kHaveBackup, "Please do so first."}));
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kYesNo);
  EXPECT_EQ(dialogs->shown[1].buttons, Buttons::kOk);
  EXPECT_TRUE(newLogLines().empty());
  EXPECT_TRUE(output.empty());
  EXPECT_EQ(frmMain.StatusBar1.panel, status);
  EXPECT_EQ(frmMain.lstSites.listCount(), 0);
  EXPECT_EQ(timesChanged(), 0);
  EXPECT_EQ(closedFile(), before);
}

TEST_F(RootFixTest, AFaultyRootIsGivenItsTypeWithThreeLinesForIt) {
  addWebServer(soundSite("1", "One") + site("2", "Two", "IIsWebDirectory"));
  pressFix();
  EXPECT_EQ(typeOnDisk("2"), "IIsWebVirtualDir");
  EXPECT_EQ(output, (Texts{"2 - IIsWebDirectory - Two - failed", "2 - IIsWebDirectory - Two - setting",
                           "Verifying - Type now = IIsWebVirtualDir"}));
  EXPECT_EQ(frmMain.lstOutput.listIndex(), 2);
  EXPECT_EQ(
      newLogLines(),
      (Texts{"Fixing metabase on web1.", "1 - IIsWebVirtualDir - One - passed", "Path = d:\\One",
             "2 - IIsWebDirectory - Two - failed", "2 - IIsWebDirectory - Two - setting",
             "Verifying - Type now = IIsWebVirtualDir", "Getting list of web sites from host...", "Done"}));
}

TEST_F(RootFixTest, TheClosingBoxesComeBeforeTheSitesAreListedAnew) {
  addWebServer(site("1", "One", "IIsWebDirectory") + soundSite("2", "Two"));
  pressPopulate();
  frmMain.lstSites.addItem("listed before");
  dialogs->onMessage = [this](const Message& message) {
    if (message.text != kListedAnew) return;
    EXPECT_EQ(frmMain.lstSites.listCount(), 3);
    EXPECT_EQ(events->beeps, 1);
  };
  pressFix();
  EXPECT_EQ(boxes(), (Texts{kHaveBackup, kFinished, kListedAnew}));
  EXPECT_EQ(dialogs->shown[1].buttons, Buttons::kOk);
  EXPECT_EQ(dialogs->shown[2].buttons, Buttons::kOk);
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One", "Two"}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "");
}

TEST_F(RootFixTest, WhatWasEditedInTheMappingIsLost) {
  addWebServer(soundSite("1", "One"));
  pressPopulate();
  select(0);
  ASSERT_FALSE(allSettings().empty());
  pressFix();
  EXPECT_TRUE(allSettings().empty());
}

TEST_F(RootFixTest, WithoutAFaultTheClosingBoxesComeAllTheSame) {
  addWebServer(soundSite("1", "One"));
  const std::string before = metabaseOf("web1");
  pressFix();
  EXPECT_EQ(boxes(), (Texts{kHaveBackup, kFinished, kListedAnew}));
  EXPECT_TRUE(output.empty());
  EXPECT_EQ(entriesOf(frmMain.lstSites), (Texts{"One"}));
  EXPECT_EQ(timesChanged(), 0);
  EXPECT_EQ(closedFile(), before);
}

TEST_F(RootFixTest, OnlyTheTypeOfTheRootChangesInTheFile) {
  const std::string custom =
      "\t<Custom\r\n\t\tName=\"UnknownName_9\"\r\n\t\tID=\"9\"\r\n\t\tValue=\"1\"\r\n\t\tType=\"DWORD\"\r\n"
      "\t\tUserType=\"IIS_MD_UT_SERVER\"\r\n\t\tAttributes=\"NO_ATTRIBUTES\"\r\n\t/>\r\n";
  addServer("web1", metabaseFile(ftpService() + ftpSite("1", {{"ServerComment", "Files"}}) +
                                 element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "d:\\files"}}) +
                                 webService() + soundSite("1", "One") + "<!-- kept -->\r\n" +
                                 webSite("2", {{"ServerComment", "Zwei & \"mehr\""}, {"Unheard", "of"}}) +
                                 element("IIsWebDirectory", "/LM/W3SVC/2/ROOT",
                                         {{"AccessFlags", "AccessRead"}, {"HttpRedirect", "/new"}}, custom) +
                                 element("IIsWebDirectory", "/LM/W3SVC/2/ROOT/images")));
  const std::string before = metabaseOf("web1");
  pressFix();
  EXPECT_EQ(closedFile(), withType(before, "2", "IIsWebDirectory", "IIsWebVirtualDir"));
}

TEST_F(RootFixTest, EveryFaultyRootIsMendedByAChangeOfItsOwn) {
  addWebServer(site("1", "One", "IIsWebDirectory") + soundSite("2", "Two") +
               site("3", "Three", "IIsWebFile"));
  const std::string before = metabaseOf("web1");
  pressFix();
  EXPECT_EQ(output, (Texts{"1 - IIsWebDirectory - One - failed", "1 - IIsWebDirectory - One - setting",
                           "Verifying - Type now = IIsWebVirtualDir", "3 - IIsWebFile - Three - failed",
                           "3 - IIsWebFile - Three - setting", "Verifying - Type now = IIsWebVirtualDir"}));
  EXPECT_EQ(timesChanged(), 4) << "a Put and a SetInfo for each";
  EXPECT_EQ(closedFile(), withType(withType(before, "1", "IIsWebDirectory", "IIsWebVirtualDir"), "3",
                                   "IIsWebFile", "IIsWebVirtualDir"));
}

TEST_F(RootFixTest, ARootWithoutATypeGetsItBackWithItsPath) {
  const std::string path =
      "\t<Custom\r\n\t\tName=\"Path\"\r\n\t\tID=\"3001\"\r\n\t\tValue=\"d:\\one\"\r\n\t/>\r\n";
  addWebServer(webSite("1", {{"ServerComment", "One"}}) +
               element("IIsConfigObject", "/LM/W3SVC/1/ROOT", {}, path));
  pressFix();
  EXPECT_EQ(output, (Texts{"1 -  - One - failed", "1 -  - One - setting",
                           "Verifying - Type now = IIsWebVirtualDir"}));
  EXPECT_EQ(typeOnDisk("1"), "IIsWebVirtualDir");
  pressCheck();
  EXPECT_TRUE(hasLogged("1 - IIsWebVirtualDir - One - passed"));
  EXPECT_TRUE(hasLogged("Path = d:\\one"));
  EXPECT_EQ(boxes().back(), kNoFaults);
}

TEST_F(RootFixTest, TheTypeIsVerifiedOnTheNodeBoundAnew) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  std::size_t boundAtVerifying = 0;
  frmMain.lstOutput.onAddItem = [&](const std::string& line) {
    if (line.starts_with("Verifying")) boundAtVerifying = boundPaths().size();
  };
  pressFix();
  ASSERT_EQ(boundAtVerifying, 3U);
  const Texts paths = boundPaths();
  EXPECT_EQ(Texts(paths.begin(), paths.begin() + 3),
            (Texts{"IIS://web1/w3svc", "IIS://web1/w3svc/1/Root", "IIS://web1/w3svc/1/Root"}));
}

TEST_F(RootFixTest, TheStatusNamesTheSiteInHand) {
  addWebServer(site("1", "One", "IIsWebDirectory") + soundSite("2", "Two"));
  watchStatus();
  Texts statusAtVerifying;
  frmMain.lstOutput.onAddItem = [&](const std::string& line) {
    if (line.starts_with("Verifying")) statusAtVerifying.push_back(frmMain.StatusBar1.panel);
  };
  dialogs->onMessage = [&](const Message& message) {
    if (message.text != kFinished) return;
    EXPECT_EQ(frmMain.StatusBar1.panel, "Fixing...");
  };
  pressFix();
  ASSERT_GE(statusAtYield.size(), 3U);
  statusAtYield.resize(3);
  EXPECT_EQ(statusAtYield, (Texts{"Fixing...", "Fixing One", "Fixing..."}));
  EXPECT_EQ(statusAtVerifying, (Texts{"Fixing One"}));
  EXPECT_EQ(frmMain.StatusBar1.panel, "");
}

TEST_F(RootFixTest, TheBoxesComeInASilentRunToo) {
  run.bRunSilent = true;
  addWebServer(soundSite("1", "One"));
  pressFix();
  EXPECT_EQ(boxes(), (Texts{kHaveBackup, kFinished, kListedAnew}));
}

TEST_F(RootFixTest, AServerThatCannotBeReachedIsALineOfTheLogAndAsksNothing) {
  frmMain.txtImportServer.text = "nowhere";
  pressFix();
  EXPECT_TRUE(dialogs->shown.empty());
  ASSERT_EQ(newLogLines().size(), 1U);
  EXPECT_TRUE(newLogLines()[0].starts_with("mnuFixMetabase_Click Error -2147023174 ")) << newLogLines()[0];
}

TEST_F(RootFixTest, AnErrorThatABindSetsWithoutFailingIsShownAndEndsTheRepair) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  setErrorWithoutFailing(error_number::kPermissionDenied);
  pressFix();
  EXPECT_EQ(boxes(), (Texts{"Error connecting to source server 70 Permission denied"}));
  EXPECT_TRUE(newLogLines().empty());
  EXPECT_EQ(timesChanged(), 0);
}

TEST_F(RootFixTest, AFailureStopsAtThatSiteAndWhatIsMendedStaysMended) {
  addWebServer(site("1", "One", "IIsWebDirectory") + site("2", "Two", "IIsWebDirectory") +
               site("3", "Three", "IIsWebDirectory"));
  metabase->failOn("SetInfo", "2/Root", "", error_number::kAccessDenied);
  pressFix();
  EXPECT_EQ(typeOnDisk("1"), "IIsWebVirtualDir");
  EXPECT_EQ(typeOnDisk("2"), "IIsWebDirectory");
  EXPECT_EQ(typeOnDisk("3"), "IIsWebDirectory");
  EXPECT_EQ(boxes(), (Texts{kHaveBackup}));
  EXPECT_EQ(frmMain.lstSites.listCount(), 0) << "no list is made anew";
  EXPECT_EQ(frmMain.StatusBar1.panel, "Fixing Two");
  EXPECT_EQ(logLines().back(), "mnuFixMetabase_Click Error -2147024891 Access is denied. ");
}

TEST_F(RootFixTest, ASourceOnAReadOnlyDiskEndsInTheHandler) {
  addWebServer(site("1", "One", "IIsWebDirectory"));
  const auto file = folder / "network/web1/C$/WINDOWS/system32/inetsrv/MetaBase.xml";
  std::filesystem::permissions(file, std::filesystem::perms(0444));
  const std::string before = metabaseOf("web1");
  pressFix();
  EXPECT_TRUE(logLines().back().starts_with("mnuFixMetabase_Click Error -2147024891 ")) << logLines().back();
  EXPECT_EQ(closedFile(), before);
}

}  // namespace
}  // namespace trelvin::test
