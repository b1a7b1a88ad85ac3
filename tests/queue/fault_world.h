#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "child_process.h"
#include "faulty_files.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/curl/curl_socket_control.h"
#include "platform/native.h"
#include "session_fixture.h"
#include "system_facts.h"

namespace quorvel::testing {

namespace fs = std::filesystem;

inline constexpr const char* old_rules = "1\tTrue\tnone\t\t\tx\told\t1\t0\r\n";
inline const std::string taken_name = "The Harbour Lights - 1x03 - A Lantern for Maud.mkv";

/// One user with two new episodes, one of whose names is taken, and one run of the program over them: rules, an
/// exception and a setting are saved, the files are worked on, and what was done is undone.
struct World {
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  World(int action, std::string here, std::string home, std::string there)
      : action(action), here(std::move(here)), home(std::move(home)), there(std::move(there)) {}

  ~World() { settings_in(*system, home)->erase_all(); }

  void prepare() const {
    settings_in(*system, home)->erase_all();
    for (const std::string& folder : {in, home, there}) {
      fs::remove_all(folder);
      fs::create_directories(folder);
    }
    for (const std::string& made : {work, target}) fs::create_directory(made);
    write_file(first, "the first");
    write_file(second, "the second");
    write_file(target + taken_name, "there before");
    write_file(rules, old_rules);
  }

  void run(FaultPlan& plan, const std::string& api_base) {
    FaultyFiles files(*system, plan);
    FaultyOperation shell(*system_shell, plan);
    const std::unique_ptr<KeyValueStore> store = settings_in(files, home);
    CurlSocketControl socket;
    Events events;
    FakeUi ui{events};
    FakeClock clock{events};
    std::function<void()> quit = [] {};
    ui.on_events = [&] { quit(); };
    Session session{{*store, shell, files, socket, ui, clock}, {{}, {}, work, api_base}};
    int refused = 0;
    quit = [&] {
      if (std::exchange(quit_requested, false) && !session.processor.may_close()) ++refused;
    };
    try {
      session.start();
      session.log.set_level(LogLevel::Verbose);
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
    for (const std::string& folder : {here, there}) {
      for (const auto& [path, bytes] : everything_in(folder)) {
        if (fs::is_regular_file(path) && !is_temporary(path)) ++found[bytes];
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
    for (const auto& [path, bytes] : everything_in(home)) {
      if (fs::is_directory(path) || is_temporary(path) || bytes == old_rules) {
        continue;
      }
      const auto written = clean.versions.find(path.substr(0, path.find(".bak")));
      ASSERT_NE(written, clean.versions.end()) << path;
      EXPECT_TRUE(written->second.contains(bytes)) << path << ": " << bytes;
    }
    EXPECT_TRUE(fs::exists(rules)) << "there are always rules";
  }

  static bool is_temporary(const std::string& path) {
    return text_of(path_of(path).filename()).starts_with(".quorvel-");
  }
  static std::string below(const std::string& folder, const std::string& name) {
    return folder + native::separator + name + native::separator;
  }

  const int action;
  const std::string here, home, there;
  const std::string in = below(here, "in"), first = in + "Harbor.S01E02.mkv", second = in + "Harbor.S01E03.mkv";
  const std::string work = below(home, "work"), rules = work + "filters.dat";
  const std::string target = action == Rename ? in : below(there, "target");
  const std::unique_ptr<Files> system = system_files();
  const std::unique_ptr<FileOperation> system_shell = system_file_operation({}, {});
  bool done = false, quit_requested = false;
};

struct WorldFolders {
  const TemporaryFolder here{fs::temp_directory_path()}, home{facts::other_device}, there{facts::other_device};
  World world(int action) const { return {action, here.path(), home.path(), there.path()}; }
};

}  // namespace quorvel::testing
