#include <cstring>
#include <future>
#include <iostream>
#include <limits>

#include "listings_service.h"

/// listings-stand-in [--shows DIR] [--until-eof] serves recorded answers, the tests' own ones unless told, and prints
/// its address first; until it is ended, or until its standard input is.
int main(int argc, char** argv) try {
  std::filesystem::path shows = QUORVEL_SHOWS_DIR;
  bool until_eof = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--until-eof") == 0) {
      until_eof = true;
    } else if (std::strcmp(argv[i], "--shows") == 0 && i + 1 < argc) {
      shows = argv[++i];
    } else {
      throw std::runtime_error("Usage: listings-stand-in [--shows DIR] [--until-eof]");
    }
  }
  const quorvel::testing::ListingsService service(shows);
  std::cout << service.base() << std::endl;
  if (!until_eof) std::promise<void>().get_future().wait();
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
