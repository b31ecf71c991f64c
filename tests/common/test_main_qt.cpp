#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "TestEnvironment.h"

int main(int argc, char** argv) {
  // Test discovery and plain runs may have no display: fall back to the offscreen platform.
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  zentrail::test::IsolateEnvironment();
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
