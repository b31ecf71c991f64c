#include <gtest/gtest.h>

#include "TestEnvironment.h"

int main(int argc, char** argv) {
  zentrail::test::IsolateEnvironment();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
