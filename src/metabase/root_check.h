// The check and the repair of a source metabase. The root of every web site must be a virtual directory; one
// that has lost this type does damage where the site is copied to.
#pragma once

namespace trelvin {

// Tests the web sites of txtImportServer and reports the faulty ones. Reads only.
void mnuCheckMetabase_Click();

// Gives the faulty roots of txtImportServer their type back, once the user has said that there is a backup,
// and lists the sites anew. The one routine that changes a source server; each repair is committed by itself.
void mnuFixMetabase_Click();

// Both end at the first failure with their line in the log: no box, and the status panel as it was then.

}  // namespace trelvin
