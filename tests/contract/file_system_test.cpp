#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "contract/facilities.h"
#include "core/err.h"
#include "fakes/failures.h"
#include "platform/files.h"

namespace trelvin::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FileSystemContract : public testing::Test {
 protected:
  [[nodiscard]] std::string path(std::string_view relative) const { return programForm(folder_ / relative); }

  TempFolder folder_;
  std::unique_ptr<FileSystem> files_ = systemFiles();
};

TEST_F(FileSystemContract, AFileAndAFolderAreToldApart) {
  folder_.write("file", "x");
  folder_.makeFolder("folder");
  EXPECT_TRUE(files_->fileExists(path("file")));
  EXPECT_FALSE(files_->folderExists(path("file")));
  EXPECT_TRUE(files_->folderExists(path("folder")));
  EXPECT_FALSE(files_->fileExists(path("folder")));
  EXPECT_FALSE(files_->fileExists(path("nothing")));
  EXPECT_FALSE(files_->folderExists(path("nothing")));
}

TEST_F(FileSystemContract, ANameInAnotherCaseIsTheSameFile) {
  folder_.write("Folder/File.txt", "x");
  EXPECT_TRUE(files_->fileExists(path("FOLDER") + "\\file.TXT"));
}

TEST_F(FileSystemContract, CreateFolderMakesOneAndRefusesANameThatIsTaken) {
  files_->createFolder(path("new"));
  EXPECT_TRUE(folder_.has("new"));
  EXPECT_EQ(numberOfFailure([&] { files_->createFolder(path("new")); }), error_number::kFileExists);
}

TEST_F(FileSystemContract, CreateFolderNeedsItsParent) {
  EXPECT_EQ(numberOfFailure([&] { files_->createFolder(path("no") + "\\folder"); }),
            error_number::kPathNotFound);
}

TEST_F(FileSystemContract, CopyFileReplacesWhatWasThere) {
  folder_.write("source", std::string("new\0bytes", 9));
  folder_.write("target", "old and longer than the new one");
  files_->copyFile(path("source"), path("target"));
  EXPECT_EQ(folder_.read("target"), std::string("new\0bytes", 9));
  EXPECT_EQ(folder_.read("source"), std::string("new\0bytes", 9));
  EXPECT_THAT(files_->fileNames(programForm(folder_.path())), ElementsAre("source", "target"));
}

TEST_F(FileSystemContract, CopyFileTellsWhichSideIsMissing) {
  folder_.write("source", "x");
  folder_.makeFolder("folder");
  EXPECT_EQ(numberOfFailure([&] { files_->copyFile(path("no"), path("target")); }),
            error_number::kFileNotFound);
  EXPECT_EQ(numberOfFailure([&] { files_->copyFile(path("folder"), path("target")); }),
            error_number::kFileNotFound);
  EXPECT_EQ(numberOfFailure([&] { files_->copyFile(path("source"), path("no") + "\\target"); }),
            error_number::kPathNotFound);
  EXPECT_FALSE(folder_.has("target"));
}

TEST_F(FileSystemContract, CopyFileOntoAReadOnlyFileOrAFolderIsDenied) {
  folder_.write("source", "new");
  folder_.write("target", "old");
  folder_.makeFolder("folder");
  files_->setAttributes(path("target"), 1);
  EXPECT_EQ(numberOfFailure([&] { files_->copyFile(path("source"), path("target")); }),
            error_number::kPermissionDenied);
  EXPECT_EQ(numberOfFailure([&] { files_->copyFile(path("source"), path("folder")); }),
            error_number::kPermissionDenied);
  EXPECT_EQ(folder_.read("target"), "old");
  files_->setAttributes(path("target"), 0);
}

TEST_F(FileSystemContract, ACopyOfAReadOnlyTemplateCanBeMadeWritable) {
  folder_.write("template", "x");
  files_->setAttributes(path("template"), 1);
  files_->copyFile(path("template"), path("copy"));
  files_->setAttributes(path("copy"), 0);
  files_->appendText(path("copy"), "y");
  EXPECT_EQ(folder_.read("copy"), "xy");
  files_->setAttributes(path("template"), 0);
}

TEST_F(FileSystemContract, DeleteFileRemovesItUnlessItIsReadOnly) {
  folder_.write("file", "x");
  files_->setAttributes(path("file"), 1);
  EXPECT_EQ(numberOfFailure([&] { files_->deleteFile(path("file")); }), error_number::kPermissionDenied);
  files_->setAttributes(path("file"), 0);
  files_->deleteFile(path("file"));
  EXPECT_FALSE(folder_.has("file"));
  EXPECT_EQ(numberOfFailure([&] { files_->deleteFile(path("file")); }), error_number::kFileNotFound);
}

TEST_F(FileSystemContract, DeleteFileOfAFolderFindsNoFile) {
  folder_.makeFolder("folder");
  EXPECT_EQ(numberOfFailure([&] { files_->deleteFile(path("folder")); }), error_number::kFileNotFound);
  EXPECT_TRUE(folder_.has("folder"));
}

TEST_F(FileSystemContract, SetAttributesNeedsAFile) {
  EXPECT_EQ(numberOfFailure([&] { files_->setAttributes(path("no"), 0); }), error_number::kFileNotFound);
}

TEST_F(FileSystemContract, NamesComeInOrderFilesAndFoldersApart) {
  for (const char* name : {"b.txt", "A.txt", "c"}) folder_.write(name, "");
  folder_.makeFolder("Zebra");
  folder_.makeFolder("ape");
  EXPECT_THAT(files_->fileNames(programForm(folder_.path())), ElementsAre("A.txt", "b.txt", "c"));
  EXPECT_THAT(files_->folderNames(programForm(folder_.path())), ElementsAre("ape", "Zebra"));
  EXPECT_EQ(numberOfFailure([&] { static_cast<void>(files_->fileNames(path("no"))); }),
            error_number::kPathNotFound);
}

TEST_F(FileSystemContract, AFileIsNoFolderToListNamesOf) {
  folder_.write("file", "");
  EXPECT_EQ(numberOfFailure([&] { static_cast<void>(files_->fileNames(path("file"))); }),
            error_number::kPathNotFound);
  EXPECT_EQ(numberOfFailure([&] { static_cast<void>(files_->folderNames(path("file"))); }),
            error_number::kPathNotFound);
}

TEST_F(FileSystemContract, NamesBeyondAsciiComeAsUtf8) {
  const std::string folder = programForm(folder_.path());
  files_->createFolder(folder + "\\Ordner Grün");
  files_->appendText(folder + "\\日本.txt", "x");
  EXPECT_THAT(files_->folderNames(folder), ElementsAre("Ordner Grün"));
  EXPECT_THAT(files_->fileNames(folder), ElementsAre("日本.txt"));
}

TEST_F(FileSystemContract, AppendTextMakesTheFileAndAddsToIt) {
  files_->appendText(path("log"), "one\r\n");
  files_->appendText(path("log"), "two\r\n");
  EXPECT_EQ(folder_.read("log"), "one\r\ntwo\r\n");
}

TEST_F(FileSystemContract, AppendTextThatCannotBeDoneNamesThePath) {
  folder_.makeFolder("folder");
  for (const std::string& target : {path("folder"), path("no") + "\\log"}) {
    ASSERT_FALSE(attempt([&] { files_->appendText(target, "x"); }));
    EXPECT_EQ(Err.number, error_number::kPathFileAccess);
    EXPECT_THAT(Err.description, HasSubstr(target));
    Err.clear();
  }
}

TEST_F(FileSystemContract, WriteTextReplacesWhatWasThereByteForByte) {
  folder_.write("Upgrade.exe", "an older and longer one");
  const std::string bytes("MZ\0\xFF\r\n\x1A", 7);
  files_->writeText(path("Upgrade.exe"), bytes);
  files_->writeText(path("new"), bytes);
  EXPECT_EQ(folder_.read("Upgrade.exe"), bytes);
  EXPECT_EQ(folder_.read("new"), bytes);
  EXPECT_THAT(files_->fileNames(programForm(folder_.path())), ElementsAre("new", "Upgrade.exe"));
}

TEST_F(FileSystemContract, WriteTextThatCannotBeDoneLeavesTheFileAndNamesThePath) {
  folder_.makeFolder("folder");
  folder_.write("Upgrade.exe", "older");
  files_->setAttributes(path("Upgrade.exe"), 1);
  for (const std::string& target : {path("folder"), path("no") + "\\file", path("Upgrade.exe")}) {
    ASSERT_FALSE(attempt([&] { files_->writeText(target, "newer"); }));
    EXPECT_EQ(Err.number, error_number::kPathFileAccess);
    EXPECT_THAT(Err.description, HasSubstr(target));
    Err.clear();
  }
  EXPECT_EQ(folder_.read("Upgrade.exe"), "older");
  files_->setAttributes(path("Upgrade.exe"), 0);
  EXPECT_THAT(files_->fileNames(programForm(folder_.path())), ElementsAre("Upgrade.exe"));
}

}  // namespace
}  // namespace trelvin::test
