// The windows' tests need an application, which needs no screen.
#include <gtest/gtest.h>

#include <QApplication>

#ifdef __SANITIZE_ADDRESS__
// What the font library keeps until the end is no leak of ours.
extern "C" const char*
__asan_default_options() {  // NOLINT(bugprone-reserved-identifier): the sanitizer's name
  return "detect_leaks=0";
}
#endif

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
