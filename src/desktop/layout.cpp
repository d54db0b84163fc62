#include "desktop/layout.h"

#include <cctype>
#include <optional>
#include <utility>

#include "core/text.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"
#include "window/frm_splash.h"

namespace trelvin::desktop {

namespace {

using Places = std::vector<Place>;

Place row(Places places, int share = 0) {
  return {.kind = Place::Kind::kRow, .places = std::move(places), .share = share};
}

Place column(Places places, int share = 0) {
  return {.kind = Place::Kind::kColumn, .places = std::move(places), .share = share};
}

Place stack(Places places, int share = 0) {
  return {.kind = Place::Kind::kStack, .places = std::move(places), .share = share};
}

Place gap() {
  return {.kind = Place::Kind::kGap, .share = 1};
}

Place heading(std::string frame, Places places, int share = 0) {
  return {.control = std::move(frame), .places = std::move(places), .share = share, .isHeading = true};
}

Place importPlace() {
  return {.control = "fraImportType",
          .places = {{.control = "TabImportType"},
                     row({{.control = "txtImportServer",
                           .label = "Server",
                           .accessKeys = "V",
                           .returnPresses = "cmdPopulate",
                           .share = 1,
                           .characters = 12}}),
                     row({{.control = "lstIMIISVer", .label = "Version", .isDropDown = true},
                          gap(),
                          {.control = "cmdPopulate", .accessKeys = "L"}})}};
}

Place siteTypePlace() {
  return {
      .control = "Frame4",
      .places = {row({{.control = "optExportWeb", .accessKeys = "W"}, {.control = "optExportFTP"}, gap()})}};
}

Place sitesPlace() {
  return {.control = "Frame1",
          .places = {{.control = "lstSites", .share = 1, .lines = 4, .characters = 24, .hasMarks = true}},
          .accessKeys = "B",
          .share = 3};
}

Place exclusionsPlace() {
  return {.control = "fraExclude",
          .places = {{.control = "lstExclude", .share = 1, .lines = 3, .characters = 20},
                     {.control = "lblAddExclusion", .names = "txtAddExclusion"},
                     row({{.control = "txtAddExclusion",
                           .returnPresses = "cmdAddExclusion",
                           .share = 1,
                           .characters = 10},
                          {.control = "cmdAddExclusion"}})},
          .share = 2};
}

Place exportServerPlace() {
  return heading(
      "fraExportServer",
      {row({{.control = "lblExportServer", .names = "txtExportServer", .accessKeys = "P"},
            {.control = "txtExportServer", .share = 1, .characters = 10}}),
       row({{.control = "lstEXIISVer", .label = "Version", .isDropDown = true}, gap()}),
       {.control = "optCreateWebs", .accessKeys = "N"},
       {.control = "optOverwriteWebs", .accessKeys = "X"},
       row({{.control = "optOverwritePreserve"}, gap(), {.control = "cmdExportServer", .accessKeys = "O"}})});
}

// The two buttons never show together, so that they share their key.
Place exportFilePlace() {
  return heading(
      "fraExportFile",
      {{.control = "lblExportFile"}, gap(), row({gap(), {.control = "cmdExportFile", .accessKeys = "O"}})});
}

Place exportPlace() {
  return {.control = "fraExportSettings",
          .places = {{.control = "TabExportType"}, stack({exportServerPlace(), exportFilePlace()})},
          .share = 3};
}

Place preferencesPlace() {
  return {.control = "fraPreferences",
          .places = {{.control = "lblExportOnly"},
                     {.control = "chkCopyFiles", .accessKeys = "E"},
                     {.control = "chkSetFilePerms", .accessKeys = "M", .isIndented = true},
                     {.control = "chkFastPermissions", .accessKeys = "R", .isIndented = true},
                     {.control = "chkCopyIIS", .accessKeys = "G"},
                     {.control = "chkStartWebs", .accessKeys = "U"},
                     {.control = "chkRunSilent", .accessKeys = "Y"},
                     gap()},
          .share = 2};
}

Place listPlace(std::string list) {
  return {.control = std::move(list), .share = 1, .lines = 3, .characters = 18};
}

Place pairPlace(std::string oldFrame, std::string oldList, std::string newFrame, std::string newList) {
  return row({heading(std::move(oldFrame), {listPlace(std::move(oldList))}, 1),
              heading(std::move(newFrame), {listPlace(std::move(newList))}, 1)},
             1);
}

Place withButton(Place pair, std::string button) {
  return column({std::move(pair), row({gap(), {.control = std::move(button), .accessKeys = "A"}})}, 1);
}

// "&Find && Replace" as it stands would share its key with the File menu, and then neither would answer.
Place mappingPlace() {
  return {
      .control = "fraNewValues",
      .places = {{.control = "tabNewValues", .accessKeys = "DISC"},
                 stack(
                     {pairPlace("fraFolders", "lstFolders", "fraNewDirectory", "lstDirectories"),
                      withButton(pairPlace("fraOldIPs", "lstOldIPs", "fraNewIPs", "lstNewIPs"), "cmdAddIP"),
                      withButton(pairPlace("fraOldSSLIPs", "lstOldSSLIPs", "fraNewSSLIPs", "lstNewSSLIPs"),
                                 "cmdAddSSLIP"),
                      withButton(pairPlace("fraOldxValues", "lstOldValues", "fraNewxValues", "lstNewValues"),
                                 "cmdAddNewValue")},
                     1)},
      .share = 3};
}

Place outputPlace() {
  return column({{.control = "lblOutput", .names = "lstOutput"},
                 {.control = "lstOutput", .share = 1, .lines = 4, .characters = 30}},
                2);
}

std::vector<Menu> mainMenus() {
  return {{"mnuFile", {"mnuSaveBackup", "mnuLoadBackup", "", "mnuDBLoc", "mnuChkUpdates", "", "mnuExit"}},
          {"mnuTools", {"mnuCheckMetabase", "mnuFixMetabase", "", "mnuProxyServer"}},
          {"mnuHelp", {"mnuAbout", "mnuDocumentation", "mnuHomePage", "mnuCredits"}}};
}

bool takesFocus(const Control& control) {
  return dynamic_cast<const Button*>(&control) != nullptr ||
         dynamic_cast<const TextBox*>(&control) != nullptr ||
         dynamic_cast<const CheckBox*>(&control) != nullptr ||
         dynamic_cast<const OptionButton*>(&control) != nullptr ||
         dynamic_cast<const ListControl*>(&control) != nullptr ||
         dynamic_cast<const TabStrip*>(&control) != nullptr;
}

// The caption of the control that stands next to another one: of the label that names it, or of the
// innermost frame around it.
std::optional<std::string> captionAround(const Form& form, const Place& place, std::string_view control,
                                         const std::string& frameCaption) {
  if (place.control == control) return place.label.empty() ? frameCaption : place.label;
  const Control* own = form.control(place.control);
  const std::string& inner = own != nullptr && !place.places.empty() ? own->caption : frameCaption;
  for (const Place& each : place.places) {
    if (each.names == control && form.control(each.control) != nullptr) {
      return form.control(each.control)->caption;
    }
  }
  for (const Place& each : place.places) {
    if (auto found = captionAround(form, each, control, inner)) return found;
  }
  return std::nullopt;
}

}  // namespace

std::vector<Window> windows() {
  return {{.form = &frmSplash, .layout = welcomeLayout()},
          {.form = &frmMain,
           .layout = mainLayout(),
           .isMain = true,
           .size =
               [] {
                 return FormSize{frmMain.width, frmMain.height};
               },
           .afterResize = [](FormSize size) { frmMain.setSize(size.width, size.height); },
           .afterStateChange = [](std::int32_t state) { frmMain.windowState = state; }},
          {.form = &frmPermProgress, .layout = permissionProgressLayout()},
          {.form = &frmDatabaseSelect, .layout = databaseSelectLayout()}};
}

WindowLayout mainLayout() {
  return {
      .menus = mainMenus(),
      .body = row({column({importPlace(), siteTypePlace(), sitesPlace(), exclusionsPlace()}, 2),
                   column({row({exportPlace(), preferencesPlace()}), mappingPlace(), outputPlace()}, 3)}),
      .statusBar = "StatusBar1",
      .progressBar = "ProgressBar1",
      .undrawn = {"lstSiteIndexes", "optExportServer", "optExportFile", "lstPropsToExport", "lstFilesToCopy",
                  "lstCheckCopy", "timExit", "syncPermTimer", "timAd1", "wsck1", "NTFSCtl1", "NTFSCtl2"}};
}

WindowLayout welcomeLayout() {
  return {.body = column({{.control = "lblAbout", .isTitle = true},
                          gap(),
                          row({gap(),
                               {.control = "cmdContinue", .accessKeys = "C"},
                               {.control = "cmdExit", .accessKeys = "X"}})}),
          .returnPresses = "cmdContinue",
          .escapePresses = "cmdExit",
          .isFixed = true};
}

WindowLayout permissionProgressLayout() {
  return {.body = column({{.control = "filesCompleted"},
                          {.control = "currentPath"},
                          row({gap(), {.control = "cmdCancel"}})}),
          .undrawn = {"Timer1"},
          .escapePresses = "cmdCancel",
          .isFixed = true};
}

WindowLayout databaseSelectLayout() {
  return {.body = column({{.control = "fraDBSetup",
                           .places = {{.control = "optDefault", .accessKeys = "D"},
                                      {.control = "optODBC", .accessKeys = "O"},
                                      {.control = "lstODBC", .share = 1, .lines = 5, .characters = 40},
                                      row({{.control = "txtUser", .accessKeys = "U", .share = 1}}),
                                      row({{.control = "txtPassword", .accessKeys = "P", .share = 1}})},
                           .share = 1},
                          row({gap(), {.control = "cmdSave"}})}),
          .returnPresses = "cmdSave",
          .escapeCloses = true};
}

void forEachControl(const Place& place, const std::function<void(const Place&)>& visit) {
  if (place.kind == Place::Kind::kControl) visit(place);
  for (const Place& each : place.places) forEachControl(each, visit);
}

std::vector<std::string> tabOrder(const Form& form, const WindowLayout& layout) {
  std::vector<std::string> order;
  forEachControl(layout.body, [&](const Place& place) {
    const Control* control = form.control(place.control);
    if (control != nullptr && takesFocus(*control)) order.push_back(control->name);
  });
  return order;
}

std::string spokenName(const Form& form, const WindowLayout& layout, std::string_view name) {
  const Control* control = form.control(name);
  if (control != nullptr && !control->caption.empty()) return plainCaption(control->caption);
  return plainCaption(captionAround(form, layout.body, name, form.caption).value_or(form.caption));
}

// That of a text box stands in front of it.
bool carriesItsName(const Control& control) {
  return !control.caption.empty() && dynamic_cast<const TextBox*>(&control) == nullptr;
}

std::string wordsInFront(const Form& form, const Place& place) {
  if (!place.label.empty()) return place.label;
  const auto* const box = dynamic_cast<const TextBox*>(form.control(place.control));
  return box == nullptr ? std::string() : box->caption;
}

std::string plainCaption(std::string_view caption) {
  std::string plain;
  for (std::size_t at = 0; at < caption.size(); ++at) {
    if (caption[at] == '&' && ++at == caption.size()) break;
    plain += caption[at];
  }
  return plain;
}

std::string captionWithKey(std::string_view caption, std::string_view accessKey) {
  if (accessKey.empty()) return std::string(caption);
  const std::string plain = plainCaption(caption);
  const std::size_t place = upperCase(plain).find(accessKey.front());
  const std::string head = place == std::string::npos ? plain : plain.substr(0, place);
  const std::string tail = place == std::string::npos ? std::string() : plain.substr(place);
  const std::string key = place == std::string::npos ? " (&" + std::string(accessKey) + ")" : "&";
  return replaceAll(head, "&", "&&") + key + replaceAll(tail, "&", "&&");
}

}  // namespace trelvin::desktop
