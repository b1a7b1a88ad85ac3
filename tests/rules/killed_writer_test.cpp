#include <gtest/gtest.h>

#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

constexpr const char* first = "2\tTrue\tmkv\t\t/tv/\t[show]\tFile Type Equals mkv\t1\t0\r\n";
constexpr const char* second = "1\tTrue\t\t*\t\t[title]\tShow Name Equals Anything\t0\t1\r\n";

/// Exchanges the two rules in this work folder until somebody ends it.
[[noreturn]] void write_without_end(const std::string& work_dir) {
  TestPorts ports;
  NoSocket socket;
  Session session({ports.key_values, *ports.shell, *ports.files, socket, ports.ui, ports.clock},
                  {{}, {}, work_dir, "http://127.0.0.1"});
  session.start();
  for (;;) session.filters.exchange(1, 2);
}

TEST(KilledWriter, LeavesTheOldListOrTheNewOneWhole) {
  if (!second_process().empty()) write_without_end(second_process());
  const TemporaryFolder folder;
  const std::string path = folder / "filters.dat", old_list = std::string(first) + second,
                    new_list = std::string(second) + first;
  for (int round = 0; round < 10; ++round) {
    write_file(path, old_list);
    ChildProcess writer(this_test_again(folder / ""));
    while (contents(path) != new_list) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(700 * round));  // not for anything: any instant will do
    writer.kill();
    writer.status();
    const std::string left = contents(path);
    ASSERT_TRUE(left == old_list || left == new_list) << left;
  }
}

}  // namespace
}  // namespace quorvel::testing
