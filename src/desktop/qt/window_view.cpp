#include "desktop/qt/window_view.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QStyle>
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "desktop/qt/texts.h"

namespace trelvin::desktop {

namespace {

// At the scale at which sizes are told; Qt scales them for the screen.
constexpr int kTwipsOfPixel = 15;
constexpr int kMargin = 8;
constexpr int kSpacing = 6;

}  // namespace

WindowView::WindowView(const Window& window, Desk& desk, std::function<void()> onClose)
    : form_(*window.form),
      layout_(window.layout),
      size_(window.size),
      afterResize_(window.afterResize),
      afterStateChange_(window.afterStateChange),
      desk_(desk),
      onClose_(std::move(onClose)) {
  setContextMenuPolicy(Qt::NoContextMenu);  // which would offer to hide bars
  makeMenus();
  auto* const body = new QWidget(this);
  setCentralWidget(body);
  body->setLayout(layoutFor(layout_.body, *body));
  body->layout()->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  if (layout_.isFixed) layout()->setSizeConstraint(QLayout::SetFixedSize);
  makeBars();
  makeTimers();
  bindLabels();
  nameForHearing();
  orderTabs();
  draw();
  alignBeginnings();
}

WindowView::~WindowView() = default;

template <typename Kind>
Kind& WindowView::controlOf(const std::string& name) const {
  auto* const control = dynamic_cast<Kind*>(form_.control(name));
  if (control == nullptr) throw std::logic_error("the layout names a control that is not there: " + name);
  return *control;
}

QWidget* WindowView::widgetOf(const std::string& control) const {
  return findChild<QWidget*>(toQt(control));
}

void WindowView::makeMenus() {
  for (const Menu& each : layout_.menus) {
    QMenu* const menu = menuBar()->addMenu(QString());
    views_.push_back(makeMenuView(controlOf<MenuEntry>(each.control), *menu->menuAction(), desk_));
    for (const std::string& entry : each.entries) {
      if (entry.empty()) {
        menu->addSeparator();
      } else {
        QAction* const action = menu->addAction(QString());
        views_.push_back(makeMenuView(controlOf<MenuEntry>(entry), *action, desk_));
      }
    }
  }
}

void WindowView::makeBars() {
  if (layout_.statusBar.empty()) return;
  statusBar()->addWidget(makeWidget({.control = layout_.statusBar}, *statusBar()), 1);
  if (layout_.progressBar.empty()) return;
  statusBar()->addPermanentWidget(makeWidget({.control = layout_.progressBar}, *statusBar()));
}

void WindowView::makeTimers() {
  for (Control* control : form_.controls()) {
    auto* const timer = dynamic_cast<Timer*>(control);
    if (timer != nullptr) views_.push_back(makeTimerView(*timer, *this, desk_));
  }
}

QLayout* WindowView::layoutFor(const Place& place, QWidget& parent) {
  return place.kind == Place::Kind::kStack ? stackFor(place, parent) : boxFor(place, parent);
}

// Also for a frame, which is a column of what it holds.
QLayout* WindowView::boxFor(const Place& place, QWidget& parent) {
  const bool isRow = place.kind == Place::Kind::kRow;
  auto* const box = new QBoxLayout(isRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  box->setSpacing(kSpacing);
  for (const Place& each : place.places) putInto(*box, each, parent);
  QLayoutItem* const first = box->itemAt(0);
  auto* const words = first == nullptr ? nullptr : qobject_cast<QLabel*>(first->widget());
  if (isRow && words != nullptr) beginnings_.push_back(words);
  return box;
}

QLayout* WindowView::stackFor(const Place& place, QWidget& parent) {
  auto* const grid = new QGridLayout;
  for (const Place& each : place.places) {
    if (each.kind == Place::Kind::kControl) {
      grid->addWidget(makeWidget(each, parent), 0, 0);
    } else {
      grid->addLayout(layoutFor(each, parent), 0, 0);
    }
  }
  return grid;
}

void WindowView::putInto(QBoxLayout& box, const Place& place, QWidget& parent) {
  if (place.kind == Place::Kind::kGap) {
    box.addStretch(place.share);
    return;
  }
  if (place.kind != Place::Kind::kControl) {
    box.addLayout(layoutFor(place, parent), place.share);
    return;
  }
  QWidget* const widget = makeWidget(place, parent);
  const std::string words = wordsInFront(form_, place);
  if (!words.empty()) putWords(box, captionWithKey(words, place.accessKeys), *widget);
  if (!place.isIndented) {
    box.addWidget(widget, place.share);
    return;
  }
  auto* const indented = new QHBoxLayout;
  indented->addSpacing(style()->pixelMetric(QStyle::PM_IndicatorWidth) + kSpacing);
  indented->addWidget(widget);
  box.addLayout(indented);
}

QWidget* WindowView::makeWidget(const Place& place, QWidget& parent) {
  auto view = makeControlView(controlOf<Control>(place.control), place, parent, desk_);
  if (view == nullptr) throw std::logic_error("a control of this kind is never drawn: " + place.control);
  QWidget* const widget = view->widget();
  views_.push_back(std::move(view));
  if (!place.places.empty()) {
    QLayout* const inner = boxFor(place, *widget);
    inner->setContentsMargins(place.isHeading ? QMargins(0, kSpacing, 0, 0)
                                              : QMargins(kMargin, kSpacing, kMargin, kMargin));
    widget->setLayout(inner);
  }
  if (!place.returnPresses.empty()) {
    QObject::connect(qobject_cast<QLineEdit*>(widget), &QLineEdit::returnPressed, this,
                     [this, button = place.returnPresses] { press(button); });
  }
  return widget;
}

void WindowView::putWords(QBoxLayout& box, const std::string& caption, QWidget& widget) {
  auto* const words = new QLabel(toQt(caption), widget.parentWidget());
  QSizePolicy policy = words->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  words->setSizePolicy(policy);
  words->setBuddy(&widget);
  words_.push_back({words, &widget});
  box.addWidget(words);
}

void WindowView::bindLabels() {
  forEachControl(layout_.body, [this](const Place& place) {
    if (place.names.empty()) return;
    auto* const label = qobject_cast<QLabel*>(widgetOf(place.control));
    if (label != nullptr) label->setBuddy(widgetOf(place.names));
  });
}

// Boxes of one frame begin below each other.
void WindowView::alignBeginnings() {
  for (QLabel* each : beginnings_) {
    int widest = 0;
    for (const QLabel* other : beginnings_) {
      if (other->parent() == each->parent()) widest = std::max(widest, other->sizeHint().width());
    }
    each->setMinimumWidth(widest);
  }
}

// A name that is set would count instead of a later caption.
void WindowView::nameForHearing() {
  for (const std::string& control : tabOrder(form_, layout_)) {
    if (carriesItsName(*form_.control(control))) continue;
    widgetOf(control)->setAccessibleName(toQt(spokenName(form_, layout_, control)));
  }
}

void WindowView::orderTabs() {
  QWidget* former = nullptr;
  for (const std::string& control : tabOrder(form_, layout_)) {
    QWidget* const widget = widgetOf(control);
    if (former != nullptr) setTabOrder(former, widget);
    former = widget;
  }
}

void WindowView::draw() {
  if (windowTitle() != toQt(form_.caption)) setWindowTitle(toQt(form_.caption));
  for (const auto& view : views_) view->draw();
  for (const WordsFor& each : words_) {
    each.words->setVisible(!each.widget->isHidden());
    each.words->setEnabled(each.widget->isEnabled());
  }
  drawSize();
}

// Only a wish that is new counts: a person may have made the window larger or smaller since.
void WindowView::drawSize() {
  if (!size_) return;
  const FormSize wanted = size_();
  if (std::exchange(wantedSize_, wanted) == wanted || wanted == ownSize()) return;
  resize(QSize(wanted.width / kTwipsOfPixel, wanted.height / kTwipsOfPixel).expandedTo(minimumSizeHint()));
}

FormSize WindowView::ownSize() const {
  return {width() * kTwipsOfPixel, height() * kTwipsOfPixel};
}

void WindowView::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  if (!afterResize_) return;
  desk_.touches.postAlways([resized = afterResize_, size = ownSize()] { resized(size); });
}

void WindowView::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange || !afterStateChange_) return;
  constexpr std::int32_t kNormal = 0;
  constexpr std::int32_t kMinimized = 1;
  constexpr std::int32_t kMaximized = 2;
  afterStateChange_(isMinimized() ? kMinimized : (isMaximized() ? kMaximized : kNormal));
}

void WindowView::closeEvent(QCloseEvent* event) {
  event->ignore();
  desk_.touches.postAlways(onClose_);
}

void WindowView::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && !layout_.returnPresses.empty()) {
    press(layout_.returnPresses);
  } else if (event->key() == Qt::Key_Escape && !layout_.escapePresses.empty()) {
    press(layout_.escapePresses);
  } else if (event->key() == Qt::Key_Escape && layout_.escapeCloses) {
    desk_.touches.postAlways(onClose_);
  } else {
    QMainWindow::keyPressEvent(event);
  }
}

void WindowView::press(const std::string& button) {
  postClick(desk_.touches, controlOf<Button>(button));
}

}  // namespace trelvin::desktop
