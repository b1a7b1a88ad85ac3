#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Programs that the user wants started. One definition per system, chosen by the build.
namespace quorvel::commands {

/// The words of a command line, by the system's rules for blanks and quotes; no shell has a part in it. Throws Failure
/// where a quote is not closed.
std::vector<std::string> words_of(const std::string& text);

/// How a program has ended.
struct Ending {
  std::optional<int> status;  // empty when it could not be started or was ended by us
  std::string trouble;        // why there is none
};

using Environment = std::vector<std::pair<std::string, std::string>>;

/// Starts the program that the first word names, in full or to be found by the system, with the other words, and waits
/// for its end. It gets these variables beside our own, nothing on its standard input, and our standard error for both
/// its outputs. `goes_on` is asked meanwhile, ten times a second; false ends the program.
Ending run(const std::vector<std::string>& words, const Environment& variables, const std::function<bool()>& goes_on);

}  // namespace quorvel::commands
