#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The terminal that a program was started in, if any. One definition per system, chosen by the build.
namespace quorvel::console {

/// For the very start of a program: where it was started without standard input, output or error, opens these on
/// nothing. Else the next file opened would become one of them, and a line of the log would be written into it.
void open_missing_streams();

/// Write everything at once, past any buffer. What cannot be written is dropped: the work goes on without its reader.
void write_out(std::string_view text);
void write_error(std::string_view text);

bool error_is_terminal();

/// Columns of the terminal behind standard error; 80 where it does not say.
int width();

/// One line from the user, without its end. Empty when standard input is no terminal, has ended, or the user
/// interrupts.
std::optional<std::string> read_line();

/// From now on Ctrl+C and its like are counted instead of ending the program, and a closed pipe ends nothing. What the
/// program was started to ignore stays ignored.
void count_interrupts();

/// How often the user has interrupted since. An interrupt not yet told here ends read_line().
int interrupts();

}  // namespace quorvel::console
