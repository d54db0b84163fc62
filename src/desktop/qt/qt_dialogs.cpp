#include "desktop/qt/qt_dialogs.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <algorithm>
#include <utility>
#include <vector>

#include "desktop/qt/texts.h"

namespace trelvin::desktop {

namespace {

constexpr const char* kProgramName = "Trelvin";
constexpr int kCharactersOfLine = 80;

struct ButtonOf {
  QMessageBox::StandardButton button;
  Answer answer;
};

constexpr ButtonOf kOk{QMessageBox::Ok, Answer::kOk};
constexpr ButtonOf kCancel{QMessageBox::Cancel, Answer::kCancel};
constexpr ButtonOf kAbort{QMessageBox::Abort, Answer::kAbort};
constexpr ButtonOf kRetry{QMessageBox::Retry, Answer::kRetry};
constexpr ButtonOf kIgnore{QMessageBox::Ignore, Answer::kIgnore};
constexpr ButtonOf kYes{QMessageBox::Yes, Answer::kYes};
constexpr ButtonOf kNo{QMessageBox::No, Answer::kNo};

std::vector<ButtonOf> buttonsOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOkCancel:
      return {kOk, kCancel};
    case Buttons::kYesNo:
      return {kYes, kNo};
    case Buttons::kYesNoCancel:
      return {kYes, kNo, kCancel};
    case Buttons::kAbortRetryIgnore:
      return {kAbort, kRetry, kIgnore};
    case Buttons::kOk:
      break;
  }
  return {kOk};
}

// A box whose question has no button for backing out wants an answer: neither Escape nor the window's own
// button is one.
class Box final : public QMessageBox {
 public:
  Box(QWidget* parent, bool mayBackOut) : QMessageBox(parent), mayBackOut_(mayBackOut) {}

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape && !mayBackOut_) return;
    QMessageBox::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    if (mayBackOut_) {
      QMessageBox::closeEvent(event);
    } else {
      event->ignore();
    }
  }

 private:
  bool mayBackOut_;
};

// Line ends of the program's texts are those of its home.
QString linesOf(std::string_view text) {
  return toQt(text).replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

// Qt would break lines that a text already has in the shape that it wants.
void keepLinesWhole(QMessageBox& box) {
  auto* const label = box.findChild<QLabel*>(QLatin1String("qt_msgbox_label"));
  if (label == nullptr) return;
  int widest = 0;
  for (const QString& line : box.text().split('\n')) {
    widest = std::max(widest, label->fontMetrics().horizontalAdvance(line));
  }
  const int widestWanted = label->fontMetrics().averageCharWidth() * kCharactersOfLine;
  label->setMinimumWidth(std::min(widest, widestWanted));
}

QString titleOf(std::string_view title) {
  return title.empty() ? QString::fromLatin1(kProgramName) : toQt(title);
}

QString filterOf(const FileChoice::Filter& filter) {
  // A pattern for every file holds a dot on the program's home, which few names have here.
  const std::string pattern = filter.pattern == "*.*" ? "*" : filter.pattern;
  return toQt(filter.caption + " (" + pattern + ")");
}

class QtDialogs final : public Dialogs {
 public:
  QtDialogs(QtDesktop& desktop, PathForms paths) : desktop_(desktop), paths_(std::move(paths)) {}

  Answer showMessage(const Message& message) override {
    const std::vector<ButtonOf> buttons = buttonsOf(message.buttons);
    const bool mayBackOut = buttons.size() == 1 || buttons.back().answer == Answer::kCancel;
    Box box(desktop_.activeWindow(), mayBackOut);
    box.setWindowTitle(titleOf(message.title));
    box.setTextFormat(Qt::PlainText);
    box.setText(linesOf(message.text));
    if (message.icon == Icon::kExclamation) box.setIcon(QMessageBox::Warning);
    keepLinesWhole(box);
    for (const ButtonOf& each : buttons) box.addButton(each.button);
    box.setDefaultButton(buttons.front().button);
    box.setEscapeButton(buttons.back().button);
    show(box);
    for (const ButtonOf& each : buttons) {
      if (box.standardButton(box.clickedButton()) == each.button) return each.answer;
    }
    return buttons.back().answer;
  }

  std::string inputBox(std::string_view title, std::string_view prompt,
                       std::string_view defaultText) override {
    QInputDialog box(desktop_.activeWindow());
    box.setWindowTitle(titleOf(title));
    box.setLabelText(linesOf(prompt));
    box.setTextValue(toQt(defaultText));
    box.resize(box.fontMetrics().averageCharWidth() * kCharactersOfLine, box.sizeHint().height());
    show(box);
    return box.result() == QDialog::Accepted ? fromQt(box.textValue()) : std::string();
  }

  std::optional<std::string> chooseFileToSave(const FileChoice& choice) override {
    return choose(choice, QFileDialog::AcceptSave);
  }
  std::optional<std::string> chooseFileToOpen(const FileChoice& choice) override {
    return choose(choice, QFileDialog::AcceptOpen);
  }

 private:
  void show(QDialog& box) {
    box.setWindowModality(Qt::ApplicationModal);
    box.show();
    desktop_.waitWhile([&box] { return box.isVisible(); });
  }

  std::optional<std::string> choose(const FileChoice& choice, QFileDialog::AcceptMode mode) {
    QFileDialog box(desktop_.activeWindow(), titleOf(choice.title));
    box.setAcceptMode(mode);
    box.setFileMode(QFileDialog::AnyFile);  // a file to open need not be there
    box.setOption(QFileDialog::DontConfirmOverwrite, (choice.flags & chooser_flag::kOverwritePrompt) == 0);
    QStringList filters;
    for (const FileChoice::Filter& each : choice.filters) filters.push_back(filterOf(each));
    box.setNameFilters(filters);
    box.selectNameFilter(filters.value(choice.filterIndex - 1));
    box.setDefaultSuffix(toQt(choice.defaultExtension));
    const QFileInfo start(toQt(paths_.toNative(choice.path)));
    box.setDirectory(start.absolutePath());
    box.selectFile(start.fileName());
    show(box);
    if (box.result() != QDialog::Accepted || box.selectedFiles().isEmpty()) return std::nullopt;
    return paths_.fromNative(fromQt(box.selectedFiles().front()));
  }

  QtDesktop& desktop_;
  PathForms paths_;
};

class QtEvents final : public Events {
 public:
  explicit QtEvents(QtDesktop& desktop) : desktop_(desktop) {}
  void doEvents() override { desktop_.yield(); }
  void beep() override { QApplication::beep(); }
  void showProgress(std::string_view title, std::uint64_t done, std::uint64_t found) override {
    desktop_.showProgress(title, done, found);
  }

 private:
  QtDesktop& desktop_;
};

}  // namespace

std::unique_ptr<Dialogs> makeQtDialogs(QtDesktop& desktop, PathForms paths) {
  return std::make_unique<QtDialogs>(desktop, std::move(paths));
}

std::unique_ptr<Events> makeQtEvents(QtDesktop& desktop) {
  return std::make_unique<QtEvents>(desktop);
}

}  // namespace trelvin::desktop
