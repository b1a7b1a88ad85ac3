#include "cli/options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "naming/file_names.h"
#include "platform/commands.h"
#include "platform/native.h"
#include "queue/settings.h"
#include "rules/action.h"
#include "rules/presets.h"
#include "shell/version.h"
#include "text/characters.h"
#include "text/failure.h"
#include "text/numbers.h"

namespace quorvel::cli {
namespace {

constexpr int default_passes = 10;
constexpr const char* help_start = R"(Usage: quorvel-cli [options] PATH...
       quorvel-cli --read [--json] [NAME...|-]
       quorvel-cli --history [--json] [N]
       quorvel-cli --undo [--dry-run] [PASS]
       quorvel-cli --apply PLAN [--dry-run] [--json]
       quorvel-cli --watch [options] FOLDER...
Gives television episode files their right name and place. Each PATH is a file, or a folder whose files are taken.

  -v, --verbose         tell every step
  -n, --dry-run         tell what would become of each file, and change nothing
  -w, --work-dir DIR    keep rules, exceptions and caches in DIR
      --set NAME=VALUE  a setting for this run; may be given again. NAME is one of
)";
constexpr const char* help_end =
    R"(      --exact           read names with the reader and keep every character of the service's names, for this run
      --classic         do not, whatever the settings say
      --strict          what a person should look at fails: names that may mean something else, shows spelt otherwise
      --show ID         the show of all paths, by its number at TVmaze; with --exact
      --choose          ask which show is meant where none clearly fits, and remember it; with --exact
      --forget          forget the shows that were chosen for the names of these files; with --exact
      --to FOLDER       instead of your rules, one for all files: they go below FOLDER
      --preset NAME     with the folders and the names that a media server wants: jellyfin, plex or kodi
      --action ACTION   what is done with them: rename, move, copy, hardlink or symlink; with --to they are moved
                        unless this says else
      --existing WHAT   what is done with these where another file has the new name: skip, keep-both (with a number), or
                        better: keep the better one by resolution and source, and put the other into the trash
      --json            an object a line for each item that has ended, and one with a summary
      --exec COMMAND    run it after each file that has ended, without a shell. Its environment says what became of the
                        file: QUORVEL_STATE, _OLD_PATH, _NEW_PATH, _SHOW, _SEASON, _EPISODES, _TITLE and _REASON
      --exec-after COMMAND
                        run it after each pass, with QUORVEL_DONE, _FAILED, _CANCELLED and _RIGHT_ALREADY
      --log FILE        keep in FILE as well what is told, with the date; when it is full it becomes FILE.1
      --read            only tell what each NAME says of its show and episode; "-", and no NAME, are the lines of
                        standard input. Nothing is asked, looked up or changed; the files need not exist
      --apply PLAN      do what the file PLAN says, or for "-" standard input: what --dry-run --json has told, perhaps
                        edited. Files that have changed since, and names that are taken, are refused
      --watch           stay, and take the files that are in the folders and that come into them, each when nobody has
                        written to it for a while; until interrupted
      --history         tell what was done in the last N passes, 10 without a number
      --undo            take back what was done in the pass of that number, without one in the last pass
  -h, --help, /?        show this text
      --version         show the version

Exit status: 0 every path was taken and every file is done or was right already; 1 something was refused, failed or was
cancelled, a folder could not be read, or there was nothing to do; 2 wrong usage. --watch ends with 0 when it is interrupted.
)";

std::string help() {
  std::string text = help_start;
  const auto add = [&text](const auto& setting) {
    std::string name(setting.name);
    name.resize(12, ' ');
    text.append(24, ' ').append(name).append(setting.meaning).append("\n");
  };
  std::for_each(text_settings.begin(), text_settings.end(), add);
  std::for_each(number_settings.begin(), number_settings.end(), add);
  return text + help_end;
}

[[noreturn]] void refuse(const std::string& reason) {
  throw Failure(reason);
}

std::uint32_t setting_number(const std::string& name, const std::string& value) {
  constexpr int highest = std::numeric_limits<std::int16_t>::max();
  int number = -1;
  try {
    number = to_number(value);
  } catch (const Failure&) {
    refuse("--set " + name + " wants a whole number, not \"" + value + "\"");
  }
  if (number < 0 || number > highest) refuse("--set " + name + " wants a number from 0 to " + std::to_string(highest));
  return static_cast<std::uint32_t>(number);
}

void add_setting(Options& options, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) refuse("--set wants NAME=VALUE, not \"" + text + "\"");
  const std::string name = text.substr(0, equals), value = text.substr(equals + 1);
  const auto has_name = [&name](const auto& setting) { return setting.name == name; };
  const auto* const as_text = std::find_if(text_settings.begin(), text_settings.end(), has_name);
  if (as_text != text_settings.end()) {
    if (length(value) < as_text->min_length) {
      refuse("--set " + name + " wants at least one extension of " + std::to_string(as_text->min_length) +
             " characters, not \"" + value + "\"");
    }
    options.settings.emplace_back(name, value);
  } else if (std::any_of(number_settings.begin(), number_settings.end(), has_name)) {
    options.settings.emplace_back(name, setting_number(name, value));
  } else {
    refuse("There is no setting \"" + name + "\"");
  }
}

/// Above 0.
int whole_number(const std::string& text, const std::string& what) {
  const int number = leading_number(text);
  if (number <= 0 || std::to_string(number) != text) refuse(what + ", not \"" + text + "\"");
  return number;
}

void take_pass_number(Options& options) {
  if (options.history && options.undo) refuse("--history and --undo do not go together");
  if (options.paths.size() > 1) refuse("Only one number is wanted, not \"" + options.paths[1] + "\" as well");
  if (options.paths.empty()) return;
  const int number = whole_number(
      options.paths[0], options.undo ? "--undo wants the number of a pass" : "--history wants a number of passes");
  (options.undo ? options.pass : options.history) = number;
}

std::vector<std::string> command_words(const std::string& text) {
  std::vector<std::string> words;
  try {
    words = commands::words_of(text);
  } catch (const Failure& failure) {
    refuse("The command \"" + text + "\" cannot be read: " + failure.what());
  }
  if (words.empty()) refuse("A command is wanted, not \"" + text + "\"");
  return words;
}

/// What the user says of the one rule that a run is to have.
struct WantedRule {
  std::optional<std::string> folder, preset, action, existing;
};

/// Empty when nothing is said.
std::optional<AFilter> rule_of(const WantedRule& wanted) {
  if (!wanted.folder && !wanted.preset && !wanted.action) {
    if (wanted.existing) refuse("--existing is for the rule that --to or --action makes");
    return {};
  }
  const Preset* const preset = wanted.preset ? preset_named(*wanted.preset) : nullptr;
  if (wanted.preset && preset == nullptr) {
    refuse("--preset knows jellyfin, plex and kodi, not \"" + *wanted.preset + "\"");
  }
  const int action = wanted.action ? action_named(*wanted.action) : MoveAndRename;
  if (action == 0) refuse("--action knows rename, move, copy, hardlink and symlink, not \"" + *wanted.action + "\"");
  const std::string existing = wanted.existing.value_or("ask");
  if (existing != existing_word(existing_named(existing))) {
    refuse("--existing knows ask, keep-both, skip and better, not \"" + existing + "\"");
  }
  const std::string mask(preset != nullptr ? preset->mask : default_mask);
  if (action == Rename) {
    if (wanted.folder) refuse("--action rename leaves files in their folders, so --to is not for it");
    return rule_for_all(action, "", mask, existing_named(existing));
  }
  if (!wanted.folder || wanted.folder->empty()) refuse("--to FOLDER is wanted as well: where the files go");
  std::string folder = with_separator(absolute_path(*wanted.folder));
  if (preset != nullptr) folder += preset->folder;
  return rule_for_all(action, folder, mask, existing_named(existing));
}

/// What the user has given, option by option.
struct Given {
  Options options;
  WantedRule rule;
  bool verbose = false, help = false, version = false;
};

struct KnownOption {
  const char* name;
  int letter;  // 0 without one
  int has_value;
  void (*take)(Given& given, const char* value);
};

void set_number(Given& given, const char* name, std::uint32_t number) {
  given.options.settings.emplace_back(name, number);
}

constexpr auto known_options = std::to_array<KnownOption>({
    {"verbose", 'v', no_argument, [](Given& given, const char*) { given.verbose = true; }},
    {"dry-run", 'n', no_argument, [](Given& given, const char*) { given.options.dry_run = true; }},
    {"work-dir", 'w', required_argument, [](Given& given, const char* value) { given.options.work_dir = value; }},
    {"set", 0, required_argument, [](Given& given, const char* value) { add_setting(given.options, value); }},
    {"read", 0, no_argument, [](Given& given, const char*) { given.options.read = true; }},
    {"json", 0, no_argument, [](Given& given, const char*) { given.options.json = true; }},
    {"exact", 0, no_argument, [](Given& given, const char*) { set_number(given, "exact", 1); }},
    {"classic", 0, no_argument, [](Given& given, const char*) { set_number(given, "exact", 0); }},
    {"strict", 0, no_argument, [](Given& given, const char*) { set_number(given, "strict", 1); }},
    {"show", 0, required_argument,
     [](Given& given, const char* value) {
       given.options.show_id = whole_number(value, "--show wants the number of a show");
       set_number(given, "exact", 1);
     }},
    {"choose", 0, no_argument,
     [](Given& given, const char*) {
       given.options.choose = true;
       set_number(given, "exact", 1);
     }},
    {"forget", 0, no_argument,
     [](Given& given, const char*) {
       given.options.forget = true;
       set_number(given, "exact", 1);
     }},
    {"to", 0, required_argument, [](Given& given, const char* value) { given.rule.folder = value; }},
    {"preset", 0, required_argument, [](Given& given, const char* value) { given.rule.preset = value; }},
    {"action", 0, required_argument, [](Given& given, const char* value) { given.rule.action = value; }},
    {"existing", 0, required_argument, [](Given& given, const char* value) { given.rule.existing = value; }},
    {"apply", 0, required_argument, [](Given& given, const char* value) { given.options.plan = value; }},
    {"history", 0, no_argument, [](Given& given, const char*) { given.options.history = default_passes; }},
    {"undo", 0, no_argument, [](Given& given, const char*) { given.options.undo = true; }},
    {"watch", 0, no_argument, [](Given& given, const char*) { given.options.watch = true; }},
    {"exec", 0, required_argument,
     [](Given& given, const char* value) { given.options.after_item = command_words(value); }},
    {"exec-after", 0, required_argument,
     [](Given& given, const char* value) { given.options.after_pass = command_words(value); }},
    {"log", 0, required_argument, [](Given& given, const char* value) { given.options.log = value; }},
    {"help", 'h', no_argument, [](Given& given, const char*) { given.help = true; }},
    {"version", 0, no_argument, [](Given& given, const char*) { given.version = true; }},
});

/// Takes the options up to the first that ends the program. What is no option stands from `optind` on afterwards.
Given given_in(int argc, char** argv) {
  constexpr int words_only = 256;  // beyond all letters; and then the number of the option
  std::string letters = ":";       // so that a value that lacks is told from an unknown option
  std::vector<option> words;
  for (const auto& [name, letter, has_value, take] : known_options) {
    words.push_back({name, has_value, nullptr, words_only + static_cast<int>(words.size())});
    if (letter != 0) letters.append(1, static_cast<char>(letter)).append(has_value == required_argument ? ":" : "");
  }
  words.push_back({});
  Given given;
  opterr = 0;
  while (!given.help && !given.version) {
    const int found = getopt_long(argc, argv, letters.c_str(), words.data(), nullptr);
    if (found == -1) break;
    const std::string text = argv[optind - 1];
    if (found == ':') refuse("The option " + text + " lacks its value");
    if (found == '?') {
      refuse(optopt > 0 && optopt < words_only ? std::string("There is no option -") + static_cast<char>(optopt)
                                               : "There is no option " + text);
    }
    const auto* const by_letter = std::ranges::find(known_options, found, &KnownOption::letter);
    const KnownOption& each =
        by_letter != known_options.end() ? *by_letter : known_options.at(static_cast<std::size_t>(found - words_only));
    each.take(given, optarg);
  }
  return given;
}

std::variant<Options, Ending> parse(int argc, char** argv) {
  Given given = given_in(argc, argv);
  Options& options = given.options;
  if (given.help) return Ending{0, help()};
  if (given.version) return Ending{0, std::string("quorvel-cli ") + full_version + "\n"};
  options.rule = rule_of(given.rule);
  if (given.verbose) set_number(given, "logging", static_cast<std::uint32_t>(LogLevel::Verbose));
  options.paths.assign(argv + optind, argv + argc);
  if (options.watch && (options.dry_run || options.choose || options.forget || options.read || options.plan ||
                        options.history || options.undo)) {
    refuse("--watch goes with none of --dry-run, --choose, --forget, --read, --apply, --history and --undo");
  }
  if (options.plan) {
    if (!options.paths.empty()) refuse("--apply takes its files from the plan, not \"" + options.paths[0] + "\"");
    return options;
  }
  if (options.history || options.undo) {
    take_pass_number(options);
    return options;
  }
  if (options.read && options.paths.empty()) options.paths = {"-"};
  if (options.paths.empty()) refuse("No path is given");
  if (argc == 2 && options.paths[0] == "/?") return Ending{0, help()};
  return options;
}

}  // namespace

std::variant<Options, Ending> parse_options(int argc, char** argv) {
  try {
    return parse(argc, argv);
  } catch (const Failure& failure) {
    return Ending{2, std::string("quorvel-cli: ") + failure.what() + "\nTry quorvel-cli --help.\n"};
  }
}

}  // namespace quorvel::cli
