// Access lists in Windows' own text form.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <sddl.h>

namespace trelvin::test {

struct LocalFreer {
  void operator()(void* memory) const { ::LocalFree(memory); }
};
using LocalDescriptor = std::unique_ptr<void, LocalFreer>;

inline LocalDescriptor descriptorOf(const std::string& text) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  EXPECT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorA(text.c_str(), SDDL_REVISION_1,
                                                                     &descriptor, nullptr))
      << text;
  return LocalDescriptor(descriptor);
}

// Valid as long as the descriptor.
inline PACL listIn(const LocalDescriptor& descriptor) {
  BOOL isPresent = FALSE;
  BOOL isDefaulted = FALSE;
  PACL list = nullptr;
  EXPECT_TRUE(::GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &list, &isDefaulted));
  return list;
}

// The entries alone: (A;OICI;FA;;;SY)(A;;FR;;;WD)
inline std::string entriesOf(PSECURITY_DESCRIPTOR descriptor) {
  char* text = nullptr;
  EXPECT_TRUE(::ConvertSecurityDescriptorToStringSecurityDescriptorA(
      descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
  const std::string entries = text;
  ::LocalFree(text);
  const std::size_t first = entries.find('(');
  return first == std::string::npos ? std::string() : entries.substr(first);
}

inline std::string entriesOf(PACL list) {
  SECURITY_DESCRIPTOR descriptor{};
  ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  ::SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
  return entriesOf(&descriptor);
}

// Entries as this machine spells them.
inline std::string spelled(const std::string& entries) {
  return entriesOf(descriptorOf("D:" + entries).get());
}

}  // namespace trelvin::test
