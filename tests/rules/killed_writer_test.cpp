#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct KilledWriter : ::testing::Test, TestSession {};

TEST_F(KilledWriter, LeavesTheOldListOrTheNewOneWhole) {
  const std::string first = "2\tTrue\tmkv\t\t/tv/\t[show]\tFile Type Equals mkv\t1\t0\r\n",
                    second = "1\tTrue\t\t*\t\t[title]\tShow Name Equals Anything\t0\t1\r\n";
  start();
  write("data/Quorvel/filters.dat", first + second);
  ASSERT_TRUE(session.filters.loadfilters());
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      for (;;) session.filters.exchange(1, 2);
    }
    usleep(static_cast<useconds_t>(1000 + 700 * round));  // not waited for anything: any instant will do
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::string bytes = read("data/Quorvel/filters.dat");
    ASSERT_TRUE(bytes == first + second || bytes == second + first) << bytes;
  }
}

}  // namespace
}  // namespace quorvel::testing
