#include "desktop/win32/window_view.h"

#include <commctrl.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

constexpr const wchar_t* kWindowClass = L"TrelvinWindow";

// On a screen of the usual size.
constexpr int kTwipsOfPixel = 15;
constexpr int kMargin = 8;
constexpr int kSpacing = 6;
constexpr int kIndentation = 18;
constexpr int kProgressWidth = 180;

constexpr int kWholeLine = 100000;
constexpr int kCharactersOfText = 24;
constexpr int kCharactersOfFixedText = 60;

void makeWindowClass(WNDPROC procedure) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.lpfnWndProc = procedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.hIcon = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(1));
  if (description.hIcon == nullptr) description.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  description.hbrBackground = GetSysColorBrush(COLOR_3DFACE);
  description.lpszClassName = kWindowClass;
  RegisterClassExW(&description);  // a second time changes nothing
}

DWORD styleOf(const WindowLayout& layout, HWND owner) {
  const DWORD style = WS_CAPTION | WS_SYSMENU | (owner != nullptr ? WS_POPUP : WS_MINIMIZEBOX);
  if (layout.isFixed) return style;
  return style | WS_THICKFRAME | (owner != nullptr ? 0 : WS_MAXIMIZEBOX);
}

Extent extentOf(const RECT& room) {
  return {static_cast<int>(room.right - room.left), static_cast<int>(room.bottom - room.top)};
}

Extent clientExtent(HWND window) {
  RECT room{};
  GetClientRect(window, &room);
  return extentOf(room);
}

Rectangle rectangleOf(const RECT& room) {
  const Extent extent = extentOf(room);
  return {static_cast<int>(room.left), static_cast<int>(room.top), extent.width, extent.height};
}

Rectangle wholeRoom(HWND window) {
  RECT room{};
  GetWindowRect(window, &room);
  return rectangleOf(room);
}

Extent wholeExtent(HWND window) {
  const Rectangle room = wholeRoom(window);
  return {room.width, room.height};
}

// Of the screen that a window is on or nearest to, without the task bar.
Rectangle screenOf(HWND window) {
  MONITORINFO screen{};
  screen.cbSize = sizeof screen;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &screen);
  return rectangleOf(screen.rcWork);
}

}  // namespace

WindowView::WindowView(const Window& window, HWND owner, Desk& desk, std::shared_ptr<Annotations> annotations,
                       std::function<void()> onClose)
    : form_(*window.form),
      layout_(window.layout),
      size_(window.size),
      afterResize_(window.afterResize),
      afterStateChange_(window.afterStateChange),
      desk_(desk),
      onClose_(std::move(onClose)),
      drawnCaption_(form_.caption),
      statusPlace_({.control = layout_.statusBar}),
      progressPlace_({.control = layout_.progressBar}) {
  makeWindowClass(procedure);
  handle_ = CreateWindowExW(0, kWindowClass, wideText(form_.caption).c_str(), styleOf(layout_, owner),
                            CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, owner, nullptr,
                            GetModuleHandleW(nullptr), nullptr);
  pane_ = std::make_unique<Pane>(handle_, desk);
  if (!layout_.menus.empty()) menus_ = std::make_unique<MenuView>(form_, layout_.menus, handle_);
  makeViews(layout_.body, {});
  makeBars();
  makeTimers();
  SetWindowLongPtrW(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  draw();
  if (!size_) resize(leastExtent());
  centre();
  const auto windowOf = [this](const Control& control) {
    const ControlView* const view = viewOf(numberOf(form_, control));
    return view == nullptr ? nullptr : view->handle();
  };
  spokenNames_ = std::make_unique<SpokenNames>(form_, layout_, windowOf, std::move(annotations));
}

WindowView::~WindowView() {
  SetWindowLongPtrW(handle_, GWLP_USERDATA, 0);
  // Windows gives the focus to another program when it finds the owner switched off.
  const HWND owner = GetWindow(handle_, GW_OWNER);
  if (owner != nullptr) EnableWindow(owner, TRUE);
  spokenNames_.reset();
  while (!views_.empty()) views_.pop_back();
  menus_.reset();
  DestroyWindow(handle_);
}

void WindowView::show() {
  ShowWindow(handle_, SW_SHOWNORMAL);
  SetForegroundWindow(handle_);
  if (GetFocus() == handle_ || GetFocus() == nullptr) moveFocus(0, 0);
}

template <typename Kind>
Kind& WindowView::controlOf(const std::string& name) const {
  auto* const control = dynamic_cast<Kind*>(form_.control(name));
  if (control == nullptr) throw std::logic_error("the layout names a control that is not there: " + name);
  return *control;
}

ControlView* WindowView::viewOf(int number) const {
  const auto found = viewsByNumber_.find(number);
  return found == viewsByNumber_.end() ? nullptr : found->second;
}

// A drop-down has a part of its own for the focus on some Windows.
ControlView* WindowView::viewInHand() const {
  HWND focus = GetFocus();
  while (focus != nullptr && GetParent(focus) != handle_) focus = GetParent(focus);
  return focus == nullptr ? nullptr : viewOf(GetDlgCtrlID(focus));
}

void WindowView::makeViews(const Place& place, const std::vector<const Control*>& frames) {
  std::vector<const Control*> inner = frames;
  if (place.kind == Place::Kind::kControl) {
    makeWords(place);
    makeView(place, frames, handle_);
    if (!place.places.empty()) inner.push_back(&controlOf<Control>(place.control));
  }
  for (const Place& each : place.places) makeViews(each, inner);
}

ControlView& WindowView::makeView(const Place& place, const std::vector<const Control*>& frames,
                                  HWND parent) {
  auto& control = controlOf<Control>(place.control);
  auto* const option = dynamic_cast<OptionButton*>(&control);
  const bool startsGroup = option == nullptr || !isLastAnOption_;
  isLastAnOption_ = option != nullptr;
  auto view = makeControlView(
      control, {.form = form_,
                .place = place,
                .pane = *pane_,
                .parent = parent,
                .frames = frames,
                .startsGroup = startsGroup,
                .isDefault = !place.control.empty() && place.control == layout_.returnPresses,
                .charactersOfText = layout_.isFixed ? kCharactersOfFixedText : kCharactersOfText});
  if (view == nullptr) throw std::logic_error("a control of this kind is never drawn: " + place.control);
  viewsByNumber_[numberOf(form_, control)] = view.get();
  viewsByPlace_[&place] = view.get();
  const auto words = words_.find(&place);
  if (words != words_.end()) words->second.view = view.get();
  if (!place.returnPresses.empty()) returnPresses_[view.get()] = place.returnPresses;
  if (option != nullptr) noteOption(*option, *view, startsGroup);
  views_.push_back(std::move(view));
  return *views_.back();
}

// In front of the control, so that their access key leads to it.
void WindowView::makeWords(const Place& place) {
  if (wordsInFront(form_, place).empty()) return;
  const std::string caption = captionWithKey(wordsInFront(form_, place), place.accessKeys);
  const HWND words =
      CreateWindowExW(0, L"STATIC", wideText(caption).c_str(), WS_CHILD | WS_GROUP | SS_LEFTNOWORDWRAP, 0, 0,
                      0, 0, handle_, nullptr, GetModuleHandleW(nullptr), nullptr);
  SendMessageW(words, WM_SETFONT, reinterpret_cast<WPARAM>(pane_->font()), TRUE);
  words_[&place] = {words, caption, nullptr};
}

void WindowView::noteOption(OptionButton& option, ControlView& view, bool startsGroup) {
  if (startsGroup) optionGroups_.emplace_back();
  optionGroups_.back().push_back({&option, &view});
}

void WindowView::makeBars() {
  if (layout_.statusBar.empty()) return;
  const ControlView& status = makeView(statusPlace_, {}, handle_);
  if (!layout_.progressBar.empty()) makeView(progressPlace_, {}, status.handle());
}

void WindowView::makeTimers() {
  for (Control* control : form_.controls()) {
    auto* const timer = dynamic_cast<Timer*>(control);
    if (timer != nullptr) tickers_.push_back({timer, Ticks(*timer, desk_.touches), 0});
  }
}

int WindowView::leastWidth(const Place& place) const {
  return viewsByPlace_.at(&place)->leastWidth();
}

int WindowView::leastHeight(const Place& place, int width) const {
  return viewsByPlace_.at(&place)->leastHeight(width);
}

Extent WindowView::words(const Place& place) const {
  const auto words = words_.find(&place);
  if (words == words_.end()) return {};
  return pane_->captionExtent(words->second.caption, pane_->font(), kWholeLine);
}

Insets WindowView::insets(const Place& place) const {
  const int caption = pane_->lineHeight() + pane_->pixels(4);
  const int margin = pane_->pixels(kMargin);
  return place.isHeading ? Insets{0, caption, 0, 0} : Insets{margin, caption, margin, margin};
}

int WindowView::spacing() const {
  return pane_->pixels(kSpacing);
}

int WindowView::indentation() const {
  return pane_->pixels(kIndentation);
}

void WindowView::draw() {
  if (std::exchange(drawnCaption_, form_.caption) != form_.caption) {
    SetWindowTextW(handle_, wideText(form_.caption).c_str());
  }
  if (menus_) menus_->draw();
  for (const auto& view : views_) view->draw();
  if (spokenNames_) spokenNames_->draw();
  drawWords();
  drawTimers();
  drawTabStops();
  // What has become small is dealt with when it is large again.
  if (IsIconic(handle_) == FALSE) {
    if (std::exchange(pane_->isOutOfPlace, false)) fit();
    drawSize();
  }
  keepFocus();
}

void WindowView::drawWords() {
  for (const auto& [place, words] : words_) {
    const bool isShown = (GetWindowLongPtrW(words.handle, GWL_STYLE) & WS_VISIBLE) != 0;
    if (isShown != words.view->canBeSeen()) ShowWindow(words.handle, isShown ? SW_HIDE : SW_SHOWNA);
    const BOOL isEnabled = IsWindowEnabled(words.view->handle());
    if (IsWindowEnabled(words.handle) != isEnabled) EnableWindow(words.handle, isEnabled);
  }
}

void WindowView::drawTimers() {
  for (std::size_t i = 0; i < tickers_.size(); ++i) {
    Ticker& ticker = tickers_[i];
    const std::int32_t wanted = ticker.timer->enabled ? ticker.timer->interval : 0;
    if (std::exchange(ticker.drawnInterval, wanted) == wanted) continue;
    if (wanted > 0) {
      SetTimer(handle_, i + 1, static_cast<UINT>(wanted), nullptr);
    } else {
      KillTimer(handle_, i + 1);
    }
  }
}

// The Tab key stops once at each group of options: at the one that is on.
void WindowView::drawTabStops() {
  for (const std::vector<Option>& group : optionGroups_) {
    const bool hasChoice =
        std::any_of(group.begin(), group.end(), [](const Option& each) { return each.option->value(); });
    for (const Option& each : group) {
      const bool isStop = hasChoice ? each.option->value() : &each == &group.front();
      const LONG_PTR style = GetWindowLongPtrW(each.view->handle(), GWL_STYLE);
      const LONG_PTR wanted = isStop ? style | WS_TABSTOP : style & ~static_cast<LONG_PTR>(WS_TABSTOP);
      if (style != wanted) SetWindowLongPtrW(each.view->handle(), GWL_STYLE, wanted);
    }
  }
}

// Only a wish that is new counts: a person may have made the window larger or smaller since.
void WindowView::drawSize() {
  if (!size_) return;
  const FormSize wanted = size_();
  if (std::exchange(wantedSize_, wanted) == wanted || wanted == ownSize()) return;
  resize({pane_->pixels(wanted.width / kTwipsOfPixel), pane_->pixels(wanted.height / kTwipsOfPixel)});
}

// Keys would go nowhere when the control in hand is switched off or goes away.
void WindowView::keepFocus() {
  if (GetActiveWindow() != handle_) return;
  const HWND focus = GetFocus();
  if (focus != nullptr && focus != handle_ && IsWindowEnabled(focus) != FALSE &&
      IsWindowVisible(focus) != FALSE) {
    return;
  }
  moveFocus(0, 0);
}

// With the menus and the borders, which a window that is small has not.
void WindowView::measureFrame() {
  const Extent whole = wholeExtent(handle_);
  const Extent client = clientExtent(handle_);
  frame_ = {whole.width - client.width, whole.height - client.height};
}

int WindowView::heightOfBars() const {
  const auto bar = viewsByPlace_.find(&statusPlace_);
  return bar == viewsByPlace_.end() ? 0 : wholeExtent(bar->second->handle()).height;
}

Extent WindowView::leastExtent() const {
  const int margins = 2 * pane_->pixels(kMargin);
  return {std::max(leastBody_.width + margins, widthOfTitle()) + frame_.width,
          leastBody_.height + margins + frame_.height + heightOfBars()};
}

// Of the caption and the buttons next to it.
int WindowView::widthOfTitle() const {
  return pane_->textWidth(form_.caption) * 5 / 4 + 4 * pane_->systemPixels(SM_CXSIZE);
}

// Makes room for what has come to need more.
void WindowView::fit() {
  measureFrame();
  const Extent body = Placing(layout_.body, *this).least();
  // A window that has the size of its texts doesn't shrink again with each shorter one.
  leastBody_ = layout_.isFixed ? Extent{std::max(body.width, leastBody_.width), body.height} : body;
  const Extent least = leastExtent();
  const Extent now = wholeExtent(handle_);
  if (layout_.isFixed ? now != least : now.width < least.width || now.height < least.height) {
    resize(layout_.isFixed ? least
                           : Extent{std::max(now.width, least.width), std::max(now.height, least.height)});
  }
  place();
}

void WindowView::place() {
  placeBars();
  const Extent client = clientExtent(handle_);
  const int margin = pane_->pixels(kMargin);
  Placing(layout_.body, *this)
      .place({margin, margin, client.width - 2 * margin, client.height - 2 * margin - heightOfBars()},
             [this](const Place& place, const Rectangle& control, const Rectangle& words) {
               viewsByPlace_.at(&place)->moveTo(control);
               const auto inFront = words_.find(&place);
               if (inFront == words_.end()) return;
               const int height = std::min(words.height, control.height);
               const int top = control.top + (control.height - height) / 2;
               SetWindowPos(inFront->second.handle, nullptr, words.left, top, words.width, height,
                            SWP_NOZORDER | SWP_NOACTIVATE);
             });
  InvalidateRect(handle_, nullptr, TRUE);
}

void WindowView::placeBars() {
  const auto status = viewsByPlace_.find(&statusPlace_);
  if (status == viewsByPlace_.end()) return;
  const HWND bar = status->second->handle();
  SendMessageW(bar, WM_SIZE, 0, 0);  // it finds its own place
  const auto progress = viewsByPlace_.find(&progressPlace_);
  if (progress == viewsByPlace_.end()) return;
  const int right = clientExtent(handle_).width - pane_->systemPixels(SM_CXVSCROLL);
  const int width = pane_->pixels(kProgressWidth);
  const int parts[] = {std::max(right - width, 0), -1};
  SendMessageW(bar, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
  RECT part{};
  SendMessageW(bar, SB_GETRECT, 1, reinterpret_cast<LPARAM>(&part));
  InflateRect(&part, -pane_->pixels(2), -pane_->pixels(2));
  progress->second->moveTo({static_cast<int>(part.left), static_cast<int>(part.top),
                            right - static_cast<int>(part.left), extentOf(part).height});
}

void WindowView::resize(Extent whole) {
  const Extent least = leastExtent();
  SetWindowPos(handle_, nullptr, 0, 0, std::max(whole.width, least.width),
               std::max(whole.height, least.height), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Of its owner, or of the screen without the task bar.
void WindowView::centre() {
  const HWND owner = GetWindow(handle_, GW_OWNER);
  const Rectangle screen = screenOf(owner == nullptr ? handle_ : owner);
  const bool isOwnerSeen = owner != nullptr && IsIconic(owner) == FALSE;
  const Rectangle room = centred(wholeExtent(handle_), isOwnerSeen ? wholeRoom(owner) : screen, screen);
  SetWindowPos(handle_, nullptr, room.left, room.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

FormSize WindowView::ownSize() const {
  const Extent whole = wholeExtent(handle_);
  return {pane_->usual(whole.width) * kTwipsOfPixel, pane_->usual(whole.height) * kTwipsOfPixel};
}

LRESULT CALLBACK WindowView::procedure(HWND handle, UINT message, WPARAM first, LPARAM second) {
  auto* const view = reinterpret_cast<WindowView*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
  return view == nullptr ? DefWindowProcW(handle, message, first, second)
                         : view->receive(message, first, second);
}

LRESULT WindowView::receive(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_COMMAND:
      hearCommand(first, second);
      return 0;
    case WM_NOTIFY:
      hearNotify(*reinterpret_cast<const NMHDR*>(second));
      break;
    case WM_DRAWITEM:
      if (ControlView* const view = viewOf(static_cast<int>(first))) {
        view->drawEntry(*reinterpret_cast<const DRAWITEMSTRUCT*>(second));
        return TRUE;
      }
      break;
    case WM_TIMER:
      hearTimer(first);
      return 0;
    case WM_SIZE:
      hearSize(first);
      return 0;
    case WM_GETMINMAXINFO: {
      const Extent least = leastExtent();
      reinterpret_cast<MINMAXINFO*>(second)->ptMinTrackSize = {least.width, least.height};
      return 0;
    }
    case WM_ACTIVATE:
      hearActivation(LOWORD(first) != WA_INACTIVE);
      return 0;
    case WM_NEXTDLGCTL:
      moveFocus(first, second);
      return 0;
    case WM_MOUSEMOVE:
      hearPointer({static_cast<short>(LOWORD(second)), static_cast<short>(HIWORD(second))});
      break;
    case WM_DPICHANGED:
      hearDotsChange(HIWORD(first), *reinterpret_cast<const RECT*>(second));
      return 0;
    case WM_SETTINGCHANGE:
      if (first == SPI_SETNONCLIENTMETRICS) renewFonts(pane_->dots());
      break;
    case WM_SYSCOLORCHANGE:
      for (const auto& view : views_) SendMessageW(view->handle(), message, first, second);
      break;
    case WM_ENDSESSION:
      if (first != FALSE) desk_.endSession();
      return 0;
    case WM_CLOSE:
      desk_.touches.postAlways(onClose_);
      return 0;
    default:
      break;
  }
  return DefWindowProcW(handle_, message, first, second);
}

void WindowView::hearCommand(WPARAM first, LPARAM second) {
  if (second == 0) {
    if (menus_) menus_->click(LOWORD(first), desk_.touches);
  } else if (ControlView* const view = viewOf(LOWORD(first))) {
    view->hearCommand(HIWORD(first));
  }
}

void WindowView::hearNotify(const NMHDR& notification) {
  ControlView* const view = viewOf(static_cast<int>(notification.idFrom));
  if (view != nullptr && view->handle() == notification.hwndFrom) view->hearNotify(notification);
}

void WindowView::hearTimer(WPARAM number) {
  if (number >= 1 && number <= tickers_.size()) tickers_[number - 1].ticks.post();
}

void WindowView::hearSize(WPARAM kind) {
  constexpr std::int32_t kNormal = 0;
  constexpr std::int32_t kMinimized = 1;
  constexpr std::int32_t kMaximized = 2;
  if (afterStateChange_) {
    afterStateChange_(kind == SIZE_MINIMIZED ? kMinimized : kind == SIZE_MAXIMIZED ? kMaximized : kNormal);
  }
  if (kind == SIZE_MINIMIZED) return;
  measureFrame();
  place();
  if (!afterResize_) return;
  desk_.touches.postAlways([resized = afterResize_, size = ownSize()] { resized(size); });
}

void WindowView::hearActivation(bool isActive) {
  if (!isActive) {
    const HWND focus = GetFocus();
    if (focus != nullptr && IsChild(handle_, focus) != FALSE) focus_ = focus;
  } else if (focus_ != nullptr && IsWindowEnabled(focus_) != FALSE && IsWindowVisible(focus_) != FALSE) {
    SetFocus(focus_);
  } else {
    moveFocus(0, 0);
  }
}

void WindowView::hearDotsChange(int dots, const RECT& room) {
  renewFonts(dots);
  const Extent whole = extentOf(room);
  SetWindowPos(handle_, nullptr, room.left, room.top, whole.width, whole.height,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void WindowView::renewFonts(int dots) {
  pane_->renewFonts(dots);
  leastBody_ = {};
  for (const auto& view : views_) view->renewFont();
  for (const auto& [place, words] : words_) {
    SendMessageW(words.handle, WM_SETFONT, reinterpret_cast<WPARAM>(pane_->font()), TRUE);
  }
  fit();
}

// Frames and labels let the pointer through to the window behind them.
void WindowView::hearPointer(POINT place) {
  std::string tip;
  for (const auto& view : views_) {
    RECT room{};
    GetWindowRect(view->handle(), &room);
    MapWindowPoints(nullptr, handle_, reinterpret_cast<POINT*>(&room), 2);
    if (view->canBeSeen() && PtInRect(&room, place) != FALSE) tip = view->tipAt(place);
  }
  if (std::exchange(drawnTip_, tip) != tip) pane_->setTip(handle_, wideText(tip));
}

bool WindowView::takeKey(MSG& message) {
  if (message.hwnd != handle_ && IsChild(handle_, message.hwnd) == FALSE) return false;
  if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN && pressReturn()) return true;
  if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE && pressEscape()) return true;
  if (message.message == WM_KEYDOWN && pressArrow(message.wParam)) return true;
  if (message.message == WM_SYSCHAR && pressAccessKey(message.wParam)) return true;
  return IsDialogMessageW(handle_, &message) != FALSE;
}

bool WindowView::pressReturn() {
  ControlView* const view = viewInHand();
  if (view != nullptr && view->isOpen()) return false;
  if (view != nullptr && view->pressReturn()) return true;
  const auto own = returnPresses_.find(view);
  if (own != returnPresses_.end()) {
    press(own->second);
  } else if (!layout_.returnPresses.empty()) {
    press(layout_.returnPresses);
  }
  return true;
}

bool WindowView::pressEscape() {
  const ControlView* const view = viewInHand();
  if (view != nullptr && view->isOpen()) return false;
  if (!layout_.escapePresses.empty()) {
    press(layout_.escapePresses);
  } else if (layout_.escapeCloses) {
    desk_.touches.postAlways(onClose_);
  }
  return true;
}

// From one option of a group to the next that can be reached, and that is a click.
bool WindowView::pressArrow(WPARAM key) {
  const bool isForward = key == VK_RIGHT || key == VK_DOWN;
  if (!isForward && key != VK_LEFT && key != VK_UP) return false;
  const ControlView* const view = viewInHand();
  for (const std::vector<Option>& group : optionGroups_) {
    const auto at =
        std::find_if(group.begin(), group.end(), [&](const Option& each) { return each.view == view; });
    if (at == group.end()) continue;
    const auto count = static_cast<std::size_t>(group.size());
    auto index = static_cast<std::size_t>(at - group.begin());
    for (std::size_t i = 1; i < count; ++i) {
      index = (index + (isForward ? 1 : count - 1)) % count;
      if (!group[index].view->canBeReached()) continue;
      SetFocus(group[index].view->handle());
      group[index].view->hearCommand(BN_CLICKED);
      break;
    }
    return true;
  }
  return false;
}

bool WindowView::pressAccessKey(WPARAM character) {
  if (character >= 0x80) return false;
  const char letter = static_cast<char>(std::toupper(static_cast<int>(character)));
  return std::any_of(views_.begin(), views_.end(), [&](const std::unique_ptr<ControlView>& each) {
    return each->canBeReached() && each->pressAccessKey(letter);
  });
}

// Windows drops a click on what can't be reached, and so is one by a key.
void WindowView::press(const std::string& button) {
  postClick(desk_.touches, controlOf<Button>(button));
}

// With a window in hand to it, else to the next or the former stop of the Tab key.
void WindowView::moveFocus(WPARAM first, LPARAM second) {
  const HWND focus = GetFocus();
  const HWND from = IsChild(handle_, focus) != FALSE ? focus : nullptr;
  const HWND next = LOWORD(second) != 0 ? reinterpret_cast<HWND>(first)
                                        : GetNextDlgTabItem(handle_, from, first != 0 ? TRUE : FALSE);
  if (next == nullptr) return;
  SetFocus(next);
  if ((SendMessageW(next, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0) SendMessageW(next, EM_SETSEL, 0, -1);
}

}  // namespace trelvin::desktop
