#include "cli/options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

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

std::variant<Options, Ending> parse(int argc, char** argv) {
  enum LongOnly {
    Set = 256,
    Read,
    Json,
    Exact,
    Classic,
    Strict,
    ShowId,
    Choose,
    Forget,
    To,
    PresetName,
    ActionName,
    ExistingName,
    Apply,
    History,
    Undo,
    Watch,
    Exec,
    ExecAfter,
    Log,
    Version
  };
  static constexpr option known[] = {{"verbose", no_argument, nullptr, 'v'},
                                     {"dry-run", no_argument, nullptr, 'n'},
                                     {"work-dir", required_argument, nullptr, 'w'},
                                     {"set", required_argument, nullptr, Set},
                                     {"read", no_argument, nullptr, Read},
                                     {"json", no_argument, nullptr, Json},
                                     {"exact", no_argument, nullptr, Exact},
                                     {"classic", no_argument, nullptr, Classic},
                                     {"strict", no_argument, nullptr, Strict},
                                     {"show", required_argument, nullptr, ShowId},
                                     {"choose", no_argument, nullptr, Choose},
                                     {"forget", no_argument, nullptr, Forget},
                                     {"to", required_argument, nullptr, To},
                                     {"preset", required_argument, nullptr, PresetName},
                                     {"action", required_argument, nullptr, ActionName},
                                     {"existing", required_argument, nullptr, ExistingName},
                                     {"apply", required_argument, nullptr, Apply},
                                     {"history", no_argument, nullptr, History},
                                     {"undo", no_argument, nullptr, Undo},
                                     {"watch", no_argument, nullptr, Watch},
                                     {"exec", required_argument, nullptr, Exec},
                                     {"exec-after", required_argument, nullptr, ExecAfter},
                                     {"log", required_argument, nullptr, Log},
                                     {"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, Version},
                                     {nullptr, 0, nullptr, 0}};
  Options options;
  WantedRule wanted;
  bool verbose = false;
  opterr = 0;
  for (int found; (found = getopt_long(argc, argv, ":vnw:h", known, nullptr)) != -1;) {
    const std::string given = argv[optind - 1];
    switch (found) {
      case 'v':
        verbose = true;
        break;
      case 'n':
        options.dry_run = true;
        break;
      case 'w':
        options.work_dir = optarg;
        break;
      case Set:
        add_setting(options, optarg);
        break;
      case Read:
        options.read = true;
        break;
      case Json:
        options.json = true;
        break;
      case Exact:
      case Classic:
        options.settings.emplace_back("exact", found == Exact ? 1U : 0U);
        break;
      case Strict:
        options.settings.emplace_back("strict", 1U);
        break;
      case ShowId:
        options.show_id = whole_number(optarg, "--show wants the number of a show");
        options.settings.emplace_back("exact", 1U);
        break;
      case Choose:
      case Forget:
        (found == Choose ? options.choose : options.forget) = true;
        options.settings.emplace_back("exact", 1U);
        break;
      case To:
        wanted.folder = optarg;
        break;
      case PresetName:
        wanted.preset = optarg;
        break;
      case ActionName:
        wanted.action = optarg;
        break;
      case ExistingName:
        wanted.existing = optarg;
        break;
      case Apply:
        options.plan = optarg;
        break;
      case History:
        options.history = default_passes;
        break;
      case Undo:
        options.undo = true;
        break;
      case Exec:
      case ExecAfter:
        (found == Exec ? options.after_item : options.after_pass) = command_words(optarg);
        break;
      case Log:
        options.log = optarg;
        break;
      case Watch:
        options.watch = true;
        break;
      case 'h':
        return Ending{0, help()};
      case Version:
        return Ending{0, std::string("quorvel-cli ") + full_version + "\n"};
      case ':':
        refuse("The option " + given + " lacks its value");
      default:
        refuse(optopt > 0 && optopt < Set ? std::string("There is no option -") + static_cast<char>(optopt)
                                          : "There is no option " + given);
    }
  }
  options.rule = rule_of(wanted);
  if (verbose) options.settings.emplace_back("logging", static_cast<std::uint32_t>(LogLevel::Verbose));
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
