#include <exception>
#include <string>

#include "cli/options.h"
#include "cli/run.h"
#include "platform/console.h"

int main(int argc, char** argv) {
  using namespace quorvel;
  try {
    const auto parsed = cli::parse_options(argc, argv);
    if (const auto* const ending = std::get_if<cli::Ending>(&parsed)) {
      ending->status == 0 ? console::write_out(ending->text) : console::write_error(ending->text);
      return ending->status;
    }
    return cli::run(std::get<cli::Options>(parsed));
  } catch (const std::exception& error) {
    console::write_error(std::string("quorvel-cli: ") + error.what() + "\n");
    return 1;
  }
}
