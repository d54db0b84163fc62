#include <gtest/gtest.h>

#include "contract/facilities.h"
#include "core/text.h"

namespace trelvin::test {
namespace {

constexpr const char* kDefault = "(missing)";

class ProfileFilesContract : public testing::Test {
 protected:
  [[nodiscard]] std::string path() const { return programForm(folder_ / "Backup.job"); }

  std::string get(std::string_view section, std::string_view key) {
    std::string buffer(300, ' ');
    const std::uint32_t count = profile_->getString(section, key, kDefault, buffer, 300, path());
    return std::string(firstCharacters(buffer, count));
  }
  bool put(std::string_view section, std::string_view key, std::string_view value) {
    return profile_->writeString(section, key, value, path());
  }

  TempFolder folder_;
  std::unique_ptr<ProfileFiles> profile_ = systemProfileFiles();
};

TEST_F(ProfileFilesContract, WhatWasWrittenComesBack) {
  ASSERT_TRUE(put("Job Details", "Sites", "2"));
  ASSERT_TRUE(put("1Site", "SiteName", "IIS://web1/W3SVC/1"));
  ASSERT_TRUE(put("Job Details", "Type", "W3SVC"));
  EXPECT_EQ(get("Job Details", "Sites"), "2");
  EXPECT_EQ(get("1Site", "SiteName"), "IIS://web1/W3SVC/1");
  EXPECT_EQ(get("Job Details", "Type"), "W3SVC");
}

TEST_F(ProfileFilesContract, SectionsAndKeysStandInTheOrderOfTheirFirstWriting) {
  put("b", "x", "1");
  put("a", "y", "2");
  put("b", "z", "3");
  const std::string file = folder_.read("Backup.job");
  EXPECT_LT(file.find("[b]"), file.find("x=1"));
  EXPECT_LT(file.find("x=1"), file.find("z=3"));
  EXPECT_LT(file.find("z=3"), file.find("[a]"));
}

TEST_F(ProfileFilesContract, AMissingFileSectionOrKeyGivesTheDefault) {
  EXPECT_EQ(get("Job Details", "Sites"), kDefault);
  put("Job Details", "Type", "W3SVC");
  EXPECT_EQ(get("Job Details", "Sites"), kDefault);
  EXPECT_EQ(get("Other", "Type"), kDefault);
}

TEST_F(ProfileFilesContract, SectionsAndKeysMatchInAnyCase) {
  folder_.write("Backup.job", "[JOB Details]\r\nsITES=2\r\n");
  EXPECT_EQ(get("Job Details", "Sites"), "2");
}

TEST_F(ProfileFilesContract, TheFirstOfTwoSectionsAndKeysCounts) {
  folder_.write("Backup.job", "[a]\r\nx=1\r\nx=2\r\n[b]\r\n[A]\r\ny=3\r\n");
  EXPECT_EQ(get("a", "x"), "1");
  EXPECT_EQ(get("a", "y"), kDefault);
}

TEST_F(ProfileFilesContract, BlanksAndOnePairOfQuotesAroundAValueAreDropped) {
  folder_.write("Backup.job", "[a]\r\nx =  one two  \r\ny=\"  three \"\r\nz='four'\r\n");
  EXPECT_EQ(get("a", "x"), "one two");
  EXPECT_EQ(get("a", "y"), "  three ");
  EXPECT_EQ(get("a", "z"), "four");
}

TEST_F(ProfileFilesContract, AValueIsCutToTheBufferAndTheRestOfItStays) {
  const std::string value(60, 'v');
  put("a", "x", value);
  std::string buffer(60, '.');
  EXPECT_EQ(profile_->getString("a", "x", kDefault, buffer, 50, path()), 49U);
  EXPECT_EQ(buffer, std::string(49, 'v') + std::string(1, '\0') + std::string(10, '.'));
}

TEST_F(ProfileFilesContract, ALongDefaultIsCutInTheSameWay) {
  std::string buffer(60, '.');
  EXPECT_EQ(profile_->getString("a", "x", std::string(60, 'd'), buffer, 50, path()), 49U);
  EXPECT_EQ(buffer.substr(0, 49), std::string(49, 'd'));
}

TEST_F(ProfileFilesContract, NoValueDeletesTheKeyAlone) {
  put("a", "x", "1");
  put("a", "y", "2");
  EXPECT_TRUE(profile_->writeString("a", "x", std::nullopt, path()));
  EXPECT_EQ(get("a", "x"), kDefault);
  EXPECT_EQ(get("a", "y"), "2");
}

TEST_F(ProfileFilesContract, ALongValueIsWrittenWhole) {
  const std::string value(3000, 'v');
  ASSERT_TRUE(put("a", "x", value));
  EXPECT_NE(folder_.read("Backup.job").find(value), std::string::npos);
}

TEST_F(ProfileFilesContract, AFileInAFolderThatIsNotThereIsNotWritten) {
  EXPECT_FALSE(profile_->writeString("a", "x", "1", programForm(folder_ / "no" / "Backup.job")));
}

}  // namespace
}  // namespace trelvin::test
