// A file that only grows, at its end, in many small steps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/linux/native_file.h"

namespace trelvin {

// Where the file system lets it, the end of the file lies in memory, ahead of which room has been taken on
// the disk, so that an append costs a copy and no call of the system. What was appended is the system's all
// the same and survives a killed process. Elsewhere, and when there is no room ahead on a disk that is nearly
// full, each append is a write.
//
// As long as the object lives, the file may go on in zeros behind its length. Its descriptor must be open for
// reading and writing, and for appending. Who cuts the file meanwhile, or takes the disk away, ends the
// process at its next append, as if it were killed.
class AppendedFile {
 public:
  AppendedFile(Descriptor file, std::string path) : file_(std::move(file)), path_(std::move(path)) {}
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;
  ~AppendedFile();

  // What the bytes begin with, and what tells that they are there: it is written last.
  static constexpr std::size_t kLead = 4;
  // Fails as writeWhole does, and then leaves no trace. At least so many bytes as the lead has.
  void append(std::string_view bytes);
  // Takes away what is behind a length.
  void cutTo(std::uint64_t length);
  // Everything is on the disk when it returns.
  void sync();

  [[nodiscard]] const Descriptor& file() const { return file_; }
  [[nodiscard]] std::uint64_t length() const { return length_; }

 private:
  bool takeRoom(std::size_t size);
  void appendByWriting(std::string_view bytes);
  void unmap();

  Descriptor file_;
  std::string path_;
  std::uint64_t length_ = 0;
  bool mapsItsEnd_ = true;
  char* window_ = nullptr;  // a stretch of the file in memory
  std::uint64_t windowBegin_ = 0;
  std::uint64_t windowEnd_ = 0;
};

}  // namespace trelvin
