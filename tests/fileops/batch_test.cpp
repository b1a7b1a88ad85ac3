#include "fileops/batch.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "platform/stamp_text.h"
#include "rules/action.h"
#include "session_fixture.h"
#include "shell/plan_file.h"
#include "text/cut.h"
#include "text/json_text.h"

namespace quorvel::testing {
namespace {

struct BatchTest : ::testing::Test, TestPorts {
  FailingShell failing;
  FakeUi ui{events};
  Session session{{key_values, failing, *files, service, web, ui, clock, &desktop}, places()};

  BatchTest() { session.setworkdir(); }

  FileJob job(const std::string& from, const std::string& to, int action) const {
    return {folder / ("in/" + from), from, to, folder / "in/", action};
  }
  /// Makes the files named, each holding its name, carries out "from>to from>to" (copies with "+"), and gives what is
  /// there then, "name=contents", with what was not done in front.
  std::string after(const std::string& names, const std::string& plan) {
    std::filesystem::remove_all(path_of(folder / "in"));
    for (const std::string_view name : split(names, " ")) write("in/" + std::string(name), std::string(name));
    std::vector<Batch::Entry> entries;
    for (const std::string_view each : split(plan, " ")) {
      const std::size_t sign = each.find_first_of(">+");
      entries.push_back({job(std::string(each.substr(0, sign)), std::string(each.substr(sign + 1)),
                             each[sign] == '+' ? CopyAndRename : Rename)});
      FileJob companion = job(entries.back().job.filename + ".srt", entries.back().job.new_name + ".srt", Rename);
      companion.action = entries.back().job.action;
      if (files->exists(companion.path)) entries.back().job.companions = {companion};
      if (each.starts_with("old")) entries.back().stamp = FileStamp{.size = 99};
    }
    std::string text;
    Batch(session.jobs, *files).run(entries, [&](std::size_t entry, const FileJobResult& result, std::string trouble) {
      EXPECT_EQ(result.done, trouble.empty());
      replace_all(trouble, folder / "in/", "");
      if (!trouble.empty()) text += std::to_string(entry) + ": " + trouble + "; ";
      return true;
    });
    for (const auto& [path, bytes] : everything_in(folder / "in")) {
      if (!files->exists(path) || files->kind(path) == Files::Kind::Folder) continue;
      text += getfname(path).substr(0, 8) + "=" + bytes + " ";
    }
    return text;
  }
};

TEST_F(BatchTest, FilesGetEachOthersNamesAndNothingIsLostOverIt) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"a b", "a>b b>c", "b=a c=b "},
      {"a b c", "c>d a>b b>c", "b=a c=b d=c "},
      {"a b", "a>b b>a", "a=b b=a "},
      {"a b c d", "a>b b>c c>a d>e", "a=c b=a c=b e=d "},
      {"a b", "a+b b>c", "a=a b=a c=b "},
      {"a b", "a>b b+c", "0: b is there already; a=a b=b c=b "},
      {"a b c", "a>c b>c", "0: Two files would be c; 1: Two files would be c; a=a b=b c=c "},
      {"a b c d", "a>b b>c d>e", "0: b is there already; 1: c is there already; a=a b=b c=c e=d "},
      {"a b", "a>c a>d b>b",
       "1: It is in the plan twice; 2: The new filename is the same as the old filename; b=b c=a "},
      {"a a.srt b b.srt", "a>b b>c", "b=a b.srt=a.srt c=b c.srt=b.srt "},
      {"a a.srt b b.srt", "a>b b>a", "a=b a.srt=b.srt b=a b.srt=a.srt "},
      {"a a.srt b b.srt c", "a>b b>c c>a", "a=c b=a b.srt=a.srt c=b c.srt=b.srt "},
      {"a a.srt b.srt", "a>b", "0: a.srt cannot go along: b.srt is there already; a=a a.srt=a.srt b.srt=b.srt "},
      {"a a.srt b", "a>b b>b.srt", "0: Two files would be b.srt; 1: Two files would be b.srt; a=a a.srt=a.srt b=b "},
      {"old", "old>new gone>x", "0: It has been changed or replaced since; 1: It is not there any more; old=old "}};
  for (const auto& [names, plan, expected] : rows) EXPECT_EQ(after(names, plan), expected) << plan;
  after("a b c", "");
  std::string told;
  session.batch.run({{job("a", "d", Rename)}, {job("b", "e", Rename)}, {job("gone", "f", Rename)}},
                    [&](std::size_t entry, const FileJobResult&, const std::string& trouble) {
                      told += std::to_string(entry) + trouble + "|";
                      return entry != 0;  // "stop"
                    });
  EXPECT_EQ(told, "2It is not there any more|0|1It was not begun|");
  write("in/b", "b"), write("in/b.srt", "words");
  FileJob nameless = job("b", std::string("x\0y", 3), Rename), lonely = job("b", "y", Rename);
  nameless.companions = {job("b.srt", "x.srt", Rename)}, lonely.companions = {job("gone.srt", "y.srt", Rename)};
  session.batch.run({{nameless}}, [](std::size_t, const FileJobResult& result, const std::string& trouble) {
    EXPECT_TRUE(!result.done && trouble == "the name \"x...\" holds a NUL character") << trouble;
    return true;
  });
  EXPECT_TRUE(exists("in/b") && read("in/b.srt") == "words" && !exists("in/x"));
  for (const PastPass& each : session.history.passes(2)) {
    EXPECT_EQ(each.operations.at(0).old_path + (each.operations.at(0).leads ? "!" : ""),
              folder / (each.is_undoing ? "in/x.srt" : "in/b.srt"));
  }
  const std::string gone = folder / "in/gone.srt" + " cannot go along: it is not there any more";
  EXPECT_EQ(session.batch.troubles({{lonely}})[0].text, gone);
  session.batch.run({{lonely}}, [&](std::size_t, const FileJobResult& result, const std::string& trouble) {
    EXPECT_EQ(trouble + result.error_text.value_or(""), gone);
    return true;
  });
  EXPECT_TRUE(exists("in/b") && !exists("in/y"));
  const std::vector<Batch::Entry> link = {{job("b", "linked", HardLinkAndRename)}};
  EXPECT_EQ(session.batch.troubles(link)[0].kind, Batch::Trouble::None);
  session.batch.run(link, [](auto...) { return true; });
  EXPECT_EQ(session.batch.troubles(link)[0].text, folder / "in/linked" + " is this file already");
}

TEST_F(BatchTest, WhatIsMovedIsReadBackWhereTheUserWantsThat) {
  for (const auto& [verify, action] : {std::pair(true, MoveAndRename), {false, MoveAndRename}, {true, CopyAndRename}}) {
    session.settings.verify = verify;
    write("in/a", "a");
    Batch(session.jobs, *files).run({{job("a", "b" + std::to_string(failing.calls), action)}}, [](auto...) {
      return true;
    });
    EXPECT_EQ((failing.flags & FileOperationRequest::Verify) != 0, verify && action == MoveAndRename);
  }
}

TEST_F(BatchTest, ACircleThatCannotBeClosedIsTakenBack) {
  for (int at = 1; at <= 8; ++at) {
    failing.calls = 0, failing.fails_at = at;
    const std::string ended = after("a a.srt b b.srt c c.srt", "a>b b>c c>a");
    EXPECT_TRUE(ended.ends_with("; a=a a.srt=a.srt b=b b.srt=b.srt c=c c.srt=c.srt ")) << ended;
    EXPECT_EQ(ended.find("could not be taken back"), std::string::npos);
  }
  failing.calls = 0, failing.fails_at = 3;
  failing.meanwhile = [this] { write("in/b", "edited"); };
  const std::string ended = after("a b", "a>b b>a");
  EXPECT_TRUE(
      ended.ends_with("; what was done before could not be taken back, and the history tells it; "
                      "a=b b=edited swapping=a "))
      << ended;
}

TEST(PlanFile, SaysWhichLineCannotBeUnderstood) {
  const std::string root = absolute_path("/");
  std::string path, other;
  quorvel::append_json(path, root + "a.mkv");
  quorvel::append_json(other, absolute_path("/x/b.mkv"));
  const std::string good = R"({"state":"planned","path":)" + path + R"(,"new_path":)" + path;
  const std::pair<std::string, std::string> rows[] = {
      {R"({"state":"failed"})"
       "\n\n"
       R"({"summary":{}})",
       ""},
      {"\n[1", "Line 2 of the plan: "},
      {"[]", "Line 1 of the plan: it is no object"},
      {R"({"state":"planned","path":"a","new_path":"b"})", "Line 1 of the plan: \"a\" is not a full path"},
      {R"({"state":"planned"})", "Line 1 of the plan: \"path\" or \"new_path\" is missing"},
      {good + R"(,"action":"burn"})", "Line 1 of the plan: \"burn\" is no action"},
      {R"({"state":"planned","path":)" + path + R"(,"new_path":)" + other + R"(,"action":"rename"})",
       "Line 1 of the plan: \"" + absolute_path("/x/b.mkv") + "\" is in another folder"},
      {good + R"(,"action":"move","stamp":"7"})", "Line 1 of the plan: \"7\" is no stamp"}};
  for (const auto& [text, expected] : rows) {
    try {
      EXPECT_EQ(plan_of(text).size(), 0u) << text;
      EXPECT_EQ(expected, "");
    } catch (const Failure& failure) {
      EXPECT_TRUE(std::string(failure.what()).starts_with(expected)) << failure.what();
    }
  }
  const std::vector<Batch::Entry> plan = plan_of(good + R"(,"action":"copy","stamp":"7 -8"})"
                                                        "\n");
  ASSERT_EQ(plan.size(), 1u);
  EXPECT_EQ(plan[0].job.path + plan[0].job.destination(), root + "a.mkv" + root + "a.mkv");
  EXPECT_TRUE(plan[0].job.action == CopyAndRename && stamp_text(*plan[0].stamp) == "7 -8");
}

}  // namespace
}  // namespace quorvel::testing
