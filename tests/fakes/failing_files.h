// A file system that stands on another one and makes chosen additions to files fail, such as lines of the
// log.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/err.h"
#include "platform/platform.h"

namespace trelvin::test {

class FailingFiles : public FileSystem {
 public:
  explicit FailingFiles(std::unique_ptr<FileSystem> real) : real_(std::move(real)) {}

  [[nodiscard]] bool fileExists(std::string_view path) const override { return real_->fileExists(path); }
  [[nodiscard]] bool folderExists(std::string_view path) const override { return real_->folderExists(path); }
  void createFolder(std::string_view path) override { real_->createFolder(path); }
  void copyFile(std::string_view source, std::string_view destination) override {
    real_->copyFile(source, destination);
  }
  void deleteFile(std::string_view path) override { real_->deleteFile(path); }
  void setAttributes(std::string_view path, int attributes) override {
    real_->setAttributes(path, attributes);
  }
  [[nodiscard]] std::vector<std::string> fileNames(std::string_view path) const override {
    return real_->fileNames(path);
  }
  [[nodiscard]] std::vector<std::string> folderNames(std::string_view path) const override {
    return real_->folderNames(path);
  }
  void appendText(std::string_view path, std::string_view bytes) override {
    if (refuses && refuses(std::string(bytes))) throw Failure(error_number::kPathFileAccess);
    real_->appendText(path, bytes);
  }
  void writeText(std::string_view path, std::string_view bytes) override {
    if (refusesToWrite && refusesToWrite(std::string(path))) throw Failure(error_number::kPathFileAccess);
    real_->writeText(path, bytes);
  }

  // Whether an addition of these bytes is to fail with 75.
  std::function<bool(const std::string& bytes)> refuses;
  // Whether a file of this path is to be refused, with 75, when it is to be written anew.
  std::function<bool(const std::string& path)> refusesToWrite;

 private:
  std::unique_ptr<FileSystem> real_;
};

// Puts such a file system over that of the platform; it stays for the rest of the test.
inline FailingFiles& watchFiles() {
  auto watched = std::make_unique<FailingFiles>(std::move(platform().files));
  FailingFiles& files = *watched;
  platform().files = std::move(watched);
  return files;
}

}  // namespace trelvin::test
