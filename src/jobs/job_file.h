// Jobs of the File menu, and the names of the sections that writer and reader of a job share.
#pragma once

#include <cstdint>
#include <string>

namespace trelvin {

inline constexpr const char* kJobDetails = "Job Details";
// Pairs are counted from 0, sites from 1.
std::string pairSection(std::int32_t number);
std::string siteSection(std::int32_t number);

// Asks for a file, which becomes the job in force, and writes what is selected and set in the window to it. A
// file of that name is deleted first, so that the keys stand in the order of writing. Without a selected site
// nothing is written. A failure is logged and leaves the file as far as it got.
void mnuSaveBackup_Click();

// Asks for a file, which the next save proposes; that is all. A job is read by an unattended run alone.
void mnuLoadBackup_Click();

}  // namespace trelvin
