// A file system that stands on another one, keeps a record of the questions about folders and files, and
// makes chosen ones fail.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/err.h"
#include "fakes/failing_files.h"
#include "platform/platform.h"

namespace trelvin::test {

class RecordedFiles : public FailingFiles {
 public:
  using FailingFiles::FailingFiles;

  [[nodiscard]] bool fileExists(std::string_view path) const override {
    note("fileExists", path);
    return FailingFiles::fileExists(path);
  }
  [[nodiscard]] bool folderExists(std::string_view path) const override {
    note("folderExists", path);
    return FailingFiles::folderExists(path);
  }
  void createFolder(std::string_view path) override {
    note("createFolder", path);
    FailingFiles::createFolder(path);
  }
  [[nodiscard]] std::vector<std::string> fileNames(std::string_view path) const override {
    note("fileNames", path);
    return FailingFiles::fileNames(path);
  }
  [[nodiscard]] std::vector<std::string> folderNames(std::string_view path) const override {
    note("folderNames", path);
    return FailingFiles::folderNames(path);
  }

  // The paths that an operation was called with, in order; failed calls are among them.
  [[nodiscard]] std::vector<std::string> pathsOf(std::string_view operation) const {
    std::vector<std::string> paths;
    for (const auto& [called, path] : calls) {
      if (called == operation) paths.push_back(path);
    }
    return paths;
  }
  // Fails every call of an operation with a path.
  void failOn(const std::string& operation, const std::string& path, std::int32_t number) {
    rule = [=](const std::string& called, const std::string& calledPath) {
      return called == operation && calledPath == path ? std::optional(number) : std::nullopt;
    };
  }

  // Says which number a call fails with; nothing lets it through.
  std::function<std::optional<std::int32_t>(const std::string& operation, const std::string& path)> rule;
  mutable std::vector<std::pair<std::string, std::string>> calls;

 private:
  void note(const char* operation, std::string_view path) const {
    calls.emplace_back(operation, path);
    const auto number = rule ? rule(operation, std::string(path)) : std::nullopt;
    if (number) throw Failure(*number);
  }
};

// Puts such a file system over that of the platform; it stays for the rest of the test.
inline RecordedFiles& recordFiles() {
  auto recorded = std::make_unique<RecordedFiles>(std::move(platform().files));
  RecordedFiles& files = *recorded;
  platform().files = std::move(recorded);
  return files;
}

}  // namespace trelvin::test
