// Brings the windows into their main states, as a person does on the sample servers, and takes a picture of
// each. TRELVIN_PICTURES names the folder that gets them; TRELVIN_PICTURES_DARK asks for dark colours, and
// TRELVIN_PICTURES_SIZE, such as 800x600, for another size of the main window.
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPalette>
#include <QPixmap>
#include <QTabBar>
#include <filesystem>

#include "core/start_up.h"
#include "desktop/qt/texts.h"
#include "desktop_qt/desktop_test.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

constexpr const char* kFolder = "TRELVIN_PICTURES";
constexpr const char* kDark = "TRELVIN_PICTURES_DARK";
constexpr const char* kSize = "TRELVIN_PICTURES_SIZE";
constexpr int kSmallest = 0;  // of the file, as Qt tells the quality

void useDarkColours() {
  QPalette palette;
  palette.setColor(QPalette::Window, QColor(45, 45, 45));
  palette.setColor(QPalette::WindowText, Qt::white);
  palette.setColor(QPalette::Base, QColor(30, 30, 30));
  palette.setColor(QPalette::AlternateBase, QColor(45, 45, 45));
  palette.setColor(QPalette::ToolTipBase, QColor(30, 30, 30));
  palette.setColor(QPalette::ToolTipText, Qt::white);
  palette.setColor(QPalette::Text, Qt::white);
  palette.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
  palette.setColor(QPalette::Button, QColor(53, 53, 53));
  palette.setColor(QPalette::ButtonText, Qt::white);
  palette.setColor(QPalette::Highlight, QColor(42, 110, 180));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
  }
  QApplication::setPalette(palette);
}

class Pictures : public DesktopTest {
 protected:
  Pictures() {
    if (qEnvironmentVariableIsSet(kDark)) useDarkColours();
    std::filesystem::copy(std::filesystem::path(TRELVIN_SOURCE_DIR) / "samples/servers", folder / "network",
                          std::filesystem::copy_options::recursive);
  }

  static void take(const std::string& name, QWidget& window) {
    const QString file = QDir(qEnvironmentVariable(kFolder)).filePath(desktop::toQt(name + ".png"));
    ASSERT_TRUE(window.grab().save(file, "PNG", kSmallest)) << desktop::fromQt(file);
  }
  static void take(const std::string& name) { take(name, *Person::window("Trelvin Utility")); }
  // The box that the next click brings up, and then the button.
  void willTake(const std::string& name, const std::string& button) {
    person.willDo([this, name, button](QDialog& box) {
      take(name, box);
      Person::press(box, button);
    });
  }

  void openInSize() {
    openProgram();
    const QStringList size = qEnvironmentVariable(kSize).split('x');
    if (size.size() == 2) Person::window("Trelvin Utility")->resize(size[0].toInt(), size[1].toInt());
    person.look();
  }
  void listSamples() {
    person.type("txtImportServer", "WEB5");
    person.dropDown("lstIMIISVer", 1);
    person.click("cmdPopulate");
    person.clickEntry("lstSites", 0);
    person.clickEntry("lstSites", 2);
  }
};

TEST_F(Pictures, TheMainWindowFromListingToTheEndOfARun) {
  openInSize();
  take("main-empty");
  listSamples();
  take("listed");
  person.chooseTab("tabNewValues", 2);
  take("bindings");
  person.willType("D:\\inetpub");
  person.willType("E:\\sites");
  person.chooseTab("tabNewValues", 4);
  person.click("cmdAddNewValue");
  take("find-and-replace");
  person.chooseTab("tabNewValues", 1);
  person.willType("E:\\Sites\\Shop");
  person.doubleClickEntry("lstDirectories", 0);
  take("mapping");
  person.type("txtExportServer", "NEW6");
  person.dropDown("lstEXIISVer", 2);
  take("main");
  willTake("warning", "OK");
  willTake("system-directory", "Yes");
  person.once([] { return frmMain.lstOutput.listCount() > 12 && shownEntries("lstOutput").size() > 12; },
              [] { take("exporting"); });
  person.willPress("OK");
  person.click("cmdExportServer");
  take("exported");
}

TEST_F(Pictures, TheMainWindowWithADatabase) {
  openInSize();
  listSamples();
  person.chooseTab("TabExportType", 2);
  take("to-database");
  person.willPress("OK");
  person.willPress("OK");
  person.click("cmdExportFile");
  person.chooseTab("TabImportType", 2);
  person.click("cmdPopulate");
  person.clickEntry("lstSites", 0);
  take("from-database");
}

TEST_F(Pictures, TheOtherWindows) {
  loadWelcomeForm();
  person.look();
  take("welcome", *Person::window("Welcome to the Trelvin Utility"));
  person.click("cmdContinue");
  listSamples();
  person.chooseMenu("mnuFile", "mnuDBLoc");
  take("database", *Person::window("Database Setup"));
  person.key(Qt::Key_Escape);
  person.willDo([](QDialog& box) {
    take("new-directory", box);
    box.reject();
  });
  person.doubleClickEntry("lstDirectories", 0);
}

}  // namespace
}  // namespace trelvin::test
