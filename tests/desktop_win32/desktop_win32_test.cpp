#include "desktop_win32/desktop_win32_test.h"

#include <memory>
#include <utility>

#include "core/err.h"
#include "core/run_state.h"
#include "desktop/win32/win32_dialogs.h"
#include "fakes/people.h"
#include "platform/platform.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_perm_progress.h"
#include "window/frm_splash.h"

namespace trelvin::test {

namespace {

void renewAll() {
  run = RunState{};
  renew(frmMain);
  renew(frmSplash);
  renew(frmPermProgress);
  renew(frmDatabaseSelect);
  Err.clear();
}

}  // namespace

DesktopWin32Test::DesktopWin32Test(std::shared_ptr<desktop::Annotations> annotations)
    : desktop(desktop::windows(), std::move(annotations)), hand(desktop) {
  renewAll();
  platform() = Platform{};
  platform().application = std::make_unique<FakeApplication>("C:\\Trelvin");
  platform().dialogs = desktop::makeWin32Dialogs(desktop);
  platform().events = desktop::makeWin32Events(desktop);
}

DesktopWin32Test::~DesktopWin32Test() {
  for (Form* each :
       std::initializer_list<Form*>{&frmMain, &frmSplash, &frmPermProgress, &frmDatabaseSelect}) {
    each->loaded = false;
    each->visible = false;
  }
  hand.look();
  platform() = Platform{};
  renewAll();
}

void DesktopWin32Test::show(Form& form) {
  form.loaded = true;
  form.visible = true;
  hand.look();
}

HWND DesktopWin32Test::main(const std::string& control) {
  return Hand::see(frmMain, control);
}

}  // namespace trelvin::test
