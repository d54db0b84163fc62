// Filling lstSites and its hidden twin lstSiteIndexes from a server or from the data database.
#pragma once

namespace trelvin {

// Lists what the import choice names. Both export buttons are off meanwhile and on again whatever happened.
void cmdPopulate_Click();

// Lists the sites of txtImportServer; entries of lstSiteIndexes are their ADsPaths. Replaces the former
// listing whole, tmp rows and edits of the mapping included. Failures from the first bind on are ignored and
// tested by hand.
void populateFromServer();
// Lists the sites of DBData; entries of lstSiteIndexes are their IDs. A failing database gives an empty or
// partial list, with the log as the only trace.
void populateFromDatabase();

}  // namespace trelvin
