// Runs the tests on Qt's own offscreen platform, unless the environment names another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <clocale>

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  qputenv("QT_QPA_PLATFORM",
          qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ? qgetenv("QT_QPA_PLATFORM") : "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  std::setlocale(LC_NUMERIC, "C");
  return RUN_ALL_TESTS();
}
