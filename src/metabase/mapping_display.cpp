#include "metabase/mapping_display.h"

#include "core/err.h"
#include "core/reporting.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

enum MappingTab : std::int32_t { kDirectoriesTab = 1, kIpTab = 2, kSslIpTab = 3 };

void showGroup(bool bVisible, std::initializer_list<Control*> group) {
  for (Control* control : group) control->visible = bVisible;
}

// Fills two lists from two columns of the rows, in reading order, and leaves the set open. Returns whether
// there were rows.
bool loadPairs(std::string sql, ListControl& first, const char* firstColumn, ListControl& second,
               const char* secondColumn) {
  first.clear();
  second.clear();
  openSettingsRows(std::move(sql));
  RecordSet& rows = bound(frmMain.rsSettings);
  if (rows.bof() && rows.eof()) return false;
  for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
    first.addItem(rows.field(firstColumn).toText());
    second.addItem(rows.field(secondColumn).toText());
  }
  return true;
}

void clearMappingLists(std::int32_t member) {
  for (ControlArray<ListControl>* list :
       {&frmMain.lstFolders, &frmMain.lstDirectories, &frmMain.lstOldIPs, &frmMain.lstNewIPs,
        &frmMain.lstOldSSLIPs, &frmMain.lstNewSSLIPs, &frmMain.lstFilesToCopy, &frmMain.lstCheckCopy}) {
    (*list)(member).clear();
  }
}

void hideMapping(std::int16_t iSite) {
  displayDirectories(false, iSite);
  displayIPs(false, iSite);
  displaySSLIPs(false, iSite);
}

}  // namespace

void displayDirectories(bool bVisible, std::int16_t iSite) {
  showGroup(bVisible, {&frmMain.fraFolders, &frmMain.fraNewDirectory, &frmMain.lstFolders(0),
                       &frmMain.lstDirectories(0)});
  const bool anyRow = loadPairs(statements::directoryRows(iSite), frmMain.lstFolders(0), "Folder",
                                frmMain.lstDirectories(0), "Directory");
  if (!anyRow) {
    tellUserAndLog(
        "Could not retreive directory information from the DB for this site - this export will fail");
  }
  bound(frmMain.rsSettings).close();
}

void displayIPs(bool bVisible, std::int16_t iSite) {
  handled("frmMain_displayIPs Error ", [&] {
    showGroup(bVisible, {&frmMain.fraNewIPs, &frmMain.fraOldIPs, &frmMain.lstNewIPs(0), &frmMain.lstOldIPs(0),
                         &frmMain.cmdAddIP});
    loadPairs(statements::bindingRows(iSite), frmMain.lstOldIPs(0), "OldIP", frmMain.lstNewIPs(0), "NewIP");
    bound(frmMain.rsSettings).close();
  });
}

void displaySSLIPs(bool bVisible, std::int16_t iSite) {
  handled("frmMain_displaySSLIPs Error ", [&] {
    showGroup(bVisible, {&frmMain.fraNewSSLIPs, &frmMain.fraOldSSLIPs, &frmMain.lstNewSSLIPs(0),
                         &frmMain.lstOldSSLIPs(0), &frmMain.cmdAddSSLIP});
    loadPairs(statements::sslBindingRows(iSite), frmMain.lstOldSSLIPs(0), "OldSSLIP", frmMain.lstNewSSLIPs(0),
              "NewSSLIP");
    bound(frmMain.rsSettings).close();
  });
}

void displayNewValues(bool bVisible) {
  handled("frmMain_displayNewValues Error ", [&] {
    frmMain.fraOldxValues.visible = bVisible;
    frmMain.fraNewxValues.visible = bVisible;
    frmMain.lstOldValues.visible = bVisible;
    frmMain.lstNewValues.visible = bVisible;
    frmMain.cmdAddNewValue.visible = bVisible;
  });
}

void displayMapping(std::int16_t iSite) {
  const std::int32_t tab = frmMain.tabNewValues.selectedTab();
  displayDirectories(tab == kDirectoriesTab, iSite);
  displayIPs(tab == kIpTab, iSite);
  displaySSLIPs(tab == kSslIpTab, iSite);
}

void ShowList(std::int16_t iSite) {
  handled("frmMain_ShowList Error ", [&] { displayMapping(iSite); });
}

void HideLists() {
  handled("frmMain_HideLists Error ", [] {
    for (std::int32_t member = 0; member < frmMain.lstFolders.count(); ++member) {
      hideMapping(static_cast<std::int16_t>(member));
    }
  });
}

void CloseDownLists() {
  handled("frmMain_CloseDownLists Error ", [] {
    std::int32_t counter = frmMain.iSiteCount - 1;
    for (std::int32_t member = 0; member < frmMain.lstFolders.count(); ++member) {
      if (counter > 0) {
        --counter;
      } else {
        clearMappingLists(counter);
        hideMapping(static_cast<std::int16_t>(counter));
      }
    }
    frmMain.abDetailsRead.assign(1, false);
  });
}

}  // namespace trelvin
