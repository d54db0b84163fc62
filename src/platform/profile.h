// Private profile calls: single keys of an INI file, opened and closed by every call.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trelvin {

class ProfileFiles {
 public:
  ProfileFiles() = default;
  ProfileFiles(const ProfileFiles&) = delete;
  ProfileFiles& operator=(const ProfileFiles&) = delete;
  virtual ~ProfileFiles() = default;

  // Fills the buffer with the key's value, or with the default when the section or the key isn't there, cut
  // so that a NUL fits behind it, writes that NUL and leaves the rest of the buffer as it was. Returns the
  // number of characters copied, without the NUL. Sections and keys match in any case, the first match wins;
  // blanks around a value are dropped, and one pair of quotes around it. The buffer counts characters of the
  // text, not bytes.
  virtual std::uint32_t getString(std::string_view section, std::string_view key,
                                  std::string_view defaultValue, std::string& buffer, std::uint32_t size,
                                  std::string_view file) = 0;
  // Writes the key, making file, section and key as needed; no value deletes the key. Returns false when the
  // file can't be written; what was in it is then untouched.
  virtual bool writeString(std::string_view section, std::string_view key,
                           std::optional<std::string_view> value, std::string_view file) = 0;
};

}  // namespace trelvin
