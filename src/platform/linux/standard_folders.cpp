#include "platform/linux/standard_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "platform/linux/folders.h"

namespace quorvel::standard_folders {
namespace {

/// An absolute path from the environment, without the separators at its end.
std::optional<std::string> folder_from(const char* variable) {
  const char* const value = std::getenv(variable);
  if (value == nullptr || *value != '/') return {};
  std::string folder = value;
  folder.erase(folder.find_last_not_of('/') + 1);
  return folder;
}

/// As the password database has it; the root folder for users it does not know, as containers have them.
std::string home_of_user() {
  std::vector<char> texts(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) == ERANGE) texts.resize(texts.size() * 2);
  return found != nullptr ? found->pw_dir : "";
}

std::string home() {
  const std::optional<std::string> named = folder_from("HOME");
  return named ? *named : home_of_user();
}

}  // namespace

std::string settings_file() {
  return folder_from("XDG_CONFIG_HOME").value_or(home() + "/.config") + "/Quorvel/settings.ini";
}

std::string application_data() {
  return folder_from("XDG_DATA_HOME").value_or(home() + "/.local/share");
}

std::optional<std::string> runtime() {
  return folder_from("XDG_RUNTIME_DIR");
}

std::string program_file() {
  std::error_code failed;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
  return failed ? std::string() : program.native();
}

std::string program() {
  const std::string file = program_file();
  return file.empty() ? file : parent_folder(file);
}

}  // namespace quorvel::standard_folders
