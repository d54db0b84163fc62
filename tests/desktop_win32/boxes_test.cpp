#include <filesystem>

#include "desktop_win32/desktop_win32_test.h"
#include "fakes/people.h"
#include "platform/platform.h"
#include "platform/windows/wide_text.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BoxesTest : public DesktopWin32Test {
 protected:
  BoxesTest() { show(frmMain); }
  static Answer ask(const Message& message) { return platform().dialogs->showMessage(message); }
  static HWND mainWindow() { return Hand::window("Trelvin Utility"); }
};

TEST_F(BoxesTest, EveryKindOfBoxOffersItsButtonsAndGivesTheAnswer) {
  const std::vector<std::pair<Buttons, std::vector<int>>> kinds{
      {Buttons::kOk, {IDOK}},
      {Buttons::kOkCancel, {IDOK, IDCANCEL}},
      {Buttons::kYesNo, {IDYES, IDNO}},
      {Buttons::kYesNoCancel, {IDYES, IDNO, IDCANCEL}},
      {Buttons::kAbortRetryIgnore, {IDABORT, IDRETRY, IDIGNORE}}};
  for (const auto& [buttons, answers] : kinds) {
    for (const int answer : answers) {
      hand.willDo([answer, count = answers.size()](HWND box) {
        std::size_t found = 0;
        for (HWND each = nullptr; (each = FindWindowExW(box, each, L"BUTTON", nullptr)) != nullptr;) {
          if (IsWindowVisible(each) != FALSE) ++found;
        }
        EXPECT_EQ(found, count);
        PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(answer), 0);
      });
      EXPECT_EQ(static_cast<int>(ask({"Really?", buttons})), answer);
    }
  }
}

TEST_F(BoxesTest, ABoxHasItsTitleOrTheProgramsName) {
  std::vector<std::string> titles;
  for (const char* title : {"", "Directory configuration"}) {
    hand.willDo([&](HWND box) {
      titles.push_back(Hand::textOf(box));
      PostMessageW(box, WM_COMMAND, IDOK, 0);
    });
    ask({"Text", Buttons::kOk, title});
  }
  EXPECT_THAT(titles, ElementsAre("Trelvin", "Directory configuration"));
}

TEST_F(BoxesTest, WhileABoxIsUpTimersTickAndTheWindowBehindItTakesNoTouch) {
  int ticks = 0;
  frmMain.timAd1.interval = 10;
  frmMain.timAd1.onTimer = [&] {
    ++ticks;
    frmMain.lstOutput.addItem("tick");
  };
  frmMain.timAd1.enabled = true;
  hand.willDo([&](HWND box) {
    EXPECT_FALSE(IsWindowEnabled(mainWindow()));
    // A timer of its own takes the box away when the other one has ticked.
    frmMain.syncPermTimer.interval = 10;
    frmMain.syncPermTimer.enabled = true;
    frmMain.syncPermTimer.onTimer = [&ticks, box] {
      if (ticks >= 2) PostMessageW(box, WM_COMMAND, IDOK, 0);
    };
  });
  ask({"Wait"});
  EXPECT_GE(ticks, 2);
  EXPECT_THAT(Hand::entriesOf(main("lstOutput")), ::testing::Not(IsEmpty())) << "drawn behind the box";
  EXPECT_TRUE(IsWindowEnabled(mainWindow()));
}

TEST_F(BoxesTest, WhatWasMeantForControlsBehindABoxIsDropped) {
  count(frmMain.cmdAddExclusion);
  frmMain.cmdPopulate.onClick = [this] {
    hand.willPress(IDOK);
    ask({"Done!"});
  };
  SendMessageW(main("cmdPopulate"), BM_CLICK, 0, 0);
  SendMessageW(main("cmdAddExclusion"), BM_CLICK, 0, 0);
  hand.look();
  EXPECT_THAT(clicked, IsEmpty());
}

TEST_F(BoxesTest, AnEndOfTheProgramWhileABoxIsUpGetsPastTheBox) {
  frmMain.timExit.interval = 10;
  frmMain.timExit.enabled = true;
  frmMain.timExit.onTimer = [] { platform().application->end(3); };
  try {
    ask({"Wait"});
    ADD_FAILURE() << "the box gave an answer";
  } catch (const ProcessEnded& end) {
    EXPECT_EQ(end.exitCode, 3);
  }
}

// The box for a text is a window of ours, which Hand does not watch.
class InputBoxTest : public BoxesTest {
 protected:
  // Types and presses keys as soon as the box is up.
  std::string answerOf(const std::function<void(HWND box)>& person) {
    frmMain.timAd1.interval = 10;
    frmMain.timAd1.enabled = true;
    frmMain.timAd1.onTimer = [this, person] {
      const HWND box = Hand::window("Where to");
      if (box == nullptr) return;
      frmMain.timAd1.enabled = false;
      person(box);
    };
    return platform().dialogs->inputBox("Where to", "Please specify the new directory", "D:\\old");
  }
  static HWND answerField(HWND box) { return FindWindowExW(box, nullptr, L"EDIT", nullptr); }
  static HWND button(HWND box, const wchar_t* caption) {
    return FindWindowExW(box, nullptr, L"BUTTON", caption);
  }
};

TEST_F(InputBoxTest, GivesTheTextThatIsTyped) {
  std::string offered;
  const std::string answer = answerOf([&](HWND box) {
    offered = Hand::textOf(answerField(box));
    EXPECT_EQ(GetFocus(), answerField(box));
    EXPECT_FALSE(IsWindowEnabled(mainWindow()));
    for (const wchar_t each : std::wstring(L"E:\\new")) PostMessageW(answerField(box), WM_CHAR, each, 1);
    PostMessageW(answerField(box), WM_KEYDOWN, VK_RETURN, 1);
  });
  EXPECT_EQ(offered, "D:\\old");
  EXPECT_EQ(answer, "E:\\new") << "typed over what was offered";
  EXPECT_TRUE(IsWindowEnabled(mainWindow()));
  EXPECT_EQ(Hand::window("Where to"), nullptr);
}

TEST_F(InputBoxTest, GivesTheTextOfferedForOk) {
  EXPECT_EQ(answerOf([](HWND box) { PostMessageW(button(box, L"OK"), BM_CLICK, 0, 0); }), "D:\\old");
}

TEST_F(InputBoxTest, GivesNothingForCancelEscapeAndItsCloseButton) {
  EXPECT_EQ(answerOf([](HWND box) { PostMessageW(button(box, L"Cancel"), BM_CLICK, 0, 0); }), "");
  EXPECT_EQ(answerOf([](HWND box) { PostMessageW(answerField(box), WM_KEYDOWN, VK_ESCAPE, 1); }), "");
  EXPECT_EQ(answerOf([](HWND box) { PostMessageW(box, WM_CLOSE, 0, 0); }), "");
}

class ChooserTest : public BoxesTest {
 protected:
  ChooserTest() {
    std::filesystem::create_directories(folder_);
    choice.title = "Save the job";
    choice.filters = {{"Jobs (*.tpf)", "*.tpf"}, {"All files (*.*)", "*.*"}};
    choice.path = folder() + "\\Nightly.tpf";
    choice.defaultExtension = "tpf";
    choice.flags = chooser_flag::kOverwritePrompt | chooser_flag::kHideReadOnly;
  }
  ~ChooserTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  [[nodiscard]] std::string folder() const { return folder_.string(); }

  FileChoice choice;

 private:
  std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "TrelvinChooser";
};

TEST_F(ChooserTest, OffersThePathThatItStartsWith) {
  std::string title;
  hand.willDo([&](HWND box) {
    title = Hand::textOf(box);
    PostMessageW(box, WM_COMMAND, IDOK, 0);
  });
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice), folder() + "\\Nightly.tpf");
  EXPECT_EQ(title, "Save the job");
  EXPECT_FALSE(std::filesystem::exists(folder() + "\\Nightly.tpf")) << "no file is made";
}

TEST_F(ChooserTest, AddsTheExtensionToANameWithoutOne) {
  choice.path = folder() + "\\Weekly";
  hand.willPress(IDOK);
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice), folder() + "\\Weekly.tpf");
}

TEST_F(ChooserTest, GivesNothingForCancel) {
  hand.willPress(IDCANCEL);
  EXPECT_EQ(platform().dialogs->chooseFileToSave(choice), std::nullopt);
  hand.willPress(IDCANCEL);
  EXPECT_EQ(platform().dialogs->chooseFileToOpen(choice), std::nullopt);
}

TEST_F(ChooserTest, TakesAFileToOpenThatIsNotThere) {
  hand.willPress(IDOK);
  EXPECT_EQ(platform().dialogs->chooseFileToOpen(choice), folder() + "\\Nightly.tpf");
}

TEST_F(ChooserTest, OffersTheNameWhereItsFolderIsGone) {
  choice.path = folder() + "\\gone\\Nightly.tpf";
  hand.willPress(IDOK);
  const std::optional<std::string> chosen = platform().dialogs->chooseFileToSave(choice);
  EXPECT_THAT(chosen, ::testing::Optional(::testing::EndsWith("\\Nightly.tpf")));
}

TEST_F(ChooserTest, LeavesTheFolderOfTheProcessAlone) {
  const auto before = std::filesystem::current_path();
  const auto goElsewhere = [](HWND box) {
    std::filesystem::current_path("C:\\");
    PostMessageW(box, WM_COMMAND, IDOK, 0);
  };
  hand.willDo(goElsewhere);
  EXPECT_NE(platform().dialogs->chooseFileToSave(choice), std::nullopt);
  EXPECT_EQ(std::filesystem::current_path(), before);
  hand.willDo(goElsewhere);
  EXPECT_NE(platform().dialogs->chooseFileToOpen(choice), std::nullopt);
  EXPECT_EQ(std::filesystem::current_path(), before);
}

}  // namespace
}  // namespace trelvin::test
