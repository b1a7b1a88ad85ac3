#include "platform/arguments.h"

namespace quorvel {

std::vector<std::string> separate_arguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::vector<std::string> command_line_arguments(int argc, char** argv) {
  return separate_arguments(argc, argv);
}

}  // namespace quorvel
