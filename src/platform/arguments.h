#pragma once

#include <string>
#include <vector>

/// What the program was started with, without its own name, as the system has it: byte for byte on Linux, in UTF-8 on
/// Windows, where nothing is taken for a pattern of file names.
namespace quorvel {

std::vector<std::string> separate_arguments(int argc, char** argv);

/// The same, or where the command line is one text (see native.h) that text as it was given.
std::vector<std::string> command_line_arguments(int argc, char** argv);

}  // namespace quorvel
