#include <gtest/gtest.h>

#include "child_process.h"

int main(int argc, char** argv) {
  if (const auto status = quorvel::testing::SecondProcess::run(quorvel::separate_arguments(argc, argv))) return *status;
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
