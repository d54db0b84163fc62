// What switches the window's controls on and off.
#pragma once

namespace trelvin {

// The state that belongs to the export choice.
void RefreshForm();
// Off and on for everything with which a person could start or change something.
void DisableOptions();
void EnableOptions();

}  // namespace trelvin
