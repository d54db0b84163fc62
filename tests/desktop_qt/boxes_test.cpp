// Boxes and choosers, as people see and answer them.
#include <QAbstractButton>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "desktop/layout.h"
#include "desktop/qt/texts.h"
#include "desktop_qt/desktop_test.h"
#include "platform/platform.h"

namespace trelvin::test {
namespace {

using desktop::fromQt;
using desktop::toQt;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class BoxesTest : public DesktopTest {
 protected:
  BoxesTest() { openProgram(); }
  static Answer show(Buttons buttons) {
    return platform().dialogs->showMessage({.text = "Text", .buttons = buttons});
  }
  static std::vector<std::string> captionsOf(const QDialog& box) {
    std::vector<std::string> captions;
    for (const QAbstractButton* each : box.findChildren<QAbstractButton*>()) {
      if (each->isVisible()) captions.push_back(desktop::plainCaption(fromQt(each->text())));
    }
    return captions;
  }
  // A box is still up when it was asked to go.
  static void expectStays(QDialog& box) {
    Person::sendKey(box, Qt::Key_Escape);
    EXPECT_TRUE(box.isVisible());
    box.close();
    EXPECT_TRUE(box.isVisible());
  }
};

TEST_F(BoxesTest, EveryButtonGivesItsAnswer) {
  const std::vector<std::tuple<Buttons, std::string, Answer>> cases{
      {Buttons::kOk, "OK", Answer::kOk},
      {Buttons::kOkCancel, "OK", Answer::kOk},
      {Buttons::kOkCancel, "Cancel", Answer::kCancel},
      {Buttons::kYesNo, "Yes", Answer::kYes},
      {Buttons::kYesNo, "No", Answer::kNo},
      {Buttons::kYesNoCancel, "Yes", Answer::kYes},
      {Buttons::kYesNoCancel, "No", Answer::kNo},
      {Buttons::kYesNoCancel, "Cancel", Answer::kCancel},
      {Buttons::kAbortRetryIgnore, "Abort", Answer::kAbort},
      {Buttons::kAbortRetryIgnore, "Retry", Answer::kRetry},
      {Buttons::kAbortRetryIgnore, "Ignore", Answer::kIgnore}};
  for (const auto& [buttons, caption, answer] : cases) {
    person.willPress(caption);
    EXPECT_EQ(show(buttons), answer) << caption;
  }
}

TEST_F(BoxesTest, ABoxHasJustItsButtonsAndTheFirstIsTheDefault) {
  person.willDo([](QDialog& box) {
    EXPECT_THAT(captionsOf(box), UnorderedElementsAre("Abort", "Retry", "Ignore"));
    EXPECT_EQ(fromQt(dynamic_cast<QMessageBox&>(box).defaultButton()->text()), "Abort");
    Person::sendKey(box, Qt::Key_Return);
  });
  EXPECT_EQ(show(Buttons::kAbortRetryIgnore), Answer::kAbort);
  person.willDo([](QDialog& box) { Person::sendKey(box, Qt::Key_Return); });
  EXPECT_EQ(show(Buttons::kYesNoCancel), Answer::kYes);
}

TEST_F(BoxesTest, EscapeCancelsWhereThereIsSomethingToCancel) {
  for (const auto& [buttons, answer] : {std::pair{Buttons::kOk, Answer::kOk},
                                        {Buttons::kOkCancel, Answer::kCancel},
                                        {Buttons::kYesNoCancel, Answer::kCancel}}) {
    person.willCancel();
    EXPECT_EQ(show(buttons), answer);
  }
}

TEST_F(BoxesTest, AQuestionThatCantBeCancelledWaitsForItsAnswer) {
  for (const auto& [buttons, caption] :
       {std::pair{Buttons::kYesNo, "No"}, {Buttons::kAbortRetryIgnore, "Retry"}}) {
    person.willDo([caption = std::string(caption)](QDialog& box) {
      expectStays(box);
      Person::press(box, caption);
    });
    show(buttons);
  }
}

TEST_F(BoxesTest, TitleTextAndIconAreThoseOfTheMessage) {
  person.willDo([](QDialog& box) {
    const auto& message = dynamic_cast<QMessageBox&>(box);
    EXPECT_EQ(fromQt(message.windowTitle()), "Title");
    EXPECT_EQ(fromQt(message.text()), "One <b>line</b> & more\nanother");
    EXPECT_EQ(message.textFormat(), Qt::PlainText);
    EXPECT_EQ(message.icon(), QMessageBox::Warning);
    Person::press(box, "OK");
  });
  platform().dialogs->showMessage(
      {.text = "One <b>line</b> & more\r\nanother", .title = "Title", .icon = Icon::kExclamation});
  person.willDo([](QDialog& box) {
    EXPECT_EQ(fromQt(box.windowTitle()), "Trelvin");
    EXPECT_EQ(dynamic_cast<QMessageBox&>(box).icon(), QMessageBox::NoIcon);
    Person::press(box, "OK");
  });
  show(Buttons::kOk);
}

TEST_F(BoxesTest, AnInputBoxShowsItsPromptAndDefaultAndGivesWhatIsTyped) {
  const auto ask = [] { return platform().dialogs->inputBox("Title", "Prompt", "D:\\old"); };
  person.willDo([](QDialog& box) {
    const auto& input = dynamic_cast<QInputDialog&>(box);
    EXPECT_EQ(fromQt(input.windowTitle()), "Title");
    EXPECT_EQ(fromQt(input.labelText()), "Prompt");
    EXPECT_EQ(fromQt(input.textValue()), "D:\\old");
    Person::sendKey(box, Qt::Key_Return);
  });
  EXPECT_EQ(ask(), "D:\\old");
  person.willType("E:\\new");
  EXPECT_EQ(ask(), "E:\\new");
  person.willType("");
  EXPECT_EQ(ask(), "");
  person.willCancel();
  EXPECT_EQ(ask(), "") << "Cancel is the empty text";
}

class ChooserTest : public BoxesTest {
 protected:
  [[nodiscard]] FileChoice choice() const {
    return {.title = "Save Backup Job",
            .filters = {{"All Files", "*.*"}, {"Backup Jobs", "*.job"}},
            .filterIndex = 2,
            .path = programPath() + "\\Backup.job",
            .defaultExtension = "job",
            .flags = chooser_flag::kOverwritePrompt};
  }
};

TEST_F(ChooserTest, BeginsAtThePathWithTheFilterAndGivesAPathOfTheProgram) {
  person.willDo([this](QDialog& box) {
    auto& chooser = dynamic_cast<QFileDialog&>(box);
    EXPECT_EQ(fromQt(chooser.windowTitle()), "Save Backup Job");
    EXPECT_EQ(fromQt(chooser.directory().absolutePath()), programFolder().string());
    EXPECT_EQ(fromQt(chooser.findChild<QLineEdit*>()->text()), "Backup.job");
    EXPECT_EQ(fromQt(chooser.selectedNameFilter()), "Backup Jobs (*.job)");
    EXPECT_EQ(fromQt(chooser.nameFilters().join("|")), "All Files (*)|Backup Jobs (*.job)");
    Person::sendKey(box, Qt::Key_Return);
  });
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice()), programPath() + "\\Backup.job");
}

TEST_F(ChooserTest, GivesNothingWhenItIsCancelled) {
  person.willCancel();
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice()), std::nullopt);
  person.willCancel();
  EXPECT_EQ(platform().dialogs->chooseFileToOpen(choice()), std::nullopt);
}

TEST_F(ChooserTest, PutsTheExtensionBehindANameWithoutOne) {
  person.willType((programFolder() / "nightly").string());
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice()), programPath() + "\\nightly.job");
}

TEST_F(ChooserTest, OpensAFileThatIsNotThere) {
  person.willType((programFolder() / "later.job").string());
  EXPECT_EQ(platform().dialogs->chooseFileToOpen(choice()), programPath() + "\\later.job");
}

TEST_F(ChooserTest, AsksBeforeItGivesAFileToSaveThatIsThere) {
  folder.write("program/Backup.job", "old");
  person.willDo([](QDialog& box) {
    Person::leaveUp(box);
    QTimer::singleShot(0, &box, [&box] { Person::sendKey(box, Qt::Key_Return); });
  });
  person.willPress("Yes");
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice()), programPath() + "\\Backup.job");
  EXPECT_EQ(folder.read("program/Backup.job"), "old");
}

}  // namespace
}  // namespace trelvin::test
