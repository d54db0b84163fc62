// The menu's commands that save a job and choose one.
#include "jobs/job_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>

#include "core/err.h"
#include "core/run_state.h"
#include "job_test.h"
#include "jobs/run_backup.h"
#include "platform/platform.h"
#include "stores/connections.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr const char* kSaveLabel = "frmMain mnuSaveBackup_Click Error ";
constexpr const char* kLoadLabel = "frmMain mnuLoadBackup_Click Error ";

// Writing one key fails, all other calls go through.
class ProfileThatFailsForAKey : public ProfileFiles {
 public:
  ProfileThatFailsForAKey(std::unique_ptr<ProfileFiles> real, std::string key)
      : real_(std::move(real)), key_(std::move(key)) {}
  std::uint32_t getString(std::string_view section, std::string_view key, std::string_view defaultValue,
                          std::string& buffer, std::uint32_t size, std::string_view file) override {
    return real_->getString(section, key, defaultValue, buffer, size, file);
  }
  bool writeString(std::string_view section, std::string_view key, std::optional<std::string_view> value,
                   std::string_view file) override {
    if (key == key_) throw Failure(error_number::kDeviceIo);
    return real_->writeString(section, key, value, file);
  }

 private:
  std::unique_ptr<ProfileFiles> real_;
  std::string key_;
};

class FailingChooser : public ScriptedDialogs {
 public:
  std::optional<std::string> chooseFileToSave(const FileChoice& /*choice*/) override {
    throw Failure(error_number::kOutOfMemory);
  }
  std::optional<std::string> chooseFileToOpen(const FileChoice& /*choice*/) override {
    throw Failure(error_number::kOutOfMemory);
  }
};

class JobFile : public JobTest {
 protected:
  JobFile() { addSites(); }

  // The window on WEB1 with its three sites, on their way to NEW6.
  void openOnSites() {
    openWindow();
    listSites();
    exportTo("NEW6");
    run.sBackupJob = savedPath();
  }
  // The same with the stored sites one and two in place of the server's.
  void openOnStoredSites() {
    for (const char* name : {"one", "two"}) {
      executeOn("TrelvinData.mdb",
                std::string("INSERT INTO Sites (SiteName, Type) VALUES ('") + name + "', 'Web')");
    }
    openWindow();
    frmMain.TabImportType.select(2);
    frmMain.cmdPopulate.onClick();
  }
  static void exportTo(const std::string& server) {
    frmMain.TabExportType.select(1);
    frmMain.optExportFile.setValue(false);
    frmMain.optExportServer.setValue(true);
    frmMain.txtExportServer.text = server;
  }
  static void exportToStore() {
    frmMain.TabExportType.select(2);
    frmMain.optExportServer.setValue(false);
    frmMain.optExportFile.setValue(true);
  }
  static void addPairOfWindow(const std::string& find, const std::string& replace) {
    frmMain.lstOldValues.addItem(find);
    frmMain.lstNewValues.addItem(replace);
  }

  // Chooses the menu entry, and the file in its chooser.
  void saveAs(const std::string& path) {
    dialogs->files.assign(1, path);
    frmMain.mnuSaveBackup.onClick();
  }
  void save() { saveAs(savedPath()); }
  void load(const std::string& path) {
    dialogs->files.assign(1, path);
    frmMain.mnuLoadBackup.onClick();
  }

  [[nodiscard]] std::string savedPath() const { return programForm(folder / "s.job"); }
  // Lines that say something; nobody may depend on blank ones.
  [[nodiscard]] std::vector<std::string> savedLines() const {
    std::vector<std::string> lines;
    std::istringstream text(folder.read("s.job"));
    for (std::string line; std::getline(text, line);) {
      if (line.ends_with('\r')) line.pop_back();
      if (!line.empty()) lines.push_back(line);
    }
    return lines;
  }
  // The window as it comes up after a start, with the saved job read into it.
  void readSavedIntoFreshWindow() {
    renew(frmMain);
    run = RunState{};
    openWindow();
    run.bRunSilent = true;
    run.sBackupJob = savedPath();
    SelectSitesFromBackup();
  }
};

// What is written.

TEST_F(JobFile, HoldsItsKeysInTheOrderOfWriting) {
  openOnSites();
  exportToStore();
  select({0, 2});
  frmMain.lstIMIISVer.setListIndex(1);
  frmMain.lstEXIISVer.setListIndex(2);
  frmMain.optOverwritePreserve.setValue(true);
  addPairOfWindow("d:\\inetpub", "e:\\sites");
  save();
  EXPECT_THAT(savedLines(),
              ElementsAre("[Job Details]", "Sites=2", "ImportServer=WEB1", "ExportServer=Database",
                          "ImportVersion=IIS5", "ExportVersion=IIS6", "Type=W3SVC", "AutoStartSites=False",
                          "SiteCreationMode=Overwrite Preserve", "FindReplaceCount=1", "BackupAllSites=False",
                          "[0FindReplace]", "Find=d:\\inetpub", "Replace=e:\\sites", "[1Site]",
                          "SiteName=IIS://WEB1/W3SVC/1", "[2Site]", "SiteName=IIS://WEB1/W3SVC/3"));
}

TEST_F(JobFile, CountsPairsFromNoughtAndSitesFromOneInTheOrderOfTheLists) {
  openOnSites();
  select({2, 1});
  addPairOfWindow("a", "b");
  addPairOfWindow("c", "d");
  save();
  std::vector<std::string> lines = savedLines();
  ASSERT_THAT(lines, Contains("[0FindReplace]"));
  lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "[0FindReplace]"));
  EXPECT_THAT(
      lines, ElementsAre("[0FindReplace]", "Find=a", "Replace=b", "[1FindReplace]", "Find=c", "Replace=d",
                         "[1Site]", "SiteName=IIS://WEB1/W3SVC/2", "[2Site]", "SiteName=IIS://WEB1/W3SVC/3"));
}

TEST_F(JobFile, NamesASiteByItsPlaceAndNotByItsName) {
  openOnSites();
  select({1});
  frmMain.lstSites.setList(1, "Renamed");
  save();
  EXPECT_THAT(savedLines(), Contains("SiteName=IIS://WEB1/W3SVC/2"));
  EXPECT_THAT(savedLines(), Each(Not(HasSubstr("Renamed"))));
}

TEST_F(JobFile, SaysDatabaseForAStoreAsSourceWhateverTheServerBoxHolds) {
  openOnStoredSites();
  frmMain.txtImportServer.text = "WEB1";
  select({1});
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"ImportServer=Database", "SiteName=2"}));
}

TEST_F(JobFile, SaysTheServersThatStandInTheBoxes) {
  openOnSites();
  select({0});
  frmMain.txtImportServer.text = "other";
  frmMain.txtExportServer.text = "198.51.100.7";
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"ImportServer=other", "ExportServer=198.51.100.7"}));
}

TEST_F(JobFile, HasNoKeyForAnEmptyServer) {
  openOnSites();
  select({0});
  frmMain.txtImportServer.text = "";
  frmMain.txtExportServer.text = "";
  save();
  EXPECT_THAT(savedLines(), Contains("Sites=1"));
  EXPECT_THAT(savedLines(), Each(Not(HasSubstr("Server="))));
}

TEST_F(JobFile, HasNoKeyForAVersionThatIsNotChosen) {
  openOnSites();
  select({0});
  frmMain.lstIMIISVer.setListIndex(0);
  frmMain.lstEXIISVer.setListIndex(-1);
  save();
  EXPECT_THAT(savedLines(), Contains("ImportVersion=IIS4"));
  EXPECT_THAT(savedLines(), Each(Not(StartsWith("ExportVersion"))));
}

TEST_F(JobFile, SaysTheServiceOfTheKindOfSites) {
  openOnSites();
  select({0});
  frmMain.sService = "MSFTPSVC";
  save();
  EXPECT_THAT(savedLines(), Contains("Type=MSFTPSVC"));
}

TEST_F(JobFile, SaysWhetherSitesAreStarted) {
  openOnSites();
  select({0});
  frmMain.chkStartWebs.setValue(true);
  save();
  EXPECT_THAT(savedLines(), Contains("AutoStartSites=True"));
  frmMain.chkStartWebs.setValue(false);
  save();
  EXPECT_THAT(savedLines(), Contains("AutoStartSites=False"));
}

TEST_F(JobFile, SaysTheCreationMode) {
  openOnSites();
  select({0});
  const std::vector<std::pair<OptionButton*, std::string>> modes{
      {&frmMain.optOverwriteWebs, "Overwrite"},
      {&frmMain.optOverwritePreserve, "Overwrite Preserve"},
      {&frmMain.optCreateWebs, "Create New"}};
  for (const auto& [option, mode] : modes) {
    option->setValue(true);
    save();
    EXPECT_THAT(savedLines(), Contains("SiteCreationMode=" + mode));
  }
}

TEST_F(JobFile, HasNoKeyForAnEmptyReplacement) {
  openOnSites();
  select({0});
  addPairOfWindow("gone", "");
  addPairOfWindow("", "strange");
  save();
  std::vector<std::string> lines = savedLines();
  EXPECT_THAT(lines, IsSupersetOf({"FindReplaceCount=2", "Find=gone", "Replace=strange"}));
  EXPECT_THAT(lines, Not(Contains("Replace=")));
  EXPECT_THAT(lines, Not(Contains("Find=")));
}

TEST_F(JobFile, CountsThePairsByTheirNewValues) {
  openOnSites();
  select({0});
  frmMain.lstNewValues.addItem("new one");
  frmMain.lstNewValues.addItem("new two");
  frmMain.lstOldValues.addItem("old one");
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"FindReplaceCount=2", "Find=old one", "Replace=new two"}));
  frmMain.lstOldValues.addItem("old two");
  frmMain.lstOldValues.addItem("old three");
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"FindReplaceCount=2", "Find=old two"}));
  EXPECT_THAT(savedLines(), Not(Contains("Find=old three")));
}

TEST_F(JobFile, HoldsLongValuesWhole) {
  openOnSites();
  select({0});
  addPairOfWindow(std::string(60, 'f'), std::string(200, 'r'));
  const std::string longPlace = "IIS://" + std::string(60, 'S') + "/W3SVC/1";
  frmMain.lstSiteIndexes.setList(0, longPlace);
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"Find=" + std::string(60, 'f'), "Replace=" + std::string(200, 'r'),
                                          "SiteName=" + longPlace}));
}

TEST_F(JobFile, TakesThePlaceOfAFormerFile) {
  folder.write("s.job", "; by hand\r\n[Other]\r\nKey=1\r\n[9Site]\r\nSiteName=former\r\n");
  openOnSites();
  select({0});
  save();
  const std::vector<std::string> lines = savedLines();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "[Job Details]");
  EXPECT_THAT(lines, Each(Not(HasSubstr("former"))));
  EXPECT_THAT(lines, Each(Not(HasSubstr("Other"))));
}

TEST_F(JobFile, LeavesTheWindowAsItIs) {
  openOnSites();
  select({0, 1});
  addPairOfWindow("a", "b");
  save();
  EXPECT_THAT(selectedSites(), ElementsAre("Shop", "Wiki"));
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a"));
  EXPECT_EQ(frmMain.txtExportServer.text, "NEW6");
}

// What is asked.

void expectJobRecord(const FileChoice& choice, const std::string& path) {
  EXPECT_EQ(choice.title, "Save Backup Job");
  ASSERT_THAT(choice.filters, SizeIs(2));
  EXPECT_EQ(choice.filters[0].caption, "All Files");
  EXPECT_EQ(choice.filters[0].pattern, "*.*");
  EXPECT_EQ(choice.filters[1].caption, "Backup Jobs");
  EXPECT_EQ(choice.filters[1].pattern, "*.job");
  EXPECT_EQ(choice.filterIndex, 2);
  EXPECT_EQ(choice.path, path);
  EXPECT_EQ(choice.defaultExtension, "job");
  EXPECT_EQ(choice.flags, 0x280006U);
}

TEST_F(JobFile, AsksWhereToSaveBeginningAtTheJobInForce) {
  openOnSites();
  run.sBackupJob = "C:\\Trelvin\\Backup.job";
  frmMain.mnuSaveBackup.onClick();
  ASSERT_THAT(dialogs->savesOffered, SizeIs(1));
  expectJobRecord(dialogs->savesOffered[0], "C:\\Trelvin\\Backup.job");
  EXPECT_THAT(dialogs->opensOffered, IsEmpty());
}

TEST_F(JobFile, ProposesTheJobBesideTheProgramAtFirst) {
  start("");
  frmSplash.cmdContinue.onClick();
  frmMain.mnuSaveBackup.onClick();
  ASSERT_THAT(dialogs->savesOffered, SizeIs(1));
  EXPECT_EQ(dialogs->savesOffered[0].path, programPath() + "\\Backup.job");
}

TEST_F(JobFile, StaysUnwrittenWhenNoFileIsChosen) {
  openOnSites();
  select({0});
  folder.write("s.job", "kept");
  frmMain.mnuSaveBackup.onClick();
  EXPECT_EQ(run.sBackupJob, savedPath());
  EXPECT_EQ(folder.read("s.job"), "kept");
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(JobFile, StaysUnwrittenWithoutASelectionThoughItsPathIsTaken) {
  openOnSites();
  run.sBackupJob = "C:\\before.job";
  save();
  EXPECT_THAT(boxes(), ElementsAre("Please select site(s) to back up"));
  EXPECT_THAT(dialogs->savesOffered, SizeIs(1)) << "the file is asked for first";
  EXPECT_EQ(run.sBackupJob, savedPath());
  EXPECT_FALSE(folder.has("s.job"));
}

TEST_F(JobFile, OfThatNameSurvivesASaveWithoutASelection) {
  openOnSites();
  folder.write("s.job", "kept");
  save();
  EXPECT_EQ(folder.read("s.job"), "kept");
}

TEST_F(JobFile, IsAskedAboutInBoxesEvenInASilentWindow) {
  openOnSites();
  frmMain.chkRunSilent.setValue(true);
  save();
  EXPECT_THAT(boxes(), ElementsAre("Please select site(s) to back up"));
  select({0, 1, 2});
  save();
  EXPECT_THAT(boxes(), SizeIs(2));
  EXPECT_THAT(shownOutput(), Not(Contains(HasSubstr("back up"))));
}

TEST_F(JobFile, AsksAboutFutureSitesWhenAllAreSelected) {
  openOnSites();
  select({0, 1, 2});
  dialogs->answers.assign(1, Answer::kYes);
  save();
  ASSERT_THAT(dialogs->shown, SizeIs(1));
  EXPECT_EQ(dialogs->shown[0].title, "Add future sites to the backup too?");
  EXPECT_EQ(dialogs->shown[0].text,
            "You have selected all sites. Would you like any sites you add to this server to be "
            "automatically backed up?");
  EXPECT_EQ(dialogs->shown[0].buttons, Buttons::kYesNo);
  EXPECT_THAT(savedLines(), Contains("BackupAllSites=True"));
}

TEST_F(JobFile, LeavesFutureSitesOutOnNo) {
  openOnSites();
  select({0, 1, 2});
  dialogs->answers.assign(1, Answer::kNo);
  save();
  EXPECT_THAT(savedLines(), Contains("BackupAllSites=False"));
}

TEST_F(JobFile, IsWholeButForTheAnswerWhenItIsAskedFor) {
  openOnSites();
  select({0, 1, 2});
  std::vector<std::string> before;
  dialogs->onMessage = [&](const Message&) { before = savedLines(); };
  save();
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(before.back(), "SiteName=IIS://WEB1/W3SVC/3");
  EXPECT_THAT(before, Each(Not(StartsWith("BackupAllSites"))));
}

TEST_F(JobFile, AsksNothingAboutFutureSitesWhenOneIsLeftOut) {
  openOnSites();
  for (const auto& lines : {std::initializer_list<int>{0, 1}, std::initializer_list<int>{2}}) {
    for (int i = 0; i < 3; ++i) frmMain.lstSites.setSelected(i, false);
    select(lines);
    save();
    EXPECT_THAT(boxes(), IsEmpty());
    EXPECT_THAT(savedLines(), Contains("BackupAllSites=False"));
  }
}

TEST_F(JobFile, AsksAboutFutureSitesOfAStoreToo) {
  openOnStoredSites();
  select({0, 1});
  dialogs->shown.clear();
  dialogs->answers.assign(1, Answer::kYes);
  save();
  EXPECT_THAT(boxes(), SizeIs(1));
  EXPECT_THAT(savedLines(), Contains("BackupAllSites=True"));
}

TEST_F(JobFile, TakesAPathAsFarAsItsFirstNul) {
  openOnSites();
  saveAs(savedPath() + std::string(1, '\0') + "   behind" + std::string(2, '\0'));
  EXPECT_EQ(run.sBackupJob, savedPath());
  load("C:\\x.job" + std::string(1, '\0') + " ");
  EXPECT_EQ(run.sBackupJob, "C:\\x.job");
}

// Loading.

TEST_F(JobFile, IsChosenAndNotRead) {
  openOnSites();
  select({1});
  addPairOfWindow("a", "b");
  folder.write("other.job", "[Job Details]\r\nSites=1\r\nImportServer=OTHER\r\nFindReplaceCount=0\r\n");
  const std::string other = programForm(folder / "other.job");
  const std::vector<std::string> linesBefore = logLines();
  load(other);
  EXPECT_EQ(run.sBackupJob, other);
  EXPECT_EQ(frmMain.txtImportServer.text, "WEB1");
  EXPECT_THAT(entriesOf(frmMain.lstSites), ElementsAre("Shop", "Wiki", "Mail"));
  EXPECT_THAT(selectedSites(), ElementsAre("Wiki"));
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a"));
  EXPECT_EQ(logLines(), linesBefore);
}

TEST_F(JobFile, ThatIsChosenNeedNotExist) {
  openOnSites();
  load("Z:\\nowhere\\at all.job");
  EXPECT_EQ(run.sBackupJob, "Z:\\nowhere\\at all.job");
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(JobFile, ThatIsChosenIsTheOneThatTheNextSaveProposes) {
  openOnSites();
  load("C:\\jobs\\weekly.job");
  frmMain.mnuSaveBackup.onClick();
  ASSERT_THAT(dialogs->savesOffered, SizeIs(1));
  EXPECT_EQ(dialogs->savesOffered[0].path, "C:\\jobs\\weekly.job");
}

TEST_F(JobFile, IsAskedForWithTheSameRecordAsForSaving) {
  openOnSites();
  run.sBackupJob = "C:\\before.job";
  frmMain.mnuLoadBackup.onClick();
  ASSERT_THAT(dialogs->opensOffered, SizeIs(1));
  expectJobRecord(dialogs->opensOffered[0], "C:\\before.job");
  EXPECT_THAT(dialogs->savesOffered, IsEmpty());
  EXPECT_EQ(run.sBackupJob, "C:\\before.job") << "Cancel changes nothing";
}

// Failures.

TEST_F(JobFile, ThatIsReadOnlyIsKeptAndNothingWritten) {
  folder.write("s.job", "kept");
  openOnSites();
  select({0});
  platform().files->setAttributes(savedPath(), 1);
  save();
  EXPECT_EQ(folder.read("s.job"), "kept");
  EXPECT_THAT(logLines().back(), StartsWith(std::string(kSaveLabel) + "70 Permission denied"));
  EXPECT_THAT(boxes(), IsEmpty());
  EXPECT_EQ(run.sBackupJob, savedPath());
}

TEST_F(JobFile, StaysAsFarAsItGotWhenTheQuestionFails) {
  openOnSites();
  select({0, 1, 2});
  dialogs->onMessage = [](const Message&) { throw Failure(error_number::kOutOfMemory); };
  save();
  EXPECT_EQ(logLines().back(), std::string(kSaveLabel) + "7 Out of memory");
  EXPECT_EQ(savedLines().back(), "SiteName=IIS://WEB1/W3SVC/3");
}

TEST_F(JobFile, GoesOnBehindAKeyThatCannotBeWritten) {
  openOnSites();
  select({0});
  platform().profile =
      std::make_unique<ProfileThatFailsForAKey>(std::move(platform().profile), "ExportServer");
  save();
  EXPECT_EQ(logLines().back(), "saveIniSetting Error 57 Device I/O error");
  EXPECT_THAT(savedLines(), IsSupersetOf({"ImportServer=WEB1", "Type=W3SVC", "BackupAllSites=False"}));
  EXPECT_THAT(savedLines(), Each(Not(StartsWith("ExportServer"))));
}

TEST_F(JobFile, InAFolderThatIsNotThereIsNotWritten) {
  openOnSites();
  select({0});
  const std::vector<std::string> linesBefore = logLines();
  saveAs(programForm(folder / "nowhere/s.job"));
  EXPECT_FALSE(folder.has("nowhere"));
  EXPECT_EQ(logLines(), linesBefore) << "a write without success passes in silence";
}

TEST_F(JobFile, WhoseChooserFailsIsLogged) {
  openOnSites();
  select({0});
  platform().dialogs = std::make_unique<FailingChooser>();
  dialogs = nullptr;
  mnuSaveBackup_Click();
  EXPECT_EQ(logLines().back(), std::string(kSaveLabel) + "7 Out of memory");
  mnuLoadBackup_Click();
  EXPECT_EQ(logLines().back(), std::string(kLoadLabel) + "7 Out of memory");
  EXPECT_EQ(run.sBackupJob, savedPath());
  EXPECT_FALSE(folder.has("s.job"));
}

// There and back.

struct SavedState {
  const char* name;
  std::function<void()> set;
};

class SavedJob : public JobFile, public ::testing::WithParamInterface<SavedState> {
 protected:
  // All of the window that a job carries, as text.
  static std::string carriedState() {
    std::string text = "import " + frmMain.sImportType + " " + frmMain.txtImportServer.text;
    text += frmMain.optExportServer.value() ? "; to server " + frmMain.txtExportServer.text : "; to database";
    text += "; from " + frmMain.lstIMIISVer.text() + " to " + frmMain.lstEXIISVer.text();
    text += "; kind " + frmMain.sService + (run.bStartWebs ? "; started" : "");
    text += frmMain.optOverwriteWebs.value() ? "; overwrite" : "";
    text += frmMain.optOverwritePreserve.value() ? "; preserve" : "";
    text += frmMain.optCreateWebs.value() ? "; create" : "";
    text += "; versions " + std::to_string(run.dblIMIISVer) + " " + std::to_string(run.dblEXIISVer);
    for (const ListControl* list : {&frmMain.lstOldValues, &frmMain.lstNewValues}) {
      for (const std::string& entry : entriesOf(*list)) text += "; <" + entry + ">";
    }
    for (const std::string& site : selectedSites()) text += "; site " + site;
    return text;
  }
};

TEST_P(SavedJob, ComesBackAsItWas) {
  openOnSites();
  frmMain.lstIMIISVer.setListIndex(2);
  frmMain.lstEXIISVer.setListIndex(2);
  select({0, 2});
  GetParam().set();
  const std::string before = carriedState();
  save();
  readSavedIntoFreshWindow();
  EXPECT_EQ(carriedState(), before);
  EXPECT_THAT(logStartingWith("frmMain SelectSitesFromBackup Error "), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    States, SavedJob,
    ::testing::Values(SavedState{"AsItIs", [] {}},
                      SavedState{"ToTheDatabase",
                                 [] {
                                   frmMain.TabExportType.select(2);
                                   frmMain.optExportFile.setValue(true);
                                 }},
                      SavedState{"Started", [] { frmMain.chkStartWebs.setValue(true); }},
                      SavedState{"Overwrite", [] { frmMain.optOverwriteWebs.setValue(true); }},
                      SavedState{"OverwritePreserve", [] { frmMain.optOverwritePreserve.setValue(true); }},
                      SavedState{"OlderVersions",
                                 [] {
                                   frmMain.lstIMIISVer.setListIndex(0);
                                   frmMain.lstEXIISVer.setListIndex(1);
                                 }},
                      SavedState{"Pairs",
                                 [] {
                                   for (const char* text :
                                        {"d:\\inetpub", "a=b", "[x]", "; y", "=", "M\xc3\xbcnchen",
                                         "\xc3\x86r\xc3\xb8", "it's", "say \"x\" twice"}) {
                                     frmMain.lstOldValues.addItem(text);
                                     frmMain.lstNewValues.addItem(text);
                                   }
                                 }},
                      SavedState{"PairsWithEmptySides",
                                 [] {
                                   frmMain.lstOldValues.addItem("gone");
                                   frmMain.lstNewValues.addItem("");
                                   frmMain.lstOldValues.addItem("");
                                   frmMain.lstNewValues.addItem("strange");
                                 }},
                      SavedState{"OneSite", [] { frmMain.lstSites.setSelected(2, false); }}),
    [](const auto& state) { return std::string(state.param.name); });

TEST_F(JobFile, OfFtpSitesComesBackAsSuch) {
  addServer(
      "WEB1",
      metabaseFile(ftpService(element("IIsFtpServer", "/LM/MSFTPSVC/1", {{"ServerComment", "Files"}}) +
                              element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "C:\\ftp"}}))));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  listSites();
  select({0});
  save();
  EXPECT_THAT(savedLines(), IsSupersetOf({"Type=MSFTPSVC", "SiteName=IIS://WEB1/MSFTPSVC/1"}));
  readSavedIntoFreshWindow();
  EXPECT_EQ(frmMain.sService, "MSFTPSVC");
  EXPECT_THAT(selectedSites(), ElementsAre("Files"));
}

TEST_F(JobFile, OfStoredSitesComesBackAsSuch) {
  openOnStoredSites();
  frmMain.txtExportServer.text = "NEW6";
  select({1});
  save();
  readSavedIntoFreshWindow();
  EXPECT_EQ(frmMain.sImportType, "Database");
  ASSERT_THAT(selectedSites(), SizeIs(1));
  EXPECT_THAT(selectedSites()[0], StartsWith("two "));
}

TEST_F(JobFile, GivesBackTheFirst49CharactersOfALongValue) {
  openOnSites();
  select({0});
  addPairOfWindow(std::string(48, 'f') + "ghijklmnopqr", std::string(49, 'r'));
  save();
  readSavedIntoFreshWindow();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre(std::string(48, 'f') + "g"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre(std::string(49, 'r')));
}

TEST_F(JobFile, LosesBlanksAndQuotesAroundAValue) {
  openOnSites();
  select({0});
  addPairOfWindow(" a ", "\"b\"");
  save();
  readSavedIntoFreshWindow();
  EXPECT_THAT(entriesOf(frmMain.lstOldValues), ElementsAre("a"));
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre("b")) << "as the profile calls have it";
}

TEST_F(JobFile, InADeepFolderGivesAPieceOfItsPathForAnEmptyReplacement) {
  openOnSites();
  select({0});
  addPairOfWindow("gone", "");
  addPairOfWindow("kept", "here");
  const std::filesystem::path deep = folder.makeFolder(std::string(50, 'd')) / "s.job";
  saveAs(programForm(deep));
  SelectSitesFromBackup();
  EXPECT_THAT(entriesOf(frmMain.lstNewValues), ElementsAre(run.sBackupJob.substr(0, 49), "here"));
  EXPECT_THAT(selectedSites(), ElementsAre("Shop")) << "keys that are there read as they should";
}

TEST_F(JobFile, CarriesNothingElseOfTheWindow) {
  openOnSites();
  select({0});
  frmMain.chkCopyFiles.setValue(true);
  frmMain.chkSetFilePerms.setValue(true);
  frmMain.chkCopyIIS.setValue(false);
  frmMain.lstExclude.addItem("OneMore");
  save();
  readSavedIntoFreshWindow();
  EXPECT_FALSE(run.bCopyFiles);
  EXPECT_FALSE(run.bSetFilePerms);
  EXPECT_TRUE(run.bCopyIIS);
  EXPECT_THAT(entriesOf(frmMain.lstExclude), Not(Contains("OneMore")));
}

TEST_F(JobFile, RunsUnattended) {
  openOnSites();
  exportToStore();
  select({0, 2});
  addPairOfWindow("c:\\site", "E:\\sites\\");
  save();
  renew(frmMain);
  run = RunState{};
  start("-RUNBACKUP -B " + savedPath());
  EXPECT_THAT(storedNames(kPerRun), ElementsAre("Shop", "Mail"));
  EXPECT_EQ(query(kPerRun, "SELECT StringValue AS a FROM Data WHERE Name = 'Path' ORDER BY ID"),
            (Rows{{"E:\\sites\\1"}, {"E:\\sites\\3"}}));
}

TEST_F(JobFile, OfStoredSitesRunsUnattended) {
  addServer("NEW6", metabaseFile(webService(plainSite(1, "There"))));
  openOnStoredSites();
  executeOn("TrelvinData.mdb",
            "INSERT INTO Data (SiteNumber, Location, Name, Class, DataType, LocalPath, StringValue) "
            "VALUES (2, '', 'ServerComment', 'IIsWebServer', 8, '7', 'Second')");
  exportTo("NEW6");
  select({1});
  frmMain.optOverwritePreserve.setValue(true);
  save();
  renew(frmMain);
  run = RunState{};
  start("-RUNBACKUP -B " + savedPath());
  platform().metabase.reset();  // every change gets into the file
  metabase = nullptr;
  EXPECT_THAT(metabaseOf("NEW6"), HasSubstr("Location =\"/LM/W3SVC/7\""));
  EXPECT_THAT(metabaseOf("NEW6"), HasSubstr("ServerComment=\"Second\""));
  EXPECT_THAT(metabaseOf("NEW6"), HasSubstr("ServerComment=\"There\""));
}

TEST_F(JobFile, OfAllSitesTakesALaterSiteWhenItWasSaidSo) {
  for (const auto& [answer, stored] : std::vector<std::pair<Answer, std::vector<std::string>>>{
           {Answer::kYes, {"Shop", "Wiki", "Mail", "Late"}}, {Answer::kNo, {"Shop", "Wiki", "Mail"}}}) {
    addSites();
    renew(frmMain);
    run = RunState{};
    openOnSites();
    exportToStore();
    select({0, 1, 2});
    dialogs->answers.assign(1, answer);
    save();
    addServer("WEB1", metabaseFile(webService(plainSite(1, "Shop") + plainSite(2, "Wiki") +
                                              plainSite(3, "Mail") + plainSite(4, "Late"))));
    renew(frmMain);
    run = RunState{};
    start("-RUNBACKUP -B " + savedPath());
    EXPECT_EQ(storedNames(kPerRun), stored);
  }
}

}  // namespace
}  // namespace trelvin::test
