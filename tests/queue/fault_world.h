#pragma once

#include <gtest/gtest.h>

#include <set>

#include "child_process.h"
#include "session_fixture.h"
#include "system_facts.h"

namespace quorvel::testing {

namespace fs = std::filesystem;

/// Real files, of which calls fail as planned.
struct FaultPlan : Files, FileOperation {
  /// Whether the call of this number, from 1, works; `written` is the path that it writes to, if any.
  std::function<bool(int call, const std::string& written)> works = [](int, const std::string&) { return true; };
  mutable int calls = 0;
  std::map<std::string, std::set<std::string>> versions;  // all that was to be written, by path

  Kind kind(const std::string& path) const override { return next() ? files->kind(path) : Kind::Missing; }
  bool is_link(const std::string& path) const override { return next() && files->is_link(path); }
  std::optional<FileStamp> stamp(const std::string& path) const override {
    return next() ? files->stamp(path) : std::nullopt;
  }
  bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const override {
    return next() && files->list(folder, entry);
  }
  std::optional<std::string> read(const std::string& path) const override {
    return next() ? files->read(path) : std::nullopt;
  }
  bool replace(const std::string& path, const std::string& bytes) override {
    versions[path].insert(bytes);
    return next(path) && files->replace(path, bytes);
  }
  std::unique_ptr<HeldFile> hold(const std::string& path) override { return next() ? files->hold(path) : nullptr; }
  bool remove(const std::string& path) override { return next() && files->remove(path); }
  bool create_folder(const std::string& path) override { return next(path) && files->create_folder(path); }
  int perform(const FileOperationRequest& request) override {
    return next(request.destination) ? shell->perform(request) : EIO;
  }

  bool next(const std::string& written = "") const { return works(++calls, written); }
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<FileOperation> shell = system_file_operation({}, {});
};

inline constexpr const char* old_rules = "1\tTrue\tnone\t\t\tx\told\t1\t0\r\n";
inline const std::string taken_name = "The Harbour Lights - 1x03 - A Lantern for Maud.mkv";

/// One user with two new episodes, one of whose names is taken, and one run of the program over them: rules, an
/// exception and a setting are saved, the files are worked on, and what was done is undone.
struct World {
  int action;
  bool has_companion = false;  // the first episode, its subtitles
  const TemporaryFolder here{}, home{facts::other_device}, there{facts::other_device};
  std::string in = here / "in/", first = in + "Harbor.S01E02.mkv", second = in + "Harbor.S01E03.mkv",
              words = in + "Harbor.S01E02.en.srt";
  std::string work = home / "work/", rules = work + "filters.dat";
  std::string target = action == Rename ? in : action == HardLinkAndRename ? here / "target/" : there / "target/";
  bool done = false, quit_requested = false;

  std::unique_ptr<KeyValueStore> settings(Files& files) const {
    return settings_of(files, home.path(), "Faults of " + home.name());
  }

  void prepare() const {
    settings(*system_files())->erase_all();
    for (const TemporaryFolder* folder : {&here, &home, &there}) fs::remove_all(path_of(folder->path()));
    for (const std::string& folder : {in, work, there.path(), target}) fs::create_directories(path_of(folder));
    write_file(first, "the first");
    write_file(second, "the second");
    if (has_companion) write_file(words, "its words");
    write_file(target + taken_name, "there before");
    write_file(rules, old_rules);
  }

  void run(FaultPlan& plan) {
    const std::unique_ptr<KeyValueStore> store = settings(plan);
    FakeListings service;
    FakeWeb web;
    Events events;
    FakeUi ui{events};
    FakeClock clock{events};
    Session session{{*store, plan, plan, service, web, ui, clock}, {{}, {}, work, service.base()}};
    bool gone = false;
    session.log.on_line = [&](const std::string& line, bool) { gone |= line.ends_with("Source file not found"); };
    ui.on_events = [&] {
      if (std::exchange(quit_requested, false)) session.processor.may_close();
    };
    try {
      session.start();
      session.log.set_level(LogLevel::Verbose);
      if (has_companion) session.settings.companions = "srt";
      session.filters.append({"new", action, true, target, std::string(default_mask), "*", Equals, "", 0, false});
      session.filters.savefilters();
      session.filters.exchange(1, 2);
      session.exceptions.append({"harbor", "the harbour lights", false});
      session.exceptions.saveefilters();
      session.settings_store.write_number("nocache", 0);
      for (const std::string& path : {first, second}) session.intake.add_to_queue(path, false);
      session.processor.process_queue();
      done = session.queue.count() > 0 && session.queue.at(1).state == QueueState::Done;
      for (int i = 1; i <= session.queue.count() && ui.closed == 0; ++i) {
        const QueueItem& item = session.queue.at(i);
        EXPECT_TRUE(item.state == QueueState::Done || !item.error_text.empty() || gone) << "the item tells why";
      }
      session.undo.run(1);
    } catch (const ProgramEnd&) {
      EXPECT_EQ(ui.messages.size(), 1u) << "the user is told why the program ends";
    } catch (const Unreadable&) {
      EXPECT_FALSE(session.processor.queue_busy()) << "without its rules nothing is done";
    }
  }

  std::map<std::string, std::string> everything() const {
    std::map<std::string, std::string> all;
    for (const TemporaryFolder* folder : {&here, &home, &there}) all.merge(everything_in(folder->path()));
    return all;
  }

  /// Each file stands, whole, under one name, a copied one under two, and the file that was there before is untouched.
  /// Rules, exceptions and caches hold one of the versions ever written to them, or are not there.
  void expect_nothing_lost(FaultPlan& plan) const {
    std::map<std::string, int> found;
    for (const auto& [path, bytes] : everything()) {
      const std::string name = text_of(path_of(path).filename());
      if (fs::is_directory(path_of(path)) || name.starts_with(".quorvel-") || name.starts_with("pending-")) continue;
      if (name.starts_with("history.db")) continue;  // written by a library, which sees to that itself
      const bool written = plan.versions[path.substr(0, path.find(".bak"))].contains(bytes);
      if (!path.starts_with(home.path())) ++found[bytes];
      EXPECT_EQ(path.starts_with(home.path()), written || bytes == old_rules) << path << ": " << bytes;
    }
    EXPECT_EQ(found.size(), has_companion ? 4u : 3u) << ::testing::PrintToString(found);
    for (const char* bytes : {"the first", "the second"}) {
      EXPECT_TRUE(found[bytes] == 1 || (!takes_source(action) && found[bytes] == 2)) << bytes << " " << found[bytes];
    }
    EXPECT_EQ(contents(target + taken_name), "there before");
    EXPECT_TRUE(fs::exists(rules)) << "there are always rules";
  }
};

}  // namespace quorvel::testing
