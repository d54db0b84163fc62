// Single keys of the job file.
#include "core/ini_settings.h"

#include <gtest/gtest.h>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/program_test.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

class IniSettingsTest : public ProgramTest {
 protected:
  // A job file in the current directory, and its path from there, which may be short or as long as a test
  // wants it. It says that it begins there, since Windows looks for a bare name in a folder of its own.
  void useJob(const std::string& name, const std::string& text) {
    folder.write("work/" + name, text);
    run.sBackupJob = ".\\" + name;
  }
  [[nodiscard]] std::string jobText() const { return folder.read("work/" + run.sBackupJob.substr(2)); }
  // A file name that makes a path of so many characters.
  static std::string nameForLength(std::size_t length) { return std::string(length - 6, 'j') + ".job"; }
};

class BrokenProfile : public ProfileFiles {
 public:
  std::uint32_t getString(std::string_view, std::string_view, std::string_view, std::string&, std::uint32_t,
                          std::string_view) override {
    throw Failure(error_number::kDeviceIo);
  }
  bool writeString(std::string_view, std::string_view, std::optional<std::string_view>,
                   std::string_view) override {
    throw Failure(error_number::kDeviceIo);
  }
};

// Keeps how it was called.
class RecordedProfile : public ProfileFiles {
 public:
  std::uint32_t getString(std::string_view section, std::string_view key, std::string_view defaultValue,
                          std::string& buffer, std::uint32_t size, std::string_view file) override {
    call = std::string(section) + "|" + std::string(key) + "|" + std::string(defaultValue) + "|" +
           std::to_string(size) + "|" + std::string(file);
    given = buffer;
    return 0;
  }
  bool writeString(std::string_view section, std::string_view key, std::optional<std::string_view> value,
                   std::string_view file) override {
    call = std::string(section) + "|" + std::string(key) + "|" + std::string(value.value_or("<none>")) + "|" +
           std::string(file);
    return answer;
  }

  std::string call;
  std::string given;
  bool answer = true;
};

TEST_F(IniSettingsTest, AKeyIsReadFromTheJobFile) {
  useJob("a.job", "[Import]\r\nServer=web1\r\nType=Web\r\n");
  EXPECT_EQ(returnIniSetting("Import", "Server"), "web1");
  EXPECT_EQ(returnIniSetting("Import", "Type"), "Web");
}

TEST_F(IniSettingsTest, AMissingKeyReadsAsEmpty) {
  useJob("a.job", "[Import]\r\nServer=web1\r\n");
  EXPECT_EQ(returnIniSetting("Import", "Other"), "");
  EXPECT_EQ(returnIniSetting("Export", "Server"), "");
}

TEST_F(IniSettingsTest, AKeyWithoutAValueReadsAsEmpty) {
  useJob("a.job", "[Import]\r\nServer=\r\n");
  EXPECT_EQ(returnIniSetting("Import", "Server"), "");
}

TEST_F(IniSettingsTest, AJobFileThatDoesNotExistReadsAsAllKeysMissing) {
  run.sBackupJob = "none.job";
  EXPECT_EQ(returnIniSetting("Import", "Server"), "");
  EXPECT_FALSE(folder.has("work/none.job"));
  EXPECT_TRUE(logLines().empty());
}

TEST_F(IniSettingsTest, SectionsAndKeysMatchInAnyCaseAndTheFirstMatchWins) {
  useJob("a.job", "[IMPORT]\r\nsErVeR=first\r\nServer=second\r\n[Import]\r\nServer=third\r\n");
  EXPECT_EQ(returnIniSetting("import", "SERVER"), "first");
}

TEST_F(IniSettingsTest, BlanksAroundAValueAreLost) {
  useJob("a.job", "[Import]\r\nServer=   web1   \r\nQuoted=\"  web2  \"\r\nBlank=\"   \"\r\n");
  EXPECT_EQ(returnIniSetting("Import", "Server"), "web1");
  EXPECT_EQ(returnIniSetting("Import", "Quoted"), "web2");
  EXPECT_EQ(returnIniSetting("Import", "Blank"), "");
}

TEST_F(IniSettingsTest, AValueOf49CharactersComesBackWholeAndOfALongerOneTheFirst49) {
  const std::string digits = "1234567890123456789012345678901234567890123456789";
  ASSERT_EQ(digits.size(), 49U);
  useJob("a.job", "[S]\r\nWhole=" + digits + "\r\nCut=" + digits + "X\r\nLong=" + digits +
                      std::string(200, 'Y') + "\r\n");
  EXPECT_EQ(returnIniSetting("S", "Whole"), digits);
  EXPECT_EQ(returnIniSetting("S", "Cut"), digits);
  EXPECT_EQ(returnIniSetting("S", "Long"), digits);
}

TEST_F(IniSettingsTest, AValueIsCutByCharactersAndNotByBytes) {
  std::string letters;
  for (int i = 0; i < 49; ++i) letters += "\xC3\xA4";
  run.sBackupJob = ".\\a.job";
  saveIniSetting("S", "Whole", letters);
  saveIniSetting("S", "Cut", letters + "\xC3\xA4");
  EXPECT_EQ(returnIniSetting("S", "Whole"), letters);
  EXPECT_EQ(returnIniSetting("S", "Cut"), letters);
}

TEST_F(IniSettingsTest, AValueOfOneCharacterComesBack) {
  useJob("a.job", "[S]\r\nA=1\r\n");
  EXPECT_EQ(returnIniSetting("S", "A"), "1");
}

TEST_F(IniSettingsTest, AValueThatIsTheJobsOwnPathReadsAsMissing) {
  useJob("a.job", "[S]\r\nA=.\\a.job\r\n");
  EXPECT_EQ(returnIniSetting("S", "A"), "");
}

TEST_F(IniSettingsTest, AnotherValueAsLongAsThePathIsNoMissingKey) {
  useJob("a.job", "[S]\r\nA=.\\b.job\r\nB=x.\\a.job\r\n");
  EXPECT_EQ(returnIniSetting("S", "A"), ".\\b.job");
  EXPECT_EQ(returnIniSetting("S", "B"), "x.\\a.job");
}

TEST_F(IniSettingsTest, APathOf49CharactersStillTellsAMissingKey) {
  useJob(nameForLength(49), "[S]\r\nA=1\r\n");
  EXPECT_EQ(returnIniSetting("S", "B"), "");
  EXPECT_EQ(returnIniSetting("S", "A"), "1");
}

TEST_F(IniSettingsTest, ALongerPathIsTakenForTheValueOfAMissingKey) {
  for (const std::size_t length : {50U, 51U, 120U}) {
    useJob(nameForLength(length), "[S]\r\nA=1\r\n");
    EXPECT_EQ(returnIniSetting("S", "B"), run.sBackupJob.substr(0, 49)) << length;
    EXPECT_EQ(returnIniSetting("S", "A"), "1") << length;
  }
}

TEST_F(IniSettingsTest, ThePathServesAsTheDefaultOfTheCallAndTheBufferIsFiftyBlanks) {
  auto made = std::make_unique<RecordedProfile>();
  RecordedProfile& profile = *made;
  platform().profile = std::move(made);
  run.sBackupJob = "D:\\a.job";
  EXPECT_EQ(returnIniSetting("S", "A"), "");
  EXPECT_EQ(profile.call, "S|A|D:\\a.job|50|D:\\a.job");
  EXPECT_EQ(profile.given, std::string(50, ' '));
}

TEST_F(IniSettingsTest, AFailureToReadIsLoggedAndGivesAnEmptyText) {
  platform().profile = std::make_unique<BrokenProfile>();
  run.sBackupJob = "a.job";
  EXPECT_EQ(returnIniSetting("S", "A"), "");
  EXPECT_EQ(logLines(), (std::vector<std::string>{"returnIniSetting Error 57 Device I/O error"}));
}

TEST_F(IniSettingsTest, TheFirstSaveMakesFileSectionAndKey) {
  run.sBackupJob = ".\\new.job";
  EXPECT_TRUE(saveIniSetting("Import", "Server", "web1"));
  EXPECT_EQ(returnIniSetting("Import", "Server"), "web1");
  EXPECT_NE(jobText().find("[Import]"), std::string::npos);
}

TEST_F(IniSettingsTest, ASaveReplacesTheValueThatStoodThere) {
  useJob("a.job", "[S]\r\nA=1\r\nB=2\r\n");
  EXPECT_TRUE(saveIniSetting("S", "A", "3"));
  EXPECT_EQ(jobText(), "[S]\r\nA=3\r\nB=2\r\n");
}

TEST_F(IniSettingsTest, AnEmptyValueRemovesTheKeyThatStoodThere) {
  useJob("a.job", "[S]\r\nA=1\r\nB=2\r\n");
  EXPECT_TRUE(saveIniSetting("S", "A", ""));
  EXPECT_EQ(jobText(), "[S]\r\nB=2\r\n");
}

TEST_F(IniSettingsTest, AnEmptyValueIsHandedOnAsNoValue) {
  auto made = std::make_unique<RecordedProfile>();
  RecordedProfile& profile = *made;
  platform().profile = std::move(made);
  run.sBackupJob = "D:\\a.job";
  saveIniSetting("S", "A", "");
  EXPECT_EQ(profile.call, "S|A|<none>|D:\\a.job");
  saveIniSetting("S", "A", " ");
  EXPECT_EQ(profile.call, "S|A| |D:\\a.job");
}

TEST_F(IniSettingsTest, TheResultIsThatOfTheCall) {
  auto made = std::make_unique<RecordedProfile>();
  RecordedProfile& profile = *made;
  platform().profile = std::move(made);
  EXPECT_TRUE(saveIniSetting("S", "A", "1"));
  profile.answer = false;
  EXPECT_FALSE(saveIniSetting("S", "A", "1"));
  EXPECT_TRUE(logLines().empty());
}

TEST_F(IniSettingsTest, AFailureToWriteIsLogged) {
  platform().profile = std::make_unique<BrokenProfile>();
  run.sBackupJob = "a.job";
  EXPECT_FALSE(saveIniSetting("S", "A", "1"));
  EXPECT_EQ(logLines(), (std::vector<std::string>{"saveIniSetting Error 57 Device I/O error"}));
}

TEST_F(IniSettingsTest, AnotherJobPathRedirectsAllLaterCalls) {
  useJob("a.job", "[S]\r\nA=1\r\n");
  useJob("b.job", "[S]\r\nA=2\r\n");
  EXPECT_EQ(returnIniSetting("S", "A"), "2");
  saveIniSetting("S", "A", "3");
  run.sBackupJob = ".\\a.job";
  EXPECT_EQ(returnIniSetting("S", "A"), "1");
}

}  // namespace
}  // namespace trelvin::test
