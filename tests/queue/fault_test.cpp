#include "fault_world.h"

#include <iomanip>
#include <random>
#include <sstream>
#include <thread>

#include "listings_service.h"

namespace quorvel::testing {
namespace {

constexpr const char* by_hand = "1\tTrue\t\tby hand\t\tx\tmine\t0\t1\r\n";

struct Faults : ::testing::TestWithParam<int> {
  const WorldFolders folders;
  World world = folders.world(GetParam());

  ~Faults() override { world.settings(*system_files())->erase_all(); }

  /// For each call that a run without a fault makes, or every few where processes are slow to start: a fresh world, in
  /// which `each` runs the program.
  void at_every_call(const std::function<void(const FaultPlan& clean, int at)>& each) {
    const int step = facts::windows ? 4 : 1;
    FaultPlan clean;
    world.prepare();
    world.run(clean);
    ASSERT_TRUE(world.done);
    for (int at = 1 + GetParam() % step; at <= clean.calls && !HasFailure(); at += step) {
      SCOPED_TRACE("at call " + std::to_string(at) + " of " + std::to_string(clean.calls));
      world.prepare();
      each(clean, at);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Actions, Faults, ::testing::Values(Rename, MoveAndRename, CopyAndRename));

TEST_P(Faults, AFailureAFullDiskOrAQuitAtAnyCallCostsNothing) {
  for (const Fault fault : {Fault::Fail, Fault::Full, Fault::Outside}) {
    at_every_call([&](const FaultPlan&, int at) {
      FaultPlan plan{.fault = fault, .at = at, .outside = [&] { world.quit_requested = true; }};
      world.run(plan);
      world.expect_nothing_lost(plan);
    });
  }
}

const SecondProcess run_until_killed("run", [](const std::string& given) {
  int action = 0, fault = 0, at = 0;
  std::string here, home, there;
  std::istringstream(given) >> action >> fault >> at >> std::quoted(here) >> std::quoted(home) >> std::quoted(there);
  FaultPlan plan{.fault = static_cast<Fault>(fault), .at = at};
  World{action, here, home, there}.run(plan);
  return 0;
});

TEST_P(Faults, AKillAtAnyCallCostsNothing) {
  for (const Fault fault : {Fault::KillBefore, Fault::KillAfter}) {
    at_every_call([&](const FaultPlan& clean, int at) {
      std::ostringstream given;
      given << GetParam() << " " << static_cast<int>(fault) << " " << at << " " << std::quoted(world.here)
            << std::quoted(world.home) << std::quoted(world.there);
      EXPECT_EQ(ChildProcess(run_until_killed.start(given.str())).status(), ChildProcess::killed);
      world.expect_nothing_lost(clean);
    });
  }
}

TEST_P(Faults, NothingThatOthersDoMeanwhileCostsAFile) {
  const std::string moved = world.target + "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  FaultPlan plan;
  // The bytes that must still be somewhere afterwards, and what somebody does.
  const std::pair<std::string, std::function<void()>> others[] = {{"", [&] { fs::remove(world.first); }},
                                                                  {"grown",
                                                                   [&] {
                                                                     if (fs::exists(world.first))
                                                                       std::ofstream(world.first, std::ios::app)
                                                                           << "grown";
                                                                   }},
                                                                  {"replaced",
                                                                   [&] {
                                                                     write_file(world.in + "new", "replaced");
                                                                     fs::rename(world.in + "new", world.first);
                                                                   }},
                                                                  {"in the way",
                                                                   [&] {
                                                                     if (!fs::exists(moved))
                                                                       write_file(moved, "in the way");
                                                                   }},
                                                                  {"the first", [&] { fs::remove_all(world.work); }},
                                                                  {by_hand, [&] {
                                                                     // Between the last look at the file and its
                                                                     // renaming nobody can be kept from writing.
                                                                     if (!plan.last_write.ends_with("filters.dat"))
                                                                       write_file(world.rules, by_hand);
                                                                   }}};
  for (const auto& [bytes, act] : others) {
    at_every_call([&, bytes = bytes, act = act](const FaultPlan&, int at) {
      bool acted = false;
      plan = FaultPlan{.fault = Fault::Outside, .at = at, .outside = [&] {
                         const auto before = world.everything();
                         act();
                         acted = before != world.everything();
                       }};
      world.run(plan);
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
  const WorldFolders folders;
  const World world = folders.world(MoveAndRename);
  const std::string data = data_folder_of(world.home), file = data + native::separator + "filters.dat";
  const std::string rule = "2\tTrue\t\t*\t" + world.target + "\t[title]\td\t0\t1\r\n";
  const std::string moved = world.target + "The Pilot Boat.mkv", big(6'000'000, 'q');
  const std::string path = world.in + "The.Harbour.Lights.S01E02.mkv";
  std::minstd_rand random(std::random_device{}());
  for (int round = 0; round < 60; ++round) {
    world.prepare();
    fs::create_directories(data);
    write_file(file, rule);
    write_file(path, big);
    ChildProcess program(
        {.program = QUORVEL_CLI, .arguments = {path}, .environment = user_at(world.home, service.base())});
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));  // any instant will do
    program.kill();
    program.status();
    const bool before = contents(path) == big, after = contents(moved) == big;
    EXPECT_TRUE((before || after) && (after || !fs::exists(moved)) && (before || !fs::exists(path)));
    EXPECT_EQ(contents(file), rule);
  }
}

}  // namespace
}  // namespace quorvel::testing
