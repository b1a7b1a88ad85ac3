#include <iomanip>
#include <random>
#include <sstream>
#include <thread>

#include "fault_world.h"

namespace quorvel::testing {
namespace {

constexpr const char* by_hand = "1\tTrue\t\tby hand\t\tx\tmine\t0\t1\r\n";
const std::string first_name = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";

struct Faults : ::testing::TestWithParam<int> {
  const WorldFolders folders{};
  ListingsService service;
  World world = folders.world(GetParam());

  /// For each call that a run without a fault makes, or every few where a run takes long: a fresh world, in which
  /// `each` runs the program.
  void at_every_call(const std::function<void(const FaultPlan& clean, int at)>& each) {
    FaultPlan clean;
    world.prepare();
    world.run(clean, service.base());
    ASSERT_TRUE(world.done);
    RecordProperty("calls", clean.calls);
    for (int at = 1 + GetParam() % facts::call_step; at <= clean.calls && !HasFailure(); at += facts::call_step) {
      SCOPED_TRACE("at call " + std::to_string(at) + " of " + std::to_string(clean.calls));
      world.prepare();
      each(clean, at);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Actions, Faults, ::testing::Values(Rename, MoveAndRename, CopyAndRename));

TEST_P(Faults, AFailureOrAFullDiskAtAnyCallCostsNothing) {
  for (const Fault fault : {Fault::Fail, Fault::Full}) {
    at_every_call([&](const FaultPlan&, int at) {
      FaultPlan plan{.fault = fault, .at = at};
      world.run(plan, service.base());
      world.expect_nothing_lost();
      world.expect_whole_files(plan);
    });
  }
}

/// One run with all that it is told.
TEST(SecondProcess, RunsUntilKilled) {
  int action = 0, fault = 0, at = 0;
  std::string base, here, home, there;
  std::istringstream(told_by_first()) >> action >> fault >> at >> base >> std::quoted(here) >> std::quoted(home) >>
      std::quoted(there);
  FaultPlan plan{.fault = static_cast<Fault>(fault), .at = at};
  World(action, here, home, there).run(plan, base);
}

TEST_P(Faults, AKillAtAnyCallCostsNothing) {
  for (const Fault fault : {Fault::KillBefore, Fault::KillAfter}) {
    at_every_call([&](const FaultPlan& clean, int at) {
      std::ostringstream told;
      told << GetParam() << " " << static_cast<int>(fault) << " " << at << " " << service.base() << " "
           << std::quoted(world.here) << std::quoted(world.home) << std::quoted(world.there);
      ChildProcess process(second_process("RunsUntilKilled", told.str()));
      EXPECT_EQ(process.status(), ChildProcess::killed);
      world.expect_nothing_lost();
      world.expect_whole_files(clean);
    });
  }
}

TEST_P(Faults, NothingThatOthersDoMeanwhileCostsAFile) {
  const std::string moved = world.target + first_name;
  FaultPlan plan;
  // The bytes that must still be somewhere afterwards, and what somebody does.
  const std::pair<const char*, std::function<void()>> others[] = {{"", [&] { fs::remove(world.first); }},
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
    at_every_call([&, bytes = std::string(bytes), act = act](const FaultPlan&, int at) {
      bool acted = false;
      plan = FaultPlan{.fault = Fault::Outside, .at = at, .outside = [&] {
                         const auto before = everything_in(world.here);
                         const auto there = everything_in(world.there);
                         const auto home = everything_in(world.home);
                         act();
                         acted = before != everything_in(world.here) || there != everything_in(world.there) ||
                                 home != everything_in(world.home);
                       }};
      world.run(plan, service.base());
      std::string all;
      for (const std::string& folder : {world.here, world.there, world.home}) {
        for (const auto& [path, held] : everything_in(folder)) all += held + "\n";
      }
      EXPECT_TRUE(!acted || all.find(bytes) != std::string::npos) << bytes << " is lost";
      EXPECT_NE(all.find("the second"), std::string::npos);
      EXPECT_EQ(contents(world.target + taken_name), "there before");
      EXPECT_TRUE(bytes != "in the way" || all.find("the first") != std::string::npos);
    });
  }
}

TEST_P(Faults, ADriveThatStallsAtAnyCallOnlyDelaysAndAQuitIsHeardAfterwards) {
  at_every_call([&](const FaultPlan&, int at) {
    FaultPlan plan{.fault = Fault::Outside, .at = at, .outside = [&] {
                     std::thread([&] { world.quit_requested = true; }).join();
                   }};
    world.run(plan, service.base());
    world.expect_nothing_lost();
    world.expect_whole_files(plan);
  });
}

TEST(KilledProgram, LeavesEveryFileWholeUnderItsOldOrItsNewName) {
  const ListingsService service;
  const WorldFolders folders{};
  const World world = folders.world(MoveAndRename);
  const std::string data = data_folder_of(world.home), file = data + native::separator + "filters.dat";
  const std::string rule = "2\tTrue\t\t*\t" + world.target + "\t[title]\td\t0\t1\r\n";
  const std::string moved = world.target + "The Pilot Boat.mkv", big(6'000'000, 'q');
  const std::string path = world.in + "The.Harbour.Lights.S01E02.mkv";
  std::minstd_rand random(std::random_device{}());
  std::map<std::string, int> ends;
  for (int round = 0; round < 60; ++round) {
    world.prepare();
    fs::create_directories(data);
    write_file(file, rule);
    write_file(path, big);
    ChildProcess program(
        {.program = QUORVEL_CLI, .arguments = {path}, .environment = user_at(world.home, service.base())});
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));  // not for anything: any instant will do
    program.kill();
    const bool was_killed = program.status() == ChildProcess::killed;
    const bool before = contents(path) == big, after = contents(moved) == big;
    EXPECT_TRUE((before || after) && (after || !fs::exists(moved)) && (before || !fs::exists(path)));
    EXPECT_EQ(contents(file), rule);
    ++ends[std::string(was_killed ? "killed" : "ended") + (before ? ", old" : "") + (after ? ", new" : "")];
  }
  RecordProperty("ends", ::testing::PrintToString(ends));
}

}  // namespace
}  // namespace quorvel::testing
