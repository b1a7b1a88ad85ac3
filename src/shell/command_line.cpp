#include "shell/command_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "shell/version.h"
#include "text/case.h"

namespace quorvel {
namespace {

// Without columns, for it is also shown in a message.
constexpr const char* help = R"(Usage: quorvel [/startup] [--exact | --classic] [PATH...]

Opens the window that gives television episode files their right name and place.
Each PATH is a file, or a folder whose files are taken.
A window that is open already is handed them.

/startup, --startup: start hidden, with an icon in the tray
--exact, --classic: with exact names until it ends, or without, whatever the preferences say
/uninstall, --uninstall: remove all that is kept for you, and end
/?, -h, --help: show this text
--version: show the version

quorvel-cli does the same work in a terminal.
)";

std::string joined(const std::vector<std::string>& arguments) {
  std::string text;
  for (const std::string& argument : arguments) {
    if (argument.empty()) continue;
    if (!text.empty()) text += ' ';
    text += argument;
  }
  return text;
}

std::string without_quotes(const std::string& text) {
  const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// `text` as a path when something exists there, first as it stands and then without the quotes around it.
std::optional<std::string> existing_path(const std::string& text, const Files& files) {
  if (files.exists(text)) return absolute_path(text);
  const std::string bare = without_quotes(text);
  if (files.exists(bare)) return absolute_path(bare);
  return {};
}

std::string percent_decoded(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    unsigned char byte = 0;
    const char* const digits = text.data() + 1;
    if (text.front() == '%' && text.size() >= 3 && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      bytes += static_cast<char>(byte);
      text.remove_prefix(3);
    } else {
      bytes += text.front();
      text.remove_prefix(1);
    }
  }
  return bytes;
}

/// The path that a "file:" address of this machine names; empty for any other text.
std::optional<std::string> path_of_address(std::string_view text) {
  static constexpr std::string_view scheme = "file:";
  if (lower_case(text.substr(0, scheme.size())) != scheme) return {};
  text.remove_prefix(scheme.size());
  for (const std::string_view host : {"//localhost/", "///"}) {
    if (!text.starts_with(host)) continue;
    text.remove_prefix(host.size() - 1);
    break;
  }
  if (!text.starts_with('/') || text.starts_with("//")) return {};
  std::string path = percent_decoded(text);
  if (path.find('\0') != std::string::npos) return {};
  return path;
}

struct Switch {
  std::array<std::string_view, 3> names;
  bool CommandLine::*member;
};

constexpr auto switches = std::to_array<Switch>({{{"/uninstall", "--uninstall"}, &CommandLine::uninstall},
                                                 {{"/startup", "--startup"}, &CommandLine::startup},
                                                 {{"--exact"}, &CommandLine::exact},
                                                 {{"--classic"}, &CommandLine::classic},
                                                 {{"/?", "--help", "-h"}, &CommandLine::help},
                                                 {{"--version"}, &CommandLine::version}});

bool take_switch(const std::string& argument, CommandLine& line) {
  for (const Switch& each : switches) {
    if (argument.empty() || std::ranges::find(each.names, argument) == each.names.end()) continue;
    line.*each.member = true;
    return true;
  }
  return false;
}

/// False for what is no switch and names nothing that exists, although it is taken for a path.
bool take_argument(const std::string& argument, const Files& files, bool is_one_text, CommandLine& line) {
  const std::optional<std::string> path = existing_path(argument, files);
  if ((is_one_text || !path) && take_switch(argument, line)) return true;
  if (path) return line.paths.push_back(*path), true;
  if (argument.empty()) return true;
  const std::vector<std::string> fitting = native::files_of_pattern(argument);
  for (const std::string& each : fitting) line.paths.push_back(absolute_path(each));
  if (!fitting.empty()) return true;
  line.paths.push_back(absolute_path(path_of_address(argument).value_or(without_quotes(argument))));
  return false;
}

}  // namespace

CommandLine parse_command_line(const std::vector<std::string>& arguments, const Files& files, bool is_one_text) {
  CommandLine line;
  const std::string text = joined(arguments);
  if (is_one_text && take_switch(text, line)) return line;
  if (const std::optional<std::string> path = existing_path(text, files)) {
    line.paths = {*path};
    return line;
  }
  if (is_one_text) {
    line.uninstall = text.find("/uninstall") != std::string::npos;
    line.startup = text.find("/startup") != std::string::npos;
  }
  bool all_known = true;
  for (const std::string& argument : is_one_text ? native::split_command_line(text) : arguments) {
    all_known = take_argument(argument, files, is_one_text, line) && all_known;
  }
  if (is_one_text && !all_known && text.find('"') == std::string::npos) line.paths = {absolute_path(text)};
  return line;
}

std::optional<std::string> answer_to(const CommandLine& line) {
  if (line.help) return help;
  if (line.version) return std::string("quorvel ") + full_version + "\n";
  return {};
}

}  // namespace quorvel
