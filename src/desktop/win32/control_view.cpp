#include "desktop/win32/control_view.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <string_view>
#include <utility>

#include "core/text.h"
#include "desktop/win32/list_view.h"
#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

constexpr int kFirstNumber = 100;  // Windows has the low ones for itself
constexpr int kWholeLine = 100000;

// A view that knows the kind of its control.
template <typename Kind>
class KindView : public ControlView {
 public:
  KindView(Kind& control, const Setting& setting, const wchar_t* windowClass, DWORD style,
           DWORD extendedStyle = 0)
      : ControlView(control, setting, windowClass, style, extendedStyle), control_(control) {}

 protected:
  [[nodiscard]] Kind& control() const { return control_; }
  void drawCaption() {
    const auto caption = newCaption();
    if (!caption) return;
    caption_ = *caption;
    SetWindowTextW(handle(), wideText(caption_).c_str());
    pane().isOutOfPlace = true;
  }
  [[nodiscard]] const std::string& caption() const { return caption_; }
  [[nodiscard]] int captionWidth() const {
    return pane().captionExtent(caption_, pane().font(), kWholeLine).width;
  }

 private:
  Kind& control_;
  std::string caption_;
};

// A group, or only its caption where a box within a box would be too much.
class FrameView final : public KindView<Frame> {
 public:
  FrameView(Frame& control, const Setting& setting)
      : KindView(control, setting, setting.place.isHeading ? L"STATIC" : L"BUTTON",
                 setting.place.isHeading ? SS_LEFTNOWORDWRAP : BS_GROUPBOX),
        isHeading_(setting.place.isHeading) {}
  void draw() override {
    ControlView::draw();
    drawCaption();
  }
  void moveTo(const Rectangle& room) override {
    Rectangle own = room;
    if (isHeading_) own.height = std::min(own.height, pane().lineHeight());
    ControlView::moveTo(own);
  }

 private:
  bool isHeading_;
};

class LabelView final : public KindView<Label> {
 public:
  LabelView(Label& control, const Setting& setting)
      : KindView(control, setting, L"STATIC", setting.place.names.empty() ? SS_LEFT | SS_NOPREFIX : SS_LEFT),
        isText_(setting.place.names.empty() && !setting.place.isTitle),
        isTitle_(setting.place.isTitle),
        hasKey_(!setting.place.names.empty()),
        charactersOfText_(setting.charactersOfText) {
    LabelView::renewFont();
  }
  void draw() override {
    ControlView::draw();
    drawCaption();
  }
  void renewFont() override {
    ControlView::renewFont();
    if (isTitle_) send(WM_SETFONT, reinterpret_cast<WPARAM>(pane().titleFont()), TRUE);
  }
  [[nodiscard]] int leastWidth() const override {
    const int whole = extent(kWholeLine).width;
    return isText_ ? std::min(whole, charactersOfText_ * pane().characterWidth()) : whole + 2 * margin();
  }
  [[nodiscard]] int leastHeight(int width) const override { return extent(width).height + 2 * margin(); }
  void moveTo(const Rectangle& room) override {
    ControlView::moveTo(
        {room.left + margin(), room.top + margin(), room.width - 2 * margin(), room.height - 2 * margin()});
  }

 private:
  [[nodiscard]] Extent extent(int width) const {
    return pane().captionExtent(hasKey_ ? caption() : withoutKeys(caption()),
                                isTitle_ ? pane().titleFont() : pane().font(), width);
  }

  // A title stands by itself.
  [[nodiscard]] int margin() const { return isTitle_ ? pane().lineHeight() : 0; }

  bool isText_;  // goes onto several lines
  bool isTitle_;
  bool hasKey_;
  int charactersOfText_;
};

class ButtonView final : public KindView<Button> {
 public:
  ButtonView(Button& control, const Setting& setting)
      : KindView(control, setting, L"BUTTON",
                 WS_TABSTOP | (setting.isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON)) {}
  void draw() override {
    ControlView::draw();
    drawCaption();
  }
  [[nodiscard]] int leastWidth() const override {
    return std::max(pane().pixels(75), captionWidth() + pane().pixels(24));
  }
  [[nodiscard]] int leastHeight(int /*width*/) const override {
    return std::max(pane().pixels(23), pane().lineHeight() + pane().pixels(8));
  }
  void hearCommand(int notification) override {
    if (notification == BN_CLICKED) postClick(pane().touches(), control());
  }
  bool pressReturn() override {
    postClick(pane().touches(), control());
    return true;
  }
};

class TextBoxView final : public KindView<TextBox> {
 public:
  TextBoxView(TextBox& control, const Setting& setting)
      : KindView(control, setting, L"EDIT", WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE),
        characters_(setting.place.characters) {
    send(EM_LIMITTEXT, 0);
  }
  void draw() override {
    ControlView::draw();
    if (control().text == drawn_) return;
    drawn_ = control().text;
    isDrawing_ = true;
    SetWindowTextW(handle(), wideText(drawn_).c_str());
    isDrawing_ = false;
  }
  [[nodiscard]] int leastWidth() const override {
    return characters_ * pane().characterWidth() + pane().pixels(10);
  }
  // Windows writes at the upper edge, whatever the height, and doesn't enlarge the edge with the text.
  [[nodiscard]] int leastHeight(int /*width*/) const override {
    return pane().lineHeight() + 2 * GetSystemMetrics(SM_CYEDGE) + pane().pixels(4);
  }
  // No routine hangs on it, so that it need not wait for its turn.
  void hearCommand(int notification) override {
    if (notification != EN_CHANGE || isDrawing_) return;
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(handle())), L'\0');
    GetWindowTextW(handle(), text.data(), static_cast<int>(text.size()) + 1);
    drawn_ = utf8Text(text);
    control().text = drawn_;
  }

 private:
  int characters_;
  std::string drawn_;
  bool isDrawing_ = false;
};

// Windows' own button that leaves it to us whether it is on: the state alone decides.
template <typename Kind>
class MarkView : public KindView<Kind> {
 public:
  MarkView(Kind& control, const Setting& setting, DWORD style)
      : KindView<Kind>(control, setting, L"BUTTON", style) {}
  void draw() override {
    KindView<Kind>::draw();
    this->drawCaption();
    const WPARAM value = this->control().value() ? BST_CHECKED : BST_UNCHECKED;
    if (static_cast<WPARAM>(this->send(BM_GETCHECK)) != value) this->send(BM_SETCHECK, value);
  }
  [[nodiscard]] int leastWidth() const override { return this->captionWidth() + this->pane().pixels(20); }
  [[nodiscard]] int leastHeight(int /*width*/) const override {
    return std::max(this->pane().pixels(17), this->pane().lineHeight() + this->pane().pixels(2));
  }
};

class CheckBoxView final : public MarkView<CheckBox> {
 public:
  CheckBoxView(CheckBox& control, const Setting& setting)
      : MarkView(control, setting, WS_TABSTOP | BS_CHECKBOX) {}
  void hearCommand(int notification) override {
    if (notification != BN_CLICKED) return;
    const bool isWanted = send(BM_GETCHECK) != BST_CHECKED;
    pane().touches().post(control(), [&box = control(), isWanted] { box.setValue(isWanted); });
  }
};

class OptionView final : public MarkView<OptionButton> {
 public:
  OptionView(OptionButton& control, const Setting& setting)
      : MarkView(control, setting, WS_TABSTOP | BS_RADIOBUTTON) {}
  void hearCommand(int notification) override {
    if (notification != BN_CLICKED || isGettingFocus_) return;
    pane().touches().post(control(), [&option = control()] { option.setValue(true); });
  }

 protected:
  // Windows clicks an option that the Tab key reaches. To look at it is not to choose it.
  std::optional<LRESULT> receive(UINT message, WPARAM first, LPARAM second) override {
    if (message != WM_SETFOCUS) return MarkView::receive(message, first, second);
    isGettingFocus_ = true;
    const LRESULT result = DefSubclassProc(handle(), message, first, second);
    isGettingFocus_ = false;
    return result;
  }

 private:
  bool isGettingFocus_ = false;
};

class TabStripView final : public KindView<TabStrip> {
 public:
  TabStripView(TabStrip& control, const Setting& setting)
      : KindView(control, setting, WC_TABCONTROLW, WS_TABSTOP), accessKeys_(setting.place.accessKeys) {
    // Windows gives it this style, and it would not draw over the group that it stands in.
    SetWindowLongPtrW(handle(), GWL_STYLE, GetWindowLongPtrW(handle(), GWL_STYLE) & ~WS_CLIPSIBLINGS);
    padTabs();
  }
  void renewFont() override {
    padTabs();
    ControlView::renewFont();
  }
  void draw() override {
    ControlView::draw();
    const int count = control().tabCount();
    while (TabCtrl_GetItemCount(handle()) > count) TabCtrl_DeleteItem(handle(), count);
    captions_.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) drawTab(i);
    const int selected = control().selectedTab() - 1;
    if (TabCtrl_GetCurSel(handle()) != selected) TabCtrl_SetCurSel(handle(), selected);
  }
  [[nodiscard]] int leastWidth() const override { return lastTab().right + pane().pixels(4); }
  [[nodiscard]] int leastHeight(int /*width*/) const override { return lastTab().bottom + pane().pixels(3); }
  void hearNotify(const NMHDR& notification) override {
    if (notification.code == TCN_SELCHANGE) {
      postTab(pane().touches(), control(), TabCtrl_GetCurSel(handle()));
    }
  }
  bool pressAccessKey(char letter) override {
    const std::size_t index = accessKeys_.find(letter);
    if (index == std::string::npos) return false;
    SetFocus(handle());
    postTab(pane().touches(), control(), static_cast<std::int32_t>(index));
    return true;
  }
  [[nodiscard]] std::string tipAt(POINT place) const override {
    TCHITTESTINFO hit{place, 0};
    const int index = TabCtrl_HitTest(handle(), &hit);
    return index < 0 || index >= control().tabCount() ? control().tooltip : control().tab(index + 1).tooltip;
  }

 private:
  void drawTab(int index) {
    const TabStrip::Tab& tab = control().tab(index + 1);
    const std::size_t at = std::min(static_cast<std::size_t>(index), accessKeys_.size());
    const std::string caption = captionWithKey(tab.caption, std::string_view(accessKeys_).substr(at, 1));
    if (std::exchange(captions_[static_cast<std::size_t>(index)], caption) == caption) return;
    std::wstring text = wideText(caption);
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = text.data();
    const bool isNew = index >= TabCtrl_GetItemCount(handle());
    send(isNew ? TCM_INSERTITEMW : TCM_SETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    pane().isOutOfPlace = true;
  }
  // The room around a caption, which Windows leaves as it is on a coarse screen.
  void padTabs() const { send(TCM_SETPADDING, 0, MAKELPARAM(pane().pixels(6), pane().pixels(3))); }
  [[nodiscard]] RECT lastTab() const {
    RECT tab{};
    TabCtrl_GetItemRect(handle(), TabCtrl_GetItemCount(handle()) - 1, &tab);
    return tab;
  }

  std::string accessKeys_;
  std::vector<std::string> captions_;
};

// A long text is cut off at the progress bar's edge.
class StatusBarView final : public KindView<StatusBar> {
 public:
  StatusBarView(StatusBar& control, const Setting& setting)
      : KindView(control, setting, STATUSCLASSNAMEW, SBARS_SIZEGRIP) {
    control.onRefresh = [this] {
      pane().desk().redraw();
      UpdateWindow(handle());
    };
  }
  ~StatusBarView() override { control().onRefresh = nullptr; }
  void draw() override {
    ControlView::draw();
    if (panel_ == control().panel) return;
    panel_ = control().panel;
    send(SB_SETTEXTW, SBT_NOTABPARSING, reinterpret_cast<LPARAM>(wideText(panel_).c_str()));
  }
  [[nodiscard]] std::string tipAt(POINT /*place*/) const override { return panel_; }

 private:
  std::string panel_;
};

class ProgressBarView final : public KindView<ProgressBar> {
 public:
  ProgressBarView(ProgressBar& control, const Setting& setting)
      : KindView(control, setting, PROGRESS_CLASSW, 0) {
    send(PBM_SETRANGE32, 0, kSteps);
  }
  void draw() override {
    ControlView::draw();
    const auto value = static_cast<WPARAM>(std::lround(control().value() / control().max() * kSteps));
    if (static_cast<WPARAM>(send(PBM_GETPOS)) != value) send(PBM_SETPOS, value);
  }
  [[nodiscard]] int leastWidth() const override { return pane().pixels(240); }
  [[nodiscard]] int leastHeight(int /*width*/) const override { return pane().pixels(16); }

 private:
  static constexpr int kSteps = 1000;
};

using Maker = std::unique_ptr<ControlView> (*)(Control&, const Setting&);

template <typename Kind, typename View>
std::unique_ptr<ControlView> makeIfKind(Control& control, const Setting& setting) {
  auto* const ofKind = dynamic_cast<Kind*>(&control);
  return ofKind == nullptr ? nullptr : std::make_unique<View>(*ofKind, setting);
}

std::unique_ptr<ControlView> makeIfList(Control& control, const Setting& setting) {
  return setting.place.isDropDown ? makeIfKind<ListControl, DropDownView>(control, setting)
                                  : makeIfKind<ListControl, ListBoxView>(control, setting);
}

constexpr std::array<Maker, 10> kMakers{makeIfKind<Frame, FrameView>,
                                        makeIfKind<Label, LabelView>,
                                        makeIfKind<Button, ButtonView>,
                                        makeIfKind<TextBox, TextBoxView>,
                                        makeIfKind<CheckBox, CheckBoxView>,
                                        makeIfKind<OptionButton, OptionView>,
                                        makeIfList,
                                        makeIfKind<TabStrip, TabStripView>,
                                        makeIfKind<StatusBar, StatusBarView>,
                                        makeIfKind<ProgressBar, ProgressBarView>};

}  // namespace

int numberOf(const Form& form, const Control& control) {
  const auto& controls = form.controls();
  return kFirstNumber +
         static_cast<int>(std::find(controls.begin(), controls.end(), &control) - controls.begin());
}

std::string withoutKeys(std::string_view text) {
  return replaceAll(std::string(text), "&", "&&");
}

ControlView::ControlView(Control& control, const Setting& setting, const wchar_t* windowClass, DWORD style,
                         DWORD extendedStyle)
    : control_(control),
      pane_(setting.pane),
      handle_(CreateWindowExW(extendedStyle, windowClass, nullptr,
                              WS_CHILD | (setting.startsGroup ? WS_GROUP : 0) | style, 0, 0, 0, 0,
                              setting.parent,
                              reinterpret_cast<HMENU>(static_cast<INT_PTR>(numberOf(setting.form, control))),
                              GetModuleHandleW(nullptr), nullptr)),
      frames_(setting.frames),
      accessKeys_(setting.place.accessKeys) {
  SetWindowSubclass(handle_, procedure, 0, reinterpret_cast<DWORD_PTR>(this));
  ControlView::renewFont();
}

ControlView::~ControlView() {
  RemoveWindowSubclass(handle_, procedure, 0);
  pane_.setTip(handle_, {});
  DestroyWindow(handle_);
}

bool ControlView::canBeSeen() const {
  return control_.visible &&
         std::all_of(frames_.begin(), frames_.end(), [](const Control* each) { return each->visible; });
}

bool ControlView::canBeReached() const {
  return canBeSeen() && control_.enabled &&
         std::all_of(frames_.begin(), frames_.end(), [](const Control* each) { return each->enabled; });
}

void ControlView::draw() {
  const bool isEnabled = control_.enabled && std::all_of(frames_.begin(), frames_.end(),
                                                         [](const Control* each) { return each->enabled; });
  if ((IsWindowEnabled(handle_) != FALSE) != isEnabled) EnableWindow(handle_, isEnabled ? TRUE : FALSE);
  const bool isShown = (GetWindowLongPtrW(handle_, GWL_STYLE) & WS_VISIBLE) != 0;
  if (isShown != canBeSeen()) ShowWindow(handle_, isShown ? SW_HIDE : SW_SHOWNA);
}

void ControlView::renewFont() {
  send(WM_SETFONT, reinterpret_cast<WPARAM>(pane_.font()), TRUE);
}

void ControlView::moveTo(const Rectangle& room) {
  SetWindowPos(handle_, nullptr, room.left, room.top, room.width, room.height, SWP_NOZORDER | SWP_NOACTIVATE);
}

std::string ControlView::tipAt(POINT /*place*/) const {
  return control_.tooltip;
}

std::optional<LRESULT> ControlView::receive(UINT message, WPARAM /*first*/, LPARAM second) {
  if (message != WM_MOUSEMOVE) return std::nullopt;
  const POINT place{static_cast<short>(LOWORD(second)), static_cast<short>(HIWORD(second))};
  const std::string tip = tipAt(place);
  if (std::exchange(drawnTip_, tip) != tip) pane_.setTip(handle_, wideText(tip));
  return std::nullopt;
}

std::optional<std::string> ControlView::newCaption() {
  if (drawnCaption_ == control_.caption) return std::nullopt;
  drawnCaption_ = control_.caption;
  return captionWithKey(control_.caption, accessKeys_);
}

LRESULT CALLBACK ControlView::procedure(HWND handle, UINT message, WPARAM first, LPARAM second,
                                        UINT_PTR /*number*/, DWORD_PTR view) {
  const auto result = reinterpret_cast<ControlView*>(view)->receive(message, first, second);
  return result ? *result : DefSubclassProc(handle, message, first, second);
}

std::unique_ptr<ControlView> makeControlView(Control& control, const Setting& setting) {
  for (const Maker make : kMakers) {
    if (auto view = make(control, setting)) return view;
  }
  return nullptr;
}

}  // namespace trelvin::desktop
