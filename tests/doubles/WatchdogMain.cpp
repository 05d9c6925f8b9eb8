#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  // A filter that fits nothing is a mistake in the list of tests, not a success.
  if (testing::UnitTest::GetInstance()->test_to_run_count() == 0 && !testing::GTEST_FLAG(list_tests)) {
    std::fputs("No test was run.\n", stderr);
    return 3;
  }
  return result;
}
