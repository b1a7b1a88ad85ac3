#include "review/sheet.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "review/changes.h"
#include "session_fixture.h"
#include "shell/dialogs.h"

namespace quorvel::testing {
namespace {

struct Review : ::testing::Test, TestSession {
  Review() {
    start();
    session.settings.review = true;
  }
  ReviewSheet sheet{{session.settings, session.queue, session.processor, session.batch, session.view}};

  void take(const std::vector<std::string>& names) {
    for (const std::string& name : names) add(name);
    session.processor.process_queue();
    sheet.refresh();
  }
  /// "item mark", those that are ticked with a "*", groups after "#".
  std::string rows(ReviewSheet::Filter filter = ReviewSheet::Filter::All) const {
    std::string text;
    for (const ReviewSheet::Group& group : sheet.groups()) {
      text += "#" + group.read_as + "=" + group.found + " ";
      for (const int item : group.items) {
        if (!sheet.shows(item, filter)) continue;
        text += std::to_string(item) + (sheet.is_ticked(item) ? "* " : " ") + sheet.mark_text(item) + " ";
      }
    }
    return text;
  }
  std::string states() {
    std::string text;
    for (int i = 1; i <= session.queue.count(); ++i) text += std::to_string(static_cast<int>(item(i).state)) + " ";
    return text;
  }
};

TEST_F(Review, NothingHappensBeforeApplyAndThenExactlyWhatIsTicked) {
  const std::string pilot = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  write("in/The Harbour Lights - 1x03 - A Lantern for Maud.avi", "in the way");
  // 6 and 7 want one name.
  take({"harbour lights 1x01.mkv", pilot, "tomorrow.street.1x01.mkv", "harbour.lights.1x03.avi",
        "nobody.knows.1x01.mkv", "the.harbour.lights.1x04.mkv", "The Harbour Lights 104.mkv",
        "the.harbour.lights.1x99.mkv", "Harbour.Lights.Special.mkv"});
  EXPECT_EQ(rows(),
            "#harbour lights=The Harbour Lights 1* Ready 4 Target exists #the harbour lights=The Harbour Lights 2 "
            "Already right 6 Two files, one name 7 Two files, one name 8 Episode unknown #tomorrow street=Tomorrow "
            "Street 3* Ready "
            "#nobody knows= 5 Show unknown #= 9 Episode unknown ");
  EXPECT_EQ(sheet.heading(), "9 files, 2 ready, 1 already right, 2 need a decision, 4 problems");
  EXPECT_EQ(ui.rows[0], "harbour lights 1x01|The Harbour Lights - 1x01 - Slack Water|To Review");
  EXPECT_TRUE(exists("in/harbour lights 1x01.mkv"));
  EXPECT_EQ(ui.closed, 0);
  session.processor.stop();
  session.processor.retry_failed();
  sheet.refresh();
  EXPECT_EQ(sheet.ticked(), 2) << "a retry leaves what is planned";

  sheet.tick({6}, true);
  EXPECT_EQ(sheet.mark(6), Mark::Ready);
  sheet.tick({7}, true);
  EXPECT_EQ(sheet.mark(6), Mark::TwoForOneName) << sheet.reason(6);
  sheet.tick({1, 2, 6}, false);
  EXPECT_EQ(rows(ReviewSheet::Filter::Decisions).find("7*"), std::string::npos);
  EXPECT_EQ(sheet.ticked(), 2);
  EXPECT_EQ(sheet.rename(4, "a/b"), "A name cannot have any of \\/:*?\"<>|");
  EXPECT_EQ(sheet.rename(4, ".mine"), "A dot in front would hide the file.");
  EXPECT_EQ(sheet.rename(4, " mine "), "");
  EXPECT_EQ(sheet.new_name(4) + (sheet.is_ticked(4) ? " ticked" : ""), "mine.avi ticked");
  EXPECT_TRUE(sheet.refusal_of("1x05").empty() && sheet.correct(8, "twelve") == sheet.refusal_of("twelve"));
  EXPECT_NE(sheet.refusal_of("twelve"), "");
  EXPECT_EQ(sheet.correct(8, "1x05"), "");
  EXPECT_EQ(sheet.new_name(8) + sheet.numbers(8), "The Harbour Lights - 1x05 - The Drowned Letter.mkv1x05");
  for (const char* const more : {"1x05-06", "12", "2015-09-13"}) {
    EXPECT_EQ(sheet.correct(9, more), "Enter one season and one episode, as in \"2x05\"; more needs exact names.");
  }
  EXPECT_EQ(sheet.correct(9, "0x99"), "");
  EXPECT_EQ(sheet.mark_text(9) + sheet.numbers(9), "Episode unknown0x99");
  EXPECT_EQ(item(9).error_text,
            "Unable to find listings on tvmaze.com\r\nSearched for: harbour lights\r\n"
            "Detected as: The Harbour Lights 0x99");

  sheet.apply();
  EXPECT_EQ(states(), "-2 -1 6 6 -1 -2 6 6 -1 ");
  EXPECT_TRUE(item(2).is_right_already && sheet.is_empty());
  EXPECT_EQ(read("in/The Harbour Lights - 1x04 - Salt and Tar.mkv"), "The Harbour Lights 104.mkv");
  EXPECT_EQ(read("in/mine.avi"), "harbour.lights.1x03.avi");
  EXPECT_EQ(session.history.passes(1).front().undoable(), 4) << "one pass";
}

TEST_F(Review, ShowsWhatGoesAlongAndItsTroubleIsTheRows) {
  session.settings.companions = "srt";
  const std::string stem = "the.harbour.lights.1x01", srt = stem + ".en.srt";
  write("in/" + srt, "words"), write("in/mine.en.srt", "in the way");
  take({stem + ".mkv"});
  EXPECT_EQ(sheet.mark_text(1) + "|" + sheet.companions(1).at(0).new_name,
            "Ready, with 1 more|The Harbour Lights - 1x01 - Slack Water.en.srt");
  EXPECT_EQ(sheet.rename(1, "mine"), "");
  EXPECT_EQ(sheet.mark_text(1) + "|" + sheet.reason(1), "Target exists|" + (folder / ("in/" + srt)) +
                                                            " cannot go along: " + (folder / "in/mine.en.srt") +
                                                            " is there already");
  EXPECT_EQ(sheet.rename(1, "yours"), "");
  sheet.apply();
  EXPECT_EQ(read("in/yours.en.srt") + read("in/yours.mkv"), "words" + stem + ".mkv");
  EXPECT_NE(item_info(item(1), clock).description.find("1 companion went along"), std::string::npos);
}

TEST_F(Review, ChainsAndCirclesAreWeighedByWhatIsTickedAndComeOutRight) {
  const std::string one = "The Harbour Lights - 1x01 - Slack Water.mkv",
                    two = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  take({one, two});
  EXPECT_EQ(sheet.correct(1, "1x02"), "");
  EXPECT_EQ(sheet.correct(2, "s01e01"), "");
  EXPECT_EQ(sheet.ticked(), 2) << rows();
  sheet.tick({2}, false);
  EXPECT_EQ(sheet.mark(1), Mark::TargetExists);
  sheet.tick({2}, true);
  write("in/other.1x01.mkv", "later");
  sheet.apply();
  EXPECT_EQ(read("in/" + one) + read("in/" + two), two + one);
  EXPECT_EQ(states(), "6 6 ");
  take({"harbour.lights.1x03.mkv"});
  write("in/harbour.lights.1x03.mkv", "changed");
  sheet.apply();
  EXPECT_EQ(item(3).error_text, "It has been changed or replaced since");
  take({"harbour.lights.1x04.mkv"});
  EXPECT_EQ(sheet.reason(4), "");
  write("in/harbour.lights.1x04.mkv", "changed");
  sheet.refresh();
  EXPECT_TRUE(sheet.mark(4) == Mark::Changed && sheet.reason(4) == "It has been changed or replaced since");
  item(4).lost_characters = true;
  EXPECT_NE(sheet.reason(4), "");
  session.filters.at(1).enabled = false;
  take({"harbour.lights.1x05.mkv"});
  EXPECT_EQ(sheet.mark(5), Mark::Unfit) << "no rule is for it";
  sheet.cancel();
  EXPECT_EQ(states(), "6 6 -1 -2 -1 ");
}

TEST_F(Review, WithExactNamesAFileMayHaveADateSeveralNumbersOrOneOfAll) {
  session.settings.exact = true;
  AFilter& rule = session.filters.at(1);
  rule.action = MoveAndRename, rule.path = folder / "out/", rule.mask = "[s]x[ee] [title]";
  session.exceptions.append({"nite train", "Night Train", false});
  web.bodies["/search/shows?q=night+train"] = R"([{"show":{"id":5,"name":"Night Train"}}])";
  web.bodies["/shows/5/episodes"] =
      R"([{"season":1,"number":1,"name":"A","airdate":"2011-04-18"},{"season":2,"number":1,"name":"B"},
          {"season":2,"number":2,"name":"C"}])";
  take({"Nite Train 1x09.mkv", "Nite Train 1x08-09.avi", "Nite Train 12.mp4", "Nite Train 2x01.mkv"});
  EXPECT_EQ(rows(),
            "#\"Nite Train\", searched for as \"night train\"=Night Train (tvmaze:5), by its name 1 Episode unknown 2 "
            "Episode "
            "unknown 3 Episode unknown 4* Ready ");
  const auto numbers = [&] {
    std::string text;
    for (int i = 1; i <= 4; ++i) text += sheet.numbers(i) + "|" + sheet.name_to_edit(i) + "|";
    return text;
  };
  EXPECT_EQ(numbers(), "1x09||1x08-09||12||2x01|2x01 B|");
  EXPECT_TRUE(sheet.folder(1).empty() && !sheet.moves(1));
  for (const auto& [index, wrong] : {std::pair(1, "2011-04-19"), {2, "3x01-02"}, {3, "4"}}) {
    EXPECT_EQ(sheet.correct(index, wrong), "");
  }
  EXPECT_EQ(numbers(), "2011-04-19||3x01-02||4||2x01|2x01 B|");
  for (const auto& [index, right] : {std::pair(1, "2011-04-18"), {2, "2x01-02"}, {3, "3"}}) {
    EXPECT_EQ(sheet.correct(index, right), "");
  }
  EXPECT_EQ(numbers(), "1x01|1x01 A|2x01-02|2x01-02 B & C|2x02|2x02 C|2x01|2x01 B|");
  EXPECT_TRUE(sheet.folder(1) == with_native_separators(folder / "out/") && sheet.moves(1) && sheet.is_waiting());
  sheet.tick({1, 2, 3, 4}, false);
  EXPECT_EQ(sheet.ticked(), 0);
  sheet.tick_all_ready();
  EXPECT_EQ(sheet.ticked(), 4);
  item(3).dest_path = with_separator(folder / "in");
  EXPECT_FALSE(sheet.moves(3));
  int left = 0;
  ui.on_events = [&] { left = std::max(left, session.processor.left()); };
  sheet.apply();
  EXPECT_TRUE(exists("out/2x01-02 B & C.avi") && !sheet.is_waiting());
  EXPECT_EQ(left, 4);
  take({"Night Train 1x07.mkv", "Night Train 1x08.mkv", "Night Train 1x09.mkv"});
  for (const auto& [index, more] : {std::pair(5, "1x06-07"), {6, "99"}, {7, "2011-04-19"}}) sheet.correct(index, more);
  session.settings.exact = false;
  for (const int index : {5, 6, 7}) {
    session.processor.take_again({index}, false);
    EXPECT_EQ(item(index).error_text, "Its corrected number needs exact names") << index;
  }
}

TEST(Changes, WordsThatTheOldNameLacksAreNew) {
  const auto marked = [](std::string_view old_name, std::string_view new_name) {
    std::string text;
    for (const NamePart& part : changes(old_name, new_name)) text += part.is_new ? "[" + part.text + "]" : part.text;
    return text;
  };
  EXPECT_EQ(marked("the.harbour.s01e02.720p.mkv", "The Harbour - 1x02 - Pilot Boat.mkv"),
            "The Harbour - [1x02 - Pilot Boat].mkv");
  EXPECT_EQ(marked("Boat (2)", "(Boat) (3)!"), "(Boat) ([3])!");
}

}  // namespace
}  // namespace quorvel::testing
