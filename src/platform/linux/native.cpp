#include "platform/native.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace quorvel::native {

const char separator = '/';
const std::string_view system_name = "Linux";
const std::string_view trash_name = "trash";
const int no_trash_code = ENOTSUP;
const int being_written_code = ETXTBSY;
const int copy_differs_code = EBADMSG;
const int name_taken_code = EEXIST, no_folder_code = ENOENT, name_too_long_code = ENAMETOOLONG;

// Of programs in "bin", installed or just built.
const std::string_view help_file = "../share/doc/quorvel/help/index.html";

// A path may hold any text here, so a folder called "uninstall" must not be taken for the switch.
const bool command_line_is_one_text = false;

// Here the current folder is wherever the user stands, and a "filters.dat" in it is somebody else's.
const bool uninstall_clears_current_folder = false;

/// The environment's, or else as the password database has it; the root folder for users it does not know, as
/// containers have them.
std::string home_folder() {
  const char* const named = std::getenv("HOME");
  std::string folder = named != nullptr && *named == '/' ? named : "";
  if (folder.empty()) {
    std::vector<char> texts(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) == ERANGE) texts.resize(texts.size() * 2);
    folder = found != nullptr ? found->pw_dir : "";
  }
  folder.erase(folder.find_last_not_of('/') + 1);
  return folder;
}

bool is_too_long(const std::string& name) {
  return name.size() > NAME_MAX;
}

std::string_view link_trouble(int code) {
  switch (code) {
    case EXDEV:
      return "A hard link cannot lead to another file system";
    case EPERM:
      return "The file system has no such links, or the file belongs to another user";
    default:
      return {};
  }
}

std::string error_words(int code) {
  return std::generic_category().message(code);
}

std::vector<std::string> split_command_line(const std::string& text) {
  return {text};
}

std::vector<std::string> files_of_pattern(const std::string&) {
  return {};
}

}  // namespace quorvel::native

namespace quorvel {

std::string absolute_path(const std::string& path) {
  namespace fs = std::filesystem;
  if (path.empty()) return path;
  std::error_code error;
  fs::path absolute = "/";
  for (const fs::path& component : path.front() == '/' ? fs::path(path) : fs::current_path(error) / path) {
    if (component.empty() || component == "." || component == "/") continue;
    absolute /= component;
    if (component != "..") continue;
    const fs::path real = fs::canonical(absolute, error);
    absolute = error ? absolute.lexically_normal() : real;
  }
  return absolute.string();
}

}  // namespace quorvel
