#pragma once

#include <gtest/gtest.h>

#include <set>

#include "child_process.h"
#include "file_tools.h"
#include "session_fixture.h"
#include "system_facts.h"

namespace quorvel::testing {

namespace fs = std::filesystem;

enum class Fault { None, Fail, Full, KillBefore, KillAfter, Outside };

/// What happens at which call of the ports below, counted from 1. Full: from there on nothing can be written.
struct FaultPlan {
  Fault fault = Fault::None;
  int at = 0;
  std::function<void()> outside = [] {};  // what somebody else does just before that call
  int calls = 0;
  std::string last_write{};                                 // path of the last call if it wrote, else empty
  std::map<std::string, std::set<std::string>> versions{};  // all that was to be written, by path

  /// The result of `call`, or what it would be if it failed. `written`: the path that it writes to, if any.
  template <typename Call, typename Result = std::invoke_result_t<Call>>
  Result pass(const std::string& written, const Result& failed, const Call& call) {
    const bool hit = ++calls == at;
    if (hit && fault == Fault::KillBefore) kill_this_process();
    if (hit && fault == Fault::Outside) {
      last_write = written;
      outside();
    }
    if ((hit && fault == Fault::Fail) || (calls >= at && fault == Fault::Full && !written.empty())) return failed;
    const Result result = call();
    if (hit && fault == Fault::KillAfter) kill_this_process();
    return result;
  }
};

/// Real files behind a plan.
class FaultyPorts : public Files, public FileOperation {
 public:
  explicit FaultyPorts(FaultPlan& plan) : plan_(plan) {}
  Kind kind(const std::string& path) const override {
    return plan_.pass("", Kind::Missing, [&] { return files_->kind(path); });
  }
  std::optional<FileStamp> stamp(const std::string& path) const override {
    return plan_.pass("", {}, [&] { return files_->stamp(path); });
  }
  bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const override {
    return plan_.pass("", false, [&] { return files_->list(folder, entry); });
  }
  std::optional<std::string> read(const std::string& path) const override {
    return plan_.pass("", {}, [&] { return files_->read(path); });
  }
  bool replace(const std::string& path, const std::string& bytes) override {
    plan_.versions[path].insert(bytes);
    return plan_.pass(path, false, [&] { return files_->replace(path, bytes); });
  }
  bool remove(const std::string& path) override {
    return plan_.pass("", false, [&] { return files_->remove(path); });
  }
  bool create_folder(const std::string& path) override {
    return plan_.pass(path, false, [&] { return files_->create_folder(path); });
  }
  int perform(const FileOperationRequest& request) override {
    return plan_.pass(request.destination, plan_.fault == Fault::Full ? ENOSPC : EIO,
                      [&] { return shell_->perform(request); });
  }

 private:
  const std::unique_ptr<Files> files_ = system_files();
  const std::unique_ptr<FileOperation> shell_ = system_file_operation({}, {});
  FaultPlan& plan_;
};

inline constexpr const char* old_rules = "1\tTrue\tnone\t\t\tx\told\t1\t0\r\n";
inline const std::string taken_name = "The Harbour Lights - 1x03 - A Lantern for Maud.mkv";

/// One user with two new episodes, one of whose names is taken, and one run of the program over them: rules, an
/// exception and a setting are saved, the files are worked on, and what was done is undone.
struct World {
  int action;
  std::string here, home, there;
  std::string in = below(here, "in"), first = in + "Harbor.S01E02.mkv", second = in + "Harbor.S01E03.mkv";
  std::string work = below(home, "work"), rules = work + "filters.dat";
  std::string target = action == Rename ? in : below(there, "target");
  bool done = false, quit_requested = false;

  std::unique_ptr<KeyValueStore> settings(Files& files) const {
    return settings_of(files, home, "Faults of " + text_of(path_of(home).parent_path().filename()));
  }

  void prepare() const {
    settings(*system_files())->erase_all();
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

  void run(FaultPlan& plan) {
    FaultyPorts ports(plan);
    const std::unique_ptr<KeyValueStore> store = settings(ports);
    FakeListings service;
    Events events;
    FakeUi ui{events};
    FakeClock clock{events};
    Session session{{*store, ports, ports, service, ui, clock}, {{}, {}, work, service.base()}};
    int refused = 0;
    ui.on_events = [&] {
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
      for (int i = 1; i <= session.queue.count() && ui.closed == 0; ++i) expect_reason(session, session.queue.at(i));
      session.undo.run(1);
    } catch (const ProgramEnd&) {
      EXPECT_EQ(ui.messages.size(), 1u) << "the user is told why the program ends";
    }
  }

  static void expect_reason(const Session& session, const QueueItem& item) {
    const bool logged = std::any_of(session.log.lines().begin(), session.log.lines().end(),
                                    [](const auto& line) { return line.ends_with("Source file not found"); });
    EXPECT_TRUE(item.state == QueueState::Done || (item.state == QueueState::Failed && !item.error_text.empty()) ||
                logged)
        << "the item tells why";
  }

  std::map<std::string, std::string> everything() const {
    std::map<std::string, std::string> all;
    for (const std::string& folder : {here, home, there}) all.merge(everything_in(folder));
    return all;
  }

  /// Each file stands, whole, under one name, a copied one under two, and the file that was there before is untouched.
  /// Rules, exceptions and caches hold one of the versions ever written to them, or are not there.
  void expect_nothing_lost(const FaultPlan& clean) const {
    std::map<std::string, int> found;
    for (const auto& [path, bytes] : everything()) {
      if (fs::is_directory(path_of(path)) || text_of(path_of(path).filename()).starts_with(".quorvel-")) continue;
      if (!path.starts_with(home)) {
        ++found[bytes];
      } else if (bytes != old_rules) {
        const auto written = clean.versions.find(path.substr(0, path.find(".bak")));
        ASSERT_NE(written, clean.versions.end()) << path;
        EXPECT_TRUE(written->second.contains(bytes)) << path << ": " << bytes;
      }
    }
    const int max_copies = action == CopyAndRename ? 2 : 1;
    EXPECT_EQ(found.size(), 3u) << ::testing::PrintToString(found);
    for (const char* bytes : {"the first", "the second"}) {
      EXPECT_TRUE(found[bytes] >= 1 && found[bytes] <= max_copies) << bytes << " " << found[bytes];
    }
    EXPECT_EQ(contents(target + taken_name), "there before");
    EXPECT_TRUE(fs::exists(rules)) << "there are always rules";
  }

  static std::string below(const std::string& folder, const std::string& name) {
    return folder + native::separator + name + native::separator;
  }
};

struct WorldFolders {
  const TemporaryFolder here, home{facts::other_device}, there{facts::other_device};
  World world(int action) const { return {action, here.path(), home.path(), there.path()}; }
};

}  // namespace quorvel::testing
