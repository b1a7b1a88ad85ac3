#include "fault_world.h"

#include <random>
#include <thread>

#include "listings_service.h"

namespace quorvel::testing {
namespace {

constexpr const char* by_hand = "1\tTrue\t\tby hand\t\tx\tmine\t0\t1\r\n";

constexpr int with_companion = 10;

struct Faults : ::testing::TestWithParam<int> {
  /// What is done to a call that many after the chosen one; false makes it fail.
  using Harm = std::function<bool(int later, const std::string& written)>;

  World world{GetParam() % with_companion, GetParam() > with_companion};

  ~Faults() override { world.settings(*system_files())->erase_all(); }

  /// For each call that a run without a fault makes, or every few where files are slow: a run in a fresh world.
  void at_every_call(const Harm& harm, const std::function<void(FaultPlan& plan)>& check) {
    const int step = facts::windows ? 4 : 1;
    FaultPlan clean;
    world.prepare();
    world.run(clean);
    ASSERT_TRUE(world.done);
    for (int at = 1 + GetParam() % step; at <= clean.calls && !HasFailure(); at += step) {
      SCOPED_TRACE("at call " + std::to_string(at) + " of " + std::to_string(clean.calls));
      FaultPlan plan;
      plan.works = [&](int call, const std::string& written) { return harm(call - at, written); };
      world.prepare();
      world.run(plan);
      check(plan);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Actions, Faults,
                         ::testing::Values(Rename, MoveAndRename, CopyAndRename, HardLinkAndRename,
                                           facts::windows ? int{Rename} : int{SymbolicLinkAndRename},  // Wine has none
                                           MoveAndRename + with_companion));

TEST_P(Faults, AFailureAFullDiskAKillOrAQuitAtAnyCallCostsNothing) {
  const Harm harms[] = {[](int later, const std::string&) { return later != 0; },
                        [](int later, const std::string& written) { return later < 0 || written.empty(); },
                        [](int later, const std::string&) { return later < 0; },  // files as a kill leaves them
                        [&](int later, const std::string&) { return world.quit_requested |= later == 0, true; }};
  for (const Harm& harm : harms) at_every_call(harm, [&](FaultPlan& plan) { world.expect_nothing_lost(plan); });
}

TEST_P(Faults, NothingThatOthersDoMeanwhileCostsAFile) {
  if (world.has_companion) GTEST_SKIP() << "which others can do no more to than to the file itself";
  const std::string moved = world.target + "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  // Each is named by the bytes that must still be somewhere afterwards.
  const auto act = [&](const std::string& bytes, const std::string& written) {
    if (bytes.empty()) fs::remove(world.first);
    if (bytes == "grown" && fs::exists(world.first)) std::ofstream(world.first, std::ios::app) << bytes;
    if (bytes == "replaced") write_file(world.in + "new", bytes), fs::rename(world.in + "new", world.first);
    if (bytes == "in the way" && !fs::exists(moved)) write_file(moved, bytes);
    std::error_code kept;  // as Windows does where a file is open
    if (bytes == "the first") fs::remove_all(world.work, kept);
    // Between the last look at the file and its renaming nobody can be kept from writing.
    if (bytes == by_hand && !written.ends_with("filters.dat")) write_file(world.rules, bytes);
  };
  for (const std::string bytes : {"", "grown", "replaced", "in the way", "the first", by_hand}) {
    bool acted = false;
    const auto harm = [&](int later, const std::string& written) {
      if (later == 0) {
        const auto before = world.everything();
        act(bytes, written);
        acted = before != world.everything();
      }
      return true;
    };
    at_every_call(harm, [&](FaultPlan&) {
      std::string all;
      for (const auto& [path, held] : world.everything()) all += held + "\n";
      EXPECT_TRUE(!acted || all.find(bytes) != std::string::npos) << bytes << " is lost";
      EXPECT_NE(all.find("the second"), std::string::npos);
      EXPECT_EQ(contents(world.target + taken_name), "there before");
      EXPECT_TRUE(bytes != "in the way" || all.find("the first") != std::string::npos);
    });
  }
}

TEST(KilledProgram, LeavesEveryFileWholeUnderItsOldOrItsNewName) {
  const ListingsService service;
  const World world{MoveAndRename};
  const std::string rule = "2\tTrue\t\t*\t" + world.target + "\t[title]\td\t0\t1\r\n";
  const std::string moved = world.target + "The Pilot Boat.mkv", big(6'000'000, 'q');
  const std::string path = world.in + "The.Harbour.Lights.S01E02.mkv";
  std::minstd_rand random(std::random_device{}());
  for (int round = 0; round < 60; ++round) {
    world.prepare();
    write_file(world.rules, rule);
    write_file(path, big);
    ChildProcess program({QUORVEL_CLI, {"-w" + world.work, path}, "", user_at(world.home.path(), service.base())});
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));  // any instant will do
    program.kill();
    program.status();
    const bool before = contents(path) == big, after = contents(moved) == big;
    EXPECT_TRUE((before || after) && (after || !fs::exists(moved)) && (before || !fs::exists(path)));
    EXPECT_EQ(contents(world.rules), rule);
    ChildProcess({QUORVEL_CLI, {"-w" + world.work, world.in + "none"}, "", user_at(world.home.path(), service.base())})
        .status();
    for (const auto& [path, bytes] : world.everything()) {
      const std::string name = text_of(path_of(path).filename());
      EXPECT_FALSE(name.starts_with("pending-") || (!path.starts_with(world.home.path()) && name.starts_with(".")))
          << path;
    }
  }
}

}  // namespace
}  // namespace quorvel::testing
