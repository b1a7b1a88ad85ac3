#include <exception>
#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/read_names.h"
#include "cli/run.h"
#include "platform/console.h"
#include "platform/system.h"

int main(int argc, char** argv) {
  using namespace quorvel;
  console::open_missing_streams();
  try {
    std::vector<std::string> arguments = separate_arguments(argc, argv);
    arguments.insert(arguments.begin(), "quorvel-cli");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const auto parsed = cli::parse_options(static_cast<int>(arguments.size()), pointers.data());
    if (const auto* const ending = std::get_if<cli::Ending>(&parsed)) {
      ending->status == 0 ? console::write_out(ending->text) : console::write_error(ending->text);
      return ending->status;
    }
    const cli::Options& options = std::get<cli::Options>(parsed);
    if (!options.read) return cli::run(options);
    cli::read_names(options.paths, options.json);
    return 0;
  } catch (const std::exception& error) {
    console::write_error(std::string("quorvel-cli: ") + error.what() + "\n");
    return 1;
  }
}
