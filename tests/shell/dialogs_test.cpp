#include "shell/dialogs.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

TEST(Dialogs, SayWhatBecameOfAnItem) {
  const TestPorts at;
  const std::chrono::sys_seconds told{std::chrono::days(20000)};
  const auto info_after = [&told](const QueueItem& item, std::chrono::hours age) {
    return item_info(item, told + age);
  };
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
    EXPECT_EQ(info_after(item, {}), info) << info.status;
    EXPECT_EQ(folder_of(item, *at.files), folder) << info.status;
  }
  item.state = QueueState::Failed;  // its undoing
  at.files->remove(item.path);
  EXPECT_EQ(folder_of(item, *at.files), out);

  item.reading = read_name("Show.S01E02.mkv"), item.reading->certain = false;
  item.match = "Show (2010, tvmaze:1), by its name", item.listings_told = told, item.doubts = {"two", "A doubt"};
  item.error_text = "one\r\nRead as: \"Show\", season 1, episode 2\r\ntwo";  // the reading is told once, and a doubt
  const std::string remarks =
      "Read as: \"Show\", season 1, episode 2 (not certain)\nMatch: " + item.match + "\nListings: ";
  EXPECT_EQ(info_after(item, std::chrono::hours(23)).description,
            "Error: one\ntwo\n" + remarks + "less than a day old\nLook at this: A doubt");
  item.state = QueueState::Done, item.error_text.clear(), item.doubts.clear();
  EXPECT_EQ(info_after(item, std::chrono::hours(24)).description, remarks + "1 day old");
  EXPECT_EQ(info_after(item, std::chrono::hours(72)).description, remarks + "3 days old");
}

TEST(Dialogs, CutALineAfterWhatFits) {
  const auto measure = [](const std::string& text) { return static_cast<int>(text.size()); };
  EXPECT_EQ(fitted("123456789", 10, measure), "123456789");
  EXPECT_EQ(fitted("1234567890", 10, measure), "123456...");
  EXPECT_EQ(fitted("12345\u00E9\u00E9\u00E9", 10, measure), "12345...");
  EXPECT_EQ(message_lines("one#two##"), "one\ntwo\n\n");
  EXPECT_EQ(fitted("12", 1, measure), "...");
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

}  // namespace
}  // namespace quorvel::testing
