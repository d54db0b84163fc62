// What a touch of the mapping lists does: exclusions, find-and-replace pairs, new directories and bindings.
// An edit of a per-site list changes the row of the site in hand too. Failures are logged.
#pragma once

#include <cstdint>

namespace trelvin {

void cmdAddExclusion_Click();
void cmdAddNewValue_Click();
void cmdAddIP_Click();
void cmdAddSSLIP_Click();

// Ask for another text for the first selected entry. Cancel and an emptied field change nothing.
void lstDirectories_DblClick();
void lstNewIPs_DblClick();
void lstNewSSLIPs_DblClick();

// Backspace, which comes with the key press, and Delete, which comes with the key that is let go, take the
// first selected entry out: one press, one entry. Other keys do nothing.
void lstExclude_KeyPress(std::int32_t character);
void lstExclude_KeyUp(std::int32_t keyCode);
void lstOldValues_KeyPress(std::int32_t character);
void lstOldValues_KeyUp(std::int32_t keyCode);
void lstNewValues_KeyPress(std::int32_t character);
void lstNewValues_KeyUp(std::int32_t keyCode);
void lstNewIPs_KeyPress(std::int32_t character);
void lstNewIPs_KeyUp(std::int32_t keyCode);
void lstNewSSLIPs_KeyPress(std::int32_t character);
void lstNewSSLIPs_KeyUp(std::int32_t keyCode);

}  // namespace trelvin
