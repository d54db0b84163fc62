// A folder of its own for each test, gone when the test ends.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace trelvin::test {

class TempFolder {
 public:
  TempFolder() : path_(makeUnique()) {}
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  // The native path of a name in it. Names are UTF-8.
  [[nodiscard]] std::filesystem::path operator/(std::string_view relative) const {
    return path_ / std::u8string(relative.begin(), relative.end());
  }

  // Writes a file, byte for byte, with the folders that lead to it. Returns its native path. Throws when it
  // can't.
  std::filesystem::path write(std::string_view relative, std::string_view bytes) const {
    const std::filesystem::path file = *this / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw std::runtime_error("can't write " + file.string());
    return file;
  }

  // Makes a folder, with those that lead to it. Returns its native path.
  std::filesystem::path makeFolder(std::string_view relative) const {
    std::filesystem::create_directories(*this / relative);
    return *this / relative;
  }

  // A file's bytes. Throws when there is no such file, so that a missing one never passes for an empty one.
  [[nodiscard]] std::string read(std::string_view relative) const {
    const std::filesystem::path file = *this / relative;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("can't read " + file.string());
    std::ostringstream bytes;
    if (stream.peek() != std::ifstream::traits_type::eof()) bytes << stream.rdbuf();
    return bytes.str();
  }

  [[nodiscard]] bool has(std::string_view relative) const {
    return std::filesystem::exists(std::filesystem::symlink_status(*this / relative));
  }

 private:
  // Test programs run side by side, so a name is tried until the folder is new.
  static std::filesystem::path makeUnique() {
    static std::atomic<unsigned> counter{0};
    std::random_device random;
    for (int attempts = 0; attempts < 100; ++attempts) {
      const std::string name = "trelvin-test-" + std::to_string(random()) + "-" + std::to_string(++counter);
      std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
      if (std::filesystem::create_directory(folder)) return folder;
    }
    throw std::runtime_error("can't make a temporary folder");
  }

  std::filesystem::path path_;
};

}  // namespace trelvin::test
