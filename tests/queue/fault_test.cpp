#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <latch>
#include <random>
#include <thread>

#include "faulty_files.h"
#include "file_tools.h"
#include "platform/linux/key_file_store.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* old_rules = "1\tTrue\tnone\t\t\tx\told\t1\t0\r\n";
constexpr const char* by_hand = "1\tTrue\t\tby hand\t\tx\tmine\t0\t1\r\n";
const std::string first_name = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
const std::string taken_name = "The Harbour Lights - 1x03 - A Lantern for Maud.mkv";

/// One user with two new episodes, one of whose names is taken, and one run of the program over them: rules, an
/// exception and a setting are saved, the files are worked on, and what was done is undone.
struct World {
  explicit World(int action) : action(action) {}

  void prepare() const {
    for (const std::string& folder : {in, home.path(), there.path()}) {
      fs::remove_all(folder);
      fs::create_directories(folder);
    }
    for (const std::string& made : {home / "work", target}) fs::create_directory(made);
    write_file(first, "the first");
    write_file(second, "the second");
    write_file(target + taken_name, "there before");
    write_file(rules, old_rules);
  }

  void run(FaultPlan& plan, const std::string& api_base) {
    FaultyFiles files(*system, plan);
    FaultyOperation shell(*system_shell, plan);
    KeyFileStore store(files, home / "config/settings.ini");
    CurlSocketControl socket;
    RecordingUi ui;
    FixedClock clock;
    std::function<void()> quit = [] {};
    ui.on_events = [&] { quit(); };
    Session session{{store, shell, files, socket, ui, clock}, {{}, {}, home / "work/", api_base}};
    int refused = 0;
    quit = [&] {
      if (std::exchange(quit_requested, false) && !session.processor.may_close()) ++refused;
    };
    try {
      session.start(DebugLog::verbose);
      session.filters.append({"new", action, true, target, std::string(default_mask), "*", Equals, "", 0, false});
      session.filters.savefilters();
      session.filters.exchange(1, 2);
      session.exceptions.append({"harbor", "the harbour lights", false});
      session.exceptions.saveefilters();
      session.settings_store.write_number("nocache", 0);
      for (const std::string& path : {first, second}) session.intake.add_to_queue(path, false);
      session.processor.process_queue();
      EXPECT_EQ(ui.closed, refused) << "a quit that had to wait is carried out";
      done = session.queue.count() > 0 && session.queue.at(1).state == QueueState::Done;
      for (int i = 1; i <= session.queue.count() && ui.closed == 0; ++i) expect_told(session, session.queue.at(i));
      session.undo.run(1);
    } catch (const ProgramEnd&) {
      EXPECT_EQ(ui.messages.size(), 1u) << "the user is told why the program ends";
    }
  }

  static void expect_told(const Session& session, const QueueItem& item) {
    const bool logged = std::any_of(session.log.lines().begin(), session.log.lines().end(),
                                    [](const auto& line) { return line.ends_with("Source file not found"); });
    EXPECT_TRUE(item.state == QueueState::Done || (item.state == QueueState::Failed && !item.error_text.empty()) ||
                logged)
        << "the item tells why";
  }

  /// Each file stands, whole, under one name, a copied one under two, and the file that was there before is untouched.
  void expect_nothing_lost() const {
    std::map<std::string, int> found;
    for (const TemporaryFolder* folder : {&here, &there}) {
      for (const auto& [path, bytes] : everything_in(folder->path())) {
        if (fs::is_regular_file(path) && path.find("/.quorvel-") == std::string::npos) ++found[bytes];
      }
    }
    const int most = action == CopyAndRename ? 2 : 1;
    EXPECT_EQ(found.size(), 3u) << ::testing::PrintToString(found);
    for (const char* bytes : {"the first", "the second"}) {
      EXPECT_TRUE(found[bytes] >= 1 && found[bytes] <= most) << bytes << " " << found[bytes];
    }
    EXPECT_EQ(contents(target + taken_name), "there before");
  }

  /// Rules, exceptions, settings and caches hold one of the versions ever written to them, or are not there.
  void expect_whole_files(const FaultPlan& clean) const {
    for (const auto& [path, bytes] : everything_in(home.path())) {
      if (fs::is_directory(path) || path.find("/.quorvel-") != std::string::npos || bytes == old_rules) {
        continue;
      }
      const auto written = clean.versions.find(path.substr(0, path.find(".bak")));
      ASSERT_NE(written, clean.versions.end()) << path;
      EXPECT_TRUE(written->second.contains(bytes)) << path << ": " << bytes;
    }
    EXPECT_TRUE(fs::exists(rules)) << "there are always rules";
  }

  const int action;
  const TemporaryFolder here, home{"/dev/shm"}, there{"/dev/shm"};
  const std::string in = here / "in/", first = in + "Harbor.S01E02.mkv", second = in + "Harbor.S01E03.mkv";
  const std::string target = action == Rename ? in : there / "target/", rules = home / "work/filters.dat";
  const std::unique_ptr<Files> system = system_files();
  const std::unique_ptr<FileOperation> system_shell = system_file_operation({}, {});
  bool done = false, quit_requested = false;
};

struct Faults : ::testing::TestWithParam<int> {
  ListingsService service;
  World world{GetParam()};

  /// For each call that a run without a fault makes: a fresh world, in which `each` runs the program.
  void at_every_call(const std::function<void(const FaultPlan& clean, int at)>& each) {
    FaultPlan clean;
    world.prepare();
    world.run(clean, service.base());
    ASSERT_TRUE(world.done);
    RecordProperty("calls", clean.calls);
    for (int at = 1; at <= clean.calls && !HasFailure(); ++at) {
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

TEST_P(Faults, AKillAtAnyCallCostsNothing) {
  for (const Fault fault : {Fault::KillBefore, Fault::KillAfter}) {
    at_every_call([&](const FaultPlan& clean, int at) {
      const pid_t child = fork();
      if (child == 0) {
        FaultPlan plan{.fault = fault, .at = at};
        world.run(plan, service.base());
        _exit(1);
      }
      int status = 0;
      waitpid(child, &status, 0);
      EXPECT_TRUE(WIFSIGNALED(status));
      world.expect_nothing_lost();
      world.expect_whole_files(clean);
    });
  }
}

TEST_P(Faults, NothingThatOthersDoMeanwhileCostsAFile) {
  const std::string moved = world.target + first_name;
  FaultPlan plan;
  // The bytes that must still be somewhere afterwards, and what somebody does.
  const std::pair<const char*, std::function<void()>> others[] = {
      {"", [&] { fs::remove(world.first); }},
      {"grown",
       [&] {
         if (fs::exists(world.first)) std::ofstream(world.first, std::ios::app) << "grown";
       }},
      {"replaced",
       [&] {
         write_file(world.in + "new", "replaced");
         fs::rename(world.in + "new", world.first);
       }},
      {"in the way",
       [&] {
         if (!fs::exists(moved)) write_file(moved, "in the way");
       }},
      {"the first", [&] { fs::remove_all(world.home / "work"); }},
      {by_hand, [&] {
         // Between the last look at the file and its renaming nobody can be kept from writing.
         if (!plan.last_write.ends_with("filters.dat")) write_file(world.rules, by_hand);
       }}};
  for (const auto& [bytes, act] : others) {
    at_every_call([&, bytes = std::string(bytes), act = act](const FaultPlan&, int at) {
      bool acted = false;
      plan = FaultPlan{.fault = Fault::Outside, .at = at, .outside = [&] {
                         const auto before = everything_in(world.here.path());
                         const auto there = everything_in(world.there.path());
                         const auto home = everything_in(world.home.path());
                         act();
                         acted = before != everything_in(world.here.path()) ||
                                 there != everything_in(world.there.path()) || home != everything_in(world.home.path());
                       }};
      world.run(plan, service.base());
      std::string all;
      for (const TemporaryFolder* folder : {&world.here, &world.there, &world.home}) {
        for (const auto& [path, held] : everything_in(folder->path())) all += held + "\n";
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
                     std::latch drive(1);
                     std::jthread other([&] { drive.count_down(); });
                     drive.wait();
                     world.quit_requested = true;
                   }};
    world.run(plan, service.base());
    world.expect_nothing_lost();
    world.expect_whole_files(plan);
  });
}

TEST_P(Faults, AnotherUsersFilesStayAsTheyAre) {
  if (getuid() != 0) GTEST_SKIP() << "needs a second user";
  world.prepare();
  for (const TemporaryFolder* folder : {&world.here, &world.there, &world.home}) {
    fs::permissions(fs::path(folder->path()).parent_path(), fs::perms(0755));
  }
  // The second user has settings of his own.
  fs::create_directory(world.home / "config");
  ASSERT_EQ(chown((world.home / "config").c_str(), 65534, 65534), 0);
  const auto all = [&] {
    return std::tuple(everything_in(world.here.path()), everything_in(world.there.path()),
                      everything_in(world.home / "work"));
  };
  const auto before = all();
  ASSERT_EQ(setegid(65534) + seteuid(65534), 0);
  FaultPlan plan;
  world.run(plan, service.base());
  EXPECT_GT(plan.calls, 40) << "the run reaches its end";
  ASSERT_EQ(seteuid(0) + setegid(0), 0);
  EXPECT_EQ(all(), before);
}

TEST(KilledProgram, LeavesEveryFileWholeUnderItsOldOrItsNewName) {
  const ListingsService service;
  World world(MoveAndRename);
  const std::string data = world.home / "share/Quorvel", file = data + "/filters.dat";
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
    const pid_t child = fork();
    if (child == 0) {
      clearenv();
      for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) setenv(name, (world.home / "share").c_str(), 1);
      setenv("QUORVEL_API_BASE", service.base().c_str(), 1);
      if (std::freopen("/dev/null", "w", stdout) == nullptr || dup2(1, 2) < 0) _exit(9);
      execl(QUORVEL_CLI, QUORVEL_CLI, path.c_str(), nullptr);
      _exit(9);
    }
    usleep(random() % 40'000);  // not waited for anything: any instant will do
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    const bool before = contents(path) == big, after = contents(moved) == big;
    EXPECT_TRUE((before || after) && (after || !fs::exists(moved)) && (before || !fs::exists(path)));
    EXPECT_EQ(contents(file), rule);
    ++ends[std::string(WIFSIGNALED(status) ? "killed" : "ended") + (before ? ", old" : "") + (after ? ", new" : "")];
  }
  RecordProperty("ends", ::testing::PrintToString(ends));
}

}  // namespace
}  // namespace quorvel::testing
