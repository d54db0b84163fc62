// A window after its layout: the widgets, their places, and the form that they show.
#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/desktop.h"
#include "desktop/qt/control_view.h"

class QBoxLayout;
class QLabel;
class QLayout;

namespace trelvin::desktop {

class WindowView : public QMainWindow, public DrawnWindow {
 public:
  // A person's wish to take the window away is passed on as a touch; the window itself stays.
  WindowView(const Window& window, Desk& desk, std::function<void()> onClose);
  ~WindowView() override;

  void draw() override;

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  // Words that the form has no control for.
  struct WordsFor {
    QLabel* words;
    QWidget* widget;
  };

  void makeMenus();
  void makeBars();
  void makeTimers();
  template <typename Kind>
  Kind& controlOf(const std::string& name) const;
  [[nodiscard]] QWidget* widgetOf(const std::string& control) const;

  QLayout* layoutFor(const Place& place, QWidget& parent);
  QLayout* boxFor(const Place& place, QWidget& parent);
  QLayout* stackFor(const Place& place, QWidget& parent);
  void putInto(QBoxLayout& box, const Place& place, QWidget& parent);
  QWidget* makeWidget(const Place& place, QWidget& parent);
  void putWords(QBoxLayout& box, const std::string& caption, QWidget& widget);

  void bindLabels();
  void alignBeginnings();
  void nameForHearing();
  void orderTabs();
  void press(const std::string& button);
  void drawSize();
  [[nodiscard]] FormSize ownSize() const;

  Form& form_;
  WindowLayout layout_;
  std::function<FormSize()> size_;
  std::function<void(FormSize)> afterResize_;
  std::function<void(std::int32_t)> afterStateChange_;
  Desk& desk_;
  std::function<void()> onClose_;
  FormSize wantedSize_;
  std::vector<std::unique_ptr<ControlView>> views_;
  std::vector<WordsFor> words_;
  std::vector<QLabel*> beginnings_;  // labels that begin a row
};

}  // namespace trelvin::desktop
