#include "platform/windows/list_builder.h"

#include <cstring>

namespace trelvin {

void ListBuilder::add(const ACE_HEADER* entry, std::uint8_t flags) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(entry);
  const std::size_t place = content_.size();
  content_.insert(content_.end(), bytes, bytes + entry->AceSize);
  content_[place + offsetof(ACE_HEADER, AceFlags)] = flags;
  ++count_;
}

bool ListBuilder::isTooLong() const {
  return content_.size() > 0xFFFF;
}

PACL ListBuilder::list() {
  ACL header{};
  header.AclRevision = ACL_REVISION_DS;
  header.AclSize = static_cast<WORD>(content_.size());
  header.AceCount = static_cast<WORD>(count_);
  std::memcpy(content_.data(), &header, sizeof header);
  return reinterpret_cast<PACL>(content_.data());
}

}  // namespace trelvin
