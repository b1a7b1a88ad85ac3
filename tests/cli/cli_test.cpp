#include <gtest/gtest.h>

#include <regex>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "text/json_text.h"

namespace quorvel::testing {
namespace {

using Arguments = std::vector<std::string>;
const std::string good = "The Harbour Lights - 1x0";

/// The built program on real files, with a home of its own, against the stand-in service.
struct Cli : ::testing::Test {
  const TemporaryFolder folder;
  ListingsService service;
  const std::unique_ptr<Files> files = system_files();
  std::string out, error;  // of the last run, the first without its times

  Cli() {
    for (const char* const name : {"home", "in", "work"}) files->create_folder(folder / name);
    settings()->erase_all();
  }
  ~Cli() override { settings()->erase_all(); }
  /// As they are now.
  std::unique_ptr<KeyValueStore> settings() const { return settings_of(*files, folder / "home"); }
  void add(const Arguments& names) const {
    for (const std::string& name : names) write_file(folder / ("in/" + name), name);
  }
  Start start(const Arguments& arguments, bool terminal) const {
    return {QUORVEL_CLI,       arguments,         folder / "in", user_at(folder / "home", service.base() + "/"),
            folder / "../out", folder / "../err", terminal};
  }
  int run(const Arguments& arguments) {
    const int status = ChildProcess(start(arguments, false)).status();
    out = std::regex_replace(contents(folder / "../out"), std::regex("\\(\\d+:\\d\\d:\\d\\d( [AP]M)?\\) "), "> ");
    error = contents(folder / "../err");
    return status;
  }
};

TEST_F(Cli, RenamesAFolderAndTellsHowItWent) {
  add({"The.Harbour.Lights.S01E02.mkv", "nothing.avi", "notes.txt"});
  EXPECT_EQ(run({folder / "in"}), 1);
  EXPECT_EQ(out,
            "> Quorvel 3.4 (build 0) started\n> Unable to find filename filter for: nothing.avi\n"
            "> All items processed\n");
  EXPECT_EQ(error, folder / "in" + ": 2 files queued, 1 file left out\n" + folder / "in/nothing.avi" +
                       ": Unable to find filename filter\n1 done, 1 failed, 0 cancelled\n");
  const std::string old_path = folder / "in/The.Harbour.Lights.S01E02.mkv";
  const std::string new_path = folder / ("in/" + good + "2 - The Pilot Boat.mkv");
  EXPECT_EQ(contents(new_path), "The.Harbour.Lights.S01E02.mkv");
  EXPECT_TRUE(run({"--history"}) == 0 &&
              out.ends_with(": 1 renamed\n  renamed " + old_path + " -> " + new_path + "\n"));
  for (const char* const way : {"-n", "--undo"}) {
    EXPECT_EQ(run({"--undo", way}), 0);
    EXPECT_EQ(out, new_path + " -> " + old_path + "\n");
  }
  EXPECT_TRUE(run({"--undo"}) == 1 && error == "There is nothing to undo\n") << error;
  EXPECT_EQ(run({"--undo", "2"}), 0) << "the undoing";
  EXPECT_TRUE(run({"--history", "--json", "1"}) == 0 && out.starts_with(R"({"pass":3,"operation":3000001,"time":)"));
  EXPECT_EQ(contents(new_path), "The.Harbour.Lights.S01E02.mkv");
  EXPECT_EQ(run({new_path}), 0);
  EXPECT_EQ(error, new_path +
                       ": The new filename is the same as the old filename\n"
                       "0 done, 0 failed, 0 cancelled, 1 right already\n");
  EXPECT_EQ(settings()->read_string(""), "3.4");
  EXPECT_EQ(settings()->read_number("context"), 0u);

  add({"The.Harbour.Lights.S01E03.mkv", "a sample.avi"});
  const std::string path = "./The.Harbour.Lights.S01E03.mkv";
  EXPECT_EQ(run({path.substr(2), "gone\n.avi", "a sample.avi", "notes.txt", "", path}), 1);
  EXPECT_EQ(error,
            "gone?.avi: not queued: no such file or folder\na sample.avi: not queued: a sample, as its path says\n"
            "notes.txt: not queued: its type is not listed in the settings\n: not queued: no such file or folder\n" +
                path + ": not queued: already queued\n1 done, 0 failed, 0 cancelled\n");
  EXPECT_EQ(service.requests().size(), 2u) << "the second run finds everything in its caches";
  EXPECT_EQ(run({"gone.avi"}), 1);
  write_file(folder / ("in/" + good + "3 - A Lantern for Maud.mkv"), "edited since");
  EXPECT_TRUE(run({"--undo"}) == 1 && error.ends_with("To leave that and undo the pass before: --undo 3\n")) << error;

  add({"The.Harbour.Lights.S01E01.mkv"});
  std::filesystem::remove_all(path_of(data_folder_of(folder / "home")));
  write_file(data_folder_of(folder / "home"), "in the way of all that is kept");
  EXPECT_EQ(run({facts::windows ? "*S01E01.mkv" : "The.Harbour.Lights.S01E01.mkv", "The.Harbour.Lights.S01E01.mkv"}),
            0);
  EXPECT_TRUE(facts::windows || out.find("> Unable to store the settings: ") != std::string::npos) << out;
}

TEST_F(Cli, ADryRunShowsWhatTheRunAfterItDoes) {
  const std::string first = "The.Harbour.Lights.S01E02.ts", second = "the harbour lights 1x02.ts";
  const std::string third = "the harbour lights 1x03 " + facts::odd_names.back(),
                    fourth = "the harbour lights 1x01.mp4";
  // Where folders have no dot at their end, it says so.
  const std::string made = facts::windows ? "out-1/" : "out-1./", to = " -> " + folder / made;
  add({first, second, third, fourth});
  const std::string rule = "\t" + folder.path() + "/out-[s]./\t[title]";
  write_file(folder / "work/filters.dat", "2\tTrue\tmp4\t" + rule + std::string(250, 'x') + "\tAny\t1\t0\r\n" +
                                              "2\tTrue\t\t*" + rule + "\tAny\t0\t1\r\n");
  files->create_folder(folder / "work/cache");
  write_file(folder / "work/cache/old.qc", "of an older version");
  const auto before = everything_in(folder.path());
  EXPECT_EQ(run({"-n", "--set=confirm=1", "-w../work", "--set=types=ts;avi;mp4", first, second, "./" + third, fourth}),
            1);
  const auto failed = [](int code, const std::string& name) {
    return "> File operation failed (" + std::to_string(code) + ")\n> Unable to rename/move files for: " + name + "\n";
  };
  const std::string long_name = "Slack Water" + std::string(250, 'x') + ".mp4";
  EXPECT_EQ(out, "> Quorvel 3.4 (build 0) started\n" + folder / ("in/" + first) + to + "The Pilot Boat.ts\n" +
                     failed(facts::taken, "The Pilot Boat.ts") + folder / ("in/" + third) + to +
                     "A Lantern for Maud.avi\n" + failed(facts::too_long, long_name) + "> All items processed\n");
  EXPECT_TRUE(error.ends_with("2 done, 2 failed, 0 cancelled\n")) << error;
  EXPECT_EQ(everything_in(folder.path()), before);
  EXPECT_FALSE(settings()->read_string(""));
  EXPECT_EQ(service.requests().size(), 2u) << "the second file finds what was fetched for the first";

  EXPECT_EQ(run({"-v", "--set", "nocache=1", "-w", "../work", "--set=types=ts;avi;mp4", first, second, third, fourth}),
            1);
  EXPECT_NE(out.find(failed(facts::too_long, long_name)), std::string::npos);
  EXPECT_NE(out.find("> Query cache disabled\n"), std::string::npos);
  EXPECT_EQ(contents(folder / (made + "The Pilot Boat.ts")), first);
  EXPECT_EQ(contents(folder / (made + "A Lantern for Maud.avi")), third);
  EXPECT_EQ(contents(folder / ("in/" + second)), second);
  EXPECT_FALSE(files->exists(folder / "work/cache") || files->exists(data_folder_of(folder / "home") + "/filters.dat"));
  EXPECT_EQ(settings()->read_string(""), "3.4");
  EXPECT_FALSE(settings()->read_string("types") || settings()->read_number("nocache"));
}

TEST_F(Cli, ReadingNamesAsksNobodyAndTouchesNothing) {
  const auto before = everything_in(folder.path());
  EXPECT_EQ(run({"--read", "Salt Road (2019)/S02E05-06.mkv", "[Kites] Paper Moon 12 [720p].mkv", "Film (2012).mkv"}),
            0);
  EXPECT_EQ(out,
            "Salt Road (2019)/S02E05-06.mkv: \"Salt Road\" (2019), season 2, episodes 5, 6\n"
            "[Kites] Paper Moon 12 [720p].mkv: \"Paper Moon\", absolute number 12\nFilm (2012).mkv: no episode\n");
  EXPECT_EQ(run({"--read", "--json", "\"Evening Round\".US.18.Apr.11.avi", "Part 2.mkv"}), 0);
  EXPECT_EQ(out, R"({"name":"\"Evening Round\".US.18.Apr.11.avi","show":"Evening Round","year":null,"country":"US",)"
                 R"("season":null,"episodes":null,"absolute":null,"date":"2011-04-18","part":null,"special":false,)"
                 R"("certain":false})"
                 "\n"
                 R"({"name":"Part 2.mkv","show":null,"year":null,"country":null,"season":1,"episodes":[2],)"
                 R"("absolute":null,"date":null,"part":2,"special":false,"certain":true})"
                 "\n");
  EXPECT_TRUE(run({"--read"}) == 0 && out.empty()) << "the input is empty";
  if (!facts::windows) {
    const ChildProcess program(start({"--read", "-"}, true));
    for (const char* const episode : {"3", "4"}) {
      program.type("Salt Road S02E0" + std::string(episode) + "\n");
      EXPECT_TRUE(program.shows("season 2, episode " + std::string(episode))) << "before the next line comes";
    }
  }
  EXPECT_EQ(everything_in(folder.path()), before);
  EXPECT_FALSE(settings()->read_string(""));
  EXPECT_TRUE(service.requests().empty());
}

TEST_F(Cli, ExactNamesAreToldInJsonAndTheirAnswersKept) {
  const std::string both = "The.Harbour.Lights.S01E02E03.mkv", path = folder / ("in/" + both);
  const std::string name = good + "2-03 - The Pilot Boat & A Lantern for Maud.mkv";
  add({both});
  EXPECT_EQ(run({"--exact", "--json", "-n", both}), 0);
  std::string expected;
  append_json(expected, path);
  expected = "{\"path\":" + expected + ",\"state\":\"planned\",\"new_path\":";
  append_json(expected, folder / ("in/" + name));
  write_file(folder / "plan", out);
  out = std::regex_replace(out, std::regex(R"("stamp":"\d+ \d+")"), R"("stamp":"")");
  EXPECT_EQ(out, expected +
                     ",\"action\":\"rename\",\"companions\":[],\"show\":\"The Harbour "
                     "Lights\",\"show_id\":101,\"season\":1,\"episodes\":"
                     "[2,3],\"title\":\"The Pilot Boat & A Lantern for Maud\",\"reason\":null,\"doubts\":[],"
                     "\"stamp\":\"\"}\n{\"summary\":{\"planned\":1,\"failed\":0,\"cancelled\":0,\"not processed\":0,"
                     "\"right already\":0}}\n");
  EXPECT_TRUE(run({"--apply", "../plan", "-n", "--json", "-w../work"}) == 0 &&
              out == expected +
                         ",\"action\":\"rename\",\"companions\":[],\"reason\":null}\n{\"summary\":{\"planned\":1,"
                         "\"failed\":0}}\n");
  EXPECT_EQ(run({"--apply", "../plan", "-w../work"}), 0);
  EXPECT_EQ(contents(folder / ("in/" + name)), both);
  EXPECT_EQ(run({"--undo", "-w../work"}), 0);
  write_file(folder / ("in/" + both), both + " has changed");
  EXPECT_EQ(run({"--apply", "../plan", "-w../work"}), 1);
  EXPECT_TRUE(error.starts_with(path + ": It has been changed or replaced since\n")) << error;
  write_file(folder / ("in/" + both), both);
  EXPECT_EQ(run({"--exact", "-w../work", both}), 0);
  EXPECT_EQ(contents(folder / ("in/" + name)), both);
  EXPECT_EQ(service.requests().size(), 4u);
  add({"harbour.lights.1x04.mkv"});
  EXPECT_EQ(run({"--show", "101", "-w../work", "harbour.lights.1x04.mkv"}), 0);
  EXPECT_TRUE(files->exists(folder / ("in/" + good + "4 - Salt and Tar.mkv")));
}

TEST_F(Cli, MediaServersGetTheirFoldersAndNames) {
  files->create_folder(folder / "tv");
  for (const char* const below : {"a", "b"}) files->create_folder(folder / "in" + native::separator + below);
  add({"The.Harbour.Lights.S01E02-E04.mkv", "a/The.Daily.Brief.2019.01.08.mkv", "b/nothing.mkv"});
  EXPECT_EQ(run({"-n", "--set", "tidy=1", "--exact", "--preset", "plex", "--to", "../tv", folder / "in"}), 1);
  EXPECT_NE(out.find(folder / "in/a" + " -> " + std::string(native::trash_name) + "\n"), std::string::npos) << out;
  EXPECT_EQ(out.find(folder / "in/b" + " -> "), std::string::npos);
  files->remove(folder / "in/b/nothing.mkv");
  EXPECT_EQ(run({"--exact", "--preset", "plex", "--to", "../tv", "-w../work", folder / "in"}), 0) << error;
  EXPECT_EQ(
      contents(folder / "tv/The Harbour Lights (2015)/Season 01/The Harbour Lights (2015) - s01e02-e04 - The Pilot "
                        "Boat & A Lantern for Maud & Salt and Tar.mkv"),
      "The.Harbour.Lights.S01E02-E04.mkv");
  EXPECT_TRUE(files->exists(folder /
                            "tv/Daily Brief (2019)/Season 2019/Daily Brief (2019) - 2019-01-08 - Tuesday Edition.mkv"));
  EXPECT_FALSE(files->exists(folder / "work/filters.dat"));
}

TEST_F(Cli, AsksWhichShowIsMeantRemembersItAndTellsOfLostCharacters) {
  add({"Part.Time.S01E01.mkv"});
  service.answer_with([](const std::string& request) {
    const std::string target = target_of(request);
    const auto show = [](const std::string& id, const char* rest = "") {
      return R"({"id":)" + id + R"(,"url":"https://x/)" + id + R"(","name":"Part Time","premiered":"20)" + id +
             R"(-01-01")" + rest + "}";
    };
    const std::string body = target.starts_with("/search") ? R"([{"show":)" + show("10") + R"(},{"show":)" +
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
  for (const auto& [answers, status] : {std::pair("s\n", 1), {"9\n2\n", 0}}) {
    const ChildProcess program(start(asked, true));
    EXPECT_TRUE(program.shows(file + ": which show is \"Part Time\"?") &&
                program.shows("2  Part Time (2015, tvmaze:15), BBC") && program.shows("or s to skip: "));
    program.type(answers);
    EXPECT_EQ(program.status(), status);
  }
  EXPECT_EQ(contents(folder / "in/Part Time - 1x01 - Part 1.mkv"), file);
  add({"part time 1x01.avi", "part time 1x01.mp4"});
  EXPECT_EQ(run({"--exact", "-w../work", "part time 1x01.avi"}), 0) << "it is remembered";
  EXPECT_TRUE(run({"--forget", "-w../work", "part time 1x01.mp4"}) == 1 && error.find(unclear) != std::string::npos);
  EXPECT_EQ(run({"-w../work", "part time 1x01.mp4"}), 0);
  EXPECT_TRUE(error.ends_with("1 name has lost characters that the service gave; --exact keeps them\n")) << error;
}

TEST_F(Cli, WrongUsageIsRefusedAndNothingDone) {
  const std::string usage = "\nTry quorvel-cli --help.", cache = folder / "work/cache";
  files->create_folder(cache);
  write_file(cache + "/photo.jpg", "x");
  const std::pair<Arguments, std::string> rows[] = {
      {{}, "No path is given" + usage},
      {{"--colour", "x"}, "There is no option --colour" + usage},
      {{"x", "--set"}, "The option --set lacks its value" + usage},
      {{"--show", "0", "x"}, "--show wants the number of a show, not \"0\"" + usage},
      {{"--undo", "1x"}, "--undo wants the number of a pass, not \"1x\"" + usage},
      {{"--history", "--undo"}, "--history and --undo do not go together" + usage},
      {{"--undo", "1", "2"}, "Only one number is wanted, not \"2\" as well" + usage},
      {{"--apply", "plan", "x"}, "--apply takes its files from the plan, not \"x\"" + usage},
      {{"-q"}, "There is no option -q" + usage},
      {{"--preset", "vcr", "x"}, "--preset knows jellyfin, plex and kodi, not \"vcr\"" + usage},
      {{"--preset", "plex", "x"}, "--to FOLDER is wanted as well: where the files go" + usage},
      {{"--action", "burn", "x"}, "--action knows rename, move, copy, hardlink and symlink, not \"burn\"" + usage},
      {{"--set", "confirm=no", "x"}, "--set confirm wants a whole number, not \"no\"" + usage},
      {{"--set", "confirm", "x"}, "--set wants NAME=VALUE, not \"confirm\"" + usage},
      {{"--set", "speed=9", "x"}, "There is no setting \"speed\"" + usage},
      {{"--set", "confirm=32768", "x"}, "--set confirm wants a number from 0 to 32767" + usage},
      {{"--set", "types=a", "x"}, "--set types wants at least one extension of 3 characters, not \"a\"" + usage},
      {{"-w", "nowhere", "x"}, "The work folder \"nowhere\" does not exist"},
      {{"-w", folder / "work", "x"},
       "The folder " + cache + " holds \"photo.jpg\", which is no cache file, so it cannot be used for caches"}};
  for (const auto& [arguments, reason] : rows) {
    EXPECT_EQ(run(arguments), 2);
    EXPECT_EQ(out + "|" + error, "|quorvel-cli: " + reason + "\n");
  }
  EXPECT_TRUE(run({"--help"}) == 0 && out.starts_with("Usage: quorvel-cli")) << out;
  EXPECT_TRUE(run({"--version"}) == 0 && out == "quorvel-cli 3.4.0\n") << out;
  if (facts::windows) return;  // there the settings are no file that could be damaged
  const std::string damaged = data_folder_of(folder / "home") + "/settings.ini";
  files->create_folder(data_folder_of(folder / "home"));
  write_file(damaged, "nonsense");
  EXPECT_TRUE(run({"x"}) == 1 && error.find("settings.ini") != std::string::npos) << error;
  EXPECT_EQ(contents(damaged), "nonsense");
}

TEST_F(Cli, RunsTheUsersCommandsAndKeepsALog) {
  add({"The.Harbour.Lights.S01E02-E03.mkv", "nothing.avi"});
  const std::string log = folder / "log",
                    tell = facts::windows ? "cmd /c echo %QUORVEL_" : "/bin/sh -c 'echo $QUORVEL_",
                    end = facts::windows ? "%" : "'";
  write_file(log, "");  // as a program that rotates logs leaves it
  const auto logged = [&] { return std::regex_replace(contents(log), std::regex("....-..-.. ..:..:.. "), "> "); };
  EXPECT_EQ(run({"--exact", "--log", log, "--exec", tell + "EPISODES" + end, "--exec-after", tell + "FAILED" + end,
                 folder / "in"}),
            1);
  EXPECT_NE(error.find("2,3"), std::string::npos) << error;
  EXPECT_NE(error.find("\n1"), std::string::npos) << error;
  EXPECT_TRUE(logged().starts_with("> Quorvel 3.4 (build 0) started\n> ") &&
              logged().ends_with("> 1 done, 1 failed, 0 cancelled\n"))
      << logged();
  const std::string first = contents(log);
  EXPECT_TRUE(run({"--log", log, "--undo", "--json"}) == 0 && contents(log).starts_with(first));
  EXPECT_TRUE(out.find(R"("state":"undone")") != std::string::npos &&
              out.ends_with("{\"summary\":{\"undone\":1,\"refused\":0}}\n"))
      << out;
  write_file(log, std::string(1'000'000, 'x'));
  EXPECT_TRUE(run({"--log", log, folder / "in"}) == 2 &&
              error == "quorvel-cli: \"" + log + "\" is there and is no log\n");
  write_file(log, first + std::string(1'000'000, 'x') + "\n");
  EXPECT_EQ(run({"--log", log, "--exec", "nonesuch", "-n", folder / "in/The.Harbour.Lights.S01E02-E03.mkv"}), 0);
  EXPECT_TRUE(contents(log + ".1").starts_with(first) && logged().starts_with("> Quorvel")) << "and no command is run";
  EXPECT_EQ(run({"--exec", "nonesuch", folder / "in/The.Harbour.Lights.S01E02-E03.mkv"}), 1);
  EXPECT_NE(error.find("The command \"nonesuch\" has not been run to its end: "), std::string::npos) << error;
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
  const ChildProcess again(start({"--watch", "--set=settle=1", "-w../work", "."}, true));
  EXPECT_TRUE(again.shows(good + "1 - Slack Water.mkv"));
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
