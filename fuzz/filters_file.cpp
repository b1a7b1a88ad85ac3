#include "rule_file.h"
#include "rules/filters.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::check_rule_file("filters.dat", &FilterList::loadfilters, &FilterList::savefilters,
                        std::string(fuzz::text_of(data, size)));
  return 0;
}
