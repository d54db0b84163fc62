// The attribute in which a file or a folder keeps its access list. Paths are native. Every failure throws
// std::system_error with the system's number.
#pragma once

#include <string>

namespace trelvin {

inline constexpr const char* kAccessListAttribute = "user.trelvin.acl";

// The attribute's text; empty when the path has no such attribute.
std::string readAccessListAttribute(const std::string& nativePath);

// Puts the text in, whole or not at all. The empty text takes the attribute away.
void writeAccessListAttribute(const std::string& nativePath, const std::string& text);

}  // namespace trelvin
