#include <iostream>
#include <limits>

#include "listings_service.h"

/// listings-stand-in [DIR] serves the recorded answers in DIR, else the tests' own, and prints its address first; until
/// its standard input ends.
int main(int argc, char** argv) {
  const quorvel::testing::ListingsService service(argc > 1 ? argv[1] : QUORVEL_SHOWS_DIR);
  std::cout << service.base() << std::endl;
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}
