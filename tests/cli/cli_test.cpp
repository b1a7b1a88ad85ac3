#include "cli/cli_fixture.h"
#include "text/json_text.h"

namespace quorvel::testing {
namespace {

TEST_F(Cli, RenamesAFolderAndTellsHowItWent) {
  add({"The.Harbour.Lights.S01E02.mkv", "nothing.avi", "notes.txt"});
  EXPECT_EQ(run({"--set=confirm=0", folder / "in"}), 1);
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
  EXPECT_TRUE(run({"--undo"}) == 0 && error.ends_with(": 1 of 1 undone\n")) << error;
  EXPECT_EQ(run({path}), 0);
  if (!facts::windows) {
    EXPECT_TRUE(run({"/dev/null"}) == 1 && error.find(": not queued: neither a file nor a folder\n") != error.npos);
    EXPECT_TRUE(run({"/"}) == 1 && error.starts_with("/: not queued: the path is too short\n"));
    EXPECT_TRUE(run({"\x1F \x7F\xC2\x9F\xC2\xA0"}) == 1 && error.starts_with("? ??\xC2\xA0: not queued: ")) << error;
  }
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
  const std::string cache = data_folder_of(folder / "home") + native::separator + "cache";
  for (const std::string& each : {data_folder_of(folder / "home"), cache}) files->create_folder(each);
  for (const char* const each : {"photo.jpg", "old.qc"}) write_file(cache + native::separator + each, each);
  const auto before = everything_in(folder.path());
  EXPECT_EQ(run({"-n", "gone"}), 1);
  EXPECT_NE(out.find("> The folder " + cache + " is kept, for it holds \"photo.jpg\", which is no cache file\n"),
            std::string::npos)
      << out;
  EXPECT_EQ(everything_in(folder.path()), before);
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
    program.type("\xEF\xBB\xBFSalt Road S02E03\x16\r\n");  // as some programs of Windows write lines
    EXPECT_TRUE(program.shows("season 2, episode 3")) << "before the next line comes";
    program.type("\nSalt Road S02E04\n\x04");
    EXPECT_TRUE(program.shows("\nSalt Road S02E04: \"Salt Road\", season 2, episode 4\r\n"));
    EXPECT_TRUE(program.shows("\nSalt Road S02E03: \"Salt Road\", season 2, episode 3\r\n"));
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

TEST_F(Cli, ARunsOwnRuleIsFollowedAndWhatGoesAlongIsInThePlan) {
  const std::string video = "The.Harbour.Lights.S01E02E03.mkv", words = "The.Harbour.Lights.S01E02E03.en.srt";
  const std::string stem = good + "2 - The Pilot Boat", there = folder / ("out/" + stem);
  add({video, words});
  EXPECT_TRUE(run({"--strict", "-w../work", video}) == 1 && error.find("The name seems to say") != error.npos) << error;
  EXPECT_EQ(run({"--set=companions=srt", "--classic", "--action=copy", "--to=../out", "-n", "--json", video}), 0);
  EXPECT_NE(out.find(R"("action":"copy","companions":[{"path":)"), std::string::npos) << out;
  write_file(folder / "plan", out);
  EXPECT_EQ(run({"--apply", "../plan", "--json", "-w../work"}), 0);
  EXPECT_NE(out.find(R"("companions":[{"path":)"), std::string::npos) << out;
  EXPECT_EQ(contents(there + ".mkv") + contents(there + ".en.srt"), video + words);
  EXPECT_TRUE(files->remove(there + ".en.srt") && files->remove(folder / ("in/" + words)));
  write_file(there + ".mkv", "the first");
  const auto taken = [&](const char* existing) {
    const int status = run({"--action=hardlink", "--to=../out", "--existing", existing, "-w../work", video});
    return std::to_string(status) + contents(there + ".mkv");
  };
  EXPECT_EQ(taken("ask") + taken("skip") + taken("keep-both"), "1the first0the first0the first");
  EXPECT_EQ(contents(there + " (2).mkv"), video);
  EXPECT_EQ(run({"--action=rename", "-w../work", video}), 0);
  EXPECT_EQ(contents(folder / ("in/" + stem + ".mkv")), video);
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
      {{"--action", "rename", "--to", ".", "x"},
       "--action rename leaves files in their folders, so --to is not for it" + usage},
      {{"--existing", "skip", "x"}, "--existing is for the rule that --to or --action makes" + usage},
      {{"--existing", "burn", "--to", ".", "x"},
       "--existing knows ask, keep-both, skip and better, not \"burn\"" + usage},
      {{"--set", "confirm=no", "x"}, "--set confirm wants a whole number, not \"no\"" + usage},
      {{"--set", "confirm", "x"}, "--set wants NAME=VALUE, not \"confirm\"" + usage},
      {{"--set", "speed=9", "x"}, "There is no setting \"speed\"" + usage},
      {{"--set", "confirm=32768", "x"}, "--set confirm wants a number from 0 to 32767" + usage},
      {{"--set", "confirm=-1", "x"}, "--set confirm wants a number from 0 to 32767" + usage},
      {{"--set", "types=a", "x"}, "--set types wants at least one extension of 3 characters, not \"a\"" + usage},
      {{"-w", "nowhere", "x"}, "The work folder \"nowhere\" does not exist"},
      {{"-w", folder / "work", "x"},
       "The folder " + cache + " holds \"photo.jpg\", which is no cache file, so it cannot be used for caches"}};
  for (const auto& [arguments, reason] : rows) {
    EXPECT_EQ(run(arguments), 2);
    EXPECT_EQ(out + "|" + error, "|quorvel-cli: " + reason + "\n");
  }
  if (!facts::windows) {  // there a quote may stay open
    EXPECT_TRUE(run({"--exec", "\"a", "x"}) == 2 && error.find("The command \"\"a\" cannot be read: ") != error.npos);
  }
  for (const char* const help : {"--help", "-h", "/?"}) {
    EXPECT_TRUE(run({help}) == 0 && out.starts_with("Usage: quorvel-cli")) << out;
  }
  EXPECT_TRUE(run({"--version"}) == 0 && out == "quorvel-cli 3.4.0\n") << out;
  if (facts::windows) return;  // there the settings are no file that could be damaged
  const std::string damaged = data_folder_of(folder / "home") + "/settings.ini";
  files->create_folder(data_folder_of(folder / "home"));
  write_file(damaged, "nonsense");
  EXPECT_TRUE(run({"x"}) == 1 && error.find("settings.ini") != std::string::npos) << error;
  EXPECT_EQ(contents(damaged), "nonsense");
  files->remove(damaged);
  write_file(folder / "elsewhere", "[Settings]\n");
  std::filesystem::create_symlink(folder / "elsewhere", damaged);
  EXPECT_TRUE(run({"x"}) == 1 && out.find("> Unable to store the settings: The settings file " + damaged +
                                          " is a link, and nothing is written through links\n") != out.npos)
      << out;
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
  EXPECT_TRUE(run({"--log", log, "--history"}) == 0 && contents(log).find(out.substr(0, out.find('\n'))) != out.npos);
  write_file(log, std::string(1'000'000, 'x'));
  EXPECT_TRUE(run({"--log", log, folder / "in"}) == 2 &&
              error == "quorvel-cli: \"" + log + "\" is there and is no log\n");
  write_file(log, first + std::string(1'000'000, 'x') + "\n");
  EXPECT_EQ(run({"--log", log, "--exec", "nonesuch", "-n", folder / "in/The.Harbour.Lights.S01E02-E03.mkv"}), 0);
  EXPECT_TRUE(contents(log + ".1").starts_with(first) && logged().starts_with("> Quorvel")) << "and no command is run";
  EXPECT_EQ(run({"--exec", "nonesuch", folder / "in/The.Harbour.Lights.S01E02-E03.mkv"}), 1);
  EXPECT_NE(error.find("The command \"nonesuch\" has not been run to its end: "), std::string::npos) << error;
}

}  // namespace
}  // namespace quorvel::testing
