#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "child_process.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

TEST(InstanceChannel, OneCopyRunsAndTakesAllTextsWholeAndInOrderAndSendersLearnOfFailures) {
  const TemporaryFolder folder;
  const Variable runtime("XDG_RUNTIME_DIR", folder.path());
  const std::string name = "Quorvel test " + folder.name();
  const auto copy = [&](std::chrono::milliseconds patience = 1min) {
    return system_instance_channel(name, name, patience);
  };
  std::vector<std::unique_ptr<InstanceChannel>> copies(20);
  std::latch start(20);
  std::atomic<int> count = 0;
  {
    std::vector<std::jthread> threads;
    threads.reserve(copies.size());
    for (auto& each : copies) {
      threads.emplace_back([&] {
        each = copy();
        start.arrive_and_wait();
        count += each->become_running_copy() ? 1 : 0;
      });
    }
  }
  EXPECT_EQ(count, 1);
  copies.clear();

  const EventLoop events(name);
  auto running = copy();
  Texts taken;
  std::function<void()> on_text = [] {};
  EXPECT_TRUE(running->become_running_copy() && running->become_running_copy());
  running->receive([&](const std::string& text) {
    taken.push_back(text);
    on_text();
  });
  // On a thread of its own, as another copy would; this one answers meanwhile.
  const auto meanwhile = [&](const std::function<void()>& act) {
    std::atomic<bool> done = false;
    std::jthread other([&] {
      EXPECT_NO_THROW(act());
      done = true;
    });
    while (!done) events.process();
  };
  std::jthread patient([&] { EXPECT_NO_THROW(copy()->send("kept")); });
  std::jthread([&] { EXPECT_THROW(copy(300ms)->send("lost"), Failure); }).join();
  EXPECT_TRUE(taken.empty());  // no events have run meanwhile
  meanwhile([&] { patient.join(); });
  taken.clear();
  const Texts texts = {std::string(254, 'x'), std::string(255, 'y'), "日本 \xED\xA0\x80", std::string(1'000'000, 'z')};
  meanwhile([&] {
    for (const std::string& text : texts) copy()->send(text);
    EXPECT_THROW(copy()->send(std::string((16U << 20) + 1, 'x')), Failure);
  });
  EXPECT_TRUE(taken == texts);
  on_text = [] { throw Failure("refused"); };
  meanwhile([&] { EXPECT_THROW(copy(300ms)->send("refused"), Failure); });
  on_text = [&] {  // another text, and the end of the channel, while a text is handled
    if (taken.empty() || taken.back() != "inner") return meanwhile([&] { copy()->send("inner"); });
    running->stop();
    EXPECT_FALSE(copy()->become_running_copy()) << "it finishes its work";
    running.reset();
  };
  meanwhile([&] { copy()->send("outer"); });
  EXPECT_TRUE(taken.size() > 1 && taken.back() == "inner");
  EXPECT_THROW(copy()->send("x"), Failure) << "nobody is there";
}

TEST(KeyValueStore, GivesBackWhatWasWrittenAndNothingElse) {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string name = "Quorvel test " + folder.name();
  const auto fresh = [&] { return settings_of(*files, folder / "made/on demand", name); };
  const std::unique_ptr<KeyValueStore> store = fresh(), another = fresh();
  store->erase_all();  // nothing there is no failure
  EXPECT_FALSE(store->trouble() || store->read_string("") || store->read_number("context"));
  for (const char* const text : {"", "  blanks\\and\nlines\t ", "café 日 #1 [x]=y"}) {
    store->write_string("types", text);
    EXPECT_TRUE(store->read_string("types") == text && fresh()->read_string("types") == text) << text;
  }
  store->write_number("msgskip$1", 4'000'000'000);
  EXPECT_EQ(fresh()->read_number("msgskip$1"), 4'000'000'000);
  another->write_string("", std::string("3.4\0cut", 7));  // what was written meanwhile is kept
  EXPECT_EQ(fresh()->read_string("").value_or("") + *fresh()->read_string("types"), "3.4café 日 #1 [x]=y");
  EXPECT_FALSE(fresh()->read_number("types") || fresh()->read_number("none"));
  store->erase_all();
  EXPECT_FALSE(fresh()->read_string("types") || fresh()->read_string("") || store->read_number("msgskip$1"));
  EXPECT_FALSE(files->exists(folder / "made/on demand/" + name));
}

/// Writes what it was given into the file that this begins with, whole at once.
const SecondProcess note("note", [](const std::string& given) {
  return system_files()->replace(given.substr(0, given.find('|')), given) ? 0 : 1;
});

TEST(Launcher, StartsProgramsWithTheArgumentAsItStandsAndOpensNothingThatWouldRun) {
  const TemporaryFolder folder;
  const std::unique_ptr<Launcher> launcher = system_launcher();
  const std::string program = folder / "program.exe", entry = folder / "a.desktop", page = folder / "page.html";
  for (const std::string& each : {program, entry, page}) write_file(each, "x");
  permissions(path_of(program), std::filesystem::perms::owner_all);
  for (const std::string& refused : Texts{"file://" + page, "javascript:1", "page.html", "http:///x", "http://a\nb", "",
                                          folder / "none.html", program, "\"" + program + "\"", entry}) {
    EXPECT_FALSE(launcher->open(refused)) << refused;
  }
  for (const std::string& none : Texts{"cmd.exe", page}) EXPECT_FALSE(launcher->start(none, "x")) << none;
  EXPECT_FALSE(launcher->start(program_file(), std::string("a\0b", 3)));
  // On Windows a program takes its command line apart by itself.
  const std::string out = folder / "out", text = out + (facts::windows ? "|$(y)'z'%1" : "|Q,x=\"1 2\" $(y) 'z'");
  EXPECT_TRUE(launcher->start(program_file(), note.argument(text)));
  while (contents(out).empty()) std::this_thread::yield();
  EXPECT_EQ(contents(out), text);
}

}  // namespace
}  // namespace quorvel::testing
