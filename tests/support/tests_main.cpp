#include <gtest/gtest.h>

#include "child_process.h"

int main(int argc, char** argv) {
  int status = 0;
  if (quorvel::testing::SecondProcess::run(quorvel::separate_arguments(argc, argv), status)) return status;
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
