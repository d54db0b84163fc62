#include "window/mapping_editing.h"

#include <string>

#include "core/err.h"
#include "platform/platform.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

constexpr const char* kAddressPrompt =
    "Please enter the new IP address in the format IP:Port:HostName ie. 127.0.0.1:80:www.example.com";
constexpr const char* kAddressTitle = "New IP Addresses";

// Empty for Cancel.
std::string ask(const char* title, const char* prompt, const std::string& defaultText = {}) {
  return platform().dialogs->inputBox(title, prompt, defaultText);
}

// -1 when nothing is selected.
std::int32_t firstSelected(const ListControl& list) {
  if (list.selCount() < 1) return -1;
  std::int32_t index = 0;
  while (!list.selected(index)) ++index;
  return index;
}

using AddRow = std::string (*)(std::int16_t site, const Value& binding, std::int32_t row);
using ChangeRow = std::string (*)(std::int16_t site, std::int32_t row, const Value& text);
using DeleteRow = std::string (*)(std::int16_t site, std::int32_t row);

// The list of old addresses gets its entry when the rows are next shown.
void addAddress(ListControl& list, AddRow addRow) {
  const std::string address = ask(kAddressTitle, kAddressPrompt);
  if (address.empty()) return;
  list.addItem(address);
  executeOnSettings(addRow(frmMain.iCurrentSite, address, list.listCount() - 1));
}

void editSelected(ListControl& list, const char* title, const char* prompt, ChangeRow changeRow) {
  const std::int32_t index = firstSelected(list);
  if (index < 0) return;
  const std::string text = ask(title, prompt, list.list(index));
  if (text.empty()) return;
  list.setList(index, text);
  executeOnSettings(changeRow(frmMain.iCurrentSite, index, text));
}

void deleteExclusion() {
  const std::int32_t index = firstSelected(frmMain.lstExclude);
  if (index >= 0) frmMain.lstExclude.removeItem(index);
}

// The pair goes whole, whichever of its sides was selected.
void deletePair(const ListControl& selection) {
  const std::int32_t index = firstSelected(selection);
  if (index < 0) return;
  frmMain.lstOldValues.removeItem(index);
  frmMain.lstNewValues.removeItem(index);
}

// Rows behind the one that goes keep their numbers, so until the lists are shown anew an entry there stands
// one line above its row. That is how the rows have always been kept. The row goes first: an address just
// added has no old entry to take out yet, and what has left the screen must not travel.
void deleteAddress(ListControl& newList, ListControl& oldList, DeleteRow deleteRow) {
  const std::int32_t index = firstSelected(newList);
  if (index < 0) return;
  executeOnSettings(deleteRow(frmMain.iCurrentSite, index));
  newList.removeItem(index);
  oldList.removeItem(index);
}

void deleteIP() {
  deleteAddress(frmMain.lstNewIPs(0), frmMain.lstOldIPs(0), statements::deleteBinding);
}

void deleteSSLIP() {
  deleteAddress(frmMain.lstNewSSLIPs(0), frmMain.lstOldSSLIPs(0), statements::deleteSslBinding);
}

}  // namespace

void cmdAddExclusion_Click() {
  handled("frmMain_cmdAddExclusion Error ", [] {
    const std::string& name = frmMain.txtAddExclusion.text;
    if (!name.empty()) frmMain.lstExclude.addItem(name);
  });
}

void cmdAddNewValue_Click() {
  handled("frmMain_cmdAddNewValue Error ", [] {
    const std::string oldValue = ask("Old Value", "Please enter the Old value to look for");
    const std::string newValue = ask("New Value", "Please enter the New value to replace the Old one");
    if (oldValue.empty() || newValue.empty()) return;
    frmMain.lstOldValues.addItem(oldValue);
    frmMain.lstNewValues.addItem(newValue);
  });
}

void cmdAddIP_Click() {
  handled("frmMain_cmdAddIP Error ", [] { addAddress(frmMain.lstNewIPs(0), statements::addNewBindingRow); });
}

void cmdAddSSLIP_Click() {
  handled("frmMain_cmdAddSSLIP Error ",
          [] { addAddress(frmMain.lstNewSSLIPs(0), statements::addNewSslBindingRow); });
}

void lstDirectories_DblClick() {
  handled("frmMain_lstDirectories_DblClick Error ", [] {
    editSelected(frmMain.lstDirectories(0), "Directory configuration", "Please specify the new directory",
                 statements::changeDirectory);
  });
}

void lstNewIPs_DblClick() {
  handled("frmMain_lstNewIPs_DblClick Error ", [] {
    editSelected(frmMain.lstNewIPs(0), kAddressTitle, kAddressPrompt, statements::changeBinding);
  });
}

void lstNewSSLIPs_DblClick() {
  handled("frmMain_lstNewSSLIPs_DblClick Error ", [] {
    editSelected(frmMain.lstNewSSLIPs(0), "New SSL IP Addresses", kAddressPrompt,
                 statements::changeSslBinding);
  });
}

void lstExclude_KeyPress(std::int32_t character) {
  if (character == key::kBackspace) handled("frmMain_lstExclude_keypress Error ", deleteExclusion);
}

void lstExclude_KeyUp(std::int32_t keyCode) {
  if (keyCode == key::kDelete) handled("frmMain_lstExclude_keyup Error ", deleteExclusion);
}

void lstOldValues_KeyPress(std::int32_t character) {
  if (character != key::kBackspace) return;
  handled("frmMain_lstOldValues_keypress Error ", [] { deletePair(frmMain.lstOldValues); });
}

void lstOldValues_KeyUp(std::int32_t keyCode) {
  if (keyCode != key::kDelete) return;
  handled("frmMain_lstOldValues_keyup Error ", [] { deletePair(frmMain.lstOldValues); });
}

void lstNewValues_KeyPress(std::int32_t character) {
  if (character != key::kBackspace) return;
  handled("frmMain_lstNewValues_keypress Error ", [] { deletePair(frmMain.lstNewValues); });
}

void lstNewValues_KeyUp(std::int32_t keyCode) {
  if (keyCode != key::kDelete) return;
  handled("frmMain_lstNewValues_keyup Error ", [] { deletePair(frmMain.lstNewValues); });
}

void lstNewIPs_KeyPress(std::int32_t character) {
  if (character == key::kBackspace) handled("frmMain_lstNewIPs_keypress Error ", deleteIP);
}

void lstNewIPs_KeyUp(std::int32_t keyCode) {
  if (keyCode == key::kDelete) handled("frmMain_lstNewIPs_keyup Error ", deleteIP);
}

// The capital of this one label is what readers of old logs search for.
void lstNewSSLIPs_KeyPress(std::int32_t character) {
  if (character == key::kBackspace) handled("frmMain_lstNewSSLIPs_Keypress Error ", deleteSSLIP);
}

void lstNewSSLIPs_KeyUp(std::int32_t keyCode) {
  if (keyCode == key::kDelete) handled("frmMain_lstNewSSLIPs_keyup Error ", deleteSSLIP);
}

}  // namespace trelvin
