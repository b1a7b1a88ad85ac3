#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Plain values and functions of the system that the core needs. One definition per system, chosen by the build.
namespace quorvel::native {

/// What stands between the components of a path.
extern const char separator;

/// The system's name as error texts give it.
extern const std::string_view system_name;

/// What users call the place for deleted files.
extern const std::string_view trash_name;

/// What the code of a failed file operation means, in the system's own words.
std::string error_words(int code);

/// Why a link could not be made, in plain words; empty for codes whose own words are plain enough.
std::string_view link_trouble(int code);

/// The code a file operation answers when another program has the file open for writing.
extern const int being_written_code;

/// The code a file operation answers when a copy that was read back is not what its source is.
extern const int copy_differs_code;

/// The codes it answers when something has the new name, when there is no folder for it, and when it is too long.
extern const int name_taken_code, no_folder_code, name_too_long_code;

/// Whether no folder of this system can hold an entry of this name.
bool is_too_long(const std::string& name);

/// The code a file operation answers when a file was to go to the trash and its file system has none.
extern const int no_trash_code;

/// Whether the command line is one text, in which switches are looked for anywhere and which may be one path. Else each
/// argument is a switch or a path of its own.
extern const bool command_line_is_one_text;

/// The arguments in such a text, by the system's rules for blanks and quotes.
std::vector<std::string> split_command_line(const std::string& text);

/// What fits a pattern of file names, in natural order; nothing where the shell has replaced patterns already,
/// so that a name may hold the signs.
std::vector<std::string> files_of_pattern(const std::string& pattern);

/// The user's home folder, without a separator at its end; empty where there is none.
std::string home_folder();

/// Where the help is, from the program's folder on.
extern const std::string_view help_file;

/// Whether uninstalling also deletes a "filters.dat" in the current folder, which is the program's own where programs
/// are started in their folder.
extern const bool uninstall_clears_current_folder;

}  // namespace quorvel::native

namespace quorvel {

/// `path` from the root on, against the current folder, without "." and doubled separators. A ".." is followed as the
/// system would, through links. Nothing else is looked at. An empty path stays as it is, and so does, on Windows, a
/// drive alone ("C:").
std::string absolute_path(const std::string& path);

}  // namespace quorvel
