#include "platform/arguments.h"

#include <windows.h>

#include <shellapi.h>

#include <string_view>

#include "platform/windows/wide.h"

namespace quorvel {
namespace {

constexpr std::wstring_view blanks = L" \t";

/// The program's name ends at its closing quote, or at a blank where it has none.
std::wstring_view without_program(std::wstring_view line) {
  bool quoted = false;
  std::size_t at = 0;
  for (; at < line.size() && (quoted || blanks.find(line[at]) == std::wstring_view::npos); ++at) {
    if (line[at] == L'"') quoted = !quoted;
  }
  line.remove_prefix(at);
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  return line.substr(0, line.find_last_not_of(blanks) + 1);
}

}  // namespace

std::vector<std::string> separate_arguments(int, char**) {
  int count = 0;
  wchar_t** const given = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(to_utf8(given[i]));
  LocalFree(given);
  return arguments;
}

std::vector<std::string> command_line_arguments(int, char**) {
  const std::string text = to_utf8(without_program(GetCommandLineW()));
  return text.empty() ? std::vector<std::string>() : std::vector{text};
}

}  // namespace quorvel
