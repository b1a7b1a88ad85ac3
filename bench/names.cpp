#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>

#include "naming/reader/reading.h"
#include "support/known_names.h"

/// How well the reader does on names of which it is known what they mean.
namespace {

struct Figures {
  int right = 0, with_show = 0, nothing = 0, wrong = 0, wrong_and_certain = 0, certain = 0;
};

void print(const char* what, int count, std::size_t all) {
  std::printf("%-28s %5d  %5.1f %%\n", what, count, 100.0 * count / static_cast<double>(all));
}

}  // namespace

int main(int argc, char** argv) {
  using namespace quorvel;
  using namespace quorvel::testing;
  const bool list = argc == 3 && std::string_view(argv[1]) == "--wrong";
  if (argc != 2 && !list) {
    std::cerr << "Usage: quorvel-names [--wrong] FILE.jsonl\n";
    return 2;
  }
  try {
    const std::vector<KnownName> names = known_names(argv[argc - 1]);
    Figures figures;
    for (const KnownName& known : names) {
      const Reading reading = read_name(known.name);
      const bool right = same_numbers(known, reading), show = same_show(known, reading), found = reading.has_numbers();
      figures.right += right ? 1 : 0;
      figures.with_show += right && show ? 1 : 0;
      figures.nothing += !right && !found ? 1 : 0;
      figures.wrong += !right && found ? 1 : 0;
      figures.wrong_and_certain += !right && reading.certain ? 1 : 0;
      figures.certain += reading.certain ? 1 : 0;
      if (!list || (right && show)) continue;
      std::printf("%s\n  %-7s %s\n  read    %s\n", known.name.c_str(), right ? "show" : "numbers",
                  described(known.show.value_or("?"), known.meaning).c_str(), described(reading.show, reading).c_str());
    }
    std::printf("%zu names\n", names.size());
    if (names.empty()) return 0;
    print("numbers right", figures.right, names.size());
    print("show and numbers right", figures.with_show, names.size());
    print("nothing found", figures.nothing, names.size());
    print("wrong numbers", figures.wrong, names.size());
    print("  of these called certain", figures.wrong_and_certain, names.size());
    print("certain readings", figures.certain, names.size());
  } catch (const std::exception& error) {
    std::cerr << "quorvel-names: " << error.what() << "\n";
    return 1;
  }
}
