// What both directions towards a server do at the target.
#pragma once

#include <cstdint>
#include <string>

#include "core/value.h"
#include "platform/metabase.h"

namespace trelvin {

class ListControl;

// "IIS://" + export server + "/" + service, the site of a number below it, and any node below that. The text
// of the box is read anew for each use.
std::string targetServicePath();
std::string targetSitePath(std::int16_t siteNumber);

// Tells the user when no target is named; the run then goes straight to its normal end.
bool targetServerNamed();

// Binds the target's service node. An unreachable target cancels the run unless it is silent; a silent run
// goes on against no target.
void connectToTarget(NodeHandle& service);

// The number of the first site by the creation mode: 1 for Overwrite, else one more than the highest on the
// target. Fails with 6 beyond 16 bits.
std::int16_t firstSiteNumber(const NodeHandle& service);

// Reaches the target, says between which versions the run goes, and chooses the first number. False when the
// run is over: the target can't be reached, and the buttons are back.
bool beginAtTarget(std::int16_t& siteNumber);

// "Error ", number and description of the error state, the latter two without a blank between them: how most
// failure lines of these directions end.
std::string errorAndCause();

// Writes the new bindings of a list to a node; the counter is left as a loop leaves it.
void putBindings(const NodeHandle& target, const ListControl& list, const char* property, Value& counter);

// Binds the site's root into the handle and appends the marker header to it. A root without custom headers,
// as FTP sites have it, gets none.
void stampSite(NodeHandle& target, std::int16_t siteNumber);

// With bStartWebs: starts the site, whatever it is.
void startSite(std::int16_t siteNumber);

// The end of a site's work: progress, the next number, "Completed", one site more, a turn for events.
void leaveSite(std::int16_t& siteNumber, std::int16_t& siteCounter);

}  // namespace trelvin
