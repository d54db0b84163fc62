// Files by the system's own calls: what the facilities of this folder share. Paths are native here.
// Every failure throws std::system_error with the system's number; each facility turns it into its own form.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>
#include <string_view>

namespace trelvin {

// An open file descriptor, closed with its owner.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor();

  [[nodiscard]] int get() const { return number_; }
  // Closes at once and says what a destructor could not: some file systems report a failed write only here.
  void close();

 private:
  int number_ = -1;
};

// The system's text for one of its error numbers.
std::string systemText(int errorNumber);

// Opens with close-on-exec, so that no started program holds the file.
Descriptor openFile(const std::string& path, int flags, mode_t mode = 0);

// Writes all of the bytes, however many calls it takes.
void writeAll(const Descriptor& file, std::string_view bytes);

// Whether a file carries the read-only attribute, which stands for a mode without any write bit. Asked apart
// from the rights of whoever runs the program, because an administrator of the machine has all of them.
bool isReadOnly(const struct stat& status);

// The whole of a regular file. EFBIG for one of more than 64 MB, EINVAL for what is no regular file: a job
// file or a registry is neither, and a pipe would never end.
std::string readFile(const std::string& path);

// A new content for a file, written beside it; it takes the file's place whole or not at all. A killed
// process may leave a hidden file of the name .trelvin-*.tmp beside it, which may be deleted.
class Replacement {
 public:
  // newMode serves when there is no such file yet, less the process's mask; otherwise the mode and, where the
  // system lets it, the owner of the file are kept. A symbolic link stays one: the file that it leads to is
  // replaced. EACCES for a read-only file.
  Replacement(const std::string& path, mode_t newMode);
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement();  // removes what was written, unless it was committed

  [[nodiscard]] const Descriptor& file() const { return file_; }
  void setMode(mode_t mode);
  // The content is on the disk and has its name when this returns.
  void commit();
  // The same without the wait for the disk: whole for everybody who looks, but a power cut may take it away.
  void commitWithoutFlush();

 private:
  void createBeside(mode_t mode);

  std::string target_;
  std::string temporary_;
  Descriptor file_;
};

// The folder that a native path lies in.
std::string folderOf(const std::string& path);

}  // namespace trelvin
