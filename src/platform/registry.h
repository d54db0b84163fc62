// The registry, by its own calls: open a key, ask for a value, write one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trelvin {

enum class RegistryRoot { kLocalMachine };

// Types by the registry's numbers.
inline constexpr std::uint32_t kRegString = 1;
inline constexpr std::uint32_t kRegDword = 4;

class Registry {
 public:
  Registry() = default;
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;
  virtual ~Registry() = default;

  struct QueryResult {
    std::int32_t code = 0;  // 0 success, 2 no such key or value, else the system's number
    std::uint32_t type = 0;
    std::string data;  // the bytes as stored; a text may end in a NUL or may lack it
  };
  // Never throws: a failure is in the code.
  virtual QueryResult queryValue(RegistryRoot root, std::string_view subKey, std::string_view valueName) = 0;
  // Makes the key if need be. Returns 0 for success, else the system's number.
  virtual std::int32_t setValue(RegistryRoot root, std::string_view subKey, std::string_view valueName,
                                std::uint32_t type, std::string_view data) = 0;
};

}  // namespace trelvin
