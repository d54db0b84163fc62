// Windows' own form of an access list, read and put together entry by entry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/windows/windows_api.h"

namespace trelvin {

// An object without a list has no entries.
template <typename Visit>
void forEachEntry(PACL list, Visit&& visit) {
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (::GetAce(list, i, &entry)) visit(static_cast<const ACE_HEADER*>(entry));
  }
}

inline bool isInherited(const ACE_HEADER* entry) {
  return (entry->AceFlags & INHERITED_ACE) != 0;
}

class ListBuilder {
 public:
  // An entry's bytes, and flags to take the place of its own.
  void add(const ACE_HEADER* entry, std::uint8_t flags);
  void add(const ACE_HEADER* entry) { add(entry, entry->AceFlags); }

  // Longer than Windows has lists.
  [[nodiscard]] bool isTooLong() const;
  // Valid as long as the builder and until the next entry.
  [[nodiscard]] PACL list();

 private:
  std::vector<std::uint8_t> content_ = std::vector<std::uint8_t>(sizeof(ACL));
  std::size_t count_ = 0;
};

}  // namespace trelvin
