// What the three export directions have in common: the checks before a run, the Abort button, the progress
// texts and the ends of a run. The phases stand here in the order in which a run goes through them.
#pragma once

#include <cstdint>
#include <string>

#include "core/value.h"
#include "platform/metabase.h"
#include "window/controls.h"

namespace trelvin {

// The export buttons.
void cmdExportFile_Click();
void cmdExportServer_Click();

// A click on the button that reads "Abort": asks the run below it on the call stack to stop. Returns whether
// it was one; the run sees the flags at its next test.
bool acceptAbortClick(const Button& button);

// Tells the user when no site is selected; the run then goes straight to its normal end.
bool anySiteSelected();

// The long warning. Records the answer in bExportCancelled; a silent run is not asked and leaves the flag as
// it was.
void showExportWarnings();

// Both buttons read "Export" again, and the settings can be changed.
void putButtonsBack();

// With the flag set: puts the buttons back and returns true, with no further word.
bool leaveWhenCancelled();

// Towards IIS 6 from an older server: asks whether to add a pair for the Windows folder, unless there is one
// already.
void suggestSystemDirectory();

// Clears flags and output, and turns the button into "Abort".
void beginRun(Button& button, const std::string& logLine);

// Which site of how many is in hand; the same for status panel and log.
std::string siteStatus(std::int16_t siteCounter, std::int32_t index);
void announceSite(std::int16_t siteCounter, std::int32_t index);

// Loads the lists of a line of lstSites.
void loadSiteLists(std::int16_t site);

// Tests whether the root of a source site is what it must be. Warns in a silent run and goes on, else asks
// whether to stop. The words in the site's place are the caller's loop counter, not its name.
void testForCorruptMetabase(const NodeHandle& site, const Value& counterInPlaceOfName);

// "Completed", one site more, a turn for events.
void closeSite(std::int16_t& siteCounter);

// The ends of a run; both put the buttons back.
void endRun(double lastProgress);
void endAbortedRun();

}  // namespace trelvin
