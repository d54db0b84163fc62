// The tables in data/ as the build puts them into the program.
#pragma once

namespace trelvin::embedded {

extern const char* const kMetabaseProperties;
extern const char* const kMetabaseDefaults;
extern const char* const kMetabaseClasses;
extern const char* const kMetabaseClassProperties;

}  // namespace trelvin::embedded
