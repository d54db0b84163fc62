// The mapping lists, which are views of tmpSettings.
#pragma once

#include <cstdint>

namespace trelvin {

// Show or hide one group of lists and fill it with the rows of a line of lstSites. Hiding fills it too.
// displayDirectories tells the user when there are no rows, and its failures go to the caller; the others log
// theirs.
void displayDirectories(bool bVisible, std::int16_t iSite);
void displayIPs(bool bVisible, std::int16_t iSite);
void displaySSLIPs(bool bVisible, std::int16_t iSite);
// Shows or hides the find-and-replace group.
void displayNewValues(bool bVisible);

// Shows the group of the tab in use for a site and hides the other two. Failures go to the caller.
void displayMapping(std::int16_t iSite);
// The same; failures are logged.
void ShowList(std::int16_t iSite);
void HideLists();
// Takes down what a listing left on display. The lists are emptied only when the listing had one site.
void CloseDownLists();

}  // namespace trelvin
