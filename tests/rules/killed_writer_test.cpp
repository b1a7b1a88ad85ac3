#include <gtest/gtest.h>

#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

constexpr const char* first = "2\tTrue\tmkv\t\t/tv/\t[show]\tFile Type Equals mkv\t1\t0\r\n";
constexpr const char* second = "1\tTrue\t\t*\t\t[title]\tShow Name Equals Anything\t0\t1\r\n";

/// Exchanges the two rules in a work folder until somebody ends it.
TEST(SecondProcess, WritesWithoutEnd) {
  Events events;
  FakeUi ui{events};
  FakeClock clock{events};
  FakeKeyValues key_values;
  NoSocket socket;
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<FileOperation> shell = system_file_operation({}, {});
  Session session({key_values, *shell, *files, socket, ui, clock}, {{}, {}, told_by_first(), "http://127.0.0.1"});
  session.start();
  for (;;) session.filters.exchange(1, 2);
}

TEST(KilledWriter, LeavesTheOldListOrTheNewOneWhole) {
  const TemporaryFolder folder;
  const std::string path = folder / "filters.dat", old_list = std::string(first) + second,
                    new_list = std::string(second) + first;
  for (int round = 0; round < 10; ++round) {
    write_file(path, old_list);
    ChildProcess writer(second_process("WritesWithoutEnd", folder / ""));
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
