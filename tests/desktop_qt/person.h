// A person in front of the windows: finds controls by their names, and uses mouse and keys as the window
// system would send them.
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "desktop/qt/qt_desktop.h"

class QAbstractButton;
class QDialog;
class QListView;

namespace trelvin::test {

class Person {
 public:
  explicit Person(desktop::QtDesktop& desktop);

  // Lets the windows deal with everything that has happened so far.
  void look();
  // Looks until something holds; false after a time that is far too long.
  bool waitFor(const std::function<bool()>& holds);

  // The widget of a control in a window that is up; fails the test when there is none to be seen.
  [[nodiscard]] static QWidget& see(const std::string& control);
  template <typename Widget>
  [[nodiscard]] static Widget& see(const std::string& control) {
    return dynamic_cast<Widget&>(see(control));
  }
  [[nodiscard]] static bool canSee(const std::string& control);
  // The window with that title, null when it isn't up.
  [[nodiscard]] static QWidget* window(const std::string& title);

  // With the mouse.
  void click(const std::string& control);
  void chooseTab(const std::string& strip, int tab);
  void clickEntry(const std::string& list, int entry, Qt::KeyboardModifiers modifiers = {});
  void doubleClickEntry(const std::string& list, int entry);
  void dropDown(const std::string& list, int entry);
  void chooseMenu(const std::string& menu, const std::string& entry);
  // Over what the box holds.
  void type(const std::string& textBox, const std::string& text);

  // With the keys, in the window that has the focus.
  void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
  void keys(const std::string& text);
  [[nodiscard]] static std::string focus();

  // What the next box that comes up is answered with. Boxes come up in the middle of what a click does, so
  // that the answer has to be known before.
  void willPress(const std::string& button);            // by its caption
  void willType(const std::string& text);               // into the box's field, and then OK
  void willCancel();                                    // with Escape
  void willDo(std::function<void(QDialog&)> whatToDo);  // which has to take the box away
  static void press(QDialog& box, const std::string& button);
  // Does something as soon as something holds, be it in the middle of what a click does. Nothing that looks.
  void once(std::function<bool()> holds, std::function<void()> whatToDo);
  static void leaveUp(QDialog& box);  // something else takes it away
  static void sendKey(QDialog& box, Qt::Key key);
  // A click that is only sent.
  static void clickBlindly(const std::string& control);
  // Titles and texts of the boxes that came up, "title: text", and a chooser's or an input box's title and
  // prompt.
  std::vector<std::string> boxes;
  [[nodiscard]] bool hasDoneAll() const { return answers_.empty() && plans_.empty(); }

 private:
  void act();
  void answer();
  void mouse(QWidget& widget, QPoint place, Qt::KeyboardModifiers modifiers, bool isDouble = false);

  desktop::QtDesktop& desktop_;
  struct Plan {
    std::function<bool()> holds;
    std::function<void()> whatToDo;
  };
  std::deque<std::function<void(QDialog&)>> answers_;
  std::deque<Plan> plans_;
  QTimer watch_;
  bool isAnswering_ = false;
  const QDialog* answered_ = nullptr;
};

}  // namespace trelvin::test
