// Files as the metabase provider needs them: read whole, told apart cheaply, replaced at one stroke.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/native_file.h"

namespace trelvin {

// Win32's own numbers, in HRESULT form, for what the metabase's numbers don't tell.
inline constexpr std::int32_t kDiskFullResult = static_cast<std::int32_t>(0x80070070U);
inline constexpr std::int32_t kPathBusyResult = static_cast<std::int32_t>(0x80070094U);

// Enough to see without reading that a file is another than it was.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds
  std::int64_t changed = 0;
  mode_t mode = 0;

  [[nodiscard]] bool sameContentAs(const FileIdentity& other) const {
    return device == other.device && inode == other.inode && size == other.size &&
           modified == other.modified && changed == other.changed;
  }
};

// Nothing when there is no file of that name.
std::optional<FileIdentity> identityOf(const std::string& path);

// All of these fail with 0x80070005 without the right, 0x80070070 on a full disk, 0x800CC819 else; the
// description names the file and the system's cause.
[[noreturn]] void failFromSystem(std::string_view action, const std::string& path);
FileIdentity identityOfOpen(const Descriptor& file);
Descriptor openMetabaseFile(const std::string& path, int flags, mode_t mode = 0);
void writeWhole(const Descriptor& file, std::string_view bytes, const std::string& path);
std::vector<char> readWhole(const Descriptor& file, const std::string& path);
std::vector<char> readWhole(const std::string& path);
// Fails with 0x80070005 when the file or its folder is marked read-only, whoever asks.
void requireWritableFile(const std::string& path, const FileIdentity& identity);

// Tells contents apart; the same for the same bytes on every machine. Not proof against intent.
class Fingerprint {
 public:
  void add(std::string_view bytes);
  [[nodiscard]] std::uint64_t value() const;

 private:
  void mix(std::uint64_t word);

  std::uint64_t state_ = 0x9E3779B97F4A7C15U;
  std::uint64_t length_ = 0;
  std::uint64_t partial_ = 0;
  unsigned filled_ = 0;  // bytes in partial_
};
std::uint64_t fingerprintOf(std::string_view bytes);

// A metabase written anew beside the one that it is to replace. Unless commit was called it is taken away
// again. Its name is always the same, so that what a killed process left behind is overwritten by the next
// one.
class MetabaseRewrite {
 public:
  explicit MetabaseRewrite(std::string path);
  MetabaseRewrite(const MetabaseRewrite&) = delete;
  MetabaseRewrite& operator=(const MetabaseRewrite&) = delete;
  ~MetabaseRewrite();

  void write(std::string_view bytes);
  // Everything is on the disk when it returns.
  void finish();
  // Takes the place of the old file, with its owner, mode and attributes. Durable when it returns.
  void commit();

  [[nodiscard]] std::uint64_t size() const { return size_; }
  [[nodiscard]] std::uint64_t fingerprint() const { return fingerprint_.value(); }

 private:
  void flush();
  void takeOver();

  std::string path_;
  std::string temporary_;
  Descriptor file_;
  std::string buffer_;
  Fingerprint fingerprint_;
  std::uint64_t size_ = 0;
  bool done_ = false;
};

void removeFile(const std::string& path);
void syncFolderOf(const std::string& path);

}  // namespace trelvin
