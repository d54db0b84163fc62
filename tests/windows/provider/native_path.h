#pragma once

#include <string>

namespace trelvin::test {

// Where a file lies for a program of the machine that Windows is emulated on. 0x800706BA on a Windows that is
// not emulated, 76 for what lies nowhere.
std::string nativePath(const std::string& path);

}  // namespace trelvin::test
