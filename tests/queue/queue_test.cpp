#include <gtest/gtest.h>

#include <algorithm>

#include "file_tools.h"
#include "platform/native.h"
#include "session_fixture.h"
#include "system_facts.h"

namespace quorvel::testing {
namespace {

struct Queue : ::testing::Test, TestSession {
  Queue() { start(); }
  Processor& processor = session.processor;

  /// Where a rule's files go; made so deep that the rule may make its own folders below it.
  std::string target() { return files->create_folder(folder / "target"), folder / "target/"; }
  void rule(int action, const std::string& path, const std::string& mask = std::string(default_mask)) {
    AFilter filter = session.filters.at(1);
    filter.action = action;
    filter.path = path;
    filter.mask = mask;
    session.filters.at(1) = filter;
  }
};

constexpr const char* lights_file = "The.Harbour.Lights.S01E02.mkv";
constexpr const char* lights_name = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";

TEST_F(Queue, IntakeTakesOnlyFilesThatFitAndSaysWhyNot) {
  const std::string path = folder / "in/a.s01e01.AVI";
  std::vector<std::pair<std::string, Refusal>> rows = {{path, Refusal::None},
                                                       {path, Refusal::AlreadyQueued},
                                                       {"\"" + path + "\"", Refusal::AlreadyQueued},
                                                       {"/a", Refusal::TooShort},
                                                       {facts::device, Refusal::NotAFile},
                                                       {folder / "in/b.txt", Refusal::TypeNotListed},
                                                       {folder / "in/b.mp", Refusal::None},
                                                       {folder / "in/mkv", Refusal::TypeNotListed},
                                                       {folder / "in/my SAMPLE.avi", Refusal::Sample}};
  for (const std::string& name : facts::odd_names) rows.emplace_back(folder / ("in/" + name), Refusal::None);
  for (const auto& [given, expected] : rows) {
    if (given.starts_with(folder.path())) make(given);
    EXPECT_EQ(session.intake.take(given, false).refusal, expected) << given;
  }
  EXPECT_EQ(session.intake.take(folder / "in/none.avi", false).refusal, Refusal::Missing);
  EXPECT_EQ(item(1).filename + "=" + ui.rows[0], "a.s01e01.AVI=a.s01e01||");
  EXPECT_EQ(ui.timer_starts, 0);
  make(folder / "in/c.avi");
  EXPECT_TRUE(session.intake.add_to_queue(folder / "in/c.avi", true));
  EXPECT_EQ(ui.timer_starts, 1);

  const int before = session.queue.count();
  for (const char* name : {"x/e10.avi", "x/s/y.mkv", "x/s/Samples/z.avi", "x/E9.avi", "x/n.txt"}) write(name, name);
  const IntakeResult whole = session.intake.take(folder / "x", false);
  EXPECT_TRUE(whole.is_folder && whole.queued == 3 && whole.left_out == 2);
  EXPECT_EQ(item(before + 1).filename + item(before + 2).filename + item(before + 3).filename, "E9.avie10.aviy.mkv");
}

TEST_F(Queue, AFileGoesThroughEveryStageAndLeavesItsTrace) {
  add(lights_file);
  const std::size_t before = session.log.lines().size();
  processor.process_queue();
  EXPECT_EQ(log(before),
            "Looking up filename filter for: in (p=1)|No filter found|"
            "Looking up filename filter for: the.harbour.lights.s01e02.mkv (p=0)|Found filename filter with id: 1|"
            "Found filename filter for: The.Harbour.Lights.S01E02.mkv|Checking exceptions|"
            "Searching for: the harbour lights|Query not in cache|Updating query cache|No matches found in ep cache|"
            "Getting listings for: The Harbour Lights|Updating ep cache|Found episode in listings|"
            "Renaming The.Harbour.Lights.S01E02.mkv to The Harbour Lights - 1x02 - The Pilot Boat.mkv|"
            "All items processed");
  EXPECT_EQ(read(std::string("in/") + lights_name), lights_file);
  EXPECT_FALSE(exists(std::string("in/") + lights_file) || processor.queue_busy());
  EXPECT_EQ(ui.rows[0], "The.Harbour.Lights.S01E02|The Harbour Lights - 1x02 - The Pilot Boat|Done");
  EXPECT_EQ(ui.states, "Scanning Searching Fetching Listings Checking Filters Renaming Done ");
  EXPECT_EQ(item(1).show_url, "\"https://www.tvmaze.com/shows/101/the-harbour-lights\"");
}

TEST_F(Queue, MoveAndCopyRulesMakeTheirFoldersAndUndoTakesThemBack) {
  add(lights_file);
  target();
  rule(MoveAndRename, folder / "target/[show]/Season [ss]");
  // The rule changes before its operation, and so before the undoing.
  ui.on_events = [&] {
    if (item(1).state == QueueState::Processing) rule(CopyAndRename, target());
  };
  processor.process_queue();
  const std::string moved = std::string("target/The Harbour Lights/Season 01/") + lights_name;
  EXPECT_EQ(read(moved), lights_file);
  EXPECT_EQ(session.undo.entry({1}), (Undo::Entry{"Undo Move/Rename", true}));
  session.undo.run(1);
  EXPECT_EQ(read(std::string("in/") + lights_file), lights_file);
  EXPECT_FALSE(exists(moved));
  EXPECT_EQ(item(1).error_text, "The file operation has been undone");
  EXPECT_EQ(ui.rows[0], "The.Harbour.Lights.S01E02||Cancelled");
  EXPECT_TRUE(ui.states.ends_with("Moving Done Cancelled "));
  EXPECT_EQ(session.undo.entry({1}), (Undo::Entry{"Undo Rename", false}));

  processor.retry_failed();
  EXPECT_TRUE(ui.states.ends_with("Copying Done "));
  EXPECT_EQ(read(std::string("target/") + lights_name), lights_file);
  EXPECT_EQ(read(std::string("in/") + lights_file), lights_file);
  EXPECT_TRUE(logged("Copying " + folder / (std::string("in/") + lights_file) + " to " +
                     (folder / (std::string("target/") + lights_name))));
  EXPECT_EQ(session.undo.entry({1}).caption, "Undo Copy/Rename");
}

TEST_F(Queue, ExactNamesSayWhatTheServiceSaysAndFailWhereItIsNotClear) {
  session.settings.exact = true;
  web.bodies["/search/shows?q=part+time"] =
      R"([{"show":{"id":7,"url":"https://x/7","name":"Part-Time: 1883","premiered":"1990-01-01"}},
          {"show":{"id":8,"name":"Part Time","premiered":"2010-01-01"}},
          {"show":{"id":9,"name":"Part Time","premiered":"2015-01-01"}}])";
  for (const char* const id : {"8", "9"}) {
    web.bodies[std::string("/shows/") + id + "/episodes"] =
        R"j([{"season":1,"number":1,"name":"Pilot (1)","url":"https://x/e"},{"season":1,"number":2,"name":"Pilot (2)"},
            {"season":1,"number":3,"name":""}])j";
  }
  session.settings.types += ";ogm";
  for (const char* name : {"Part.Time.2010.S01E01E02.mkv", "Part.Time.S01E01.mkv", "part.time.2015.1x02.ogm",
                           "Holiday.mkv", "part.time.2010.1x2.start.mkv"}) {
    add(name);
  }
  processor.process_queue();
  EXPECT_EQ(read("in/Part Time - 1x01-02 - Pilot.mkv"), "Part.Time.2010.S01E01E02.mkv");
  EXPECT_EQ(item(1).episode_url, "\"https://x/e\"");
  EXPECT_EQ(item(2).error_text,
            "Unable to choose a show\r\nRead as: \"Part Time\", season 1, episode 1\r\n"
            "More than one show fits: Part Time (2010, tvmaze:8), Part Time (2015, tvmaze:9)");
  EXPECT_TRUE(exists("in/Part Time - 1x02 - Pilot (2).ogm"));
  EXPECT_EQ(item(4).error_text, "Unable to find an episode in the name");
  EXPECT_NE(item(5).error_text.find("more than one way; as this it would be \"Pilot (2)\""), std::string::npos);
  EXPECT_EQ(service.requests().size(), 0u) << "the classic way is not asked";
  session.exceptions.append({"part time", "tvmaze:8", false});
  web.bodies["/shows/8"] = R"({"id":8,"name":"Part Time"})";
  add("Part.Time.S01E01.avi");
  processor.process_queue();
  EXPECT_EQ(item(6).new_name, "Part Time - 1x01 - Pilot (1).avi");
  const std::string untitled = "The episode has no title that a file can have";
  EXPECT_FALSE(logged(untitled));
  add("Part.Time.S01E03.avi");
  processor.process_queue();
  EXPECT_TRUE(item(7).new_name == "Part Time - 1x03 - .avi" && logged(untitled));
  EXPECT_TRUE(item(6).doubts.empty()) << "the user has said which show it is";
  EXPECT_EQ(std::count(web.requests.begin(), web.requests.end(), "/shows/8/episodes"), 1) << "the answer is kept";
}

TEST_F(Queue, ANumberThatMayCountOverAllSeasonsIsTakenForTheSeasonsWithADoubt) {
  session.settings.exact = true;
  web.bodies["/search/shows?q=night+train"] = R"([{"show":{"id":5,"name":"Night Train"}}])";
  web.bodies["/shows/5/episodes"] =
      R"([{"season":1,"number":1,"name":"A"},{"season":2,"number":1,"name":"B"},{"season":2,"number":2,"name":"C"},
          {"season":2,"number":3,"name":"D"},{"season":2,"number":4,"name":"E"},{"season":2,"number":5,"name":"F"},
          {"season":2,"number":6,"name":"G"},{"season":2,"number":7,"name":"H"}])";
  add("Night Train S2 - 07.mkv");
  processor.process_queue();
  EXPECT_TRUE(exists("in/Night Train - 2x07 - H.mkv"));
  EXPECT_EQ(item(1).doubts, std::vector<std::string>{"The name can be read in more than one way; as this it would be "
                                                     "\"H\", else \"G\""});
  session.settings.strict = true;
  add("Night.Train.S2 - 07.mkv");
  processor.process_queue();
  EXPECT_EQ(item(2).state, QueueState::Failed);
}

TEST_F(Queue, WhatTheReaderIsSureOfAndThePatternsReadOtherwiseIsTold) {
  const char* const name = "The.Harbour.Lights.S01E02E03.mkv";
  add(name);
  processor.process_queue();
  const std::string doubt = "The name seems to say season 1, episodes 2, 3, and was read as season 1, episode ";
  ASSERT_EQ(item(1).doubts.size(), 1u);
  EXPECT_TRUE(item(1).doubts[0].starts_with(doubt) &&
              log().find(std::string(name) + ": " + doubt) != std::string::npos);
  EXPECT_EQ(item(1).state, QueueState::Done);
  session.settings.strict = true;
  add("The.Harbour.Lights.S01E04E05.mkv");
  processor.process_queue();
  EXPECT_TRUE(item(2).state == QueueState::Failed && item(2).error_text == item(2).doubts.at(0));
}

TEST_F(Queue, UndoNeverTouchesAFileThatIsNotItsOwn) {
  const std::string old_name = std::string("in/") + lights_file, new_name = std::string("in/") + lights_name;
  add(lights_file);
  processor.process_queue();
  write(old_name, "somebody else's");
  const std::size_t before = session.log.lines().size();
  for (const int index : {1, 1, 0}) session.undo.run(index);  // the second time it is no longer done
  EXPECT_EQ(log(before), "File rename failed. Destination already exists|Failed to undo file operation");
  EXPECT_EQ(item(1).error_text, "The file undo operation failed");
  EXPECT_TRUE(ui.states.ends_with("Done Failed "));
  EXPECT_EQ(read(new_name) + read(old_name), lights_file + std::string("somebody else's"));

  files->remove(folder / new_name);
  processor.retry_failed();
  write(new_name, "somebody else's");  // as long as the one it replaces
  session.undo.run(1);
  EXPECT_EQ(item(1).error_text,
            "The file undo operation failed\r\n" + folder / new_name + " has been changed or replaced since");
  EXPECT_EQ(read(new_name) + read(old_name), "somebody else's(missing)");
}

TEST_F(Queue, EveryFailureNamesItsReasonAndThePassGoesOn) {
  const std::string no_listings = "Unable to find listings on tvmaze.com\r\nSearched for: ";
  const auto failed = [](int code) {
    return "The file operation failed. " + std::string(native::system_name) + " reports error " + std::to_string(code) +
           ": " + native::error_words(code);
  };
  const std::string there = folder / "target/", separator(1, native::separator),
                    nowhere = separator + "no such folder" + separator,
                    relative = "The rule's folder \"tv" + separator +
                               "\" begins neither at the root or a drive nor with \"~\"";
  const struct {
    std::string name, error_text, log_line;
    int action = Rename;
    std::string path = {}, mask = std::string(default_mask);
  } cases[] = {
      {"a&#x;b.s01e02.avi", "Unable to find filename filter",
       "Error getting filename filter: \"\" is not the number of a character"},
      {"no.such.show.s01e01.avi", "Unable to find show on tvmaze.com\r\nSearched for: no such show",
       "Unable to find show page for: no such show"},
      {"the.harbour.lights.s09e09.avi", no_listings + "the harbour lights\r\nDetected as: The Harbour Lights 9x9",
       "Unable to find listings for: The Harbour Lights 9x9"},
      {"specials.galore.s01e01.avi",
       no_listings + "specials galore\r\nDetected as: Specials Galore 1x1\r\n\"null\" is not a whole number of 32 bits",
       "Error getting listings: \"null\" is not a whole number of 32 bits"},
      {"The Harbour Lights - 1x02 - the pilot boat.MKV", "The new filename is the same as the old filename",
       "File rename failed. New name = old name"},
      {"The.Harbour.Lights.S01E03.mkv", "The destination aleady exists. File cannot be renamed",
       "File rename failed. Destination already exists"},
      {"the.harbour.lights.s01e01.avi", failed(facts::too_long),
       "File operation failed (" + std::to_string(facts::too_long) + ")", MoveAndRename, there, std::string(300, 'x')},
      {"the.harbour.lights.s01e02.avi", failed(facts::nowhere),
       "File operation failed (" + std::to_string(facts::nowhere) + ")", MoveAndRename, nowhere},
      {"the.harbour.lights.s01e04.avi", relative, "Error checking filters: " + relative, MoveAndRename,
       "tv" + separator},
      {"the.harbour.lights.s01e04.mkv", "the rule's action 9 is none of rename, move, copy and link",
       "Error renaming/moving: the rule's action 9 is none of rename, move, copy and link", 9, there},
      {lights_file, failed(facts::taken), "File operation failed (" + std::to_string(facts::taken) + ")", CopyAndRename,
       there}};
  const std::string taken[] = {"in/The Harbour Lights - 1x03 - A Lantern for Maud.mkv",
                               "target/" + std::string(lights_name)};
  for (const std::string& name : taken) write(name, "there before");
  for (const auto& c : cases) {
    rule(c.action, c.path, c.mask);
    const QueueItem& failing = item(add(c.name));
    processor.process_queue();
    EXPECT_EQ(failing.state, QueueState::Failed) << c.name;
    EXPECT_EQ(failing.error_text, c.error_text) << c.name;
    EXPECT_TRUE(logged(c.log_line)) << log();
    EXPECT_EQ(read("in/" + c.name), c.name);
  }
  for (const std::string& name : taken) EXPECT_EQ(read(name), "there before");

  for (const auto& [path, mask, why] :
       {std::tuple("", "[show]", "The rule has no folder to put files into"),
        {"/a/b/", ".[title]", "The new name \".The Pilot Boat.mkv\" would hide the file"}}) {
    rule(CopyAndRename, path, mask);
    processor.retry_failed();
    EXPECT_EQ(item(session.queue.count()).error_text, why);
  }

  rule(Rename, "");
  session.filters.at(1).enabled = false;
  const int unruled = add("the.harbour.lights.s01e05.avi"), gone = add("the.harbour.lights.s01e05.mkv");
  processor.process_queue();
  EXPECT_EQ(item(unruled).error_text, "Found listings, but no filter could be found to move/rename the file");
  EXPECT_TRUE(logged("Unable to find matching filter for: The Harbour Lights 1x5"));
  rule(Rename, "");
  session.filters.at(1).enabled = true;
  files->remove(item(gone).path);
  processor.retry_failed();
  EXPECT_EQ(item(unruled).state, QueueState::Done) << "one bad file never ends a pass";
  EXPECT_TRUE(logged("File rename failed. Source file not found"));
  EXPECT_EQ(item(gone).error_text, "") << "not the reason of its first failure";
  service.misbehave([](auto&, auto&) { return FakeListings::Reads{"HTTP/1.0 503 Busy\r\n\r\n"}; });
  const int unanswered = add("unheard.of.s01e01.avi");
  processor.process_queue();
  EXPECT_TRUE(logged("Error searching for show: 127.0.0.1 answered \"HTTP/1.0 503 Busy\""));
  EXPECT_EQ(item(unanswered).error_text,
            "Unable to find show on tvmaze.com\r\nSearched for: unheard of\r\n"
            "127.0.0.1 answered \"HTTP/1.0 503 Busy\"");
}

TEST_F(Queue, AServiceCannotLeadAFileOutOfItsFolder) {
  target();
  rule(MoveAndRename, folder / "target/[show]/");
  const struct {
    const char *show, *title;
  } cases[] = {{"..", "x"},         {".", "x"},     {"a", "..\xE0\x80\xAF..\xE0\x80\xAFx"},
               {"a/../b", "/../x"}, {"a", "&#0;x"}, {"a\x07", "\xE2\x80\xAEx"},
               {"?", "x"}};
  int number = 0;
  for (const auto& c : cases) {
    service.misbehave([&](const std::string& target, const std::string&) {
      const std::string body = target.starts_with("/search")
                                   ? std::string("[{\"show\":{\"id\":5,\"url\":\"u\",\"name\":\"") + c.show + "\",}}]"
                                   : std::string("[{\"id\":1,\"url\":\"u\",\"name\":\"") + c.title +
                                         "\",\"season\":1,\"number\":1,\"airdate\":\"2015-01-01\",}]";
      return FakeListings::ok(body);
    });
    add("evil" + std::to_string(++number + 1) + ".s01e01.avi");
    processor.process_queue();
  }
  const std::string up = {native::separator, '.', '.', native::separator};
  for (const auto& [path, bytes] : everything_in(folder.path())) {
    if (!bytes.starts_with("evil")) continue;
    EXPECT_TRUE(path.starts_with(folder / "in/") || path.starts_with(folder / "target/a")) << path;
    for (const std::string& evil : {up, std::string("\x07"), std::string("\u202E")}) {
      EXPECT_EQ(path.find(evil), std::string::npos) << path;
    }
  }
  EXPECT_EQ(item(1).error_text, "The folder \"..\" stands for a folder");
  EXPECT_TRUE(item(number).error_text.ends_with("The show has no name that a file can have"));
}

TEST_F(Queue, TheUserIsAskedWhenTheSettingsSaySo) {
  session.settings.confirm = true;
  add(lights_file);
  for (const auto& answer : {std::optional<bool>(), std::optional(false)}) {
    ui.answer = answer;
    processor.retry_failed();
    EXPECT_EQ(item(1).state, QueueState::Cancelled);
    EXPECT_EQ(item(1).error_text, "User cancelled the file operation");
  }
  EXPECT_TRUE(logged(std::string("Unable to rename/move files for: ") + lights_name + " (user cancelled)"));
  ui.answer = true;
  rule(CopyAndRename, target());
  processor.retry_failed();
  EXPECT_EQ(item(1).state, QueueState::Done);
  const ConfirmationQuestion& last = ui.questions.back();
  EXPECT_EQ(last.title + last.question, "Confirm File CopyContinue with file copy?");
  EXPECT_EQ(last.source + last.destination, item(1).path + folder / ("target/" + std::string(lights_name)));
  files->remove(last.destination);
  session.undo.run(1);
  ui.answer = std::nullopt;
  processor.retry_failed();
  EXPECT_EQ(item(1).state, QueueState::Cancelled) << "the yes was for the first time";
}

TEST_F(Queue, ARetryStepsOverTheItemAfterASkippedOne) {
  for (const char* const name : {lights_file, "nothing.avi", "nothing more.avi"}) add(name);
  processor.process_queue();
  const std::size_t before = session.log.lines().size();
  processor.retry_failed();
  EXPECT_TRUE(log(before).find("nothing.avi") == std::string::npos && log(before).find("nothing more.avi") < 100);
  item(3).state = QueueState::Done;  // so that the next retry steps over the queue's end
  processor.retry_failed();
  add("show 1080p.avi");
  const std::size_t added = session.log.lines().size();
  processor.process_queue();
  EXPECT_EQ(log(added),
            "Looking up filename filter for: in (p=1)|No filter found|"
            "Looking up filename filter for: show 1080p.avi (p=0)|"
            "Unable to find filename filter for: show 1080p.avi|All items processed");
}

TEST_F(Queue, AStoppedPassLeavesTheRestToARetryAndWhatIsAddedToTheNextPass) {
  for (const char* const name : {lights_file, "the.harbour.lights.s01e03.avi"}) add(name);
  service.works = [&](const std::string& call) {
    if (call.starts_with("read") && session.queue.count() == 2) {
      session.stop();
      add("the.harbour.lights.s01e01.avi");
    }
    return true;
  };
  processor.process_queue();
  EXPECT_EQ(ui.states, "Scanning Searching Cancelled Cancelled ");
  EXPECT_EQ(item(1).error_text + item(2).error_text, "Stopped by the userStopped by the user");
  EXPECT_TRUE(logged("Error searching for show: The transfer was cancelled") && ui.timer_starts == 1);
  processor.process_queue();
  EXPECT_TRUE(item(3).state == QueueState::Done && item(1).state == QueueState::Cancelled);
  processor.retry_failed();
  EXPECT_TRUE(item(1).state == QueueState::Done && item(2).state == QueueState::Done);

  const std::size_t before = service.requests().size();
  for (const char* const name : {"no.such.show.s01e01.avi", "no.such.show.s01e02.avi", "the.harbour.lights.s09e09.avi",
                                 "the.harbour.lights.s09e09.mkv"}) {
    add(name);
  }
  processor.process_queue();
  EXPECT_EQ(service.requests().size() - before, 2U) << "what a pass has not found is not asked for again in it";
}

TEST_F(Queue, QuittingWaitsForTheStageAndAutocloseForTheEnd) {
  session.settings.autoclose = true;
  processor.process_queue();
  EXPECT_TRUE(logged("No work to do") && ui.closed == 0 && processor.may_close());
  for (const char* const name : {lights_file, "nothing.avi"}) add(name);
  ui.on_events = [&] {
    if (item(1).state != QueueState::Searching || ui.closed > 0) return;
    EXPECT_FALSE(processor.may_close());
  };
  processor.process_queue();
  EXPECT_TRUE(logged("Got quit signal, finishing up...") && ui.closed == 1 && !processor.queue_busy());
  EXPECT_EQ(ui.states, "Scanning Searching Fetching Listings ");
}

}  // namespace
}  // namespace quorvel::testing
