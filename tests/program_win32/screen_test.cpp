#include "program_win32/screen_test.h"

#include "desktop_win32/hand.h"
#include "window/frm_main.h"

namespace trelvin::test {

using ::testing::HasSubstr;
using ::testing::Not;

ScreenTest::ScreenTest() {
  addServer("WEB1", webSite(1, "Bob's shop") + webSite(2, "News"));
  servers_ = servers();
}

void ScreenTest::startProgram(const std::string& arguments) {
  started_.push_back(start(arguments));
  program_ = started_.back().get();
  person_ = std::make_unique<Person>(program_->number(), folder_.path());
}

void ScreenTest::openProgram(const std::string& arguments) {
  startProgram(arguments);
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdPopulate")); }));
}

HWND ScreenTest::main(const std::string& control) const {
  return person().see(frmMain, control);
}

HWND ScreenTest::mainWindow() const {
  return person().window(frmMain.caption);
}

std::vector<std::string> ScreenTest::entries(const std::string& list) const {
  return Hand::entriesOf(main(list));
}

std::string ScreenTest::text(const std::string& control) const {
  return Hand::textOf(main(control));
}

bool ScreenTest::waitForEntries(const std::string& list, const std::vector<std::string>& wanted) const {
  return Person::waitFor([&] { return entries(list) == wanted; });
}

bool ScreenTest::waitForFocus(const std::string& control) const {
  return Person::waitFor([&] {
    const HWND wanted = main(control);
    return wanted != nullptr && person().focus() == wanted;
  });
}

bool ScreenTest::waitForBox(const std::string& beginning) const {
  return Person::waitFor([&] { return person().boxText().starts_with(beginning); });
}

bool ScreenTest::waitForNoBox() const {
  return Person::waitFor([this] { return person().window("Trelvin") == nullptr; });
}

void ScreenTest::typeByMouse(const std::string& textBox, const std::string& wanted) const {
  person().click(main(textBox));
  ASSERT_TRUE(waitForFocus(textBox));
  person().keys("Home shift+End", mainWindow());
  person().type(wanted, mainWindow());
  ASSERT_TRUE(Person::waitFor([&] { return text(textBox) == wanted; }));
}

void ScreenTest::chooseByKeys(const std::string& dropDown, int entry) const {
  person().click(main(dropDown));
  ASSERT_TRUE(
      Person::waitFor([&] { return SendMessageW(main(dropDown), CB_GETDROPPEDSTATE, 0, 0) != FALSE; }));
  std::string keys;
  for (int i = 0; i < entry; ++i) keys += "Down ";
  person().keys(keys + "Return", mainWindow());
  ASSERT_TRUE(Person::waitFor([&] { return SendMessageW(main(dropDown), CB_GETCURSEL, 0, 0) == entry; }));
}

void ScreenTest::chooseDatabaseByMouse() const {
  person().clickTab(main("TabExportType"), 1);
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdExportFile")); }));
}

void ScreenTest::expectEndInOrder() const {
  const Outcome outcome = program().outcome();
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.error, "");
  const std::vector<std::string> lines = linesOf(log());
  ASSERT_FALSE(lines.empty());
  EXPECT_THAT(lines.back(), HasSubstr("Closing complete"));
  EXPECT_THAT(log(), Not(HasSubstr("Error")));
}

}  // namespace trelvin::test
