#include "desktop/qt/control_view.h"

#include <QCheckBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionGroupBox>
#include <QStylePainter>
#include <QTabBar>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "desktop/qt/list_view.h"
#include "desktop/qt/texts.h"

namespace trelvin::desktop {

namespace {

// A view whose widget is of one Qt class.
template <typename Kind, typename Widget>
class KindView : public WidgetView {
 public:
  KindView(Kind& control, const Place& place, QWidget& parent)
      : KindView(control, place, *new Widget(&parent)) {}

 protected:
  [[nodiscard]] Kind& control() const { return control_; }
  [[nodiscard]] Widget& drawn() const { return drawn_; }

 private:
  KindView(Kind& control, const Place& place, Widget& drawn)
      : WidgetView(control, place, drawn), control_(control), drawn_(drawn) {}

  Kind& control_;
  Widget& drawn_;
};

// A group, or only its caption where a box within a box would be too much.
class FrameBox final : public QGroupBox {
 public:
  using QGroupBox::QGroupBox;
  bool isHeading = false;

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    if (isHeading) option.subControls = QStyle::SC_GroupBoxLabel;
    QStylePainter(this).drawComplexControl(QStyle::CC_GroupBox, option);
  }
};

class FrameView final : public KindView<Frame, FrameBox> {
 public:
  FrameView(Frame& control, const Place& place, QWidget& parent, Desk& /*desk*/)
      : KindView(control, place, parent) {
    drawn().isHeading = place.isHeading;
    drawn().setFlat(place.isHeading);
  }
  void draw() override {
    WidgetView::draw();
    if (const auto caption = newCaption()) drawn().setTitle(*caption);
  }
};

class LabelView final : public KindView<Label, QLabel> {
 public:
  LabelView(Label& control, const Place& place, QWidget& parent, Desk& /*desk*/)
      : KindView(control, place, parent) {
    drawn().setWordWrap(place.names.empty());
    drawn().setTextFormat(Qt::PlainText);
    if (place.isTitle) makeTitle();
  }
  void draw() override {
    WidgetView::draw();
    if (const auto caption = newCaption()) drawn().setText(*caption);
  }

 private:
  void makeTitle() {
    QFont font = drawn().font();
    font.setPointSizeF(font.pointSizeF() * 1.8);
    drawn().setFont(font);
    drawn().setWordWrap(false);
    drawn().setMargin(drawn().fontMetrics().height());
  }
};

class ButtonView final : public KindView<Button, QPushButton> {
 public:
  ButtonView(Button& control, const Place& place, QWidget& parent, Desk& desk)
      : KindView(control, place, parent) {
    drawn().setAutoDefault(true);  // the Return key presses a button that has the focus
    QObject::connect(&drawn(), &QPushButton::clicked, &drawn(),
                     [&control, &desk] { postClick(desk.touches, control); });
  }
  void draw() override {
    WidgetView::draw();
    if (const auto caption = newCaption()) drawn().setText(*caption);
  }
};

class TextBoxView final : public KindView<TextBox, QLineEdit> {
 public:
  TextBoxView(TextBox& control, const Place& place, QWidget& parent, Desk& /*desk*/)
      : KindView(control, place, parent) {
    drawn().setMinimumWidth(drawn().fontMetrics().averageCharWidth() * place.characters);
    // No routine hangs on it, so that it need not wait for its turn.
    QObject::connect(&drawn(), &QLineEdit::textEdited, &drawn(),
                     [&control](const QString& text) { control.text = fromQt(text); });
  }
  void draw() override {
    WidgetView::draw();
    const QString text = toQt(control().text);
    if (drawn().text() != text) drawn().setText(text);
  }
};

// Qt sets a check box before anyone can object; what became of the touch is drawn over it.
class CheckBoxView final : public KindView<CheckBox, QCheckBox> {
 public:
  CheckBoxView(CheckBox& control, const Place& place, QWidget& parent, Desk& desk)
      : KindView(control, place, parent) {
    QObject::connect(&drawn(), &QCheckBox::clicked, &drawn(), [&control, &desk](bool isChecked) {
      desk.touches.post(control, [&control, isChecked] { control.setValue(isChecked); });
    });
  }
  void draw() override {
    WidgetView::draw();
    if (const auto caption = newCaption()) drawn().setText(*caption);
    drawn().setChecked(control().value());
  }
};

class OptionView final : public KindView<OptionButton, QRadioButton> {
 public:
  OptionView(OptionButton& control, const Place& place, QWidget& parent, Desk& desk)
      : KindView(control, place, parent) {
    // Not only clicks: the arrow keys go from one option to the next.
    QObject::connect(&drawn(), &QRadioButton::toggled, &drawn(), [this, &desk](bool isChecked) {
      if (isDrawing_ || !isChecked) return;
      desk.touches.post(KindView::control(), [&option = KindView::control()] { option.setValue(true); });
    });
  }
  void draw() override {
    WidgetView::draw();
    if (const auto caption = newCaption()) drawn().setText(*caption);
    if (drawn().isChecked() == control().value()) return;
    isDrawing_ = true;
    // Of options that exclude each other Qt takes none off by itself.
    drawn().setAutoExclusive(false);
    drawn().setChecked(control().value());
    drawn().setAutoExclusive(true);
    isDrawing_ = false;
  }

 private:
  bool isDrawing_ = false;
};

// The access key of a tab leads the focus to it too, so that the next Tab key goes on from there.
class TabBar final : public QTabBar {
 public:
  using QTabBar::QTabBar;

 protected:
  bool event(QEvent* event) override {
    if (event->type() == QEvent::Shortcut) setFocus(Qt::ShortcutFocusReason);
    return QTabBar::event(event);
  }
};

class TabStripView final : public KindView<TabStrip, TabBar> {
 public:
  TabStripView(TabStrip& control, const Place& place, QWidget& parent, Desk& desk)
      : KindView(control, place, parent), accessKeys_(place.accessKeys) {
    drawn().setExpanding(false);
    drawn().setUsesScrollButtons(false);
    drawn().setElideMode(Qt::ElideNone);
    drawn().setDrawBase(true);
    QObject::connect(&drawn(), &QTabBar::currentChanged, &drawn(), [this, &desk](int index) {
      if (isDrawing_ || index < 0) return;
      postTab(desk.touches, KindView::control(), index);
    });
  }
  void draw() override {
    WidgetView::draw();
    isDrawing_ = true;
    while (drawn().count() > control().tabCount()) drawn().removeTab(drawn().count() - 1);
    while (drawn().count() < control().tabCount()) drawn().addTab(QString());
    captions_.resize(static_cast<std::size_t>(control().tabCount()));
    for (int i = 0; i < control().tabCount(); ++i) drawTab(i);
    drawn().setCurrentIndex(control().selectedTab() - 1);
    isDrawing_ = false;
  }

 private:
  void drawTab(int index) {
    const TabStrip::Tab& tab = control().tab(index + 1);
    if (std::exchange(captions_[static_cast<std::size_t>(index)], tab.caption) == tab.caption) return;
    const std::string_view key =
        std::string_view(accessKeys_).substr(std::min(static_cast<std::size_t>(index), accessKeys_.size()));
    const QString caption = toQt(captionWithKey(tab.caption, key.substr(0, 1)));
    drawn().setTabText(index, caption);
    drawn().setTabToolTip(index, toQt(tab.tooltip));
  }

  std::string accessKeys_;
  std::vector<std::string> captions_;
  bool isDrawing_ = false;
};

// A long text is cut off at the progress bar's edge and does not widen the window.
class StatusBarView final : public KindView<StatusBar, QLabel> {
 public:
  StatusBarView(StatusBar& control, const Place& place, QWidget& parent, Desk& desk)
      : KindView(control, place, parent) {
    drawn().setTextFormat(Qt::PlainText);
    drawn().setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    drawn().setIndent(drawn().fontMetrics().averageCharWidth());
    control.onRefresh = [this, &desk] {
      desk.redraw();
      drawn().repaint();
    };
  }
  ~StatusBarView() override { control().onRefresh = nullptr; }
  void draw() override {
    WidgetView::draw();
    if (panel_ == control().panel) return;
    panel_ = control().panel;
    drawn().setText(toQt(panel_));
    drawn().setToolTip(toQt(panel_));
  }

 private:
  std::string panel_;
};

class ProgressBarView final : public KindView<ProgressBar, QProgressBar> {
 public:
  ProgressBarView(ProgressBar& control, const Place& place, QWidget& parent, Desk& /*desk*/)
      : KindView(control, place, parent) {
    drawn().setRange(0, kSteps);
    drawn().setValue(0);
  }
  void draw() override {
    WidgetView::draw();
    drawn().setValue(static_cast<int>(std::lround(control().value() / control().max() * kSteps)));
  }

 private:
  static constexpr int kSteps = 1000;
};

// A title shows its entries and does nothing else.
class MenuView final : public ControlView {
 public:
  MenuView(MenuEntry& entry, QAction& action, Desk& desk) : entry_(entry), action_(action) {
    action_.setObjectName(toQt(entry.name));
    QObject::connect(&action_, &QAction::triggered, &action_,
                     [&entry, &desk] { postClick(desk.touches, entry); });
  }
  void draw() override {
    action_.setText(toQt(entry_.caption));
    action_.setEnabled(entry_.enabled);
    action_.setVisible(entry_.visible);
  }

 private:
  MenuEntry& entry_;
  QAction& action_;
};

class TimerView final : public ControlView {
 public:
  TimerView(Timer& timer, QWidget& parent, Desk& desk) : timer_(timer), ticker_(new QTimer(&parent)) {
    QObject::connect(ticker_, &QTimer::timeout, ticker_,
                     [ticks = Ticks(timer, desk.touches)]() mutable { ticks.post(); });
  }
  void draw() override {
    if (!timer_.enabled) {
      ticker_->stop();
    } else if (!ticker_->isActive() || ticker_->interval() != timer_.interval) {
      ticker_->start(timer_.interval);
    }
  }

 private:
  Timer& timer_;
  QTimer* ticker_;
};

using Maker = std::unique_ptr<ControlView> (*)(Control&, const Place&, QWidget&, Desk&);

template <typename Kind, typename View>
std::unique_ptr<ControlView> makeIfKind(Control& control, const Place& place, QWidget& parent, Desk& desk) {
  auto* const ofKind = dynamic_cast<Kind*>(&control);
  return ofKind == nullptr ? nullptr : std::make_unique<View>(*ofKind, place, parent, desk);
}

std::unique_ptr<ControlView> makeIfList(Control& control, const Place& place, QWidget& parent, Desk& desk) {
  return place.isDropDown ? makeIfKind<ListControl, DropDownView>(control, place, parent, desk)
                          : makeIfKind<ListControl, ListBoxView>(control, place, parent, desk);
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

WidgetView::WidgetView(Control& control, const Place& place, QWidget& widget)
    : control_(control), widget_(widget), accessKeys_(place.accessKeys) {
  widget_.setObjectName(toQt(control.name));
  // Keeps its room while it is hidden, so that nothing jumps when the choice changes.
  QSizePolicy policy = widget_.sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  widget_.setSizePolicy(policy);
}

void WidgetView::draw() {
  if (widget_.isEnabledTo(widget_.parentWidget()) != control_.enabled) widget_.setEnabled(control_.enabled);
  if (widget_.isHidden() == control_.visible) widget_.setVisible(control_.visible);
  if (drawnTooltip_ != control_.tooltip) {
    drawnTooltip_ = control_.tooltip;
    widget_.setToolTip(toQt(drawnTooltip_));
    widget_.setAccessibleDescription(toQt(drawnTooltip_));
  }
}

std::optional<QString> WidgetView::newCaption() {
  if (drawnCaption_ == control_.caption) return std::nullopt;
  drawnCaption_ = control_.caption;
  return toQt(captionWithKey(control_.caption, accessKeys_));
}

std::unique_ptr<ControlView> makeControlView(Control& control, const Place& place, QWidget& parent,
                                             Desk& desk) {
  for (const Maker make : kMakers) {
    if (auto view = make(control, place, parent, desk)) return view;
  }
  return nullptr;
}

std::unique_ptr<ControlView> makeMenuView(MenuEntry& entry, QAction& action, Desk& desk) {
  return std::make_unique<MenuView>(entry, action, desk);
}

std::unique_ptr<ControlView> makeTimerView(Timer& timer, QWidget& parent, Desk& desk) {
  return std::make_unique<TimerView>(timer, parent, desk);
}

}  // namespace trelvin::desktop
