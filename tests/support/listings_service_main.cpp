#include <future>
#include <iostream>
#include <limits>

#include "listings_service.h"

/// listings-stand-in [--until-eof] [--shows DIR] serves the recorded answers in DIR, else the tests' own, and prints
/// its address first; until it is ended, or its standard input is.
int main(int argc, char** argv) try {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool until_eof = std::erase(arguments, "--until-eof") > 0;
  if (!arguments.empty() && (arguments[0] != "--shows" || arguments.size() != 2)) {
    throw std::runtime_error("Usage: listings-stand-in [--until-eof] [--shows DIR]");
  }
  const quorvel::testing::ListingsService service(arguments.empty() ? QUORVEL_SHOWS_DIR : arguments[1]);
  std::cout << service.base() << std::endl;
  if (!until_eof) std::promise<void>().get_future().wait();
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
