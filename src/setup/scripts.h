// The statements in data/, as the build puts them into the program.
#pragma once

namespace trelvin::embedded {

extern const char* const kSettings;
extern const char* const kExcludedProperties;
extern const char* const kSites;

}  // namespace trelvin::embedded
