#include "cli/cli_fixture.h"

namespace quorvel::testing {
namespace {

TEST_F(Cli, AsksWhichShowIsMeantRemembersItAndTellsOfLostCharacters) {
  add({"Part.Time.S01E01.mkv"});
  service.answer_with([](const std::string& request) {
    const std::string target = target_of(request);
    const auto show = [](const std::string& id, const char* rest = "") {
      return R"({"id":)" + id + R"(,"url":"https://x/)" + id + R"(","name":"Part Time","premiered":"20)" + id +
             R"(-01-01")" + rest + "}";
    };
    const std::string body = target.ends_with("=nobody")     ? "[]"
                             : target.ends_with("=trouble")  ? "{}"
                             : target.starts_with("/search") ? R"([{"show":)" + show("10") + R"(},{"show":)" +
                                                                   show("15", R"(,"network":{"name":"BBC"})") + "}]"
                             : target.ends_with("/episodes") ? R"([{"id":1,"url":"u","name":"Part 1","season":1,)"
                                                               R"("number":1,"airdate":"2015-01-02"}])"
                             : target == "/shows/15"         ? show("15")
                                                             : "";
    return "HTTP/1.1 " + std::string(body.empty() ? "404 No" : "200 OK") +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  });
  const std::string file = "Part.Time.S01E01.mkv";
  const Arguments asked = {"--choose", "-w../work", file};
  EXPECT_EQ(run(asked), 1) << "nobody can answer";
  const std::string unclear = "More than one show fits: Part Time (2010, tvmaze:10), Part Time (2015, tvmaze:15)";
  EXPECT_NE(error.find(unclear), std::string::npos) << error;
  for (const auto& [answers, status] : {std::pair("s\n", 1), {"Nobody\n0\nTrouble\n3\n02\n2\n", 0}}) {
    const ChildProcess program(start(asked, true));
    EXPECT_TRUE(program.shows(file + ": which show is \"Part Time\"?") &&
                program.shows("2  Part Time (2015, tvmaze:15), BBC") && program.shows("or s to skip: "));
    program.type(answers);
    EXPECT_TRUE(status == 1 || (program.shows("  No show is known by that name") &&
                                program.shows("  The listings service's answer is no list")));
    EXPECT_EQ(program.status(), status);
  }
  EXPECT_EQ(contents(folder / "in/Part Time - 1x01 - Part 1.mkv"), file);
  add({"part time 1x01.avi", "part time 1x01.mp4"});
  EXPECT_EQ(run({"--exact", "-w../work", "part time 1x01.avi"}), 0) << "it is remembered";
  EXPECT_TRUE(run({"--forget", "-w../work", "part time 1x01.mp4"}) == 1 && error.find(unclear) != std::string::npos);
  EXPECT_EQ(run({"-w../work", "part time 1x01.mp4"}), 0);
  EXPECT_TRUE(error.ends_with("1 name has lost characters that the service gave; --exact keeps them\n")) << error;
}

TEST_F(Cli, AHangUpThatIsIgnoredStaysSo) {
  if (facts::windows) GTEST_SKIP() << "there is no such signal";
  add({"The.Harbour.Lights.S01E02.mkv"});
  const char* const script =
      "trap '' HUP; \"$@\" & while kill -HUP $! 2>&-; do grep -q ') Z' /proc/$!/stat 2>&- && break; done; wait $!";
  Start shell = start({"-c", script, "sh", QUORVEL_CLI, "The.Harbour.Lights.S01E02.mkv"}, false);
  shell.program = "/bin/sh";
  EXPECT_EQ(ChildProcess(shell).status(), 0);
}

TEST_F(Cli, WatchingTakesWhatIsThereAndWhatComesUntilItIsInterrupted) {
  EXPECT_TRUE(run({"--watch", "gone"}) == 2 && error.ends_with("There is no folder \"gone\" to watch\n")) << error;
  EXPECT_TRUE(run({"--watch", "-n", "."}) == 2 && error.find("--watch goes with none of --dry-run") != error.npos);
  EXPECT_TRUE(run({"--watch", "--set=confirm=1", "."}) == 1 && error.find("--watch asks nobody") != error.npos);
  const Arguments two = {"The.Harbour.Lights.S01E02.mkv", "The.Harbour.Lights.S01E03.mkv"};
  add({two[0], "nothing.mkv"});
  const ChildProcess program(start({"--watch", "--set=settle=1", "-w../work", "."}, true));
  EXPECT_TRUE(program.shows("nothing.mkv: Unable to find filename filter") &&
              program.shows(good + "2 - The Pilot Boat.mkv"));
  std::filesystem::create_directories(path_of(folder / "in/new/folder"));
  write_file(folder / ("in/new/folder/" + two[1]), "");
  write_file(folder / ("in/new/folder/" + two[1]), two[1]);
  EXPECT_TRUE(program.shows(good + "3 - A Lantern for Maud.mkv"));
  program.type("\x03");
  EXPECT_TRUE(program.shows("The watching has ended"));
  EXPECT_EQ(program.status(), 0);
  EXPECT_EQ(contents(folder / ("in/" + good + "2 - The Pilot Boat.mkv")), two[0]);
  EXPECT_EQ(contents(folder / ("in/new/folder/" + good + "3 - A Lantern for Maud.mkv")), two[1]);

  EXPECT_EQ(run({"--undo", "-w../work"}), 0);
  add({"The.Harbour.Lights.S01E01.mkv"});
  const ChildProcess again(start({"--watch", "--json", "--set=settle=1", "-w../work", "."}, true));
  EXPECT_TRUE(again.shows(good + "1 - Slack Water.mkv") && again.shows("{\"summary\":{\"done\":1,"));
  again.type("\x03");
  EXPECT_EQ(again.status(), 0);
  EXPECT_EQ(contents(folder / ("in/new/folder/" + two[1])), two[1]) << "what was undone stays so";
}

TEST_F(Cli, ATerminalShowsQuestionsAndProgressAndInterruptsAndWithoutOneTheAnswerIsNo) {
  const Arguments two = {"The.Harbour.Lights.S01E03.mkv", "The.Harbour.Lights.S01E02.mkv"};
  add(two);
  service.slow_down(std::chrono::milliseconds(500));
  const auto begin = std::chrono::steady_clock::now();
  {
    const ChildProcess program(start({"-v", two[0], two[1]}, true));
    EXPECT_TRUE(program.shows("1 of 2") && program.shows("Query not in cache"));  // now the transfer begins
    program.type("\x03");                                                         // ends the pass
    EXPECT_TRUE(program.shows("Got quit signal, finishing up..."));
    program.type("\x03");  // ends the transfer
    EXPECT_TRUE(program.shows("Error searching for show: The transfer was cancelled") &&
                program.shows("Stopped by the user") &&
                program.shows("0 done, 0 failed, 1 cancelled, 1 not processed"));
    EXPECT_EQ(program.status(), 1);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(25)) << "the answer takes longer";
  service.slow_down({});
  const Arguments arguments = {"--set", "confirm=1", two[1]};
  EXPECT_TRUE(run(arguments) == 1 && error.ends_with("0 done, 0 failed, 1 cancelled\n"));
  for (const auto& [answer, status] : {std::pair("\x03", 1), {"\n", 1}, {"y\n", 0}}) {
    if (facts::windows && *answer == '\x03') continue;  // Wine goes on reading after an interrupt
    const ChildProcess program(start(arguments, true));
    EXPECT_TRUE(program.shows("Confirm File Rename") && program.shows("Continue with file rename? [y/N] "));
    program.type(answer);
    EXPECT_EQ(program.status(), status);
    EXPECT_TRUE(facts::windows || program.shows("1 of 1  The.Harbour.Lights.S01E02"));
  }
  EXPECT_EQ(contents(folder / ("in/" + good + "2 - The Pilot Boat.mkv")), two[1]);
}

}  // namespace
}  // namespace quorvel::testing
