// Single keys of the job file, whose path is in sBackupJob. Nothing is kept between calls.
#pragma once

#include <string>
#include <string_view>

namespace trelvin {

// The key's value, cut to 49 characters and trimmed; the empty text for a missing key. With a job path of 50
// characters or more a missing key reads as the first 49 characters of that path.
std::string returnIniSetting(std::string_view section, std::string_view key);

// An empty value deletes the key. Returns what the platform's call returned.
bool saveIniSetting(std::string_view section, std::string_view key, std::string_view value);

}  // namespace trelvin
