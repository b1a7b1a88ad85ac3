#include "shell/command_line.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "text/case.h"

namespace quorvel {
namespace {

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

void take_argument(const std::string& argument, const Files& files, CommandLine& line) {
  if (const std::optional<std::string> path = existing_path(argument, files)) {
    line.paths.push_back(*path);
  } else if (argument == "/uninstall" || argument == "--uninstall") {
    line.uninstall = true;
  } else if (argument == "/startup" || argument == "--startup") {
    line.startup = true;
  } else if (!argument.empty()) {
    line.paths.push_back(absolute_path(path_of_address(argument).value_or(without_quotes(argument))));
  }
}

}  // namespace

CommandLine parse_command_line(const std::vector<std::string>& arguments, const Files& files, bool is_one_text) {
  CommandLine line;
  const std::string text = joined(arguments);
  if (is_one_text) {
    line.uninstall = text.find("/uninstall") != std::string::npos;
    line.startup = text.find("/startup") != std::string::npos;
    if (!text.empty()) line.paths = {absolute_path(without_quotes(text))};
  } else if (const std::optional<std::string> path = existing_path(text, files)) {
    line.paths = {*path};
  } else {
    for (const std::string& argument : arguments) take_argument(argument, files, line);
  }
  return line;
}

}  // namespace quorvel
