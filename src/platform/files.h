// Files and folders, after Scripting.FileSystemObject. Paths are in the program's own (Windows) form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

class FileSystem {
 public:
  FileSystem() = default;
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;
  virtual ~FileSystem() = default;

  [[nodiscard]] virtual bool fileExists(std::string_view path) const = 0;
  [[nodiscard]] virtual bool folderExists(std::string_view path) const = 0;
  // 58 when something of that name exists, 76 when the parent doesn't, 70 without the right.
  virtual void createFolder(std::string_view path) = 0;
  // Replaces an existing destination; the destination appears whole or not at all. 53 when the source isn't
  // there, 76 when the destination's folder isn't, 70 without the right or for a read-only destination, 61 on
  // a full disk.
  virtual void copyFile(std::string_view source, std::string_view destination) = 0;
  // 53 when it isn't there, 70 without the right or for a read-only file.
  virtual void deleteFile(std::string_view path) = 0;
  // GetFile(path).Attributes = attributes. Only read-only (1) has a meaning everywhere. 53 when it isn't
  // there.
  virtual void setAttributes(std::string_view path, int attributes) = 0;

  // Names of the files and of the folders right in a folder (GetFolder(path).Files, .SubFolders), in the
  // order of names. 76 when the folder isn't there, 70 without the right.
  [[nodiscard]] virtual std::vector<std::string> fileNames(std::string_view folder) const = 0;
  [[nodiscard]] virtual std::vector<std::string> folderNames(std::string_view folder) const = 0;

  // Opens the file for appending, making it if need be, writes the bytes and closes it. A name without a
  // folder lies in the current directory. 75 with the path and the system's text when it can't be.
  virtual void appendText(std::string_view path, std::string_view bytes) = 0;
  // The same for a new content of the file: it replaces what was there, whole or not at all. A name that ends
  // in .exe gives a file that may be started.
  virtual void writeText(std::string_view path, std::string_view bytes) = 0;
};

}  // namespace trelvin
