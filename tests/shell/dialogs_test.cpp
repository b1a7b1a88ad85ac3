#include "shell/dialogs.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "session_fixture.h"
#include "shell/item_help.h"
#include "shell/pass_result.h"
#include "shell/past_text.h"
#include "shell/preferences.h"
#include "shell/show_choice.h"

namespace quorvel::testing {
namespace {

TEST(Dialogs, SayWhatBecameOfAnItem) {
  const TestPorts at;
  const std::string in = with_separator(at.folder / "in"), out = with_separator(at.folder / "data");
  QueueItem item;
  item.path = in + "a.avi", item.dest_path = out, item.show_url = "\"https://a.b/c\"", item.episode_url = "null";
  item.filename = "a.avi", item.new_name = "B.avi", item.error_text = "one\r\ntwo";
  at.make(item.path), at.make(out + "B.avi");  // the second is another's until it is done
  const std::tuple<QueueState, ItemInfo, std::string> infos[] = {
      {QueueState::Cancelled, {"Filename: a.avi", "Status: Cancelled", "", "Desc: one\ntwo"}, in},
      {QueueState::Processing, {.new_path = out + "B.avi"}, in},
      {QueueState::Done, {"Filename: a.avi", "Status: Done", "New Name: B.avi", "", "", out + "B.avi"}, out}};
  for (auto [state, info, folder] : infos) {
    item.state = state;
    info.old_path = item.path, info.show_address = item.show_url;
    EXPECT_EQ(item_info(item, at.clock), info) << info.status;
    EXPECT_EQ(folder_of(item, *at.files), folder) << info.status;
  }
  item.state = QueueState::Failed;  // its undoing
  at.files->remove(item.path);
  EXPECT_EQ(folder_of(item, *at.files), out);

  item.reading = read_name("Show.S01E02.mkv"), item.reading->certain = false;
  item.match = "Show (2010, tvmaze:1), by its name", item.doubts = {"two", "A doubt"};
  item.error_text = "one\r\nRead as: \"Show\", season 1, episode 2\r\ntwo";  // the reading is told once, and a doubt
  const std::string remarks =
      "Read as: \"Show\", season 1, episode 2 (not certain)\nMatch: " + item.match + "\nListings ";
  const auto told = [&](int days) {
    item.listings_told = std::chrono::floor<std::chrono::seconds>(at.clock.utc()) - std::chrono::days(days);
    return item_info(item, at.clock).description;
  };
  EXPECT_EQ(told(0), "Error: one\ntwo\n" + remarks + "of today\nLook at this: A doubt");
  item.state = QueueState::Done, item.error_text.clear(), item.doubts.clear();
  EXPECT_EQ(told(1), remarks + "of yesterday");
  EXPECT_EQ(told(3), remarks + "3 days old");
}

TEST(Dialogs, CutALineAfterWhatFits) {
  const auto measure = [](const std::string& text) { return static_cast<int>(text.size()); };
  EXPECT_EQ(fitted("123456789", 10, measure), "123456789");
  EXPECT_EQ(fitted("1234567890", 10, measure), "123456...");
  EXPECT_EQ(fitted("12345\u00E9\u00E9\u00E9", 10, measure), "12345...");
  EXPECT_EQ(message_lines("one#two##"), "one\ntwo\n\n");
  EXPECT_EQ(fitted("12", 1, measure), "...");
}

TEST(Dialogs, SayWhatCannotBeOpenedAndOfferWhatIsNotSwitchedOff) {
  TestSession at;
  at.start();
  at.desktop.launches = false;
  open_page(at.desktop, at.ui, "https://x");
  for (const char* const folder : {"in", "gone"}) open_folder(at.desktop, at.ui, *at.files, at.folder / folder);
  EXPECT_EQ(at.ui.messages, (std::vector<std::string>{
                                "Unable to open page: There is no program to open https://x with",
                                "Unable to open folder: There is no program to open " + at.folder / "in" + " with",
                                "Unable to open folder: The folder " + at.folder / "gone" + " is not there any more"}));
  const auto notices = [&] { return lost_characters_notice(at.session, 0) + lost_characters_notice(at.session, 1); };
  EXPECT_EQ(notices() + lost_characters_notice(at.session, 2).substr(0, 12),
            "1 name has lost characters. Exact names keep them.2 names have");
  turn_exact_names(at.session, true);
  EXPECT_TRUE(notices().empty() && at.key_values.numbers["exact"] == 1);
  turn_exact_names(at.session, false);
  switch_off(at.session.settings_store, lost_characters_message);
  EXPECT_TRUE(notices().empty() && at.key_values.numbers["exact"] == 0);
}

TEST(Dialogs, AskBeforeAPassIsUndone) {
  const TestPorts at;
  PastPass pass;
  pass.time = std::chrono::floor<std::chrono::seconds>(at.clock.utc());
  for (const Deed deed :
       {Deed::Renamed, Deed::SetAside, Deed::Moved, Deed::Moved, Deed::Copied, Deed::Trashed, Deed::Tidied}) {
    PastOperation& operation = pass.operations.emplace_back();
    operation.deed = deed, operation.outcome = PastOperation::Done;
  }
  pass.operations.emplace_back();  // which was never done
  const std::string today = undo_question(pass, at.clock);
  EXPECT_TRUE(today.starts_with("Undo 1 renaming, 2 moves, 1 copy, 1 removal and 1 folder tidied away of ") &&
              today.size() == 78)
      << today;
  pass.time = {};
  EXPECT_TRUE(undo_question(pass, at.clock).ends_with(" of 1970-01-01 00:00?"));
}

TEST(Dialogs, TellEachOperationInALineAndAPassInOne) {
  const TestPorts at;
  PastPass pass;
  pass.id = 7, pass.time = std::chrono::sys_days(std::chrono::year(2026) / 3 / 9) + std::chrono::minutes(605);
  std::string lines;
  const auto add = [&](Deed deed, PastOperation::Outcome outcome, bool undone = false) {
    PastOperation& each = pass.operations.emplace_back();
    each.deed = deed, each.outcome = outcome, each.undone = undone, each.old_path = "a", each.reason = "why";
    if (deed != Deed::Trashed && deed != Deed::Tidied) each.new_path = "b";
    lines += line_of(each) + "|";
  };
  for (const Deed deed : {Deed::Renamed, Deed::Moved, Deed::Copied, Deed::HardLinked, Deed::SymbolicLinked,
                          Deed::SetAside, Deed::Trashed, Deed::Tidied, Deed::Made}) {
    add(deed, PastOperation::Done);
  }
  add(Deed::Moved, PastOperation::Done, true);
  EXPECT_EQ(summary(pass, at.clock),
            "Pass 7, 2026-03-09 10:05: 1 renamed, 2 moved, 1 copied, 2 linked, 1 set aside, 1 removed, 1 tidied away, "
            "1 made again, 1 undone");
  pass.operations.clear(), pass.is_undoing = true;
  add(Deed::Renamed, PastOperation::Done, true);
  add(Deed::Renamed, PastOperation::Failed);
  add(Deed::Copied, PastOperation::UnderWay);
  EXPECT_EQ(summary(pass, at.clock), "Pass 7, 2026-03-09 10:05, undoing: 1 renamed, 1 failed, 1 under way, all undone");
  EXPECT_EQ(lines,
            "renamed a -> b|moved a -> b|copied a -> b|linked a -> b|linked a -> b|set aside a -> b|removed a|tidied "
            "away a|made again a -> b|moved a -> b (undone)|renamed a -> b (undone)|not renamed a -> b (why)|copied a "
            "-> b (under way)|");
}

TEST(Dialogs, AddExceptionsWithBothNames) {
  TestSession at;
  at.start();
  using N = NewException;
  std::vector<N> added;
  for (const auto& [from, to] : {std::pair("", ""), {"a", ""}, {"a\tb", "c"}, {"the office", "The Office"}}) {
    added.push_back(add_exception(at.session.exceptions, at.ui, from, to));
  }
  EXPECT_EQ(added, (std::vector{N::NoDetectedName, N::NoNewName, N::NotSaved, N::Added}));
  EXPECT_EQ(at.ui.messages, (std::vector<std::string>{
                                "Detected Name Required: Please enter a detected show name",
                                "New Name Required: Please enter a new show name",
                                "Unable to save exception: The exception could not be saved. The log says why."}));
  EXPECT_EQ(at.read("data/Quorvel/man.dat"), "the office\tThe Office\r\n");
  EXPECT_EQ(at.ui.exceptions, (std::vector<ListRow>{{"F1", {"the office", "The Office"}}}));
}

TEST(ShowChoices, AreForAllItemsOfTheNameAndSayWhyThereIsNothingToChoose) {
  TestSession at;
  at.key_values.numbers["exact"] = 1;
  at.start();
  at.web.knows_part_time();
  for (const char* const name :
       {"part.time.s01e01.mkv", "Part Time 1x01.avi", "part.time.2010.s01e01.mkv", "part.s01e01.mpg", "holiday.avi"}) {
    at.add(name);
  }
  at.session.processor.process_queue();
  at.session.exceptions.append({"part", "part time", false});
  std::string possible, names;
  for (const bool exact : {false, true}) {
    at.session.settings.exact = exact;
    for (int i = 0; i <= 6; ++i) possible += ShowChoice::is_possible(at.session, i) ? std::to_string(i) : "-";
  }
  EXPECT_EQ(possible, "--------12-4--");
  ShowChoice choice(at.session, 1);
  EXPECT_EQ(choice.read_as() + choice.others() + choice.name(),
            "\"part time\", season 1, episode 1The choice is also for 2 other files of this show.part time");
  EXPECT_EQ(choice.search(" "), "Enter the name of a show.");
  at.web.refusals = {0};
  EXPECT_EQ(choice.search("part of"), "The search has failed. No connection to the service.");
  at.web.refusals = {503};
  at.web.before_answer = [&] { choice.give_up(); };
  EXPECT_EQ(choice.search("part of"), "The search has failed. The request has been cancelled.");
  at.web.bodies["/search/shows?q=part+of"] = R"([{"show":{"id":9,"name":"Part of It"}}])";
  EXPECT_EQ(choice.search("part of"), "1 show found");  // now that there is a connection
  EXPECT_EQ(choice.search("tvmaze:77"), "The search has failed. There is no show with the number 77.");
  EXPECT_EQ(choice.search("part time"), "2 shows found");
  EXPECT_EQ(choice.rows(),
            (std::vector<ListRow>{{"", {"Part Time", "2010", "US", "Harbour TV"}}, {"", {"Part Time", "", "", ""}}}));
  at.item(2).state = QueueState::Done;  // what is done stays as it is
  choice.choose(1, true);
  for (int i = 1; i <= 5; ++i) names += at.item(i).new_name + "|";
  EXPECT_EQ(names, "Part Time - 1x01 - A9.mkv||Part Time - 1x01 - A8.mkv|Part Time - 1x01 - A9.mpg||");

  at.item(1).state = QueueState::Cancelled;  // as by undoing
  ShowChoice again(at.session, 1);
  EXPECT_EQ(again.search("tvmaze:8"), "1 show found");
  EXPECT_EQ(again.earlier_choice(), "Chosen for this name: Part Time (tvmaze:9)");
  EXPECT_FALSE(again.place_of_earlier_choice());
  again.search("part time");
  EXPECT_EQ(again.place_of_earlier_choice(), 1U);
  at.session.lookup.choose(Lookup::choice_key(again.name(), read_name("part time 1x01.mkv")), 77, true);
  EXPECT_EQ(again.search("part time"), "2 shows found");
  EXPECT_EQ(again.earlier_choice(), "Chosen for this name: tvmaze:77") << "which the service does not know any more";
  again.forget();
  EXPECT_EQ(again.earlier_choice() + ShowChoice(at.session, 1).earlier_choice(), "");
}

TEST(AfterAPass, ItIsToldWhatCameOutAndWhatHelpsAndTheProgramEndsOnlyWhenNothingNeedsTheUser) {
  TestSession at;
  at.start();
  at.session.settings.autoclose = true;
  Processor& processor = at.session.processor;
  const std::string right = "The Harbour Lights - 1x01 - Slack Water.avi";
  PassResult result;
  std::string left, told;
  processor.on_ended = [&](const QueueItem& item) {
    result.add(item);
    left += std::to_string(processor.left()) + " ";
    told = result.text();
  };
  for (const char* const name : {right.c_str(), "The.Harbour.Lights.S01E02E03.mkv", "holiday.avi", "x.y.s01e01.avi",
                                 "the.harbour.lights.s09e09.avi", "the harbour lights 1x01.avi", "night.train.1x02.avi",
                                 "night.train.1x01.avi"}) {
    at.add(name);
  }
  processor.take_again({1, 9}, false);
  EXPECT_EQ(at.ui.states, "") << "what waits for its first time and what is not there";
  processor.process_queue();
  EXPECT_EQ(left, "7 6 5 4 3 2 1 0 ");
  EXPECT_EQ(told, "3 renamed, 1 of them uncertain, 1 already right, 4 need you");
  EXPECT_TRUE(result.needs_user() && result.all() == 8 && at.ui.closed == 0);
  EXPECT_TRUE(at.logged("The window stays open, for 5 files need you")) << at.log();

  using enum Remedy;
  const std::string show = "Unable to find show on tvmaze.com\nSearched for: x y",
                    doubt = "Look at this: " + at.item(2).doubts.at(0);
  const auto help = [&](int item) { return help_for(at.session, item); };
  EXPECT_EQ(help(1), (ItemHelp{"The file has its name and its place already.", {OpenFolder}}));
  EXPECT_EQ(help(2), (ItemHelp{doubt, {Undo, OpenFolder}}));
  EXPECT_EQ(help(3), (ItemHelp{"Unable to find filename filter", {Retry, OpenFolder}}));
  EXPECT_EQ(help(4), (ItemHelp{show, {AddException, Retry, OpenFolder}}));
  EXPECT_EQ(help(6).remedies, (std::vector{Retry, OpenFolder}));
  EXPECT_EQ(help(7), ItemHelp());
  at.session.settings.exact = true;
  EXPECT_EQ(help(5).remedies, (std::vector{ChooseShow, AddException, Retry}));
  at.item(7).done_stamp->size = 0;  // as if the file had been changed since
  at.session.undo.run(7);
  EXPECT_EQ(help(7).remedies, std::vector{OpenFolder});

  for (int i = 2; i <= 7; ++i) at.item(i).state = QueueState::Cancelled;
  at.session.settings.exact = false, at.add("night.train.1x01.avi");
  processor.process_queue();
  EXPECT_EQ(at.ui.closed, 1) << "what is right already needs nobody";
  left.clear();
  at.item(7).state = QueueState::Done, at.item(8).state = QueueState::Failed;
  processor.retry_failed();
  EXPECT_EQ(left, "6 5 4 3 2 1 ") << "and the last one, which is stepped over";
  processor.on_ended = [](const QueueItem&) { throw Failure("no room for the report"); };
  EXPECT_THROW(processor.retry_failed(), Failure);
  EXPECT_TRUE(processor.may_close());
}

}  // namespace
}  // namespace quorvel::testing
