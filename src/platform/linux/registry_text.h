// The registry editor's text form: what a text says about one value, and how another one is put in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trelvin::registry_text {

inline constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";

// A stretch of the text.
struct Stretch {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct Found {
  // What stands behind "name"=, for the value in force.
  std::optional<Stretch> data;
  // Where a new value would go: behind the last one of the key's last section that no deletion follows.
  std::optional<std::size_t> newValuePlace;
};

// Key with its root, such as HKEY_LOCAL_MACHINE\Software; the empty name is the key's default value.
Found find(std::string_view text, std::string_view key, std::string_view valueName);

// A value's type and bytes.
struct Typed {
  std::uint32_t type = 0;
  std::string data;
};

// What a value's text stands for; none when it makes no sense. areTextsWide tells of what hex form texts are:
// UTF-16 in version 5, in one byte for each character in the older REGEDIT4.
std::optional<Typed> parseData(std::string_view data, bool areTextsWide);
std::string formatData(const Typed& value);

// "name", or @ for the empty name.
std::string formatName(std::string_view valueName);

}  // namespace trelvin::registry_text
