#include "desktop_qt/person.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTabBar>
#include <QTest>
#include <QWindow>
#include <stdexcept>

#include "desktop/layout.h"
#include "desktop/qt/texts.h"

namespace trelvin::test {

using desktop::fromQt;
using desktop::plainCaption;
using desktop::toQt;

namespace {

constexpr qint64 kFarTooLong = 20000;
constexpr const char* kGoesLater = "goes later";

QWidget* findVisible(const QString& name) {
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (!top->isVisible()) continue;
    for (QWidget* each : top->findChildren<QWidget*>(name)) {
      if (each->isVisible()) return each;
    }
  }
  return nullptr;
}

std::string textOf(QDialog& box) {
  std::string text = fromQt(box.windowTitle());
  if (const auto* message = qobject_cast<QMessageBox*>(&box)) text += ": " + fromQt(message->text());
  if (const auto* input = qobject_cast<QInputDialog*>(&box)) text += ": " + fromQt(input->labelText());
  return text;
}

QAbstractButton& buttonOf(QDialog& box, const std::string& caption) {
  for (QAbstractButton* each : box.findChildren<QAbstractButton*>()) {
    if (each->isVisible() && plainCaption(fromQt(each->text())) == caption) return *each;
  }
  throw std::runtime_error("the box " + textOf(box) + " has no button " + caption);
}

QWidget& focusWindow() {
  if (QWidget* const popup = QApplication::activePopupWidget()) return *popup;
  QWidget* const active = QApplication::activeWindow();
  if (active == nullptr) throw std::runtime_error("no window has the focus");
  return *active;
}

}  // namespace

Person::Person(desktop::QtDesktop& desktop) : desktop_(desktop) {
  QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { act(); });
  watch_.start(0);  // looks whenever events are dealt with
}

void Person::look() {
  for (int i = 0; i < 3; ++i) desktop_.turn(false);
  // Without a window manager nobody gives a window the focus.
  if (QApplication::activeWindow() == nullptr && desktop_.activeWindow() != nullptr) {
    QApplication::setActiveWindow(desktop_.activeWindow());
    desktop_.turn(false);
  }
}

bool Person::waitFor(const std::function<bool()>& holds) {
  QElapsedTimer time;
  time.start();
  while (!holds()) {
    if (time.elapsed() > kFarTooLong) return false;
    desktop_.turn();
  }
  return true;
}

QWidget& Person::see(const std::string& control) {
  QWidget* const found = findVisible(toQt(control));
  if (found == nullptr) throw std::runtime_error("there is nothing to be seen of " + control);
  return *found;
}

bool Person::canSee(const std::string& control) {
  return findVisible(toQt(control)) != nullptr;
}

QWidget* Person::window(const std::string& title) {
  for (QWidget* top : QApplication::topLevelWidgets()) {
    if (top->isVisible() && fromQt(top->windowTitle()) == title) return top;
  }
  return nullptr;
}

// To the window, not to the widget: that is where a box in front takes clicks away.
void Person::mouse(QWidget& widget, QPoint place, Qt::KeyboardModifiers modifiers, bool isDouble) {
  QWindow* const window = widget.window()->windowHandle();
  const QPoint inWindow = widget.mapTo(widget.window(), place);
  if (isDouble) {
    QTest::mouseDClick(window, Qt::LeftButton, modifiers, inWindow);
  } else {
    QTest::mouseClick(window, Qt::LeftButton, modifiers, inWindow);
  }
  look();
}

void Person::click(const std::string& control) {
  QWidget& widget = see(control);
  const bool isMark = widget.inherits("QCheckBox") || widget.inherits("QRadioButton");
  mouse(widget, isMark ? QPoint(10, widget.height() / 2) : widget.rect().center(), {});
}

void Person::chooseTab(const std::string& strip, int tab) {
  auto& bar = see<QTabBar>(strip);
  mouse(bar, bar.tabRect(tab - 1).center(), {});
}

void Person::clickEntry(const std::string& list, int entry, Qt::KeyboardModifiers modifiers) {
  auto& view = see<QListView>(list);
  view.scrollTo(view.model()->index(entry, 0));
  const QRect place = view.visualRect(view.model()->index(entry, 0));
  mouse(*view.viewport(), QPoint(place.left() + 8, place.center().y()), modifiers);
}

void Person::doubleClickEntry(const std::string& list, int entry) {
  auto& view = see<QListView>(list);
  view.scrollTo(view.model()->index(entry, 0));
  const QRect place = view.visualRect(view.model()->index(entry, 0));
  mouse(*view.viewport(), QPoint(place.left() + 8, place.center().y()), {}, true);
}

void Person::dropDown(const std::string& list, int entry) {
  auto& box = see<QComboBox>(list);
  click(list);
  const QRect place = box.view()->visualRect(box.model()->index(entry, 0));
  QTest::qWait(
      QApplication::doubleClickInterval());  // a popup takes the first click for the one that opened it
  mouse(*box.view()->viewport(), QPoint(place.left() + 8, place.center().y()), {});
}

void Person::chooseMenu(const std::string& menu, const std::string& entry) {
  auto* const top = qobject_cast<QMainWindow*>(window("Trelvin Utility"));
  auto* const title = top->findChild<QAction*>(toQt(menu));
  mouse(*top->menuBar(), top->menuBar()->actionGeometry(title).center(), {});
  auto* const action = top->findChild<QAction*>(toQt(entry));
  mouse(*title->menu(), title->menu()->actionGeometry(action).center(), {});
}

void Person::type(const std::string& textBox, const std::string& text) {
  click(textBox);
  key(Qt::Key_A, Qt::ControlModifier);
  key(Qt::Key_Delete);
  keys(text);
}

void Person::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(focusWindow().windowHandle(), key, modifiers);
  look();
}

void Person::keys(const std::string& text) {
  QWindow* const window = focusWindow().windowHandle();
  for (const QChar each : toQt(text)) QTest::keyClick(window, each.toLatin1());
  look();
}

std::string Person::focus() {
  const QWidget* const focused = QApplication::focusWidget();
  return focused == nullptr ? std::string() : fromQt(focused->objectName());
}

void Person::willPress(const std::string& button) {
  willDo([button](QDialog& box) { press(box, button); });
}

void Person::press(QDialog& box, const std::string& button) {
  QAbstractButton& pressed = buttonOf(box, button);
  QTest::mouseClick(box.windowHandle(), Qt::LeftButton, {}, pressed.mapTo(&box, pressed.rect().center()));
}

void Person::willType(const std::string& text) {
  willDo([text](QDialog& box) {
    auto* const field = box.findChild<QLineEdit*>();
    if (field == nullptr) throw std::runtime_error("the box has no field: " + textOf(box));
    QTest::keyClick(box.windowHandle(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(box.windowHandle(), Qt::Key_Delete);
    for (const QChar each : toQt(text)) QTest::keyClick(box.windowHandle(), each.toLatin1());
    QTest::keyClick(box.windowHandle(), Qt::Key_Return);
  });
}

void Person::willCancel() {
  willDo([](QDialog& box) { QTest::keyClick(box.windowHandle(), Qt::Key_Escape); });
}

void Person::willDo(std::function<void(QDialog&)> whatToDo) {
  answers_.push_back(std::move(whatToDo));
}

void Person::sendKey(QDialog& box, Qt::Key key) {
  QTest::keyClick(box.windowHandle(), key);
}

void Person::leaveUp(QDialog& box) {
  box.setProperty(kGoesLater, true);
}

void Person::once(std::function<bool()> holds, std::function<void()> whatToDo) {
  plans_.push_back({std::move(holds), std::move(whatToDo)});
}

void Person::clickBlindly(const std::string& control) {
  QWidget& widget = see(control);
  QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {},
                    widget.mapTo(widget.window(), widget.rect().center()));
}

void Person::act() {
  if (!plans_.empty() && plans_.front().holds()) {
    const Plan next = std::move(plans_.front());
    plans_.pop_front();
    next.whatToDo();
  }
  answer();
}

void Person::answer() {
  auto* const box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  if (box == nullptr || box == answered_ || isAnswering_ || !box->windowHandle()->isExposed()) return;
  isAnswering_ = true;
  answered_ = box;
  // The next box may come up in the very place of this one.
  QObject::connect(box, &QObject::destroyed, &watch_, [this] { answered_ = nullptr; });
  boxes.push_back(textOf(*box));
  if (answers_.empty()) {
    ADD_FAILURE() << "nobody expected this box: " << boxes.back();
    box->reject();
    box->hide();
  } else {
    const auto next = std::move(answers_.front());
    answers_.pop_front();
    try {
      next(*box);
    } catch (const std::exception& failure) {
      ADD_FAILURE() << failure.what();
    }
    if (box->isVisible() && !box->property(kGoesLater).toBool()) {
      ADD_FAILURE() << "the answer did not take this box away: " << boxes.back();
      box->hide();
    }
  }
  isAnswering_ = false;
}

}  // namespace trelvin::test
