#include "desktop/run_desktop.h"

#include <QApplication>
#include <QIcon>
#include <QStyle>
#include <clocale>
#include <cstdlib>
#include <iostream>

#include "core/err.h"
#include "core/main_window.h"
#include "core/start_up.h"
#include "desktop/qt/qt_dialogs.h"
#include "platform/linux/paths.h"
#include "platform/platform.h"

namespace trelvin::desktop {

namespace {

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// Qt knows only one end for a screen that can't be reached, and it leaves a core file behind.
void leaveOnFatalMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  std::cerr << message.toStdString() << std::endl;
  if (type != QtFatalMsg) return;
  std::cerr << "trelvin: the window could not be opened\n";
  std::_Exit(EXIT_FAILURE);
}

PathForms pathForms() {
  return {.toNative = [paths = Paths::ofProgram(executableFolder())](
                          std::string_view path) { return paths.nativePath(path); },
          .fromNative = windowsPath};
}

}  // namespace

bool hasDisplay() {
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

int runDesktop(char** argv) {
  qInstallMessageHandler(leaveOnFatalMessage);
  int onlyItsName = 1;  // the switches are the program's own
  const QApplication application(onlyItsName, argv);
  // Qt takes the user's language for everything; numbers stay as the program and its databases write them.
  std::setlocale(LC_NUMERIC, "C");
  std::setlocale(LC_COLLATE, "C");
  QApplication::setApplicationName("trelvin");
  QApplication::setApplicationDisplayName("Trelvin");
  QApplication::setQuitOnLastWindowClosed(false);  // the loop ends with the last form
  QApplication::setWindowIcon(
      QIcon::fromTheme("network-server", QApplication::style()->standardIcon(QStyle::SP_DriveNetIcon)));

  QtDesktop desktop(windows());
  platform().dialogs = makeQtDialogs(desktop, pathForms());
  platform().events = makeQtEvents(desktop);
  try {
    loadWelcomeForm();
    desktop.run();
  } catch (const Failure& failure) {
    endWithRunTimeError(failure);
  }
  return EXIT_SUCCESS;
}

}  // namespace trelvin::desktop
