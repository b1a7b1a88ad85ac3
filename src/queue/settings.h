#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace quorvel {

/// The user's preferences, as start-up has read them.
struct Settings {
  enum ContextState { NotInstalled = 0, TurnedOff = 1, Installed = 2 };

  std::string types = "avi;mkv;mpg;mp4";  // accepted extensions without dots, separated by ";"
  std::string companions;                 // what goes with a file that carries its name: endings as in types
  std::string leftovers = "Thumbs.db;.DS_Store;desktop.ini";  // files that make no folder worth keeping, as wildcards
  ContextState context = NotInstalled;                        // the entries in the file manager's context menu
  bool confirm = false;                                       // ask before each file operation
  bool nocache = false;
  bool noutf8 = false;
  LogLevel logging = LogLevel::Normal;
  bool autoclose = false;  // end the program when the queue has been processed
  bool exact = false;      // identify episodes in the exact way
  bool strict = false;     // what the classic way and the reader read differently fails
  bool review = false;     // what a pass would do is looked at before it is done
  bool tidy = false;       // folders that the last file was moved out of go to the trash
  bool verify = false;     // read back what is moved to another drive before its source goes
  int history = 730;       // days for which what was done to files is remembered
  std::string watched;     // folders whose new files the window takes, a line each
  bool watching = false;   // whether it does
  int settle = 30;         // seconds for which a file in a watched folder must stay as it is
  std::string work_dir;    // where rule files and caches live; ends in a separator; not among the stored values
};

/// A preference that is stored as a text. `name` is that of the stored value, and of the command line.
struct TextSetting {
  std::string_view name;
  std::string Settings::*member;
  std::size_t min_length;  // characters; anything shorter counts as missing
  std::string_view meaning;
};

/// A preference that is stored as a number and shown as a check box, or one that is a number itself: any other number
/// then stays what it is.
struct NumberSetting {
  enum Others { MeanOff, MeanOn, Stay };

  std::string_view name;
  int (*get)(const Settings&);
  void (*set)(Settings&, int);
  int missing;  // what 0 stands for, as a value that is missing reads as 0
  int off, on;
  Others others;  // what a number that is none of these stands for
  std::string_view meaning;

  bool is_on(const Settings& settings) const { return get(settings) == on; }
  void turn(Settings& settings, bool to_on) const { set(settings, to_on ? on : off); }
  /// From the number that is stored.
  void read(Settings& settings, int stored) const;
};

/// All that is known about each preference, in the order in which they are stored: reading, writing, the command
/// line, its help and the preferences dialog all follow from these two tables.
extern const std::array<TextSetting, 4> text_settings;
extern const std::array<NumberSetting, 14> number_settings;

/// The accepted extensions.
inline const TextSetting& types_setting = text_settings[0];

/// What usually goes with an episode: subtitles, pictures, and what media servers know of it.
inline constexpr const char* usual_companions = "srt;ass;ssa;sub;idx;sup;vtt;smi;nfo;jpg;jpeg;png;tbn";

/// Whether files of that name's extension are taken. Part of a listed one is enough, such as "mp" of "mp4".
bool is_listed(const Settings& settings, std::string_view name);

}  // namespace quorvel
