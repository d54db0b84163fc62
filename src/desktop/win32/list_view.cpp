#include "desktop/win32/list_view.h"

#include <commctrl.h>

#include <algorithm>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

DWORD selectionStyle(const ListControl& list, const Place& place) {
  if (!list.isMultiple()) return 0;
  return place.hasMarks ? LBS_MULTIPLESEL : LBS_EXTENDEDSEL;
}

// For the time of a change that would be drawn entry by entry.
class Undrawn {
 public:
  explicit Undrawn(HWND window) : window_(window) { SendMessageW(window_, WM_SETREDRAW, FALSE, 0); }
  Undrawn(const Undrawn&) = delete;
  Undrawn& operator=(const Undrawn&) = delete;
  ~Undrawn() {
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window_, nullptr, TRUE);
  }

 private:
  HWND window_;
};

}  // namespace

EntriesView::EntriesView(ListControl& list, const Setting& setting, const wchar_t* windowClass, DWORD style,
                         DWORD extendedStyle, Messages messages)
    : ControlView(list, setting, windowClass, style | WS_TABSTOP | WS_VSCROLL, extendedStyle),
      list_(list),
      messages_(messages) {}

bool EntriesView::drawEntries() {
  const bool isRewritten = rewrites_ != list_.rewrites();
  rewrites_ = list_.rewrites();
  if (isRewritten) {
    send(messages_.clear);
    drawnCount_ = 0;
  }
  for (; drawnCount_ < list_.listCount(); ++drawnCount_) {
    send(messages_.add, 0, reinterpret_cast<LPARAM>(wideText(list_.list(drawnCount_)).c_str()));
  }
  return isRewritten;
}

// The codes of keys and characters are Windows' own.
std::optional<LRESULT> EntriesView::receive(UINT message, WPARAM first, LPARAM second) {
  if (message == WM_CHAR) postKeyPress(pane().touches(), list_, static_cast<std::int32_t>(first));
  if (message == WM_KEYUP) postKeyUp(pane().touches(), list_, static_cast<std::int32_t>(first));
  return ControlView::receive(message, first, second);
}

ListBoxView::ListBoxView(ListControl& list, const Setting& setting)
    : EntriesView(list, setting, L"LISTBOX",
                  LBS_NOTIFY | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT |
                      selectionStyle(list, setting.place),
                  WS_EX_CLIENTEDGE, {LB_RESETCONTENT, LB_ADDSTRING}),
      lines_(setting.place.lines),
      characters_(setting.place.characters),
      hasMarks_(setting.place.hasMarks) {
  ListBoxView::renewFont();
  list.onRefresh = [this] { refresh(); };
}

ListBoxView::~ListBoxView() {
  list().onRefresh = nullptr;
}

void ListBoxView::refresh() {
  if (!pane().desk().pace.isDue()) return;
  pane().desk().redraw();  // with what has changed before it, such as the button of the run
  UpdateWindow(handle());
  pane().desk().pace.noteDrawn();
}

int ListBoxView::entryHeight() const {
  return pane().lineHeight() + pane().pixels(2);
}

void ListBoxView::renewFont() {
  ControlView::renewFont();
  send(LB_SETITEMHEIGHT, 0, MAKELPARAM(entryHeight(), 0));
}

int ListBoxView::leastWidth() const {
  return characters_ * pane().characterWidth() + pane().pixels(4);
}

int ListBoxView::leastHeight(int /*width*/) const {
  return lines_ * entryHeight() + pane().pixels(4);
}

void ListBoxView::draw() {
  ControlView::draw();
  if (revision_ == list().revision()) return;
  const Undrawn undrawn(handle());
  const LRESULT top = send(LB_GETTOPINDEX);
  const LRESULT caret = send(LB_GETCARETINDEX);
  if (drawEntries()) {
    // The place in the list stays where the person had it.
    inHand_ = -1;
    const LRESULT last = list().listCount() - 1;
    if (list().isMultiple() && last >= 0) {
      send(LB_SETCARETINDEX, static_cast<WPARAM>(std::min(caret, last)), FALSE);
    }
    send(LB_SETTOPINDEX, static_cast<WPARAM>(std::max<LRESULT>(0, std::min(top, last))));
  } else if (pane().touches().areWaitingFor(list())) {
    return;  // else the marks that have come since would be wiped out
  }
  drawSelection();
  revision_ = list().revision();
}

void ListBoxView::drawSelection() {
  if (!list().isMultiple()) {
    // Would scroll to an entry that is selected already.
    if (send(LB_GETCURSEL) != list().listIndex()) send(LB_SETCURSEL, static_cast<WPARAM>(list().listIndex()));
    return;
  }
  // Asked for at once: ten thousand questions would be felt.
  std::vector<bool> isDrawn(static_cast<std::size_t>(list().listCount()));
  for (const std::int32_t each : drawnSelection()) isDrawn.at(static_cast<std::size_t>(each)) = true;
  for (std::int32_t i = 0; i < list().listCount(); ++i) {
    const bool isSelected = list().selected(i);
    if (isDrawn[static_cast<std::size_t>(i)] != isSelected) send(LB_SETSEL, isSelected ? TRUE : FALSE, i);
  }
  if (inHand_ == list().listIndex()) return;
  inHand_ = list().listIndex();
  if (inHand_ >= 0) send(LB_SETCARETINDEX, static_cast<WPARAM>(inHand_), FALSE);
}

void ListBoxView::hearCommand(int notification) {
  if (notification == LBN_SELCHANGE) passChoiceOn();
  if (notification == LBN_DBLCLK) postDoubleClick(pane().touches(), list());
}

// Wine marks an entry by the space bar without a word of it. To hear of it twice, as on Windows, changes
// nothing.
std::optional<LRESULT> ListBoxView::receive(UINT message, WPARAM first, LPARAM second) {
  if (message != WM_KEYDOWN || first != VK_SPACE || !list().isMultiple()) {
    return EntriesView::receive(message, first, second);
  }
  const LRESULT result = DefSubclassProc(handle(), message, first, second);
  passChoiceOn();
  return result;
}

std::vector<std::int32_t> ListBoxView::drawnSelection() const {
  std::vector<std::int32_t> selected(static_cast<std::size_t>(std::max<LRESULT>(0, send(LB_GETSELCOUNT))));
  send(LB_GETSELITEMS, selected.size(), reinterpret_cast<LPARAM>(selected.data()));
  return selected;
}

void ListBoxView::passChoiceOn() {
  if (list().isMultiple()) {
    const auto inHand = static_cast<std::int32_t>(send(LB_GETCARETINDEX));
    postChoice(pane().touches(), list(), drawnSelection(), inHand);
  } else {
    const auto inHand = static_cast<std::int32_t>(send(LB_GETCURSEL));
    postChoice(pane().touches(), list(), {inHand}, inHand);
  }
}

// A double-click by the keys, so that no mouse is needed.
bool ListBoxView::pressReturn() {
  constexpr std::int32_t kReturn = 13;
  postKeyPress(pane().touches(), list(), kReturn);
  if (!list().onDblClick) return false;
  postDoubleClick(pane().touches(), list());
  return true;
}

// A path that is cut off can be read as a whole.
std::string ListBoxView::tipAt(POINT place) const {
  const LRESULT hit = send(LB_ITEMFROMPOINT, 0, MAKELPARAM(place.x, place.y));
  const bool isOnEntry = HIWORD(hit) == 0 && LOWORD(hit) < list().listCount();
  return isOnEntry ? list().list(LOWORD(hit)) : ControlView::tipAt(place);
}

void ListBoxView::drawEntry(const DRAWITEMSTRUCT& entry) {
  const bool isSelected = (entry.itemState & ODS_SELECTED) != 0;
  FillRect(entry.hDC, &entry.rcItem, GetSysColorBrush(isSelected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  // Windows has the focus drawn in an empty list too, at an entry that isn't there.
  const auto index = static_cast<std::int32_t>(entry.itemID);
  if (index >= 0 && index < list().listCount()) drawText(entry, list().list(index));
  if ((entry.itemState & ODS_FOCUS) != 0) DrawFocusRect(entry.hDC, &entry.rcItem);
}

void ListBoxView::drawText(const DRAWITEMSTRUCT& entry, const std::string& text) const {
  RECT place = entry.rcItem;
  place.left += pane().pixels(3);
  if (hasMarks_) {
    const LONG height = place.bottom - place.top;
    drawMark(entry, {place.left, place.top, place.left + height, place.bottom});
    place.left += height + pane().pixels(3);
  }
  const int colour = (entry.itemState & ODS_DISABLED) != 0   ? COLOR_GRAYTEXT
                     : (entry.itemState & ODS_SELECTED) != 0 ? COLOR_HIGHLIGHTTEXT
                                                             : COLOR_WINDOWTEXT;
  SetTextColor(entry.hDC, GetSysColor(colour));
  SetBkMode(entry.hDC, TRANSPARENT);
  const std::wstring wide = wideText(text);
  const UINT cut = wide.find(L'\\') == std::wstring::npos ? DT_END_ELLIPSIS : DT_PATH_ELLIPSIS;
  DrawTextW(entry.hDC, wide.c_str(), static_cast<int>(wide.size()), &place,
            DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | cut);
}

void ListBoxView::drawMark(const DRAWITEMSTRUCT& entry, RECT place) const {
  InflateRect(&place, -pane().pixels(2), -pane().pixels(2));
  UINT state = DFCS_BUTTONCHECK | DFCS_FLAT;
  if ((entry.itemState & ODS_SELECTED) != 0) state |= DFCS_CHECKED;
  if ((entry.itemState & ODS_DISABLED) != 0) state |= DFCS_INACTIVE;
  DrawFrameControl(entry.hDC, &place, DFC_BUTTON, state);
}

DropDownView::DropDownView(ListControl& list, const Setting& setting)
    : EntriesView(list, setting, L"COMBOBOX", CBS_DROPDOWNLIST | CBS_HASSTRINGS, 0,
                  {CB_RESETCONTENT, CB_ADDSTRING}) {}

void DropDownView::draw() {
  ControlView::draw();
  const LRESULT before = send(CB_GETCOUNT);
  if (drawEntries() || before != list().listCount()) pane().isOutOfPlace = true;
  if (pane().touches().areWaitingFor(list())) return;
  if (send(CB_GETCURSEL) != list().listIndex()) send(CB_SETCURSEL, static_cast<WPARAM>(list().listIndex()));
}

int DropDownView::leastWidth() const {
  int widest = pane().characterWidth() * 6;
  for (std::int32_t i = 0; i < list().listCount(); ++i) {
    widest = std::max(widest, pane().textWidth(list().list(i)));
  }
  return widest + pane().systemPixels(SM_CXVSCROLL) + pane().pixels(14);
}

int DropDownView::leastHeight(int /*width*/) const {
  RECT own{};
  GetWindowRect(handle(), &own);
  return static_cast<int>(own.bottom - own.top);
}

// The height of a drop-down says how far it may drop down; what is seen while it is shut has a height of its
// own.
void DropDownView::moveTo(const Rectangle& room) {
  Rectangle whole = room;
  whole.height += pane().lineHeight() * 10;
  ControlView::moveTo(whole);
}

void DropDownView::hearCommand(int notification) {
  if (notification != CBN_SELCHANGE) return;
  const auto chosen = static_cast<std::int32_t>(send(CB_GETCURSEL));
  postChoice(pane().touches(), list(), {chosen}, chosen);
}

bool DropDownView::isOpen() const {
  return send(CB_GETDROPPEDSTATE) != FALSE;
}

// The wheel turns pages; an IIS version that changes under a passing pointer would be noticed too late.
std::optional<LRESULT> DropDownView::receive(UINT message, WPARAM first, LPARAM second) {
  if (message == WM_MOUSEWHEEL && !isOpen()) return 0;
  return EntriesView::receive(message, first, second);
}

}  // namespace trelvin::desktop
