#include "naming/file_names.h"

#include <algorithm>

#include "text/case.h"
#include "text/failure.h"

namespace quorvel {
namespace {

std::string_view after_last(std::string_view text, char separator) {
  return text.substr(text.rfind(separator) + 1);
}

}  // namespace

std::string getshowname(std::string_view text) {
  return lower_case(after_last(text, '/'));
}

std::string getextension(std::string_view name) {
  return lower_case(after_last(name, '.'));
}

std::string remextension(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) throw Failure("\"" + std::string(name) + "\" has no extension");
  return std::string(name.substr(0, dot));
}

std::string getfname(std::string_view path, char separator) {
  return std::string(after_last(path, separator));
}

std::string getpath(std::string_view path, int levels, char separator) {
  for (; levels >= 0; --levels) {
    const std::size_t last = path.rfind(separator);
    if (last == std::string_view::npos) return {};
    path = path.substr(0, last);
  }
  return std::string(path) + separator;
}

std::string with_native_separators(std::string path, char separator) {
  if (separator == '\\') std::ranges::replace(path, '/', separator);
  return path;
}

bool is_full_path(std::string_view folder, char separator) {
  const auto is_separator = [&](std::size_t at) {
    return folder.size() > at && (folder[at] == separator || folder[at] == '/');
  };
  const bool has_drive = separator == '\\' && folder.size() > 1 && folder[1] == ':' && is_separator(2);
  return is_separator(0) || has_drive || folder == "~" || (folder.starts_with('~') && is_separator(1));
}

std::string with_home(const std::string& folder) {
  return folder.starts_with('~') && is_full_path(folder) ? native::home_folder() + folder.substr(1) : folder;
}

std::string with_separator(std::string path, char separator) {
  if (!path.ends_with(separator)) path += separator;
  return path;
}

}  // namespace quorvel
