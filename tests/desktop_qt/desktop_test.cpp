#include "desktop_qt/desktop_test.h"

#include <QListView>

#include "core/start_up.h"
#include "desktop/qt/qt_dialogs.h"
#include "desktop/qt/texts.h"
#include "platform/linux/paths.h"
#include "platform/platform.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"

namespace trelvin::test {

DesktopTest::DesktopTest() : desktop(desktop::windows()), person(desktop) {
  renew(frmPermProgress);
  renew(frmDatabaseSelect);
  const std::string network = (folder / "network").string();
  platform().dialogs = desktop::makeQtDialogs(
      desktop, {.toNative = [network](std::string_view path) { return Paths(network).nativePath(path); },
                .fromNative = windowsPath});
  platform().events = desktop::makeQtEvents(desktop);
}

DesktopTest::~DesktopTest() {
  EXPECT_TRUE(person.hasDoneAll()) << "a box that was expected did not come up, or a moment did not come";
}

void DesktopTest::openProgram() {
  loadWelcomeForm();
  person.look();
  person.click("cmdContinue");
  ASSERT_NE(Person::window("Trelvin Utility"), nullptr);
}

void DesktopTest::addServers() {
  addServer("WEB1",
            metabaseFile(webService(
                webSite(1, "Shop", {{"ServerBindings", "10.0.0.1:80:shop.example"}}) +
                virtualDir(1, "/ROOT", {{"Path", "D:\\inetpub\\shop"}, {"KeyType", "IIsWebVirtualDir"}}) +
                virtualDir(1, "/ROOT/images", {{"Path", "D:\\inetpub\\images"}}) +
                webSite(2, "News", {{"ServerBindings", "10.0.0.2:80:news.example"}}) +
                virtualDir(2, "/ROOT", {{"Path", "D:\\inetpub\\news"}, {"KeyType", "IIsWebVirtualDir"}}))));
  addServer("NEW1", metabaseFile(webService("")));
}

void DesktopTest::listWeb1() {
  person.type("txtImportServer", "WEB1");
  person.dropDown("lstIMIISVer", 2);
  person.click("cmdPopulate");
}

std::vector<std::string> DesktopTest::shownEntries(const std::string& list) {
  std::vector<std::string> entries;
  const QAbstractItemModel& model = *Person::see<QListView>(list).model();
  for (int i = 0; i < model.rowCount(); ++i) {
    entries.push_back(desktop::fromQt(model.index(i, 0).data().toString()));
  }
  return entries;
}

}  // namespace trelvin::test
