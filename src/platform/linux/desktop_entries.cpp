#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "platform/linux/folders.h"
#include "platform/system.h"
#include "text/case.h"
#include "text/cut.h"

namespace quorvel {
namespace {

constexpr const char* entry_group = "Desktop Entry";
constexpr const char* folders_and_videos = "DIR";

using Names = std::set<std::string>;

/// Those that the type database below `folder` lists, if there is one.
void add_video_types(const char* folder, Names& types) {
  g_autofree char* list = nullptr;
  if (g_file_get_contents((std::string(folder) + "/mime/types").c_str(), &list, nullptr, nullptr) == FALSE) return;
  for (const std::string_view type : split(list, "\n")) {
    if (type.starts_with("video/")) types.emplace(type);
  }
}

/// The types that the system's database knows for the extensions. It knows none for some, and those go without.
Names types_of(const Names& extensions) {
  Names types;
  for (const std::string& extension : extensions) {
    g_autofree char* type = g_content_type_guess(("x." + extension).c_str(), nullptr, 0, nullptr);
    if (g_content_type_is_unknown(type) == FALSE) types.insert(type);
  }
  if (!extensions.contains(folders_and_videos)) return types;
  types.insert("inode/directory");
  add_video_types(g_get_user_data_dir(), types);
  for (const char* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
    add_video_types(*folder, types);
  }
  return types;
}

/// A word of an Exec value, which knows quotes of its own and "%" for its fields.
std::string exec_word(const std::string& text) {
  std::string word = "\"";
  for (const char character : text) {
    if (std::string_view("\"`$\\").find(character) != std::string_view::npos) word += '\\';
    if (character == '%') word += '%';
    word += character;
  }
  return word + "\"";
}

std::string exec_value(const std::string& program) {
  const std::string value = exec_word(program) + " %F";
  // As the first word a "=" is not allowed, and GLib looks for a program with both of the "%" that stand for one.
  return program.find_first_of("%=") == std::string::npos ? value
                                                          : "sh -c " + exec_word("exec \"$0\" \"$@\"") + " " + value;
}

class KeyFile {
 public:
  KeyFile() = default;
  ~KeyFile() { g_key_file_free(file_); }
  KeyFile(const KeyFile&) = delete;
  KeyFile& operator=(const KeyFile&) = delete;

  void set(const char* group, const char* key, const std::string& value) {
    g_key_file_set_string(file_, group, key, value.c_str());
  }
  void set_list(const char* group, const char* key, const Names& values) {
    std::string list;
    for (const std::string& value : values) list += value + ";";
    set(group, key, list);
  }
  std::string text() const {
    g_autofree char* bytes = g_key_file_to_data(file_, nullptr, nullptr);
    return bytes;
  }

 private:
  GKeyFile* const file_ = g_key_file_new();
};

/// Whether an entry was installed with the program, which is the one to be seen then.
bool entry_is_installed() {
  g_autoptr(GKeyFile) file = g_key_file_new();
  return g_key_file_load_from_data_dirs(file, "applications/quorvel.desktop", nullptr, G_KEY_FILE_NONE, nullptr) !=
         FALSE;
}

/// Without any types: who handles a type may become what a double click starts, and here that would rename the file.
std::string desktop_entry(const std::string& program, const Names&) {
  KeyFile file;
  file.set(entry_group, "Type", "Application");
  file.set(entry_group, "Name", "Quorvel");
  file.set(entry_group, "Comment", "Rename television episode files");
  file.set(entry_group, "Icon", "quorvel");
  file.set(entry_group, "Exec", exec_value(program));
  file.set(entry_group, "NoDisplay", entry_is_installed() ? "true" : "false");
  return file.text();
}

std::string service_menu(const std::string& program, const Names& extensions) {
  static constexpr const char* action_group = "Desktop Action quorvel";
  KeyFile file;
  file.set(entry_group, "Type", "Service");
  file.set(entry_group, "X-KDE-ServiceTypes", "KonqPopupMenu/Plugin");
  file.set_list(entry_group, "MimeType", types_of(extensions));
  file.set(entry_group, "Actions", "quorvel;");
  file.set(action_group, "Name", "Quorvel");
  file.set(action_group, "Icon", "quorvel");
  file.set(action_group, "Exec", exec_value(program));
  return file.text();
}

/// Nautilus shows its scripts for files of all types.
std::string script(const std::string& program, const Names&) {
  g_autofree char* word = g_shell_quote(program.c_str());
  return std::string("#!/bin/sh\nexec ") + word + " \"$@\"\n";
}

/// Links are never ours: what they lead to has been put in order by somebody.
bool is_plain_file(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

bool is_missing(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

void make_executable(const std::string& path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) return;
  // Whoever may read it may run it.
  chmod(path.c_str(), (found.st_mode & 0777) | ((found.st_mode & 0444) >> 2));
}

/// Upwards from `folder`, at most `count`.
void remove_empty_folders(std::string folder, int count) {
  for (; count > 0 && (rmdir(folder.c_str()) == 0 || errno == ENOENT); --count) folder = parent_folder(folder);
}

struct Target {
  const char* path;  // below the folder for data
  bool is_executable;
  std::string (*body)(const std::string& program, const Names& extensions);
};

constexpr Target targets[] = {
    {"/applications/quorvel-open.desktop", false, desktop_entry},
    {"/kio/servicemenus/quorvel.desktop", true, service_menu},  // ignored when not executable
    {"/nautilus/scripts/Quorvel", true, script},
};

constexpr std::string_view mark =
    "# Quorvel made this file and removes it, but keeps its hands off once it was edited: ";

/// Where the line stands, or is to stand.
std::size_t line_start(const std::string& text) {
  if (!text.starts_with("#!")) return 0;
  const std::size_t end = text.find('\n');
  return end == std::string::npos ? text.size() : end + 1;
}

std::string checksum(const std::string& body, const std::string& note) {
  const std::string all = note + '\n' + body;
  g_autofree char* sum =
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(all.data()), all.size());
  return sum;
}

/// `body` with a comment line that tells later whether the program has written just this text. It holds `note`, which
/// is free of line breaks. The line comes first, or after a "#!" line.
std::string signed_text(const std::string& body, const std::string& note) {
  std::string text = body;
  return text.insert(line_start(body), std::string(mark) + checksum(body, note) + ' ' + note + '\n');
}

/// The note of a signed text. Empty for any other text, and when a single byte has been changed since.
std::optional<std::string> note_in(const std::string& text) {
  const std::size_t start = line_start(text);
  const std::size_t end = text.find('\n', start);
  if (end == std::string::npos || text.compare(start, mark.size(), mark) != 0) return {};
  const std::size_t blank = text.find(' ', start + mark.size());
  if (blank >= end) return {};
  std::string note = text.substr(blank + 1, end - blank - 1);
  const std::string body = text.substr(0, start) + text.substr(end + 1);
  if (signed_text(body, note) != text) return {};
  return note;
}

/// What a file says of itself: for which extensions it is, and how many of the folders above it were made for it.
struct State {
  Names extensions;
  int made_folders = 0;

  static State from_note(const std::string& note) {
    State state;
    std::from_chars(note.data(), note.data() + note.size(), state.made_folders);
    const std::vector<std::string_view> words = split(note, " ");
    for (std::size_t i = 1; i < words.size(); ++i) {
      g_autofree char* extension = g_uri_unescape_string(std::string(words[i]).c_str(), nullptr);
      if (extension != nullptr) state.extensions.insert(extension);
    }
    return state;
  }

  std::string note() const {
    std::string text = std::to_string(made_folders);
    for (const std::string& extension : extensions) {
      g_autofree char* word = g_uri_escape_string(extension.c_str(), nullptr, FALSE);
      text += std::string(" ") + word;
    }
    return text;
  }
};

/// Three files below the folder for programs' data: a desktop entry by which "Open With" offers Quorvel among all
/// programs, a service menu for Dolphin and a script for Nautilus. Thunar keeps its own actions in one file that
/// belongs to the user, so there the desktop entry must do. It is not shown among the programs where another was
/// installed.
///
/// Each file tells by itself for which extensions it was made. One that the program has not written, or that was
/// edited since, is neither changed nor removed. The last extension takes the files with it, and the folders that
/// were made for them, as far as they are empty.
class DesktopEntries : public ContextMenu {
 public:
  /// `data_folder` is that of all programs.
  DesktopEntries(Files& files, std::string data_folder, std::string program)
      : files_(files), data_folder_(std::move(data_folder)), program_(std::move(program)) {}

  void install(const std::string& extension) override {
    const bool usable = g_utf8_validate_len(program_.data(), program_.size(), nullptr) != FALSE;
    if (extension.empty() || !usable || files_.kind(program_) != Files::Kind::File) return;
    for (const Target& target : targets) change(target, extension, true);
  }

  void remove(const std::string& extension) override {
    // Backwards, so that a folder made for several goes with the one it was made for.
    for (auto target = std::rbegin(targets); target != std::rend(targets); ++target) change(*target, extension, false);
  }

 private:
  void change(const Target& target, const std::string& given, bool add) {
    const std::string path = data_folder_ + target.path;
    const std::string extension = given == folders_and_videos ? given : lower_case(given);
    State state;
    std::string old_text;
    if (!is_missing(path)) {
      old_text = is_plain_file(path) ? files_.read(path).value_or("") : "";
      const std::optional<std::string> note = note_in(old_text);
      if (!note) return;
      state = State::from_note(*note);
    } else if (!add) {
      return;
    }
    add ? (void)state.extensions.insert(extension) : (void)state.extensions.erase(extension);
    if (state.extensions.empty()) return remove_file(path, state.made_folders);
    write(target, path, state);
  }

  void write(const Target& target, const std::string& path, State& state) {
    int missing = 0;
    for (std::string folder = parent_folder(path); is_missing(folder); folder = parent_folder(folder)) ++missing;
    state.made_folders += missing;
    const std::string text = signed_text(target.body(program_, state.extensions), state.note());
    if (files_.read(path) == text) return;
    if (!create_folders(files_, parent_folder(path)) || !files_.replace(path, text)) {
      remove_empty_folders(parent_folder(path), missing);
    } else if (target.is_executable) {
      make_executable(path);
    }
  }

  void remove_file(const std::string& path, int made_folders) {
    if (files_.remove(path)) remove_empty_folders(parent_folder(path), made_folders);
  }

  Files& files_;
  const std::string data_folder_;
  const std::string program_;
};

}  // namespace

std::unique_ptr<ContextMenu> system_context_menu(Files& files, const std::string& program) {
  return std::make_unique<DesktopEntries>(files, standard_folders::application_data(), program);
}

}  // namespace quorvel
