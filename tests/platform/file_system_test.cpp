#include "platform/linux/file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>

#include "core/err.h"
#include "fakes/temp_folder.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;
using testing::HasSubstr;

class FileSystemTest : public testing::Test {
 protected:
  [[nodiscard]] std::string path(std::string_view relative) const {
    return windowsPath((folder_ / relative).string());
  }

  template <typename Operation>
  static Failure failureOf(Operation&& operation) {
    try {
      operation();
    } catch (const Failure& failure) {
      return failure;
    }
    return Failure(0, "nothing failed");
  }

  [[nodiscard]] mode_t modeOf(std::string_view relative) const {
    struct stat status {};
    EXPECT_EQ(::stat((folder_ / relative).c_str(), &status), 0) << relative;
    return status.st_mode & 07777U;
  }
  void setMode(std::string_view relative, mode_t mode) const {
    ASSERT_EQ(::chmod((folder_ / relative).c_str(), mode), 0);
  }
  [[nodiscard]] std::size_t entryCount() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }

  TempFolder folder_;
  Paths paths_{(folder_ / "Network").string()};
  std::unique_ptr<FileSystem> files_ =
      makeFileSystem([this](std::string_view path) { return paths_.nativePath(path); });
};

// No file of the process grows past a size, as if the disk were full there.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int) = nullptr;
};

TEST_F(FileSystemTest, AFileAndAFolderAreToldApart) {
  folder_.write("file", "x");
  folder_.makeFolder("folder");
  EXPECT_TRUE(files_->fileExists(path("file")));
  EXPECT_FALSE(files_->folderExists(path("file")));
  EXPECT_TRUE(files_->folderExists(path("folder")));
  EXPECT_FALSE(files_->fileExists(path("folder")));
}

TEST_F(FileSystemTest, WhatIsNotThereExistsAsNothing) {
  fs::create_symlink("nowhere", folder_ / "dangling");
  for (const std::string& name : {path("missing"), path("missing\\below"), path("dangling"), std::string(),
                                  std::string("\\\\.\\x"), std::string("Z:\\a\0b", 6)}) {
    EXPECT_FALSE(files_->fileExists(name)) << name;
    EXPECT_FALSE(files_->folderExists(name)) << name;
  }
}

TEST_F(FileSystemTest, ANameInAnotherCaseIsTheSameFile) {
  folder_.write("Backup.job", "x");
  EXPECT_TRUE(files_->fileExists(path("BACKUP.JOB")));
  files_->appendText(path("backup.JOB"), "y");
  EXPECT_EQ(folder_.read("Backup.job"), "xy");
  EXPECT_EQ(entryCount(), 1U);
}

TEST_F(FileSystemTest, CreateFolderMakesOne) {
  files_->createFolder(path("BackupJobs"));
  EXPECT_TRUE(fs::is_directory(folder_ / "BackupJobs"));
}

TEST_F(FileSystemTest, CreateFolderRefusesANameThatIsTaken) {
  folder_.write("file", "x");
  folder_.makeFolder("Folder");
  EXPECT_EQ(failureOf([&] { files_->createFolder(path("file")); }).number(), error_number::kFileExists);
  EXPECT_EQ(failureOf([&] { files_->createFolder(path("FOLDER")); }).number(), error_number::kFileExists);
}

TEST_F(FileSystemTest, CreateFolderNeedsItsParent) {
  folder_.write("file", "x");
  const Failure failure = failureOf([&] { files_->createFolder(path("missing\\new")); });
  EXPECT_EQ(failure.number(), error_number::kPathNotFound);
  EXPECT_THAT(failure.description(), HasSubstr(path("missing\\new")));
  EXPECT_EQ(failureOf([&] { files_->createFolder(path("file\\new")); }).number(),
            error_number::kPathNotFound);
}

TEST_F(FileSystemTest, CreateFolderWithoutTheRightIsDenied) {
  if (::geteuid() == 0) GTEST_SKIP() << "an administrator has every right";
  folder_.makeFolder("closed");
  setMode("closed", 0500);
  EXPECT_EQ(failureOf([&] { files_->createFolder(path("closed\\new")); }).number(),
            error_number::kPermissionDenied);
  setMode("closed", 0700);
}

TEST_F(FileSystemTest, CreateFolderOnASystemThatTakesNoneIsDeniedOrNotFound) {
  // The kernel's own tree takes no folder from anybody.
  const Failure failure = failureOf([&] { files_->createFolder("Z:\\proc\\trelvin"); });
  EXPECT_TRUE(failure.number() == error_number::kPermissionDenied ||
              failure.number() == error_number::kPathNotFound);
}

TEST_F(FileSystemTest, CopyFileCopiesEveryByteAndTheMode) {
  std::string bytes;
  for (int i = 0; i < 700'000; ++i) bytes += static_cast<char>(i * 7);
  folder_.write("source", bytes);
  setMode("source", 0640);
  files_->copyFile(path("source"), path("copy"));
  EXPECT_EQ(folder_.read("copy"), bytes);
  EXPECT_EQ(modeOf("copy"), 0640U);
  EXPECT_EQ(entryCount(), 2U) << "something was left over";
}

TEST_F(FileSystemTest, CopyFileCopiesAnEmptyFile) {
  folder_.write("source", "");
  files_->copyFile(path("source"), path("copy"));
  EXPECT_EQ(folder_.read("copy"), "");
}

TEST_F(FileSystemTest, CopyFileKeepsTheTimeOfTheSource) {
  folder_.write("source", "x");
  const auto then = fs::last_write_time(folder_ / "source") - std::chrono::hours(100);
  fs::last_write_time(folder_ / "source", then);
  files_->copyFile(path("source"), path("copy"));
  EXPECT_EQ(fs::last_write_time(folder_ / "copy"), then);
}

TEST_F(FileSystemTest, CopyFileReplacesWhatWasThere) {
  folder_.write("source", "new");
  folder_.write("Copy", "something longer");
  files_->copyFile(path("source"), path("copy"));
  EXPECT_EQ(folder_.read("Copy"), "new");
  EXPECT_EQ(entryCount(), 2U);
}

TEST_F(FileSystemTest, CopyFileReplacesTheFileBehindALink) {
  folder_.write("source", "new");
  folder_.write("real", "old");
  fs::create_symlink("real", folder_ / "link");
  files_->copyFile(path("source"), path("link"));
  EXPECT_EQ(folder_.read("real"), "new");
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
}

TEST_F(FileSystemTest, CopyFileOntoItselfLeavesTheFileAsItWas) {
  folder_.write("source", "content");
  files_->copyFile(path("source"), path("SOURCE"));
  EXPECT_EQ(folder_.read("source"), "content");
}

TEST_F(FileSystemTest, CopyFileWithoutASourceFindsNoFile) {
  folder_.write("copy", "old");
  folder_.makeFolder("folder");
  const Failure failure = failureOf([&] { files_->copyFile(path("missing"), path("copy")); });
  EXPECT_EQ(failure.number(), error_number::kFileNotFound);
  EXPECT_THAT(failure.description(), HasSubstr(path("missing")));
  EXPECT_EQ(failureOf([&] { files_->copyFile(path("no\\missing"), path("copy")); }).number(),
            error_number::kFileNotFound);
  EXPECT_EQ(failureOf([&] { files_->copyFile(path("folder"), path("copy")); }).number(),
            error_number::kFileNotFound);
  EXPECT_EQ(folder_.read("copy"), "old");
}

TEST_F(FileSystemTest, CopyFileIntoAFolderThatIsNotThereFindsNoPath) {
  folder_.write("source", "x");
  const Failure failure = failureOf([&] { files_->copyFile(path("source"), path("missing\\copy")); });
  EXPECT_EQ(failure.number(), error_number::kPathNotFound);
  EXPECT_THAT(failure.description(), HasSubstr(path("missing\\copy")));
}

TEST_F(FileSystemTest, CopyFileOntoAReadOnlyFileOrAFolderIsDenied) {
  folder_.write("source", "x");
  folder_.write("copy", "old");
  folder_.makeFolder("folder");
  setMode("copy", 0444);
  EXPECT_EQ(failureOf([&] { files_->copyFile(path("source"), path("copy")); }).number(),
            error_number::kPermissionDenied);
  EXPECT_EQ(failureOf([&] { files_->copyFile(path("source"), path("folder")); }).number(),
            error_number::kPermissionDenied);
  EXPECT_EQ(folder_.read("copy"), "old");
  EXPECT_EQ(entryCount(), 3U);
}

TEST_F(FileSystemTest, CopyFileOnAFullDiskLeavesTheOldFileAndNothingElse) {
  folder_.write("source", std::string(1'000'000, 'x'));
  folder_.write("copy", "old");
  {
    const FullDisk disk(300'000);
    EXPECT_EQ(failureOf([&] { files_->copyFile(path("source"), path("copy")); }).number(),
              error_number::kDiskFull);
    EXPECT_EQ(failureOf([&] { files_->copyFile(path("source"), path("new")); }).number(),
              error_number::kDiskFull);
  }
  EXPECT_EQ(folder_.read("copy"), "old");
  EXPECT_EQ(entryCount(), 2U);
}

TEST_F(FileSystemTest, CopyFileOfAPipeOrADeviceFailsAtOnce) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(failureOf([&] { files_->copyFile(path("pipe"), path("copy")); }).number(),
            error_number::kBadFileName);
  EXPECT_EQ(failureOf([&] { files_->copyFile("Z:\\dev\\zero", path("copy")); }).number(),
            error_number::kBadFileName);
  EXPECT_FALSE(folder_.has("copy"));
}

TEST_F(FileSystemTest, ACopyOfAReadOnlyTemplateCanBeMadeWritable) {
  folder_.write("ForBackups.mdb", "database");
  setMode("ForBackups.mdb", 0444);
  files_->copyFile(path("ForBackups.mdb"), path("copy.mdb"));
  EXPECT_EQ(modeOf("copy.mdb"), 0444U);
  files_->setAttributes(path("copy.mdb"), 0);
  EXPECT_EQ(modeOf("copy.mdb"), 0644U);
}

TEST_F(FileSystemTest, DeleteFileRemovesIt) {
  folder_.write("File", "x");
  files_->deleteFile(path("file"));
  EXPECT_FALSE(folder_.has("File"));
}

TEST_F(FileSystemTest, DeleteFileOfWhatIsNoFileFindsNone) {
  folder_.makeFolder("folder");
  EXPECT_EQ(failureOf([&] { files_->deleteFile(path("missing")); }).number(), error_number::kFileNotFound);
  EXPECT_EQ(failureOf([&] { files_->deleteFile(path("folder")); }).number(), error_number::kFileNotFound);
  EXPECT_TRUE(folder_.has("folder"));
}

TEST_F(FileSystemTest, DeleteFileOfAReadOnlyFileIsDeniedAndLeavesIt) {
  folder_.write("file", "x");
  setMode("file", 0444);
  EXPECT_EQ(failureOf([&] { files_->deleteFile(path("file")); }).number(), error_number::kPermissionDenied);
  EXPECT_EQ(folder_.read("file"), "x");
}

TEST_F(FileSystemTest, TheReadOnlyAttributeTakesAllWriteBitsAndGivesTheOwnersBack) {
  folder_.write("file", "x");
  setMode("file", 0664);
  files_->setAttributes(path("file"), 1);
  EXPECT_EQ(modeOf("file"), 0444U);
  files_->setAttributes(path("file"), 0);
  EXPECT_EQ(modeOf("file"), 0644U);
  files_->setAttributes(path("file"), 32);  // archive: has no meaning here
  EXPECT_EQ(modeOf("file"), 0644U);
}

TEST_F(FileSystemTest, SetAttributesNeedsAFile) {
  EXPECT_EQ(failureOf([&] { files_->setAttributes(path("missing"), 0); }).number(),
            error_number::kFileNotFound);
}

TEST_F(FileSystemTest, AppendTextMakesTheFileAndAddsToIt) {
  files_->appendText(path("Trelvin.log"), "\"one\"\r\n");
  files_->appendText(path("Trelvin.log"), "\"two\"\r\n");
  EXPECT_EQ(folder_.read("Trelvin.log"), "\"one\"\r\n\"two\"\r\n");
}

TEST_F(FileSystemTest, AppendTextFollowsAFileThatWasRotatedAway) {
  files_->appendText(path("log"), "one");
  fs::rename(folder_ / "log", folder_ / "log.1");
  files_->appendText(path("log"), "two");
  EXPECT_EQ(folder_.read("log"), "two");
}

TEST_F(FileSystemTest, AppendTextOfANameAloneLiesInTheCurrentDirectory) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  files_->appendText("Trelvin.log", "x");
  fs::current_path(before);
  EXPECT_EQ(folder_.read("Trelvin.log"), "x");
}

TEST_F(FileSystemTest, AppendTextThatCannotBeDoneNamesPathAndCause) {
  folder_.write("file", "x");
  const Failure failure = failureOf([&] { files_->appendText(path("file\\log"), "x"); });
  EXPECT_EQ(failure.number(), error_number::kPathFileAccess);
  EXPECT_THAT(failure.description(), HasSubstr(path("file\\log")));
  EXPECT_THAT(failure.description(), HasSubstr("Not a directory"));
  EXPECT_EQ(failureOf([&] { files_->appendText(path("missing\\log"), "x"); }).number(),
            error_number::kPathFileAccess);
  EXPECT_EQ(failureOf([&] { files_->appendText(folder_.path().string(), "x"); }).number(),
            error_number::kPathFileAccess);
}

TEST_F(FileSystemTest, AppendTextOnAFullDeviceFails) {
  const Failure failure = failureOf([&] { files_->appendText("Z:\\dev\\full", "x"); });
  EXPECT_EQ(failure.number(), error_number::kPathFileAccess);
  EXPECT_THAT(failure.description(), HasSubstr("No space left on device"));
}

TEST_F(FileSystemTest, AppendTextThatDoesNotFitLeavesNoHalfLine) {
  folder_.write("log", "first line\r\n");
  {
    const FullDisk disk(20);
    EXPECT_EQ(failureOf([&] { files_->appendText(path("log"), "a line that is too long\r\n"); }).number(),
              error_number::kPathFileAccess);
  }
  EXPECT_EQ(folder_.read("log"), "first line\r\n");
}

TEST_F(FileSystemTest, WriteTextMakesAProgramStartableForItsReadersAndNothingElse) {
  folder_.write("Older.exe", "x");
  setMode("Older.exe", 0640);
  for (const char* name : {"Older.exe", "Upgrade.EXE", "Upgrade.txt"}) files_->writeText(path(name), "MZ");
  EXPECT_EQ(modeOf("Older.exe"), 0750U);
  const mode_t fresh = modeOf("Upgrade.txt");
  EXPECT_EQ(fresh & 0111U, 0U);
  EXPECT_EQ(modeOf("Upgrade.EXE"), fresh | ((fresh & 0444U) >> 2U));
}

TEST_F(FileSystemTest, AppendTextToAPipeThatNobodyReadsFailsAtOnce) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(failureOf([&] { files_->appendText(path("pipe"), "x"); }).number(),
            error_number::kPathFileAccess);
}

TEST_F(FileSystemTest, AFailureKeepsTheRuntimesOwnWords) {
  EXPECT_THAT(failureOf([&] { files_->deleteFile(path("missing")); }).description(),
              testing::StartsWith(describeError(error_number::kFileNotFound)));
}

TEST_F(FileSystemTest, ABadNameFailsAsOneInEveryOperation) {
  folder_.write("file", "x");
  for (const std::string& name : {std::string(), std::string("\\\\.\\C$\\x"), path(std::string(300, 'n'))}) {
    EXPECT_EQ(failureOf([&] { files_->createFolder(name); }).number(), error_number::kBadFileName) << name;
    EXPECT_EQ(failureOf([&] { files_->copyFile(path("file"), name); }).number(), error_number::kBadFileName)
        << name;
    EXPECT_EQ(failureOf([&] { files_->deleteFile(name); }).number(), error_number::kBadFileName) << name;
  }
}

}  // namespace
}  // namespace trelvin
